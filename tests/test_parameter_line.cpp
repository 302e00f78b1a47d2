// Parameter lines (MNEM.UNIT VALUE : DESCRIPTION {FORMAT} | ASSOCIATION) and
// the VERS, WRAP and DLM lines of the Version section.
#include <gtest/gtest.h>

#include "support/reader_access.h"

namespace quarl::test {
namespace {

struct LineCase {
    const char* line;
    bool isLas3;
    ELASFILEERROR result;
    const char* mnemonic;
    const char* unit;
    const char* value;
    const char* description;
    const char* format;
    const char* association;
};

const LineCase kAccepted[] = {
    {"DEPT.M 100.5 : Depth", false, LASFILE_OK, "DEPT", "M", "100.5", "Depth", "", ""},
    {"  STRT .M   1.0   :  start  ", false, LASFILE_OK, "STRT", "M", "1.0", "start", "", ""},
    {"DATE.   12:30:00 : taken", false, LASFILE_OK, "DATE", "", "12", "30:00 : taken", "", ""},
    {"GAMMA RAY.GAPI 1 : x", false, LASFILE_OK, "GAMMA RAY", "GAPI", "1", "x", "", ""},
    {"A . B : d", false, LASFILE_OK, "A", "", "B", "d", "", ""},
    {"A.X.Y D : d", false, LASFILE_OK, "A", "X.Y", "D", "d", "", ""},
    {".M 5 : x", false, LASFILE_OK, "", "M", "5", "x", "", ""},
    {"A.M:d", false, LASFILE_OK, "A", "M", "", "d", "", ""},
    {"A.M 1   ", false, LASFILE_OK, "A", "M", "1   ", "", "", ""},
    {"A.M 1 |x", false, LASFILE_OK, "A", "M", "1 |x", "", "", ""},
    {"A.M 1|2 : x", false, LASFILE_OK, "A", "M", "1|2", "x", "", ""},
    {"A.M 1 : x | y | z", true, LASFILE_OK, "A", "M", "1", "x | y", "", "z"},
    {"A.M 1 : d {a} {b}", false, LASFILE_OK, "A", "M", "1", "d {a}", "{b}", ""},
    {"A.M 1 : d | a {F}", true, LASFILE_OK, "A", "M", "1", "d", "{F}", "a {F}"},
    {"A.M 1 : d {F} tail", false, LASFILE_OK, "A", "M", "1", "d", "{F}", ""},
    {"A.M 1 : d {F", false, LASFILE_OK, "A", "M", "1", "d", "", ""},
    {"A.M 1 : d } x", false, LASFILE_OK, "A", "M", "1", "d } x", "", ""},
    {"A.M 1 \t: d\t", false, LASFILE_OK, "A", "M", "1", "d", "", ""},
    {"A\t.M 1 : d", false, LASFILE_OK, "A", "M", "1", "d", "", ""},
    {"A.M 1 : : {x} | {y}", false, LASFILE_OK, "A", "M", "1", ": {x}", "{y}", "{y}"},
    {"VERS", false, LASFILE_OK, "VERS", "", "", "", "", ""},
    {"vers", false, LASFILE_OK, "vers", "", "", "", "", ""},
    {"VERS\t3.0 : x", false, LASFILE_OK, "VERS", "", "3.0", "x", "", ""},
    {"VERS 3.0 : x", false, LASFILE_OK, "VERS 3", "0", "", "x", "", ""},
    {"VERS.2.0 : x", false, LASFILE_OK, "VERS", "2.0", "", "x", "", ""},
    {"VERS.X|Y 5 : x", false, LASFILE_OK, "VERS", "X", ".X|Y 5", "x", "", ""},
    {"~A.B c : d", false, LASFILE_OK, "~A", "B", "c", "d", "", ""},
};

const LineCase kRefused[] = {
    {"A:B.M 1", false, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
    {"A{.M 1", false, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
    {"A|.M 1", false, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
    {"A}.M 1", false, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
    {"   ", false, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
    {"", false, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
    {"no period here", false, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
    {"A\tB.M 1", false, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
    {"VERS   ", false, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
    {"A.M{ 1 : x", false, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
    {"A.M| 1 : x", false, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
    {"A.M 1{2} : x", false, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
    {"A.M 1} : x", false, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
    {"A.M 1 |x", true, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
    {"A.M 1|2 : x", true, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
    {" ~Well", false, LASFILE_BAD_FORMAT, "", "", "", "", "", ""},
};

void ExpectFields(const LineCase& c, const CLasParam& p)
{
    EXPECT_EQ(p.m_mnemonic, c.mnemonic) << c.line;
    EXPECT_EQ(p.m_unit, c.unit) << c.line;
    EXPECT_EQ(p.m_value, c.value) << c.line;
    EXPECT_EQ(p.m_description, c.description) << c.line;
    EXPECT_EQ(p.m_format, c.format) << c.line;
    EXPECT_EQ(p.m_association, c.association) << c.line;
}

TEST(ParameterLine, SplitsEveryFieldByTheByteRules)
{
    for (const LineCase& c : kAccepted) {
        CLasReader reader;
        Access::SetLas3(reader, c.isLas3);
        CLasParam param;
        param.m_format = "stale";  // every scanner empties its field first
        ASSERT_EQ(Access::ParseParameterLine(reader, c.line, param), LASFILE_OK) << c.line;
        ExpectFields(c, param);
    }
}

TEST(ParameterLine, RefusesMisplacedColonsBracesAndBars)
{
    for (const LineCase& c : kRefused) {
        CLasReader reader;
        Access::SetLas3(reader, c.isLas3);
        CLasParam param;
        EXPECT_EQ(Access::ParseParameterLine(reader, c.line, param), LASFILE_BAD_FORMAT)
            << "'" << c.line << "' las3=" << c.isLas3;
    }
}

TEST(ParameterLine, RefusedUnitKeepsWhatWasGathered)
{
    CLasReader reader;
    CLasParam param;
    EXPECT_EQ(Access::ParseParameterLine(reader, "A.XY{Z 1 : d", param), LASFILE_BAD_FORMAT);
    EXPECT_EQ(param.m_mnemonic, "A");
    EXPECT_EQ(param.m_unit, "XY");
}

// Reads a Version section made of `lines` and reports the three flags.
struct VersionFlags {
    ELASFILEERROR result;
    bool isLas3;
    bool isWrapped;
    char delimiter;
    CLasSection version;
};

VersionFlags ReadVersion(const std::string& lines)
{
    CLasReader reader;
    VersionFlags flags{};
    flags.result = OpenText(reader, "~Version\n" + lines + "~Well\nSTEP.M 1 : s\n");
    flags.isLas3 = Access::IsLas3(reader);
    flags.isWrapped = Access::IsWrapped(reader);
    flags.delimiter = Access::Delimiter(reader);
    if (!reader.empty()) flags.version = reader.GetSection(0ull);
    return flags;
}

TEST(VersionLines, VersDecidesVersionThreeByItsFirstByte)
{
    EXPECT_FALSE(ReadVersion("VERS. 2.0 : x\n").isLas3);
    EXPECT_FALSE(ReadVersion("VERS. 1.2 : x\n").isLas3);
    EXPECT_TRUE(ReadVersion("VERS. 3.0 : x\n").isLas3);
    EXPECT_TRUE(ReadVersion("VERS. A : x\n").isLas3);
    EXPECT_FALSE(ReadVersion("VERS. \xC3\xA9 : x\n").isLas3);
    EXPECT_FALSE(ReadVersion("VERS. : x\n").isLas3);
    // A VERS line outside the Version section means nothing.
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, "~V\nVERS. 2.0 : v\n~W\nVERS. 3.0 : x\n"), LASFILE_OK);
    EXPECT_FALSE(Access::IsLas3(reader));
}

TEST(VersionLines, VersionWrittenAgainstThePeriodIsTakenFromTheUnit)
{
    VersionFlags two = ReadVersion("VERS.2.0 : x\n");
    ASSERT_EQ(two.result, LASFILE_OK);
    EXPECT_EQ(two.version.m_params[0].m_unit, "2.0");
    EXPECT_EQ(two.version.m_params[0].m_value, "2.0");
    EXPECT_FALSE(two.isLas3);

    VersionFlags three = ReadVersion("VERS.3.0 : x\n");
    EXPECT_EQ(three.version.m_params[0].m_value, "3.0");
    EXPECT_TRUE(three.isLas3);

    VersionFlags half = ReadVersion("VERS.0.5 : x\n");
    EXPECT_EQ(half.version.m_params[0].m_value, "");

    VersionFlags word = ReadVersion("VERS.2.0 CWLS : x\n");
    EXPECT_EQ(word.version.m_params[0].m_value, "CWLS");
    EXPECT_TRUE(word.isLas3);
}

TEST(VersionLines, LinesBeforeVersAreReadAsVersionTwo)
{
    // The bar is an ordinary byte before the VERS line, refused behind it.
    EXPECT_EQ(ReadVersion("A.M 1|2 : x\nVERS. 3.0 : v\n").result, LASFILE_OK);
    EXPECT_EQ(ReadVersion("VERS. 3.0 : v\nA.M 1|2 : x\n").result, LASFILE_BAD_FORMAT);
}

TEST(VersionLines, WrapTurnsOnOnlyForYes)
{
    EXPECT_TRUE(ReadVersion("WRAP. YES : x\n").isWrapped);
    EXPECT_TRUE(ReadVersion("WRAP. yes : x\n").isWrapped);
    EXPECT_TRUE(ReadVersion("WRAP.YES : x\n").isWrapped);
    EXPECT_FALSE(ReadVersion("WRAP.yes : x\n").isWrapped);
    EXPECT_FALSE(ReadVersion("WRAP. NO : x\n").isWrapped);
    EXPECT_TRUE(ReadVersion("WRAP. YES : x\nWRAP. NO : x\n").isWrapped);
}

TEST(VersionLines, DelimiterFromTheValue)
{
    EXPECT_EQ(ReadVersion("DLM. comma : x\n").delimiter, ',');
    EXPECT_EQ(ReadVersion("DLM. TAB : x\n").delimiter, '\t');
    EXPECT_EQ(ReadVersion("DLM. COMMA : x\nDLM. SPACE : x\n").delimiter, ' ');
    EXPECT_EQ(ReadVersion("DLM. ; : x\n").delimiter, ';');
    EXPECT_EQ(ReadVersion("DLM. COMMA : x\nDLM. : x\n").delimiter, ',');
    EXPECT_EQ(ReadVersion("DLM.COMMA : x\n").delimiter, ' ');
}

}  // namespace
}  // namespace quarl::test
