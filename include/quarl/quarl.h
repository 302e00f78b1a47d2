// quarl: reads and writes LAS files (Log ASCII Standard 2.0 and 3.0).
// Everything a host needs comes through this header.
#ifndef QUARL_QUARL_H
#define QUARL_QUARL_H

#include <tessel/tessel.h>

#include <quarl/types.h>
#include <quarl/text_file.h>
#include <quarl/document.h>
#include <quarl/reader.h>
#include <quarl/writer.h>
#include <quarl/version.h>

#endif
