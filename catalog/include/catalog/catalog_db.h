// The catalog database of quarl-catalog: an SQLite file that holds the
// headers of every LAS file of an archive, one row set per file. The schema
// is documented in docs/CATALOG.md; `kSchemaVersion` counts its versions and
// Open() migrates an older catalog step by step to this one.
//
// Every file's rows go in whole or not at all: StoreFile and RemoveFile run
// inside the transaction of Begin()/Commit(), and the database is in WAL
// mode, so that a process killed at any point leaves the catalog as after
// its last commit.
#ifndef QUARL_CATALOG_DB_H
#define QUARL_CATALOG_DB_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace quarl::catalog {

constexpr int kSchemaVersion = 1;

// A line of the Well section, as read.
struct WellLine {
    std::string mnemonic, unit, value, description;
};

// A curve of a data section. `apiCode` is the value field of its definition
// line (the log codes of LAS 2.0, "45 310 01 00"). The depths are those of
// the first and the last row of its data section, in `depthUnit` (the unit
// of the index curve); hasDepths is false when the section has no rows.
struct CurveRow {
    std::string section, mnemonic, unit, description, apiCode;
    bool hasDepths = false;
    double firstDepth = 0.0, lastDepth = 0.0;
    std::string depthUnit;
};

// A line of any other header section (Parameter, Log_Parameter, ...).
struct ParamRow {
    std::string section, mnemonic, unit, value, description;
};

// A note of the read: its kind's name (LASNOTE_...), line and text.
struct NoteRow {
    std::string kind;
    int64_t line = 0;
    std::string text;
};

// What the catalog keeps of one file.
struct FileRecord {
    std::string path;     // as walked, absolute
    int64_t size = 0;     // bytes
    int64_t mtimeNs = 0;  // modification time, nanoseconds since 1970
    std::string version;  // "1.2", "2.0", "3.0"; empty when none was read
    bool wrap = false;
    std::string result;             // "LASFILE_OK" or the error's name
    std::string reading;            // "strict" or "lenient"
    std::string hash;               // SHA-256 in hex with --hash, else empty
    bool changedWhileRead = false;  // the file changed during every try to read it
    std::vector<WellLine> well;
    std::vector<CurveRow> curves;
    std::vector<ParamRow> params;
    std::vector<NoteRow> notes;
};

// The size and modification time a stored file had when it was read.
struct StoredStamp {
    int64_t size = 0;
    int64_t mtimeNs = 0;
    bool hashed = false;  // its row has a hash
};

class CatalogDb {
public:
    CatalogDb() = default;
    ~CatalogDb();
    CatalogDb(const CatalogDb&) = delete;
    CatalogDb& operator=(const CatalogDb&) = delete;

    // Opens the catalog at `path`, creating it with the schema and the
    // default curve families when `create` and it does not exist, migrating
    // an older schema. False, with `error` said, when the file cannot be
    // opened, is not a catalog, or comes from a newer schema.
    bool Open(const std::string& path, bool create, std::string* error);
    void Close();
    sqlite3* Handle() const { return m_db; }
    const std::string& Error() const { return m_error; }

    // A transaction around stores and removals. False when SQLite refuses.
    bool Begin();
    bool Commit();
    bool Rollback();

    // Replaces the rows of `file.path` with `file`'s.
    bool StoreFile(const FileRecord& file);
    // Removes the rows of `path`; true also when there were none.
    bool RemoveFile(const std::string& path);
    // Every stored path with its stamp.
    bool StoredFiles(std::map<std::string, StoredStamp>* out);
    // Runs SQL without results.
    bool Exec(const char* sql);

private:
    bool Prepare(sqlite3_stmt** statement, const char* sql);
    bool Fail(const std::string& what);
    bool CreateOrMigrate(bool fresh);
    bool SeedFamilies();

    sqlite3* m_db = nullptr;
    std::string m_error;
    sqlite3_stmt* m_insertFile = nullptr;
    sqlite3_stmt* m_insertWell = nullptr;
    sqlite3_stmt* m_insertCurve = nullptr;
    sqlite3_stmt* m_insertParam = nullptr;
    sqlite3_stmt* m_insertNote = nullptr;
    std::vector<sqlite3_stmt*> m_removeFile;
};

}  // namespace quarl::catalog

#endif
