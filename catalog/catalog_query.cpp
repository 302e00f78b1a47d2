#include "catalog/catalog_query.h"

#include <cmath>
#include <iterator>

#include "common/text.h"

namespace quarl::catalog {

namespace {

// The depth units the questions convert, each with its length in metres.
// ".1IN" is a tenth of an inch, as old tools recorded depth.
struct DepthUnit {
    const char* name;
    const char* metres;
};
const DepthUnit kDepthUnits[] = {{"M", "1.0"},        {"METER", "1.0"},    {"METERS", "1.0"},
                                 {"METRE", "1.0"},    {"METRES", "1.0"},   {"F", "0.3048"},
                                 {"FT", "0.3048"},    {"FEET", "0.3048"},  {"FOOT", "0.3048"},
                                 {".1IN", "0.00254"}, {"0.1IN", "0.00254"}};

// The metres in one `column` unit as an SQL expression, NULL for a unit not
// known; an empty unit counts as `empty` (an SQL expression).
std::string MetresPerUnit(const std::string& column, const std::string& empty)
{
    std::string sql = "(CASE upper(trim(" + column + "))";
    for (const DepthUnit& u : kDepthUnits)
        sql += std::string(" WHEN '") + u.name + "' THEN " + u.metres;
    return sql + " WHEN '' THEN " + empty + " END)";
}

// A curve's mnemonic without the ":2"-style suffix that tells repeated
// mnemonics apart, so that GR:2 is a GR.
std::string Stem(const std::string& column)
{
    return "substr(" + column + ", 1, instr(" + column + " || ':', ':') - 1)";
}

// The first statements of the query: the asked unit, range and well pattern
// (q, and qf with the unit in metres) and the asked curves with their
// families (wanted).
std::string AskedPart(const QueryOptions& options, SqlQuery* out)
{
    std::string sql =
        "WITH q(unit, lo, hi, pattern) AS\n"
        "  (SELECT upper(trim(?)), CAST(? AS REAL), CAST(? AS REAL), upper(?)),\n"
        "qf AS (SELECT unit, lo, hi, pattern, " +
        MetresPerUnit("q.unit", "NULL") + " AS metres FROM q)";
    out->params = {options.unit, common::RoundTripNumber(options.from),
                   common::RoundTripNumber(options.to), options.wellPattern};
    if (options.curves.empty()) return sql;
    sql += ",\nasked(n, name) AS (VALUES ";
    for (size_t i = 0; i < options.curves.size(); ++i) {
        sql += (i ? ", (" : "(") + std::to_string(i + 1) + ", ?)";
        out->params.push_back(common::Trim(options.curves[i]));
    }
    // A mnemonic stands for itself and, when an alias names it, for every
    // mnemonic of that family; a family's own name ("gamma_ray") stands for
    // every mnemonic of the family.
    sql +=
        "),\n"
        "wanted(n, mnemonic) AS (\n"
        "  SELECT n, name FROM asked\n"
        "  UNION\n"
        "  SELECT asked.n, member.mnemonic FROM asked\n"
        "    JOIN curve_aliases alias ON alias.mnemonic = asked.name\n"
        "    JOIN curve_aliases member ON member.family = alias.family\n"
        "  UNION\n"
        "  SELECT asked.n, member.mnemonic FROM asked\n"
        "    JOIN curve_aliases member ON member.family = asked.name COLLATE NOCASE)";
    return sql;
}

// The curves that answer one of the asked names (n; 0 when none was asked,
// and then every curve answers), with their depths in the asked unit.
std::string HitsPart(const QueryOptions& options)
{
    std::string sql =
        ",\nhits AS (\n"
        "  SELECT c.file_id, " +
        std::string(options.curves.empty() ? "0" : "w.n") +
        " AS n, c.section, c.position, c.mnemonic, c.unit,\n"
        "    min(c.first_depth, c.last_depth) * " +
        MetresPerUnit("c.depth_unit", "qf.metres") +
        " / qf.metres AS top,\n"
        "    max(c.first_depth, c.last_depth) * " +
        MetresPerUnit("c.depth_unit", "qf.metres") +
        " / qf.metres AS bottom\n"
        "  FROM ";
    // The asked mnemonics lead, so that the curves are found through their
    // index: a mnemonic itself, or with a ":2"-style suffix (the range from
    // "GR:" to "GR;").
    if (options.curves.empty())
        sql += "curves c";
    else
        sql +=
            "wanted w CROSS JOIN curves c ON (c.mnemonic COLLATE NOCASE = w.mnemonic OR\n"
            "    (c.mnemonic COLLATE NOCASE >= w.mnemonic || ':' AND\n"
            "     c.mnemonic COLLATE NOCASE < w.mnemonic || ';'))";
    sql += " CROSS JOIN qf";
    sql += ")";
    // Depths converted from another unit may differ from the asked ones by
    // the rounding of the conversion: a part in a billion is let through.
    const std::string slack = "1e-9 * (abs(qf.lo) + abs(qf.hi) + 1.0)";
    sql += ",\nkept AS (SELECT hits.* FROM hits CROSS JOIN qf";
    if (options.hasDepth && options.cover)
        sql += " WHERE top <= qf.lo + " + slack + " AND bottom >= qf.hi - " + slack;
    else if (options.hasDepth)
        sql += " WHERE top <= qf.hi + " + slack + " AND bottom >= qf.lo - " + slack;
    return sql + ")";
}

// The value of a Well line of the file f.id, as the view well_summary has it.
std::string WellValue(const std::string& mnemonic)
{
    return "(SELECT max(value) FROM wells WHERE file_id = f.id AND upper(mnemonic) = '" + mnemonic +
           "')";
}

// The files that hold every asked curve (in range), of the wells asked.
std::string SelectPart(const QueryOptions& options)
{
    const size_t needed =
        options.curves.empty() ? (options.hasDepth ? 1 : 0) : options.curves.size();
    // The files that answer, with their WELL and UWI looked up one by one:
    // cheaper than the whole view well_summary when few files answer.
    std::string sql = ",\nnamed AS (SELECT f.id, f.path, " + WellValue("WELL") + " AS well, " +
                      WellValue("UWI") + " AS uwi FROM files f";
    if (needed > 0) {
        sql +=
            "\n  WHERE f.id IN (SELECT file_id FROM kept GROUP BY file_id HAVING count(DISTINCT n) "
            "= " +
            std::to_string(needed) + ")";
    }
    sql += "),\nanswering AS (SELECT * FROM named";
    if (!options.wellPattern.empty()) {
        sql +=
            " WHERE upper(trim(coalesce(well, ''))) GLOB (SELECT pattern FROM qf)"
            " OR upper(trim(coalesce(uwi, ''))) GLOB (SELECT pattern FROM qf)";
    }
    sql += ")";
    sql +=
        "\nSELECT a.path AS path, a.well AS well, a.uwi AS uwi,\n"
        "  group_concat(h.mnemonic || CASE WHEN h.unit <> '' THEN ' (' || h.unit || ')' ELSE '' "
        "END,\n"
        "    ', ') AS curves,\n"
        "  min(h.top) AS top, max(h.bottom) AS bottom, (SELECT unit FROM qf) AS depth_unit\n"
        "FROM answering a\n"
        // A curve that answers two asked names is shown once.
        "LEFT JOIN (SELECT DISTINCT file_id, section, position, mnemonic, unit, top, bottom\n"
        "  FROM kept ORDER BY file_id, section, position) h ON h.file_id = a.id";
    return sql + "\nGROUP BY a.id ORDER BY a.path";
}

}  // namespace

bool IsDepthUnit(const std::string& unit)
{
    for (const DepthUnit& u : kDepthUnits)
        if (common::EqualsNoCase(common::Trim(unit), u.name)) return true;
    return false;
}

bool BuildQuery(const QueryOptions& options, SqlQuery* out, std::string* error)
{
    if (!IsDepthUnit(options.unit)) {
        *error = "unknown depth unit " + options.unit + " (M, F, FT, FEET or .1IN)";
        return false;
    }
    if (options.hasDepth && !(std::isfinite(options.from) && std::isfinite(options.to))) {
        *error = "the depths must be numbers";
        return false;
    }
    if (options.hasDepth && options.from > options.to) {
        *error = "the depth range FROM:TO has FROM greater than TO";
        return false;
    }
    for (const std::string& curve : options.curves) {
        if (common::Trim(curve).empty()) {
            *error = "an empty curve mnemonic";
            return false;
        }
    }
    out->sql = AskedPart(options, out);
    out->sql += HitsPart(options);
    out->sql += SelectPart(options);
    return true;
}

SqlQuery ProblemFilesQuery()
{
    return {
        "SELECT f.path AS path, f.result AS result, n.kind AS note_kind, n.line AS note_line,\n"
        "  n.text AS note\n"
        "FROM files f LEFT JOIN notes n ON n.file_id = f.id\n"
        "  AND n.position = (SELECT min(position) FROM notes WHERE file_id = f.id)\n"
        "WHERE f.result <> 'LASFILE_OK' ORDER BY f.path",
        {}};
}

SqlQuery NoteKindsQuery()
{
    // The kinds met in the most files first: how widespread a problem is
    // matters more than one file that has it on every line.
    return {
        "SELECT kind, count(*) AS notes, count(DISTINCT file_id) AS files FROM notes\n"
        "GROUP BY kind ORDER BY files DESC, notes DESC, kind",
        {}};
}

std::vector<NamedQuery> StatsQueries()
{
    // A well is known by its UWI, else by its name, both without case.
    const std::string wellKey =
        "CASE WHEN trim(coalesce(uwi, '')) <> '' THEN 'UWI ' || upper(trim(uwi))"
        " WHEN trim(coalesce(well, '')) <> '' THEN 'WELL ' || upper(trim(well)) END";
    const std::string totals =
        "SELECT (SELECT count(*) FROM files) AS files,\n"
        "  (SELECT count(DISTINCT " +
        wellKey +
        ") FROM well_summary) AS wells,\n"
        "  (SELECT count(*) FROM well_summary WHERE (" +
        wellKey +
        ") IS NULL) AS files_without_well,\n"
        "  (SELECT count(*) FROM curves) AS curves,\n"
        "  (SELECT count(DISTINCT upper(" +
        Stem("mnemonic") +
        ")) FROM curves) AS mnemonics,\n"
        "  (SELECT count(*) FROM files WHERE result <> 'LASFILE_OK') AS failed";
    // A version is counted by its number: "1.20" as 1.2, "2" as 2.0; any
    // other text as it is.
    const std::string number = "trim(version)";
    const std::string isNumber = "(" + number + " GLOB '[0-9]*' AND NOT " + number +
                                 " GLOB '*[^0-9.]*' AND NOT " + number + " GLOB '*.*.*')";
    const std::string versions = "SELECT CASE WHEN " + isNumber + " THEN CAST(CAST(" + number +
                                 " AS REAL) AS TEXT) ELSE version END AS version,\n"
                                 "  count(*) AS files FROM files GROUP BY 1 ORDER BY 1";
    const std::string mnemonics =
        "SELECT m.mnemonic AS mnemonic, a.family AS family, m.files AS files, m.curves AS curves\n"
        "FROM (SELECT upper(" +
        Stem("mnemonic") +
        ") AS mnemonic, count(DISTINCT file_id) AS files,\n"
        "        count(*) AS curves FROM curves GROUP BY 1) m\n"
        "LEFT JOIN curve_aliases a ON a.mnemonic = m.mnemonic\n"
        "ORDER BY m.files DESC, m.curves DESC, m.mnemonic LIMIT 20";
    return {{"totals", {totals, {}}}, {"versions", {versions, {}}}, {"mnemonics", {mnemonics, {}}}};
}

}  // namespace quarl::catalog
