// Write: the bytes of the file, widths, quoting, reports, cancellation, the
// error record of every point of failure, and what stands at the target
// after a write that did not finish.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "support/reader_access.h"
#include "support/writer_access.h"
#include "writer/output_stream.h"

namespace quarl::test {
namespace {

using detail::WriterAccess;

const std::string kDepths =
    " STRT.          1000.00000000 : Starting Depth {F}\n STOP.          %s : Stopping Depth {F}\n"
    " STEP.             0.50000000 : Step interval between samples {F}\n"
    " COMP.          Not Specified : \n";
const std::string kNone = " FLD .          Not Specified : \n LOC .          Not Specified : \n";
const std::string kPlaces =
    " CNTY.          Not Specified : \n STAT.          Not Specified : \n"
    " CTRY.          Not Specified : \n SRVC.          Not Specified : \n";

std::string Head(const std::string& path, const char* version)
{
    return std::string("# Created by Meridane LAS import/export module QUARL.DLL\n# Filename: ") + path +
           "\n~Version Information\n VERS.                          " + version +
           " : CWLS LOG ASCII STANDARD -VERSION " + version +
           "\n WRAP.                           NO : ONE LINE PER DEPTH STEP\n";
}

std::string Depths(const char* stop)
{
    return std::string(kDepths).replace(kDepths.find("%s"), 2, stop);
}

std::string Example20(const std::string& path)
{
    return Head(path, "2.0") + "~Well\n" + Depths("1001.00000000") + " WELL.          Not Specified : \n" + kNone +
           " API .          Not Specified : \n" + kPlaces +
           "~Curve\n DEPT.M                         : Depth\n GR  .GAPI                      : Gamma ray\n"
           "~ASCII\n 1000 45.25\n 1000.5 50\n 1001 61.125\n";
}

std::string Example30(const std::string& path)
{
    return Head(path, "3.0") +
           " DLM .                        COMMA : DELIMITING CHARACTER BETWEEN DATA COLUMNS\n~Well\n"
           " WELL.              Example 1 : Well name\n UWI .                   A-12 : Unique well id\n" +
           Depths("1000.50000000") + kNone + kPlaces +
           "~Core_Parameter\n C_TOP .M                1000.2 : Core top {F}\n C_BASE.M                1000.4 : Core "
           "base {F}\n"
           "~Core_Definition\n DEPT.M                       : Depth {F}\n LITH.                        : Lithology "
           "{S}\n"
           "~Core_Data | Core_Definition\n 1000.25,fine sand\n~Log_Parameter\n RUNS.                      1 : Runs "
           "{I}\n"
           "~Log_Definition\n DEPT.M                         : Depth {F}\n GR  .GAPI                      : Gamma ray "
           "{F} | RUNS\n"
           "~Log_Data | Log_Definition\n 1000,45.25\n 1000.5,50\n";
}

void Build(CLasWriter& w, bool las3)
{
    ASSERT_EQ(w.SetFormat(las3, las3 ? ',' : ' '), LASFILE_OK);
    std::vector<CLasSection> sections = {
        Data("ASCII", {Numbers({1000, 1000.5, 1001}, Param("DEPT", "M", "", "Depth")),
                       Numbers({45.25, 50, 61.125}, Param("GR", "GAPI", "", "Gamma ray"))})};
    if (las3)
        sections = {
            Section("Well", LASSECTION_HEADER,
                    {Param("WELL", "", "Example 1", "Well name"), Param("UWI", "", "A-12", "Unique well id")}),
            Section(
                "Core_Parameter", LASSECTION_PARAMETER,
                {Param("C_TOP", "M", "1000.2", "Core top", "{F}"), Param("C_BASE", "M", "1000.4", "Core base", "{F}")}),
            Section("Core_Definition", LASSECTION_DEFINITION,
                    {Param("DEPT", "M", "", "Depth", "{F}"), Param("LITH", "", "", "Lithology", "{S}")}),
            Data("Core_Data", {Numbers({1000.25}), Texts({"fine sand"})}, "Core_Definition"),
            Section("Log_Parameter", LASSECTION_PARAMETER, {Param("RUNS", "", "1", "Runs", "{I}")}),
            Section("Log_Definition", LASSECTION_DEFINITION,
                    {Param("DEPT", "M", "", "Depth", "{F}"), Param("GR", "GAPI", "", "Gamma ray", "{F}", "RUNS")}),
            Data("Log_Data", {Numbers({1000, 1000.5}), Numbers({45.25, 50})}, "Log_Definition")};
    for (const CLasSection& s : sections) ASSERT_EQ(w.AddSection(s), LASFILE_OK) << s.m_name;
}

// The examples come out byte for byte, again from the same writer, and
// again from a new writer given what the reader read of them (all but
// Version): what the writer writes, the reader reads back.
TEST(FileOutput, ExamplesComeOutByteForByteAgainAndAfterAReadBack)
{
    TempDir dir;
    for (bool las3 : {false, true}) {
        const auto example = [&](const std::string& path) { return las3 ? Example30(path) : Example20(path); };
        CLasWriter w;
        Build(w, las3);
        for (const char* name : {"a.las", "a.las", "b.las"}) {  // a second write and another path
            ASSERT_EQ(w.Write(dir.File(name)), LASFILE_OK);
            EXPECT_EQ(ReadFileBytes(dir.File(name)), example(dir.File(name)));
            EXPECT_FALSE(WriterAccess::HasOpenOutput(w));
        }
        CLasReader reader;
        ASSERT_EQ(reader.Open(dir.File("a.las")), LASFILE_OK);
        EXPECT_EQ(reader.CheckDataStepping(), LASFILE_OK);
        CLasWriter again;
        ASSERT_EQ(again.SetFormat(las3, las3 ? ',' : ' '), LASFILE_OK);
        for (uint64_t i = 1; i < reader.size(); ++i) ASSERT_EQ(again.AddSection(reader.GetSection(i)), LASFILE_OK);
        ASSERT_EQ(again.Write(dir.File("c.las")), LASFILE_OK);
        EXPECT_EQ(ReadFileBytes(dir.File("c.las")), example(dir.File("c.las")));
    }
    EXPECT_EQ(FolderEntries(dir.path()).size(), 3u);  // nothing else is left
}

// The bytes from `from` on of a LAS 3.0 file of `sections` up to `to`.
std::string Written(char delimiter, const std::vector<CLasSection>& sections, const std::string& from,
                    const std::string& to = "\x01")
{
    TempDir dir;
    CLasWriter w;
    EXPECT_EQ(w.SetFormat(true, delimiter), LASFILE_OK);
    for (const CLasSection& s : sections) EXPECT_EQ(w.AddSection(s), LASFILE_OK);
    EXPECT_EQ(w.Write(dir.File("d.las")), LASFILE_OK);
    const std::string bytes = ReadFileBytes(dir.File("d.las"));
    const size_t begin = bytes.find(from) + from.size();
    return bytes.substr(begin, bytes.find(to, begin) - begin);
}

const std::string kDataHead = "~Log_Data | Log_Definition\n";

TEST(FileOutput, TextCellsAreQuotedOnlyWhenTheyHoldTheBlankThatDelimits)
{
    const std::vector<CLasSection> data = {
        Data("Log_Data", {Numbers({1, 2}), Texts({"fine sand", "a,b"}), Texts({"sand", "\"q\""})})};
    EXPECT_EQ(Written(' ', data, kDataHead), " 1 \"fine sand\" sand\n 2 a,b \"q\"\n");
    EXPECT_EQ(Written(',', data, kDataHead), " 1,fine sand,sand\n 2,a,b,\"q\"\n");
    EXPECT_EQ(Written('\t', data, kDataHead), " 1\tfine sand\tsand\n 2\ta,b\t\"q\"\n");
}

TEST(FileOutput, NumbersHaveFifteenSignificantDigits)
{
    EXPECT_EQ(Written(',',
                      {Data("Log_Data", {Numbers({0.1, 1e14, 1e15, -0.0, 123456789.123456789}),
                                         Numbers({0.125, 1.0 / 3, -2.5e-7, 1e300, 100})})},
                      kDataHead),
              " 0.1,0.125\n 100000000000000,0.333333333333333\n 1e+15,-2.5e-07\n -0,1e+300\n 123456789.123457,100\n");
}

TEST(FileOutput, RowsWiderThanTheOutputBufferComeOutWhole)
{
    std::vector<CLasCurve> wide;
    std::string rows[2] = {" ", " "};
    for (int c = 0; c < 8000; ++c) {
        const double values[2] = {c * 0.5, -c - 1e-3};
        wide.push_back(Numbers({values[0], values[1]}));
        for (int r = 0; r < 2; ++r) {
            char cell[32];
            std::snprintf(cell, sizeof cell, c ? ",%.15g" : "%.15g", values[r]);
            rows[r] += cell;
        }
    }
    EXPECT_EQ(Written(',', {Data("Log_Data", wide)}, kDataHead), rows[0] + "\n" + rows[1] + "\n");
}

// Mnemonic, unit and value columns are as wide as the widest in their
// section (at least 4, 2 and 20 bytes); longer fields are written whole.
TEST(FileOutput, ParameterColumnsAreAsWideAsTheirSectionNeeds)
{
    const auto params = [&](const CLasParam& odd) {
        return Written(' ',
                       {Section("Parameter", LASSECTION_PARAMETER, {Param("BHT", "DEGC", "35.5", "Bottom temp"), odd}),
                        Data("Log_Data", {Numbers({1})})},
                       "~Parameter\n", "~");
    };
    EXPECT_EQ(params(Param("X", "", "", "")),
              " BHT .DEGC                 35.5 : Bottom temp\n X   .                          : \n");
    EXPECT_EQ(
        params(Param("LONGM", "UNITSX", "123456789012345678901", "d", "{F}", "RUNS")),
        " BHT  .DEGC                    35.5 : Bottom temp\n LONGM.UNITSX 123456789012345678901 : d {F} | RUNS\n");
    const std::string huge(1000000, 'v');
    EXPECT_EQ(params(Param("BIG", "", huge, "")),
              " BHT .DEGC " + std::string(huge.size() - 4, ' ') + "35.5 : Bottom temp\n BIG .     " + huge + " : \n");
}

TEST(FileOutput, EmptySectionsAreWrittenAsTheirHeadersAlone)
{
    EXPECT_EQ(Written(' ',
                      {Section("Tops_Parameter", LASSECTION_PARAMETER), Data("Empty_Data", {}),
                       Data("Log_Data", {Numbers({}), Numbers({})})},
                      " SRVC.          Not Specified : \n", " COL1"),
              "~Empty_Definition\n~Empty_Data | Empty_Definition\n~Tops_Parameter\n~Log_Definition\n");
}

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
    // Well (12 lines), Parameter (25), Curve (1), ASCII (10 rows): 25 per section.
    EXPECT_EQ(reports.percents, (std::vector<double>{0.0, 0.0, 0.0, 250.0 / 12, 25.0, 25.0, 25.0 + 250.0 / 25,
                                                     25.0 + 500.0 / 25, 50.0, 50.0, 75.0, 75.0, 100.0}));
    EXPECT_EQ(reports.messages.back(), "Writing " + dir.File("r.las"));
}

// Cancellation at every report, a full disk and links are in test_faults.
TEST(FileOutput, RefusedOrFailedWritesKeepTheOldTarget)
{
    TempDir dir;
    const std::string path = dir.Write("t.las", "old bytes\n");
    {
        CLasWriter refused;  // the result of Validate; its unfinished file goes with it
        ASSERT_EQ(refused.AddSection(Section("Curve", LASSECTION_DEFINITION)), LASFILE_OK);
        ASSERT_EQ(refused.AddSection(Data("ASCII", {Numbers({1})})), LASFILE_OK);
        EXPECT_EQ(refused.Write(path), LASFILE_MISSING_SECTION);
    }
    CLasWriter w;  // an empty writer: Validate would create "Well"
    for (const std::string& bad : {dir.File("missing/x.las"), dir.path(), std::string()}) {
        EXPECT_EQ(w.Write(bad), LASFILE_IO_FAILED) << bad;
        EXPECT_EQ(LastError(w), ErrorRecord{LASFILE_IO_FAILED});
        EXPECT_TRUE(WriterAccess::Sections(w).empty());
    }
    if (geteuid() != 0) {  // root may open both
        EXPECT_EQ(w.Write("/proc/version"), LASFILE_IO_FAILED);
        ASSERT_EQ(chmod(path.c_str(), 0444), 0);
        EXPECT_EQ(w.Write(path), LASFILE_IO_FAILED);
    }
    EXPECT_EQ(ReadFileBytes(path), "old bytes\n");
    EXPECT_EQ(FolderEntries(dir.path()), std::vector<std::string>{"t.las"});
    // A device is written in place, never replaced.
    Build(w, false);
    EXPECT_EQ(w.Write("/dev/full"), LASFILE_IO_FAILED);
    struct stat st {};
    EXPECT_TRUE(stat("/dev/full", &st) == 0 && S_ISCHR(st.st_mode));
}

// The last step of a write puts the finished file in place of the target.
// When that fails (here the target has become a folder meanwhile), the
// write fails with no place in the record and takes its file away.
// A device that refuses every byte at the final flush of the last data
// section: the record names the section, and no column or row.
TEST(FileOutput, FailedFinalFlushIsRecordedWithTheSectionAlone)
{
    if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full";
    for (bool las3 : {false, true}) {
        CLasWriter w;
        Build(w, las3);
        EXPECT_EQ(w.Write("/dev/full"), LASFILE_IO_FAILED);
        EXPECT_EQ(LastError(w), (ErrorRecord{LASFILE_IO_FAILED, las3 ? "Log_Data" : "ASCII", "", -1, -1}));
    }
}

// A document without data ends in a parameter section: its bytes reach the
// device at the flush of the finished file, which names no section.
TEST(FileOutput, FailedFlushOfAFileWithoutDataNamesNoPlace)
{
    if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full";
    CLasWriter w;
    w.SetRepair(true);  // a document without rows is written in repair mode alone
    ASSERT_EQ(w.AddSection(Section("Well", LASSECTION_HEADER, {Param("WELL", "", "Example 1", "Well name")})),
              LASFILE_OK);
    ASSERT_EQ(w.AddSection(Section("Curve", LASSECTION_DEFINITION, {Param("DEPT", "M", "", "Depth")})), LASFILE_OK);
    EXPECT_EQ(w.Write("/dev/full"), LASFILE_IO_FAILED);
    EXPECT_EQ(LastError(w), (ErrorRecord{LASFILE_IO_FAILED, "", "", -1, -1}));
}

TEST(FileOutput, FailedReplacementOfTheTargetIsAnIoFailure)
{
    TempDir dir;
    const std::string path = dir.Write("t.las", "old\n");
    CLasWriter w;
    Build(w, false);
    Reports swap;
    swap.stopAt = 0;
    swap.act = [&] {
        EXPECT_TRUE(std::remove(path.c_str()) == 0 && mkdir(path.c_str(), 0755) == 0);
        return 0;
    };
    w.SetStatusCallback(&swap, &Reports::Callback);
    EXPECT_EQ(w.Write(path), LASFILE_IO_FAILED);
    EXPECT_EQ(LastError(w), ErrorRecord{LASFILE_IO_FAILED});
    EXPECT_EQ(FolderEntries(dir.path()), std::vector<std::string>{"t.las"});
    struct stat st {};
    EXPECT_TRUE(stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode));
}

