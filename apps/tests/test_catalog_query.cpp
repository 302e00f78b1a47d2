// The questions of quarl-catalog over small catalogs made by hand: curve
// families and aliases, depths in mixed units, well patterns, problems and
// statistics, the escaping of odd texts, and the program's exit codes.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "catalog/catalog_db.h"
#include "catalog/catalog_query.h"
#include "catalog_commands/catalog_output.h"

#if !defined(_WIN32)
#include <sys/wait.h>
#endif

namespace fs = std::filesystem;
using namespace quarl::catalog;

namespace {

CurveRow Curve(const std::string& mnemonic, const std::string& unit, double first, double last,
               const std::string& depthUnit)
{
    CurveRow c;
    c.section = "A";
    c.mnemonic = mnemonic;
    c.unit = unit;
    c.hasDepths = true;
    c.firstDepth = first;
    c.lastDepth = last;
    c.depthUnit = depthUnit;
    return c;
}

// A file read well of well `well` (and `uwi` when not empty) holding
// `mnemonics`, every one over the same depths.
FileRecord File(const std::string& path, const std::string& well, const std::string& uwi,
                const std::vector<std::string>& mnemonics, double first = 1000, double last = 2000,
                const std::string& depthUnit = "M")
{
    FileRecord f;
    f.path = path;
    f.version = "2.0";
    f.result = "LASFILE_OK";
    f.reading = "lenient";
    f.well.push_back({"WELL", "", well, "WELL"});
    if (!uwi.empty()) f.well.push_back({"UWI", "", uwi, "UNIQUE WELL ID"});
    for (const std::string& m : mnemonics) f.curves.push_back(Curve(m, "U", first, last, depthUnit));
    return f;
}

class Catalog : public testing::Test {
protected:
    void SetUp() override
    {
        folder = fs::path(testing::TempDir()) / ("catalog_query_" + std::to_string(getpid()));
        fs::create_directories(folder);
        path = (folder / (std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + ".sqlite"))
                   .string();
        fs::remove(path);
        std::string error;
        ASSERT_TRUE(db.Open(path, true, &error)) << error;
    }
    void TearDown() override
    {
        db.Close();
        fs::remove_all(folder);
    }

    void Store(const std::vector<FileRecord>& files)
    {
        ASSERT_TRUE(db.Begin());
        for (const FileRecord& f : files) ASSERT_TRUE(db.StoreFile(f)) << db.Error();
        ASSERT_TRUE(db.Commit());
    }

    ResultTable Run(const SqlQuery& query)
    {
        ResultTable table;
        std::string error;
        EXPECT_TRUE(Ask(db.Handle(), query, &table, &error)) << error << "\n" << query.sql;
        return table;
    }

    ResultTable Query(const QueryOptions& options)
    {
        SqlQuery query;
        std::string error;
        EXPECT_TRUE(BuildQuery(options, &query, &error)) << error;
        return Run(query);
    }

    // The paths that answer, in order, as one text "a b c".
    std::string Paths(const QueryOptions& options)
    {
        std::string paths;
        for (const auto& row : Query(options).rows) paths += (paths.empty() ? "" : " ") + row[0].text;
        return paths;
    }

