// Write: the bytes of the file, widths, quoting, reports, cancellation, the
// error record of every point of failure, and what stands at the target
// after a write that did not finish.
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstring>
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
using test::ReadFileBytes;
using test::Record;
using test::Section;
using test::TempDir;
using test::Texts;

const char* const kBanner = "# Created by Meridane LAS import/export module QUARL.DLL\n";
const char* const kDepths =  // STRT 1000, STEP 0.5
    " STRT.          1000.00000000 : Starting Depth {F}\n STOP.          %s : Stopping Depth {F}\n"
    " STEP.             0.50000000 : Step interval between samples {F}\n COMP.          Not Specified : \n";

std::string Depths(const std::string& stop)
{
    std::string lines = kDepths;
    return lines.replace(lines.find("%s"), 2, stop);
}

const std::string kExampleLas20 =
    kBanner + std::string("# Filename: logs/a.las\n~Version Information\n") +
    " VERS.                          2.0 : CWLS LOG ASCII STANDARD -VERSION 2.0\n"
    " WRAP.                           NO : ONE LINE PER DEPTH STEP\n~Well\n" + Depths("1001.00000000") +
    " WELL.          Not Specified : \n FLD .          Not Specified : \n"
    " LOC .          Not Specified : \n API .          Not Specified : \n"
    " CNTY.          Not Specified : \n STAT.          Not Specified : \n"
    " CTRY.          Not Specified : \n SRVC.          Not Specified : \n"
    "~Curve\n DEPT.M                         : Depth\n GR  .GAPI                      : Gamma ray\n"
    "~ASCII\n 1000 45.25\n 1000.5 50\n 1001 61.125\n";

const std::string kExampleLas30 =
    kBanner + std::string("# Filename: logs/b.las\n~Version Information\n") +
    " VERS.                          3.0 : CWLS LOG ASCII STANDARD -VERSION 3.0\n"
    " WRAP.                           NO : ONE LINE PER DEPTH STEP\n"
    " DLM .                        COMMA : DELIMITING CHARACTER BETWEEN DATA COLUMNS\n~Well\n"
    " WELL.              Example 1 : Well name\n UWI .                   A-12 : Unique well id\n" +
    Depths("1000.50000000") + " FLD .          Not Specified : \n LOC .          Not Specified : \n"
    " CNTY.          Not Specified : \n STAT.          Not Specified : \n"
    " CTRY.          Not Specified : \n SRVC.          Not Specified : \n"
    "~Core_Parameter\n C_TOP .M                1000.2 : Core top {F}\n C_BASE.M                1000.4 : Core base {F}\n"
    "~Core_Definition\n DEPT.M                       : Depth {F}\n LITH.                        : Lithology {S}\n"
    "~Core_Data | Core_Definition\n 1000.25,fine sand\n~Log_Parameter\n RUNS.                      1 : Runs {I}\n"
    "~Log_Definition\n DEPT.M                         : Depth {F}\n GR  .GAPI                      : Gamma ray {F} | RUNS\n"
    "~Log_Data | Log_Definition\n 1000,45.25\n 1000.5,50\n";

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
    for (const CLasSection& s : std::vector<CLasSection>{
             Section("Well", LASSECTION_HEADER,
                     {Param("WELL", "", "Example 1", "Well name"), Param("UWI", "", "A-12", "Unique well id")}),
             Section("Core_Parameter", LASSECTION_PARAMETER,
                     {Param("C_TOP", "M", "1000.2", "Core top", "{F}"), Param("C_BASE", "M", "1000.4", "Core base", "{F}")}),
             Section("Core_Definition", LASSECTION_DEFINITION,
                     {Param("DEPT", "M", "", "Depth", "{F}"), Param("LITH", "", "", "Lithology", "{S}")}),
             Data("Core_Data", {Numbers({1000.25}), Texts({"fine sand"})}, "Core_Definition"),
             Section("Log_Parameter", LASSECTION_PARAMETER, {Param("RUNS", "", "1", "Runs", "{I}")}),
             Section("Log_Definition", LASSECTION_DEFINITION,
                     {Param("DEPT", "M", "", "Depth", "{F}"), Param("GR", "GAPI", "", "Gamma ray", "{F}", "RUNS")}),
             Data("Log_Data", {Numbers({1000, 1000.5}), Numbers({45.25, 50})}, "Log_Definition")})
        ASSERT_EQ(w.AddSection(s), LASFILE_OK) << s.m_name;
}

