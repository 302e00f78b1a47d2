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

TEST(ReaderFrame, WhatOpenKeepsOfEachFile)
{
    const struct {
        std::string text;
        ELASFILEERROR result;
        std::string sections;
    } cases[] = {
        // The first line that counts begins with "~V" in either case.
        {"~VERSION INFORMATION\nVERS. 2.0 : v\n", LASFILE_OK, "VERSION:3(1)"},
        {"~v\n", LASFILE_IO_FAILED, "v:3(0)"},
        {"~Vxyz\nVERS. 2.0 : v\n", LASFILE_OK, ""},  // passes the test, but no row reads "Vxyz"
        {"# comment\n\n  # more\n\\ \\\n~Version\nVERS. 2.0 : v\n", LASFILE_OK, "Version:3(1)"},
        {"\n~Version\n", LASFILE_BAD_FORMAT, ""},
        {" ~Version\n", LASFILE_BAD_FORMAT, ""},
        {" # comment\n~Version\n", LASFILE_BAD_FORMAT, ""},
        {"~Well\n", LASFILE_BAD_FORMAT, ""},
        {"", LASFILE_IO_FAILED, ""},
        {"# only\n\n# comments\n", LASFILE_IO_FAILED, ""},
        // Blank and comment lines never reach a section.
        {"~Version\n  \\  \\\nVERS. 2.0 : v\n\\ #x\n   #y\n\n~Well\nA.M 1 : a\n", LASFILE_OK, "Version:3(1) Well:3(1)"},
        // A line of tabs counts, and so does a tab in front of "#"; a header
        // behind blanks is an ordinary line.
        {kSmall + "\t\t\n", LASFILE_BAD_FORMAT, "Version:3(2) Well:3(1)"},
        {kSmall + "\t# x\n", LASFILE_BAD_FORMAT, "Version:3(2) Well:3(1)"},
        {kSmall + "  ~Other\n", LASFILE_BAD_FORMAT, "Version:3(2) Well:3(1)"},
        // A parameter header at the very end is stored; a skipped one isn't.
        {kSmall + "~Parameter", LASFILE_IO_FAILED, "Version:3(2) Well:3(1) Parameter:0(0)"},
        {kSmall + "~Other\n", LASFILE_IO_FAILED, "Version:3(2) Well:3(1)"},
        // The file ends without a line feed, inside a section: fine.
        {kSmall + "A.M 1 : a", LASFILE_OK, "Version:3(2) Well:3(2)"},
        // A malformed line: its section stays, without the bad line.
        {kSmall + "B.M 2 : b\nbad\nC.M 3 : c\n~Parameter\n", LASFILE_BAD_FORMAT, "Version:3(2) Well:3(2)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        CLasReader reader;
        EXPECT_EQ(OpenText(reader, c.text), c.result);
        EXPECT_TRUE(reader.IsOpen());
        EXPECT_EQ(Dump(reader), c.sections);
    }
    // A bad path after a good read leaves the reader closed and empty.
    TempDir dir;
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, kSmall), LASFILE_OK);
    EXPECT_EQ(reader.Open(tessel::TxString(dir.File("missing.las"))), LASFILE_IO_FAILED);
    EXPECT_FALSE(reader.IsOpen());
    EXPECT_TRUE(reader.empty());
}

struct Recorder {
    std::vector<double> percents;
    std::vector<std::string> messages;
    int stopAtCall = -1;  // 1-based; -1 never

    static int32_t Record(void* context, double percent, const char* message)
    {
        auto* self = static_cast<Recorder*>(context);
        self->percents.push_back(percent);
        self->messages.push_back(message);
        return static_cast<int>(self->percents.size()) == self->stopAtCall ? 1 : 0;
    }
};

// A Version section of `count` lines, one of them replaced by `line`.
std::string Lines(int count, int at = 0, const std::string& line = "")
{
    std::string text = "~Version\n";
    for (int i = 2; i <= count; ++i) text += i == at ? line : "A" + std::to_string(i) + ". 1 : x\n";
    return text;
}

