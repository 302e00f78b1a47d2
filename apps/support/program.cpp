#include "support/program.h"

#include <quarl/version.h>
#include <tessel/tessel.h>

#include <cstdio>
#include <exception>
#include <new>

namespace quarl::apps {

int RunGuarded(const char* name, int (*run)(int, char**), int argc, char** argv)
{
    // The messages are plain literals: formatting one must not need memory.
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "%s: out of memory\n", name);
    } catch (const tessel::Exception& e) {
        std::fprintf(stderr, "%s: failed: %s\n", name, e.Message().c_str());
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s: failed: %s\n", name, e.what());
    } catch (...) {
        std::fprintf(stderr, "%s: failed with an unknown exception\n", name);
    }
    return 1;
}

void PrintVersion(const char* name)
{
    std::printf(
        "%s (quarl) %s\nCopyright 2026 The quarl developers.\n"
        "Licensed under the Apache License, Version 2.0.\n",
        name, quarl::VersionString());
}

}  // namespace quarl::apps
