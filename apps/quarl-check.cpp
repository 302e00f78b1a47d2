// quarl-check FILE... [--json] [--fix OUT]: reads each file strictly and
// leniently and prints the notes of both reads; with --fix, writes a
// repaired copy of one file that reads strictly.
#include <quarl/quarl.h>

#include <cstdio>
#include <string>
#include <vector>

#include "common/text.h"
#include "support/command_line.h"
#include "support/file_identity.h"
#include "support/program.h"
#include "support/read_notes.h"
#include "support/repair.h"

namespace ex = quarl::apps;
namespace common = quarl::common;

namespace {

void Usage(std::FILE* to)
{
    std::fprintf(
        to,
        "usage: quarl-check FILE... [--json] [--fix OUT]\n"
        "  Reads each FILE strictly and leniently and prints the notes of both reads.\n"
        "  Exit code 0: every file reads strictly without notes; 1: a file has problems;\n"
        "  2: the command line is wrong.\n"
        "  --json     print the results as JSON (an object, or an array for several files)\n"
        "  --fix OUT  with one FILE: write OUT from the lenient read so that it reads\n"
        "             strictly, and say what could not be kept; the exit code is then 0\n"
        "             when OUT was written and reads strictly without notes\n"
        "  -h, --help print this help and exit\n"
        "  --version  print the version and exit\n");
}

struct Read {
    quarl::ELASFILEERROR code = quarl::LASFILE_OK;
    bool opened = false;
    size_t sections = 0;
    uint64_t line = 0;  // where the read ended
    bool las3 = false;
    char delimiter = ' ';
    std::vector<quarl::CLasNote> notes;
};

Read ReadOnce(const std::string& path, bool lenient)
{
    quarl::CLasReadOptions options = ex::ProgramReadOptions(!lenient, path);
    options.maxBytes = ex::ReadBudgetFor(path);  // the strict read too: a check ends promptly
    quarl::CLasReader reader;
    reader.SetOptions(options);
    Read r;
    r.code = reader.Open(tessel::TxString(path));
    r.opened = reader.IsOpen();
    r.sections = reader.size();
    r.line = reader.GetLineNumber();
    r.las3 = reader.IsLas3();
    r.delimiter = reader.GetDelimiter();
    r.notes = reader.GetNotes();
    reader.Close();
    return r;
}

struct Check {
    std::string path;
    Read strict, lenient;
    bool fixAsked = false;
    std::string fixPath;
    ex::RepairResult fix;
    bool Clean() const { return strict.code == quarl::LASFILE_OK && strict.notes.empty(); }
};

std::string Summary(const Read& r)
{
    std::string text = std::string(quarl::ResultName(r.code));
    if (!r.opened) return text + ": the file cannot be opened";
    if (r.code != quarl::LASFILE_OK)
        text += std::string(" (") + quarl::ResultDescription(r.code) + ") at line " +
                std::to_string(r.line);
    return text + ", " + std::to_string(r.sections) + " section(s), " +
           std::to_string(r.notes.size()) + " note(s)";
}

// What the repair's read did not keep, one line each.
std::vector<std::string> NotKept(const Check& c)
{
    std::vector<std::string> lines;
    for (const quarl::CLasNote& note : c.fix.conversion.readNotes)
        if (ex::NoteLosesData(note)) lines.push_back(ex::NoteLine(note));
    return lines;
}

void PrintText(const Check& c)
{
    std::printf("%s: %s\n", c.path.c_str(),
                c.Clean() ? "ok, reads strictly without notes" : "has problems");
    const struct {
        const char* name;
        const Read& read;
    } reads[] = {{"strict", c.strict}, {"lenient", c.lenient}};
    for (const auto& r : reads) {
        if (c.Clean() && r.read.notes.empty()) continue;
        std::printf("  %s read: %s\n", r.name, Summary(r.read).c_str());
        for (const quarl::CLasNote& note : r.read.notes)
            std::printf("    %s\n", ex::NoteLine(note).c_str());
    }
    if (!c.fixAsked) return;
    const ex::ConvertResult& conv = c.fix.conversion;
    if (conv.code != quarl::LASFILE_OK) {
        std::printf("  not repaired: %s\n", conv.message.c_str());
        return;
    }
    const std::string readBack =
        c.fix.Repaired() ? std::string("yes")
                         : std::string("no, ") + quarl::ResultName(c.fix.readBack) + " with " +
                               std::to_string(c.fix.readBackNotes) + " note(s)";
    std::printf("  repaired: %s written as LAS %s, %s delimiter; it reads strictly: %s\n",
                c.fixPath.c_str(), c.fix.las3 ? "3.0" : "2.0",
                ex::DelimiterName(c.fix.delimiter).c_str(), readBack.c_str());
    if (!c.fix.formatNote.empty()) std::printf("    %s\n", c.fix.formatNote.c_str());
    for (const std::string& note : conv.notes) std::printf("    %s\n", note.c_str());
    for (const std::string& line : NotKept(c)) std::printf("    not kept: %s\n", line.c_str());
}

std::string ReadJson(const Read& r)
{
    std::string j = "{\"result\": " + common::JsonString(quarl::ResultName(r.code)) +
                    ", \"opened\": " + (r.opened ? "true" : "false") +
                    ", \"sections\": " + std::to_string(r.sections) +
                    ", \"line\": " + std::to_string(r.line) + ", \"notes\": [";
    for (size_t i = 0; i < r.notes.size(); ++i)
        j += std::string(i ? ",\n      " : "\n      ") + ex::NoteJson(r.notes[i]);
    return j + (r.notes.empty() ? "]}" : "\n    ]}");
}

std::string StringArray(const std::vector<std::string>& items)
{
    std::string j = "[";
    for (size_t i = 0; i < items.size(); ++i) j += (i ? ", " : "") + common::JsonString(items[i]);
    return j + "]";
}

std::string Json(const Check& c)
{
    std::string j = "{\n  \"file\": " + common::JsonString(c.path) +
                    ",\n  \"clean\": " + (c.Clean() ? "true" : "false") +
                    ",\n  \"strict\": " + ReadJson(c.strict) +
                    ",\n  \"lenient\": " + ReadJson(c.lenient);
    if (c.fixAsked) {
        const ex::ConvertResult& conv = c.fix.conversion;
        j += ",\n  \"fix\": {\"output\": " + common::JsonString(c.fixPath) +
             ", \"written\": " + (conv.code == quarl::LASFILE_OK ? "true" : "false") +
             ", \"result\": " + common::JsonString(quarl::ResultName(conv.code)) +
             ", \"message\": " + common::JsonString(conv.message) +
             ", \"las3\": " + (c.fix.las3 ? "true" : "false") +
             ", \"delimiter\": " + common::JsonString(ex::DelimiterName(c.fix.delimiter)) +
             ", \"reads_strictly\": " + (c.fix.Repaired() ? "true" : "false") +
             ", \"format_note\": " + common::JsonString(c.fix.formatNote) +
             ", \"conversion_notes\": " + StringArray(conv.notes) +
             ", \"not_kept\": " + StringArray(NotKept(c)) + "}";
    }
    return j + "\n}";
}

}  // namespace

