// Write: the bytes of the file, widths, quoting, reports, cancellation, the
// error record of every point of failure, and what stands at the target
// after a write that did not finish.
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/test_util.h"
#include "support/writer_access.h"
#include "writer/output_file.h"

namespace quarl {
namespace {

using detail::WriterAccess;
using test::Data;
using test::Numbers;
using test::Param;
using test::Section;
using test::TempDir;
using test::Texts;

const char* const kExampleLas20 =
    "# Created by Meridane LAS import/export module QUARL.DLL\n"
    "# Filename: logs/a.las\n"
    "~Version Information\n"
    " VERS.                          2.0 : CWLS LOG ASCII STANDARD -VERSION 2.0\n"
    " WRAP.                           NO : ONE LINE PER DEPTH STEP\n"
    "~Well\n"
    " STRT.          1000.00000000 : Starting Depth {F}\n"
    " STOP.          1001.00000000 : Stopping Depth {F}\n"
    " STEP.             0.50000000 : Step interval between samples {F}\n"
    " COMP.          Not Specified : \n"
    " WELL.          Not Specified : \n"
    " FLD .          Not Specified : \n"
    " LOC .          Not Specified : \n"
    " API .          Not Specified : \n"
    " CNTY.          Not Specified : \n"
    " STAT.          Not Specified : \n"
    " CTRY.          Not Specified : \n"
    " SRVC.          Not Specified : \n"
    "~Curve\n"
    " DEPT.M                         : Depth\n"
    " GR  .GAPI                      : Gamma ray\n"
    "~ASCII\n"
    " 1000 45.25\n"
    " 1000.5 50\n"
    " 1001 61.125\n";

const char* const kExampleLas30 =
    "# Created by Meridane LAS import/export module QUARL.DLL\n"
    "# Filename: logs/b.las\n"
    "~Version Information\n"
    " VERS.                          3.0 : CWLS LOG ASCII STANDARD -VERSION 3.0\n"
    " WRAP.                           NO : ONE LINE PER DEPTH STEP\n"
    " DLM .                        COMMA : DELIMITING CHARACTER BETWEEN DATA COLUMNS\n"
    "~Well\n"
    " WELL.              Example 1 : Well name\n"
    " UWI .                   A-12 : Unique well id\n"
    " STRT.          1000.00000000 : Starting Depth {F}\n"
    " STOP.          1000.50000000 : Stopping Depth {F}\n"
    " STEP.             0.50000000 : Step interval between samples {F}\n"
    " COMP.          Not Specified : \n"
    " FLD .          Not Specified : \n"
    " LOC .          Not Specified : \n"
    " CNTY.          Not Specified : \n"
    " STAT.          Not Specified : \n"
    " CTRY.          Not Specified : \n"
    " SRVC.          Not Specified : \n"
    "~Core_Parameter\n"
    " C_TOP .M                1000.2 : Core top {F}\n"
    " C_BASE.M                1000.4 : Core base {F}\n"
    "~Core_Definition\n"
    " DEPT.M                       : Depth {F}\n"
    " LITH.                        : Lithology {S}\n"
    "~Core_Data | Core_Definition\n"
    " 1000.25,fine sand\n"
    "~Log_Parameter\n"
    " RUNS.                      1 : Runs {I}\n"
    "~Log_Definition\n"
    " DEPT.M                         : Depth {F}\n"
    " GR  .GAPI                      : Gamma ray {F} | RUNS\n"
    "~Log_Data | Log_Definition\n"
    " 1000,45.25\n"
    " 1000.5,50\n";

// Runs the test body in another working folder, so that a relative path
// like logs/a.las can be written as it stands.
class WorkingFolder {
public:
    explicit WorkingFolder(const std::string& path)
    {
        char buffer[4096];
        m_old = getcwd(buffer, sizeof buffer) ? buffer : ".";
        EXPECT_EQ(chdir(path.c_str()), 0);
    }
    ~WorkingFolder() { EXPECT_EQ(chdir(m_old.c_str()), 0); }

private:
    std::string m_old;
};

std::vector<std::string> FolderEntries(const std::string& path)
{
    std::vector<std::string> names;
    if (DIR* dir = opendir(path.c_str())) {
        while (dirent* entry = readdir(dir)) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..") names.push_back(name);
        }
        closedir(dir);
    }
    return names;
}

void BuildExampleLas20(CLasWriter& w)
{
    ASSERT_EQ(w.SetFormat(false, ' '), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Data("ASCII", {Numbers({1000, 1000.5, 1001}, Param("DEPT", "M", "", "Depth")),
                                          Numbers({45.25, 50, 61.125}, Param("GR", "GAPI", "", "Gamma ray"))})),
              LASFILE_OK);
}

