// The conversion policy of quarl-convert: which sections are renamed between
// the versions, which are left out, how the Well range is made to agree with
// the data, and how the writer's refusals are put into words.
#ifndef QUARL_APPS_CONVERSION_H
#define QUARL_APPS_CONVERSION_H

#include <quarl/quarl.h>

#include <string>
#include <vector>

namespace quarl::apps {

struct ConvertOptions {
    bool toLas3 = false;
    char delimiter = ' ';
    bool mapNames = true;      // without repair: rename the log group between the versions
    bool repair = false;       // the writer's repair mode: what the version cannot hold is
                               // changed, and left out only when nothing smaller works
    CLasReadOptions read;      // how IN is read (default: strictly)
    bool keepPartial = false;  // after a failed read, write what was read, with a note
};

// The options of quarl-convert's default: what the target version cannot
// hold repaired by the writer, with a note per change. `--strict` reads
// strictly and repairs nothing.
ConvertOptions RepairingOptions(ConvertOptions options);

struct ConvertResult {
    ELASFILEERROR code = LASFILE_OK;
    std::string stage;               // "format", "read", "add", "write"
    std::string message;             // what went wrong, for a person
    std::vector<std::string> notes;  // renamed or dropped sections, changed values
    int sectionsAdded = 0;
    bool versionLimit = false;        // refused for what LAS 2.0 cannot hold
    std::vector<CLasNote> readNotes;  // the notes of the read of IN
    std::vector<CLasRepair> repairs;  // what the writer changed, in repair mode
};

// Reads `in`, hands every section but the Version section to a writer and
// writes `out`. The writer's last-error record is put into words.
ConvertResult ConvertFile(const std::string& in, const std::string& out,
                          const ConvertOptions& options);

// What the writer said about its last failure, as one line of text.
std::string DescribeWriterError(const CLasWriter& writer);

}  // namespace quarl::apps

#endif
