/// \file
/// Result codes, section types and the status callback shared by the reader
/// and the writer.
#ifndef QUARL_TYPES_H
#define QUARL_TYPES_H

#include <quarl/export.h>

#include <cstdint>

namespace quarl {

/// The result of every operation that can fail. 0 is the only success; the
/// values are fixed and never combined. The reader side returns only what its
/// operations list; the writer also leaves details in its last-error record.
enum ELASFILEERROR : int32_t {
    /// The operation did what was asked.
    LASFILE_OK = 0,
    /// A file could not be opened, positioned, read or written. From line
    /// input it also means the end of the file: no byte was left to read.
    LASFILE_IO_FAILED = 1,
    /// The line store of CTextFile could not be allocated or grown, or a read
    /// reached CLasReadOptions::maxBytes. Every other failed allocation throws.
    LASFILE_OUT_OF_MEMORY = 2,
    /// Text or data without the form LAS requires: a line that cannot be
    /// split, a section header missing where one must stand, a data section
    /// without a definition, a data row without its delimiter, depths that do
    /// not advance by STEP or do not agree with STRT or STOP, sections that
    /// cannot be put in order; bytes that are no text (a NUL byte at the start
    /// of a file) or a line longer than the bound of CTextFile.
    LASFILE_BAD_FORMAT = 3,
    /// The choice does not exist in the chosen LAS version: a data delimiter
    /// other than the space in LAS 2.0.
    LASFILE_NOT_ALLOWED_IN_VERSION = 4,
    /// A section or parameter that the operation cannot do without is
    /// missing, or a link between two sections does not hold.
    LASFILE_MISSING_SECTION = 5,
    /// The object is not in a state for the operation: a reader that is not
    /// open or holds too few sections, a writer that already holds sections,
    /// a writer called from inside the status callback of its own Write.
    LASFILE_WRONG_STATE = 6,
    /// An argument or a stored value is not allowed: an index out of range, a
    /// name that is not there, a delimiter, a section of the wrong type, a
    /// column of the wrong kind or length.
    LASFILE_BAD_VALUE = 7,
    /// The status callback returned non-zero.
    LASFILE_CANCELLED = 8,
    /// A section of that name is already stored, or the name is the Version
    /// section's, which the writer makes by itself.
    LASFILE_DUPLICATE_SECTION = 9,
    /// A section name, or a field of a parameter line, holds what the rules of
    /// the LAS version do not allow there.
    LASFILE_BAD_NAME = 10,
};

/// The kind of a section, in CLasSection::m_type and as a filter. The gap
/// between 3 and 99 is intended.
enum ELASSECTIONTYPE : int32_t {
    /// Parameter lines that define no curves: ~Parameter, ~Log_Parameter and
    /// the like.
    LASSECTION_PARAMETER = 0,
    /// Lines that each define one column of a data section, in column order:
    /// ~Curve, ~Log_Definition and the like.
    LASSECTION_DEFINITION = 1,
    /// Data rows, held as one CLasCurve per column: ~ASCII, ~Log_Data and
    /// the like.
    LASSECTION_DATA = 2,
    /// The Version section and the Well section.
    LASSECTION_HEADER = 3,
    /// The type of a new CLasSection that nothing has typed yet; the reader
    /// never produces it and the writer refuses it. As a filter argument the
    /// one wildcard: every section matches.
    LASSECTION_ANY = 99,
};

/// The name of a result code as written in this header ("LASFILE_BAD_FORMAT"),
/// and a one-line description of what it means. Both give a static text that
/// never changes; a value outside the enumeration gives "LASFILE_UNKNOWN" and
/// "unknown result".
///@{
QUARL_API const char* ResultName(ELASFILEERROR code);
QUARL_API const char* ResultDescription(ELASFILEERROR code);
///@}

/// A one-word name of a section type for people to read: "parameter",
/// "definition", "data", "header", and "untyped" for LASSECTION_ANY. A static
/// text that never changes; a value outside the enumeration gives "unknown".
QUARL_API const char* SectionTypeName(ELASSECTIONTYPE type);

/// Progress and cancellation. Called on the caller's thread, from inside the
/// operation, with the context as registered, the share of the work done (0
/// to 100) and a message, "Reading " or "Writing " and the path, that is valid
/// only during the call. A non-zero result stops the operation, which then
/// returns LASFILE_CANCELLED. A null callback means no reports.
typedef int32_t (*LasStatusCallback)(void* context, double percent, const char* message);

}  // namespace quarl

#endif