TEST(ReaderProgress, ReportsAtEveryTenthPhysicalLineAndStops)
{
    TempDir dir;
    const std::string path = dir.Write("p.las", Lines(25));
    CLasReader reader;
    Recorder all;
    reader.SetStatusCallback(&all, &Recorder::Record);
    ASSERT_EQ(reader.Open(tessel::TxString(path)), LASFILE_OK);
    ASSERT_EQ(all.percents.size(), 3u);  // lines 10 and 20, and the end
    EXPECT_LT(all.percents[0], all.percents[1]);
    EXPECT_EQ(all.percents[2], 100.0);
    for (const std::string& message : all.messages) EXPECT_EQ(message, "Reading " + path);

    const struct {
        std::string text;
        int stopAt;
        ELASFILEERROR result;
        size_t reports;
        std::string sections;
    } cases[] = {
        {Lines(25, 10, "# comment\n"), -1, LASFILE_OK, 2u, "Version:3(23)"},  // no report on a comment
        {Lines(25), 1, LASFILE_CANCELLED, 2u, "Version:3(8)"},  // the final report all the same
        {Lines(25), 3, LASFILE_CANCELLED, 3u, "Version:3(24)"},
        {"~Version\nbad line\n", 1, LASFILE_CANCELLED, 1u, "Version:3(0)"},  // it replaces a failure
        {"~Well\n", 1, LASFILE_BAD_FORMAT, 0u, ""},  // no report before the section loop
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        Recorder recorder;
        recorder.stopAtCall = c.stopAt;
        reader.SetStatusCallback(&recorder, &Recorder::Record);
        EXPECT_EQ(OpenText(reader, c.text), c.result);
        EXPECT_EQ(recorder.percents.size(), c.reports);
        EXPECT_EQ(Dump(reader), c.sections);
    }
    reader.SetStatusCallback(nullptr, nullptr);
    EXPECT_EQ(OpenText(reader, Lines(25)), LASFILE_OK);
}

TEST(ReaderFrame, IsValidFileCloseAndAssignment)
{
    TempDir dir;
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, "~V\nVERS. 3.0 : v\nWRAP. YES : w\nDLM. COMMA : d\n~W\nSTEP.M 1 : s\n"), LASFILE_OK);
    EXPECT_TRUE(reader.IsValidFile(tessel::TxString(dir.Write("g.las", "#c\n~VERSION\n"))));
    EXPECT_FALSE(reader.IsOpen());
    EXPECT_EQ(reader.size(), 2u);  // kept until the next Open or Close
    CLasSection copy;
    EXPECT_EQ(reader.GetSection(0u, copy), LASFILE_WRONG_STATE);
    for (const std::string& bad : {dir.File("missing.las"), dir.Write("e.las", ""), dir.Write("w.las", "~Well\n"),
                                   dir.Write("c.las", "#c\n#d\n")})
        EXPECT_FALSE(reader.IsValidFile(tessel::TxString(bad))) << bad;

    CLasReader target;  // assignment shares the sections, never the stream
    ASSERT_EQ(OpenText(target, kSmall + "~P\nX.M 1 : x\n"), LASFILE_OK);
    ASSERT_EQ(OpenText(reader, "~V\nVERS. 3.0 : v\nWRAP. YES : w\nDLM. COMMA : d\n~W\nSTEP.M 1 : s\n"), LASFILE_OK);
    target = reader;
    EXPECT_FALSE(target.IsOpen());
    EXPECT_TRUE(reader.IsOpen());
    EXPECT_EQ(target.GetSectionPtr(1), reader.GetSectionPtr(1));
    EXPECT_EQ(Access::Format(target), "3 W ,");
    target = target;
    EXPECT_EQ(target.size(), 2u);

    reader.Close();  // Close keeps the format of the last file, Open resets it
    EXPECT_TRUE(reader.empty());
    EXPECT_EQ(Access::Format(reader), "3 W ,");
    reader.Close();
    EXPECT_FALSE(reader.IsOpen());
    EXPECT_EQ(target.GetSection(1ull).m_params.size(), 1u);
    ASSERT_EQ(OpenText(reader, kSmall), LASFILE_OK);
    EXPECT_EQ(Access::Format(reader), "2 -  ");
}

}  // namespace
}  // namespace quarl::test