void BuildExampleLas30(CLasWriter& w)
{
    ASSERT_EQ(w.SetFormat(true, ','), LASFILE_OK);
    const std::vector<CLasSection> sections = {
        Section("Well", LASSECTION_HEADER,
                {Param("WELL", "", "Example 1", "Well name"), Param("UWI", "", "A-12", "Unique well id")}),
        Section("Core_Parameter", LASSECTION_PARAMETER,
                {Param("C_TOP", "M", "1000.2", "Core top", "{F}"),
                 Param("C_BASE", "M", "1000.4", "Core base", "{F}")}),
        Section("Core_Definition", LASSECTION_DEFINITION,
                {Param("DEPT", "M", "", "Depth", "{F}"), Param("LITH", "", "", "Lithology", "{S}")}),
        Data("Core_Data", {Numbers({1000.25}), Texts({"fine sand"})}, "Core_Definition"),
        Section("Log_Parameter", LASSECTION_PARAMETER, {Param("RUNS", "", "1", "Runs", "{I}")}),
        Section("Log_Definition", LASSECTION_DEFINITION,
                {Param("DEPT", "M", "", "Depth", "{F}"), Param("GR", "GAPI", "", "Gamma ray", "{F}", "RUNS")}),
        Data("Log_Data", {Numbers({1000, 1000.5}), Numbers({45.25, 50})}, "Log_Definition"),
    };
    for (const CLasSection& s : sections) ASSERT_EQ(w.AddSection(s), LASFILE_OK) << s.m_name;
}

TEST(FileOutput, ExamplesComeOutByteForByte)
{
    TempDir dir;
    WorkingFolder here(dir.path());
    ASSERT_EQ(mkdir("logs", 0755), 0);
    CLasWriter las20;
    BuildExampleLas20(las20);
    ASSERT_EQ(las20.Write("logs/a.las"), LASFILE_OK);
    EXPECT_EQ(test::ReadFileBytes("logs/a.las"), kExampleLas20);
    CLasWriter las30;
    BuildExampleLas30(las30);
    ASSERT_EQ(las30.Write("logs/b.las"), LASFILE_OK);
    EXPECT_EQ(test::ReadFileBytes("logs/b.las"), kExampleLas30);
    EXPECT_FALSE(WriterAccess::HasOpenOutput(las30));
    EXPECT_TRUE(WriterAccess::Filename(las30).empty());
    // Nothing but the two files is left in the folder.
    EXPECT_EQ(FolderEntries("logs").size(), 2u);
}

TEST(FileOutput, SecondWriteGivesTheSameBytesAndAnotherPathOnlyAnotherFilenameLine)
{
    TempDir dir;
    CLasWriter w;
    BuildExampleLas30(w);
    ASSERT_EQ(w.Write(dir.File("one.las")), LASFILE_OK);
    ASSERT_EQ(w.Write(dir.File("one.las")), LASFILE_OK);
    ASSERT_EQ(w.Write(dir.File("two.las")), LASFILE_OK);
    std::string expected = kExampleLas30;
    const std::string one = test::ReadFileBytes(dir.File("one.las"));
    std::string two = test::ReadFileBytes(dir.File("two.las"));
    expected.replace(expected.find("logs/b.las"), 10, dir.File("one.las"));
    EXPECT_EQ(one, expected);
    two.replace(two.find("two.las"), 7, "one.las");
    EXPECT_EQ(two, one);
}

