// CTextFile: line splitting, carriage returns, the 1024-byte blocks, the
// percentage, line counting, the closed object, every failure and operator=.
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <quarl/text_file.h>

#include "support/test_util.h"

namespace quarl {
namespace {

using test::FailingLineStore;
using test::TempDir;

// What a reader of the file should deliver: the lines split at line feeds
// with carriage returns removed, a last line without line feed included, and
// for each line whether a line feed ended it and the offset behind it.
struct ExpectedLine {
    std::string bytes;
    bool terminated;
    size_t end;
};

std::vector<ExpectedLine> SplitLines(const std::string& file)
{
    std::vector<ExpectedLine> lines;
    std::string line;
    for (size_t i = 0; i < file.size(); ++i) {
        if (file[i] == '\n') {
            lines.push_back({line, true, i + 1});
            line.clear();
        } else if (file[i] != '\r') {
            line += file[i];
        }
    }
    const size_t lastEnd = lines.empty() ? 0 : lines.back().end;
    if (lastEnd < file.size()) lines.push_back({line, false, file.size()});
    return lines;
}

std::string Line(const CTextFile& file)
{
    return std::string(file.GetLine(), file.GetLineLength());
}

int OpenDescriptorCount()
{
    int count = 0;
    if (DIR* dir = opendir("/proc/self/fd")) {
        while (readdir(dir)) ++count;
        closedir(dir);
    }
    return count;
}

// Reads the whole file and checks every line, result, line count and
// percentage against SplitLines, then the end of file twice.
void ExpectReadsAs(const std::string& bytes)
{
    TempDir dir;
    const std::string path = dir.Write("f.txt", bytes);
    const std::vector<ExpectedLine> expected = SplitLines(bytes);
    CTextFile file;
    uint32_t counted = 0;
    for (size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE("line " + std::to_string(i));
        const ELASFILEERROR rc = i == 0 ? file.Open(path) : file.ReadLine();
        ASSERT_EQ(rc, LASFILE_OK);
        ASSERT_EQ(Line(file), expected[i].bytes);
        if (expected[i].terminated) ++counted;
        ASSERT_EQ(file.GetLineCount(), counted);
        ASSERT_EQ(file.GetPercentRead(),
                  static_cast<double>(expected[i].end) * 100.0 / static_cast<double>(bytes.size()));
    }
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
        ASSERT_NE(file.GetLine(), nullptr);
        ASSERT_STREQ(file.GetLine(), "");
        ASSERT_EQ(file.GetLineCount(), counted);
        ASSERT_EQ(file.GetPercentRead(), 100.0);
    }
}

TEST(TextFile, LastLineWithoutLineFeedIsDeliveredAndNotCounted)
{
    TempDir dir;
    CTextFile file;
    ASSERT_EQ(file.Open(dir.Write("a", "abc")), LASFILE_OK);
    EXPECT_STREQ(file.GetLine(), "abc");
    EXPECT_EQ(file.GetLineCount(), 0u);
    EXPECT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
    EXPECT_STREQ(file.GetLine(), "");

    ExpectReadsAs("abc\n");
    ExpectReadsAs("one\ntwo\nthree");
    ExpectReadsAs("\n\n\nx");
}

TEST(TextFile, CarriageReturnsAreDroppedWhereverTheyStand)
{
    ExpectReadsAs("a\rb\n");
    ExpectReadsAs("\r");           // a last line of a lone CR is an empty line
    ExpectReadsAs("abc\r\ndef\r\n");
    ExpectReadsAs("\r\r\n\r\rx\r");
    ExpectReadsAs("\rlead\n" + std::string(200, '\r') + "tail\n");
    // A CR as the last byte of a block and its LF as the first of the next.
    ExpectReadsAs(std::string(1023, 'x') + "\r\n" + "next\n");
}

TEST(TextFile, NulBytesAreStoredLikeAnyOther)
{
    TempDir dir;
    CTextFile file;
    ASSERT_EQ(file.Open(dir.Write("n", std::string("a\0b\n\0\n", 6))), LASFILE_OK);
    EXPECT_EQ(Line(file), std::string("a\0b", 3));
    EXPECT_STREQ(file.GetLine(), "a");  // a reader of the text sees it end there
    ASSERT_EQ(file.ReadLine(), LASFILE_OK);
    EXPECT_EQ(Line(file), std::string(1, '\0'));
    EXPECT_EQ(file.GetLineCount(), 2u);
}

TEST(TextFile, BlockBoundaries)
{
    // Exactly one block: all lines, 100.0 at the end.
    std::string exact;
    for (int i = 0; i < 16; ++i) exact += std::string(63, static_cast<char>('a' + i)) + "\n";
    ASSERT_EQ(exact.size(), 1024u);
    ExpectReadsAs(exact);
    ExpectReadsAs(exact.substr(0, 1023) + "Z");  // no final LF
    // A line crossing the boundary, and an LF alone in the second block.
    ExpectReadsAs(std::string(1000, 'a') + "\n" + std::string(50, 'b') + "\n");
    ExpectReadsAs(std::string(1024, 'c') + "\n");
    ExpectReadsAs(std::string(1023, 'd') + "\n" + "e");
    // A line spanning several blocks.
    std::string several;
    for (int i = 0; i < 5000; ++i) several += static_cast<char>(i % 7 == 0 ? '\r' : 'a' + i % 26);
    ExpectReadsAs(several + "\nshort\n" + several);
}

TEST(TextFile, MatchesASimpleModelOnRandomFiles)
{
    std::mt19937 random(20240611);
    const char alphabet[] = {'a', 'b', '\r', '\n', '\0', '\t', static_cast<char>(0xE9)};
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        // Sizes around multiples of the block, and long and short lines.
        size_t size = std::uniform_int_distribution<size_t>(1, 4200)(random);
        if (round % 4 == 0) size = 1024 * (1 + round % 3) + (round % 3) - 1;
        const int lineFeedOdds = round % 3 == 0 ? 400 : 12;
        std::string bytes;
        for (size_t i = 0; i < size; ++i) {
            const int pick = std::uniform_int_distribution<int>(0, lineFeedOdds)(random);
            bytes += pick == 0 ? '\n' : alphabet[static_cast<size_t>(pick) % sizeof alphabet];
        }
        ExpectReadsAs(bytes);
    }
}