// A document that cannot be written as it stands fails where it stops, and
// leaves no file: an empty text cell at its column and row, a section of no
// type by its name.
TEST(FileOutput, UnwritableCellOrSectionFailsAtItsPlace)
{
    TempDir dir;
    for (char delimiter : {' ', '\t', ','}) {
        CLasWriter w;
        ASSERT_EQ(w.SetFormat(true, delimiter), LASFILE_OK);
        ASSERT_EQ(w.AddSection(Data("Log_Data", {Numbers({1, 2, 3}), Texts({"a", "b", ""})})), LASFILE_OK);
        EXPECT_EQ(w.Write(dir.File("x.las")), LASFILE_IO_FAILED);
        EXPECT_EQ(LastError(w), (ErrorRecord{LASFILE_IO_FAILED, "Log_Data", "", 1, 2}));
    }
    {
        CLasWriter w;  // its unfinished file goes with it
        Build(w, false);
        ASSERT_EQ(w.Validate(), LASFILE_OK);
        WriterAccess::Sections(w).insert(WriterAccess::Sections(w).begin() + 1, Section("Other", LASSECTION_ANY));
        EXPECT_EQ(w.Write(dir.File("x.las")), LASFILE_BAD_FORMAT);
        EXPECT_EQ(LastError(w), (ErrorRecord{LASFILE_BAD_FORMAT, "Other"}));
    }
    EXPECT_TRUE(FolderEntries(dir.path()).empty());
}

