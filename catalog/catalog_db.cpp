#include "catalog/catalog_db.h"

#include <sqlite3.h>

#include <cstddef>
#include <iterator>
#include <optional>
#include <string>

#include "common/curve_families.h"

namespace quarl::catalog {

namespace {

// Version 1 of the schema. docs/CATALOG.md says what every column holds.
const char* const kSchemaV1 = R"sql(
CREATE TABLE catalog_info(key TEXT PRIMARY KEY, value TEXT NOT NULL);
CREATE TABLE files(
  id INTEGER PRIMARY KEY,
  path TEXT NOT NULL UNIQUE,
  size INTEGER NOT NULL,
  mtime_ns INTEGER NOT NULL,
  version TEXT NOT NULL,
  wrap INTEGER NOT NULL,
  result TEXT NOT NULL,
  reading TEXT NOT NULL,
  note_count INTEGER NOT NULL,
  hash TEXT,
  changed_while_read INTEGER NOT NULL,
  scanned_at INTEGER NOT NULL);
CREATE TABLE wells(
  file_id INTEGER NOT NULL REFERENCES files(id),
  position INTEGER NOT NULL,
  mnemonic TEXT NOT NULL, unit TEXT NOT NULL, value TEXT NOT NULL, description TEXT NOT NULL);
CREATE TABLE curves(
  file_id INTEGER NOT NULL REFERENCES files(id),
  section TEXT NOT NULL,
  position INTEGER NOT NULL,
  mnemonic TEXT NOT NULL, unit TEXT NOT NULL, description TEXT NOT NULL, api_code TEXT NOT NULL,
  first_depth REAL, last_depth REAL, depth_unit TEXT NOT NULL);
CREATE TABLE parameters(
  file_id INTEGER NOT NULL REFERENCES files(id),
  section TEXT NOT NULL,
  position INTEGER NOT NULL,
  mnemonic TEXT NOT NULL, unit TEXT NOT NULL, value TEXT NOT NULL, description TEXT NOT NULL);
CREATE TABLE notes(
  file_id INTEGER NOT NULL REFERENCES files(id),
  position INTEGER NOT NULL,
  kind TEXT NOT NULL, line INTEGER NOT NULL, text TEXT NOT NULL);
CREATE TABLE curve_families(name TEXT PRIMARY KEY, description TEXT NOT NULL, unit TEXT NOT NULL);
CREATE TABLE curve_aliases(
  mnemonic TEXT PRIMARY KEY COLLATE NOCASE,
  family TEXT NOT NULL REFERENCES curve_families(name));
CREATE INDEX wells_file ON wells(file_id);
CREATE INDEX wells_mnemonic ON wells(mnemonic COLLATE NOCASE);
CREATE INDEX curves_file ON curves(file_id);
CREATE INDEX curves_mnemonic ON curves(mnemonic COLLATE NOCASE);
CREATE INDEX parameters_file ON parameters(file_id);
CREATE INDEX notes_file ON notes(file_id);
CREATE INDEX notes_kind ON notes(kind);
CREATE VIEW well_summary AS
  SELECT f.id AS file_id, f.path AS path,
    MAX(CASE WHEN upper(w.mnemonic) = 'WELL' THEN w.value END) AS well,
    MAX(CASE WHEN upper(w.mnemonic) = 'UWI' THEN w.value END) AS uwi,
    MAX(CASE WHEN upper(w.mnemonic) = 'API' THEN w.value END) AS api,
    MAX(CASE WHEN upper(w.mnemonic) = 'COMP' THEN w.value END) AS comp,
    MAX(CASE WHEN upper(w.mnemonic) = 'FLD' THEN w.value END) AS fld,
    MAX(CASE WHEN upper(w.mnemonic) = 'LOC' THEN w.value END) AS loc,
    MAX(CASE WHEN upper(w.mnemonic) IN ('LATI', 'LAT') THEN w.value END) AS lati,
    MAX(CASE WHEN upper(w.mnemonic) IN ('LONG', 'LON') THEN w.value END) AS long,
    MAX(CASE WHEN upper(w.mnemonic) = 'SRVC' THEN w.value END) AS srvc,
    MAX(CASE WHEN upper(w.mnemonic) = 'DATE' THEN w.value END) AS date,
    MAX(CASE WHEN upper(w.mnemonic) = 'STRT' THEN w.value END) AS strt,
    MAX(CASE WHEN upper(w.mnemonic) = 'STOP' THEN w.value END) AS stop,
    MAX(CASE WHEN upper(w.mnemonic) = 'STEP' THEN w.value END) AS step,
    MAX(CASE WHEN upper(w.mnemonic) = 'NULL' THEN w.value END) AS null_value,
    MAX(CASE WHEN upper(w.mnemonic) = 'STRT' THEN w.unit END) AS depth_unit
  FROM files f LEFT JOIN wells w ON w.file_id = f.id GROUP BY f.id;
)sql";

// The steps from each older version to the next: kMigrations[i] takes a
// catalog of version i + 1 to version i + 2. Empty while there is one version.
const char* const kMigrations[] = {nullptr};
constexpr size_t kMigrationCount = 0;

void BindText(sqlite3_stmt* s, int at, const std::string& text)
{
    sqlite3_bind_text(s, at, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

}  // namespace

CatalogDb::~CatalogDb()
{
    Close();
}

void CatalogDb::Close()
{
    for (sqlite3_stmt* s : {m_insertFile, m_insertWell, m_insertCurve, m_insertParam, m_insertNote})
        sqlite3_finalize(s);
    for (sqlite3_stmt* s : m_removeFile) sqlite3_finalize(s);
    m_insertFile = m_insertWell = m_insertCurve = m_insertParam = m_insertNote = nullptr;
    m_removeFile.clear();
    if (m_db) sqlite3_close(m_db);
    m_db = nullptr;
}

bool CatalogDb::Fail(const std::string& what)
{
    m_error = what + (m_db ? std::string(": ") + sqlite3_errmsg(m_db) : std::string());
    return false;
}

bool CatalogDb::Exec(const char* sql)
{
    char* message = nullptr;
    if (sqlite3_exec(m_db, sql, nullptr, nullptr, &message) == SQLITE_OK) return true;
    m_error = message ? message : "SQLite failed";
    sqlite3_free(message);
    return false;
}

bool CatalogDb::Prepare(sqlite3_stmt** statement, const char* sql)
{
    return sqlite3_prepare_v2(m_db, sql, -1, statement, nullptr) == SQLITE_OK ||
           Fail("preparing a statement");
}

bool CatalogDb::Open(const std::string& path, bool create, std::string* error)
{
    Close();
    const int flags = SQLITE_OPEN_READWRITE | (create ? SQLITE_OPEN_CREATE : 0);
    bool ok = sqlite3_open_v2(path.c_str(), &m_db, flags, nullptr) == SQLITE_OK ||
              Fail("cannot open " + path);
    // A busy catalog (another scan, a reader) is waited for, not failed at once.
    if (ok) sqlite3_busy_timeout(m_db, 10000);
    ok = ok && Exec("PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;");
    sqlite3_stmt* probe = nullptr;
    ok = ok && Prepare(&probe, "SELECT count(*) FROM sqlite_master");
    const bool fresh = ok && sqlite3_step(probe) == SQLITE_ROW && sqlite3_column_int(probe, 0) == 0;
    sqlite3_finalize(probe);
    ok = ok && CreateOrMigrate(fresh);
    ok = ok && Prepare(&m_insertFile,
                       "INSERT INTO files(path, size, mtime_ns, version, wrap, result, reading, "
                       "note_count, hash, changed_while_read, scanned_at) VALUES "
                       "(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, strftime('%s', 'now'))");
    ok = ok && Prepare(&m_insertWell, "INSERT INTO wells VALUES (?, ?, ?, ?, ?, ?)");
    ok = ok && Prepare(&m_insertCurve, "INSERT INTO curves VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    ok = ok && Prepare(&m_insertParam, "INSERT INTO parameters VALUES (?, ?, ?, ?, ?, ?, ?)");
    ok = ok && Prepare(&m_insertNote, "INSERT INTO notes VALUES (?, ?, ?, ?, ?)");
    for (const char* table : {"wells", "curves", "parameters", "notes", "files"}) {
        const std::string key = std::string(table) == "files" ? "id" : "file_id";
        const std::string sql = std::string("DELETE FROM ") + table + " WHERE " + key +
                                " = (SELECT id FROM files WHERE path = ?)";
        sqlite3_stmt* s = nullptr;
        ok = ok && Prepare(&s, sql.c_str());
        if (s) m_removeFile.push_back(s);
    }
    if (!ok) {
        if (error) *error = m_error;
        Close();
    }
    return ok;
}

bool CatalogDb::CreateOrMigrate(bool fresh)
{
    if (fresh) {
        return Begin() && Exec(kSchemaV1) &&
               Exec(("INSERT INTO catalog_info VALUES ('schema_version', '" +
                     std::to_string(kSchemaVersion) + "')")
                        .c_str()) &&
               SeedFamilies() && Commit();
    }
    sqlite3_stmt* s = nullptr;
    if (sqlite3_prepare_v2(m_db, "SELECT value FROM catalog_info WHERE key = 'schema_version'", -1,
                           &s, nullptr) != SQLITE_OK) {
        sqlite3_finalize(s);
        m_error = "not a quarl catalog (no catalog_info table)";
        return false;
    }
    int version = 0;
    if (sqlite3_step(s) == SQLITE_ROW) version = sqlite3_column_int(s, 0);
    sqlite3_finalize(s);
    if (version < 1 || version > kSchemaVersion) {
        m_error = version < 1 ? "not a quarl catalog (no schema version)"
                              : "a catalog of schema version " + std::to_string(version) +
                                    ", newer than this program's " + std::to_string(kSchemaVersion);
        return false;
    }
    for (int v = version; v < kSchemaVersion; ++v) {
        const size_t step = static_cast<size_t>(v - 1);
        if (step >= kMigrationCount || !Begin() || !Exec(kMigrations[step])) return false;
        const std::string bump = "UPDATE catalog_info SET value = '" + std::to_string(v + 1) +
                                 "' WHERE key = 'schema_version'";
        if (!Exec(bump.c_str()) || !Commit()) return false;
    }
    return true;
}

bool CatalogDb::SeedFamilies()
{
    size_t count = 0;
    const common::CurveFamily* families = common::CurveFamilies(count);
    sqlite3_stmt* family = nullptr;
    sqlite3_stmt* alias = nullptr;
    bool ok = Prepare(&family, "INSERT INTO curve_families VALUES (?, ?, ?)") &&
              Prepare(&alias, "INSERT OR IGNORE INTO curve_aliases VALUES (?, ?)");
    for (size_t i = 0; ok && i < count; ++i) {
        const common::CurveFamily& f = families[i];
        BindText(family, 1, f.name);
        BindText(family, 2, f.description);
        BindText(family, 3, f.unit);
        ok = sqlite3_step(family) == SQLITE_DONE && sqlite3_reset(family) == SQLITE_OK;
        std::string mnemonics = f.mnemonics;
        for (size_t at = 0; ok && at < mnemonics.size();) {
            size_t end = mnemonics.find(' ', at);
            if (end == std::string::npos) end = mnemonics.size();
            BindText(alias, 1, mnemonics.substr(at, end - at));
            BindText(alias, 2, f.name);
            ok = sqlite3_step(alias) == SQLITE_DONE && sqlite3_reset(alias) == SQLITE_OK;
            at = end + 1;
        }
    }
    if (!ok && m_error.empty()) Fail("storing the curve families");
    sqlite3_finalize(family);
    sqlite3_finalize(alias);
    return ok;
}

bool CatalogDb::Begin()
{
    return Exec("BEGIN IMMEDIATE");
}
bool CatalogDb::Commit()
{
    return Exec("COMMIT");
}
bool CatalogDb::Rollback()
{
    return Exec("ROLLBACK");
}

bool CatalogDb::RemoveFile(const std::string& path)
{
    for (sqlite3_stmt* s : m_removeFile) {
        BindText(s, 1, path);
        const bool done = sqlite3_step(s) == SQLITE_DONE;
        sqlite3_reset(s);
        if (!done) return Fail("removing " + path);
    }
    return true;
}

namespace {

// Steps a bound insert and resets it for the next row.
bool StepInsert(sqlite3_stmt* s)
{
    const bool done = sqlite3_step(s) == SQLITE_DONE;
    sqlite3_reset(s);
    sqlite3_clear_bindings(s);
    return done;
}

void BindAt(sqlite3_stmt* s, int at, const std::string& text)
{
    BindText(s, at, text);
}
void BindAt(sqlite3_stmt* s, int at, sqlite3_int64 number)
{
    sqlite3_bind_int64(s, at, number);
}
// An absent number stays NULL.
void BindAt(sqlite3_stmt* s, int at, const std::optional<double>& number)
{
    if (number) sqlite3_bind_double(s, at, *number);
}

// Binds `values` to the columns of `s` in order and inserts the row.
template <typename... Values>
bool InsertRow(sqlite3_stmt* s, const Values&... values)
{
    int at = 0;
    (BindAt(s, ++at, values), ...);
    return StepInsert(s);
}

std::optional<double> Depth(const CurveRow& c, double depth)
{
    return c.hasDepths ? std::optional<double>(depth) : std::nullopt;
}

}  // namespace

bool CatalogDb::StoreFile(const FileRecord& file)
{
    if (!RemoveFile(file.path)) return false;
    sqlite3_stmt* s = m_insertFile;
    BindText(s, 1, file.path);
    sqlite3_bind_int64(s, 2, file.size);
    sqlite3_bind_int64(s, 3, file.mtimeNs);
    BindText(s, 4, file.version);
    sqlite3_bind_int(s, 5, file.wrap ? 1 : 0);
    BindText(s, 6, file.result);
    BindText(s, 7, file.reading);
    sqlite3_bind_int64(s, 8, static_cast<sqlite3_int64>(file.notes.size()));
    if (!file.hash.empty()) BindText(s, 9, file.hash);
    sqlite3_bind_int(s, 10, file.changedWhileRead ? 1 : 0);
    if (!StepInsert(s)) return Fail("storing " + file.path);
    const sqlite3_int64 id = sqlite3_last_insert_rowid(m_db);
    sqlite3_int64 position = 0;
    for (const WellLine& w : file.well)
        if (!InsertRow(m_insertWell, id, position++, w.mnemonic, w.unit, w.value, w.description))
            return Fail("storing the Well lines of " + file.path);
    position = 0;
    for (const CurveRow& c : file.curves)
        if (!InsertRow(m_insertCurve, id, c.section, position++, c.mnemonic, c.unit, c.description,
                       c.apiCode, Depth(c, c.firstDepth), Depth(c, c.lastDepth), c.depthUnit))
            return Fail("storing the curves of " + file.path);
    position = 0;
    for (const ParamRow& p : file.params)
        if (!InsertRow(m_insertParam, id, p.section, position++, p.mnemonic, p.unit, p.value,
                       p.description))
            return Fail("storing the parameters of " + file.path);
    position = 0;
    for (const NoteRow& n : file.notes)
        if (!InsertRow(m_insertNote, id, position++, n.kind, sqlite3_int64{n.line}, n.text))
            return Fail("storing the notes of " + file.path);
    return true;
}

bool CatalogDb::StoredFiles(std::map<std::string, StoredStamp>* out)
{
    sqlite3_stmt* s = nullptr;
    if (!Prepare(&s, "SELECT path, size, mtime_ns, hash IS NOT NULL FROM files")) return false;
    int rc;
    while ((rc = sqlite3_step(s)) == SQLITE_ROW) {
        const char* path = reinterpret_cast<const char*>(sqlite3_column_text(s, 0));
        (*out)[path ? path : ""] = {sqlite3_column_int64(s, 1), sqlite3_column_int64(s, 2),
                                    sqlite3_column_int(s, 3) != 0};
    }
    sqlite3_finalize(s);
    return rc == SQLITE_DONE || Fail("listing the stored files");
}

}  // namespace quarl::catalog
