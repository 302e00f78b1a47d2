// How every program starts and ends: the work runs inside a guard, so that
// running out of memory or any other exception ends in a message and exit
// code 1 rather than an abort.
#ifndef QUARL_APPS_PROGRAM_H
#define QUARL_APPS_PROGRAM_H

namespace quarl::apps {

// Calls run(argc, argv) and returns what it returns. An exception that
// escapes it is reported on stderr as "<name>: ..." and gives 1.
int RunGuarded(const char* name, int (*run)(int, char**), int argc, char** argv);

// The answer to --version, on stdout: "<name> (quarl) <version>", the version
// of the library the program loaded, then the copyright and the license (the
// man pages' COPYRIGHT section).
void PrintVersion(const char* name);

}  // namespace quarl::apps

#endif
