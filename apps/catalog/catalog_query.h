// The questions quarl-catalog answers over a catalog: files by curves,
// depths and wells, the problems of an archive, and its statistics. Each
// question is built as one SQL statement with its parameters, so that the
// program and the Python package (pandas over sqlite3) ask exactly the same.
#ifndef QUARL_APPS_CATALOG_QUERY_H
#define QUARL_APPS_CATALOG_QUERY_H

#include <string>
#include <vector>

namespace quarl::catalog {

// An SQL statement and the texts bound to its "?" in order.
struct SqlQuery {
    std::string sql;
    std::vector<std::string> params;
};

struct QueryOptions {
    // Every curve asked for must be in the file; a mnemonic stands for its
    // whole family when curve_aliases knows it (GR finds GRC, SGR ...).
    std::vector<std::string> curves;
    bool hasDepth = false;   // --depth FROM:TO given
    double from = 0.0, to = 0.0;
    std::string unit = "M";  // the unit of FROM:TO and of the depths shown
    std::string wellPattern; // a glob (*, ?) on WELL or UWI, no case; empty for any
};

// The files and curves that answer `options`; false with `error` for
// options that cannot be asked (an unknown unit, FROM above TO).
bool BuildQuery(const QueryOptions& options, SqlQuery* out, std::string* error);
// The files whose read failed, with result and first note.
SqlQuery ProblemFilesQuery();
// The notes by kind: kind, how many, in how many files.
SqlQuery NoteKindsQuery();

}  // namespace quarl::catalog

#endif
