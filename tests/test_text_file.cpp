// CTextFile: line splitting, carriage returns, the 1024-byte blocks, the
// percentage, line counting, the closed object, every failure and operator=.
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

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

std::string Line(const CTextFile& file) { return std::string(file.GetLine(), file.GetLineLength()); }

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
// percentage against a simple model: lines split at line feeds, carriage
// returns removed, a last line without line feed delivered but not counted,
// the percentage exact to the byte behind the line. Then the end twice.
void ExpectReadsAs(const std::string& bytes)
{
    TempDir dir;
    CTextFile file;
    std::string line;
    uint32_t lines = 0, counted = 0;
    const auto expectLine = [&](size_t end) {
        ASSERT_EQ(lines++ == 0 ? file.Open(dir.Write("f", bytes)) : file.ReadLine(), LASFILE_OK);
        ASSERT_EQ(Line(file), line) << "line " << lines;
        ASSERT_EQ(file.GetLineCount(), counted);
        ASSERT_EQ(file.GetPercentRead(), static_cast<double>(end) * 100.0 / static_cast<double>(bytes.size()));
        line.clear();
    };
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (bytes[i] == '\n') {
            ++counted;
            ASSERT_NO_FATAL_FAILURE(expectLine(i + 1));
        } else if (bytes[i] != '\r') {
            line += bytes[i];
        }
    }
    if (!bytes.empty() && bytes.back() != '\n') {
        ASSERT_NO_FATAL_FAILURE(expectLine(bytes.size()));
    }
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
        ASSERT_STREQ(file.GetLine(), "");
        ASSERT_EQ(file.GetLineCount(), counted);
        ASSERT_EQ(file.GetPercentRead(), 100.0);
    }
}

TEST(TextFile, MatchesTheModel)
{
    std::string block;  // exactly one block of 16 lines
    for (int i = 0; i < 16; ++i) block += std::string(63, static_cast<char>('a' + i)) + "\n";
    std::string several;  // a line spanning several blocks
    for (int i = 0; i < 5000; ++i) several += static_cast<char>(i % 7 == 0 ? '\r' : 'a' + i % 26);
    for (const std::string& bytes :
         {std::string("abc"), std::string("abc\n"), std::string("one\ntwo\nthree"), std::string("\n\n\nx"),
          std::string("a\rb\n"), std::string("\r"), std::string("abc\r\ndef\r\n"), std::string("\r\r\n\r\rx\r"),
          std::string("a\0b\n\0\n", 6), std::string(1023, 'x') + "\r\n" + "next\n", block,
          block.substr(0, 1023) + "Z", std::string(1000, 'a') + "\n" + std::string(50, 'b') + "\n",
          std::string(1024, 'c') + "\n", std::string(1023, 'd') + "\ne", several + "\nshort\n" + several}) {
        SCOPED_TRACE(bytes.substr(0, 20));
        ExpectReadsAs(bytes);
    }
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

TEST(TextFile, PercentUsesSixtyFourBitSizes)
{
    TempDir dir;
    const std::string path = dir.Write("big", "abc\n");
    const off_t size = (off_t{5} << 30) + 4;  // 5 GiB + 4: wraps to 1 GiB + 4 in 32 bits
    const int fd = ::open(path.c_str(), O_WRONLY);
    ASSERT_GE(fd, 0);
    const bool grown = ::ftruncate(fd, size) == 0;
    ::close(fd);
    if (!grown) GTEST_SKIP() << "no sparse file of 5 GiB here";
    CTextFile file;
    ASSERT_EQ(file.Open(path), LASFILE_OK);
    EXPECT_EQ(file.GetPercentRead(), 4 * 100.0 / static_cast<double>(size));
}

TEST(TextFile, LineStoreGrowsOnlyForLongerLinesAndGeometrically)
{
    TempDir dir;
    FailingLineStore counter(1 << 30);  // never fails, counts allocations
    CTextFile file;
    const std::string huge(4 << 20, 'h');
    ASSERT_EQ(file.Open(dir.Write("g", std::string(39, 'a') + "\n" + std::string(40, 'b') + "\n" + huge +
                                           "\n" + std::string(39, 'd') + "\n" + std::string(500, 'e') + "\n")),
              LASFILE_OK);
    EXPECT_EQ(counter.calls(), 1);  // 39 bytes fit the first store
    ASSERT_EQ(file.ReadLine(), LASFILE_OK);
    EXPECT_EQ(counter.calls(), 2);  // the 40th byte needs room for the terminator
    ASSERT_EQ(file.ReadLine(), LASFILE_OK);
    EXPECT_TRUE(Line(file) == huge);
    const int afterLongest = counter.calls();
    EXPECT_LT(afterLongest, 200);  // 40 bytes at a time would be thousands
    ASSERT_EQ(file.ReadLine(), LASFILE_OK);
    ASSERT_EQ(file.ReadLine(), LASFILE_OK);
    EXPECT_EQ(Line(file), std::string(500, 'e'));
    EXPECT_EQ(counter.calls(), afterLongest);  // the large store is reused
}

TEST(TextFile, NewClosedAndReopenedObjects)
{
    TempDir dir;
    const std::string first = dir.Write("a", "first\n2\n"), second = dir.Write("b", "second\n");
    CTextFile file;
    const int before = OpenDescriptorCount();
    for (int round = 0; round < 3; ++round) {  // new, closed after a read, closed twice
        EXPECT_FALSE(file.IsOpen());
        EXPECT_EQ(file.GetLine(), nullptr);
        EXPECT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
        EXPECT_EQ(file.GetLineCount(), 0u);
        EXPECT_EQ(file.GetFilename(), "");
        if (round == 0) {
            ASSERT_EQ(file.Open(first), LASFILE_OK);
            ASSERT_EQ(file.ReadLine(), LASFILE_OK);
        }
        file.Close();
    }
    // Open on an open object releases what it held, and starts from the top.
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(file.Open(i % 2 ? first : second), LASFILE_OK);
        EXPECT_STREQ(file.GetLine(), i % 2 ? "first" : "second");
        EXPECT_EQ(file.GetLineCount(), 1u);
    }
    EXPECT_EQ(file.GetFilename(), second);
    EXPECT_EQ(OpenDescriptorCount(), before + 1);
    EXPECT_EQ(file.Open(dir.File("missing")), LASFILE_IO_FAILED);
    EXPECT_EQ(OpenDescriptorCount(), before);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.GetLine(), nullptr);
    EXPECT_EQ(file.Open(""), LASFILE_IO_FAILED);
}

