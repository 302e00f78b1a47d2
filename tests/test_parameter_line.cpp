// Parameter lines (MNEM.UNIT VALUE : DESCRIPTION {FORMAT} | ASSOCIATION) and
// the VERS, WRAP and DLM lines of the Version section.
#include <gtest/gtest.h>

#include "support/reader_access.h"

namespace quarl::test {
namespace {

TEST(ParameterLine, SplitsEveryFieldByTheByteRules)
{
    const struct {
        const char* line;
        bool isLas3;
        const char* fields;  // mnemonic#unit#value#description#format#association, or null: refused
    } cases[] = {
        {"DEPT.M 100.5 : Depth", false, "DEPT#M#100.5#Depth##"},
        {"  STRT .M   1.0   :  start  ", false, "STRT#M#1.0#start##"},
        {"DATE.   12:30:00 : taken", false, "DATE##12#30:00 : taken##"},
        {"GAMMA RAY.GAPI 1 : x", false, "GAMMA RAY#GAPI#1#x##"},
        {"A . B : d", false, "A##B#d##"},
        {"A.X.Y D : d", false, "A#X.Y#D#d##"},
        {".M 5 : x", false, "#M#5#x##"},
        {"A.M:d", false, "A#M##d##"},
        {"A.M 1   ", false, "A#M#1   ###"},
        {"A.M 1 |x", false, "A#M#1 |x###"},
        {"A.M 1|2 : x", false, "A#M#1|2#x##"},
        {"A.M 1 : x | y | z", true, "A#M#1#x | y##z"},
        {"A.M 1 : d {a} {b}", false, "A#M#1#d {a}#{b}#"},
        {"A.M 1 : d | a {F}", true, "A#M#1#d#{F}#a {F}"},
        {"A.M 1 : d {F} tail", false, "A#M#1#d#{F}#"},
        {"A.M 1 : d {F", false, "A#M#1#d##"},
        {"A.M 1 : d } x", false, "A#M#1#d } x##"},
        {"A.M 1 \t: d\t", false, "A#M#1#d##"},
        {"A\t.M 1 : d", false, "A#M#1#d##"},
        {"A.M 1 : : {x} | {y}", false, "A#M#1#: {x}#{y}#{y}"},
        {"vers", false, "vers#####"},
        {"VERS\t3.0 : x", false, "VERS##3.0#x##"},
        {"VERS 3.0 : x", false, "VERS 3#0##x##"},
        {"VERS.2.0 : x", false, "VERS#2.0##x##"},
        {"VERS.X|Y 5 : x", false, "VERS#X#.X|Y 5#x##"},
        {"~A.B c : d", false, "~A#B#c#d##"},
        {"A:B.M 1", false, nullptr},
        {"A{.M 1", false, nullptr},
        {"A|.M 1", false, nullptr},
        {"A}.M 1", false, nullptr},
        {"   ", false, nullptr},
        {"", false, nullptr},
        {"no period here", false, nullptr},
        {"A\tB.M 1", false, nullptr},
        {"VERS   ", false, nullptr},
        {"A.M{ 1 : x", false, nullptr},
        {"A.M| 1 : x", false, nullptr},
        {"A.M 1{2} : x", false, nullptr},
        {"A.M 1} : x", false, nullptr},
        {"A.M 1 |x", true, nullptr},
        {"A.M 1|2 : x", true, nullptr},
        {" ~Well", false, nullptr},
        {"A.XY{Z 1 : d", false, nullptr},  // what was gathered stays
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string("'") + c.line + "' las3=" + std::to_string(c.isLas3));
        CLasReader reader;
        Access::SetLas3(reader, c.isLas3);
        CLasParam p;
        p.m_format = "stale";  // every scanner empties its field first
        const ELASFILEERROR result = Access::ParseParameterLine(reader, c.line, p);
        EXPECT_EQ(result, c.fields ? LASFILE_OK : LASFILE_BAD_FORMAT);
        if (c.fields) {
            EXPECT_EQ(p.m_mnemonic + "#" + p.m_unit + "#" + p.m_value + "#" + p.m_description + "#" + p.m_format + "#" +
                          p.m_association,
                      c.fields);
        }
    }
    CLasReader reader;
    CLasParam p;
    ASSERT_EQ(Access::ParseParameterLine(reader, "A.XY{Z 1 : d", p), LASFILE_BAD_FORMAT);
    EXPECT_EQ(p.m_mnemonic + "." + p.m_unit, "A.XY");
}

TEST(VersionLines, VersWrapAndDlmSetTheFormat)
{
    const struct {
        const char* lines;
        ELASFILEERROR result;
        const char* format;  // version, wrapped, delimiter
        const char* vers;    // value of the VERS line, or null
    } cases[] = {
        // VERS decides version 3 by its first byte.
        {"VERS. 1.2 : x\n", LASFILE_OK, "2 -  ", "1.2"},
        {"VERS. 3.0 : x\n", LASFILE_OK, "3 -  ", "3.0"},
        {"VERS. A : x\n", LASFILE_OK, "3 -  ", "A"},
        {"VERS. \xC3\xA9 : x\n", LASFILE_OK, "2 -  ", nullptr},
        {"VERS. : x\n", LASFILE_OK, "2 -  ", ""},
        // A version written against the period is taken from the unit.
        {"VERS.2.0 : x\n", LASFILE_OK, "2 -  ", "2.0"},
        {"VERS.3.0 : x\n", LASFILE_OK, "3 -  ", "3.0"},
        {"VERS.0.5 : x\n", LASFILE_OK, "2 -  ", ""},
        {"VERS.2.0 CWLS : x\n", LASFILE_OK, "3 -  ", "CWLS"},
        // Lines before VERS are read as version 2: the bar is ordinary there.
        {"A.M 1|2 : x\nVERS. 3.0 : v\n", LASFILE_OK, "3 -  ", nullptr},
        {"VERS. 3.0 : v\nA.M 1|2 : x\n", LASFILE_BAD_FORMAT, "3 -  ", nullptr},
        // WRAP turns on only for YES, in any case, and stays on.
        {"WRAP. yes : x\n", LASFILE_OK, "2 W  ", nullptr},
        {"WRAP.YES : x\n", LASFILE_OK, "2 W  ", nullptr},
        {"WRAP.yes : x\n", LASFILE_OK, "2 -  ", nullptr},
        {"WRAP. YES : x\nWRAP. NO : x\n", LASFILE_OK, "2 W  ", nullptr},
        // DLM: a word, or the first byte of the value.
        {"DLM. comma : x\n", LASFILE_OK, "2 - ,", nullptr},
        {"DLM. TAB : x\n", LASFILE_OK, "2 - \t", nullptr},
        {"DLM. COMMA : x\nDLM. SPACE : x\n", LASFILE_OK, "2 -  ", nullptr},
        {"DLM. ; : x\n", LASFILE_OK, "2 - ;", nullptr},
        {"DLM. COMMA : x\nDLM. : x\n", LASFILE_OK, "2 - ,", nullptr},
        {"DLM.COMMA : x\n", LASFILE_OK, "2 -  ", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.lines);
        CLasReader reader;
        EXPECT_EQ(OpenText(reader, std::string("~Version\n") + c.lines + "~Well\nSTEP.M 1 : s\n"), c.result);
        EXPECT_EQ(Access::Format(reader), c.format);
        if (c.vers) {
            EXPECT_EQ(reader.GetSection(0ull).m_params[0].m_value, c.vers);
        }
    }
    // A VERS line outside the Version section means nothing.
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, "~V\nVERS. 2.0 : v\n~W\nVERS. 3.0 : x\n"), LASFILE_OK);
    EXPECT_EQ(Access::Format(reader), "2 -  ");
}

}  // namespace
}  // namespace quarl::test
