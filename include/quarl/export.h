// Symbol visibility: the library is built with hidden symbols, and only the
// classes marked QUARL_API are exported from libquarl.so.
#ifndef QUARL_EXPORT_H
#define QUARL_EXPORT_H

#if defined(QUARL_BUILDING)
#define QUARL_API __attribute__((visibility("default")))
#else
#define QUARL_API
#endif

#endif
