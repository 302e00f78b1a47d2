// Reading options and notes: each lenient rule on a small file (the strict
// result, the lenient result, the note and its line), the cap on notes, the
// budget, header-only reads, decoded text, and the shared corpus read both
// ways.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>

#include "reader/reader_rules.h"
#include "support/reader_access.h"

namespace quarl::test {
namespace {

struct Read {
    ELASFILEERROR result;
    std::string probe;
    CLasReader reader;
};

// "Name/MNEM" gives that parameter's value ("(missing)" when there is none),
// "Name" the Dump of that section.
std::string Probe(const CLasReader& reader, const std::string& probe)
{
    const size_t slash = probe.find('/');
    CLasSection section;
    if (reader.GetSection(probe.substr(0, slash).c_str(), section) != LASFILE_OK) return "(none)";
    if (slash == std::string::npos) return Dump(section);
    CLasParam param;
    if (section.FindParameterByMnemonic(probe.substr(slash + 1).c_str(), &param) < 0) return "(missing)";
    return param.m_value;
}

void ReadText(Read& read, const std::string& text, const std::string& probe, CLasReadOptions options = {})
{
    read.reader.SetOptions(options);
    read.result = OpenText(read.reader, text);
    read.probe = Probe(read.reader, probe);
}

bool HasNote(const CLasReader& reader, ELASNOTEKIND kind, uint64_t line)
{
    const auto& notes = reader.GetNotes();
    return std::any_of(notes.begin(), notes.end(), [&](const CLasNote& n) { return n.kind == kind && n.line == line; });
}

std::string NoteList(const CLasReader& reader)
{
    std::ostringstream out;
    for (const CLasNote& n : reader.GetNotes())
        out << n.line << ' ' << LasNoteKindName(n.kind) << ": " << n.text << '\n';
    return out.str();
}

const std::string kHead = "~Version\nVERS. 2.0 : v\nWRAP. NO : w\n~Well\nNULL. -999.25 : n\n";  // lines 1-5
const std::string kHeadNoNull = "~Version\nVERS. 2.0 : v\nWRAP. NO : w\n~Well\nSTRT.M 1 : s\n";
const std::string kHead12 = "~Version\nVERS. 1.2 : v\nWRAP. NO : w\n~Well\nNULL. -999.25 : n\n";
const std::string kCurves = "~Curve\nDEPT.M : d\nGR.API : g\nNP.V/V : n\n";  // lines 6-9, then ~A on 10

struct RuleCase {
    const char* name;
    std::string text;
    const char* probe;
    ELASFILEERROR strictResult;
    const char* strictProbe;
    ELASFILEERROR lenientResult;
    const char* lenientProbe;
    ELASNOTEKIND kind;
    uint64_t line;
    bool strictToo;  // the note comes in the strict read as well
};

TEST(Lenient, EachRuleReadsWhatTheFileMeansAndNotesItsLine)
{
    const RuleCase cases[] = {
        {"blank first line", "\n" + kHead, "Well/NULL", LASFILE_BAD_FORMAT, "(none)", LASFILE_OK, "-999.25",
         LASNOTE_TEXT_BEFORE_SECTIONS, 1, false},
        {"text before", "LAS export\n" + kHead, "Well/NULL", LASFILE_BAD_FORMAT, "(none)", LASFILE_OK, "-999.25",
         LASNOTE_TEXT_BEFORE_SECTIONS, 1, false},
        {"no Version", "# c\n~W\nNULL. -1 : n\n", "W/NULL", LASFILE_BAD_FORMAT, "(none)", LASFILE_OK, "-1",
         LASNOTE_NO_VERSION_FIRST, 2, false},
        {"~Curves", kHead + "~Curves\nDEPT.M : d\n~A\n1\n", "A", LASFILE_BAD_FORMAT, "(none)", LASFILE_OK,
         "A:2/16|Curve{1}", LASNOTE_SECTION_TITLE, 6, false},
        {"~Params", kHead + "~Params\nBHT.C 35 : t\n", "Parameter/BHT", LASFILE_OK, "(none)", LASFILE_OK, "35",
         LASNOTE_SECTION_TITLE, 6, false},
        {"~Asc", kHead + kCurves + "~Asc\n1 2 3\n", "ASCII", LASFILE_OK, "(none)", LASFILE_OK,
         "ASCII:2/16|Curve{1;2;3}", LASNOTE_SECTION_TITLE, 10, false},
        {"indented header", kHead + "  ~Parameter\nBHT.C 35 : t\n", "Parameter/BHT", LASFILE_BAD_FORMAT, "(none)",
         LASFILE_OK, "35", LASNOTE_HEADER_INDENTED, 6, false},
        {"indented first header", "  " + kHead, "Well/NULL", LASFILE_BAD_FORMAT, "(none)", LASFILE_OK, "-999.25",
         LASNOTE_HEADER_INDENTED, 1, false},
        {"indented header at end", kHead + "  ~Other\n", "Well/NULL", LASFILE_BAD_FORMAT, "", LASFILE_OK, "-999.25",
         LASNOTE_HEADER_AT_END, 6, false},
        {"no period", kHead + "PROV   :ALBERTA\n", "Well/PROV", LASFILE_BAD_FORMAT, "", LASFILE_OK, "",
         LASNOTE_NO_PERIOD, 6, false},
        {"no period, value", kHead + "BS   222 : BIT SIZE\n", "Well/BS", LASFILE_BAD_FORMAT, "", LASFILE_OK, "222",
         LASNOTE_NO_PERIOD, 6, false},
        {"no period, words", kHead + "HOLE DIA :8.5\n", "Well/HOLE DIA", LASFILE_BAD_FORMAT, "", LASFILE_OK, "",
         LASNOTE_NO_PERIOD, 6, false},
        {"no parameter line", kHead + "~Parameter\n  DEPTH  GR\nBHT.C 35 : t\n", "Parameter/BHT", LASFILE_BAD_FORMAT,
         "", LASFILE_OK, "35", LASNOTE_LINE_PASSED_OVER, 7, false},
        {"time in a value", kHead + "DATE. 2021-05-13 11:37:04 : Log date\n", "Well/DATE", LASFILE_OK, "2021-05-13 11",
         LASFILE_OK, "2021-05-13 11:37:04", LASNOTE_VALUE_WITH_COLONS, 6, false},
        {"time cut", kHead + "TIME. 11:37:04\n", "Well/TIME", LASFILE_OK, "11", LASFILE_OK, "11", LASNOTE_VALUE_CUT, 6,
         true},
        {"LAS 1.2 Well line", kHead12 + "COMP. COMPANY: ANY OIL CO\n", "Well/COMP", LASFILE_OK, "COMPANY", LASFILE_OK,
         "ANY OIL CO", LASNOTE_LAS12_WELL_VALUE, 6, false},
        {"LAS 1.2 depth line", kHead12 + "STRT.M 10.5: START\n", "Well/STRT", LASFILE_OK, "10.5", LASFILE_OK, "10.5",
         LASNOTE_LAS12_WELL_VALUE, 0, false},
        {"short row", kHead + kCurves + "~A\n1 2 3\n4 5\n", "A", LASFILE_OK, "A:2/16|Curve{1,4;2,5;3,0}", LASFILE_OK,
         "A:2/16|Curve{1,4;2,5;3,-999.25}", LASNOTE_NULL_FILLED, 12, false},
        {"short row, no NULL", kHeadNoNull + kCurves + "~A\n4 5\n", "A", LASFILE_OK, "A:2/16|Curve{4;5;0}", LASFILE_OK,
         "A:2/16|Curve{4;5;0}", LASNOTE_SHORT_ROW, 11, true},
        {"long row", kHead + kCurves + "~A\n1 2 3 4\n", "A", LASFILE_OK, "A:2/16|Curve{1;2;3}", LASFILE_OK,
         "A:2/16|Curve{1;2;3;4}", LASNOTE_EXTRA_COLUMNS, 11, false},
        {"not a number", kHead + kCurves + "~A\n1 x 3\n", "A", LASFILE_OK, "A:2/16|Curve{1;0;3}", LASFILE_OK,
         "A:2/16|Curve{1;\"x\";3}", LASNOTE_TEXT_COLUMN, 10, false},
        {"header at end", kHead + kCurves + "~A\n", "A", LASFILE_IO_FAILED, "A:2/16|Curve{;;}", LASFILE_OK,
         "A:2/16|Curve{;;}", LASNOTE_HEADER_AT_END, 10, true},
        {"skipped as data", kHead + "~Other\n1 2 3\n", "Well/NULL", LASFILE_OK, "-999.25", LASFILE_OK, "-999.25",
         LASNOTE_SECTION_SKIPPED, 6, true},
        {"columns named", "~A DEPT GR\n1 2\n", "A", LASFILE_BAD_FORMAT, "(none)", LASFILE_OK, "A:2/16|{1;2}",
         LASNOTE_COLUMNS_FROM_HEADER, 1, false},
        {"array format", kHead + "~Curve\nDEPT.M : d\nUF.M : u {AF13.4}\n~A\n1 2.5\n", "A", LASFILE_OK,
         "A:2/16|Curve{1;\"2.5\"}", LASFILE_OK, "A:2/16|Curve{1;2.5}", LASNOTE_ARRAY_FORMAT, 9, false},
        {"text column", kHead + "~Curve\nDATE. : t\nDEPT.M : d\n~A\n2021-05-13 1\n13/05/21 2\n", "A", LASFILE_OK,
         "A:2/16|Curve{2021,13;1,2}", LASFILE_OK, "A:2/16|Curve{\"2021-05-13\",\"13/05/21\";1,2}", LASNOTE_TEXT_COLUMN,
         9, false},
        {"nan and exponents",
         kHead + "~Curve\nDEPT.M : d\nX. : x\nY. : y\nZ. : z\n~A\n1 -NaN +1E5 +1E+5\n2 +nan +2E3 +2E-3\n", "A",
         LASFILE_OK, "A:2/16|Curve{1,2;-nan,nan;100000,2000;100000,0.002}", LASFILE_OK,
         "A:2/16|Curve{1,2;-nan,nan;100000,2000;100000,0.002}", LASNOTE_TEXT_COLUMN, 0, false},
        {"columns named behind a tab", "~A\tDEPT GR\n1 2\n", "A", LASFILE_BAD_FORMAT, "(none)", LASFILE_OK,
         "A:2/16|{1;2}", LASNOTE_COLUMNS_FROM_HEADER, 1, false},
        {"numbers and text", kHead + "~Curve\nDEPT.M : d\nX. : t\n~A\n1 x\n2 5\n", "A", LASFILE_OK,
         "A:2/16|Curve{1,2;0,5}", LASFILE_OK, "A:2/16|Curve{1,2;nan,5}", LASNOTE_NOT_A_NUMBER, 10, true},
        {"decimal comma", kHead + "~Curve\nDEPT.M : d\nX. : t\n~A\n1 12,5\n2 -0,25\n3 7\n4 1E20\n", "A", LASFILE_OK,
         "A:2/16|Curve{1,2,3,4;12,-0,7,1e+20}", LASFILE_OK, "A:2/16|Curve{1,2,3,4;12.5,-0.25,7,1e+20}",
         LASNOTE_DECIMAL_COMMA, 9, false},
        {"comma without digits behind", kHead + "~Curve\nDEPT.M : d\nX. : t\n~A\n1 12,\n2 3,5\n", "A", LASFILE_OK,
         "A:2/16|Curve{1,2;12,3}", LASFILE_OK, "A:2/16|Curve{1,2;nan,nan}", LASNOTE_NOT_A_NUMBER, 10, false},
        {"thousands comma", kHead + "~Curve\nDEPT.M : d\nX. : t\n~A\n1 1,500\n2 7\n", "A", LASFILE_OK,
         "A:2/16|Curve{1,2;1,7}", LASFILE_OK, "A:2/16|Curve{1,2;nan,7}", LASNOTE_NOT_A_NUMBER, 10, false},
        {"comma and period", kHead + "~Curve\nDEPT.M : d\nX. : t\n~A\n1 12,5\n2 7.5\n", "A", LASFILE_OK,
         "A:2/16|Curve{1,2;12,7.5}", LASFILE_OK, "A:2/16|Curve{1,2;12.5,7.5}", LASNOTE_DECIMAL_COMMA, 10, false},
        {"comma among periods", kHead + "~Curve\nDEPT.M : d\nX. : t\n~A\n1 123.45\n2 123,420\n3 1,500.25\n", "A",
         LASFILE_OK, "A:2/16|Curve{1,2,3;123.45,123,1}", LASFILE_OK, "A:2/16|Curve{1,2,3;123.45,123.42,nan}",
         LASNOTE_NOT_A_NUMBER, 12, false},
        {"numbers in part", kHead + kCurves + "~A\n1 12.5ft 1.2.3\n2 5-3 7\n3 4 8\n", "A", LASFILE_OK,
         "A:2/16|Curve{1,2,3;12.5,5,4;1.2,7,8}", LASFILE_OK, "A:2/16|Curve{1,2,3;nan,nan,4;nan,7,8}",
         LASNOTE_NOT_A_NUMBER, 12, false},
        {"comma rows", kHead + kCurves + "~A\n1000.0,12.5,33.1\n1001.0, 13,34 \n", "A", LASFILE_OK,
         "A:2/16|Curve{1000,1001;0,13;0,0}", LASFILE_OK, "A:2/16|Curve{1000,1001;12.5,13;33.1,34}", LASNOTE_COMMA_ROWS,
         11, false},
        {"comma rows, one comma short", kHead + kCurves + "~A\n1000.0,12.5\n1001 5 6\n", "A", LASFILE_OK,
         "A:2/16|Curve{1000,1001;0,5;0,6}", LASFILE_OK, "A:2/16|Curve{nan,1001;-999.25,5;-999.25,6}",
         LASNOTE_NOT_A_NUMBER, 11, false},
        {"lone carriage return",
         "~Version\r\nVERS. 2.0 : v\r\nWRAP. NO : w\r\n~Well\r\nSTRT.M 1 : s\rSTOP.M 2 : t\r"
         "NULL. -999.25 : n\r\n",
         "Well/NULL", LASFILE_OK, "(missing)", LASFILE_OK, "-999.25", LASNOTE_DECODED, 5, false},
        {"double period", kHead + "Cond..MS/M 5 : conductivity\nI. Res..OHM-M 12 : r\n", "Well/I. Res.", LASFILE_OK,
         "(missing)", LASFILE_OK, "12", LASNOTE_MNEMONIC_PERIODS, 7, false},
        {"colons in a value", kHead + "LOC1. X: -0000000.00 ft, Y: 000 : Location\n", "Well/LOC1", LASFILE_OK, "X",
         LASFILE_OK, "X: -0000000.00 ft, Y: 000", LASNOTE_VALUE_WITH_COLONS, 6, false},
        {"colons in a value, Z behind", kHead + "LOC1. X: 1 ft, Y: 3 : Z\n", "Well/LOC1", LASFILE_OK, "X", LASFILE_OK,
         "X: 1 ft, Y: 3", LASNOTE_VALUE_WITH_COLONS, 6, false},
        {"colons in a value, z behind", kHead + "LOC1. X: 1 ft, Y: 3 : z\n", "Well/LOC1", LASFILE_OK, "X", LASFILE_OK,
         "X: 1 ft, Y: 3", LASNOTE_VALUE_WITH_COLONS, 6, false},
        {"date and time alone", kHead + "CREA. 8/24/2011 12:45:27\n", "Well/CREA", LASFILE_OK, "8/24/2011 12",
         LASFILE_OK, "8/24/2011 12:45:27", LASNOTE_VALUE_WITH_COLONS, 6, false},
        {"LAS 1.2 description only", kHead12 + "UWI .   UNIQUE WELL ID:\n", "Well/UWI", LASFILE_OK, "UNIQUE WELL ID",
         LASFILE_OK, "", LASNOTE_LAS12_WELL_VALUE, 6, false},
        {"LAS 1.2 value without colon", kHead12 + "COMP. ANY OIL CO\n", "Well/COMP", LASFILE_OK, "ANY OIL CO",
         LASFILE_OK, "ANY OIL CO", LASNOTE_LAS12_WELL_VALUE, 0, false},
        {"letters then digits", kHead + "~Curve\nDEPT.M : d\nX. : t\n~A\n1 W12\n2 A3\n", "A", LASFILE_OK,
         "A:2/16|Curve{1,2;0,0}", LASFILE_OK, "A:2/16|Curve{1,2;\"W12\",\"A3\"}", LASNOTE_TEXT_COLUMN, 9, false},
        {"bar before the colon", kHead + "PROV|X :ALBERTA\n", "Well/PROV|X", LASFILE_BAD_FORMAT, "", LASFILE_OK,
         "(missing)", LASNOTE_LINE_PASSED_OVER, 6, false},
        {"brace before the colon", kHead + "PROV{X} :ALBERTA\n", "Well/PROV{X}", LASFILE_BAD_FORMAT, "", LASFILE_OK,
         "(missing)", LASNOTE_LINE_PASSED_OVER, 6, false},
        {"one digit without period", kHead + "BS 2 : BIT SIZE\n", "Well/BS", LASFILE_BAD_FORMAT, "", LASFILE_OK, "2",
         LASNOTE_NO_PERIOD, 6, false},
        {"leading tab", Las30Head("DEPT.M : d\nGR.API : g\n", "TAB") + "~Log_Data\n\t1\t2\n", "Log_Data", LASFILE_OK,
         "Log_Data:2/16|Log_Definition{0;1}", LASFILE_OK, "Log_Data:2/16|Log_Definition{1;2}", LASNOTE_LEADING_TAB, 11,
         false},
    };
    for (const RuleCase& c : cases) {
        Read strict, lenient;
        CLasReadOptions options;
        options.lenient = true;
        ReadText(strict, c.text, c.probe);
        ReadText(lenient, c.text, c.probe, options);
        EXPECT_EQ(strict.result, c.strictResult) << c.name;
        EXPECT_EQ(lenient.result, c.lenientResult) << c.name << '\n' << NoteList(lenient.reader);
        EXPECT_EQ(lenient.probe, c.lenientProbe) << c.name;
        if (c.strictResult == LASFILE_OK) {
            EXPECT_EQ(strict.probe, c.strictProbe) << c.name;
        }
        // Line 0: the rule must not fire at all.
        if (c.line == 0) {
            EXPECT_EQ(lenient.reader.GetNotes().size(), 0u) << c.name << '\n' << NoteList(lenient.reader);
        } else {
            EXPECT_TRUE(HasNote(lenient.reader, c.kind, c.line)) << c.name << '\n' << NoteList(lenient.reader);
        }
        // A filled row says what it was filled with.
        if (c.kind == LASNOTE_NULL_FILLED) {
            EXPECT_NE(NoteList(lenient.reader).find("filled with NULL -999.25"), std::string::npos)
                << NoteList(lenient.reader);
        }
        EXPECT_EQ(HasNote(strict.reader, c.kind, c.line), c.strictToo && c.line != 0) << c.name << '\n'
                                                                                      << NoteList(strict.reader);
        // A failed strict read says where it stopped, as GetLineNumber does.
        if (c.strictResult != LASFILE_OK) {
            ASSERT_FALSE(strict.reader.GetNotes().empty()) << c.name;
            EXPECT_EQ(strict.reader.GetNotes().back().kind, LASNOTE_READ_STOPPED) << c.name;
            EXPECT_EQ(strict.reader.GetNotes().back().line, strict.reader.GetLineNumber()) << c.name;
        }
    }
}

// Reads `text` leniently into `reader`; true when the read succeeds.
bool ReadLeniently(CLasReader& reader, const std::string& text)
{
    CLasReadOptions options;
    options.lenient = true;
    reader.SetOptions(options);
    return OpenText(reader, text) == LASFILE_OK;
}

size_t CountNotes(const CLasReader& reader, ELASNOTEKIND kind)
{
    const auto& notes = reader.GetNotes();
    return static_cast<size_t>(
        std::count_if(notes.begin(), notes.end(), [&](const CLasNote& n) { return n.kind == kind; }));
}

// Leniently a token that is no one number reads as NaN with a note on its
// line, never as 0 or as its leading number; whole numbers in any form keep
// their value; a column of nothing but words is text without a note per row.
TEST(Lenient, TokensThatAreNoNumberReadAsNaN)
{
    const std::string text = kHead + "~Curve\nDEPT.M : d\nX. : x\nW. : w\n~A\n" +
                             "1 - a\n2 (null) b\n3 ERR c\n4 -1.#IND0000 d\n5 7.020101130.188 e\n6 12.5ft f\n"
                             "7 +1E2 g\n8 2.5 h\n";  // rows on lines 11-18
    CLasReader reader;
    ASSERT_TRUE(ReadLeniently(reader, text)) << NoteList(reader);
    const CLasSection& data = reader.GetSection(reader.size() - 1);
    ASSERT_EQ(data.m_curves.size(), 3u);
    const std::vector<double>& x = data.m_curves[1].m_numbers;
    ASSERT_EQ(x.size(), 8u);
    for (size_t row = 0; row < 6; ++row) {
        EXPECT_TRUE(std::isnan(x[row])) << "row " << row << ": " << x[row];
        EXPECT_TRUE(HasNote(reader, LASNOTE_NOT_A_NUMBER, 11 + row)) << NoteList(reader);
    }
    EXPECT_EQ(x[6], 100.0);
    EXPECT_EQ(x[7], 2.5);
    EXPECT_EQ(CountNotes(reader, LASNOTE_NOT_A_NUMBER), 6u) << NoteList(reader);
    EXPECT_EQ(CountNotes(reader, LASNOTE_NUMBER_IN_PART), 0u) << NoteList(reader);
    ASSERT_FALSE(data.m_curves[2].m_isNumeric);
    EXPECT_EQ(data.m_curves[2].m_strings.at(4), "e");
    EXPECT_TRUE(HasNote(reader, LASNOTE_TEXT_COLUMN, 10)) << NoteList(reader);
    // Strictly the same file keeps atof's values and its notes.
    CLasReader strict;
    ASSERT_EQ(OpenText(strict, text), LASFILE_OK);
    const std::vector<double>& y = strict.GetSection(strict.size() - 1).m_curves[1].m_numbers;
    EXPECT_EQ(y.at(0), 0.0);
    EXPECT_EQ(y.at(4), 7.020101130);
    EXPECT_EQ(y.at(5), 12.5);
    EXPECT_EQ(CountNotes(strict, LASNOTE_NOT_A_NUMBER), 11u) << NoteList(strict);
}

// The mnemonics of the curves of the last section and of the parameter lines
// of `definition`, "A B|A B".
std::string CurveNames(const CLasReader& reader, const char* definition)
{
    std::string names;
    for (const CLasCurve& curve : reader.GetSection(reader.size() - 1).m_curves)
        names += (names.empty() ? "" : " ") + curve.m_definition.m_mnemonic;
    names += "|";
    CLasSection section;
    if (reader.GetSection(definition, section) != LASFILE_OK) return names + "(none)";
    for (size_t i = 0; i < section.m_params.size(); ++i) names += (i ? " " : "") + section.m_params[i].m_mnemonic;
    return names;
}

// Leniently the values behind the last defined curve are curves of their
// own, named by the comment above the rows or the data header when it names
// one column per value (all of them, or the added ones alone), else
// UNKNOWN:n; the definition section gets their lines; rows above are filled.
TEST(Lenient, ValuesBehindTheLastCurveBecomeCurves)
{
    const std::string survey = Las30Head("MD.M : d\n");  // definition on line 8, ~Log_Data on 9
    const struct {
        const char* name;
        std::string text;
        const char* definition;
        const char* names;
        const char* values;
        uint64_t line;  // of the note; 0 for none
        size_t added;
    } cases[] = {
        {"all columns named", survey + "~Log_Data\n#  MD  INC  AZI\n100 1.5 20\n200 2.5 30\n", "Log_Definition",
         "MD INC AZI|MD INC AZI", "{100,200;1.5,2.5;20,30}", 11, 2},
        {"added columns named", survey + "~Log_Data\n#INC\tAZI\n100 1.5 20\n", "Log_Definition",
         "MD INC AZI|MD INC AZI", "{100;1.5;20}", 11, 2},
        {"comment above the header", survey + "# MD INC AZI\n~Log_Data\n100 1.5 20\n", "Log_Definition",
         "MD INC AZI|MD INC AZI", "{100;1.5;20}", 11, 2},
        {"comment of other words", survey + "~Log_Data\n# a survey made in 2021\n100 1.5 20\n", "Log_Definition",
         "MD UNKNOWN:1 UNKNOWN:2|MD UNKNOWN:1 UNKNOWN:2", "{100;1.5;20}", 11, 2},
        {"comma rows", Las30Head("MD.M : d\n", "COMMA") + "~Log_Data\n100, 1.5,20\n200,2.5,\n", "Log_Definition",
         "MD UNKNOWN:1 UNKNOWN:2|MD UNKNOWN:1 UNKNOWN:2", "{100,200;1.5,2.5;20,0}", 10, 2},
        {"named by the data header", kHead + "~Curve\nDEPT.M : d\n~A  DEPT GR NP\n1 2 3\n", "Curve",
         "DEPT GR NP|DEPT GR NP", "{1;2;3}", 9, 2},
        {"a later row", kHead + kCurves + "~A\n1 2 3\n4 5 6 7\n8 9 10\n", "Curve",
         "DEPT GR NP UNKNOWN:1|DEPT GR NP UNKNOWN:1", "{1,4,8;2,5,9;3,6,10;-999.25,7,-999.25}", 12, 1},
        {"curves without mnemonics", kHead + "~Curve\nDEPT.M : d\n.M : a\n .V : b\n~A\n1 2 3 4\n", "Curve",
         "DEPT UNKNOWN:1 UNKNOWN:2 UNKNOWN:3|DEPT UNKNOWN:1 UNKNOWN:2 UNKNOWN:3", "{1;2;3;4}", 11, 1},
        {"a delimiter alone behind", Las30Head("MD.M : d\n", "COMMA") + "~Log_Data\n100,\n", "Log_Definition", "MD|MD",
         "{100}", 0, 0},
    };
    for (const auto& c : cases) {
        CLasReader reader;
        ASSERT_TRUE(ReadLeniently(reader, c.text)) << c.name << '\n' << NoteList(reader);
        EXPECT_EQ(CurveNames(reader, c.definition), c.names) << c.name;
        const std::string dump = Dump(reader.GetSection(reader.size() - 1));
        EXPECT_EQ(dump.substr(dump.find('{')), c.values) << c.name;
        EXPECT_EQ(CountNotes(reader, LASNOTE_EXTRA_COLUMNS), c.line ? 1u : 0u) << c.name << '\n' << NoteList(reader);
        if (c.line) {
            EXPECT_TRUE(HasNote(reader, LASNOTE_EXTRA_COLUMNS, c.line)) << c.name << '\n' << NoteList(reader);
        }
        EXPECT_EQ(CountNotes(reader, LASNOTE_LONG_ROW), 0u) << c.name;
        if (c.line == 12) {
            EXPECT_NE(NoteList(reader).find("the 1 rows above hold NULL -999.25"), std::string::npos)
                << NoteList(reader);
        }
        // Strictly the values are dropped and the definitions stay as written.
        CLasReader strict;
        ASSERT_EQ(OpenText(strict, c.text), LASFILE_OK) << c.name;
        EXPECT_EQ(strict.GetSection(strict.size() - 1).m_curves.size() + c.added,
                  reader.GetSection(reader.size() - 1).m_curves.size())
            << c.name;
        EXPECT_EQ(HasNote(strict, LASNOTE_LONG_ROW, c.line), c.added > 0) << c.name;
    }
}

// The numbers of the names given to curves without one, and the next name.
TEST(Lenient, UnknownNamesCountOn)
{
    const std::pair<const char*, size_t> names[] = {
        {"UNKNOWN:12", 12}, {"UNKNOWN:", 0}, {"UNKNOWN:1x", 0}, {"GR", 0}, {"UNKNOWN:123456789", 0}, {"unknown:3", 0},
    };
    for (const auto& n : names) EXPECT_EQ(UnknownNumber(n.first), n.second) << n.first;
    const std::vector<std::string> taken = {"DEPT", "UNKNOWN:2", "UNKNOWN:7x", "UNKNOWN:1"};
    EXPECT_EQ(NextUnknownName(taken, [](const std::string& s) -> const std::string& { return s; }), "UNKNOWN:3");
    // Without a definition section (columns named by the data header) the
    // added curve has no definition line to join.
    CLasReader reader;
    ASSERT_TRUE(ReadLeniently(reader, "~A DEPT GR\n1 2 3\n4 5 6\n")) << NoteList(reader);
    EXPECT_EQ(CurveNames(reader, "Curve"), "DEPT GR UNKNOWN:1|(none)");
    EXPECT_TRUE(HasNote(reader, LASNOTE_EXTRA_COLUMNS, 2)) << NoteList(reader);
}

// A definition line without a mnemonic names its curve UNKNOWN:n leniently,
// with a note on its line; strictly the mnemonic stays empty.
TEST(Lenient, CurvesWithoutMnemonicAreNumbered)
{
    const std::string text = kHead + "~Curve\nDEPT.M : d\n.M : a\nGR.API : g\n .V : b\n~A\n1 2 3 4\n";
    CLasReader reader, strict;
    ASSERT_TRUE(ReadLeniently(reader, text)) << NoteList(reader);
    EXPECT_EQ(CurveNames(reader, "Curve"), "DEPT UNKNOWN:1 GR UNKNOWN:2|DEPT UNKNOWN:1 GR UNKNOWN:2");
    EXPECT_TRUE(HasNote(reader, LASNOTE_UNNAMED_CURVE, 8)) << NoteList(reader);
    EXPECT_TRUE(HasNote(reader, LASNOTE_UNNAMED_CURVE, 10)) << NoteList(reader);
    ASSERT_EQ(OpenText(strict, text), LASFILE_OK);
    EXPECT_EQ(CurveNames(strict, "Curve"), "DEPT  GR |DEPT  GR ");
    EXPECT_EQ(CountNotes(strict, LASNOTE_UNNAMED_CURVE), 0u);
}

// Under any budget a read that adds curves ends with every curve one length.
TEST(Lenient, AddedCurvesKeepTheBudget)
{
    std::string text = kHead + kCurves + "~A\n";
    for (int i = 0; i < 20; ++i) text += std::to_string(i) + " 2 3" + (i >= 10 ? " 4 5\n" : "\n");
    bool cut = false;
    for (uint64_t budget = 2000; budget < 6000; budget += 16) {
        CLasReader reader;
        CLasReadOptions options;
        options.lenient = true;
        options.maxBytes = budget;
        reader.SetOptions(options);
        const ELASFILEERROR result = OpenText(reader, text);
        ASSERT_TRUE(result == LASFILE_OK || result == LASFILE_OUT_OF_MEMORY) << budget;
        const CLasSection& last = reader.GetSection(reader.size() - 1);
        if (last.m_type != LASSECTION_DATA) continue;
        for (const CLasCurve& curve : last.m_curves) EXPECT_EQ(curve.size(), last.m_curves[0].size()) << budget;
        cut = cut || (result == LASFILE_OUT_OF_MEMORY && last.m_curves.size() == 3 && last.m_curves[0].size() == 10);
    }
    EXPECT_TRUE(cut);  // some budget ended the read on the row that adds curves
}

// Leniently a value in double quotes is one value without its quotes, also
// over several lines (a description of cuttings); a header or the end of
// the file ends one that is not closed. Strictly each line is a row.
TEST(Lenient, QuotedValuesAreOneValue)
{
    const std::string head = kHead + "~Curve\nDEPT.M : d\nDESC. : c {S}\nX. : x\n~A\n";  // rows from line 11
    const struct {
        const char* name;
        std::string rows;
        const char* values;
        uint64_t line;
        size_t strictRows;
    } cases[] = {
        {"blanks inside", "1 \"pick gamma\" 3\n2 beta 4\n", "{1,2;\"pick gamma\",\"beta\";3,4}", 11, 2},
        {"over lines", "100 \"grey shale,\n   with sand  \n  streaks\" 5\n101 \"sand\" 6\n",
         "{100,101;\"grey shale, with sand streaks\",\"sand\";5,6}", 11, 4},
        {"single quotes", "1 'pick delta' 3\n2 'b 4\n", "{1,2;\"pick delta\",\"'b\";3,4}", 11, 2},
        {"a number in quotes", "1 a \"12.5\"\n2 b 7\n", "{1,2;\"a\",\"b\";12.5,7}", 11, 2},
        {"a header ends it", "1 \"open\n~Other\nx\n", "{1;\"open\";-999.25}", 11, 1},
        {"the end of the file ends it", "1 \"open\nend", "{1;\"open end\";-999.25}", 11, 2},
    };
    for (const auto& c : cases) {
        CLasReader reader;
        ASSERT_TRUE(ReadLeniently(reader, head + c.rows)) << c.name << '\n' << NoteList(reader);
        const CLasSection& data = reader.GetSection(3);
        const std::string dump = Dump(data);
        EXPECT_EQ(dump.substr(dump.find('{')), c.values) << c.name << '\n' << NoteList(reader);
        EXPECT_TRUE(HasNote(reader, LASNOTE_QUOTED_VALUE, c.line)) << c.name << '\n' << NoteList(reader);
        EXPECT_EQ(CountNotes(reader, LASNOTE_EXTRA_COLUMNS), 0u) << c.name;
        CLasReader strict;
        ASSERT_EQ(OpenText(strict, head + c.rows), LASFILE_OK) << c.name;
        EXPECT_EQ(strict.GetSection(3).m_curves.at(0).size(), static_cast<int32_t>(c.strictRows)) << c.name;
        EXPECT_EQ(CountNotes(strict, LASNOTE_QUOTED_VALUE), 0u) << c.name;
    }
    // Text glued to the closing quote of the last value is dropped, with a
    // note, as values behind the last curve are strictly.
    CLasReader glued;
    ASSERT_TRUE(ReadLeniently(glued, Las30Head("MD.M : d\nP. : p {S}\n", "COMMA") + "~Log_Data\n1,\"a, b\"x\n"))
        << NoteList(glued);
    EXPECT_EQ(Dump(glued.GetSection(3)), "Log_Data:2/16|Log_Definition{1;\"a, b\"}");
    EXPECT_TRUE(HasNote(glued, LASNOTE_LONG_ROW, 11)) << NoteList(glued);
}

// The fields of one Well line read leniently, "unit|value|description", and
// whether the unit kept colons with a note on line 6.
std::string LenientWellLine(const std::string& line, bool& noted)
{
    CLasReader reader;
    CLasReadOptions options;
    options.lenient = true;
    reader.SetOptions(options);
    noted = false;
    if (OpenText(reader, kHead + line + "\n") != LASFILE_OK) return "(failed)";
    const CLasSection& well = reader.GetSection(1);
    if (well.m_params.size() < 2) return "(no line)";
    const CLasParam& p = well.m_params.back();
    noted = HasNote(reader, LASNOTE_UNIT_WITH_COLONS, 6);
    return p.m_unit + "|" + p.m_value + "|" + p.m_description;
}

// Leniently a unit with colons ends at its first blank when a description
// colon follows; a colon that ends the unit's text, or no colon behind the
// blank, keeps the strict reading.
TEST(Lenient, UnitWithColonsEndsAtItsFirstBlank)
{
    const struct {
        const char* line;
        const char* fields;
        bool noted;
    } cases[] = {
        {"STRT.DD/MM/YYYY-HH:MM:SS 03/09/2021-00:00:00 : Start Time",
         "DD/MM/YYYY-HH:MM:SS|03/09/2021-00:00:00|Start Time", true},
        {"TM.HH:MM 12:30 : time", "HH:MM|12:30|time", true},
        {"GR.API: gamma", "API||gamma", false},
        {"X.A:B value", "A||B value", false},
        {"F.A:B{x} v : d", "A||B", false},
    };
    for (const auto& c : cases) {
        bool noted = false;
        EXPECT_EQ(LenientWellLine(c.line, noted), c.fields) << c.line;
        EXPECT_EQ(noted, c.noted) << c.line;
    }
    CLasReader strict;
    CLasParam param;
    ASSERT_EQ(Access::ParseParameterLine(strict, cases[0].line, param), LASFILE_OK);
    EXPECT_EQ(param.m_unit, "DD/MM/YYYY-HH");
    EXPECT_EQ(param.m_value, "");
}

// Files that repeat ~Curve and ~Ascii for each run: leniently each data
// section takes the nearest definition above it; strictly the first.
TEST(Lenient, RepeatedRunsTakeTheNearestDefinition)
{
    const std::string text =
        kHead + "~Curve\nDEPT.M : d\nA. : a\n~A\n1 2\n" + "~Curve\nDEPT.M : d\nB. : b\nC. : c\n~A\n3 4 5\n";
    for (bool lenient : {false, true}) {
        CLasReader reader;
        CLasReadOptions options;
        options.lenient = lenient;
        reader.SetOptions(options);
        ASSERT_EQ(OpenText(reader, text), LASFILE_OK);
        const CLasSection& second = reader.GetSection(reader.size() - 1);
        ASSERT_EQ(second.m_curves.size(), lenient ? 3u : 2u);
        EXPECT_EQ(second.m_curves.back().m_numbers.at(0), lenient ? 5 : 4);
        EXPECT_EQ(HasNote(reader, LASNOTE_NEAREST_DEFINITION, 15), lenient) << NoteList(reader);
        EXPECT_EQ(HasNote(reader, LASNOTE_LONG_ROW, 16), !lenient) << NoteList(reader);
        EXPECT_FALSE(HasNote(reader, LASNOTE_NEAREST_DEFINITION, 9)) << NoteList(reader);
    }
}

std::string Exact(double v)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", v);
    return text;
}

// The values of each curve of the last data section, "a,b;c,d".
std::string LastDataValues(const CLasReader& reader)
{
    std::string out;
    for (auto it = reader.rbegin(); it != reader.rend(); ++it) {
        if ((*it)->m_type != LASSECTION_DATA) continue;
        for (const CLasCurve& c : (*it)->m_curves) {
            for (double v : c.m_numbers) out += Exact(v) + ",";
            out += ";";
        }
        break;
    }
    return out;
}

// Reading the data's ends gives the first and the last row of a full read,
// and the same sections, for files of every shape; files it cannot serve
// read as headersOnly does.
TEST(Lenient, DataEndsGiveTheFirstAndLastRows)
{
    const std::string head = kHead + kCurves + "~A\n";
    std::string many;
    for (int i = 0; i < 5000; ++i) many += std::to_string(i) + " " + std::to_string(i * 2) + " 7\n";
    const struct {
        const char* name;
        std::string text;
        bool ends;  // false: read as headersOnly, no values
    } cases[] = {
        {"rows", head + "1 2 3\n4 5 6\n7 8 9\n", true},
        {"no line feed at the end", head + "1 2 3\n4 5 6", true},
        {"blank and comment lines behind", head + "1 2 3\n4 5 6\n\n# end\n  \n", true},
        {"carriage returns", "~Version\r\nVERS. 2.0 : v\r\n~Curve\r\nD.M : d\r\n~A\r\n1\r\n2\r\n", true},
        {"one row", head + "1 2 3\n", true},
        {"tokens that are no number", head + "1 - 3\n4 5 ERR\n7 8 x\n", true},
        {"many rows", head + many, true},
        {"a section behind", head + "1 2 3\n~Other\nx\n", false},
        {"LAS 3.0", Las30Head("DEPT.M : d\n") + "~Log_Data\n1\n2\n", false},
        {"wrapped", "~Version\nVERS. 2.0 : v\nWRAP. YES : w\n~Curve\nD.M : d\nG.M : g\n~A\n1\n2\n3\n4\n", false},
    };
    for (const auto& c : cases) {
        for (bool lenient : {false, true}) {
            SCOPED_TRACE(std::string(c.name) + (lenient ? " lenient" : ""));
            CLasReadOptions options;
            options.lenient = lenient;
            CLasReader full, ends;
            full.SetOptions(options);
            options.headersOnly = options.dataEnds = true;
            ends.SetOptions(options);
            ASSERT_EQ(OpenText(full, c.text), LASFILE_OK) << NoteList(full);
            ASSERT_EQ(OpenText(ends, c.text), LASFILE_OK) << NoteList(ends);
            ASSERT_EQ(ends.size(), full.size());
            std::string want;
            const CLasSection& data = *full.rbegin()->get();
            for (const CLasCurve& curve : data.m_curves) {
                if (c.ends && !curve.m_numbers.empty()) {
                    want += Exact(curve.m_numbers.front()) + ",";
                    if (curve.m_numbers.size() > 1) want += Exact(curve.m_numbers.back()) + ",";
                }
                want += ";";
            }
            EXPECT_EQ(LastDataValues(ends), want);
        }
    }
    // Every corpus file that reads: the ends of the full read, or no values;
    // curves that the full read's column rules made text are left aside.
    int fast = 0;
    const std::vector<std::string> corpus = CorpusFiles();
    for (const std::string& path : corpus) {
        CLasReadOptions options;
        options.lenient = true;
        CLasReader full, ends;
        full.SetOptions(options);
        options.headersOnly = options.dataEnds = true;
        ends.SetOptions(options);
        if (full.Open(tessel::TxString(path)) != LASFILE_OK) continue;
        ASSERT_EQ(ends.Open(tessel::TxString(path)), LASFILE_OK) << path;
        ASSERT_EQ(ends.size(), full.size()) << path;
        const CLasSection& a = **full.rbegin();
        const CLasSection& b = **ends.rbegin();
        if (a.m_type != LASSECTION_DATA || LastDataValues(ends).find(',') == std::string::npos) continue;
        // Curves added for values behind the last curve of rows between the
        // two ends are not seen by the ends alone.
        if (a.m_curves.size() > b.m_curves.size() && CountNotes(full, LASNOTE_EXTRA_COLUMNS) > 0) continue;
        ASSERT_EQ(a.m_curves.size(), b.m_curves.size()) << path;
        ++fast;
        for (size_t c = 0; c < a.m_curves.size(); ++c) {
            const std::vector<double>& x = a.m_curves[c].m_numbers;
            if (!a.m_curves[c].m_isNumeric || x.empty()) continue;
            // As text, so that NaN (a token that is no number) compares equal.
            std::vector<std::string> want = {Exact(x.front())}, got;
            if (x.size() > 1) want.push_back(Exact(x.back()));
            for (double v : b.m_curves[c].m_numbers) got.push_back(Exact(v));
            EXPECT_EQ(got, want) << path << " curve " << c;
        }
    }
    std::printf("corpus: %zu files, %d read by their data's ends\n", corpus.size(), fast);
    EXPECT_TRUE(corpus.empty() || fast >= 60);
}

// The note of a skipped section says whether its first line looks like a
// data row.
TEST(Lenient, SkippedSectionSaysWhenItLooksLikeData)
{
    for (const auto& [body, data] : {std::pair{"1 2 3\n", true}, {" -.5 x\n", true}, {"Some words\n", false}}) {
        Read read;
        ReadText(read, kHead + "~Other\n" + body, "Well");
        ASSERT_FALSE(read.reader.GetNotes().empty());
        EXPECT_EQ(read.reader.GetNotes()[0].text.find("look like data") != std::string::npos, data) << body;
    }
}

// UTF-8 with a byte-order mark, UTF-16 and UTF-32 read leniently give what
// the plain UTF-8 text gives; CR-only line ends are line ends.
TEST(Lenient, DecodedTextReadsAsItsUtf8)
{
    std::string text = kHead + "~Parameter\n";
    // Two- to four-byte characters, and enough lines to cross many blocks.
    for (int i = 0; i < 200; ++i)
        text += "P" + std::to_string(i) + ".M " + std::to_string(i) + " : caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80\n";
    CLasReadOptions options;
    options.lenient = true;
    Read plain;
    ReadText(plain, text, "Parameter/P199", options);
    ASSERT_EQ(plain.result, LASFILE_OK);
    const std::string expected = Dump(plain.reader) + plain.reader.GetSection(uint64_t{2}).m_params[150].m_description;

    // Code points of the UTF-8 text, then each encoding with its mark.
    std::vector<uint32_t> points;
    for (size_t i = 0; i < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        const int n = c < 0x80 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
        uint32_t p = n == 1 ? c : c & (0x7F >> n);
        for (int k = 1; k < n; ++k) p = p << 6 | (static_cast<unsigned char>(text[i + k]) & 0x3F);
        points.push_back(p);
        i += n;
    }
    auto encode = [&](int width, bool little, bool mark) {
        std::string out;
        auto unit = [&](uint32_t u) {
            for (int b = 0; b < width; ++b) out += static_cast<char>(u >> (8 * (little ? b : width - 1 - b)));
        };
        if (mark) unit(0xFEFF);
        for (uint32_t p : points) {
            if (width == 2 && p >= 0x10000) {
                unit(0xD800 + ((p - 0x10000) >> 10));
                unit(0xDC00 + ((p - 0x10000) & 0x3FF));
            } else {
                unit(p);
            }
        }
        return out;
    };
    std::string crOnly = text;
    std::replace(crOnly.begin(), crOnly.end(), '\n', '\r');
    const std::pair<const char*, std::string> forms[] = {{"UTF-8 BOM", "\xEF\xBB\xBF" + text},
                                                         {"UTF-16 LE", encode(2, true, true)},
                                                         {"UTF-16 BE", encode(2, false, true)},
                                                         {"UTF-16 LE, no mark", encode(2, true, false)},
                                                         {"UTF-32 LE", encode(4, true, true)},
                                                         {"UTF-32 BE", encode(4, false, true)},
                                                         {"CR line ends", crOnly}};
    for (const auto& form : forms) {
        Read decoded, strict;
        ReadText(decoded, form.second, "Parameter/P199", options);
        EXPECT_EQ(decoded.result, LASFILE_OK) << form.first;
        EXPECT_EQ(Dump(decoded.reader) + decoded.reader.GetSection(uint64_t{2}).m_params[150].m_description, expected)
            << form.first;
        EXPECT_TRUE(HasNote(decoded.reader, LASNOTE_DECODED, 1)) << form.first;
        EXPECT_EQ(decoded.reader.GetLineNumber(), plain.reader.GetLineNumber()) << form.first;
        ReadText(strict, form.second, "Parameter/P199");
        EXPECT_NE(strict.result, LASFILE_OK) << form.first;
    }
}

TEST(Lenient, NotesOfOneKindAreCappedAndCounted)
{
    std::string text = kHead + kCurves + "~A\n";
    for (int i = 0; i < 250; ++i) text += "1 2\n";
    Read read;
    ReadText(read, text, "A");
    ASSERT_EQ(read.result, LASFILE_OK);
    const auto& notes = read.reader.GetNotes();
    EXPECT_EQ(std::count_if(notes.begin(), notes.end(), [](const CLasNote& n) { return n.kind == LASNOTE_SHORT_ROW; }),
              100);
    ASSERT_EQ(notes.back().kind, LASNOTE_MORE_NOTES);
    EXPECT_EQ(notes.back().line, 260u);
    EXPECT_EQ(notes.back().text.substr(0, 4), "150 ");
    // Exactly at the cap nothing is counted; one past it counts one.
    for (int rows : {100, 101}) {
        std::string edge = kHead + kCurves + "~A\n";
        for (int i = 0; i < rows; ++i) edge += "1 2\n";
        Read at;
        ReadText(at, edge, "A");
        const auto& kept = at.reader.GetNotes();
        EXPECT_EQ(kept.back().kind == LASNOTE_MORE_NOTES, rows == 101) << rows;
        if (rows == 101) {
            EXPECT_EQ(kept.back().text.substr(0, 2), "1 ");
        }
    }
}

// A read past its budget ends with OUT_OF_MEMORY, keeps what fitted with all
// curves one length, and says where.
TEST(Lenient, BudgetEndsTheReadAndKeepsWhatFitted)
{
    std::string rows = kHead + kCurves + "~A\n";
    for (int i = 0; i < 5000; ++i) rows += "1 2 3\n";
    std::string headers = kHead + "~Curve\n";
    for (int i = 0; i < 200; ++i) headers += "C" + std::to_string(i) + ".M : c\n";
    for (int i = 0; i < 2000; ++i) headers += "~A\n1\n";
    // Leniently the odd tokens kept aside count too, and a row that does not
    // fit in the middle is taken back.
    std::string odd = kHead + kCurves + "~A\n";
    for (int i = 0; i < 5000; ++i) odd += "1 " + std::string(200, 'x') + " 2,5\n";  // longer than what keeps it
    for (int k = 0; k < 3; ++k) {
        const std::string& text = k == 0 ? rows : k == 1 ? headers : odd;
        Read read;
        CLasReadOptions options;
        options.lenient = k == 2;
        options.maxBytes = 64 * 1024;
        ReadText(read, text, "A", options);
        EXPECT_EQ(read.result, LASFILE_OUT_OF_MEMORY);
        const CLasNote& last = read.reader.GetNotes().back();
        EXPECT_EQ(last.kind, LASNOTE_READ_STOPPED);
        EXPECT_TRUE(HasNote(read.reader, LASNOTE_BUDGET_EXCEEDED, last.line));
        EXPECT_GT(last.line, 11u);
        EXPECT_LT(last.line, 4000u);
        const CLasSection& data = read.reader.GetSection(read.reader.size() - 1);
        for (const CLasCurve& curve : data.m_curves) EXPECT_EQ(curve.size(), data.m_curves[0].size());
        if (k == 2) {  // a row keeps 200 bytes aside, and costs less than 1 KiB in all
            EXPECT_LE(data.m_curves[0].size(), options.maxBytes / 200);
            EXPECT_GE(data.m_curves[0].size(), options.maxBytes / 1024);
        }
        options.maxBytes = 0;
        ReadText(read, text, "A", options);
        EXPECT_EQ(read.result, LASFILE_OK);
        if (k == 2) {
            EXPECT_TRUE(HasNote(read.reader, LASNOTE_TEXT_COLUMN, 10) &&
                        HasNote(read.reader, LASNOTE_DECIMAL_COMMA, 10));
        }
    }
}

// A failed read says why in its last note, also where no step of the read
// said so itself: a callback that stops the read between lines, a line
// store that cannot be had.
TEST(Lenient, ReadStoppedSaysWhy)
{
    std::string text = kHead + kCurves + "~A\n";
    for (int i = 0; i < 30; ++i) text += "1 2 3\n";
    struct Stop {
        static int Now(void*, double, const char*) { return 1; }
    };
    CLasReader reader;
    reader.SetStatusCallback(nullptr, &Stop::Now);
    EXPECT_EQ(OpenText(reader, text), LASFILE_CANCELLED);
    ASSERT_FALSE(reader.GetNotes().empty());
    EXPECT_EQ(reader.GetNotes().back().kind, LASNOTE_READ_STOPPED);
    EXPECT_EQ(reader.GetNotes().back().line, 10u);  // the tenth line brings the first report
    EXPECT_EQ(reader.GetNotes().back().text, "the status callback stopped the read");
    reader.SetStatusCallback(nullptr, nullptr);
    {
        FailingLineStore failing(2);  // the first store, then no room for the long line
        EXPECT_EQ(OpenText(reader, kHead + "LONG.M " + std::string(60, 'x') + " : d\n"), LASFILE_OUT_OF_MEMORY);
    }
    ASSERT_FALSE(reader.GetNotes().empty());
    EXPECT_EQ(reader.GetNotes().back().text, "no memory for a line of the file");
}

// Bytes that are no text end every kind of read at once, with a note of
// their own on the line where they stand and what was read before kept:
// a device of zeros, a NUL byte in the first block, and a line longer than
// the options allow, read whole, by headers only and by a headers-only read
// that passes the rows over in blocks.
TEST(Lenient, BytesThatAreNoTextEndTheReadAtOnce)
{
    EXPECT_EQ(CLasReadOptions{}.maxLineLength, CTextFile::kDefaultMaxLineLength);
    const std::string longLine = "LONG.M " + std::string(300, 'x') + " : d\n";
    const std::string longRow = "1 2 " + std::string(300, '3') + "\n~Other\n";
    const struct {
        const char* name;
        std::string text;  // empty: /dev/zero
        bool headersOnly;
        ELASNOTEKIND kind;
        uint64_t line;
        uint64_t sections;  // kept
    } cases[] = {
        {"device of zeros", "", false, LASNOTE_NOT_TEXT, 1, 0},
        {"NUL in the first block", kHead + std::string("GR.API 1 : g\0\n", 15), false, LASNOTE_NOT_TEXT, 1, 0},
        {"long first line", std::string(400, '~') + "\n" + kHead, false, LASNOTE_LINE_TOO_LONG, 1, 0},
        {"long parameter line", kHead + longLine, false, LASNOTE_LINE_TOO_LONG, 6, 2},
        {"long row", kHead + kCurves + "~A\n1 2 3\n" + longRow, false, LASNOTE_LINE_TOO_LONG, 12, 4},
        {"long row, headers only", kHead + kCurves + "~A\n1 2 3\n" + longRow, true, LASNOTE_LINE_TOO_LONG, 12, 4},
    };
    for (const auto& c : cases) {
        for (bool lenient : {false, true}) {
            SCOPED_TRACE(std::string(c.name) + (lenient ? ", lenient" : ", strict"));
            CLasReader reader;
            CLasReadOptions options;
            options.lenient = lenient;
            options.headersOnly = c.headersOnly;
            options.maxLineLength = 200;
            reader.SetOptions(options);
            const ELASFILEERROR result = c.text.empty() ? reader.Open("/dev/zero") : OpenText(reader, c.text);
            EXPECT_EQ(result, LASFILE_BAD_FORMAT) << NoteList(reader);
            EXPECT_TRUE(HasNote(reader, c.kind, c.line)) << NoteList(reader);
            ASSERT_FALSE(reader.GetNotes().empty());
            EXPECT_EQ(reader.GetNotes().back().kind, LASNOTE_READ_STOPPED);
            EXPECT_EQ(reader.GetNotes().back().line, c.line);
            EXPECT_EQ(reader.GetLineNumber(), c.line);
            EXPECT_EQ(reader.size(), c.sections);
            EXPECT_FALSE(c.kind == LASNOTE_NOT_TEXT && reader.IsValidFile("/dev/zero"));
        }
    }
    // Without a bound, and within it, the same lines read in full.
    for (uint64_t most : {uint64_t{0}, uint64_t{500}}) {
        Read read;
        CLasReadOptions options;
        options.maxLineLength = most;
        ReadText(read, kHead + longLine, "Well/LONG", options);
        EXPECT_EQ(read.result, LASFILE_OK) << most;
        EXPECT_EQ(read.probe, std::string(300, 'x')) << most;
    }
}

// Headers only, strict and lenient: the same sections, curves and end line
// as a full read, no values; the rows are passed over in blocks, with a header behind carriage
// returns, a data section longer than a block, and a last line without a
// line feed.
TEST(Lenient, HeadersOnlyKeepsEverySectionAndNoValue)
{
    std::string big;
    for (int i = 0; i < 30000; ++i) big += "1.5 2.5 3.5\n";
    const std::string texts[] = {
        kHead + kCurves + "~A\n" + big,
        kHead + kCurves + "~A\n1 2 3\n\r\r~Parameter\nBHT.C 35 : t",
        Las30Head("DEPT.M : d\nA. : a\nB. : b\n") + "~Log_Data\n" + big +
            "~Core_Definition\nD.M : d\n~Core_Data\n1\n2\n\n",
        kHead + kCurves + "~A\n",
    };
    for (int k = 0; k < 8; ++k) {
        const std::string& text = texts[k / 2];
        CLasReader full, headers;
        CLasReadOptions options;
        options.lenient = k % 2 == 1;
        full.SetOptions(options);
        const ELASFILEERROR fullResult = OpenText(full, text);
        options.headersOnly = true;
        headers.SetOptions(options);
        EXPECT_EQ(OpenText(headers, text), fullResult) << k;
        EXPECT_EQ(headers.GetLineNumber(), full.GetLineNumber());
        EXPECT_EQ(HasNote(headers, LASNOTE_HEADER_AT_END, full.GetLineNumber()),
                  HasNote(full, LASNOTE_HEADER_AT_END, full.GetLineNumber()))
            << k;
        ASSERT_EQ(headers.size(), full.size());
        for (uint64_t i = 0; i < full.size(); ++i) {
            const CLasSection& a = full.GetSection(i);
            const CLasSection& b = headers.GetSection(i);
            EXPECT_EQ(b.m_name + std::to_string(b.m_params.size()), a.m_name + std::to_string(a.m_params.size()));
            ASSERT_EQ(b.m_curves.size(), a.m_curves.size());
            for (const CLasCurve& curve : b.m_curves) EXPECT_EQ(curve.size(), 0);
        }
    }
}

// Passing over the rows reports the progress where the next header is found.
TEST(Lenient, HeadersOnlyReportsWhereItFindsTheNextHeader)
{
    const std::string text = kHead + kCurves + "~A\n1 2 3\n~Parameter\nBHT.C 35 : t\n";
    CLasReader reader;
    CLasReadOptions options;
    options.headersOnly = true;
    reader.SetOptions(options);
    Reports reports;
    reader.SetStatusCallback(&reports, &Reports::Callback);
    ASSERT_EQ(OpenText(reader, text), LASFILE_OK);
    const double found = static_cast<double>(text.find("BHT")) * 100.0 / static_cast<double>(text.size());
    EXPECT_NE(std::find(reports.percents.begin(), reports.percents.end(), found), reports.percents.end());
    // A line store that fails on that header ends the read there, with no
    // report for the header it could not keep.
    const std::string wide = kHead + kCurves + "~A\n1 2 3\n~" + std::string(200, 'P') + "\n";
    int allocations = 0;
    {
        FailingLineStore counting(1 << 30);
        ASSERT_EQ(OpenText(reader, wide), LASFILE_IO_FAILED);  // the header is the last line
        allocations = counting.calls();
    }
    reports.percents.clear();
    FailingLineStore failing(allocations);
    ASSERT_EQ(OpenText(reader, wide), LASFILE_OUT_OF_MEMORY);
    EXPECT_EQ(reports.percents.size(), 2u);  // line 10, and the last report
}

// Whether a note of a whole column (text, decimal comma, array format)
// names the curve.
bool ColumnNoted(const std::vector<CLasNote>& notes, const std::string& mnemonic)
{
    return std::any_of(notes.begin(), notes.end(), [&](const CLasNote& n) {
        return (n.kind == LASNOTE_TEXT_COLUMN || n.kind == LASNOTE_DECIMAL_COMMA || n.kind == LASNOTE_ARRAY_FORMAT) &&
               n.text.find("curve " + mnemonic + " ") == 0;
    });
}

bool IsRowNote(const CLasNote& n)
{
    return n.kind == LASNOTE_NULL_FILLED || n.kind == LASNOTE_LEADING_TAB || n.kind == LASNOTE_SHORT_ROW ||
           n.kind == LASNOTE_LONG_ROW || n.kind == LASNOTE_NOT_A_NUMBER;
}

// Each row of two reads of one data section whose numbers differ, in the
// curves that no column note names, has a note of a row on a line of the
// file that starts with the row's first value, unless notes of rows passed
// their cap. A curve that turned to text must be named.
void ExpectNotesOnDifferingRows(const CLasSection& a, const CLasSection& b, const std::vector<CLasNote>& notes,
                                const std::vector<std::string>& lines)
{
    if (a.m_curves.size() != b.m_curves.size() || a.m_curves.empty()) return;
    for (size_t c = 0; c < a.m_curves.size(); ++c) {
        if (a.m_curves[c].m_isNumeric != b.m_curves[c].m_isNumeric) {
            EXPECT_TRUE(ColumnNoted(notes, b.m_curves[c].m_definition.m_mnemonic))
                << b.m_curves[c].m_definition.m_mnemonic;
        }
    }
    const bool capped =
        std::any_of(notes.begin(), notes.end(), [](const CLasNote& n) { return n.kind == LASNOTE_MORE_NOTES; });
    const auto& first = b.m_curves[0].m_numbers;
    for (size_t r = 0; r < a.m_curves[0].m_numbers.size() && !capped; ++r) {
        bool differs = false;
        for (size_t c = 0; c < a.m_curves.size() && !differs; ++c) {
            const auto& x = a.m_curves[c].m_numbers;
            const auto& y = b.m_curves[c].m_numbers;
            differs = r < x.size() && r < y.size() && x[r] != y[r] &&
                      !ColumnNoted(notes, a.m_curves[c].m_definition.m_mnemonic);
        }
        if (!differs) continue;
        EXPECT_TRUE(r < first.size() && std::any_of(notes.begin(), notes.end(),
                                                    [&](const CLasNote& n) {
                                                        return IsRowNote(n) && n.line >= 1 && n.line <= lines.size() &&
                                                               std::atof(lines[n.line - 1].c_str()) == first[r];
                                                    }))
            << b.m_name << " row " << r;
    }
}

// Every corpus file reads leniently, and with every option at once, to an
// end; a lenient read keeps every strict success, where a parameter's value
// differs a note stands on a line that names its mnemonic, and each row
// whose numbers differ has a note on its line.
TEST(Lenient, CorpusReadsLenientlyWithNotesOnChangedValues)
{
    const std::vector<std::string> files = CorpusFiles();
    if (files.empty()) GTEST_SKIP() << "no corpus at " << CorpusDir();
    int strictOk = 0, lenientOk = 0;
    for (const std::string& path : files) {
        CLasReader strict, lenient, bounded;
        CLasReadOptions options;
        options.lenient = true;
        lenient.SetOptions(options);
        const ELASFILEERROR strictResult = strict.Open(tessel::TxString(path));
        const ELASFILEERROR lenientResult = lenient.Open(tessel::TxString(path));
        options.headersOnly = true;
        options.maxBytes = 4096;
        bounded.SetOptions(options);
        EXPECT_LE(static_cast<int>(bounded.Open(tessel::TxString(path))), static_cast<int>(LASFILE_BAD_FORMAT)) << path;
        strictOk += strictResult == LASFILE_OK;
        lenientOk += lenientResult == LASFILE_OK;
        if (strictResult == LASFILE_OK) {
            EXPECT_EQ(lenientResult, LASFILE_OK) << path << '\n' << NoteList(lenient);
        }
        if (strict.size() != lenient.size() || lenient.GetNotes().empty()) continue;
        // Text read as other lines or other bytes has that one note for all
        // it changes (a carriage return alone ends every line behind it).
        const auto decoded = [](const CLasNote& n) { return n.kind == LASNOTE_DECODED; };
        if (std::any_of(lenient.GetNotes().begin(), lenient.GetNotes().end(), decoded)) continue;
        std::vector<std::string> lines;
        std::istringstream in(ReadFileBytes(path));
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        const auto& notes = lenient.GetNotes();
        for (uint64_t s = 0; s < strict.size(); ++s) {
            ExpectNotesOnDifferingRows(strict.GetSection(s), lenient.GetSection(s), notes, lines);
            const auto& a = strict.GetSection(s).m_params;
            const auto& b = lenient.GetSection(s).m_params;
            for (size_t p = 0; p < std::min(a.size(), b.size()); ++p) {
                if (a[p].m_value == b[p].m_value || b[p].m_mnemonic.empty()) continue;
                EXPECT_TRUE(std::any_of(notes.begin(), notes.end(),
                                        [&](const CLasNote& n) {
                                            return n.line >= 1 && n.line <= lines.size() &&
                                                   lines[n.line - 1].find(b[p].m_mnemonic) != std::string::npos;
                                        }))
                    << path << ' ' << b[p].m_mnemonic;
            }
        }
    }
    std::printf("corpus: %d files, strict reads %d, lenient reads %d\n", static_cast<int>(files.size()), strictOk,
                lenientOk);
    EXPECT_GE(lenientOk * 100, static_cast<int>(files.size()) * 98);
}

}  // namespace
}  // namespace quarl::test
