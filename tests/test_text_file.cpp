// CTextFile against a model of lines, the 1024-byte blocks, the percentage,
// 64-bit sizes, the line store's growth and failures, closed objects and
// operator=.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <quarl/text_file.h>
#include <unistd.h>

#include <cstdio>
#include <random>
#include <string>

#include "support/test_util.h"

namespace quarl {
namespace {

using test::FailingLineStore;
using test::TempDir;

std::string Line(const CTextFile& file)
{
    return std::string(file.GetLine(), file.GetLineLength());
}

std::string Exact(double v)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", v);
    return text;
}

size_t OpenDescriptorCount()
{
    return test::FolderEntries("/proc/self/fd").size();
}

// Every line, line count and percentage against the model: lines split at
// line feeds, carriage returns removed, a last line without line feed
// delivered but not counted, the percentage exact to the byte behind the
// line; then the end, twice.
void ExpectReadsAs(const std::string& bytes)
{
    TempDir dir;
    CTextFile file;
    std::string want, got;
    uint32_t lines = 0, counted = 0;
    for (size_t i = 0; i <= bytes.size(); ++i) {
        const bool end = i == bytes.size();
        if (!end && bytes[i] != '\n') {
            want += bytes[i] == '\r' ? "" : std::string(1, bytes[i]);
            continue;
        }
        if (end && (bytes.empty() || bytes.back() == '\n')) break;
        counted += !end;
        ASSERT_EQ(lines++ == 0 ? file.Open(dir.Write("f", bytes)) : file.ReadLine(), LASFILE_OK);
        got = Line(file) + " " + std::to_string(file.GetLineCount()) + " " + Exact(file.GetPercentRead());
        ASSERT_EQ(got, want + " " + std::to_string(counted) + " " +
                           Exact(static_cast<double>(end ? i : i + 1) * 100.0 / static_cast<double>(bytes.size())));
        want.clear();
    }
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
        ASSERT_EQ(std::string(file.GetLine()) + " " + std::to_string(file.GetLineCount()) + " " +
                      Exact(file.GetPercentRead()),
                  " " + std::to_string(counted) + " " + "100");
    }
}

TEST(TextFile, MatchesTheModel)
{
    std::string block;  // exactly one block of 16 lines
    for (int i = 0; i < 16; ++i) block += std::string(63, static_cast<char>('a' + i)) + "\n";
    for (const std::string& bytes :
         {std::string("one\ntwo\nthree"), std::string("\n\n\nx"), std::string("\r"), std::string("\r\r\n\r\rx\r"),
          std::string("a\0b\n\0\n", 6), std::string(1023, 'x') + "\r\n" + "next\n", block, block.substr(0, 1023) + "Z",
          std::string(1024, 'c') + "\n", std::string(1023, 'd') + "\ne"})
        ExpectReadsAs(bytes);
    std::mt19937 random(20240611);
    const char alphabet[] = {'a', 'b', '\r', '\n', '\0', '\t', static_cast<char>(0xE9)};
    for (int round = 0; round < 60; ++round) {  // around multiples of the block, long and short lines
        size_t size =
            round % 4 ? std::uniform_int_distribution<size_t>(1, 4200)(random) : 1024 * (1 + round % 3) + round % 3 - 1;
        std::string bytes;
        for (size_t i = 0; i < size; ++i) {
            const int pick = std::uniform_int_distribution<int>(0, round % 3 ? 12 : 400)(random);
            bytes += pick == 0 ? '\n' : alphabet[static_cast<size_t>(pick) % sizeof alphabet];
        }
        ASSERT_NO_FATAL_FAILURE(ExpectReadsAs(bytes)) << round;
    }
}