TEST(TextFile, PercentIsExactToTheByteMidBlock)
{
    TempDir dir;
    std::string bytes;
    for (int i = 0; i < 300; ++i) bytes += "line " + std::to_string(1000 + i) + "\n";  // 10 bytes
    ASSERT_EQ(bytes.size(), 3000u);
    CTextFile file;
    ASSERT_EQ(file.Open(dir.Write("p", bytes)), LASFILE_OK);
    EXPECT_EQ(file.GetPercentRead(), 10 * 100.0 / 3000.0);  // not 1024 read ahead
    for (int i = 2; i <= 300; ++i) {
        ASSERT_EQ(file.ReadLine(), LASFILE_OK);
        ASSERT_EQ(file.GetPercentRead(), i * 10 * 100.0 / 3000.0) << "after line " << i;
    }
    EXPECT_EQ(file.GetPercentRead(), 100.0);
    EXPECT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
    EXPECT_EQ(file.GetPercentRead(), 100.0);
}

TEST(TextFile, PercentUsesSixtyFourBitSizes)
{
    TempDir dir;
    const std::string path = dir.Write("big", "abc\n");
    const off_t size = (off_t{5} << 30) + 4;  // 5 GiB + 4: wraps to 1 GiB + 4 in 32 bits
    {
        const int fd = ::open(path.c_str(), O_WRONLY);
        ASSERT_GE(fd, 0);
        const bool grown = ::ftruncate(fd, size) == 0;
        ::close(fd);
        if (!grown) GTEST_SKIP() << "no sparse file of 5 GiB here";
    }
    CTextFile file;
    ASSERT_EQ(file.Open(path), LASFILE_OK);
    EXPECT_STREQ(file.GetLine(), "abc");
    EXPECT_EQ(file.GetPercentRead(), 4 * 100.0 / static_cast<double>(size));
}