TEST(FileOutput, EveryOutputCallHasItsOwnErrorRecord)
{
    TempDir dir;
    const std::string path = dir.Write("t.las", "old\n");
    std::vector<ErrorRecord> records;
    for (int64_t call = 1;; ++call) {
        CLasWriter w;
        Build(w, true);
        detail::g_failOutputCall = call;
        const ELASFILEERROR result = w.Write(path);
        detail::g_failOutputCall = 0;
        if (result == LASFILE_OK) break;
        ASSERT_EQ(result, LASFILE_IO_FAILED);
        EXPECT_EQ(ReadFileBytes(path), "old\n") << call;
        records.push_back(LastError(w));
    }
    const ErrorRecord clear, none{LASFILE_IO_FAILED}, well{LASFILE_IO_FAILED, "Well"},
        w2{LASFILE_IO_FAILED, "Well", "WELL"};
    // Banner, filename, "~Version Information" leave the record clear; VERS,
    // WRAP, DLM record no place; the head of "Well" (no association) and the
    // leading blank of its first line the section; the other five pieces of
    // that line the mnemonic too.
    const std::vector<ErrorRecord> head = {clear, clear, clear, none, none, none, well, well, w2, w2, w2, w2, w2};
    ASSERT_GT(records.size(), head.size());
    EXPECT_EQ(std::vector<ErrorRecord>(records.begin(), records.begin() + head.size()), head);
    // A head with association records nothing but the code.
    const std::vector<ErrorRecord> linked = {{LASFILE_IO_FAILED, "Core_Definition", "LITH"}, none};
    EXPECT_NE(std::search(records.begin(), records.end(), linked.begin(), linked.end()), records.end());
    // The GR line: mnemonic, unit, value, description, format, association, line end.
    EXPECT_EQ(std::count(records.begin(), records.end(), ErrorRecord{LASFILE_IO_FAILED, "Log_Definition", "GR"}), 7);
    // The last row of Log_Data: blank, cell, delimiter, cell, line end.
    const ErrorRecord row{LASFILE_IO_FAILED, "Log_Data", "", -1, -1};
    const std::vector<ErrorRecord> tail = {row,
                                           {LASFILE_IO_FAILED, "Log_Data", "", 0, 1},
                                           {LASFILE_IO_FAILED, "Log_Data", "", 0, 1},
                                           {LASFILE_IO_FAILED, "Log_Data", "", 1, 1},
                                           {LASFILE_IO_FAILED, "Log_Data", "", 2, 1}};
    EXPECT_EQ(std::vector<ErrorRecord>(records.end() - tail.size(), records.end()), tail);
    EXPECT_EQ(FolderEntries(dir.path()), std::vector<std::string>{"t.las"});
}