// Passing over lines to the next one that starts with '~' ends where
// reading line by line ends, with the same line, counts and percentage, in
// and across the blocks that the skip reads.
void ExpectSkipsAs(const std::string& bytes, bool decode = false)
{
    TempDir dir;
    const std::string path = dir.Write("f", bytes);
    CTextFile byLine, skipping;
    byLine.SetDecoding(decode);
    skipping.SetDecoding(decode);
    ELASFILEERROR model = byLine.Open(path);
    ASSERT_EQ(skipping.Open(path), model);
    while (model == LASFILE_OK) {
        uint64_t lines = 0, passed = 0;
        do {
            model = byLine.ReadLine();
            lines += model == LASFILE_OK;
        } while (model == LASFILE_OK && byLine.GetLine()[0] != '~');
        ASSERT_EQ(skipping.SkipToLineStartingWith('~', passed), model);
        ASSERT_EQ(passed, lines);
        ASSERT_EQ(Line(skipping), Line(byLine));
        ASSERT_EQ(skipping.GetLineCount(), byLine.GetLineCount());
        ASSERT_EQ(skipping.GetPercentRead(), byLine.GetPercentRead());
    }
}

TEST(TextFile, SkippingToAHeaderPassesTheLinesThatReadingPasses)
{
    std::mt19937 random(20261124);
    const char alphabet[] = {'a', '~', '\r', '\n', ' '};
    for (int round = 0; round < 40; ++round) {
        std::string bytes(std::uniform_int_distribution<size_t>(1, 3000)(random), 'a');
        for (char& c : bytes) c = alphabet[std::uniform_int_distribution<size_t>(0, sizeof alphabet - 1)(random)];
        ASSERT_NO_FATAL_FAILURE(ExpectSkipsAs(bytes)) << round;
    }
    ExpectSkipsAs(std::string(5000, '\n') + "~h\n" + std::string(70000, '\n') + "~");  // a feed in every byte
    // Decoded text, and carriage returns read as line ends, are passed over
    // as ReadLine reads them.
    std::string utf16 = "\xFF\xFE";
    for (char c : std::string("a\n~b\n\nc\n~")) utf16 += std::string{c, '\0'};
    ExpectSkipsAs(utf16, true);
    ExpectSkipsAs(std::string(100, 'a') + "\r~b\r\rc\r~", true);
    // A header at and around the edge of the skip's first 256 KiB block,
    // which starts behind the first line, separated by that edge from the
    // line feeds and carriage returns in front of it.
    const std::string first = "~top\n";
    for (const std::string& edge : {std::string("\n~h"), std::string("\n\r\r~h"), std::string("x~h")}) {
        for (size_t shift = 0; shift < 5; ++shift) {
            std::string bytes = first;
            while (bytes.size() < 2 * 262144) bytes += std::string(97, 'v') + "\n";
            bytes.replace(first.size() + 262144 - shift, edge.size(), edge);
            ASSERT_NO_FATAL_FAILURE(ExpectSkipsAs(bytes + "tail without feed")) << edge << shift;
        }
    }
}

// All lines of a file read with decoding on or off, joined by "|".
std::string AllLines(const std::string& bytes, bool decode, uint64_t* loneLine = nullptr)
{
    TempDir dir;
    CTextFile file;
    file.SetDecoding(decode);
    std::string lines;
    for (ELASFILEERROR r = file.Open(dir.Write("f", bytes)); r == LASFILE_OK; r = file.ReadLine())
        lines += Line(file) + "|";
    if (loneLine) *loneLine = file.GetLoneReturnLine();
    return lines + std::to_string(file.GetLineCount());
}

TEST(TextFile, DecodingACarriageReturnAloneEndsALineAnywhere)
{
    uint64_t lone = 0;
    EXPECT_EQ(AllLines("a\r\nb\rc\r\nd\ne\r", true, &lone), "a|b|c|d|e|5");
    EXPECT_EQ(lone, 2u);
    EXPECT_EQ(AllLines("a\r\nb\rc\r\nd\ne\r", false, &lone), "a|bc|d|e|3");
    EXPECT_EQ(lone, 0u);
    // An empty line behind a longer one is the empty C string as well.
    TempDir dir;
    CTextFile file;
    file.SetDecoding(true);
    ASSERT_EQ(file.Open(dir.Write("cr", "abc\r\rd\r")), LASFILE_OK);
    ASSERT_EQ(file.ReadLine(), LASFILE_OK);
    EXPECT_STREQ(file.GetLine(), "");
    // Behind the last byte of a block: a line feed in the next block pairs
    // with it, anything else does not.
    const std::string head = "h\n" + std::string(1021, 'x');
    EXPECT_EQ(AllLines(head + "\r\ny\n", true, &lone), "h|" + std::string(1021, 'x') + "|y|3");
    EXPECT_EQ(lone, 0u);
    EXPECT_EQ(AllLines(head + "\rz\n", true, &lone), "h|" + std::string(1021, 'x') + "|z|3");
    EXPECT_EQ(lone, 2u);
    // Skipping to a header finds it behind such a line, counting as reading does.
    std::string rows = "~A\n";
    for (int i = 0; i < 300; ++i) rows += "1 2" + std::string(i == 150 ? "\r" : "\r\n");
    ExpectSkipsAs(rows + "~h\r\n3\r~x\n", true);
    ExpectSkipsAs(rows + "~h\r\n3\r~x\n", false);
}

