// A read of rows in blocks, on one thread or several, gives what the read
// line by line gives: the sections, every value bit for bit, the notes with
// their lines, the result and the line it ended at. Files are made so that
// the blocks and the runs of lines the threads get start at every kind of
// line: a comment, a blank line, a carriage return and line feed, a text
// column, a bad row. A status callback keeps a read line by line, which
// makes the reads to compare with.
#include <gtest/gtest.h>
#include <quarl/reader.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "support/reader_access.h"
#include "support/test_util.h"

namespace quarl {
namespace {

std::string Bits(double value)
{
    uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    char text[24];
    std::snprintf(text, sizeof text, "%016" PRIx64, bits);
    return text;
}

// Everything a read leaves, as text.
std::string Outcome(const CLasReader& reader, ELASFILEERROR result)
{
    std::string out = std::to_string(result) + " line " + std::to_string(reader.GetLineNumber()) + "\n";
    for (const auto& section : reader) {
        out += "~" + section->m_name + "|" + section->m_association + "\n";
        for (const CLasParam& p : section->m_params)
            out += p.m_mnemonic + "." + p.m_unit + " " + p.m_value + ":" + p.m_description + "\n";
        for (const CLasCurve& curve : section->m_curves) {
            out += curve.m_definition.m_mnemonic + (curve.m_isNumeric ? " n:" : " s:");
            for (double v : curve.m_numbers) out += Bits(v) + ",";
            for (const CLasString& s : curve.m_strings) out += s + ",";
            out += "\n";
        }
    }
    for (const CLasNote& note : reader.GetNotes())
        out += std::to_string(note.line) + " " + std::to_string(note.kind) + " " + note.text + "\n";
    return out;
}

struct Read {
    std::string outcome;
    uint64_t rowsInBlocks = 0;
};

int32_t GoOn(void*, double, const char*)
{
    return 0;
}

// `lineByLine`: with a status callback that never stops the read.
Read ReadBytes(const std::string& bytes, unsigned threads, CLasReadOptions options = {}, bool lineByLine = false)
{
    options.threads = threads;
    CLasReader reader;
    reader.SetOptions(options);
    if (lineByLine) reader.SetStatusCallback(nullptr, GoOn);
    const ELASFILEERROR result = reader.OpenBuffer(bytes.data(), bytes.size(), "t.las");
    return Read{Outcome(reader, result), test::Access::RowsInBlocks(reader)};
}

// Reads `bytes` line by line and in blocks on 1, 2, 3 and 8 threads and
// expects one outcome; returns the rows blocks took on 2 threads.
uint64_t SameOnEveryCount(const std::string& bytes, const CLasReadOptions& options)
{
    const Read reference = ReadBytes(bytes, 1, options, true);
    EXPECT_EQ(reference.rowsInBlocks, 0u);
    uint64_t byTwo = 0;
    for (unsigned threads : {1u, 2u, 3u, 8u}) {
        const Read read = ReadBytes(bytes, threads, options);
        EXPECT_EQ(read.outcome, reference.outcome) << threads << " threads";
        if (threads == 2) byTwo = read.rowsInBlocks;
    }
    return byTwo;
}

// The same, strictly and leniently; the rows blocks took on 2 threads strictly.
uint64_t ExpectSameOnEveryCount(const std::string& bytes)
{
    CLasReadOptions lenient;
    lenient.lenient = true;
    SameOnEveryCount(bytes, lenient);
    return SameOnEveryCount(bytes, CLasReadOptions());
}

std::string Header(const std::string& version, const std::string& delimiter, const std::string& format = "")
{
    return "~VERSION INFORMATION\n VERS.   " + version + " : version\n WRAP.   NO : one line per row\n" +
           (delimiter.empty() ? "" : " DLM .   " + delimiter + " : delimiter\n") +
           "~WELL INFORMATION\n STRT.M 100.0 :\n STOP.M 200.0 :\n STEP.M 0.5 :\n NULL. -999.25 :\n"
           "~CURVE INFORMATION\n DEPT.M : depth\n GR .GAPI : gamma\n RHOB.G/C3 " +
           format + ": density\n";
}

// Rows of three numbers, `rows` of them, each line ended by `end`.
std::string Rows(size_t rows, const char* separator, const std::string& end)
{
    std::string text;
    char row[96];
    for (size_t i = 0; i < rows; ++i) {
        std::snprintf(row, sizeof row, "%.2f%s%.4f%s%.3e", 100.0 + 0.25 * double(i), separator,
                      double(i % 97) * 1.0625 - 3, separator, 2.0 + double(i % 13) / 7.0);
        text += row + end;
    }
    return text;
}

std::string PlainFile(size_t rows)
{
    return Header("2.0", "") + "~A DEPT GR RHOB\n" + Rows(rows, " ", "\n");
}

TEST(ThreadsRead, PlainRowsAreTakenByThreadsAndReadAsOnOneThread)
{
    EXPECT_GT(ExpectSameOnEveryCount(PlainFile(3000)), 2900u);
    // A section too short for blocks, one of one row, and of none, and a
    // last line without a line feed.
    EXPECT_EQ(ExpectSameOnEveryCount(PlainFile(60)), 0u);
    ExpectSameOnEveryCount(PlainFile(1));
    ExpectSameOnEveryCount(PlainFile(0));
    std::string unended = PlainFile(500);
    unended.pop_back();
    ExpectSameOnEveryCount(unended);
}

// Each odd line, put in front of every row of a file in turn behind the
// rows read line by line, so that the blocks and the runs of the threads
// begin and end on it and around it.
TEST(ThreadsRead, AnOddLineAnywhereReadsAsOnOneThread)
{
    const std::vector<std::string> oddLines = {
        "# a comment\n",
        "\n",
        "   \t  \n",
        "100.5 1.0\n",
        "100.5 1.0 2.0 3.0\n",
        "100.5 12.5ft 2\n",
        "100.5 - 2\n",
        "1 2-3\n",
        "1 2 3\r\n",
        "1 2\r 3\n",
        "1 2 3\r\r\n",
        "~Other\nfree text\n",
        "1 2 3\0 4\n",
        "1e400 2 3\n",
        "-.5 +.5 5.\n",
        "0x10 2 3\n",
        "1,5 2 3\n",
        "  ~Other\nfree\n",
        "# DEPT GR RHOB\n",
        "# W X Y Z\n\n~A\n1 2 3 4\n",
        "\"1\" 2 3\n",
        "\t1 2 3\n",
        "1 2 3\r",
    };
    const size_t rows = 40;
    const std::string head = Header("2.0", "") + "~A DEPT GR RHOB\n" + Rows(70, " ", "\n");
    const std::string body = Rows(rows, "  ", "\n");
    for (const std::string& odd : oddLines) {
        size_t at = 0;
        for (size_t row = 0; row <= rows; ++row) {
            const std::string file = head + body.substr(0, at) + odd + body.substr(at);
            ExpectSameOnEveryCount(file);
            if (row < rows) at = body.find('\n', at) + 1;
        }
    }
}

TEST(ThreadsRead, LinesEndedByCarriageReturnAndLineFeedReadAsOnOneThread)
{
    const std::string file = Header("2.0", "") + "~A\r\n" + Rows(2000, " ", "\r\n");
    EXPECT_GT(ExpectSameOnEveryCount(file), 1900u);
}

TEST(ThreadsRead, Las3CommaRowsAndOddRowsReadAsOnOneThread)
{
    const std::string head = Header("3.0", "COMMA") + "~LOG_DATA | CURVE INFORMATION\n";
    const std::string body = Rows(1500, ", ", "\n");
    EXPECT_GT(ExpectSameOnEveryCount(head + body), 1400u);
    // A value that is a number in part ("1 2" reads as 1), with its note.
    for (size_t cut : {size_t(0), body.size() / 3, body.size() / 2, body.size() - 40}) {
        const size_t at = body.find('\n', cut) + 1;
        const std::string file = head + body.substr(0, at) + "1 2, 3\n" + body.substr(at);
        ExpectSameOnEveryCount(file);
        EXPECT_NE(ReadBytes(file, 2).outcome.find("\"1 2\""), std::string::npos);
        // An empty value behind a delimiter, and one behind the last curve.
        ExpectSameOnEveryCount(head + body.substr(0, at) + "1, , 3\n1,2,3,\n" + body.substr(at));
    }
}

TEST(ThreadsRead, TextColumnsAndOtherFilesReadOnOneThread)
{
    // A text curve: the section reads on the calling thread alone.
    const std::string text = Header("3.0", "COMMA", "{S}") + "~LOG_DATA | CURVE INFORMATION\n" + Rows(300, ", ", "\n");
    EXPECT_EQ(ExpectSameOnEveryCount(text), 0u);
    // Wrapped files.
    std::string wrapped = PlainFile(200);
    wrapped.replace(wrapped.find("NO :"), 2, "YES");
    EXPECT_EQ(ExpectSameOnEveryCount(wrapped), 0u);
}

// Leniently, rows the column rules look at once the section is read (a
// decimal comma, a text token, values behind the last curve) stand among
// rows that threads took.
TEST(ThreadsRead, LenientColumnRulesSeeEveryRow)
{
    CLasReadOptions lenient;
    lenient.lenient = true;
    const std::string body = Rows(3000, " ", "\n");
    const size_t half = body.find('\n', body.size() / 2) + 1;
    for (const char* odd : {"1 2,5 3\n", "1 SAND 3\n", "1 2 3 4\n", "1 2\n"}) {
        const std::string file = PlainFile(0) + body.substr(0, half) + odd + body.substr(half);
        EXPECT_GT(SameOnEveryCount(file, lenient), 1400u) << odd;
    }
}

TEST(ThreadsRead, AStatusCallbackKeepsTheReadOnTheCallingThread)
{
    const std::string file = PlainFile(2000);
    std::vector<std::string> outcomes;
    for (unsigned threads : {1u, 4u}) {
        test::Reports reports;
        CLasReader reader;
        CLasReadOptions options;
        options.threads = threads;
        reader.SetOptions(options);
        reader.SetStatusCallback(&reports, test::Reports::Callback);
        const ELASFILEERROR result = reader.OpenBuffer(file.data(), file.size(), "t.las");
        EXPECT_EQ(test::Access::RowsInBlocks(reader), 0u);
        std::string out = Outcome(reader, result);
        for (int i = 0; i < reports.calls(); ++i) out += std::to_string(reports.percents[i]) + "\n";
        outcomes.push_back(out);
    }
    EXPECT_EQ(outcomes[0], outcomes[1]);
}

// The budget ends the read at the same row whichever thread read it.
TEST(ThreadsRead, TheBudgetEndsTheReadAtTheSameRow)
{
    const std::string file = PlainFile(3000) + "# behind\n\n";
    const uint64_t full = [&] {
        CLasReader reader;
        reader.OpenBuffer(file.data(), file.size(), "t.las");
        return test::Access::BytesKept(reader);
    }();
    for (uint64_t cut :
         {uint64_t(0), uint64_t(24), uint64_t(24 * 1000 + 7), uint64_t(24 * 2999), uint64_t(24 * 3000)}) {
        CLasReadOptions options;
        options.maxBytes = full - cut;
        SameOnEveryCount(file, options);
        options.lenient = true;
        SameOnEveryCount(file, options);
    }
}

// Many rows with odd lines among them: threads take the rows again after
// each odd line and its run of rows on one thread.
TEST(ThreadsRead, ThreadsTakeTheRowsAgainBehindOddLines)
{
    std::string body = Rows(40000, " ", "\n");
    for (size_t at = 100000; at < body.size(); at += 300000) {
        at = body.find('\n', at) + 1;
        body.insert(at, "1 2\n# note\n");
    }
    const uint64_t byTwo = ExpectSameOnEveryCount(Header("2.0", "") + "~A\n" + body);
    EXPECT_GT(byTwo, 30000u);
}

// A file read from its path (its pages mapped) in blocks, across the end of
// the first block, with odd lines in the second.
TEST(ThreadsRead, AFileReadFromItsPathInSeveralBlocks)
{
    std::string body = Rows(700000, " ", "\n");
    const size_t odd = body.find('\n', size_t(17) << 20) + 1;
    body.insert(odd, "# comment\n1 2\n");
    const std::string text = Header("2.0", "") + "~A\n" + body;
    test::TempDir dir;
    const std::string path = dir.Write("big.las", text);
    std::vector<std::string> outcomes;
    for (unsigned threads : {1u, 2u, 3u}) {
        CLasReader reader;
        CLasReadOptions options;
        options.threads = threads;
        reader.SetOptions(options);
        const ELASFILEERROR result = reader.Open(tessel::TxString(path.c_str()));
        EXPECT_EQ(result, LASFILE_OK);
        EXPECT_GT(test::Access::RowsInBlocks(reader), 600000u);
        outcomes.push_back(Outcome(reader, result));
    }
    EXPECT_EQ(outcomes[1], outcomes[0]);
    EXPECT_EQ(outcomes[2], outcomes[0]);
    EXPECT_EQ(outcomes[0], ReadBytes(text, 2, {}, true).outcome);
}

TEST(ThreadsRead, EveryCorpusFileReadsAsOnOneThread)
{
    const std::vector<std::string> files = test::CorpusFiles();
    if (files.empty()) GTEST_SKIP() << "no corpus at " << test::CorpusDir();
    for (const std::string& path : files) {
        const std::string bytes = test::ReadFileBytes(path);
        SCOPED_TRACE(path);
        ExpectSameOnEveryCount(bytes);
    }
}

}  // namespace
}  // namespace quarl
