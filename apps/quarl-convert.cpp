// quarl-convert IN OUT [--las 2|3] [--delimiter space|tab|comma]: reads a
// LAS file and writes it again through the writer, in the version and with
// the delimiter asked for.
#include <quarl/quarl.h>

#include <cstdio>
#include <string>
#include <vector>

#include "support/command_line.h"
#include "support/conversion.h"
#include "support/file_identity.h"
#include "support/program.h"
#include "support/read_notes.h"

namespace ex = quarl::apps;

namespace {

void Usage(std::FILE* to)
{
    std::fprintf(
        to,
        "usage: quarl-convert IN OUT [--las 2|3] [--delimiter space|tab|comma]\n"
        "                    [--keep-names] [--drop-unsupported] [--fix-well-range] [--strict]\n"
        "  --las 2|3             version of OUT (default: 2)\n"
        "  --delimiter NAME      data delimiter of OUT; LAS 2.0 allows space only (default: "
        "space)\n"
        "  --keep-names          with --strict: do not rename the log sections between the\n"
        "                        versions (Parameter/Curve/ASCII <-> "
        "Log_Parameter/Log_Definition/Log_Data)\n"
        "  --drop-unsupported    with --strict: repair what the chosen version cannot hold,\n"
        "  --fix-well-range      as the default does (STRT, STOP and STEP of the Well section\n"
        "                        taken from the data, sections it refuses left out)\n"
        "  --strict              read IN exactly by the format's rules and repair nothing; by\n"
        "                        default IN is read leniently, and the writer repairs what the\n"
        "                        target version cannot hold, one line on stderr per change:\n"
        "                        sections renamed or merged, the Well range taken from the\n"
        "                        data, mnemonics and units made legal, sections, lines and\n"
        "                        (LAS 2.0) text curves it cannot hold left out\n"
        "  -h, --help            print this help and exit\n"
        "  --version             print the version and exit\n");
}

int Run(int argc, char** argv)
{
    std::vector<std::string> positional;
    ex::ConvertOptions options;
    bool strict = false;
    bool delimiterGiven = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "-h" || arg == "--help") {
            Usage(stdout);
            return 0;
        }
        if (arg == "--version") {
            ex::PrintVersion("quarl-convert");
            return 0;
        }
        if (arg == "--las" || arg == "--delimiter") {
            if (i + 1 >= argc) {
                std::fprintf(stderr, "quarl-convert: %s needs a value\n", arg.c_str());
                return 2;
            }
            const std::string value = argv[++i];
            if (arg == "--las") {
                if (value == "2" || value == "2.0")
                    options.toLas3 = false;
                else if (value == "3" || value == "3.0")
                    options.toLas3 = true;
                else {
                    std::fprintf(stderr, "quarl-convert: --las wants 2 or 3, not '%s'\n",
                                 value.c_str());
                    return 2;
                }
            } else {
                if (!ex::ParseDelimiterName(value, &options.delimiter)) {
                    std::fprintf(stderr,
                                 "quarl-convert: --delimiter wants space, tab or comma, not '%s'\n",
                                 value.c_str());
                    return 2;
                }
                delimiterGiven = true;
            }
        } else if (arg == "--strict") {
            strict = true;
        } else if (arg == "--keep-names") {
            options.mapNames = false;
        } else if (arg == "--drop-unsupported" || arg == "--fix-well-range") {
            options.repair = true;
        } else if (!ex::TakeOperand("quarl-convert", arg, positional)) {
            Usage(stderr);
            return 2;
        }
    }
    if (positional.size() != 2) {
        Usage(stderr);
        return 2;
    }
    if (!options.toLas3 && delimiterGiven && options.delimiter != ' ') {
        std::fprintf(
            stderr,
            "quarl-convert: LAS 2.0 data are delimited by spaces only; use --las 3 for %s\n",
            ex::DelimiterName(options.delimiter).c_str());
        return 2;
    }
    if (ex::SameFile(positional[0], positional[1])) {
        std::fprintf(stderr, "quarl-convert: %s is the input file %s; choose another OUT\n",
                     positional[1].c_str(), positional[0].c_str());
        return 2;
    }

    options.read = ex::ProgramReadOptions(strict, positional[0]);
    if (!strict) options = ex::RepairingOptions(options);
    const ex::ConvertResult result = ex::ConvertFile(positional[0], positional[1], options);
    ex::PrintNotesSummary("quarl-convert", positional[0], result.readNotes);
    for (const std::string& note : result.notes)
        std::fprintf(stderr, "quarl-convert: note: %s\n", note.c_str());
    if (result.code != quarl::LASFILE_OK) {
        std::fprintf(stderr, "quarl-convert: %s\n", result.message.c_str());
        if (result.versionLimit)
            std::fprintf(stderr,
                         "quarl-convert: hint: --las 3 keeps such sections, "
                         "--drop-unsupported leaves them out\n");
        if (result.message.find("does not agree with the depths") != std::string::npos)
            std::fprintf(stderr,
                         "quarl-convert: hint: --fix-well-range takes them from the data\n");
        return 1;
    }
    std::printf("%s -> %s: LAS %s, %s delimiter, %d section(s) handed to the writer\n",
                positional[0].c_str(), positional[1].c_str(), options.toLas3 ? "3.0" : "2.0",
                ex::DelimiterName(result.delimiter).c_str(), result.sectionsAdded);
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    return ex::RunGuarded("quarl-convert", Run, argc, argv);
}