// With decoding on, Open names the text form by the first bytes: a mark,
// or for UTF-16 without one, ASCII bytes with a zero beside each.
TEST(TextFile, DecodingNamesTheTextFormByTheFirstBytes)
{
    const struct {
        std::string head;
        CTextFile::ETextForm form;
    } cases[] = {
        {std::string("\xFF\xFE\0\0", 4), CTextFile::kFormUtf32Le},
        {std::string("\0\0\xFE\xFF", 4), CTextFile::kFormUtf32Be},
        {"\xEF\xBB\xBFx", CTextFile::kFormUtf8Bom},
        {"\xFF\xFE", CTextFile::kFormUtf16Le},
        {"\xFE\xFFx", CTextFile::kFormUtf16Be},
        {"\xFE\xFF", CTextFile::kFormUtf16Be},  // the marks alone, as short as they are
        {"\xEF\xBB\xBF", CTextFile::kFormUtf8Bom},
        {std::string("\x7F\0A\0", 4), CTextFile::kFormUtf16Le},
        {std::string("\0\x7F\0A", 4), CTextFile::kFormUtf16Be},
        {std::string("\x80\0A\0", 4), CTextFile::kFormBytes},
        {std::string("A\0\x80\0", 4), CTextFile::kFormBytes},
        {std::string("\0\x80\0A", 4), CTextFile::kFormBytes},
        {std::string("\0A\0\x80", 4), CTextFile::kFormBytes},
        {"A\xFF\n", CTextFile::kFormBytes},
    };
    TempDir dir;
    for (const auto& c : cases) {
        CTextFile file;
        file.SetDecoding(true);
        file.Open(dir.Write("f", c.head));  // a mark alone leaves no line to read
        EXPECT_EQ(file.GetTextForm(), c.form) << c.head;
        file.SetDecoding(false);
        file.Open(dir.Write("f", c.head));
        EXPECT_EQ(file.GetTextForm(), CTextFile::kFormBytes) << c.head;
    }
    // A pair of surrogates that the end of the first block cuts apart stays
    // one character.
    std::string wide = "\xFF\xFE";
    for (int i = 0; i < 340; ++i) wide += std::string("a\0", 2);
    CTextFile file;
    file.SetDecoding(true);
    ASSERT_EQ(file.Open(dir.Write("w", wide + std::string("\x3D\xD8\x00\xDE", 4))), LASFILE_OK);  // U+1F600
    EXPECT_EQ(Line(file), std::string(340, 'a') + "\xF0\x9F\x98\x80");
}

