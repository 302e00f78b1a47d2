#include "support/repair.h"

#include "support/command_line.h"

namespace quarl::apps {

namespace {

ConvertResult Attempt(const std::string& in, const std::string& out, bool las3, char delimiter,
                      bool drop, const CLasReadOptions& read)
{
    ConvertOptions options;
    options.toLas3 = las3;
    options.delimiter = delimiter;
    options.mapNames = true;
    options.dropUnsupported = drop;
    options.fixWellRange = true;
    options.read = read;
    options.keepPartial = true;
    options.dropRefusedLines = drop;
    // A lenient read names curves without a mnemonic "UNKNOWN:1": renamed
    // legally ("UNKNOWN_1") rather than losing their section.
    options.legalNames = true;
    return ConvertFile(in, out, options);
}

}  // namespace

RepairResult RepairFile(const std::string& in, const std::string& out, bool las3, char delimiter,
                        const CLasReadOptions& read)
{
    RepairResult r;
    r.las3 = las3;
    r.delimiter = las3 ? delimiter : ' ';
    r.conversion = Attempt(in, out, r.las3, r.delimiter, false, read);
    if (r.conversion.stage == "format") {
        r.formatNote = "the delimiter " + DelimiterName(r.delimiter) +
                       " cannot be written; the data are delimited by spaces";
        r.delimiter = ' ';
        r.conversion = Attempt(in, out, r.las3, r.delimiter, false, read);
    }
    if (r.conversion.stage == "add" && r.conversion.versionLimit && !r.las3) {
        r.formatNote = "written as LAS 3.0: " + r.conversion.message;
        r.las3 = true;
        r.conversion = Attempt(in, out, r.las3, r.delimiter, false, read);
    }
    if (r.conversion.stage == "add")
        r.conversion = Attempt(in, out, r.las3, r.delimiter, true, read);
    if (r.conversion.code != LASFILE_OK) return r;

    CLasReader back;
    r.readBack = back.Open(tessel::TxString(out));
    r.readBackNotes = back.GetNotes().size();
    back.Close();
    return r;
}

}  // namespace quarl::apps
