// The platform layer: case-insensitive comparison of ASCII letters only,
// file deletion, 64-bit stream positions.
#include <clocale>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/platform.h"
#include "support/test_util.h"

namespace quarl {
namespace {

int Sign(int v)
{
    return (v > 0) - (v < 0);
}

unsigned char Fold(char c)
{
    const unsigned char u = static_cast<unsigned char>(c);
    return (u >= 'A' && u <= 'Z') ? static_cast<unsigned char>(u + 32) : u;
}

// The comparison as it should be: fold A-Z, compare as unsigned bytes.
int Model(const std::string& a, const std::string& b, size_t n)
{
    for (size_t i = 0; i < n; ++i) {
        const unsigned char ca = i < a.size() ? Fold(a[i]) : 0;
        const unsigned char cb = i < b.size() ? Fold(b[i]) : 0;
        if (ca != cb) return ca < cb ? -1 : 1;
        if (ca == 0) return 0;
    }
    return 0;
}

void ExpectAllPairs()
{
    for (int x = 1; x < 256; ++x) {
        for (int y = 1; y < 256; ++y) {
            const std::string a(1, static_cast<char>(x));
            const std::string b(1, static_cast<char>(y));
            ASSERT_EQ(Sign(AsciiCompareNoCase(a.c_str(), b.c_str())), Model(a, b, 2))
                << x << " " << y;
            ASSERT_EQ(Sign(AsciiCompareNoCaseN(a.c_str(), b.c_str(), 1)), Model(a, b, 1));
        }
    }
}

TEST(Platform, FoldsAsciiLettersOnlyAndOrdersLikeStricmp)
{
    ExpectAllPairs();
    EXPECT_EQ(AsciiCompareNoCase("Log_Definition", "LOG_DEFINITION"), 0);
    EXPECT_LT(AsciiCompareNoCase("_", "A"), 0);  // letters are folded to lower case
    EXPECT_LT(AsciiCompareNoCase("[", "a"), 0);
    EXPECT_LT(AsciiCompareNoCase("ab", "ABC"), 0);
    EXPECT_GT(AsciiCompareNoCase("abc", "AB"), 0);
    EXPECT_GT(AsciiCompareNoCase("\x80", "z"), 0);  // unsigned bytes
    EXPECT_NE(AsciiCompareNoCase("\xC9", "\xE9"), 0);
    EXPECT_EQ(AsciiCompareNoCase(nullptr, ""), 0);
    EXPECT_LT(AsciiCompareNoCase(nullptr, "a"), 0);

    std::mt19937 random(7);
    const char pool[] = "aAzZ_[`@{\xC0\xE0\x80\xFF" "0";
    for (int i = 0; i < 20000; ++i) {
        std::string a, b;
        const int la = static_cast<int>(random() % 4), lb = static_cast<int>(random() % 4);
        for (int k = 0; k < la; ++k) a += pool[random() % (sizeof pool - 1)];
        for (int k = 0; k < lb; ++k) b += pool[random() % (sizeof pool - 1)];
        const size_t n = random() % 5;
        ASSERT_EQ(Sign(AsciiCompareNoCase(a.c_str(), b.c_str())), Model(a, b, 99));
        ASSERT_EQ(Sign(AsciiCompareNoCaseN(a.c_str(), b.c_str(), n)), Model(a, b, n));
    }
}

TEST(Platform, ComparesAtMostNBytesAndStopsAtTheEnd)
{
    EXPECT_EQ(AsciiCompareNoCaseN("abcX", "ABCY", 3), 0);
    EXPECT_LT(AsciiCompareNoCaseN("abcX", "ABCY", 4), 0);
    EXPECT_EQ(AsciiCompareNoCaseN("x", "y", 0), 0);
    // Exactly sized buffers: no byte behind the terminator may be read.
    const std::vector<char> a = {'a', 'b', '\0'};
    const std::vector<char> b = {'A', 'B', '\0'};
    EXPECT_EQ(AsciiCompareNoCaseN(a.data(), b.data(), 100), 0);
    const std::vector<char> c = {'A', '\0'};
    EXPECT_GT(AsciiCompareNoCaseN(a.data(), c.data(), 100), 0);
}

// The host may set any locale; the comparison must not notice.
TEST(Platform, HostLocaleChangesNothing)
{
    const std::string saved = std::setlocale(LC_ALL, nullptr);
    bool any = false;
    for (const char* name : {"tr_TR.ISO-8859-9", "tr_TR.UTF-8", "fr_FR.ISO-8859-1",
                             "de_DE.ISO-8859-1", "en_US.ISO-8859-1"}) {
        if (!std::setlocale(LC_ALL, name)) continue;
        any = true;
        SCOPED_TRACE(name);
        EXPECT_EQ(AsciiCompareNoCase("I", "i"), 0);
        ExpectAllPairs();
    }
    std::setlocale(LC_ALL, saved.c_str());
    if (!any) GTEST_SKIP() << "no Turkish or Latin-1 locale installed";
}

TEST(Platform, DeleteFileAndLargeStreamPositions)
{
    test::TempDir dir;
    const std::string path = dir.Write("gone", "x");
    EXPECT_EQ(DeleteFile(path.c_str()), 0);
    EXPECT_FALSE(test::FileExists(path));
    EXPECT_NE(DeleteFile(path.c_str()), 0);

    std::FILE* file = OpenStream(dir.File("sparse").c_str(), "wb");
    ASSERT_NE(file, nullptr);
    const int64_t far = (int64_t{5} << 30) + 3;
    EXPECT_EQ(SeekStream(file, far, SEEK_SET), 0);
    EXPECT_EQ(TellStream(file), far);
    std::fclose(file);
    EXPECT_EQ(OpenStream(dir.File("missing").c_str(), "rb"), nullptr);
}

}  // namespace
}  // namespace quarl