// The tail of the file and a line at a byte offset are taken without moving
// the place of ReadLine; text without byte offsets (decoded from UTF-16,
// lines ended by carriage returns alone) and closed files give neither, and
// a closed file has no lines to skip.
TEST(TextFile, TailAndLineAtAnOffset)
{
    TempDir dir;
    CTextFile file;
    std::string tail = "x";
    uint64_t start = 7;
    EXPECT_FALSE(file.ReadTail(4, tail, start));
    EXPECT_TRUE(tail.empty());
    EXPECT_EQ(file.ReadLineAt(0), LASFILE_IO_FAILED);
    uint64_t passed = 0;
    EXPECT_EQ(file.SkipToLineStartingWith('~', passed), LASFILE_IO_FAILED);

    ASSERT_EQ(file.Open(dir.Write("f", "a\nbb\nccc\n")), LASFILE_OK);
    ASSERT_TRUE(file.ReadTail(4, tail, start));
    EXPECT_EQ(tail, "ccc\n");
    EXPECT_EQ(start, 5u);
    ASSERT_TRUE(file.ReadTail(100, tail, start));
    EXPECT_EQ(tail, "a\nbb\nccc\n");
    EXPECT_EQ(start, 0u);
    EXPECT_EQ(Line(file), "a");
    ASSERT_EQ(file.ReadLine(), LASFILE_OK);
    EXPECT_EQ(Line(file), "bb");
    ASSERT_EQ(file.ReadLineAt(5), LASFILE_OK);
    EXPECT_EQ(Line(file), "ccc");
    ASSERT_EQ(file.ReadLineAt(2), LASFILE_OK);
    EXPECT_EQ(Line(file), "bb");
    EXPECT_EQ(file.ReadLine(), LASFILE_OK);
    EXPECT_EQ(Line(file), "ccc");
    EXPECT_NE(file.ReadLineAt(9), LASFILE_OK);  // the end of the file

    for (const std::string& text : {std::string("\xFF\xFE"
                                                "a\0\n\0",
                                                6),
                                    std::string("a\rbb\rccc\r")}) {
        file.SetDecoding(true);
        ASSERT_EQ(file.Open(dir.Write("g", text)), LASFILE_OK);
        EXPECT_FALSE(file.ReadTail(4, tail, start));
        EXPECT_TRUE(tail.empty());
        EXPECT_EQ(file.ReadLineAt(0), LASFILE_IO_FAILED);
    }
}

TEST(TextFile, PercentUsesSixtyFourBitSizes)
{
    TempDir dir;
    const std::string path = dir.Write("big", "abc\n");
    const off_t size = (off_t{5} << 30) + 4;  // wraps to 1 GiB + 4 in 32 bits
    if (::truncate(path.c_str(), size) != 0) GTEST_SKIP() << "no sparse file of 5 GiB here";
    CTextFile file;
    ASSERT_EQ(file.Open(path), LASFILE_OK);
    EXPECT_EQ(file.GetPercentRead(), 4 * 100.0 / static_cast<double>(size));
}

TEST(TextFile, LineStoreGrowsOnlyForLongerLinesGeometricallyAndSurvivesFailures)
{
    TempDir dir;
    CTextFile file;
    const std::string huge(4 << 20, 'h');
    {
        FailingLineStore counter(1 << 30);  // never fails, counts allocations
        ASSERT_EQ(file.Open(dir.Write("g", std::string(39, 'a') + "\n" + std::string(40, 'b') + "\n" + huge + "\n" +
                                               std::string(500, 'e') + "\n")),
                  LASFILE_OK);
        EXPECT_EQ(counter.calls(), 1);  // 39 bytes fit the first store
        ASSERT_EQ(file.ReadLine(), LASFILE_OK);
        EXPECT_EQ(counter.calls(), 2);  // the 40th byte needs room for the terminator
        ASSERT_EQ(file.ReadLine(), LASFILE_OK);
        EXPECT_TRUE(Line(file) == huge);
        const int afterLongest = counter.calls();
        EXPECT_LT(afterLongest, 200);  // 40 bytes at a time would be thousands
        ASSERT_EQ(file.ReadLine(), LASFILE_OK);
        EXPECT_EQ(counter.calls(), afterLongest);  // the large store is reused
    }
    {
        FailingLineStore failing(1);
        EXPECT_EQ(file.Open(dir.Write("a", "abc\n")), LASFILE_OUT_OF_MEMORY);
        EXPECT_TRUE(file.IsOpen() && file.GetLine() == nullptr && file.ReadLine() == LASFILE_IO_FAILED);
    }
    const std::string longLine = "ABCDEFGHIJKLMNOPQRSTUVWXYZABCDEFGHIJKLMNOPQRSTUVWX";
    {
        FailingLineStore failing(2, 1);  // the first growth fails, later ones succeed
        ASSERT_EQ(file.Open(dir.Write("g", "short\n" + longLine + "\nnext\n")), LASFILE_OK);
        EXPECT_EQ(file.ReadLine(), LASFILE_OUT_OF_MEMORY);
        EXPECT_EQ(Line(file), longLine.substr(0, 39));  // the bytes so far stay
        ASSERT_EQ(file.ReadLine(), LASFILE_OK);
        EXPECT_EQ(Line(file) + std::to_string(file.GetLineCount()), longLine.substr(40) + "2");  // byte 40 is lost
    }
}

