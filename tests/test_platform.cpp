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

// The comparison as it should be: fold A-Z to lower case, compare as unsigned
// bytes, stop at the end of either text or after n bytes. Gives -1, 0 or 1.
int Model(const std::string& a, const std::string& b, size_t n)
{
    const auto fold = [](const std::string& s, size_t i) {
        const unsigned char u = i < s.size() ? static_cast<unsigned char>(s[i]) : 0;
        return (u >= 'A' && u <= 'Z') ? u + 32 : u;
    };
    for (size_t i = 0; i < n; ++i) {
        if (fold(a, i) != fold(b, i)) return fold(a, i) < fold(b, i) ? -1 : 1;
        if (fold(a, i) == 0) return 0;
    }
    return 0;
}

int Sign(int v) { return (v > 0) - (v < 0); }

void ExpectMatchesModel(const std::string& a, const std::string& b, size_t n)
{
    ASSERT_EQ(Sign(AsciiCompareNoCase(a.c_str(), b.c_str())), Model(a, b, 99)) << a << "/" << b;
    ASSERT_EQ(Sign(AsciiCompareNoCaseN(a.c_str(), b.c_str(), n)), Model(a, b, n)) << a << "/" << b;
}

void ExpectAllPairs()
{
    for (int x = 1; x < 256; ++x)
        for (int y = 1; y < 256; ++y)
            ExpectMatchesModel(std::string(1, static_cast<char>(x)), std::string(1, static_cast<char>(y)), 1);
}

TEST(Platform, ComparisonMatchesTheModel)
{
    ExpectAllPairs();
    std::mt19937 random(7);
    const char pool[] = "aAzZ_[`@{\xC0\xE0\x80\xFF" "0";
    for (int i = 0; i < 20000; ++i) {
        std::string a, b;
        for (unsigned k = random() % 4; k > 0; --k) a += pool[random() % (sizeof pool - 1)];
        for (unsigned k = random() % 4; k > 0; --k) b += pool[random() % (sizeof pool - 1)];
        ExpectMatchesModel(a, b, random() % 5);
    }
    EXPECT_EQ(AsciiCompareNoCase(nullptr, ""), 0);
    EXPECT_LT(AsciiCompareNoCase(nullptr, "a"), 0);
    // Exactly sized buffers: no byte behind the terminator may be read.
    const std::vector<char> ab = {'a', 'b', '\0'}, AB = {'A', 'B', '\0'}, A = {'A', '\0'};
    EXPECT_EQ(AsciiCompareNoCaseN(ab.data(), AB.data(), 100), 0);
    EXPECT_GT(AsciiCompareNoCaseN(ab.data(), A.data(), 100), 0);
}

// The host may set any locale; the comparison must not notice.
TEST(Platform, HostLocaleChangesNothing)
{
    const std::string saved = std::setlocale(LC_ALL, nullptr);
    bool any = false;
    for (const char* name : {"tr_TR.ISO-8859-9", "tr_TR.UTF-8", "fr_FR.ISO-8859-1", "de_DE.ISO-8859-1"}) {
        if (!std::setlocale(LC_ALL, name)) continue;
        any = true;
        SCOPED_TRACE(name);
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
