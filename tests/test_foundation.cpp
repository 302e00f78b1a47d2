// Foundation: result codes, the document
// classes, and the ASCII-only case-blind comparison against a model,
// whatever the host's locale.
#include <gtest/gtest.h>
#include <quarl/quarl.h>

#include <clocale>
#include <cmath>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "foundation/number_parse.h"
#include "foundation/platform.h"
#include "support/writer_access.h"

namespace quarl {
namespace {

CLasParam Param(const char* mnemonic, const char* value)
{
    return test::Param(mnemonic, "", value, "");
}

// Every result code, section type and stepping result has a text of its
// own; a value outside its enumeration has one that no value inside has.
// What CheckDataStepping never returns falls back to the general description.
TEST(Foundation, EveryResultAndSectionTypeHasItsOwnTexts)
{
    std::set<std::string> names, descriptions, types, stepping;
    for (int32_t code = LASFILE_OK; code <= LASFILE_BAD_NAME; ++code) {
        names.insert(ResultName(static_cast<ELASFILEERROR>(code)));
        descriptions.insert(ResultDescription(static_cast<ELASFILEERROR>(code)));
    }
    EXPECT_EQ(names.size(), 11u);
    EXPECT_STREQ(ResultName(LASFILE_OK), "LASFILE_OK");
    EXPECT_STREQ(ResultName(LASFILE_BAD_NAME), "LASFILE_BAD_NAME");
    EXPECT_STREQ(ResultDescription(LASFILE_OK), "success");
    EXPECT_EQ(descriptions.size(), 11u);
    EXPECT_EQ(names.count(ResultName(static_cast<ELASFILEERROR>(11))), 0u);
    EXPECT_EQ(names.count(ResultName(static_cast<ELASFILEERROR>(-1))), 0u);
    for (ELASSECTIONTYPE type : {LASSECTION_PARAMETER, LASSECTION_DEFINITION, LASSECTION_DATA, LASSECTION_HEADER,
                                 LASSECTION_ANY, static_cast<ELASSECTIONTYPE>(4)})
        types.insert(SectionTypeName(type));
    EXPECT_EQ(types.size(), 6u);
    for (ELASFILEERROR code :
         {LASFILE_OK, LASFILE_BAD_FORMAT, LASFILE_MISSING_SECTION, LASFILE_BAD_VALUE, LASFILE_WRONG_STATE}) {
        EXPECT_STRNE(SteppingDescription(code), ResultDescription(code)) << ResultName(code);
        stepping.insert(SteppingDescription(code));
    }
    EXPECT_EQ(stepping.size(), 5u);
    EXPECT_STREQ(SteppingDescription(LASFILE_CANCELLED), ResultDescription(LASFILE_CANCELLED));
    EXPECT_STREQ(SteppingDescription(static_cast<ELASFILEERROR>(-1)), "unknown result");
    EXPECT_STREQ(LasNoteKindName(LASNOTE_NEAREST_DEFINITION), "LASNOTE_NEAREST_DEFINITION");
    EXPECT_STREQ(LasNoteKindName(static_cast<ELASNOTEKIND>(-1)), "LASNOTE_UNKNOWN");
}

// The library reports the version its headers name, and the string is the
// three numbers, as pkg-config and the programs' --version print it.
TEST(Foundation, VersionOfTheLibraryIsTheVersionOfItsHeaders)
{
    EXPECT_STREQ(quarl::VersionString(), QUARL_VERSION_STRING);
    const std::string parts = std::to_string(QUARL_VERSION_MAJOR) + "." + std::to_string(QUARL_VERSION_MINOR) + "." +
                              std::to_string(QUARL_VERSION_PATCH);
    EXPECT_EQ(parts, QUARL_VERSION_STRING);
}

// A null C string is the empty text, and reads as the number 0.
TEST(Foundation, NullTextsAreEmpty)
{
    const char* none = nullptr;
    tessel::TxString text(none);
    EXPECT_TRUE(text.empty());
    text = "GR";
    text = none;
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(ParseNumber(none), 0.0);
}

TEST(Foundation, MainDataNamesAndDepthSteps)
{
    // The lists end in null, also far behind their end.
    EXPECT_EQ(MainDataName(3), nullptr);
    EXPECT_EQ(MainDataName(static_cast<size_t>(-1)), nullptr);
    EXPECT_EQ(DepthMnemonic(3), nullptr);

    // A difference of exactly the tolerance agrees; NaN agrees as it passes
    // the step test.
    EXPECT_TRUE(DepthsAgree(100.0, 100.0 + kDepthTolerance / 2));
    EXPECT_TRUE(DepthsAgree(0.0, kDepthTolerance));
    EXPECT_FALSE(DepthsAgree(0.0, 2 * kDepthTolerance));
    EXPECT_FALSE(DepthsAgree(5.0, 4.0));
    EXPECT_TRUE(DepthsAgree(std::nan(""), 1.0));

    const std::vector<double> falling = {10.0, 9.5, 9.0, 8.4, 7.9};
    EXPECT_EQ(FirstUnevenStep(falling, -0.5), 3u);
    EXPECT_EQ(FirstUnevenStep(falling, 0.5), 1u);
    EXPECT_EQ(FirstUnevenStep({1.0, 1.5, 2.0 + kDepthTolerance / 2}, 0.5), 0u);
    EXPECT_EQ(FirstUnevenStep({7.0}, 3.0), 0u);
    EXPECT_EQ(FirstUnevenStep({}, 3.0), 0u);
}

TEST(Foundation, DocumentCurvesAndParameterLookup)
{
    CLasCurve curve;  // size counts the array in use
    curve.m_numbers = {1, 2, 3, 4, 5};
    curve.m_strings = {CLasString("a"), CLasString(std::string("\0\xE9", 2))};
    curve.m_isNumeric = true;
    EXPECT_EQ(curve.size(), 5);
    curve.m_isNumeric = false;
    EXPECT_EQ(curve.size(), 2);

    CLasSection well;
    well.m_params = {Param("", "empty"), Param("STRT", "1"), Param("DEPT", "first"), Param("dept", "second"),
                     Param("W\xC9LL", "latin")};
    const struct {
        const char* mnemonic;
        int32_t index;
    } cases[] = {{nullptr, -1}, {"", -1},      {"DePt", 2},   {"strt", 1},   {"w\xC9ll", 4},
                 {"DEP", -1},   {"DEPTH", -1}, {" DEPT", -1}, {"DEPT ", -1}, {"W\xE9LL", -1}};
    for (const auto& c : cases) {
        CLasParam out = Param("KEEP", "me");
        EXPECT_EQ(well.FindParameterByMnemonic(c.mnemonic, &out), c.index) << (c.mnemonic ? c.mnemonic : "null");
        EXPECT_EQ(out.m_value, c.index < 0 ? "me" : well.m_params[c.index].m_value);
        EXPECT_EQ(well.FindParameterByMnemonic(c.mnemonic, nullptr), c.index);
    }
}

// Fold A-Z only, compare unsigned bytes, stop at the end of either text or after n bytes.
int Model(const std::string& a, const std::string& b, size_t n)
{
    const auto fold = [](const std::string& s, size_t i) {
        const unsigned char u = i < s.size() ? static_cast<unsigned char>(s[i]) : 0;
        return (u >= 'A' && u <= 'Z') ? u + 32 : u;
    };
    for (size_t i = 0; i < n && (i == 0 || fold(a, i - 1) != 0); ++i)
        if (fold(a, i) != fold(b, i)) return fold(a, i) < fold(b, i) ? -1 : 1;
    return 0;
}

int Sign(int v)
{
    return (v > 0) - (v < 0);
}

void ExpectModel(const std::string& a, const std::string& b, size_t n)
{
    ASSERT_EQ(Sign(AsciiCompareNoCase(a.c_str(), b.c_str())), Model(a, b, 99)) << a << "/" << b;
    ASSERT_EQ(Sign(AsciiCompareNoCaseN(a.c_str(), b.c_str(), n)), Model(a, b, n)) << a << "/" << b << " " << n;
}

void ExpectAllPairs()
{
    for (int x = 1; x < 256; ++x)
        for (int y = 1; y < 256; ++y)
            ExpectModel(std::string(1, static_cast<char>(x)), std::string(1, static_cast<char>(y)), 1);
}

TEST(Platform, ComparisonMatchesTheModelInEveryLocale)
{
    ExpectAllPairs();
    std::mt19937 random(7);
    const char pool[] =
        "aAzZ_[`@{\xC0\xE0\x80\xFF"
        "0";
    for (int i = 0; i < 20000; ++i) {
        std::string a, b;
        for (unsigned k = random() % 4; k > 0; --k) a += pool[random() % (sizeof pool - 1)];
        for (unsigned k = random() % 4; k > 0; --k) b += pool[random() % (sizeof pool - 1)];
        ExpectModel(a, b, random() % 5);
    }
    EXPECT_EQ(AsciiCompareNoCase(nullptr, ""), 0);
    EXPECT_LT(AsciiCompareNoCase(nullptr, "a"), 0);
    const std::vector<char> ab = {'a', 'b', '\0'}, AB = {'A', 'B', '\0'};  // nothing behind the terminator is read
    EXPECT_EQ(AsciiCompareNoCaseN(ab.data(), AB.data(), 100), 0);
    const std::string saved = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"tr_TR.ISO-8859-9", "tr_TR.UTF-8", "fr_FR.ISO-8859-1", "de_DE.ISO-8859-1"})
        if (std::setlocale(LC_ALL, name)) ExpectAllPairs();
    std::setlocale(LC_ALL, saved.c_str());
}

}  // namespace
}  // namespace quarl