// Writing into a string or a stream gives the file's bytes, reports and error
// records; a failed write leaves the string as it was.
TEST(FileOutput, MemoryAndStreamWritesAreTheFileWrite)
{
    TempDir dir;
    const std::string path = dir.File("m.las");
    for (bool las3 : {false, true}) {
        CLasWriter w;
        Build(w, las3);
        Reports fileReports, textReports, streamReports;
        w.SetStatusCallback(&fileReports, &Reports::Callback);
        ASSERT_EQ(w.Write(path), LASFILE_OK);
        std::string text = "old", streamed;
        w.SetStatusCallback(&textReports, &Reports::Callback);
        ASSERT_EQ(w.WriteToString(text, path.c_str()), LASFILE_OK);
        std::ostringstream stream;
        w.SetStatusCallback(&streamReports, &Reports::Callback);
        ASSERT_EQ(w.WriteToStream(stream, path.c_str()), LASFILE_OK);
        EXPECT_EQ(text, ReadFileBytes(path));
        EXPECT_EQ(stream.str(), text);
        EXPECT_EQ(textReports.percents, fileReports.percents);
        EXPECT_EQ(textReports.messages, fileReports.messages);
        EXPECT_EQ(streamReports.messages, fileReports.messages);
        // A failure at any output call has the file write's record.
        for (int64_t call = 1;; ++call) {
            detail::g_failOutputCall = call;
            const ELASFILEERROR toFile = w.Write(path);
            const ErrorRecord fileRecord = LastError(w);
            const ELASFILEERROR toText = w.WriteToString(text, "n");
            detail::g_failOutputCall = 0;
            ASSERT_EQ(toText, toFile) << call;
            EXPECT_EQ(LastError(w), fileRecord) << call;
            if (toFile == LASFILE_OK) break;
            EXPECT_EQ(text, ReadFileBytes(path)) << call;  // untouched by the failed write
        }
        std::ostringstream bad;
        bad.setstate(std::ios::badbit);
        EXPECT_EQ(w.WriteToStream(bad, "bad"), LASFILE_IO_FAILED);
    }
    CLasWriter w;
    ASSERT_EQ(w.SetFormat(true, ','), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Data("Log_Data", {Numbers({1, 2}), Texts({"a", ""})})), LASFILE_OK);
    std::string text = "kept";
    EXPECT_EQ(w.WriteToString(text, "x"), LASFILE_IO_FAILED);
    EXPECT_EQ(LastError(w), (ErrorRecord{LASFILE_IO_FAILED, "Log_Data", "", 1, 1}));
    EXPECT_EQ(text, "kept");
}

TEST(FileOutput, AssignmentNeverSharesAnOpenOutput)
{
    TempDir dir;
    CLasWriter source, target;
    Build(source, false);
    Build(target, true);
    Reports stop, stop2;
    stop.stopAt = stop2.stopAt = 0;
    source.SetStatusCallback(&stop, &Reports::Callback);
    target.SetStatusCallback(&stop2, &Reports::Callback);
    ASSERT_EQ(source.Write(dir.File("a.las")), LASFILE_CANCELLED);
    ASSERT_EQ(target.Write(dir.File("b.las")), LASFILE_CANCELLED);  // two unfinished files
    target = source;
    EXPECT_TRUE(WriterAccess::HasOpenOutput(source) && !WriterAccess::HasOpenOutput(target));
    EXPECT_EQ(FolderEntries(dir.path()).size(), 1u);  // the target's own is gone
    target.SetStatusCallback(nullptr, nullptr);
    ASSERT_EQ(target.Write(dir.File("c.las")), LASFILE_OK);
    EXPECT_EQ(ReadFileBytes(dir.File("c.las")), Example20(dir.File("c.las")));
}

}  // namespace
}  // namespace quarl::test