// A seek that fails (a pipe), an empty file and a folder: open, no line.
TEST(TextFile, OpenedWithoutALine)
{
    TempDir dir;
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    ASSERT_EQ(::write(fds[1], "abc\n", 4), 4);
    for (const std::string& path :
         {"/proc/self/fd/" + std::to_string(fds[0]), dir.Write("empty", ""), dir.path()}) {
        SCOPED_TRACE(path);
        CTextFile file;
        EXPECT_EQ(file.Open(path), LASFILE_IO_FAILED);
        EXPECT_TRUE(file.IsOpen());
        EXPECT_EQ(file.GetFilename(), path);
        EXPECT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
        file.Close();
        EXPECT_FALSE(file.IsOpen());
    }
    ::close(fds[0]);
    ::close(fds[1]);
}

TEST(TextFile, LineStoreThatCannotBeAllocatedOrGrown)
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
    }
    file.Close();
    ASSERT_EQ(file.Open(path), LASFILE_OK);
    EXPECT_STREQ(file.GetLine(), "abc");

    std::string longLine;
    for (int i = 0; i < 50; ++i) longLine += static_cast<char>('A' + i % 26);
    {
        FailingLineStore failing(2, 1);  // the first growth fails, later ones succeed
        ASSERT_EQ(file.Open(dir.Write("g", "short\n" + longLine + "\nnext\n")), LASFILE_OK);
        EXPECT_EQ(file.ReadLine(), LASFILE_OUT_OF_MEMORY);
        EXPECT_EQ(Line(file), longLine.substr(0, 39));  // the bytes so far stay
        ASSERT_EQ(file.ReadLine(), LASFILE_OK);
        EXPECT_EQ(Line(file), longLine.substr(40));  // byte 40 is lost, reading goes on behind it
        EXPECT_EQ(file.GetLineCount(), 2u);
    }
    // A store that never grows. Carriage returns take no room.
    const std::string first = std::string(30, 'a') + "\r" + "bcdefghijklmnopqrstuvwxyz0123";
    const std::string tail = std::string(45, 't');
    FailingLineStore failing(2);
    EXPECT_EQ(file.Open(dir.Write("n", first + "\n" + tail)), LASFILE_OUT_OF_MEMORY);
    EXPECT_EQ(Line(file), std::string(30, 'a') + "bcdefghij");
    EXPECT_EQ(file.ReadLine(), LASFILE_OK);  // 'k' was lost
    EXPECT_EQ(Line(file), "lmnopqrstuvwxyz0123");
    EXPECT_EQ(file.ReadLine(), LASFILE_OUT_OF_MEMORY);
    EXPECT_EQ(file.ReadLine(), LASFILE_OK);  // the last line, without line feed
    EXPECT_EQ(Line(file), tail.substr(40));
    EXPECT_EQ(file.ReadLine(), LASFILE_IO_FAILED);
    EXPECT_EQ(file.GetLineCount(), 1u);
}

TEST(TextFile, AssignmentNeverSharesAStreamOrLineStore)
{
    static_assert(!std::is_copy_constructible<CTextFile>::value, "copying is not offered");
    TempDir dir;
    std::string bytes;
    for (int i = 0; i < 300; ++i) bytes += "line " + std::to_string(1000 + i) + "\n";  // 10 bytes each
    const std::string a = dir.Write("a", bytes);
    const int before = OpenDescriptorCount();
    CTextFile source;
    ASSERT_EQ(source.Open(a), LASFILE_OK);
    {
        CTextFile target;
        ASSERT_EQ(target.Open(dir.Write("b", "b1\nb2\n")), LASFILE_OK);
        target = source;  // the target's own file is closed, the copy is closed
        EXPECT_FALSE(target.IsOpen());
        EXPECT_EQ(target.GetLine(), nullptr);
        EXPECT_EQ(target.GetFilename(), "");
        EXPECT_EQ(OpenDescriptorCount(), before + 1);
    }
    source = source;  // self-assignment changes nothing
    for (int i = 0; i < 120; ++i) ASSERT_EQ(source.ReadLine(), LASFILE_OK);
    EXPECT_EQ(Line(source), "line 1120");
    source.Close();
    EXPECT_EQ(OpenDescriptorCount(), before);
    // Between closed objects the copy is faithful; Close keeps the position.
    EXPECT_EQ(source.GetPercentRead(), 121 * 10 * 100.0 / 3000.0);
    CTextFile used;
    ASSERT_EQ(used.Open(dir.Write("q", "x\n")), LASFILE_OK);
    used.Close();
    used = source;
    EXPECT_FALSE(used.IsOpen());
    EXPECT_EQ(used.GetPercentRead(), source.GetPercentRead());
}

}  // namespace
}  // namespace quarl