TEST(FileOutput, ExamplesComeOutByteForByteAndAgain)
{
    TempDir dir;
    char old[4096];
    ASSERT_NE(getcwd(old, sizeof old), nullptr);
    ASSERT_EQ(mkdir(dir.File("logs").c_str(), 0755), 0);
    ASSERT_EQ(chdir(dir.path().c_str()), 0);  // so that logs/a.las is written as it stands
    CLasWriter las20, las30;
    BuildExampleLas20(las20);
    BuildExampleLas30(las30);
    const ELASFILEERROR written20 = las20.Write("logs/a.las"), written30 = las30.Write("logs/b.las");
    const std::string bytes20 = ReadFileBytes("logs/a.las"), bytes30 = ReadFileBytes("logs/b.las");
    ASSERT_EQ(chdir(old), 0);
    ASSERT_EQ(written20, LASFILE_OK);
    ASSERT_EQ(written30, LASFILE_OK);
    EXPECT_EQ(bytes20, kExampleLas20);
    EXPECT_EQ(bytes30, kExampleLas30);
    EXPECT_FALSE(WriterAccess::HasOpenOutput(las30));
    EXPECT_TRUE(WriterAccess::Filename(las30).empty());
    EXPECT_EQ(FolderEntries(dir.File("logs")).size(), 2u);  // nothing else is left
    // A second write gives the same bytes; another path only another filename.
    for (const char* name : {"logs/b.las", "other.las"}) {
        ASSERT_EQ(las30.Write(dir.File(name)), LASFILE_OK);
        std::string expected = kExampleLas30;
        EXPECT_EQ(ReadFileBytes(dir.File(name)), expected.replace(expected.find("logs/b.las"), 10, dir.File(name)));
    }
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
    const std::string bytes = ReadFileBytes(dir.File("d.las"));
    return bytes.substr(bytes.find("~Log_Data | Log_Definition\n") + 27);
}

TEST(FileOutput, DataRowsQuoteOnlyForTheBlankAndUseFifteenDigits)
{
    const std::vector<CLasCurve> curves = {Numbers({1, 2}), Texts({"fine sand", "a,b"}), Texts({"sand", "\"q\""})};
    EXPECT_EQ(DataLines(' ', curves), " 1 \"fine sand\" sand\n 2 a,b \"q\"\n");
    EXPECT_EQ(DataLines(',', curves), " 1,fine sand,sand\n 2,a,b,\"q\"\n");
    EXPECT_EQ(DataLines('\t', curves), " 1\tfine sand\tsand\n 2\ta,b\t\"q\"\n");
    EXPECT_EQ(DataLines(',', {Numbers({0.1, 1e14, 1e15, -0.0, 123456789.123456789}),
                              Numbers({0.125, 1.0 / 3, -2.5e-7, 1e300, 100})}),
              " 0.1,0.125\n 100000000000000,0.333333333333333\n 1e+15,-2.5e-07\n -0,1e+300\n 123456789.123457,100\n");
    if (std::setlocale(LC_ALL, "de_DE.UTF-8")) {  // the host's decimal comma changes nothing
        const std::string lines = DataLines(' ', {Numbers({1000.5, 2000.25})});
        std::setlocale(LC_ALL, "C");
        EXPECT_EQ(lines, " 1000.5\n 2000.25\n");
    }
}

