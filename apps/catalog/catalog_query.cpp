#include "catalog/catalog_query.h"

#include <cstdio>

#include "catalog/catalog_commands.h"

namespace quarl::catalog {

// Placeholders until the queries land.
int RunQuery(int, char**)
{
    std::fprintf(stderr, "quarl-catalog: query is not built yet\n");
    return 1;
}
int RunProblems(int, char**)
{
    return RunQuery(0, nullptr);
}
int RunStats(int, char**)
{
    return RunQuery(0, nullptr);
}

bool BuildQuery(const QueryOptions&, SqlQuery*, std::string* error)
{
    if (error) *error = "query is not built yet";
    return false;
}
SqlQuery ProblemFilesQuery()
{
    return {};
}
SqlQuery NoteKindsQuery()
{
    return {};
}

}  // namespace quarl::catalog
