// quarl-catalog COMMAND ...: a catalog of a whole archive of LAS files in an
// SQLite database. `scan` reads the headers of every LAS file under folder
// trees into the database, `query` finds files by curves, depths and wells,
// `problems` lists what failed and the notes by kind, `stats` counts.
#include <cstdio>
#include <cstring>

#include "catalog_commands/catalog_commands.h"
#include "support/program.h"

namespace {

void Usage(std::FILE* to)
{
    std::fprintf(to,
                 "usage: quarl-catalog scan DIR... --db CATALOG [--hash] [--threads N]\n"
                 "                          [--progress|--no-progress]\n"
                 "       quarl-catalog query CATALOG [--curve MNEMONIC]... [--depth FROM:TO]\n"
                 "                          [--cover] [--unit U] [--well PATTERN] [--json|--csv]\n"
                 "       quarl-catalog problems CATALOG [--json|--csv]\n"
                 "       quarl-catalog stats CATALOG [--json]\n"
                 "  scan      read the headers of every LAS file under DIR... into CATALOG (an\n"
                 "            SQLite file, created when missing); a second scan reads only new\n"
                 "            and changed files and removes vanished ones\n"
                 "  query     the files and curves that hold every --curve (a mnemonic, a\n"
                 "            family's alias or a family's name such as gamma_ray) overlapping\n"
                 "            the --depth range (--cover: spanning it), of wells whose WELL or\n"
                 "            UWI matches PATTERN\n"
                 "  problems  the files that failed to read and the notes by kind, with counts\n"
                 "  stats     files, wells, curves and the most common mnemonics\n"
                 "  -h, --help  print this help and exit\n"
                 "  --version   print the version and exit\n");
}

int Run(int argc, char** argv)
{
    if (argc < 2) {
        Usage(stderr);
        return 2;
    }
    const char* command = argv[1];
    if (!std::strcmp(command, "-h") || !std::strcmp(command, "--help")) {
        Usage(stdout);
        return 0;
    }
    if (!std::strcmp(command, "--version")) {
        quarl::apps::PrintVersion("quarl-catalog");
        return 0;
    }
    if (!std::strcmp(command, "scan")) return quarl::catalog::RunScan(argc - 1, argv + 1);
    if (!std::strcmp(command, "query")) return quarl::catalog::RunQuery(argc - 1, argv + 1);
    if (!std::strcmp(command, "problems")) return quarl::catalog::RunProblems(argc - 1, argv + 1);
    if (!std::strcmp(command, "stats")) return quarl::catalog::RunStats(argc - 1, argv + 1);
    std::fprintf(stderr, "quarl-catalog: unknown command %s\n", command);
    Usage(stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv)
{
    return quarl::apps::RunGuarded("quarl-catalog", Run, argc, argv);
}
