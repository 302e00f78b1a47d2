#include <cstdio>

#include "catalog/catalog_commands.h"

namespace quarl::catalog {

// Placeholder until the scanner lands.
int RunScan(int, char**)
{
    std::fprintf(stderr, "quarl-catalog: scan is not built yet\n");
    return 1;
}

}  // namespace quarl::catalog
