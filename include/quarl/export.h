/// \file
/// Symbol visibility: the library is built with hidden symbols, and only the
/// classes marked QUARL_API are exported from libquarl.so.
#ifndef QUARL_EXPORT_H
#define QUARL_EXPORT_H

#if defined(QUARL_BUILDING)
/// Marks a class or function that libquarl.so exports; empty for a host.
#define QUARL_API __attribute__((visibility("default")))
#else
#define QUARL_API
#endif

#endif