// Writes a LAS 3.0 document whose only data is `curves`, and returns the
// lines from the data section's head on.
std::string DataLines(char delimiter, std::vector<CLasCurve> curves)
{
    TempDir dir;
    CLasWriter w;
    EXPECT_EQ(w.SetFormat(true, delimiter), LASFILE_OK);
    EXPECT_EQ(w.AddSection(Data("Log_Data", std::move(curves))), LASFILE_OK);
    EXPECT_EQ(w.Write(dir.File("d.las")), LASFILE_OK);
    const std::string bytes = test::ReadFileBytes(dir.File("d.las"));
    return bytes.substr(bytes.find("~Log_Data"));
}

TEST(FileOutput, DataRowsQuoteTextOnlyWhenTheBlankIsTheDelimiter)
{
    const auto curves = [] {
        return std::vector<CLasCurve>{Numbers({1, 2}), Texts({"fine sand", "a,b"}), Texts({"sand", "\"q\""})};
    };
    EXPECT_EQ(DataLines(' ', curves()),
              "~Log_Data | Log_Definition\n 1 \"fine sand\" sand\n 2 a,b \"q\"\n");
    EXPECT_EQ(DataLines(',', curves()), "~Log_Data | Log_Definition\n 1,fine sand,sand\n 2,a,b,\"q\"\n");
    EXPECT_EQ(DataLines('\t', curves()), "~Log_Data | Log_Definition\n 1\tfine sand\tsand\n 2\ta,b\t\"q\"\n");
}

TEST(FileOutput, NumbersUseFifteenSignificantDigits)
{
    EXPECT_EQ(DataLines(',', {Numbers({0.1, 1e14, 1e15, -0.0, 123456789.123456789}),
                              Numbers({0.125, 1.0 / 3, -2.5e-7, 1e300, 100})}),
              "~Log_Data | Log_Definition\n 0.1,0.125\n 100000000000000,0.333333333333333\n"
              " 1e+15,-2.5e-07\n -0,1e+300\n 123456789.123457,100\n");
}

TEST(FileOutput, NumbersIgnoreTheHostLocale)
{
    const char* german = std::setlocale(LC_ALL, "de_DE.UTF-8");
    if (!german) german = std::setlocale(LC_ALL, "de_DE");
    if (!german) GTEST_SKIP() << "no locale with a decimal comma installed";
    const std::string lines = DataLines(' ', {Numbers({1000.5, 2000.25})});
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(lines, "~Log_Data | Log_Definition\n 1000.5\n 2000.25\n");
}

// The Well and Parameter sections of a document with one odd parameter.
std::string ParameterLines(const CLasParam& odd)
{
    TempDir dir;
    CLasWriter w;
    EXPECT_EQ(w.SetFormat(true, ' '), LASFILE_OK);
    EXPECT_EQ(w.AddSection(Section("Parameter", LASSECTION_PARAMETER,
                                   {Param("BHT", "DEGC", "35.5", "Bottom temp"), odd})),
              LASFILE_OK);
    EXPECT_EQ(w.AddSection(Data("Log_Data", {Numbers({5})})), LASFILE_OK);
    EXPECT_EQ(w.Write(dir.File("p.las")), LASFILE_OK);
    const std::string bytes = test::ReadFileBytes(dir.File("p.las"));
    const size_t begin = bytes.find("~Parameter");
    return bytes.substr(begin, bytes.find("~Log_Definition") - begin);
}

TEST(FileOutput, ParameterWidthsBelongToTheirSection)
{
    // The defaults: 4, 2 and 20; an empty unit and value are blanks.
    EXPECT_EQ(ParameterLines(Param("X", "", "", "")),
              "~Parameter\n BHT .DEGC                 35.5 : Bottom temp\n"
              " X   .                          : \n");
    // A value of 21 bytes, a mnemonic of 5 and a unit of 6 widen every line.
    EXPECT_EQ(ParameterLines(Param("LONGM", "UNITSX", "123456789012345678901", "d", "{F}", "RUNS")),
              "~Parameter\n BHT  .DEGC                    35.5 : Bottom temp\n"
              " LONGM.UNITSX 123456789012345678901 : d {F} | RUNS\n");
    // The Well section of the same file keeps the default widths.
    TempDir dir;
    CLasWriter w;
    ASSERT_EQ(w.SetFormat(true, ' '), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Section("Parameter", LASSECTION_PARAMETER,
                                   {Param("LONGMNEMONIC", "", "x", "")})),
              LASFILE_OK);
    ASSERT_EQ(w.AddSection(Data("Log_Data", {Numbers({5})})), LASFILE_OK);
    ASSERT_EQ(w.Write(dir.File("w.las")), LASFILE_OK);
    EXPECT_NE(test::ReadFileBytes(dir.File("w.las")).find("\n COMP.          Not Specified : \n"),
              std::string::npos);
}

