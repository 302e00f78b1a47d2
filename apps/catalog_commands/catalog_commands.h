// The commands of quarl-catalog. Each takes the words after the command's
// name (argv[0] is the command) and returns the program's exit code: 0 done,
// 1 failed (a message on stderr), 2 a wrong command line.
#ifndef QUARL_APPS_CATALOG_COMMANDS_H
#define QUARL_APPS_CATALOG_COMMANDS_H

namespace quarl::catalog {

// scan DIR... --db FILE [--hash] [--threads N] [--progress|--no-progress]
int RunScan(int argc, char** argv);
// query FILE [--curve M]... [--depth FROM:TO] [--unit U] [--well PATTERN] [--json|--csv]
int RunQuery(int argc, char** argv);
// problems FILE [--json|--csv]
int RunProblems(int argc, char** argv);
// stats FILE [--json]
int RunStats(int argc, char** argv);

}  // namespace quarl::catalog

#endif
