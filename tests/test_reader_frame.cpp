// The reader frame: the first line, the lines that count, progress and
// cancellation, what stays after each kind of failure, IsValidFile, Close
// and assignment.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/reader_access.h"

namespace quarl::test {
namespace {

const std::string kSmall = "~Version\nVERS. 2.0 : v\nWRAP. NO : w\n~Well\nSTEP.M 1 : s\n";

TEST(ReaderFrame, FirstLineMustBeginWithTildeV)
{
    const struct {
        std::string head;
        ELASFILEERROR result;
        size_t sections;
    } cases[] = {
        {"~VERSION INFORMATION\n", LASFILE_OK, 1},
        {"~v\n", LASFILE_OK, 1},
        {"~Vxyz\n", LASFILE_OK, 0},  // passes the test, but no row reads "Vxyz"
        {"# comment\n\n  # more\n\\ \\\n~Version\n", LASFILE_OK, 1},
        {"\n~Version\n", LASFILE_BAD_FORMAT, 0},
        {" ~Version\n", LASFILE_BAD_FORMAT, 0},
        {" # comment\n~Version\n", LASFILE_BAD_FORMAT, 0},
        {"~Well\n", LASFILE_BAD_FORMAT, 0},
    };
    for (const auto& c : cases) {
        CLasReader reader;
        EXPECT_EQ(OpenText(reader, c.head + "VERS. 2.0 : v\n"), c.result) << c.head;
        EXPECT_TRUE(reader.IsOpen());
        EXPECT_EQ(reader.size(), c.sections) << c.head;
    }
}

TEST(ReaderFrame, BlankAndCommentLinesNeverReachASection)
{
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, "~Version\n  \\  \\\nVERS. 2.0 : v\n\\ #x\n   #y\n\n~Well\nA.M 1 : a\n"),
              LASFILE_OK);
    ASSERT_EQ(reader.size(), 2u);
    EXPECT_EQ(reader.GetSection(0ull).m_params.size(), 1u);
    EXPECT_EQ(reader.GetSection(1ull).m_params.size(), 1u);
    // A line of tabs counts, and so does a tab in front of "#".
    EXPECT_EQ(OpenText(reader, kSmall + "\t\t\n"), LASFILE_BAD_FORMAT);
    EXPECT_EQ(OpenText(reader, kSmall + "\t# x\n"), LASFILE_BAD_FORMAT);
    // A header behind spaces is an ordinary line.
    EXPECT_EQ(OpenText(reader, kSmall + "  ~Other\n"), LASFILE_BAD_FORMAT);
    EXPECT_EQ(reader.size(), 2u);
}

struct Recorder {
    std::vector<double> percents;
    std::vector<std::string> messages;
    int stopAtCall = -1;  // 1-based; -1 never
};

int32_t Record(void* context, double percent, const char* message)
{
    auto* recorder = static_cast<Recorder*>(context);
    recorder->percents.push_back(percent);
    recorder->messages.push_back(message);
    return static_cast<int>(recorder->percents.size()) == recorder->stopAtCall ? 1 : 0;
}

std::string Lines(int count)
{
    std::string text = "~Version\n";
    for (int i = 1; i < count; ++i) text += "A" + std::to_string(i) + ". 1 : x\n";
    return text;
}

TEST(ReaderProgress, ReportsAtEveryTenthPhysicalLineAndAtTheEnd)
{
    TempDir dir;
    const std::string path = dir.Write("p.las", Lines(25));
    CLasReader reader;
    Recorder recorder;
    reader.SetStatusCallback(&recorder, &Record);
    ASSERT_EQ(reader.Open(tessel::TxString(path)), LASFILE_OK);
    ASSERT_EQ(recorder.percents.size(), 3u);
    EXPECT_LT(recorder.percents[0], recorder.percents[1]);
    EXPECT_EQ(recorder.percents[2], 100.0);
    for (const std::string& message : recorder.messages) EXPECT_EQ(message, "Reading " + path);

    // A comment on line 10 brings no report; the next comes at line 20.
    std::string text = Lines(25);
    size_t line10 = 0;
    for (int i = 0; i < 9; ++i) line10 = text.find('\n', line10) + 1;
    text.insert(line10, "# comment\n");
    Recorder second;
    reader.SetStatusCallback(&second, &Record);
    ASSERT_EQ(OpenText(reader, text), LASFILE_OK);
    EXPECT_EQ(second.percents.size(), 2u);  // line 20 and the final report

    reader.SetStatusCallback(nullptr, nullptr);
    EXPECT_EQ(OpenText(reader, Lines(25)), LASFILE_OK);
    EXPECT_EQ(second.percents.size(), 2u);
}

TEST(ReaderProgress, StopEndsTheReadAndKeepsWhatWasRead)
{
    CLasReader reader;
    Recorder recorder;
    recorder.stopAtCall = 1;
    reader.SetStatusCallback(&recorder, &Record);
    ASSERT_EQ(OpenText(reader, Lines(25)), LASFILE_CANCELLED);
    // Stopped at line 10, then the final report all the same.
    ASSERT_EQ(recorder.percents.size(), 2u);
    EXPECT_EQ(recorder.percents[1], 100.0);
    ASSERT_EQ(reader.size(), 1u);
    EXPECT_EQ(reader.GetSection(0ull).m_params.size(), 8u);

    Recorder last;
    last.stopAtCall = 3;
    reader.SetStatusCallback(&last, &Record);
    EXPECT_EQ(OpenText(reader, Lines(25)), LASFILE_CANCELLED);
    EXPECT_EQ(reader.GetSection(0ull).m_params.size(), 24u);

    // The final report also replaces a failure.
    Recorder onFailure;
    onFailure.stopAtCall = 1;
    reader.SetStatusCallback(&onFailure, &Record);
    EXPECT_EQ(OpenText(reader, "~Version\nbad line\n"), LASFILE_CANCELLED);
    // No final report where Open stops before the section loop.
    Recorder early;
    reader.SetStatusCallback(&early, &Record);
    EXPECT_EQ(OpenText(reader, "~Well\n"), LASFILE_BAD_FORMAT);
    EXPECT_TRUE(early.percents.empty());
}