// The Parameter section of a document with one odd parameter.
std::string ParameterLines(const CLasParam& odd)
{
    TempDir dir;
    CLasWriter w;
    EXPECT_EQ(w.SetFormat(true, ' '), LASFILE_OK);
    EXPECT_EQ(w.AddSection(Section("Parameter", LASSECTION_PARAMETER, {Param("BHT", "DEGC", "35.5", "Bottom temp"), odd})),
              LASFILE_OK);
    EXPECT_EQ(w.AddSection(Data("Log_Data", {Numbers({5})})), LASFILE_OK);
    EXPECT_EQ(w.Write(dir.File("p.las")), LASFILE_OK);
    const std::string bytes = ReadFileBytes(dir.File("p.las"));
    const size_t begin = bytes.find("~Parameter\n") + 11;
    EXPECT_NE(bytes.find(" COMP.          Not Specified : \n"), std::string::npos);  // Well keeps its widths
    return bytes.substr(begin, bytes.find("~Log_Definition") - begin);
}

TEST(FileOutput, ParameterWidthsBelongToTheirSection)
{
    // The defaults: 4, 2 and 20; an empty unit and value are blanks.
    EXPECT_EQ(ParameterLines(Param("X", "", "", "")),
              " BHT .DEGC                 35.5 : Bottom temp\n X   .                          : \n");
    // A value of 21 bytes, a mnemonic of 5 and a unit of 6 widen every line.
    EXPECT_EQ(ParameterLines(Param("LONGM", "UNITSX", "123456789012345678901", "d", "{F}", "RUNS")),
              " BHT  .DEGC                    35.5 : Bottom temp\n LONGM.UNITSX 123456789012345678901 : d {F} | RUNS\n");
    const std::string huge(1000000, 'v');  // long fields are written whole
    EXPECT_EQ(ParameterLines(Param("BIG", "", huge, "")),
              " BHT .DEGC " + std::string(huge.size() - 4, ' ') + "35.5 : Bottom temp\n BIG .     " + huge + " : \n");
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
    const std::string bytes = ReadFileBytes(dir.File("e.las"));
    EXPECT_NE(bytes.find("~Empty_Definition\n~Empty_Data | Empty_Definition\n~Tops_Parameter\n"), std::string::npos);
    EXPECT_EQ(bytes.substr(bytes.size() - 27), "~Log_Data | Log_Definition\n");
}

// Records every status report; answers "stop" on report number `stopAt`.
struct Reports {
    std::vector<double> percents;
    std::vector<std::string> messages;
    int stopAt = -1;

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
    CLasSection params = Section("Parameter", LASSECTION_PARAMETER);
    for (int i = 0; i < 25; ++i) params.m_params.push_back(Param("P" + std::to_string(i), "", "1", ""));
    ASSERT_EQ(w.AddSection(params), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Data("ASCII", {Numbers({0, 1, 2, 3, 4, 5, 6, 7, 8, 9})})), LASFILE_OK);
    Reports reports;
    w.SetStatusCallback(&reports, &Reports::Callback);
    ASSERT_EQ(w.Write(dir.File("r.las")), LASFILE_OK);
    // Well (12 lines), Parameter (25), Curve (1), ASCII (10 rows): step 25.
    const std::vector<double> expected = {0.0,  0.0,  0.0,  250.0 / 12, 25.0, 25.0, 25.0 + 250.0 / 25,
                                          25.0 + 500.0 / 25, 50.0, 50.0, 75.0, 75.0, 100.0};
    ASSERT_EQ(reports.percents.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) EXPECT_DOUBLE_EQ(reports.percents[i], expected[i]) << i;
    for (const std::string& m : reports.messages) EXPECT_EQ(m, "Writing " + dir.File("r.las"));
}