TEST(FileOutput, LongFieldsAreWrittenWhole)
{
    const std::string huge(1000000, 'v');
    const std::string lines = ParameterLines(Param("BIG", "", huge, ""));
    EXPECT_EQ(lines, "~Parameter\n BHT .DEGC " + std::string(huge.size() - 4, ' ') +
                         "35.5 : Bottom temp\n BIG .     " + huge + " : \n");
}

TEST(FileOutput, SectionsWithoutBodyAreTheirHeadAlone)
{
    TempDir dir;
    CLasWriter w;
    ASSERT_EQ(w.SetFormat(true, ' '), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Section("Tops_Parameter", LASSECTION_PARAMETER)), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Data("Empty_Data", {})), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Data("Log_Data", {Numbers({}), Numbers({})})), LASFILE_OK);
    ASSERT_EQ(w.Write(dir.File("e.las")), LASFILE_OK);
    const std::string bytes = test::ReadFileBytes(dir.File("e.las"));
    EXPECT_NE(bytes.find("~Empty_Definition\n~Empty_Data | Empty_Definition\n~Tops_Parameter\n"),
              std::string::npos)
        << bytes;
    const std::string tail = "~Log_Data | Log_Definition\n";
    EXPECT_EQ(bytes.substr(bytes.size() - tail.size()), tail);
}

// Records every status report.
struct Reports {
    std::vector<double> percents;
    std::vector<std::string> messages;
    int stopAt = -1;  // the report (from 0) that answers "stop"

    static int32_t Callback(void* context, double percent, const char* message)
    {
        Reports* self = static_cast<Reports*>(context);
        self->percents.push_back(percent);
        self->messages.push_back(message);
        return static_cast<int>(self->percents.size()) - 1 == self->stopAt ? 1 : 0;
    }
};

TEST(FileOutput, StatusReportsComeAtSectionsAndEveryTenthLine)
{
    TempDir dir;
    CLasWriter w;
    ASSERT_EQ(w.SetFormat(false, ' '), LASFILE_OK);
    CLasSection params = Section("Parameter", LASSECTION_PARAMETER);
    for (int i = 0; i < 25; ++i) params.m_params.push_back(Param("P" + std::to_string(i), "", "1", ""));
    ASSERT_EQ(w.AddSection(params), LASFILE_OK);
    std::vector<double> depths;
    for (int i = 0; i < 10; ++i) depths.push_back(i);
    ASSERT_EQ(w.AddSection(Data("ASCII", {Numbers(depths)})), LASFILE_OK);
    Reports reports;
    w.SetStatusCallback(&reports, &Reports::Callback);
    const std::string path = dir.File("r.las");
    ASSERT_EQ(w.Write(path), LASFILE_OK);
    // Well (12 lines), Parameter (25), Curve (1), ASCII (10 rows): step 25.
    const std::vector<double> expected = {0.0,  0.0,  0.0,  250.0 / 12, 25.0, 25.0, 25.0 + 250.0 / 25,
                                          25.0 + 500.0 / 25, 50.0, 50.0, 75.0, 75.0, 100.0};
    ASSERT_EQ(reports.percents.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) EXPECT_DOUBLE_EQ(reports.percents[i], expected[i]) << i;
    for (const std::string& m : reports.messages) EXPECT_EQ(m, "Writing " + path);
}