    fs::path folder;
    std::string path;
    CatalogDb db;
};

QueryOptions Curves(std::vector<std::string> curves)
{
    QueryOptions o;
    o.curves = std::move(curves);
    return o;
}

QueryOptions Depths(double from, double to, const std::string& unit, bool cover = false)
{
    QueryOptions o;
    o.hasDepth = true;
    o.from = from;
    o.to = to;
    o.unit = unit;
    o.cover = cover;
    return o;
}

TEST_F(Catalog, FamilyFindsEveryMemberAndUnknownNamesThemselves)
{
    Store({File("a", "W", "", {"DEPT", "GRC"}), File("b", "W", "", {"DEPT", "sgr"}),
           File("c", "W", "", {"DEPT", "RHOB"}), File("d", "W", "", {"DEPT", "GR:2"}),
           File("e", "W", "", {"DEPT", "XYZ"})});
    EXPECT_EQ(Paths(Curves({"GR"})), "a b d");
    EXPECT_EQ(Paths(Curves({"sgr"})), "a b d");
    EXPECT_EQ(Paths(Curves({"xyz"})), "e");
    EXPECT_EQ(Paths(Curves({"XY"})), "");
    EXPECT_EQ(Paths(Curves({"DEN"})), "c");
    // Only the curves asked for are shown, with their units.
    EXPECT_EQ(Query(Curves({"GR"})).rows[0][3].text, "GRC (U)");
}

// A family's own name, as stats shows it, answers as its mnemonics do, and
// follows an alias a user adds.
TEST_F(Catalog, FamilyNameFindsEveryMember)
{
    Store({File("a", "W", "", {"DEPT", "GRC"}), File("b", "W", "", {"DEPT", "sgr"}),
           File("c", "W", "", {"DEPT", "RHOB"}), File("d", "W", "", {"DEPT", "GR:2"}),
           File("e", "W", "", {"DEPT", "GAMMA_RAY2", "GRX"})});
    EXPECT_EQ(Paths(Curves({"gamma_ray"})), Paths(Curves({"GR"})));
    EXPECT_EQ(Paths(Curves({"Gamma_Ray"})), "a b d");
    EXPECT_EQ(Paths(Curves({"gamma_ray", "density"})), "");
    EXPECT_EQ(Paths(Curves({"density"})), "c");
    EXPECT_EQ(Paths(Curves({"gamma_r"})), "");
    EXPECT_EQ(Query(Curves({"gamma_ray"})).rows.at(0)[3].text, "GRC (U)");
    ASSERT_TRUE(db.Exec("INSERT INTO curve_aliases VALUES ('grx', 'gamma_ray')"));
    EXPECT_EQ(Paths(Curves({"gamma_ray"})), "a b d e");
    EXPECT_EQ(Query(Curves({"gamma_ray"})).rows.at(3)[3].text, "GRX (U)");
}

TEST_F(Catalog, UserAliasJoinsAFamily)
{
    Store({File("a", "W", "", {"GRX"}), File("b", "W", "", {"GRC"})});
    EXPECT_EQ(Paths(Curves({"GR"})), "b");
    ASSERT_TRUE(db.Exec("INSERT INTO curve_aliases VALUES ('grx', 'gamma_ray')"));
    EXPECT_EQ(Paths(Curves({"GR"})), "a b");
    EXPECT_EQ(Paths(Curves({"GRX"})), "a b");
}

TEST_F(Catalog, EveryAskedCurveIsNeeded)
{
    Store({File("both", "W", "", {"DEPT", "GR", "RHOB"}), File("gr", "W", "", {"DEPT", "GR"}),
           File("rhob", "W", "", {"DEPT", "ZDEN"})});
    EXPECT_EQ(Paths(Curves({"GR", "RHOB"})), "both");
    EXPECT_EQ(Paths(Curves({"GR", "RHOB", "NPHI"})), "");
    EXPECT_EQ(Query(Curves({"RHOB", "GR"})).rows.at(0)[3].text, "GR (U), RHOB (U)");
    // Two names of one family ask for one curve, shown once.
    EXPECT_EQ(Paths(Curves({"GR", "SGR"})), "both gr");
    EXPECT_EQ(Query(Curves({"GR", "SGR"})).rows.at(1)[3].text, "GR (U)");
    EXPECT_EQ(Paths(QueryOptions()), "both gr rhob");
}

TEST_F(Catalog, DepthsInMixedUnits)
{
    // 914.4-1219.2 m; 1500-2500 m; 1000.0005-2000 m, logged upwards.
    Store({File("feet", "W", "", {"DEPT", "GR"}, 3000, 4000, "FT"), File("metres", "W", "", {"DEPT", "GR"}, 1500, 2500),
           File("tenths", "W", "", {"DEPT", "GR"}, 787401.6, 393701, ".1IN")});
    EXPECT_EQ(Paths(Depths(1000, 1200, "M")), "feet tenths");
    EXPECT_EQ(Paths(Depths(1000, 1200, "m", true)), "feet");
    EXPECT_EQ(Paths(Depths(1100, 1200, "M", true)), "feet tenths");
    EXPECT_EQ(Paths(Depths(2500, 3000, "M")), "metres");
    EXPECT_EQ(Paths(Depths(2500.001, 3000, "M")), "");
    // 3000-4000 ft is 914.4-1219.2 m: the edges meet despite the conversion's rounding.
    EXPECT_EQ(Paths(Depths(914.4, 1219.2, "M", true)), "feet");
    EXPECT_EQ(Paths(Depths(4921.26, 8202.09, "FEET", true)), "metres");  // 1500.00008-2499.997 m
    const ResultTable feet = Query(Depths(0, 10000, "FT"));
    ASSERT_EQ(feet.rows.size(), 3u);
    EXPECT_NEAR(feet.rows[1][4].number, 1500 / 0.3048, 1e-9);
    EXPECT_NEAR(feet.rows[2][4].number, 393701 * 0.00254 / 0.3048, 1e-9);
    EXPECT_NEAR(feet.rows[2][5].number, 787401.6 * 0.00254 / 0.3048, 1e-9);
    EXPECT_EQ(feet.rows[0][6].text, "FT");
    QueryOptions both = Depths(1000, 1200, "M");
    both.curves = {"GR"};
    EXPECT_EQ(Paths(both), "feet tenths");
}

TEST_F(Catalog, EmptyDepthUnitIsTheAskedOneAndOthersAreUnknown)
{
    Store({File("bare", "W", "", {"DEPT"}, 1000, 1100, ""), File("time", "W", "", {"TIME"}, 1000, 1100, "S")});
    EXPECT_EQ(Paths(Depths(1050, 1060, "M")), "bare");
    EXPECT_EQ(Paths(Depths(1050, 1060, "FT")), "bare");
    EXPECT_EQ(Query(Depths(1050, 1060, "FT")).rows.at(0)[4].number, 1000);
    // Without a range, a file whose depths cannot be converted is shown without them.
    const ResultTable all = Query(QueryOptions());
    ASSERT_EQ(all.rows.size(), 2u);
    EXPECT_EQ(all.rows[1][4].kind, Cell::Kind::kNull);
}

TEST_F(Catalog, FilesWithoutDepths)
{
    FileRecord empty = File("empty", "W", "", {"DEPT", "GR"});
    for (CurveRow& c : empty.curves) c.hasDepths = false;
    FileRecord failed = File("failed", "W", "", {});
    failed.result = "LASFILE_BAD_FORMAT";
    Store({empty, failed, File("full", "W", "", {"DEPT", "GR"})});
    EXPECT_EQ(Paths(Curves({"GR"})), "empty full");
    EXPECT_EQ(Query(Curves({"GR"})).rows[0][4].kind, Cell::Kind::kNull);
    EXPECT_EQ(Paths(Depths(0, 5000, "M")), "full");
    EXPECT_EQ(Paths(QueryOptions()), "empty failed full");
}

TEST_F(Catalog, WellPatternOnNameOrUwi)
{
    Store({File("a", "ANYTOWN 1", "", {"GR"}), File("b", "anyplace 2", "", {"GR"}),
           File("c", "OTHER", "ANY-999", {"GR"}), File("d", "OTHER 100%", "", {"GR"}), File("e", "", "", {"GR"})});
    auto well = [&](const std::string& pattern) {
        QueryOptions o;
        o.wellPattern = pattern;
        return Paths(o);
    };
    EXPECT_EQ(well("ANY*"), "a b c");
    EXPECT_EQ(well("any?own 1"), "a");
    EXPECT_EQ(well("?THER"), "c");
    EXPECT_EQ(well("*100%"), "d");
    EXPECT_EQ(well("*"), "a b c d e");
    EXPECT_EQ(well("NOWHERE"), "");
    EXPECT_EQ(Query(Curves({"GR"})).rows[2][2].text, "ANY-999");
}

TEST(BuildQuery, RefusesWhatCannotBeAsked)
{
    SqlQuery query;
    std::string error;
    EXPECT_FALSE(BuildQuery(Depths(10, 20, "YD"), &query, &error));
    EXPECT_NE(error.find("unknown depth unit"), std::string::npos);
    EXPECT_FALSE(BuildQuery(Depths(20, 10, "M"), &query, &error));
    EXPECT_FALSE(BuildQuery(Curves({" "}), &query, &error));
    EXPECT_TRUE(BuildQuery(Depths(-20, 10, ".1in"), &query, &error));
    EXPECT_TRUE(IsDepthUnit("feet") && IsDepthUnit(" F ") && !IsDepthUnit("S") && !IsDepthUnit(""));
}

TEST_F(Catalog, ProblemsCounted)
{
    FileRecord bad = File("bad", "W", "", {});
    bad.result = "LASFILE_BAD_FORMAT";
    bad.notes = {{"LASNOTE_NO_PERIOD", 9, "first"}, {"LASNOTE_READ_STOPPED", 12, "stopped"}};
    FileRecord cut = File("cut", "W", "", {});
    cut.result = "LASFILE_IO_FAILED";
    FileRecord noisy = File("noisy", "W", "", {"GR"});
    for (int line = 1; line <= 5; ++line) noisy.notes.push_back({"LASNOTE_NULL_FILLED", line, "short row"});
    noisy.notes.push_back({"LASNOTE_NO_PERIOD", 7, "x"});
    Store({noisy, bad, cut});
    const ResultTable failed = Run(ProblemFilesQuery());
    ASSERT_EQ(failed.rows.size(), 2u);
    EXPECT_EQ(failed.rows[0][0].text + " " + failed.rows[0][1].text + " " + failed.rows[0][2].text + " " +
                  failed.rows[0][3].text + " " + failed.rows[0][4].text,
              "bad LASFILE_BAD_FORMAT LASNOTE_NO_PERIOD 9 first");
    EXPECT_EQ(failed.rows[1][0].text, "cut");
    EXPECT_EQ(failed.rows[1][2].kind, Cell::Kind::kNull);
    const ResultTable kinds = Run(NoteKindsQuery());
    std::string counts;
    for (const auto& row : kinds.rows) counts += row[0].text + " " + row[1].text + " " + row[2].text + "; ";
    EXPECT_EQ(counts, "LASNOTE_NO_PERIOD 2 2; LASNOTE_NULL_FILLED 5 1; LASNOTE_READ_STOPPED 1 1; ");
}

TEST_F(Catalog, StatsCounted)
{
    FileRecord old = File("old", "", "", {"DEPT", "GR", "GR:2"});
    old.version = "1.2";
    old.result = "LASFILE_IO_FAILED";
    Store({File("a", "ANYTOWN 1", "100", {"DEPT", "GR", "RHOB"}), File("b", "anytown 1", "", {"DEPT", "gr"}),
           File("c", "Other", "100", {"DEPT", "XYZ"}), old});
    const std::vector<NamedQuery> queries = StatsQueries();
    ASSERT_EQ(queries.size(), 3u);
    const ResultTable totals = Run(queries[0].query);
    std::string text;
    for (size_t c = 0; c < totals.columns.size(); ++c)
        text += totals.columns[c] + "=" + totals.rows.at(0)[c].text + " ";
    // Wells: UWI 100 (a and c) and WELL ANYTOWN 1 (b); "old" names none.
    EXPECT_EQ(text, "files=4 wells=2 files_without_well=1 curves=10 mnemonics=4 failed=1 ");
    const ResultTable versions = Run(queries[1].query);
    ASSERT_EQ(versions.rows.size(), 2u);
    EXPECT_EQ(versions.rows[0][0].text + ":" + versions.rows[0][1].text, "1.2:1");
    EXPECT_EQ(versions.rows[1][0].text + ":" + versions.rows[1][1].text, "2.0:3");
    const ResultTable common = Run(queries[2].query);
    ASSERT_EQ(common.rows.size(), 4u);
    EXPECT_EQ(common.rows[0][0].text, "DEPT");
    EXPECT_EQ(common.rows[1][0].text + " " + common.rows[1][1].text + " " + common.rows[1][2].text + " " +
                  common.rows[1][3].text,
              "GR gamma_ray 3 4");
    EXPECT_EQ(common.rows[3][1].kind, Cell::Kind::kNull);  // XYZ, of no family
}

// Versions are counted by their number, but the files keep their VERS text.
TEST_F(Catalog, StatsCountVersionsByNumber)
{
    std::vector<FileRecord> files;
    for (const char* version : {"1.2", "1.20", " 1.2 ", "2", "2.0", "2.", "3.0", "", "2.0.1", "V2", "1.25"}) {
        files.push_back(File(std::string("f") + std::to_string(files.size()), "W", "", {"DEPT"}));
        files.back().version = version;
    }
    Store(files);
    std::string counts;
    for (const auto& row : Run(StatsQueries()[1].query).rows) counts += "[" + row[0].text + "]" + row[1].text + " ";
    EXPECT_EQ(counts, "[]1 [1.2]3 [1.25]1 [2.0]3 [2.0.1]1 [3.0]1 [V2]1 ");
    EXPECT_EQ(Run(SqlQuery{"SELECT group_concat(version, '|') FROM (SELECT version FROM files ORDER BY id)", {}})
                  .rows.at(0)[0]
                  .text,
              "1.2|1.20| 1.2 |2|2.0|2.|3.0||2.0.1|V2|1.25");
}

TEST(Output, ValidUtf8TakesStrayBytesAsLatin1)
{
    EXPECT_EQ(ValidUtf8("caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"), "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80");
    EXPECT_EQ(ValidUtf8("caf\xE9"), "caf\xC3\xA9");
    EXPECT_EQ(ValidUtf8("\xC0\xAF"), "\xC3\x80\xC2\xAF");              // overlong '/'
    EXPECT_EQ(ValidUtf8("\xED\xA0\x80"), "\xC3\xAD\xC2\xA0\xC2\x80");  // a surrogate
    EXPECT_EQ(ValidUtf8("\xE2\x82"), "\xC3\xA2\xC2\x82");              // cut short
    EXPECT_EQ(ValidUtf8(std::string("a\0b", 3)), std::string("a\0b", 3));
}

ResultTable Odd()
{
    ResultTable t;
    t.columns = {"text", "n"};
    Cell quoted{Cell::Kind::kText, "say \"hi\", then\r\nleave\t\x01", 0};
    Cell latin{Cell::Kind::kText, "Temp\xE9rature", 0};
    Cell real{Cell::Kind::kReal, "", 1219.2000000000001};
    Cell integer{Cell::Kind::kInteger, "42", 42};
    t.rows = {{quoted, real}, {latin, integer}, {Cell(), Cell()}};
    return t;
}

TEST(Output, CsvQuotesFieldsThatNeedIt)
{
    EXPECT_EQ(CsvField("plain text"), "plain text");
    EXPECT_EQ(CsvField("a,b"), "\"a,b\"");
    EXPECT_EQ(CsvField("say \"hi\""), "\"say \"\"hi\"\"\"");
    EXPECT_EQ(CsvField("two\nlines"), "\"two\nlines\"");
    EXPECT_EQ(FormatCsv(Odd()),
              "text,n\r\n\"say \"\"hi\"\", then\r\nleave\t\x01\",1219.2\r\nTemp\xC3\xA9rature,42\r\n,\r\n");
}

TEST(Output, JsonEscapesAndStaysUtf8)
{
    const std::string json = FormatJson(Odd());
    EXPECT_EQ(json,
              "[\n  {\"text\": \"say \\\"hi\\\", then\\r\\nleave\\t\\u0001\", \"n\": 1219.2},\n"
              "  {\"text\": \"Temp\xC3\xA9rature\", \"n\": 42},\n  {\"text\": null, \"n\": null}\n]");
    EXPECT_EQ(ValidUtf8(json), json);
    EXPECT_EQ(FormatJson(ResultTable()), "[]");
}

TEST(Output, TextAlignsCharactersNotBytes)
{
    ResultTable t;
    t.columns = {"name", "value"};
    t.rows = {{{Cell::Kind::kText, "caf\xE9", 0}, {Cell::Kind::kInteger, "5", 5}},
              {{Cell::Kind::kText, "two\nlines", 0}, {Cell::Kind::kInteger, "100", 100}}};
    EXPECT_EQ(FormatText(t), "name       value\ncaf\xC3\xA9           5\ntwo lines    100\n");
    t.columns = {"a", "b"};
    t.rows = {{{Cell::Kind::kText, "x", 0}, {Cell::Kind::kText, "abcdefgh", 0}}};
    EXPECT_EQ(FormatText(t, 4), "a  b\nx  abc\xE2\x80\xA6\n");
}

TEST(Reader, RefusesWhatIsNoCatalogAndChangesNothing)
{
    const fs::path folder = fs::path(testing::TempDir()) / ("catalog_reader_" + std::to_string(getpid()));
    fs::create_directories(folder);
    CatalogReader reader;
    std::string error;
    EXPECT_FALSE(reader.Open((folder / "missing.sqlite").string(), &error));
    EXPECT_NE(error.find("no catalog at"), std::string::npos);
    EXPECT_FALSE(fs::exists(folder / "missing.sqlite"));
    std::ofstream(folder / "text.las") << "~Version\n VERS. 2.0 :\n";
    EXPECT_FALSE(reader.Open((folder / "text.las").string(), &error));
    EXPECT_NE(error.find("is not a quarl catalog"), std::string::npos) << error;
    // Another program's database stays as it was: no tables, no WAL.
    const std::string other = (folder / "other.sqlite").string();
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(other.c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, "CREATE TABLE t(x)", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
    const auto size = fs::file_size(other);
    EXPECT_FALSE(reader.Open(other, &error));
    EXPECT_NE(error.find("no such table: catalog_info"), std::string::npos) << error;
    EXPECT_EQ(fs::file_size(other), size);
    EXPECT_FALSE(fs::exists(other + "-wal"));
    fs::remove_all(folder);
}

#if !defined(_WIN32)
// The program's exit code with `args`, its stdout in `out`; -1 for a crash.
int RunProgram(const std::string& args, std::string* out)
{
    const fs::path capture = fs::path(testing::TempDir()) / ("catalog_out_" + std::to_string(getpid()));
    const std::string command =
        std::string("'") + QUARL_CATALOG_PROGRAM + "' " + args + " >'" + capture.string() + "' 2>/dev/null";
    const int status = std::system(command.c_str());
    std::ifstream in(capture, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    *out = text.str();
    fs::remove(capture);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(Catalog, ProgramAnswersAndRefuses)
{
    FileRecord odd = File(folder.string() + "/odd \"name\",\n.las", "caf\xE9", "", {"DEPT", "GRC"}, 3000, 4000, "FT");
    odd.result = "LASFILE_BAD_FORMAT";
    odd.notes = {{"LASNOTE_NO_PERIOD", 3, "tab\there"}};
    Store({odd, File("/x/plain.las", "ANYTOWN", "", {"DEPT", "RHOB"})});
    db.Close();
    std::string out;
    const std::string catalog = "'" + path + "'";
    EXPECT_EQ(RunProgram("query " + catalog + " --curve GR --depth 1000:1100 --unit M", &out), 0);
    EXPECT_NE(out.find("GRC (U)  914.4  1219.2  M\n1 file\n"), std::string::npos) << out;
    EXPECT_EQ(RunProgram("query " + catalog + " --well 'any*' --csv", &out), 0);
    EXPECT_EQ(
        out,
        "path,well,uwi,curves,top,bottom,depth_unit\r\n/x/plain.las,ANYTOWN,,\"DEPT (U), RHOB (U)\",1000,2000,M\r\n");
    EXPECT_EQ(RunProgram("problems " + catalog + " --json", &out), 0);
    EXPECT_NE(out.find("\"note\": \"tab\\there\""), std::string::npos) << out;
    EXPECT_EQ(RunProgram("stats " + catalog, &out), 0);
    EXPECT_NE(out.find("files               2\n"), std::string::npos) << out;
    // A family's name answers as its mnemonic does: the odd file, by its GRC.
    std::string byMnemonic;
    EXPECT_EQ(RunProgram("query " + catalog + " --curve GR --csv", &byMnemonic), 0);
    EXPECT_EQ(RunProgram("query " + catalog + " --curve gamma_ray --csv", &out), 0);
    EXPECT_EQ(out, byMnemonic);
    EXPECT_NE(out.find("\n\"" + folder.string() + "/odd \"\"name\"\",\n.las\",caf"), std::string::npos) << out;
    // Every JSON answer parses, odd bytes and all.
    if (!fs::exists("/usr/bin/python3")) GTEST_SKIP() << "no /usr/bin/python3 to parse the JSON";
    for (const char* command : {"query", "problems", "stats"}) {
        const std::string json = (folder / "answer.json").string();
        const std::string run = std::string("'") + QUARL_CATALOG_PROGRAM + "' " + command + " " + catalog +
                                " --json >'" + json + "' && /usr/bin/python3 -c \"import json,sys; " +
                                "json.load(open(sys.argv[1], encoding='utf-8', errors='strict'))\" '" + json + "'";
        EXPECT_EQ(std::system(run.c_str()), 0) << command;
    }
}

TEST_F(Catalog, ProgramExitCodes)
{
    db.Close();
    std::string out;
    const std::string catalog = "'" + path + "'";
    EXPECT_EQ(RunProgram("query " + catalog + " --depth 10", &out), 2);
    EXPECT_EQ(RunProgram("query " + catalog + " --unit YD", &out), 2);
    EXPECT_EQ(RunProgram("query " + catalog + " --cover", &out), 2);
    EXPECT_EQ(RunProgram("query " + catalog + " --depth 2:1", &out), 2);
    EXPECT_EQ(RunProgram("query " + catalog + " --curve", &out), 2);
    EXPECT_EQ(RunProgram("stats " + catalog + " --csv", &out), 2);
    EXPECT_EQ(RunProgram("problems", &out), 2);
    EXPECT_EQ(RunProgram("query " + catalog + " " + catalog, &out), 2);
    EXPECT_EQ(RunProgram("query " + catalog + " --depth=-5:10", &out), 2);
    EXPECT_EQ(RunProgram("query " + catalog + " --depth -5:10 --cover", &out), 0);
    EXPECT_EQ(out, "0 files\n");
    EXPECT_EQ(RunProgram("stats '" + (folder / "none.sqlite").string() + "'", &out), 1);
    EXPECT_FALSE(fs::exists(folder / "none.sqlite"));
}
#endif

}  // namespace