// A NUL byte in the first block (after decoding) refuses the file at Open;
// one further on is a byte of its line. A line longer than the bound
// refuses it where it stands, whichever way lines are read. A refused file
// gives nothing more until it is opened again, and costs no more memory.
TEST(TextFile, BytesThatAreNoTextAreRefused)
{
    TempDir dir;
    CTextFile file;
    EXPECT_FALSE(file.GetRefuseNul());
    const std::string late = std::string(1100, 'a') + '\0' + "b\n";
    ASSERT_EQ(file.Open(dir.Write("zero", std::string(3, '\0') + "\n")), LASFILE_OK);  // a byte like any other
    EXPECT_EQ(file.GetLineLength(), 3u);
    file.SetRefuseNul(true);
    {
        FailingLineStore counter(1 << 30);
        EXPECT_EQ(file.Open("/dev/zero"), LASFILE_BAD_FORMAT);
        EXPECT_EQ(counter.calls(), 1);  // the first line store, never grown
    }
    EXPECT_TRUE(file.IsOpen() && Line(file).empty() && file.GetRefusal() == CTextFile::kRefusedNul);
    uint64_t passed = 0;
    EXPECT_EQ(file.ReadLine(), LASFILE_BAD_FORMAT);
    EXPECT_EQ(file.SkipToLineStartingWith('~', passed), LASFILE_BAD_FORMAT);
    EXPECT_EQ(passed, 0u);
    ASSERT_EQ(file.Open(dir.Write("late", late)), LASFILE_OK);  // Open forgets the refusal
    EXPECT_EQ(Line(file), late.substr(0, late.size() - 1));
    EXPECT_EQ(file.GetRefusal(), CTextFile::kNotRefused);
    std::string utf16 = "\xFF\xFE";
    for (char c : std::string("~V\n")) utf16 += std::string{c, '\0'};
    file.SetDecoding(true);  // decoded, the zeros of UTF-16 are no NUL bytes
    EXPECT_EQ(file.Open(dir.Write("wide", utf16)), LASFILE_OK);
    file.SetDecoding(false);
    EXPECT_EQ(file.Open(dir.Write("wide", utf16)), LASFILE_BAD_FORMAT);
    file.Close();
    EXPECT_EQ(file.GetRefusal(), CTextFile::kNotRefused);

    EXPECT_EQ(file.GetMaxLineLength(), CTextFile::kDefaultMaxLineLength);
    const std::string ten = "0123456789", eleven = "abcdefghijk";
    for (bool returns : {false, true}) {  // lines by line feeds, and by carriage returns alone
        SCOPED_TRACE(returns);
        const char end = returns ? '\r' : '\n';
        file.SetDecoding(returns);
        file.SetMaxLineLength(10);
        ASSERT_EQ(file.Open(dir.Write("long", ten + end + eleven + end + "x" + end)), LASFILE_OK);
        EXPECT_EQ(Line(file), ten);  // as long as the bound allows
        EXPECT_EQ(file.ReadLine(), LASFILE_BAD_FORMAT);
        EXPECT_EQ(file.GetRefusal(), CTextFile::kRefusedLongLine);
        EXPECT_LE(file.GetLineLength(), 10u);
        EXPECT_EQ(Line(file), eleven.substr(0, file.GetLineLength()));
        EXPECT_EQ(file.ReadLine(), LASFILE_BAD_FORMAT);  // and nothing more
        EXPECT_EQ(file.Open(dir.Write("first", eleven + end)), LASFILE_BAD_FORMAT);
        file.SetMaxLineLength(0);  // no bound
        ASSERT_EQ(file.Open(dir.Write("first", eleven + end)), LASFILE_OK);
        EXPECT_EQ(Line(file), eleven);
    }
    file.SetDecoding(false);
    // Passing lines over in blocks counts a line's bytes across the blocks.
    const std::string head = "a\n";
    for (size_t bound : {size_t{270000}, size_t{0}}) {
        for (size_t length : {size_t{265000}, size_t{300000}}) {
            file.SetMaxLineLength(bound);
            ASSERT_EQ(file.Open(dir.Write("skip", head + std::string(length, 'x') + "\n~A\n")), LASFILE_OK);
            passed = 0;
            const bool within = bound == 0 || length < bound;
            EXPECT_EQ(file.SkipToLineStartingWith('~', passed), within ? LASFILE_OK : LASFILE_BAD_FORMAT) << length;
            EXPECT_EQ(Line(file), within ? "~A" : "") << length;
            EXPECT_EQ(passed, within ? 2u : 1u) << length;  // the long line, then "~A"
        }
    }
    file.SetMaxLineLength(CTextFile::kDefaultMaxLineLength);
}

