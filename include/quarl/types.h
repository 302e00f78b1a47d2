// Result codes, section types and the status callback shared by the reader
// and the writer.
#ifndef QUARL_TYPES_H
#define QUARL_TYPES_H

#include <cstdint>

#include <quarl/export.h>

namespace quarl {

// The result of every operation that can fail. 0 is the only success.
enum ELASFILEERROR : int32_t {
    LASFILE_OK = 0,
    LASFILE_IO_FAILED = 1,           // open, seek, read or write failed; end of file on line input
    LASFILE_OUT_OF_MEMORY = 2,       // the line store could not be allocated or grown
    LASFILE_BAD_FORMAT = 3,          // text or data without the form LAS requires
    LASFILE_NOT_ALLOWED_IN_VERSION = 4,
    LASFILE_MISSING_SECTION = 5,
    LASFILE_WRONG_STATE = 6,
    LASFILE_BAD_VALUE = 7,
    LASFILE_CANCELLED = 8,           // the status callback returned non-zero
    LASFILE_DUPLICATE_SECTION = 9,
    LASFILE_BAD_NAME = 10,
};

// The kind of a section. The gap between 3 and 99 is intended: 99 is the
// type of a section nothing has typed yet, and the wildcard of filters.
enum ELASSECTIONTYPE : int32_t {
    LASSECTION_PARAMETER = 0,
    LASSECTION_DEFINITION = 1,
    LASSECTION_DATA = 2,
    LASSECTION_HEADER = 3,
    LASSECTION_ANY = 99,
};

// The name of a result code as written in this header ("LASFILE_BAD_FORMAT"),
// and a one-line description of what it means. Both give a static text that
// never changes; a value outside the enumeration gives "LASFILE_UNKNOWN" and
// "unknown result".
QUARL_API const char* ResultName(ELASFILEERROR code);
QUARL_API const char* ResultDescription(ELASFILEERROR code);

// Progress and cancellation. Called on the caller's thread with the context
// as registered, the share of the work done (0 to 100) and a message that is
// valid only during the call. A non-zero result stops the operation, which
// then returns LASFILE_CANCELLED.
typedef int32_t (*LasStatusCallback)(void* context, double percent, const char* message);

}  // namespace quarl

#endif