TEST(ReaderFailures, WhatStaysAfterEachFailure)
{
    TempDir dir;
    CLasReader reader;
    EXPECT_EQ(reader.Open(tessel::TxString(dir.File("missing.las"))), LASFILE_IO_FAILED);
    EXPECT_FALSE(reader.IsOpen());

    EXPECT_EQ(OpenText(reader, ""), LASFILE_IO_FAILED);
    EXPECT_TRUE(reader.IsOpen());
    EXPECT_EQ(OpenText(reader, "# only\n\n# comments\n"), LASFILE_IO_FAILED);
    EXPECT_TRUE(reader.empty());

    // A parameter section header at the very end: stored without lines.
    EXPECT_EQ(OpenText(reader, kSmall + "~Parameter"), LASFILE_IO_FAILED);
    ASSERT_EQ(reader.size(), 3u);
    EXPECT_TRUE(reader.GetSection(2ull).m_params.empty());
    // A skipped section's header at the very end: not stored.
    EXPECT_EQ(OpenText(reader, kSmall + "~Other\n"), LASFILE_IO_FAILED);
    EXPECT_EQ(reader.size(), 2u);
    // The file ends without a line feed, inside a section: fine.
    EXPECT_EQ(OpenText(reader, kSmall + "A.M 1 : a"), LASFILE_OK);
    EXPECT_EQ(reader.GetSection(1ull).m_params.size(), 2u);
    // A malformed line: its section stays, without the bad line.
    EXPECT_EQ(OpenText(reader, kSmall + "B.M 2 : b\nbad\nC.M 3 : c\n~Parameter\n"),
              LASFILE_BAD_FORMAT);
    ASSERT_EQ(reader.size(), 2u);
    EXPECT_EQ(reader.GetSection(1ull).m_params.size(), 2u);

    // A bad path after a good read leaves the reader closed and empty.
    ASSERT_EQ(OpenText(reader, kSmall), LASFILE_OK);
    EXPECT_EQ(reader.Open(tessel::TxString(dir.File("missing.las"))), LASFILE_IO_FAILED);
    EXPECT_FALSE(reader.IsOpen());
    EXPECT_TRUE(reader.empty());
}

TEST(ReaderFrame, IsValidFileLeavesTheReaderClosedWithItsSections)
{
    TempDir dir;
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, kSmall), LASFILE_OK);
    EXPECT_TRUE(reader.IsValidFile(tessel::TxString(dir.Write("g.las", "#c\n~VERSION\n"))));
    EXPECT_FALSE(reader.IsOpen());
    EXPECT_EQ(reader.size(), 2u);  // kept until the next Open or Close
    CLasSection copy;
    EXPECT_EQ(reader.GetSection(0u, copy), LASFILE_WRONG_STATE);
    EXPECT_FALSE(reader.IsValidFile(tessel::TxString(dir.File("missing.las"))));
    EXPECT_FALSE(reader.IsValidFile(tessel::TxString(dir.Write("e.las", ""))));
    EXPECT_FALSE(reader.IsValidFile(tessel::TxString(dir.Write("w.las", "~Well\n"))));
    EXPECT_FALSE(reader.IsValidFile(tessel::TxString(dir.Write("c.las", "#c\n#d\n"))));
    EXPECT_FALSE(reader.IsOpen());
    reader.Close();
    EXPECT_TRUE(reader.empty());
    reader.Close();  // on a closed reader: nothing
    EXPECT_FALSE(reader.IsOpen());
}

TEST(ReaderFrame, CloseKeepsTheFormatOfTheLastFile)
{
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, "~V\nVERS. 3.0 : v\nWRAP. YES : w\nDLM. COMMA : d\n"), LASFILE_OK);
    reader.Close();
    EXPECT_TRUE(Access::IsLas3(reader));
    EXPECT_TRUE(Access::IsWrapped(reader));
    EXPECT_EQ(Access::Delimiter(reader), ',');
    ASSERT_EQ(OpenText(reader, kSmall), LASFILE_OK);
    EXPECT_FALSE(Access::IsLas3(reader));
    EXPECT_FALSE(Access::IsWrapped(reader));
    EXPECT_EQ(Access::Delimiter(reader), ' ');
}

TEST(ReaderFrame, AssignmentSharesSectionsAndNeverTheStream)
{
    CLasReader source;
    ASSERT_EQ(OpenText(source, "~V\nVERS. 3.0 : v\n~W\nSTEP.M 1 : s\n"), LASFILE_OK);
    CLasReader target;
    ASSERT_EQ(OpenText(target, kSmall + "~P\nX.M 1 : x\n"), LASFILE_OK);
    target = source;
    EXPECT_FALSE(target.IsOpen());
    EXPECT_TRUE(source.IsOpen());
    ASSERT_EQ(target.size(), 2u);
    EXPECT_EQ(target.GetSectionPtr(0), source.GetSectionPtr(0));
    EXPECT_TRUE(Access::IsLas3(target));
    target = target;
    EXPECT_EQ(target.size(), 2u);
    source.Close();
    EXPECT_EQ(target.GetSection(1ull).m_params.size(), 1u);
}

}  // namespace
}  // namespace quarl::test