TEST(TextFile, LineStoreGrowsOnlyForLongerLines)
{
    TempDir dir;
    FailingLineStore counter(1 << 30);  // never fails, counts allocations
    CTextFile file;
    const std::string bytes = std::string(39, 'a') + "\n" + std::string(40, 'b') + "\n" +
                              std::string(1000, 'c') + "\n" + std::string(39, 'd') + "\n" +
                              std::string(1000, 'e') + "\n" + std::string(500, 'f') + "\n";
    ASSERT_EQ(file.Open(dir.Write("g", bytes)), LASFILE_OK);
    EXPECT_EQ(counter.calls(), 1);  // 39 bytes fit the first store
    ASSERT_EQ(file.ReadLine(), LASFILE_OK);
    EXPECT_EQ(Line(file), std::string(40, 'b'));
    EXPECT_EQ(counter.calls(), 2);  // the 40th byte needs room for the terminator
    ASSERT_EQ(file.ReadLine(), LASFILE_OK);
    EXPECT_EQ(Line(file), std::string(1000, 'c'));
    const int afterLongest = counter.calls();
    for (const char c : {'d', 'e', 'f'}) {
        ASSERT_EQ(file.ReadLine(), LASFILE_OK);
        EXPECT_EQ(file.GetLine()[0], c);
    }
    EXPECT_EQ(file.GetLineLength(), 500u);
    EXPECT_EQ(counter.calls(), afterLongest);  // the large store is reused
}

TEST(TextFile, HugeLineGrowsGeometrically)
{
    TempDir dir;
    std::string bytes(4 << 20, 'h');
    for (size_t i = 0; i < bytes.size(); i += 4099) bytes[i] = static_cast<char>('a' + i % 26);
    FailingLineStore counter(1 << 30);
    CTextFile file;
    ASSERT_EQ(file.Open(dir.Write("h", bytes + "\nafter\n")), LASFILE_OK);
    EXPECT_TRUE(Line(file) == bytes);
    EXPECT_LT(counter.calls(), 200);  // 40 bytes at a time would be thousands
    ASSERT_EQ(file.ReadLine(), LASFILE_OK);
    EXPECT_STREQ(file.GetLine(), "after");
}

TEST(TextFile, NewAndClosedObjects)
{
    CTextFile file;
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.GetLine(), nullptr);
    EXPECT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
    EXPECT_EQ(file.GetLineCount(), 0u);
    EXPECT_EQ(file.GetFilename(), "");
    file.Close();
    file.Close();
    EXPECT_FALSE(file.IsOpen());

    TempDir dir;
    ASSERT_EQ(file.Open(dir.Write("a", "1\n2\n3\n")), LASFILE_OK);
    ASSERT_EQ(file.ReadLine(), LASFILE_OK);
    file.Close();
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.GetLine(), nullptr);
    EXPECT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
    EXPECT_EQ(file.GetLineCount(), 0u);
    EXPECT_EQ(file.GetFilename(), "");
    file.Close();

    // Opened again, with another file, from the start.
    const std::string other = dir.Write("b", "x\ny\n");
    ASSERT_EQ(file.Open(other), LASFILE_OK);
    EXPECT_STREQ(file.GetLine(), "x");
    EXPECT_EQ(file.GetLineCount(), 1u);
    EXPECT_EQ(file.GetFilename(), other);
}

TEST(TextFile, OpenOnAnOpenObjectReleasesWhatItHeld)
{
    TempDir dir;
    const std::string first = dir.Write("a", "first\n");
    const std::string second = dir.Write("b", "second\n");
    CTextFile file;
    const int before = OpenDescriptorCount();
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(file.Open(i % 2 ? first : second), LASFILE_OK);
        EXPECT_STREQ(file.GetLine(), i % 2 ? "first" : "second");
    }
    EXPECT_EQ(OpenDescriptorCount(), before + 1);
    EXPECT_EQ(file.Open(dir.File("missing")), LASFILE_IO_FAILED);
    EXPECT_EQ(OpenDescriptorCount(), before);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.GetLine(), nullptr);
}