TEST(FileOutput, CancelledWriteLeavesTheTargetAsItWas)
{
    TempDir dir;
    const std::string path = dir.Write("t.las", "old bytes\n");
    for (int stopAt : {0, 1, 5, 13}) {
        CLasWriter w;
        BuildExampleLas30(w);
        Reports reports;
        reports.stopAt = stopAt;
        w.SetStatusCallback(&reports, &Reports::Callback);
        EXPECT_EQ(w.Write(path), LASFILE_CANCELLED) << stopAt;
        EXPECT_EQ(w.GetLastError(), LASFILE_OK);
        EXPECT_EQ(static_cast<int>(reports.percents.size()), stopAt + 1);
        EXPECT_EQ(test::ReadFileBytes(path), "old bytes\n");
        EXPECT_TRUE(WriterAccess::HasOpenOutput(w));
        EXPECT_EQ(std::string(WriterAccess::Filename(w)), path);
    }
    // The writers are gone, and so are their temporary files.
    EXPECT_EQ(FolderEntries(dir.path()), std::vector<std::string>{"t.las"});
}

TEST(FileOutput, StopOnTheLastReportKeepsTheOldFileAndTheNextWriteReplacesIt)
{
    TempDir dir;
    const std::string path = dir.Write("t.las", "old bytes\n");
    CLasWriter w;
    BuildExampleLas20(w);
    // The first report, then Well (section, lines 0 and 10), Curve (section,
    // line 0), ASCII (section, row 0): the last report is number 8.
    Reports reports;
    reports.stopAt = 8;
    w.SetStatusCallback(&reports, &Reports::Callback);
    ASSERT_EQ(w.Write(path), LASFILE_CANCELLED);
    EXPECT_EQ(reports.percents.size(), 9u);
    EXPECT_EQ(reports.percents.back(), 100.0);
    EXPECT_EQ(test::ReadFileBytes(path), "old bytes\n");
    EXPECT_EQ(FolderEntries(dir.path()).size(), 2u);  // the target and the unfinished file
    reports.stopAt = -1;
    ASSERT_EQ(w.Write(path), LASFILE_OK);
    EXPECT_EQ(FolderEntries(dir.path()), std::vector<std::string>{"t.las"});
    EXPECT_NE(test::ReadFileBytes(path).find("~ASCII\n 1000 45.25\n"), std::string::npos);
}

TEST(FileOutput, RefusedDocumentLeavesTheTargetAndReportsValidate)
{
    TempDir dir;
    const std::string path = dir.Write("t.las", "old bytes\n");
    CLasWriter w;
    ASSERT_EQ(w.AddSection(Section("Curve", LASSECTION_DEFINITION)), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Data("ASCII", {Numbers({1})})), LASFILE_OK);
    EXPECT_EQ(w.Write(path), LASFILE_MISSING_SECTION);
    EXPECT_EQ(w.GetLastErrorSection(), nullptr);  // the empty link of "ASCII"
    EXPECT_EQ(test::ReadFileBytes(path), "old bytes\n");
    w.Reset();  // leaves the open output alone
    EXPECT_TRUE(WriterAccess::HasOpenOutput(w));
}

TEST(FileOutput, UnwritableTargetsFailBeforeValidate)
{
    TempDir dir;
    CLasWriter w;  // an empty writer: Validate would create "Well"
    for (const std::string& path : {dir.File("missing/x.las"), dir.path(), std::string("/proc/version"),
                                    std::string("/dev/null/x.las"), std::string()}) {
        EXPECT_EQ(w.Write(path), LASFILE_IO_FAILED) << path;
        EXPECT_EQ(w.GetLastError(), LASFILE_IO_FAILED);
        EXPECT_EQ(w.GetLastErrorSection(), nullptr);
        EXPECT_EQ(w.GetLastErrorColumn(), -1);
        EXPECT_TRUE(WriterAccess::Sections(w).empty());
        EXPECT_FALSE(WriterAccess::HasOpenOutput(w));
    }
    if (geteuid() != 0) {
        const std::string locked = dir.Write("locked.las", "keep\n");
        ASSERT_EQ(chmod(locked.c_str(), 0444), 0);
        EXPECT_EQ(w.Write(locked), LASFILE_IO_FAILED);
        EXPECT_EQ(test::ReadFileBytes(locked), "keep\n");
    }
}

