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
using Texts = std::vector<CLasString>;

// Opens `text`, expects `result`, and gives the last section.
CLasSection LastSection(const std::string& text, ELASFILEERROR result = LASFILE_OK)
{
    CLasReader reader;
    EXPECT_EQ(OpenText(reader, text), result);
    return reader.empty() ? CLasSection() : *reader.GetSectionPtr(reader.size() - 1);
}

const std::string kThree = "D.M : d\nA.M : a\nB.M : b\n";

TEST(DataSection, CurvesComeFromTheDefinition)
{
    const CLasSection s =
        LastSection(Las20Head("DEPT.M : d {F}\nNAME. : n {S}\nN.M : n {i5}\nE. : e {}\nX. : x {E}\n") +
                    "~A  ignored words\n1.5 abc 3 4 5e2\n");
    EXPECT_EQ(s.m_type, LASSECTION_DATA);
    EXPECT_EQ(s.m_flags, CLasSection::kFlagLogData);
    EXPECT_EQ(s.m_association, "Curve");
    ASSERT_EQ(s.m_curves.size(), 5u);
    EXPECT_EQ(s.m_curves[0].m_definition.m_mnemonic, "DEPT");
    EXPECT_EQ(s.m_curves[0].m_numbers, Numbers{1.5});
    EXPECT_FALSE(s.m_curves[1].m_isNumeric);
    EXPECT_EQ(s.m_curves[1].m_strings, Texts{"abc"});
    EXPECT_TRUE(s.m_curves[1].m_numbers.empty());
    EXPECT_EQ(s.m_curves[2].m_numbers, Numbers{3.0});
    EXPECT_FALSE(s.m_curves[3].m_isNumeric);  // "{}" is no numeric format
    EXPECT_EQ(s.m_curves[4].m_numbers, Numbers{500.0});
}

TEST(DataSection, VersionTwoRowsShortLongAndBlank)
{
    const CLasSection s = LastSection(Las20Head(kThree) +
                                      "~A\n1.0 2.0\n1 2 3 4\n \t 7\t\t8   9\n#c\nx 1e 0x10\n\t\n");
    ASSERT_EQ(s.m_curves.size(), 3u);
    EXPECT_EQ(s.m_curves[0].m_numbers, (Numbers{1, 1, 7, 0, 0}));
    EXPECT_EQ(s.m_curves[1].m_numbers, (Numbers{2, 2, 8, 1, 0}));
    EXPECT_EQ(s.m_curves[2].m_numbers, (Numbers{0, 3, 9, 16, 0}));
    // A short row in a text curve gets an empty string.
    const CLasSection t = LastSection(Las20Head("A.M : a\nT. : t {S}\n") + "~A\n1\n");
    EXPECT_EQ(t.m_curves[1].m_strings, Texts{""});
}

TEST(DataSection, VersionThreeSpaceDelimiterPassesNoTab)
{
    const CLasSection s = LastSection(Las30Head(kThree) + "~Log_Data\n1\t2 3\n");
    EXPECT_EQ(s.m_curves[0].m_numbers, Numbers{1.0});
    EXPECT_EQ(s.m_curves[1].m_numbers, Numbers{3.0});
    EXPECT_EQ(s.m_curves[2].m_numbers, Numbers{0.0});
    // A quoted text with a blank falls apart into two tokens.
    const CLasSection q = LastSection(Las30Head("T. : t {S}\nU. : u {S}\n") +
                                      "~Log_Data\n\"a b\" c\n");
    EXPECT_EQ(q.m_curves[0].m_strings, Texts{"\"a"});
    EXPECT_EQ(q.m_curves[1].m_strings, Texts{"b\""});
}

TEST(DataSection, CommaDelimiterKeepsTrailingBlanksAndEmptyValues)
{
    const CLasSection s = LastSection(
        Las30Head("A.M : a\nT. : t {S}\nB.M : b\n", "COMMA") +
        "~Log_Data\n1.0, \"a, b\", 3.0\n1.0,,3.0\n1,2,\n");
    EXPECT_EQ(s.m_curves[0].m_numbers, (Numbers{1, 1, 1}));
    EXPECT_EQ(s.m_curves[1].m_strings, (Texts{"\"a", "", "2"}));
    EXPECT_EQ(s.m_curves[2].m_numbers, (Numbers{0, 3, 0}));
    const CLasSection t =
        LastSection(Las30Head("T. : t {S}\nU. : u {S}\n", "COMMA") + "~Log_Data\nabc  , def\n");
    EXPECT_EQ(t.m_curves[0].m_strings, Texts{"abc  "});
    EXPECT_EQ(t.m_curves[1].m_strings, Texts{"def"});
}

TEST(DataSection, TabDelimiterBeforeVersionThreeDelimitsColumns)
{
    const CLasSection s = LastSection(Las20Head(kThree, "NO", "DLM. TAB : d\n") +
                                      "~A\n1\t 2\t3\n4\t\t6\n");
    EXPECT_EQ(s.m_curves[0].m_numbers, (Numbers{1, 4}));
    EXPECT_EQ(s.m_curves[1].m_numbers, (Numbers{2, 0}));
    EXPECT_EQ(s.m_curves[2].m_numbers, (Numbers{3, 6}));
}