// The rows of the failure table, in order.
TEST(TextFile, PathThatCannotBeOpened)
{
    TempDir dir;
    CTextFile file;
    EXPECT_EQ(file.Open(dir.File("missing")), LASFILE_IO_FAILED);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.GetLine(), nullptr);
    EXPECT_EQ(file.Open(""), LASFILE_IO_FAILED);
    EXPECT_FALSE(file.IsOpen());
}

TEST(TextFile, SeekThatFails)
{
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    ASSERT_EQ(::write(fds[1], "abc\n", 4), 4);
    const std::string path = "/proc/self/fd/" + std::to_string(fds[0]);
    {
        CTextFile file;
        EXPECT_EQ(file.Open(path), LASFILE_IO_FAILED);
        EXPECT_TRUE(file.IsOpen());
        EXPECT_EQ(file.GetFilename(), path);
        EXPECT_EQ(file.GetLine(), nullptr);
        EXPECT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
        file.Close();
        EXPECT_FALSE(file.IsOpen());
    }
    ::close(fds[0]);
    ::close(fds[1]);
}

TEST(TextFile, EmptyFileAndDirectory)
{
    TempDir dir;
    const std::string path = dir.Write("empty", "");
    CTextFile file;
    EXPECT_EQ(file.Open(path), LASFILE_IO_FAILED);
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(file.GetFilename(), path);
    EXPECT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
    file.Close();
    EXPECT_FALSE(file.IsOpen());

    // A folder opens as a stream on this platform but yields no byte.
    EXPECT_EQ(file.Open(dir.path()), LASFILE_IO_FAILED);
    EXPECT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
}

TEST(TextFile, LineStoreThatCannotBeAllocatedInOpen)
{
    TempDir dir;
    const std::string path = dir.Write("a", "abc\ndef\n");
    CTextFile file;
    {
        FailingLineStore failing(1);
        EXPECT_EQ(file.Open(path), LASFILE_OUT_OF_MEMORY);
        EXPECT_TRUE(file.IsOpen());
        EXPECT_EQ(file.GetLine(), nullptr);
        EXPECT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
        EXPECT_EQ(file.GetLine(), nullptr);
    }
    file.Close();
    ASSERT_EQ(file.Open(path), LASFILE_OK);
    EXPECT_STREQ(file.GetLine(), "abc");
}

TEST(TextFile, LineStoreThatCannotGrowInReadLine)
{
    TempDir dir;
    std::string longLine;
    for (int i = 0; i < 50; ++i) longLine += static_cast<char>('A' + i % 26);
    const std::string path = dir.Write("g", "short\n" + longLine + "\nnext\n");
    CTextFile file;
    FailingLineStore failing(2, 1);  // the first growth fails, later ones succeed
    ASSERT_EQ(file.Open(path), LASFILE_OK);
    EXPECT_EQ(file.ReadLine(), LASFILE_OUT_OF_MEMORY);
    EXPECT_EQ(Line(file), longLine.substr(0, 39));  // the bytes so far stay
    EXPECT_EQ(file.GetLineCount(), 1u);
    ASSERT_EQ(file.ReadLine(), LASFILE_OK);
    EXPECT_EQ(Line(file), longLine.substr(40));  // byte 40 is lost, reading goes on behind it
    EXPECT_EQ(file.GetLineCount(), 2u);
    ASSERT_EQ(file.ReadLine(), LASFILE_OK);
    EXPECT_STREQ(file.GetLine(), "next");
    EXPECT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
}

