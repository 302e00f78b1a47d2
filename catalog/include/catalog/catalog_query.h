// The questions quarl-catalog answers over a catalog: files by curves,
// depths and wells, the problems of an archive, and its statistics. Each
// question is built as one SQL statement with its parameters, so that the
// program and the Python package (pandas over sqlite3) ask exactly the same.
#ifndef QUARL_CATALOG_QUERY_H
#define QUARL_CATALOG_QUERY_H

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
    // whole family when curve_aliases knows it (GR finds GRC, SGR ...), and
    // a family's own name stands for its every member (gamma_ray as GR).
    std::vector<std::string> curves;
    bool hasDepth = false;  // --depth FROM:TO given
    double from = 0.0, to = 0.0;
    // With a depth range, a curve answers when its depths overlap the range;
    // with `cover`, only when they span the whole of it.
    bool cover = false;
    std::string unit = "M";   // the unit of FROM:TO and of the depths shown
    std::string wellPattern;  // a glob (*, ?) on WELL or UWI, no case; empty for any
};

// The files and curves that answer `options`; false with `error` for
// options that cannot be asked (an unknown unit, FROM above TO).
// Its columns: path, well, uwi, curves ("GR (GAPI), RHOB (G/C3)"), top and
// bottom (the shallowest and deepest depth of those curves in the asked
// unit, NULL when unknown) and depth_unit (the asked unit).
bool BuildQuery(const QueryOptions& options, SqlQuery* out, std::string* error);
// The files whose read failed, with result and first note.
SqlQuery ProblemFilesQuery();
// The notes by kind: kind, how many, in how many files.
SqlQuery NoteKindsQuery();

// A question of the statistics and the name it is shown under.
struct NamedQuery {
    std::string name;
    SqlQuery query;
};
// The statistics of a catalog: "totals" (one row: files, wells, curves,
// mnemonics, failed), "versions" (version by its number, "1.20" as 1.2 and
// "2" as 2.0, and files) and "mnemonics" (the 20 most common: mnemonic,
// family, files, curves).
std::vector<NamedQuery> StatsQueries();

// Whether `unit` is a depth unit the questions convert (M, F, FT, FEET,
// .1IN and a few spellings of them), ignoring case.
bool IsDepthUnit(const std::string& unit);

}  // namespace quarl::catalog

#endif
