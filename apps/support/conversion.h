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
    bool mapNames = true;           // rename the log group between the versions
    bool dropUnsupported = false;   // leave out sections the writer refuses
    bool fixWellRange = false;      // make STRT, STOP and STEP agree with the data
    CLasReadOptions read;           // how IN is read (default: strictly)
    bool keepPartial = false;       // after a failed read, write what was read, with a note
    bool dropRefusedLines = false;  // leave out parameter lines the writer refuses, with a note
    bool legalNames = false;        // rename mnemonics and units the writer cannot hold
    bool dropTextCurves = false;    // LAS 2.0: leave out text curves; LAS 3.0: put a numeric
                                    // curve first as the index, and delimit by tabs rather
                                    // than blanks that text values hold; each with a note
};

// The options of quarl-convert's default: IN read leniently, and what the
// target version cannot hold repaired with a note each: the Well range taken
// from the data, names made legal, sections and lines the version refuses
// and text curves of LAS 2.0 left out. `--strict` reads strictly and
// repairs nothing.
ConvertOptions RepairingOptions(ConvertOptions options);

struct ConvertResult {
    ELASFILEERROR code = LASFILE_OK;
    std::string stage;               // "format", "read", "add", "write"
    std::string message;             // what went wrong, for a person
    std::vector<std::string> notes;  // renamed or dropped sections, changed values
    int sectionsAdded = 0;
    bool versionLimit = false;        // refused for what LAS 2.0 cannot hold
    std::vector<CLasNote> readNotes;  // the notes of the read of IN
};

// Reads `in`, hands every section but the Version section to a writer and
// writes `out`. The writer's last-error record is put into words.
ConvertResult ConvertFile(const std::string& in, const std::string& out,
                          const ConvertOptions& options);

// The name a section takes in the other LAS version, so that the log curves
// of a LAS 3.0 file become the Parameter, Curve and ASCII sections of a
// LAS 2.0 file, and the other way round. Other names stay as they are.
std::string MapSectionName(const std::string& name, bool toLas3);

// The name under which a writer of the version stores a section: a LAS 2.0
// writer writes one-letter names out in full.
std::string StoredName(const std::string& name, bool las3);

// Makes STRT, STOP and STEP of the Well section agree with the first curve
// of the main data section, the way the writer tests them: STRT and STOP
// take the first and last depth, an uneven STEP becomes the even interval
// of the data or, when there is none, 0. Returns a note per change.
std::vector<std::string> FixWellRange(std::vector<CLasSection>& sections, bool las3);

// A name the writer takes for a mnemonic or unit: every byte it refuses
// (". : { } |", blanks, control bytes) becomes "_" ("Cond." is "Cond_",
// ".1IN" is "_1IN"); a mnemonic of nothing else becomes "UNKNOWN".
std::string LegalName(const std::string& name, bool isUnit);

// Makes every mnemonic and unit of the sections legal, mnemonics unique in
// their section ("A_B", "A_B_2"), and values free of braces and bars
// ("(", ")", "/"); returns a note per change.
std::vector<std::string> LegalizeNames(std::vector<CLasSection>& sections);

// What the writer said about its last failure, as one line of text.
std::string DescribeWriterError(const CLasWriter& writer);

}  // namespace quarl::apps

#endif
