// quarl-catalog's catalog database and its scan: the rows of a file agree
// with what quarl-info says of it, odd trees give counts and never failures,
// a rescan reads only what changed, and a scan killed at any point resumes
// to the catalog an uninterrupted scan makes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <quarl/quarl.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "catalog/catalog_db.h"
#include "catalog/catalog_hash.h"
#include "catalog/catalog_scan.h"
#include "catalog/catalog_walk.h"
#include "support/read_notes.h"

namespace fs = std::filesystem;
using namespace quarl::catalog;

namespace {

fs::path OwnFolder(const std::string& name)
{
    const fs::path folder = fs::path(testing::TempDir()) / (name + "_" + std::to_string(getpid()));
    fs::remove_all(folder);
    fs::create_directories(folder);
    return folder;
}

void Write(const fs::path& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

std::string Las(const std::string& well, double start, int rows)
{
    std::string text = "~Version\nVERS. 2.0 :\nWRAP. NO :\n~Well\nSTRT.M " + std::to_string(start) +
                       " :\nSTEP.M 1 :\nNULL. -999.25 :\nWELL. " + well + " : WELL\n~Curve\nDEPT.M : Depth\n" +
                       "GR.GAPI 45 310 01 00 : Gamma ray\n~Parameter\nBHT.DEGC 35 : Bottom hole\n~A\n";
    for (int i = 0; i < rows; ++i) text += std::to_string(start + i) + " " + std::to_string(40 + i % 50) + "\n";
    return text;
}

// Every row of every table but ids and scan times, ordered by path: two
// catalogs of the same files dump alike.
std::string Dump(const std::string& dbPath)
{
    sqlite3* db = nullptr;
    std::string out;
    if (sqlite3_open_v2(dbPath.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) return "cannot open";
    const char* queries[] = {
        "SELECT path, size, mtime_ns, version, wrap, result, reading, note_count, hash, changed_while_read "
        "FROM files ORDER BY path",
        "SELECT f.path, w.position, w.mnemonic, w.unit, w.value, w.description FROM wells w JOIN files f ON f.id = "
        "w.file_id ORDER BY f.path, w.position",
        "SELECT f.path, c.section, c.position, c.mnemonic, c.unit, c.description, c.api_code, c.first_depth, "
        "c.last_depth, c.depth_unit FROM curves c JOIN files f ON f.id = c.file_id ORDER BY f.path, c.position",
        "SELECT f.path, p.section, p.position, p.mnemonic, p.unit, p.value, p.description FROM parameters p "
        "JOIN files f ON f.id = p.file_id ORDER BY f.path, p.position",
        "SELECT f.path, n.position, n.kind, n.line, n.text FROM notes n JOIN files f ON f.id = n.file_id "
        "ORDER BY f.path, n.position",
        "SELECT count(*) FROM wells WHERE file_id NOT IN (SELECT id FROM files)"};
    for (const char* sql : queries) {
        sqlite3_stmt* s = nullptr;
        sqlite3_prepare_v2(db, sql, -1, &s, nullptr);
        while (s && sqlite3_step(s) == SQLITE_ROW) {
            for (int c = 0; c < sqlite3_column_count(s); ++c) {
                const unsigned char* text = sqlite3_column_text(s, c);
                out += (c ? "|" : "") + std::string(text ? reinterpret_cast<const char*>(text) : "NULL");
            }
            out += "\n";
        }
        sqlite3_finalize(s);
        out += "--\n";
    }
    sqlite3_close(db);
    return out;
}

std::string Scalar(CatalogDb& db, const std::string& sql)
{
    sqlite3_stmt* s = nullptr;
    std::string value = "(none)";
    if (sqlite3_prepare_v2(db.Handle(), sql.c_str(), -1, &s, nullptr) == SQLITE_OK && sqlite3_step(s) == SQLITE_ROW) {
        const unsigned char* text = sqlite3_column_text(s, 0);
        value = text ? reinterpret_cast<const char*>(text) : "NULL";
    }
    sqlite3_finalize(s);
    return value;
}

FileRecord SmallRecord(const std::string& path, const std::string& well)
{
    FileRecord r;
    r.path = path;
    r.size = 10;
    r.mtimeNs = 20;
    r.version = "2.0";
    r.result = "LASFILE_OK";
    r.reading = "lenient";
    r.well.push_back({"WELL", "", well, "WELL"});
    CurveRow curve;
    curve.section = "A";
    curve.mnemonic = "DEPT";
    curve.hasDepths = true;
    curve.firstDepth = 1;
    curve.lastDepth = 2;
    r.curves.push_back(curve);
    r.notes.push_back({"LASNOTE_SHORT_ROW", 3, "short"});
    return r;
}

ScanSummary Scan(CatalogDb& db, const std::vector<std::string>& roots, bool* ok = nullptr)
{
    ScanSummary summary;
    std::string error;
    ScanOptions options;
    options.threads = 2;
    const bool done = ScanTrees(db, roots, options, &summary, &error);
    if (ok) *ok = done;
    EXPECT_TRUE(done || ok) << error;
    return summary;
}

}  // namespace

// ------------------------------------------------------------ the database

TEST(CatalogDb, StoresReplacesAndRemovesWholeFiles)
{
    const fs::path dir = OwnFolder("catalog_db");
    CatalogDb db;
    std::string error;
    ASSERT_TRUE(db.Open((dir / "c.sqlite").string(), true, &error)) << error;
    ASSERT_TRUE(db.Begin());
    ASSERT_TRUE(db.StoreFile(SmallRecord("/a.las", "ONE")));
    ASSERT_TRUE(db.StoreFile(SmallRecord("/b.las", "TWO")));
    ASSERT_TRUE(db.StoreFile(SmallRecord("/a.las", "THREE")));
    ASSERT_TRUE(db.Commit());
    EXPECT_EQ(Scalar(db, "SELECT count(*) FROM files"), "2");
    EXPECT_EQ(Scalar(db, "SELECT group_concat(value) FROM wells"), "TWO,THREE");
    EXPECT_EQ(Scalar(db, "SELECT well FROM well_summary WHERE path = '/a.las'"), "THREE");
    ASSERT_TRUE(db.Begin() && db.RemoveFile("/a.las") && db.RemoveFile("/never.las") && db.Commit());
    for (const char* table : {"files", "wells", "curves", "notes"})
        EXPECT_EQ(Scalar(db, std::string("SELECT count(*) FROM ") + table), "1") << table;
    std::map<std::string, StoredStamp> stored;
    ASSERT_TRUE(db.StoredFiles(&stored));
    ASSERT_EQ(stored.size(), 1u);
    EXPECT_EQ(stored["/b.las"].mtimeNs, 20);
    EXPECT_FALSE(stored["/b.las"].hashed);
}

TEST(CatalogDb, RefusesNewerSchemasAndOtherFiles)
{
    const fs::path dir = OwnFolder("catalog_refuse");
    const std::string newer = (dir / "newer.sqlite").string();
    {
        CatalogDb db;
        ASSERT_TRUE(db.Open(newer, true, nullptr));
        ASSERT_TRUE(db.Exec("UPDATE catalog_info SET value = '99' WHERE key = 'schema_version'"));
    }
    CatalogDb db;
    std::string error;
    EXPECT_FALSE(db.Open(newer, false, &error));
    EXPECT_NE(error.find("newer"), std::string::npos) << error;
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open((dir / "other.sqlite").string().c_str(), &other), SQLITE_OK);
    sqlite3_exec(other, "CREATE TABLE t(x)", nullptr, nullptr, nullptr);
    sqlite3_close(other);
    EXPECT_FALSE(db.Open((dir / "other.sqlite").string(), false, &error));
    EXPECT_NE(error.find("not a quarl catalog"), std::string::npos) << error;
    const std::string words = "this is no database at all, just some words\n";
    Write(dir / "text.sqlite", words);
    EXPECT_FALSE(db.Open((dir / "text.sqlite").string(), false, &error));
    EXPECT_EQ(fs::file_size(dir / "text.sqlite"), words.size());
    EXPECT_FALSE(db.Open((dir / "missing.sqlite").string(), false, &error));
    EXPECT_FALSE(fs::exists(dir / "missing.sqlite"));
}

// ------------------------------------------------------------ one file

TEST(CatalogRecord, ReadsHeadersAndDataEnds)
{
    const fs::path dir = OwnFolder("catalog_record");
    const std::string text = Las("W-1", 100, 500);
    Write(dir / "w.las", text);
    const FileRecord r = ReadFileRecord((dir / "w.las").string(), ScanOptions());
    EXPECT_EQ(r.result, "LASFILE_OK");
    EXPECT_EQ(r.version, "2.0");
    EXPECT_EQ(r.size, static_cast<int64_t>(text.size()));
    EXPECT_FALSE(r.changedWhileRead);
    ASSERT_EQ(r.curves.size(), 2u);
    EXPECT_EQ(r.curves[1].mnemonic, "GR");
    EXPECT_EQ(r.curves[1].apiCode, "45 310 01 00");
    EXPECT_EQ(r.curves[1].description, "Gamma ray");
    EXPECT_EQ(r.curves[1].firstDepth, 100);
    EXPECT_EQ(r.curves[1].lastDepth, 599);
    EXPECT_EQ(r.curves[1].depthUnit, "M");
    ASSERT_GE(r.params.size(), 1u);
    EXPECT_EQ(r.params.back().section, "Parameter");
    EXPECT_EQ(r.params.back().value, "35");
    const FileRecord fromMemory = ReadFileRecordFromBuffer("mem.las", text.data(), text.size(), 7);
    EXPECT_EQ(fromMemory.mtimeNs, 7);
    ASSERT_EQ(fromMemory.curves.size(), 2u);
    EXPECT_EQ(fromMemory.curves[0].lastDepth, 599);
}

TEST(CatalogRecord, Las3AndWrappedFilesGetTheirDepthsFromAFullRead)
{
    const std::string las3 =
        "~Version\nVERS. 3.0 :\nWRAP. NO :\nDLM. COMMA :\n~Well\nNULL. -999.25 :\n~Log_Definition\nDEPT.FT :\n"
        "GR.GAPI :\n~Log_Data | Log_Definition\n10,1\n11,2\n12,3\n";
    const FileRecord r = ReadFileRecordFromBuffer("3.las", las3.data(), las3.size(), 0);
    ASSERT_EQ(r.curves.size(), 2u);
    EXPECT_TRUE(r.curves[0].hasDepths);
    EXPECT_EQ(r.curves[0].firstDepth, 10);
    EXPECT_EQ(r.curves[0].lastDepth, 12);
    EXPECT_EQ(r.curves[0].depthUnit, "FT");
    EXPECT_EQ(r.curves[0].section, "Log_Data");
    const std::string wrapped =
        "~Version\nVERS. 2.0 :\nWRAP. YES :\n~Well\nNULL. -999.25 :\n~Curve\nDEPT.M :\n"
        "A.M :\nB.M :\n~A\n1\n2 3\n2\n4 5\n";
    const FileRecord w = ReadFileRecordFromBuffer("w.las", wrapped.data(), wrapped.size(), 0);
    EXPECT_TRUE(w.wrap);
    ASSERT_EQ(w.curves.size(), 3u);
    EXPECT_EQ(w.curves[2].firstDepth, 1);
    EXPECT_EQ(w.curves[2].lastDepth, 2);
}

TEST(CatalogRecord, HashIsTheSha256OfTheWholeFile)
{
    if (!HashAvailable()) GTEST_SKIP() << "built without libcrypto";
    const fs::path dir = OwnFolder("catalog_hash");
    Write(dir / "abc.las", "abc");
    ScanOptions options;
    options.hash = true;
    // The first test vector of the SHA-2 standard.
    EXPECT_EQ(ReadFileRecord((dir / "abc.las").string(), options).hash,
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(ReadFileRecord((dir / "abc.las").string(), ScanOptions()).hash, "");
    EXPECT_EQ(FileSha256((dir / "missing.las").string()), "");
}

TEST(CatalogRecord, AFileThatKeepsChangingWhileReadIsMarked)
{
    if (!HashAvailable()) GTEST_SKIP() << "built without libcrypto: a header read is too quick to overlap";
    const fs::path dir = OwnFolder("catalog_changing");
    const std::string path = (dir / "busy.las").string();
    Write(path, Las("BUSY", 100, 400000));  // the hash reads every byte: each try takes a while
    ScanOptions options;
    options.hash = true;
    std::atomic<bool> stop{false}, started{false};
    std::thread toucher([&] {
        // Each pass sets a new modification time, as a writer would.
        for (long n = 1; !stop; ++n) {
            const struct timespec times[2] = {{0, UTIME_OMIT}, {1000000 + n, 0}};
            utimensat(AT_FDCWD, path.c_str(), times, 0);
            started = true;
            // A pause between touches: a thread that never waits would
            // starve the reading one where threads take turns (valgrind).
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    });
    while (!started) std::this_thread::yield();
    // Every try of a read must overlap a change; on a loaded machine one
    // read may slip between two, so a few reads are asked for.
    bool marked = false;
    for (int read = 0; read < 5 && !marked; ++read) marked = ReadFileRecord(path, options).changedWhileRead;
    stop = true;
    toucher.join();
    EXPECT_TRUE(marked);
    const FileRecord still = ReadFileRecord(path, options);
    EXPECT_FALSE(still.changedWhileRead);
    EXPECT_EQ(still.result, "LASFILE_OK");
    struct stat now {};
    ASSERT_EQ(stat(path.c_str(), &now), 0);
    EXPECT_EQ(still.mtimeNs, static_cast<int64_t>(now.st_mtim.tv_sec) * 1000000000 + now.st_mtim.tv_nsec);
}

TEST(CatalogRecord, BadFilesAreRecordsThatSayWhy)
{
    const fs::path dir = OwnFolder("catalog_bad");
    mkfifo((dir / "pipe.las").c_str(), 0600);
    EXPECT_EQ(ReadFileRecord((dir / "pipe.las").string(), ScanOptions()).result, "LASFILE_IO_FAILED");
    Write(dir / "empty.las", "");
    Write(dir / "words.las", "Depth,GR\n1,2\n");
    EXPECT_EQ(ReadFileRecord((dir / "empty.las").string(), ScanOptions()).result, "LASFILE_IO_FAILED");
    const FileRecord words = ReadFileRecord((dir / "words.las").string(), ScanOptions());
    EXPECT_EQ(words.result, "LASFILE_BAD_FORMAT");
    EXPECT_FALSE(words.notes.empty());
    const FileRecord missing = ReadFileRecord((dir / "missing.las").string(), ScanOptions());
    EXPECT_EQ(missing.result, "LASFILE_IO_FAILED");
    EXPECT_TRUE(missing.curves.empty());
}

TEST(CatalogWalk, TellsLasFilesByNameOrFirstLine)
{
    EXPECT_TRUE(HasLasName("a.LaS"));
    EXPECT_FALSE(HasLasName("a.las.gz"));
    EXPECT_FALSE(HasLasName("las"));
    EXPECT_TRUE(StartsLikeLas("\xEF\xBB\xBF \r\n~VERSION INFORMATION\n"));
    EXPECT_TRUE(StartsLikeLas("~v"));
    EXPECT_FALSE(StartsLikeLas("# comment\n~V\n"));
    EXPECT_FALSE(StartsLikeLas("~W"));
    EXPECT_FALSE(StartsLikeLas("~"));
    EXPECT_EQ(AbsolutePath("/a/./b/../c/"), "/a/c");
}

// ------------------------------------------------------------ trees

namespace {

// A tree of good and bad files, links that lead nowhere or round in a loop,
// a pipe, and a folder locked to everyone but root.
struct OddTree {
    fs::path root;
    bool locked = false;  // the locked folder is unreadable to this process
    explicit OddTree(const std::string& name) : root(OwnFolder(name) / "tree")
    {
        fs::create_directories(root / "sub");
        fs::create_directories(root / "locked");
        Write(root / "good1.las", Las("G1", 1, 10));
        Write(root / "good2.LAS", Las("G2", 1, 10));
        Write(root / "empty.las", "");
        Write(root / "words.las", "Depth,GR\n1,2\n");
        Write(root / "sub" / "good3.las", Las("G3", 5, 3));
        Write(root / "sub" / "header.txt", "\n  ~VERSION\nVERS. 2.0 :\n~Well\n~Curve\nDEPT.M :\n~A\n1\n");
        Write(root / "sub" / "notes.txt", "not a log\n");
        Write(root / "locked" / "inner.las", Las("L", 1, 2));
        fs::create_symlink("nowhere.las", root / "dangling.las");
        fs::create_symlink("self.las", root / "self.las");
        fs::create_symlink(".", root / "loop");
        fs::create_symlink("good1.las", root / "link_to_good1.las");
        fs::create_symlink("sub/good3.las", root / "a_link_to_good3.las");  // met before its file
        mkfifo((root / "pipe.las").c_str(), 0600);
    }
    void Lock()
    {
        chmod((root / "locked").c_str(), 0);
        locked = access((root / "locked").c_str(), R_OK) != 0;
    }
    ~OddTree() { chmod((root / "locked").c_str(), 0700); }
};

}  // namespace

TEST(CatalogScan, OddTreesGiveRowsAndCountsNeverFailures)
{
    OddTree tree("catalog_odd");
    tree.Lock();
    CatalogDb db;
    ASSERT_TRUE(db.Open((tree.root.parent_path() / "c.sqlite").string(), true, nullptr));
    const ScanSummary s = Scan(db, {tree.root.string()});
    const size_t inner = tree.locked ? 0 : 1;
    EXPECT_EQ(s.seen, 6 + inner);
    EXPECT_EQ(s.read, 6 + inner);
    EXPECT_EQ(s.failed, 2u);
    EXPECT_EQ(s.notLas, 2u);  // notes.txt and the pipe
    EXPECT_EQ(s.links, 5u);   // dangling, self, loop, and the second ways to good1.las and good3.las
    EXPECT_EQ(s.unreadable, 1 - inner);
    EXPECT_EQ(Scalar(db, "SELECT count(*) FROM files"), std::to_string(6 + inner));
    EXPECT_EQ(Scalar(db, "SELECT count(*) FROM files WHERE path LIKE '%link%'"), "0");
    EXPECT_EQ(Scalar(db, "SELECT result FROM files WHERE path LIKE '%/empty.las'"), "LASFILE_IO_FAILED");
    EXPECT_EQ(Scalar(db, "SELECT result FROM files WHERE path LIKE '%/words.las'"), "LASFILE_BAD_FORMAT");
    EXPECT_EQ(Scalar(db, "SELECT version FROM files WHERE path LIKE '%/header.txt'"), "2.0");
    EXPECT_EQ(Scalar(db, "SELECT path FROM files WHERE path LIKE '%/good3.las'"),
              (tree.root / "sub" / "good3.las").string());
}

TEST(CatalogScan, RescanReadsWhatChangedAndRemovesWhatVanished)
{
    OddTree tree("catalog_rescan");
    const fs::path other = tree.root.parent_path() / "other";
    fs::create_directories(other);
    Write(other / "o.las", Las("O", 1, 4));
    CatalogDb db;
    ASSERT_TRUE(db.Open((tree.root.parent_path() / "c.sqlite").string(), true, nullptr));
    Scan(db, {tree.root.string(), other.string()});
    const ScanSummary same = Scan(db, {tree.root.string()});
    EXPECT_EQ(same.read, 0u);
    EXPECT_EQ(same.unchanged, 7u);
    EXPECT_EQ(same.removed, 0u);  // o.las is outside the scanned root

    const timespec times[2] = {{0, UTIME_OMIT}, {1234567, 89}};
    ASSERT_EQ(utimensat(AT_FDCWD, (tree.root / "good2.LAS").c_str(), times, 0), 0);
    fs::remove(tree.root / "sub" / "good3.las");
    tree.Lock();
    const ScanSummary changed = Scan(db, {tree.root.string()});
    EXPECT_EQ(changed.read, 1u);
    EXPECT_EQ(changed.removed, 1u);  // good3.las; inner.las stays when its folder cannot be read
    EXPECT_EQ(Scalar(db, "SELECT mtime_ns FROM files WHERE path LIKE '%/good2.LAS'"), "1234567000000089");
    EXPECT_EQ(Scalar(db, "SELECT count(*) FROM files WHERE path LIKE '%inner.las'"), "1");
    EXPECT_EQ(Scalar(db, "SELECT count(*) FROM files"), "7");
    EXPECT_EQ(Scalar(db, "SELECT count(*) FROM curves WHERE file_id NOT IN (SELECT id FROM files)"), "0");
}

TEST(CatalogScan, StopsAfterWhatItStored)
{
    OddTree tree("catalog_stop");
    CatalogDb db;
    ASSERT_TRUE(db.Open((tree.root.parent_path() / "c.sqlite").string(), true, nullptr));
    std::atomic<bool> stop{true};
    ScanOptions options;
    options.stop = &stop;
    ScanSummary summary;
    std::string error;
    EXPECT_FALSE(ScanTrees(db, {tree.root.string()}, options, &summary, &error));
    EXPECT_EQ(error, "interrupted");
    EXPECT_EQ(Scalar(db, "SELECT count(*) FROM files"), "0");
}

// ------------------------------------------------------------ the corpus against quarl-info

namespace {

// Just enough JSON to read quarl-info's output.
struct Json {
    enum Kind { Null, Bool, Number, String, Array, Object } kind = Null;
    bool flag = false;
    double number = 0;
    std::string text;
    std::vector<Json> items;
    std::vector<std::pair<std::string, Json>> members;
    const Json& operator[](const std::string& key) const
    {
        static const Json none;
        for (const auto& m : members)
            if (m.first == key) return m.second;
        return none;
    }
};

class JsonReader {
public:
    explicit JsonReader(const std::string& text) : m_text(text) {}
    bool Read(Json* out) { return Value(out) && (Blank(), m_at == m_text.size()); }

private:
    void Blank()
    {
        while (m_at < m_text.size() && std::isspace(static_cast<unsigned char>(m_text[m_at]))) ++m_at;
    }
    bool Take(char c)
    {
        Blank();
        if (m_at >= m_text.size() || m_text[m_at] != c) return false;
        ++m_at;
        return true;
    }
    bool Word(const char* word)
    {
        const size_t n = std::strlen(word);
        if (m_text.compare(m_at, n, word) != 0) return false;
        m_at += n;
        return true;
    }
    bool Str(std::string* out)
    {
        if (!Take('"')) return false;
        while (m_at < m_text.size() && m_text[m_at] != '"') {
            char c = m_text[m_at++];
            if (c == '\\' && m_at < m_text.size()) {
                const char e = m_text[m_at++];
                c = e == 'n' ? '\n' : e == 't' ? '\t' : e == 'r' ? '\r' : e == 'b' ? '\b' : e == 'f' ? '\f' : e;
                if (e == 'u') {
                    c = static_cast<char>(std::stoi(m_text.substr(m_at, 4), nullptr, 16));
                    m_at += 4;
                }
            }
            *out += c;
        }
        return Take('"');
    }
    bool Value(Json* out)
    {
        Blank();
        if (m_at >= m_text.size()) return false;
        const char c = m_text[m_at];
        if (c == '"') return out->kind = Json::String, Str(&out->text);
        if (c == '{') {
            out->kind = Json::Object;
            ++m_at;
            if (Take('}')) return true;
            do {
                out->members.emplace_back();
                if (!Str(&out->members.back().first) || !Take(':') || !Value(&out->members.back().second)) return false;
            } while (Take(','));
            return Take('}');
        }
        if (c == '[') {
            out->kind = Json::Array;
            ++m_at;
            if (Take(']')) return true;
            do {
                out->items.emplace_back();
                if (!Value(&out->items.back())) return false;
            } while (Take(','));
            return Take(']');
        }
        if (Word("true") || Word("false")) return out->kind = Json::Bool, out->flag = c == 't', true;
        if (Word("null")) return true;
        size_t used = 0;
        out->kind = Json::Number;
        out->number = std::stod(m_text.substr(m_at, 40), &used);
        m_at += used;
        return used > 0;
    }
    const std::string& m_text;
    size_t m_at = 0;
};

std::string Run(const std::string& command)
{
    std::string out;
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), &pclose);
    char buffer[65536];
    size_t got = 0;
    while (pipe && (got = fread(buffer, 1, sizeof buffer, pipe.get())) > 0) out.append(buffer, got);
    return out;
}

std::vector<std::vector<std::string>> Rows(CatalogDb& db, const std::string& sql, const std::string& path)
{
    std::vector<std::vector<std::string>> rows;
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(db.Handle(), sql.c_str(), -1, &s, nullptr);
    sqlite3_bind_text(s, 1, path.c_str(), -1, SQLITE_TRANSIENT);
    while (s && sqlite3_step(s) == SQLITE_ROW) {
        rows.emplace_back();
        for (int c = 0; c < sqlite3_column_count(s); ++c) {
            const unsigned char* text = sqlite3_column_text(s, c);
            rows.back().push_back(text ? reinterpret_cast<const char*>(text) : "NULL");
        }
    }
    sqlite3_finalize(s);
    return rows;
}

bool SameName(std::string a, std::string b)
{
    for (std::string* t : {&a, &b})
        for (char& c : *t) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return a == b;
}

// The first and last index value of each data section of a full lenient
// read, as the programs read, in file order; "NULL" for a section without.
std::vector<std::pair<std::string, std::string>> FullReadDepths(const std::string& path)
{
    std::vector<std::pair<std::string, std::string>> depths;
    quarl::CLasReader reader;
    reader.SetOptions(quarl::apps::ProgramReadOptions(false, path));
    reader.Open(tessel::TxString(path));
    for (const auto& s : reader) {
        if (s->m_type != quarl::LASSECTION_DATA) continue;
        const quarl::CLasCurve* index = s->m_curves.empty() ? nullptr : &s->m_curves[0];
        if (!index || !index->m_isNumeric || index->m_numbers.empty())
            depths.emplace_back("NULL", "NULL");
        else
            depths.emplace_back(std::to_string(index->m_numbers.front()), std::to_string(index->m_numbers.back()));
    }
    return depths;
}

void ExpectAgreesWithInfo(CatalogDb& db, const std::string& path)
{
    SCOPED_TRACE(path);
    Json info;
    ASSERT_TRUE(
        JsonReader(Run(std::string("'") + QUARL_INFO_PROGRAM + "' --json '" + path + "' 2>/dev/null")).Read(&info));
    const auto file = Rows(db, "SELECT version, wrap FROM files WHERE path = ?", path);
    ASSERT_EQ(file.size(), 1u);
    EXPECT_EQ(file[0][0].empty() ? "?" : file[0][0], info["version"].text);
    EXPECT_EQ(file[0][1] == "1", info["wrapped"].flag);
    const auto well = Rows(db,
                           "SELECT w.mnemonic, w.value, w.unit, w.description FROM wells w JOIN files f ON "
                           "f.id = w.file_id WHERE f.path = ? ORDER BY w.position",
                           path);
    for (const char* key : {"STRT", "STOP", "STEP", "NULL", "WELL", "COMP", "UWI", "API"}) {
        const Json& line = info["well"][key];
        auto row = well.begin();
        while (row != well.end() && !SameName((*row)[0], key)) ++row;
        ASSERT_EQ(row != well.end(), line.kind == Json::Object) << key;
        if (row == well.end()) continue;
        EXPECT_EQ((*row)[1], line["value"].text) << key;
        EXPECT_EQ((*row)[2], line["unit"].text) << key;
        EXPECT_EQ((*row)[3], line["description"].text) << key;
    }
    auto curves = Rows(db,
                       "SELECT c.section, c.mnemonic, c.unit, c.description, c.first_depth, c.last_depth "
                       "FROM curves c JOIN files f ON f.id = c.file_id WHERE f.path = ? ORDER BY c.position",
                       path);
    std::vector<std::vector<std::string>> expected;
    const auto depths = FullReadDepths(path);
    ASSERT_EQ(depths.size(), info["data"].items.size());
    for (size_t d = 0; d < depths.size(); ++d) {
        const Json& data = info["data"].items[d];
        for (const Json& c : data["curves"].items)
            expected.push_back({data["name"].text, c["mnemonic"].text, c["unit"].text, c["description"].text,
                                depths[d].first, depths[d].second});
    }
    ASSERT_EQ(curves.size(), expected.size());
    for (size_t i = 0; i < curves.size(); ++i) {
        for (size_t at : {4, 5})
            if (curves[i][at] != "NULL") curves[i][at] = std::to_string(std::stod(curves[i][at]));
        EXPECT_EQ(curves[i], expected[i]) << i;
    }
}

}  // namespace

// A root that is not there (gone, mistyped, a link to nowhere) refuses the
// whole scan: nothing is read, and what was stored from it stays.
TEST(CatalogScan, ARootThatIsNotThereEndsTheScanBeforeItBegins)
{
    const fs::path folder = OwnFolder("catalog_missing_root");
    fs::create_directories(folder / "a");
    fs::create_directories(folder / "b");
    Write(folder / "a" / "one.las", Las("A", 1, 3));
    Write(folder / "b" / "two.las", Las("B", 1, 3));
    fs::create_symlink("nowhere", folder / "dangling");
    CatalogDb db;
    ASSERT_TRUE(db.Open((folder / "c.sqlite").string(), true, nullptr));
    Scan(db, {(folder / "a").string(), (folder / "b").string()});
    fs::remove_all(folder / "b");
    Write(folder / "a" / "three.las", Las("C", 1, 3));
    for (const char* gone : {"b", "dangling"}) {
        ScanSummary summary;
        std::string error;
        const std::string root = (folder / gone).string();
        EXPECT_FALSE(ScanTrees(db, {(folder / "a").string(), root}, ScanOptions(), &summary, &error));
        EXPECT_EQ(error, root + ": No such file or directory");
        EXPECT_EQ(summary.seen + summary.read + summary.removed, 0u);
        EXPECT_EQ(Scalar(db, "SELECT count(*) FROM files"), "2");  // one.las and two.las, not three.las
    }
    db.Close();
    const fs::path fresh = folder / "fresh.sqlite";
    const std::string out = ::Run(std::string("'") + QUARL_CATALOG_PROGRAM + "' scan '" + (folder / "b").string() +
                                  "' --db '" + fresh.string() + "' --no-progress 2>&1; echo \"exit $?\"");
    EXPECT_EQ(out, "quarl-catalog: " + (folder / "b").string() + ": No such file or directory\nexit 1\n");
    EXPECT_FALSE(fs::exists(fresh));
    fs::remove_all(folder);
}

TEST(CatalogScan, CorpusRowsAgreeWithQuarlInfo)
{
    if (!fs::is_directory(QUARL_CORPUS_DIR)) GTEST_SKIP() << "no corpus at " << QUARL_CORPUS_DIR;
    const fs::path dir = OwnFolder("catalog_corpus");
    CatalogDb db;
    ASSERT_TRUE(db.Open((dir / "c.sqlite").string(), true, nullptr));
    const std::string root = AbsolutePath(QUARL_CORPUS_DIR);
    const ScanSummary s = Scan(db, {root});
    size_t las = 0;
    for (const auto& entry : fs::directory_iterator(root)) {
        const std::string path = entry.path().string();
        if (!entry.is_regular_file() || !HasLasName(path)) continue;
        ++las;
        ExpectAgreesWithInfo(db, path);
    }
    EXPECT_EQ(s.seen, las);
    EXPECT_EQ(Scalar(db, "SELECT count(*) FROM files"), std::to_string(las));
}

// ------------------------------------------------------------ kill -9

namespace {

int RunProgram(const std::vector<std::string>& args, int killAfterUs, int signal = SIGKILL)
{
    const pid_t pid = fork();
    if (pid == 0) {
        std::vector<char*> argv;
        for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        freopen("/dev/null", "w", stdout);
        freopen("/dev/null", "w", stderr);
        execv(argv[0], argv.data());
        _exit(127);
    }
    if (killAfterUs >= 0) {
        std::this_thread::sleep_for(std::chrono::microseconds(killAfterUs));
        kill(pid, signal);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

TEST(CatalogScan, KilledScansResumeToTheSameCatalog)
{
    const fs::path dir = OwnFolder("catalog_kill");
    const fs::path tree = dir / "tree";
    const int kFiles = 1500;
    for (int i = 0; i < kFiles; ++i) {
        const fs::path folder = tree / ("d" + std::to_string(i % 7));
        fs::create_directories(folder);
        Write(folder / ("f" + std::to_string(i) + ".las"), Las("W" + std::to_string(i), i, 20 + i % 40));
    }
    const std::string reference = (dir / "reference.sqlite").string();
    {
        CatalogDb db;
        ASSERT_TRUE(db.Open(reference, true, nullptr));
        EXPECT_EQ(Scan(db, {tree.string()}).read, static_cast<size_t>(kFiles));
    }
    const std::string killed = (dir / "killed.sqlite").string();
    const std::vector<std::string> args = {QUARL_CATALOG_PROGRAM, "scan", tree.string(),  "--db", killed,
                                           "--threads",           "1",    "--no-progress"};
    // How long a whole scan takes here: the kills land within it.
    std::vector<std::string> timed = args;
    timed[4] = (dir / "timed.sqlite").string();
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(RunProgram(timed, -1), 0);
    const auto whole = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
    // The first stop is Ctrl-C once it is reading (a third of the way in),
    // where its handler is set: it commits what it read and says 130.
    const int code = RunProgram(args, static_cast<int>(whole.count() / 3), SIGINT);
    EXPECT_TRUE(code == 130 || code == 0) << code;
    std::mt19937 random(static_cast<unsigned>(getpid()));
    int interrupted = 0, partial = 0;
    // Kills at random times; on a busy machine a scan may finish before its
    // kill, and then the catalog is begun again until a kill has landed
    // between two commits.
    for (int round = 0; round < 40 && (round < 8 || partial == 0); ++round) {
        interrupted += RunProgram(args, static_cast<int>(random() % static_cast<unsigned>(whole.count()))) == -SIGKILL;
        if (!fs::exists(killed)) continue;  // killed before it made the catalog
        CatalogDb db;
        ASSERT_TRUE(db.Open(killed, false, nullptr));
        // Whole files only: every stored file has its 4 Well lines and 2 curves.
        EXPECT_EQ(Scalar(db,
                         "SELECT count(*) FROM files f WHERE (SELECT count(*) FROM wells w WHERE "
                         "w.file_id = f.id) != 4 OR (SELECT count(*) FROM curves c WHERE c.file_id = f.id) != 2"),
                  "0");
        EXPECT_EQ(Scalar(db, "PRAGMA integrity_check"), "ok");
        const int stored = std::stoi(Scalar(db, "SELECT count(*) FROM files"));
        partial += stored > 0 && stored < kFiles;
        db.Close();
        if (stored == kFiles && partial == 0)
            for (const char* end : {"", "-wal", "-shm"}) fs::remove(killed + end);
    }
    EXPECT_GT(interrupted, 0);
    EXPECT_GT(partial, 0) << "no kill landed between two commits";
    EXPECT_EQ(RunProgram(args, -1), 0);
    EXPECT_EQ(Dump(killed), Dump(reference));
}