TEST(DataSection, WrappedRowsSpanLines)
{
    const CLasSection s = LastSection(Las20Head(kThree, "YES") +
                                      "~A\n1.0\n2.0 3.0\n# c\n4.0\n\t\n5.0 6.0 7.0\n");
    EXPECT_EQ(s.m_curves[0].m_numbers, (Numbers{1, 4}));
    EXPECT_EQ(s.m_curves[1].m_numbers, (Numbers{2, 5}));
    EXPECT_EQ(s.m_curves[2].m_numbers, (Numbers{3, 6}));

    const std::string four = "A.M : a\nB.M : b\nC.M : c\nD.M : d\n";
    const CLasSection c = LastSection(Las30Head(four, "COMMA", "YES") +
                                      "~Log_Data\n1,2,\n3,4\n5,6\n7,8\n");
    EXPECT_EQ(c.m_curves[2].m_numbers, (Numbers{3, 7}));
    EXPECT_EQ(c.m_curves[3].m_numbers, (Numbers{4, 8}));
}

TEST(DataSection, WrappedRowCutByTheEndOfTheFile)
{
    CLasReader reader;
    EXPECT_EQ(OpenText(reader, Las20Head(kThree, "YES") + "~A\n1 2 3\n4 5\n"), LASFILE_IO_FAILED);
    const CLasSection& s = reader.GetSection(reader.size() - 1);
    EXPECT_EQ(s.m_curves[1].m_numbers, (Numbers{2, 5}));
    EXPECT_EQ(s.m_curves[2].m_numbers, Numbers{3});
    // Between two rows the end of the file is the normal end.
    EXPECT_EQ(OpenText(reader, Las20Head(kThree, "YES") + "~A\n1 2\n3\n"), LASFILE_OK);
}

TEST(DataSection, HeaderInsideAWrappedRowEndsTheSection)
{
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, Las20Head(kThree + "T. : t {S}\n", "YES") +
                                   "~A\n1 2 3 x\n4 5\n~Parameter\nP.M 1 : p\n"),
              LASFILE_OK);
    ASSERT_EQ(reader.size(), 5u);
    const CLasSection& s = reader.GetSection(3ull);
    EXPECT_EQ(s.m_curves[1].m_numbers, (Numbers{2, 5}));
    EXPECT_EQ(s.m_curves[2].m_numbers, (Numbers{3, 0}));
    EXPECT_EQ(s.m_curves[3].m_strings, (Texts{"x", ""}));
    EXPECT_EQ(reader.GetSection(4ull).m_params.size(), 1u);
}

TEST(DataSection, WhatIsAcceptedSilently)
{
    // A definition without parameters: lines are read and ignored.
    const CLasSection empty = LastSection(Las20Head("") + "~A\n1 2 3\nxyz\n");
    EXPECT_TRUE(empty.m_curves.empty());
    // A header association that names the Well section.
    const CLasSection well = LastSection(Las20Head(kThree) + "~Drill_Data | Well\n1 2 3 4\n");
    ASSERT_EQ(well.m_curves.size(), 3u);
    EXPECT_EQ(well.m_curves[2].m_definition.m_mnemonic, "STEP");
    EXPECT_EQ(well.m_curves[2].m_numbers, Numbers{3});
    // A null value stays the number written.
    const CLasSection nulls = LastSection(Las20Head("A.M : a\n") + "~A\n-999.25\n");
    EXPECT_EQ(nulls.m_curves[0].m_numbers, Numbers{-999.25});
}

TEST(DataSection, Failures)
{
    CLasReader reader;
    // No definition: the section is not stored.
    EXPECT_EQ(OpenText(reader, Las20Head("") + "~Core_Data\n1\n"), LASFILE_BAD_FORMAT);
    EXPECT_EQ(reader.size(), 3u);
    // A header association binds even where the name rules would find one.
    EXPECT_EQ(OpenText(reader, Las20Head("") + "~Core_Definition\nA.M : a\n~Core_Data | Other_Name\n1\n"),
              LASFILE_BAD_FORMAT);
    EXPECT_EQ(reader.size(), 4u);
    // A data header at the very end: stored with curves, without values.
    EXPECT_EQ(OpenText(reader, Las20Head(kThree) + "~A\n"), LASFILE_IO_FAILED);
    ASSERT_EQ(reader.size(), 4u);
    EXPECT_EQ(reader.GetSection(3ull).m_curves.size(), 3u);
    EXPECT_EQ(reader.GetSection(3ull).m_curves[0].size(), 0);
    // A definition that stands behind its data section is not found.
    EXPECT_EQ(OpenText(reader, Las20Head("") + "~Core_Data\n1\n~Core_Definition\nA.M : a\n"),
              LASFILE_BAD_FORMAT);
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
    const char* const kCommaLocales[] = {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8",
                                         "de_DE", "fr_FR", "ru_RU.UTF-8"};
    const std::string previous = std::setlocale(LC_ALL, nullptr);
    const char* found = nullptr;
    for (const char* name : kCommaLocales) {
        if (std::setlocale(LC_ALL, name) && *std::localeconv()->decimal_point == ',') {
            found = name;
            break;
        }
    }
    if (!found) {
        std::setlocale(LC_ALL, previous.c_str());
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    const CLasSection s =
        LastSection(Las20Head("A.M : a\nB.M : b\nC.M : c\n") + "~A\n1.5 0x1p-1 +2.25e1\n");
    std::setlocale(LC_ALL, previous.c_str());
    EXPECT_EQ(s.m_curves[0].m_numbers, Numbers{1.5}) << found;
    EXPECT_EQ(s.m_curves[1].m_numbers, Numbers{0.5}) << found;
    EXPECT_EQ(s.m_curves[2].m_numbers, Numbers{22.5}) << found;
}

}  // namespace
}  // namespace quarl::test