TEST(FileOutput, CancelledWriteLeavesTheTargetAsItWas)
{
    TempDir dir;
    const std::string path = dir.Write("t.las", "old bytes\n");
    // Stopping on the last report (number 8 of the LAS 2.0 example) too.
    for (int stopAt : {0, 1, 5, 13, 8}) {
        CLasWriter w;
        stopAt == 8 ? BuildExampleLas20(w) : BuildExampleLas30(w);
        Reports reports;
        reports.stopAt = stopAt;
        w.SetStatusCallback(&reports, &Reports::Callback);
        EXPECT_EQ(w.Write(path), LASFILE_CANCELLED) << stopAt;
        EXPECT_EQ(w.GetLastError(), LASFILE_OK);
        EXPECT_EQ(static_cast<int>(reports.percents.size()), stopAt + 1);
        EXPECT_EQ(ReadFileBytes(path), "old bytes\n");
        EXPECT_TRUE(WriterAccess::HasOpenOutput(w));
        EXPECT_EQ(std::string(WriterAccess::Filename(w)), path);
        if (stopAt != 8) continue;
        EXPECT_EQ(reports.percents.back(), 100.0);
        EXPECT_EQ(FolderEntries(dir.path()).size(), 2u);  // the target and the unfinished file
        reports.stopAt = -1;  // the next write replaces the old file
        ASSERT_EQ(w.Write(path), LASFILE_OK);
        EXPECT_NE(ReadFileBytes(path).find("~ASCII\n 1000 45.25\n"), std::string::npos);
    }
    // The writers are gone, and so are their temporary files.
    EXPECT_EQ(FolderEntries(dir.path()), std::vector<std::string>{"t.las"});
}

TEST(FileOutput, RefusedOrUnwritableTargetsKeepWhatWasThere)
{
    TempDir dir;
    const std::string path = dir.Write("t.las", "old bytes\n");
    CLasWriter refused;
    ASSERT_EQ(refused.AddSection(Section("Curve", LASSECTION_DEFINITION)), LASFILE_OK);
    ASSERT_EQ(refused.AddSection(Data("ASCII", {Numbers({1})})), LASFILE_OK);
    EXPECT_EQ(refused.Write(path), LASFILE_MISSING_SECTION);  // the result of Validate
    EXPECT_EQ(ReadFileBytes(path), "old bytes\n");
    refused.Reset();  // leaves the open output alone
    EXPECT_TRUE(WriterAccess::HasOpenOutput(refused));

    CLasWriter w;  // an empty writer: Validate would create "Well"
    for (const std::string& bad : {dir.File("missing/x.las"), dir.path(), std::string("/proc/version"),
                                   std::string("/dev/null/x.las"), std::string()}) {
        EXPECT_EQ(w.Write(bad), LASFILE_IO_FAILED) << bad;
        EXPECT_EQ(w.GetLastError(), LASFILE_IO_FAILED);
        EXPECT_EQ(w.GetLastErrorColumn(), -1);
        EXPECT_TRUE(WriterAccess::Sections(w).empty());
        EXPECT_FALSE(WriterAccess::HasOpenOutput(w));
    }
    if (geteuid() != 0) {
        ASSERT_EQ(chmod(path.c_str(), 0444), 0);
        EXPECT_EQ(w.Write(path), LASFILE_IO_FAILED);
        EXPECT_EQ(ReadFileBytes(path), "old bytes\n");
    }
    // A device is written in place, never replaced.
    BuildExampleLas20(w);
    EXPECT_EQ(w.Write("/dev/full"), LASFILE_IO_FAILED);
    struct stat st {};
    ASSERT_EQ(stat("/dev/full", &st), 0);
    EXPECT_TRUE(S_ISCHR(st.st_mode));
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
    EXPECT_NE(ReadFileBytes(path).find("~ASCII"), std::string::npos);
}

