#include "support/repair.h"

#include "support/command_line.h"
#include "support/text.h"

namespace quarl::apps {

namespace {

ConvertResult Attempt(const std::string& in, const std::string& out, bool las3, char delimiter,
                      const CLasReadOptions& read)
{
    ConvertOptions options;
    options.toLas3 = las3;
    options.delimiter = delimiter;
    options.repair = true;
    options.read = read;
    options.keepPartial = true;
    return ConvertFile(in, out, options);
}

// The repairs that lose something of the document: sections (but a Version
// section, which the writer makes itself), curves and lines left out, and
// associations removed.
std::vector<const CLasRepair*> Losses(const ConvertResult& conversion)
{
    std::vector<const CLasRepair*> losses;
    for (const CLasRepair& r : conversion.repairs) {
        const bool lost = (r.kind == LASREPAIR_SECTION_LEFT_OUT &&
                           !EqualsNoCase(r.section, "Version") && !EqualsNoCase(r.section, "V")) ||
                          r.kind == LASREPAIR_CURVE_LEFT_OUT || r.kind == LASREPAIR_LINE_LEFT_OUT ||
                          (r.kind == LASREPAIR_ASSOCIATION && r.to.empty());
        if (lost) losses.push_back(&r);
    }
    return losses;
}

}  // namespace

RepairResult RepairFile(const std::string& in, const std::string& out, bool las3, char delimiter,
                        const CLasReadOptions& read)
{
    RepairResult r;
    r.las3 = las3;
    r.delimiter = las3 ? delimiter : ' ';
    r.conversion = Attempt(in, out, r.las3, r.delimiter, read);
    if (r.conversion.stage == "format") {
        r.formatNote = "the delimiter " + DelimiterName(r.delimiter) +
                       " cannot be written; the data are delimited by spaces";
        r.delimiter = ' ';
        r.conversion = Attempt(in, out, r.las3, r.delimiter, read);
    }
    const std::vector<const CLasRepair*> lost = Losses(r.conversion);
    if (r.conversion.code == LASFILE_OK && !r.las3 && !lost.empty()) {
        // LAS 3.0 may hold what LAS 2.0 leaves out.
        ConvertResult las3Result = Attempt(in, out, true, r.delimiter, read);
        if (las3Result.code == LASFILE_OK && Losses(las3Result).size() < lost.size()) {
            r.formatNote = "written as LAS 3.0: LAS 2.0 cannot hold it (" + lost[0]->text + ")";
            r.las3 = true;
            r.conversion = std::move(las3Result);
        } else {
            r.conversion = Attempt(in, out, false, r.delimiter, read);
        }
    }
    if (r.conversion.code != LASFILE_OK) return r;

    CLasReader back;
    r.readBack = back.Open(tessel::TxString(out));
    r.readBackNotes = back.GetNotes().size();
    back.Close();
    return r;
}

}  // namespace quarl::apps