TEST(TextFile, LineStoreThatNeverGrows)
{
    TempDir dir;
    // Carriage returns don't take room: the lost byte is the 40th byte kept.
    const std::string first = std::string(30, 'a') + "\r" + "bcdefghijklmnopqrstuvwxyz0123";
    const std::string tail = std::string(45, 't');
    const std::string path = dir.Write("g", first + "\n" + tail);
    CTextFile file;
    FailingLineStore failing(2);
    EXPECT_EQ(file.Open(path), LASFILE_OUT_OF_MEMORY);
    EXPECT_EQ(Line(file), std::string(30, 'a') + "bcdefghij");
    EXPECT_EQ(file.ReadLine(), LASFILE_OK);  // 'k' was lost
    EXPECT_EQ(Line(file), "lmnopqrstuvwxyz0123");
    EXPECT_EQ(file.ReadLine(), LASFILE_OUT_OF_MEMORY);
    EXPECT_EQ(Line(file), tail.substr(0, 39));
    EXPECT_EQ(file.ReadLine(), LASFILE_OK);  // the last line, without line feed
    EXPECT_EQ(Line(file), tail.substr(40));
    EXPECT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
    EXPECT_EQ(file.GetLineCount(), 1u);
}

TEST(TextFile, AssignmentNeverSharesAStreamOrLineStore)
{
    static_assert(!std::is_copy_constructible<CTextFile>::value, "copying is not offered");
    static_assert(std::is_copy_assignable<CTextFile>::value, "assignment is");
    TempDir dir;
    const std::string a = dir.Write("a", "a1\na2\na3\n");
    const std::string b = dir.Write("b", "b1\nb2\n");
    const int before = OpenDescriptorCount();

    CTextFile source;
    ASSERT_EQ(source.Open(a), LASFILE_OK);
    {
        CTextFile target;
        ASSERT_EQ(target.Open(b), LASFILE_OK);
        target = source;  // the target's own file is closed, the copy is closed
        EXPECT_FALSE(target.IsOpen());
        EXPECT_EQ(target.GetLine(), nullptr);
        EXPECT_EQ(target.ReadLine(), LASFILE_IO_FAILED);
        EXPECT_EQ(target.GetFilename(), "");
        EXPECT_EQ(OpenDescriptorCount(), before + 1);
    }
    // The source keeps its stream and line store.
    EXPECT_STREQ(source.GetLine(), "a1");
    ASSERT_EQ(source.ReadLine(), LASFILE_OK);
    EXPECT_STREQ(source.GetLine(), "a2");

    source = source;  // self-assignment changes nothing
    EXPECT_TRUE(source.IsOpen());
    ASSERT_EQ(source.ReadLine(), LASFILE_OK);
    EXPECT_STREQ(source.GetLine(), "a3");
    source.Close();
    EXPECT_EQ(OpenDescriptorCount(), before);
}

TEST(TextFile, AssignmentBetweenClosedObjectsIsFaithful)
{
    TempDir dir;
    std::string bytes;
    for (int i = 0; i < 300; ++i) bytes += "line " + std::to_string(1000 + i) + "\n";
    CTextFile source;
    ASSERT_EQ(source.Open(dir.Write("p", bytes)), LASFILE_OK);
    for (int i = 0; i < 120; ++i) ASSERT_EQ(source.ReadLine(), LASFILE_OK);
    source.Close();
    const double percent = source.GetPercentRead();
    EXPECT_EQ(percent, 121 * 10 * 100.0 / 3000.0);  // Close keeps the position

    CTextFile target;
    target = source;
    EXPECT_FALSE(target.IsOpen());
    EXPECT_EQ(target.GetPercentRead(), percent);
    EXPECT_EQ(target.GetLineCount(), source.GetLineCount());
    EXPECT_EQ(target.GetFilename(), source.GetFilename());
    EXPECT_EQ(target.GetLine(), nullptr);

    // A target that had been used is overwritten as well.
    CTextFile used;
    ASSERT_EQ(used.Open(dir.Write("q", "x\n")), LASFILE_OK);
    used.Close();
    used = source;
    EXPECT_EQ(used.GetPercentRead(), percent);
}

}  // namespace
}  // namespace quarl