TEST(TextFile, ClosedReopenedFailedAndAssignedObjects)
{
    TempDir dir;
    const std::string first = dir.Write("a", "first\n2\n"), second = dir.Write("b", "second\n");
    CTextFile file;
    const size_t before = OpenDescriptorCount();
    for (int round = 0; round < 3; ++round) {  // new, closed after a read, closed twice
        EXPECT_TRUE(!file.IsOpen() && !file.GetLine() && file.ReadLine() == LASFILE_IO_FAILED &&
                    file.GetLineCount() == 0 && file.GetFilename() == "")
            << round;
        if (round == 0) {
            ASSERT_TRUE(file.Open(first) == LASFILE_OK && file.ReadLine() == LASFILE_OK);
        }
        file.Close();
    }
    for (int i = 0; i < 4; ++i) {  // Open on an open object releases it and starts from the top
        ASSERT_EQ(file.Open(i % 2 ? first : second), LASFILE_OK);
        EXPECT_EQ(Line(file) + std::to_string(file.GetLineCount()), i % 2 ? "first1" : "second1");
    }
    EXPECT_EQ(file.GetFilename(), first);
    EXPECT_EQ(OpenDescriptorCount(), before + 1);
    EXPECT_EQ(file.Open(dir.File("missing")), LASFILE_IO_FAILED);
    EXPECT_EQ(OpenDescriptorCount(), before);
    EXPECT_TRUE(!file.IsOpen() && !file.GetLine() && file.Open("") == LASFILE_IO_FAILED);
    // A seek that fails (a pipe), an empty file and a folder: open, no line.
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    ASSERT_EQ(::write(fds[1], "abc\n", 4), 4);
    for (const std::string& path : {"/proc/self/fd/" + std::to_string(fds[0]), dir.Write("empty", ""), dir.path()}) {
        EXPECT_EQ(file.Open(path), LASFILE_IO_FAILED);
        EXPECT_TRUE(file.IsOpen() && file.GetFilename() == path && file.ReadLine() == LASFILE_IO_FAILED) << path;
    }
    ASSERT_EQ(file.Open(dir.Write("empty", "")), LASFILE_IO_FAILED);
    EXPECT_EQ(file.GetPercentRead(), 100.0);  // nothing to read: all of it is read
    file.Close();
    ::close(fds[0]);
    ::close(fds[1]);

    // Assignment never shares a stream or a line store.
    std::string bytes;
    for (int i = 0; i < 300; ++i) bytes += "line " + std::to_string(1000 + i) + "\n";  // 10 bytes each
    CTextFile source;
    ASSERT_EQ(source.Open(dir.Write("a", bytes)), LASFILE_OK);
    {
        CTextFile target;
        ASSERT_EQ(target.Open(dir.Write("b", "b1\nb2\n")), LASFILE_OK);
        ASSERT_EQ(source.ReadLine(), LASFILE_OK);
        target = source;  // the target's own file is closed, the copy is closed
        EXPECT_TRUE(!target.IsOpen() && !target.GetLine() && target.GetFilename() == "");
        EXPECT_EQ(target.GetLineCount(), 0u);  // a closed copy has read no line
        EXPECT_EQ(OpenDescriptorCount(), before + 1);
    }
    source = source;  // self-assignment changes nothing
    for (int i = 0; i < 119; ++i) ASSERT_EQ(source.ReadLine(), LASFILE_OK);
    EXPECT_EQ(Line(source), "line 1120");
    source.Close();
    EXPECT_EQ(OpenDescriptorCount(), before);
    CTextFile used;  // between closed objects the copy is faithful; Close keeps the position
    used = source;
    EXPECT_EQ(used.GetPercentRead(), 121 * 10 * 100.0 / 3000.0);
}

}  // namespace
}  // namespace quarl