TEST(FileOutput, EmptyTextCellAndUntypedSectionFail)
{
    TempDir dir;
    for (char delimiter : {' ', '\t', ','}) {
        CLasWriter w;
        ASSERT_EQ(w.SetFormat(true, delimiter), LASFILE_OK);
        ASSERT_EQ(w.AddSection(Data("Log_Data", {Numbers({1, 2, 3}), Texts({"a", "b", ""})})), LASFILE_OK);
        EXPECT_EQ(w.Write(dir.File("x.las")), LASFILE_IO_FAILED);
        EXPECT_EQ(Record(w), "1 Log_Data - 1 2");
        EXPECT_FALSE(test::FileExists(dir.File("x.las")));
    }
    CLasWriter w;
    BuildExampleLas20(w);
    ASSERT_EQ(w.Validate(), LASFILE_OK);
    WriterAccess::Sections(w).insert(WriterAccess::Sections(w).begin() + 1, Section("Other", LASSECTION_ANY));
    EXPECT_EQ(w.Write(dir.File("x.las")), LASFILE_BAD_FORMAT);
    EXPECT_EQ(Record(w), "3 Other - -1 -1");
}

TEST(FileOutput, EveryOutputCallHasItsOwnErrorRecord)
{
    TempDir dir;
    const std::string path = dir.Write("t.las", "old\n");
    std::vector<std::string> records;
    for (int64_t call = 1;; ++call) {
        CLasWriter w;
        BuildExampleLas30(w);
        detail::g_failOutputCall = call;
        const ELASFILEERROR result = w.Write(path);
        detail::g_failOutputCall = 0;
        if (result == LASFILE_OK) break;
        ASSERT_EQ(result, LASFILE_IO_FAILED);
        EXPECT_EQ(ReadFileBytes(path), "old\n") << call;
        records.push_back(Record(w));
    }
    const std::string none = "1 - - -1 -1", well = "1 Well - -1 -1", wellWell = "1 Well WELL -1 -1";
    // Banner, filename, "~Version Information" leave the record clear; VERS,
    // WRAP, DLM record no place; the head of "Well" (no association) and the
    // leading blank of its first line the section; the other five pieces of
    // that line the mnemonic too.
    const std::vector<std::string> head = {"0 - - -1 -1", "0 - - -1 -1", "0 - - -1 -1", none, none, none, well, well,
                                           wellWell, wellWell, wellWell, wellWell, wellWell};
    ASSERT_GT(records.size(), head.size());
    EXPECT_EQ(std::vector<std::string>(records.begin(), records.begin() + head.size()), head);
    // A head with association records nothing but the code.
    const std::string lith = "1 Core_Definition LITH -1 -1";
    bool sawLinkedHead = false;
    for (size_t i = 1; i < records.size(); ++i) sawLinkedHead |= records[i - 1] == lith && records[i] == none;
    EXPECT_TRUE(sawLinkedHead);
    // The GR line: mnemonic, unit, value, description, format, association, line end.
    EXPECT_EQ(std::count(records.begin(), records.end(), "1 Log_Definition GR -1 -1"), 7);
    // The last row of Log_Data: blank, cell, delimiter, cell, line end.
    const std::vector<std::string> tail = {"1 Log_Data - -1 -1", "1 Log_Data - 0 1", "1 Log_Data - 0 1",
                                           "1 Log_Data - 1 1", "1 Log_Data - 2 1"};
    EXPECT_EQ(std::vector<std::string>(records.end() - tail.size(), records.end()), tail);
    EXPECT_EQ(FolderEntries(dir.path()), std::vector<std::string>{"t.las"});
}

TEST(FileOutput, AssignmentNeverSharesAnOpenOutput)
{
    TempDir dir;
    CLasWriter source, target;
    BuildExampleLas20(source);
    BuildExampleLas30(target);
    Reports stop;
    stop.stopAt = 0;
    source.SetStatusCallback(&stop, &Reports::Callback);
    ASSERT_EQ(source.Write(dir.File("a.las")), LASFILE_CANCELLED);
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
    EXPECT_NE(ReadFileBytes(dir.File("c.las")).find("~ASCII\n 1000 45.25\n"), std::string::npos);
}

}  // namespace
}  // namespace quarl