int Run(int argc, char** argv)
{
    std::vector<std::string> files;
    std::string fixPath;
    bool json = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "-h" || arg == "--help") {
            Usage(stdout);
            return 0;
        } else if (arg == "--version") {
            ex::PrintVersion("quarl-check");
            return 0;
        } else if (arg == "--json") {
            json = true;
        } else if (arg == "--fix") {
            if (i + 1 >= argc) {
                std::fprintf(stderr, "quarl-check: --fix needs an output file\n");
                return 2;
            }
            fixPath = argv[++i];
        } else if (!ex::TakeOperand("quarl-check", arg, files)) {
            Usage(stderr);
            return 2;
        }
    }
    if (files.empty()) {
        Usage(stderr);
        return 2;
    }
    if (!fixPath.empty() && files.size() != 1) {
        std::fprintf(stderr, "quarl-check: --fix repairs one file at a time\n");
        return 2;
    }
    if (!fixPath.empty() && ex::SameFile(files[0], fixPath)) {
        std::fprintf(stderr, "quarl-check: %s is the input file %s; choose another OUT\n",
                     fixPath.c_str(), files[0].c_str());
        return 2;
    }

    int status = 0;
    if (json && files.size() > 1) std::printf("[\n");
    for (size_t n = 0; n < files.size(); ++n) {
        Check c;
        c.path = files[n];
        c.strict = ReadOnce(c.path, false);
        c.lenient = ReadOnce(c.path, true);
        if (!fixPath.empty()) {
            c.fixAsked = true;
            c.fixPath = fixPath;
            const quarl::CLasReadOptions read = ex::ProgramReadOptions(false, c.path);
            c.fix = ex::RepairFile(c.path, fixPath, c.lenient.las3, c.lenient.delimiter, read);
            if (!c.fix.Repaired()) status = 1;
        } else if (!c.Clean()) {
            status = 1;
        }
        if (json)
            std::printf("%s%s", Json(c).c_str(), n + 1 < files.size() ? ",\n" : "\n");
        else
            PrintText(c);
    }
    if (json && files.size() > 1) std::printf("]\n");
    return status;
}

int main(int argc, char** argv)
{
    return ex::RunGuarded("quarl-check", Run, argc, argv);
}