TEST(FileOutput, FullDeviceFailsWithIoFailed)
{
    if (!test::FileExists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    CLasWriter w;
    BuildExampleLas20(w);
    EXPECT_EQ(w.Write("/dev/full"), LASFILE_IO_FAILED);
    EXPECT_EQ(w.GetLastError(), LASFILE_IO_FAILED);
    struct stat st {};
    ASSERT_EQ(stat("/dev/full", &st), 0);
    EXPECT_TRUE(S_ISCHR(st.st_mode));  // a device is written in place, never replaced
}

TEST(FileOutput, ReplacedFileKeepsItsPermissionsAndLinksStayLinks)
{
    TempDir dir;
    const std::string path = dir.Write("t.las", "old\n");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    ASSERT_EQ(symlink("t.las", dir.File("link.las").c_str()), 0);
    CLasWriter w;
    BuildExampleLas20(w);
    ASSERT_EQ(w.Write(dir.File("link.las")), LASFILE_OK);
    struct stat st {};
    ASSERT_EQ(lstat(dir.File("link.las").c_str(), &st), 0);
    EXPECT_TRUE(S_ISLNK(st.st_mode));
    ASSERT_EQ(stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0640u);
    EXPECT_NE(test::ReadFileBytes(path).find("~ASCII"), std::string::npos);
}

TEST(FileOutput, EmptyTextCellFailsInEveryDelimiterMode)
{
    for (char delimiter : {' ', '\t', ','}) {
        TempDir dir;
        CLasWriter w;
        ASSERT_EQ(w.SetFormat(true, delimiter), LASFILE_OK);
        ASSERT_EQ(w.AddSection(Data("Log_Data", {Numbers({1, 2, 3}), Texts({"a", "b", ""})})), LASFILE_OK);
        EXPECT_EQ(w.Write(dir.File("x.las")), LASFILE_IO_FAILED);
        EXPECT_STREQ(w.GetLastErrorSection(), "Log_Data");
        EXPECT_EQ(w.GetLastErrorParam(), nullptr);
        EXPECT_EQ(w.GetLastErrorColumn(), 1);
        EXPECT_EQ(w.GetLastErrorRow(), 2);
        EXPECT_FALSE(test::FileExists(dir.File("x.las")));
    }
}

TEST(FileOutput, UntypedSectionIsRefusedAfterItsHead)
{
    TempDir dir;
    CLasWriter w;
    BuildExampleLas20(w);
    ASSERT_EQ(w.Validate(), LASFILE_OK);
    WriterAccess::Sections(w).insert(WriterAccess::Sections(w).begin() + 1,
                                     Section("Other", LASSECTION_ANY));
    EXPECT_EQ(w.Write(dir.File("x.las")), LASFILE_BAD_FORMAT);
    EXPECT_STREQ(w.GetLastErrorSection(), "Other");
}

// The record that Write leaves when output call `call` fails.
struct Failure {
    ELASFILEERROR code;
    std::string section;
    std::string param;
    int32_t column;
    int32_t row;
};

std::vector<Failure> FailEveryOutputCall(const std::string& path, const std::string& old)
{
    std::vector<Failure> failures;
    for (int64_t call = 1;; ++call) {
        CLasWriter w;
        BuildExampleLas30(w);
        detail::g_failOutputCall = call;
        const ELASFILEERROR result = w.Write(path);
        detail::g_failOutputCall = 0;
        if (result == LASFILE_OK) break;
        EXPECT_EQ(result, LASFILE_IO_FAILED);
        EXPECT_EQ(test::ReadFileBytes(path), old) << call;
        const char* section = w.GetLastErrorSection();
        const char* param = w.GetLastErrorParam();
        failures.push_back({w.GetLastError(), section ? section : "", param ? param : "",
                            w.GetLastErrorColumn(), w.GetLastErrorRow()});
    }
    return failures;
}

bool Same(const Failure& a, const Failure& b)
{
    return a.code == b.code && a.section == b.section && a.param == b.param && a.column == b.column &&
           a.row == b.row;
}

TEST(FileOutput, EveryOutputCallHasItsOwnErrorRecord)
{
    TempDir dir;
    const std::string path = dir.Write("t.las", "old\n");
    const std::vector<Failure> failures = FailEveryOutputCall(path, "old\n");
    const Failure none{LASFILE_IO_FAILED, "", "", -1, -1};
    ASSERT_GT(failures.size(), 20u);
    // Banner, filename and "~Version Information" leave the record clear.
    for (size_t i = 0; i < 3; ++i) EXPECT_EQ(failures[i].code, LASFILE_OK) << i;
    // VERS, WRAP, DLM, then the head of "Well" (no association).
    for (size_t i = 3; i < 6; ++i) EXPECT_TRUE(Same(failures[i], none)) << i;
    EXPECT_TRUE(Same(failures[6], {LASFILE_IO_FAILED, "Well", "", -1, -1}));
    // The WELL line: leading blank, then six pieces with the mnemonic.
    EXPECT_TRUE(Same(failures[7], {LASFILE_IO_FAILED, "Well", "", -1, -1}));
    for (size_t i = 8; i < 13; ++i) EXPECT_TRUE(Same(failures[i], {LASFILE_IO_FAILED, "Well", "WELL", -1, -1})) << i;
    // A head with association records nothing but the code.
    bool sawLinkedHead = false;
    for (size_t i = 1; i < failures.size(); ++i) {
        if (Same(failures[i - 1], {LASFILE_IO_FAILED, "Core_Definition", "LITH", -1, -1}) &&
            Same(failures[i], none))
            sawLinkedHead = true;
    }
    EXPECT_TRUE(sawLinkedHead);
    // The GR line ends in format and association: blank, mnemonic, unit,
    // value, description, format, association, line end.
    size_t grPieces = 0;
    for (const Failure& f : failures) grPieces += Same(f, {LASFILE_IO_FAILED, "Log_Definition", "GR", -1, -1});
    EXPECT_EQ(grPieces, 7u);
    // The last row of Log_Data: blank, cell, delimiter, cell, line end.
    const std::vector<Failure> tail = {{LASFILE_IO_FAILED, "Log_Data", "", -1, -1},
                                       {LASFILE_IO_FAILED, "Log_Data", "", 0, 1},
                                       {LASFILE_IO_FAILED, "Log_Data", "", 0, 1},
                                       {LASFILE_IO_FAILED, "Log_Data", "", 1, 1},
                                       {LASFILE_IO_FAILED, "Log_Data", "", 2, 1}};
    for (size_t i = 0; i < tail.size(); ++i)
        EXPECT_TRUE(Same(failures[failures.size() - tail.size() + i], tail[i])) << i;
    EXPECT_EQ(FolderEntries(dir.path()), std::vector<std::string>{"t.las"});
}

TEST(FileOutput, AssignmentNeverSharesAnOpenOutput)
{
    TempDir dir;
    CLasWriter source;
    BuildExampleLas20(source);
    Reports stop;
    stop.stopAt = 0;
    source.SetStatusCallback(&stop, &Reports::Callback);
    ASSERT_EQ(source.Write(dir.File("a.las")), LASFILE_CANCELLED);
    CLasWriter target;
    BuildExampleLas30(target);
    target.SetStatusCallback(&stop, &Reports::Callback);
    stop.stopAt = 1;
    ASSERT_EQ(target.Write(dir.File("b.las")), LASFILE_CANCELLED);
    ASSERT_EQ(FolderEntries(dir.path()).size(), 2u);  // two unfinished files
    target = source;
    EXPECT_FALSE(WriterAccess::HasOpenOutput(target));
    EXPECT_TRUE(WriterAccess::Filename(target).empty());
    EXPECT_TRUE(WriterAccess::HasOpenOutput(source));
    EXPECT_EQ(FolderEntries(dir.path()).size(), 1u);  // the target's own is gone
    target.SetStatusCallback(nullptr, nullptr);
    ASSERT_EQ(target.Write(dir.File("c.las")), LASFILE_OK);
    EXPECT_NE(test::ReadFileBytes(dir.File("c.las")).find("~ASCII\n 1000 45.25\n"), std::string::npos);
}

}  // namespace
}  // namespace quarl
