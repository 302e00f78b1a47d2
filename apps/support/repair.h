// quarl-check's repair: a lenient read of a file handed to the writer under
// quarl-convert's conversion policy, so that the file written reads strictly.
#ifndef QUARL_APPS_REPAIR_H
#define QUARL_APPS_REPAIR_H

#include <quarl/quarl.h>

#include <string>

#include "support/conversion.h"

namespace quarl::apps {

struct RepairResult {
    ConvertResult conversion;  // of the attempt that was kept
    bool las3 = false;         // the version written
    char delimiter = ' ';      // the delimiter written
    std::string formatNote;    // why the format differs from the input's, if it does
    ELASFILEERROR readBack = LASFILE_WRONG_STATE;  // the strict read of OUT
    size_t readBackNotes = 0;                      // and how many notes it made
    bool Repaired() const
    {
        return conversion.code == LASFILE_OK && readBack == LASFILE_OK && readBackNotes == 0;
    }
};

// Writes `out` from `in` read with `read`, in the version and delimiter of
// the input (`las3`, `delimiter`). What the version cannot hold moves the
// file to LAS 3.0 before anything is left out; STRT, STOP and STEP follow
// the data; a read that stops keeps what came before. Then reads `out` back
// strictly.
RepairResult RepairFile(const std::string& in, const std::string& out, bool las3, char delimiter,
                        const CLasReadOptions& read);

}  // namespace quarl::apps

#endif
