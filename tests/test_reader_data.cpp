// Data sections: curves from the definition, numeric or text by format, the
// blank and delimiter rules of version 2 and 3, wrap mode, short and long
// rows, and every failure.
#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <string>
#include <vector>

#include "foundation/number_parse.h"
#include "support/reader_access.h"

namespace quarl::test {
namespace {

using Numbers = std::vector<double>;

// The last section of a file read from text.
CLasSection LastSection(const std::string& text)
{
    CLasReader reader;
    OpenText(reader, text);
    return reader.empty() ? CLasSection() : *reader.GetSectionPtr(reader.size() - 1);
}

const std::string kThree = "D.M : d\nA.M : a\nB.M : b\n";
const std::string kTwoTexts = "T. : t {S}\nU. : u {S}\n";

TEST(DataSection, RowsBecomeCurves)
{
    const struct {
        std::string text;
        ELASFILEERROR result;
        std::string last;  // the last section read, or all behind the Curve section
    } cases[] = {
        // Numeric or text by the format of the definition; "{}" is no numeric format.
        {Las20Head("DEPT.M : d {F}\nNAME. : n {S}\nN.M : n {i5}\nE. : e {}\nX. : x {E}\n") +
             "~A  ignored words\n1.5 abc 3 4 5e2\n",
         LASFILE_OK, "A:2/16|Curve{1.5;\"abc\";3;\"4\";500}"},
        // Short and long rows; a line of tabs is a row; atof of a bad number is 0.
        {Las20Head(kThree) + "~A\n1.0 2.0\n1 2 3 4\n \t 7\t\t8   9\n#c\nx 1e 0x10\n\t\n", LASFILE_OK,
         "A:2/16|Curve{1,1,7,0,0;2,2,8,1,0;0,3,9,16,0}"},
        {Las20Head("A.M : a\nT. : t {S}\n") + "~A\n1\n-999.25 x\n", LASFILE_OK, "A:2/16|Curve{1,-999.25;\"\",\"x\"}"},
        // Version 3 with the blank: a tab is no delimiter, quotes don't group.
        {Las30Head(kThree) + "~Log_Data\n1\t2 3\n", LASFILE_OK, "Log_Data:2/16|Log_Definition{1;3;0}"},
        {Las30Head(kTwoTexts) + "~Log_Data\n\"a b\" c\n", LASFILE_OK, "Log_Data:2/16|Log_Definition{\"\"a\";\"b\"\"}"},
        // The comma keeps trailing blanks and empty values.
        {Las30Head("A.M : a\nT. : t {S}\nB.M : b\n", "COMMA") + "~Log_Data\n1.0, \"a, b\", 3.0\n1.0,,3.0\n1,2,\n",
         LASFILE_OK, "Log_Data:2/16|Log_Definition{1,1,1;\"\"a\",\"\",\"2\";0,3,0}"},
        {Las30Head(kTwoTexts, "COMMA") + "~Log_Data\nabc  , def\n", LASFILE_OK,
         "Log_Data:2/16|Log_Definition{\"abc  \";\"def\"}"},
        // A tab delimiter before version 3 delimits columns.
        {Las20Head(kThree, "NO", "DLM. TAB : d\n") + "~A\n1\t 2\t3\n4\t\t6\n", LASFILE_OK, "A:2/16|Curve{1,4;2,0;3,6}"},
        // Wrapped rows span lines.
        {Las20Head(kThree, "YES") + "~A\n1.0\n2.0 3.0\n# c\n4.0\n\t\n5.0 6.0 7.0\n", LASFILE_OK,
         "A:2/16|Curve{1,4;2,5;3,6}"},
        {Las30Head("A.M : a\nB.M : b\nC.M : c\nD.M : d\n", "COMMA", "YES") + "~Log_Data\n1,2,\n3,4\n5,6\n7,8\n",
         LASFILE_OK, "Log_Data:2/16|Log_Definition{1,5;2,6;3,7;4,8}"},
        // The end of the file within a wrapped row, and between two rows.
        {Las20Head(kThree, "YES") + "~A\n1 2 3\n4 5\n", LASFILE_IO_FAILED, "A:2/16|Curve{1,4;2,5;3}"},
        {Las20Head(kThree, "YES") + "~A\n1 2\n3\n", LASFILE_OK, "A:2/16|Curve{1;2;3}"},
        // A header within a wrapped row ends the section.
        {Las20Head(kThree + "T. : t {S}\n", "YES") + "~A\n1 2 3 x\n4 5\n~Parameter\nP.M 1 : p\n", LASFILE_OK,
         "A:2/16|Curve{1,4;2,5;3,0;\"x\",\"\"} Parameter:0(1)"},
        // A definition without lines: rows are read and ignored.
        {Las20Head("") + "~A\n1 2 3\nxyz\n", LASFILE_OK, "A:2/16|Curve{}"},
        // A header association binds, even to the Well section.
        {Las20Head(kThree) + "~Drill_Data | Well\n1 2 3 4\n", LASFILE_OK, "Drill_Data:2|Well{1;2;3}"},
        {Las20Head("") + "~Core_Definition\nA.M : a\n~Core_Data | Other_Name\n1\n", LASFILE_BAD_FORMAT,
         "Core_Definition:1(1)"},
        // No definition, or one behind the data: the section is not stored.
        {Las20Head("") + "~Core_Data\n1\n", LASFILE_BAD_FORMAT, ""},
        {Las20Head("") + "~Core_Data\n1\n~Core_Definition\nA.M : a\n", LASFILE_BAD_FORMAT, ""},
        // A data header at the very end: stored with curves, without values.
        {Las20Head(kThree) + "~A\n", LASFILE_IO_FAILED, "A:2/16|Curve{;;}"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        CLasReader reader;
        EXPECT_EQ(OpenText(reader, c.text), c.result);
        EXPECT_EQ(Dump(reader, 3), c.last);
    }
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, cases[14].text), LASFILE_OK);
    EXPECT_EQ(reader.GetSection(3ull).m_curves[2].m_definition.m_mnemonic, "STEP");
}

// Numbers are converted while their token is cut. The same rows read into
// text curves and then through atof give the same bits, and a delimiter that
// numbers contain still cuts them.
TEST(DataSection, NumbersCutWhileConvertedEqualAtofOfTheToken)
{
    const std::string rows =
        "1.5 -0 007 1e3 -2.5E-3 1.5e 0x1A 12abc 1.2.3 .5 -. 99999999999999999999 1e400 +4 inf\n"
        "123456789.123456789 -0.000001 5. 4e-22 9007199254740993 1,5 -999.25 2.2250738585072014e-308\n";
    std::string numeric;
    std::string text;
    for (int c = 0; c < 15; ++c) {
        numeric += "C" + std::to_string(c) + ". : c\n";
        text += "C" + std::to_string(c) + ". : c {S}\n";
    }
    const CLasSection numbers = LastSection(Las20Head(numeric) + "~A\n" + rows);
    const CLasSection texts = LastSection(Las20Head(text) + "~A\n" + rows);
    ASSERT_EQ(numbers.m_curves.size(), 15u);
    for (size_t c = 0; c < 15; ++c) {
        ASSERT_FALSE(texts.m_curves[c].m_isNumeric);
        ASSERT_EQ(numbers.m_curves[c].m_numbers.size(), 2u);
        for (size_t r = 0; r < 2; ++r) {
            const std::string& token = texts.m_curves[c].m_strings[r];
            const double want = ParseNumber(token.c_str());
            const double got = numbers.m_curves[c].m_numbers[r];
            EXPECT_EQ(std::memcmp(&want, &got, sizeof got), 0) << token;
        }
    }
    EXPECT_EQ(LastSection(Las30Head(kThree, ".") + "~Log_Data\n1.5.2\n").m_curves[1].m_numbers,
              Numbers{5});
    EXPECT_EQ(LastSection(Las30Head(kThree, "E") + "~Log_Data\n1E5E2\n").m_curves[0].m_numbers,
              Numbers{1});
}

// A host in a locale with a decimal comma still reads "1.5" as 1.5.
TEST(DataSection, NumbersIgnoreTheHostLocale)
{
    const std::string previous = std::setlocale(LC_ALL, nullptr);
    if (!std::setlocale(LC_ALL, "de_DE.UTF-8")) GTEST_SKIP() << "no locale with a decimal comma is installed";
    CLasReader reader;
    const ELASFILEERROR result = OpenText(reader, Las20Head(kThree) + "~A\n1.5 0x1p-1 +2.25e1\n");
    std::setlocale(LC_ALL, previous.c_str());
    EXPECT_EQ(result, LASFILE_OK);
    EXPECT_EQ(Dump(reader, 3), "A:2/16|Curve{1.5;0.5;22.5}");
}

}  // namespace
}  // namespace quarl::test
