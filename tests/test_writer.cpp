// The writer: format, the last-error record, AddSection and its rules, Reset
// and assignment, Validate, the Well section completion, the section order.
#include <gtest/gtest.h>

#include <cmath>

#include "support/writer_access.h"
#include "writer/curve_limit.h"

namespace quarl::test {
namespace {

using detail::WriterAccess;
using List = std::vector<std::string>;

std::string Format(const CLasWriter& w) { return std::string(WriterAccess::IsLas3(w) ? "3" : "2") + WriterAccess::Delimiter(w); }

TEST(WriterFrame, SetFormatTestsVersionThenStateThenDelimiter)
{
    CLasWriter w;
    EXPECT_EQ(Record(w), "0 - - -1 -1");
    EXPECT_EQ(Format(w), "2 ");
    ASSERT_EQ(w.AddSection(Section("Well", LASSECTION_HEADER)), LASFILE_OK);
    EXPECT_EQ(w.SetFormat(false, ','), LASFILE_NOT_ALLOWED_IN_VERSION);
    EXPECT_EQ(Record(w), "4 VERSION DLM -1 -1");
    EXPECT_EQ(w.SetFormat(false, ' '), LASFILE_WRONG_STATE);
    EXPECT_EQ(Record(w), "6 - - -1 -1");
    w.SetStatusCallback(nullptr, nullptr);  // clears the record, as AddSection does
    EXPECT_EQ(Record(w), "0 - - -1 -1");
    w.SetFormat(false, ',');
    ASSERT_EQ(w.AddSection(Section("Other", LASSECTION_PARAMETER)), LASFILE_OK);
    EXPECT_EQ(w.GetLastError(), LASFILE_OK);
    w.SetFormat(false, ',');
    w.ClearLastError();
    EXPECT_EQ(Record(w), "0 - - -1 -1");

    CLasWriter empty;
    ASSERT_EQ(empty.SetFormat(true, '\t'), LASFILE_OK);
    EXPECT_EQ(empty.SetFormat(true, ';'), LASFILE_BAD_VALUE);
    EXPECT_EQ(empty.SetFormat(false, ';'), LASFILE_NOT_ALLOWED_IN_VERSION);
    EXPECT_EQ(Format(empty), "3\t");
    ASSERT_EQ(empty.SetFormat(true, ','), LASFILE_OK);
    EXPECT_EQ(Record(empty), "0 - - -1 -1");
}

TEST(WriterFrame, AddSectionRefusesAndStoresACopy)
{
    for (bool las3 : {false, true}) {
        CLasWriter w;
        ASSERT_EQ(w.SetFormat(las3, ' '), LASFILE_OK);
        for (const char* name : {"version", "V", "v"}) {
            EXPECT_EQ(w.AddSection(Section(name, LASSECTION_HEADER)), LASFILE_DUPLICATE_SECTION);
            EXPECT_EQ(Record(w), "9 " + std::string(name) + " - -1 -1");
        }
        CLasSection well = Section("Well", LASSECTION_HEADER, {Param("WELL", "", "A", "")});
        ASSERT_EQ(w.AddSection(well), LASFILE_OK);
        well.m_params[0].m_value = "changed";
        EXPECT_EQ(WriterAccess::Sections(w)[0].m_params[0].m_value, "A");
        EXPECT_EQ(w.AddSection(Section("WELL", LASSECTION_HEADER)), LASFILE_DUPLICATE_SECTION);
        EXPECT_EQ(Record(w), "9 WELL - -1 -1");
        EXPECT_EQ(WriterAccess::Sections(w).size(), 1u);
    }
    // The name first, then the content; nothing is stored on failure.
    CLasWriter w;
    EXPECT_EQ(w.AddSection(Section("Log_Data", LASSECTION_DATA)), LASFILE_BAD_NAME);
    EXPECT_EQ(Record(w), "10 Log_Data - -1 -1");
    EXPECT_EQ(w.AddSection(Section("Other", LASSECTION_ANY)), LASFILE_BAD_VALUE);
    EXPECT_EQ(Record(w), "7 Other - -1 -1");
    EXPECT_EQ(w.AddSection(Section("Curve", LASSECTION_DEFINITION, {Param("A.B", "", "", "")})), LASFILE_BAD_NAME);
    EXPECT_EQ(Record(w), "10 Curve A.B -1 -1");
    EXPECT_TRUE(WriterAccess::Sections(w).empty());
}

TEST(WriterFrame, ShortLas2NamesAreExpandedAfterTheDuplicateTest)
{
    CLasWriter w;
    ASSERT_EQ(w.AddSection(Section("W", LASSECTION_HEADER)), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Section("l", LASSECTION_DATA)), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Section("W", LASSECTION_HEADER)), LASFILE_OK);  // compared with "Well"
    EXPECT_EQ(Names(w), (List{"Well", "ASCII", "Well"}));
    for (const auto& [name, index] : std::vector<std::pair<const char*, int32_t>>{
             {"WELL", 0}, {"ascii", 1}, {"", -1}, {nullptr, -1}, {"Wel", -1}})
        EXPECT_EQ(WriterAccess::FindSectionIndexByName(w, name), index) << (name ? name : "null");
    EXPECT_EQ(WriterAccess::CountSectionsByType(w, LASSECTION_HEADER), 2);
    EXPECT_EQ(WriterAccess::CountSectionsByType(w, LASSECTION_ANY), 3);
    EXPECT_EQ(WriterAccess::CountSectionsByType(w, LASSECTION_PARAMETER), 0);
}

TEST(WriterFrame, ResetAndAssignment)
{
    CLasWriter a;
    ASSERT_EQ(a.SetFormat(true, '\t'), LASFILE_OK);
    ASSERT_EQ(a.AddSection(Data("Log_Data", {Numbers({1, 2})})), LASFILE_OK);
    a.SetFormat(false, ',');
    CLasWriter b;
    b = a;  // the document by value, the format and the record
    EXPECT_EQ(Format(b), "3\t");
    EXPECT_EQ(Record(b), "4 VERSION DLM -1 -1");
    WriterAccess::Sections(a)[0].m_curves[0].m_numbers[0] = 9;
    EXPECT_EQ(WriterAccess::Sections(b)[0].m_curves[0].m_numbers[0], 1);
    b = b;
    EXPECT_EQ(WriterAccess::Sections(b).size(), 1u);

    a.Reset();
    EXPECT_TRUE(WriterAccess::Sections(a).empty());
    EXPECT_EQ(Format(a), "2 ");
    EXPECT_EQ(Record(a), "0 - - -1 -1");
    EXPECT_EQ(a.SetFormat(true, ','), LASFILE_OK);

    // The duplicate test after each way the sections change.
    const CLasSection extra = Section("Extra_Parameter", LASSECTION_PARAMETER);
    ASSERT_EQ(a.AddSection(extra), LASFILE_OK);
    EXPECT_EQ(a.AddSection(extra), LASFILE_DUPLICATE_SECTION);
    a.Validate();  // appends "Well"
    EXPECT_EQ(a.AddSection(Section("WELL", LASSECTION_PARAMETER)), LASFILE_DUPLICATE_SECTION);
    a.Reset();
    ASSERT_EQ(a.SetFormat(true, ','), LASFILE_OK);
    EXPECT_EQ(a.AddSection(extra), LASFILE_OK);
    CLasWriter other;  // LAS 2.0 stores "W" as "Well"
    ASSERT_EQ(other.AddSection(Section("W", LASSECTION_PARAMETER)), LASFILE_OK);
    a = other;  // the same number of sections, other names
    EXPECT_EQ(a.AddSection(Section("well", LASSECTION_PARAMETER)), LASFILE_DUPLICATE_SECTION);
    EXPECT_EQ(a.AddSection(Section("Parameter", LASSECTION_PARAMETER)), LASFILE_OK);
}

TEST(WriterRules, SectionNamesOfEachVersion)
{
    const auto add = [](bool las3, const char* name) {
        CLasWriter w;
        w.SetFormat(las3, ' ');
        return w.AddSection(Section(name, LASSECTION_PARAMETER));
    };
    for (const char* name : {"WELL", "w", "Curve", "c", "PARAMETER", "p", "ascii", "A", "Log", "l", "Other", "o",
                             "dOwNhOlE", "D"})
        EXPECT_EQ(add(false, name), LASFILE_OK) << name;
    for (const char* name : {"", "Log_Data", "Well[1]", "X", "Wells", "Curve "})
        EXPECT_EQ(add(false, name), LASFILE_BAD_NAME) << name;
    for (const char* name : {"ASCII", "log", "Log_Data", "Core_Data[2]", "My Section", "Xy"})
        EXPECT_EQ(add(true, name), LASFILE_OK) << name;
    for (const char* name : {"", "A", "W", "other", "OTHER"}) EXPECT_EQ(add(true, name), LASFILE_BAD_NAME) << name;
    // LAS 2.0 stores one-letter names in full and longer names as given.
    CLasWriter w;
    for (const char* name : {"A", "p", "o", "d", "c", "well", "LOG"})
        ASSERT_EQ(w.AddSection(Section(name, LASSECTION_PARAMETER)), LASFILE_OK);
    EXPECT_EQ(Names(w),
              (List{"ASCII", "Parameter", "Other", "Downhole", "Curve", "well", "LOG"}));
    for (const char* unchanged : {"X", "", "WW"}) {
        std::string name = unchanged;
        WriterAccess::GetLAS2FullSectionName(w, name);
        EXPECT_EQ(name, unchanged);
    }
}

TEST(WriterRules, DataSections)
{
    const struct { bool las3; std::vector<CLasCurve> curves; std::string record; } cases[] = {
        {false, {Numbers({1}), Texts({"a"})}, "7 ASCII - 1 -1"},  // text only in LAS 3.0
        {true, {Numbers({1}), Texts({"a"})}, "0 - - -1 -1"}, {false, {Texts({"a"}), Numbers({1})}, "7 ASCII - 0 -1"},
        {true, {Texts({"a"}), Numbers({1})}, "7 Log_Data - 0 -1"},  // the first column is numeric
        {true, {Numbers(std::vector<double>(10)), Numbers(std::vector<double>(10)), Numbers(std::vector<double>(9))},
         "7 Log_Data - 2 -1"},
        {true, {Numbers({1, 2}), Texts({"a"})}, "7 Log_Data - 1 -1"}, {false, {}, "0 - - -1 -1"},
    };
    for (const auto& c : cases) {
        CLasWriter w;
        w.SetFormat(c.las3, ' ');
        w.AddSection(Data(c.las3 ? "Log_Data" : "ASCII", c.curves));
        EXPECT_EQ(Record(w), c.record);
    }
    // A curve longer than a signed 32-bit count is refused before the row
    // test could see it cut to its length modulo 2^32. The bound is lowered
    // here: a curve at the real bound, 2^31 values, takes 16 GB.
    const size_t bound = detail::g_maxCurveValues;
    detail::g_maxCurveValues = 4;
    for (const auto& c : {std::make_pair(std::vector<CLasCurve>{Numbers({1, 2, 3, 4, 5}), Numbers({1})}, "7 Log_Data - 0 -1"),
                          std::make_pair(std::vector<CLasCurve>{Numbers({1, 2, 3, 4, 5}), Texts({"a", "b", "c", "d", "e"})}, "7 Log_Data - 0 -1"),
                          std::make_pair(std::vector<CLasCurve>{Numbers({1, 2, 3, 4}), Texts({"a", "b", "c", "d"})}, "0 - - -1 -1")}) {
        CLasWriter w;
        w.SetFormat(true, ' ');
        w.AddSection(Data("Log_Data", c.first));
        EXPECT_EQ(Record(w), c.second);
    }
    detail::g_maxCurveValues = bound;
    EXPECT_EQ(bound, size_t{INT32_MAX});
    // The type is tested first when the rule is run on its own.
    CLasWriter w;
    EXPECT_EQ(WriterAccess::ValidateDataSection(w, Section("ASCII", LASSECTION_PARAMETER)), LASFILE_BAD_VALUE);
    EXPECT_EQ(Record(w), "7 ASCII - -1 -1");
}

TEST(WriterRules, ParameterFieldsAndPassOrder)
{
    const struct { bool las3; std::vector<CLasParam> params; std::string record; } cases[] = {
        {true, {Param("A.B", "", "", "")}, "10 Tops A.B -1 -1"}, {true, {Param("M", "k g", "", "")}, "10 Tops M -1 -1"},
        {false, {Param("V", "", "1{", "")}, "10 Other V -1 -1"},
        {false, {Param("V", "", "}", "")}, "10 Other V -1 -1"},
        {false, {Param("V", "", "a|b", "")}, "10 Other V -1 -1"},
        {false, {Param("OK", "", "1.5: a b", "any .:{}| text"), Param("", "", "", "")}, "0 - - -1 -1"},
        {false, {Param("F", "", "", "", "{F}"), Param("G", "", "", "", "}F{")}, "0 - - -1 -1"},
        {false, {Param("F", "", "", "", "{F")}, "10 Other F -1 -1"},
        {true, {Param("R", "", "", "", "", "RUNS")}, "0 - - -1 -1"},
        {false, {Param("R", "", "", "", "", "RUNS")}, "7 Other R -1 -1"},
        // A later pass on an early parameter comes after an earlier pass on a late one.
        {false, {Param("R", "", "", "", "", "RUNS"), Param("F", "", "", "", "{F"), Param("X:", "", "", "")},
         "10 Other X: -1 -1"},
        {false, {Param("R", "", "", "", "", "RUNS"), Param("F", "", "", "", "{F")}, "10 Other F -1 -1"},
    };
    for (const auto& c : cases) {
        CLasWriter w;
        w.SetFormat(c.las3, ' ');
        w.AddSection(Section(c.las3 ? "Tops" : "Other", LASSECTION_PARAMETER, c.params));
        EXPECT_EQ(Record(w), c.record);
    }
    CLasWriter w;
    w.SetFormat(true, ' ');
    EXPECT_EQ(w.AddSection(Section("Tops", LASSECTION_ANY, {Param("A.B", "", "", "")})), LASFILE_BAD_VALUE);
    EXPECT_EQ(w.AddSection(Section("Tops", LASSECTION_DEFINITION)), LASFILE_OK);
}

// The sections after Validate as "name(lines)|association", and the record.
std::string Validated(bool las3, std::vector<CLasSection> sections, int runs = 1)
{
    CLasWriter w;
    EXPECT_EQ(w.SetFormat(las3, ' '), LASFILE_OK);
    for (const CLasSection& s : sections) EXPECT_EQ(w.AddSection(s), LASFILE_OK);
    if (!WriterAccess::Sections(w).empty() && WriterAccess::Sections(w)[0].m_curves.size() == 2)
        WriterAccess::Sections(w)[0].m_curves[1].m_numbers.push_back(4);  // unequal lengths put in after AddSection
    ELASFILEERROR result = LASFILE_OK;
    for (int i = 0; i < runs; ++i) result = w.Validate();
    std::string text = std::to_string(result) + " " + (w.GetLastErrorSection() ? w.GetLastErrorSection() : "-") + " " +
                       std::to_string(w.GetLastErrorColumn()) + ":";
    for (const CLasSection& s : WriterAccess::Sections(w)) {
        text += " " + s.m_name + "(" + std::to_string(s.m_params.size()) + ")" + s.m_association;
        if (s.m_type == LASSECTION_DEFINITION)
            for (const CLasParam& p : s.m_params) text += " " + p.m_mnemonic + "." + p.m_unit + ":" + p.m_description + p.m_format;
    }
    return text;
}

TEST(Validate, CreatesLinksAndTestsTheDocument)
{
    const std::vector<CLasCurve> three = {Numbers({1, 2}, Param("DEPT", "M", "", "Depth")), Numbers({3, 4}), Numbers({5, 6}, Param("GR", "", "", ""))};
    EXPECT_EQ(Validated(false, {}), "5 Curve -1: Well(0)");
    // Curve filled from the curves; a second run finds everything in place.
    for (int runs : {1, 2})
        EXPECT_EQ(Validated(false, {Data("ASCII", three)}, runs),
                  "0 - -1: Well(12) Curve(3) DEPT.M:Depth COL2.:Column 2{F} GR.: ASCII(0)Curve");
    // LAS 3.0 creates definitions by base name, {S} for text.
    EXPECT_EQ(Validated(true, {Data("Log_Data", {Numbers({1}), Texts({"a"})}), Data("Core_Data[1]", {Numbers({1})}), Data("Core_Data[2]", {Numbers({2})})}),
              "0 - -1: Well(12) Core_Definition(1) COL1.:Column 1{F} Core_Data[1](0)Core_Definition Core_Data[2](0)Core_Definition "
              "Log_Definition(2) COL1.:Column 1{F} COL2.:Column 2{S} Log_Data(0)Log_Definition");
    // "Curve" given, link of "ASCII" empty: the link names nothing.
    EXPECT_EQ(Validated(false, {Section("Curve", LASSECTION_DEFINITION), Data("ASCII", {Numbers({1})})}).substr(0, 6), "5 - -1");
    // A link to a missing section in LAS 2.0 creates it, then Curve is missing.
    EXPECT_EQ(Validated(false, {Data("ASCII", {Numbers({1})}, "Defs")}), "5 Curve -1: Well(0) Defs(0) ASCII(0)Defs");
    // One definition too few names the data section.
    EXPECT_EQ(Validated(false, {Section("Curve", LASSECTION_DEFINITION, {Param("DEPT", "", "", "")}), Data("ASCII", {Numbers({1}), Numbers({2})}, "Curve")}).substr(0, 10),
              "5 ASCII -1");
    // Unequal curves: the column, and the definition is never filled.
    EXPECT_EQ(Validated(false, {Data("ASCII", {Numbers({1, 2}), Numbers({2, 3})})}), "7 ASCII 1: Well(0) Curve(0) ASCII(0)Curve");
    // LAS 3.0: a data section of another base only; one without curves passes.
    EXPECT_EQ(Validated(true, {Data("Core_Data", {Numbers({1})})}).substr(0, 10), "5 Curve -1");
    EXPECT_EQ(Validated(true, {Data("Log_Data", {})}).substr(0, 6), "0 - -1");
}

// A section of the type its name suggests; "name|link" sets the association.
CLasSection Typed(const std::string& text)
{
    const std::string name = text.substr(0, text.find('|'));
    ELASSECTIONTYPE type = LASSECTION_PARAMETER;
    if (name.find("Data") != std::string::npos || name == "ASCII" || name == "LOG" || name == "Core") type = LASSECTION_DATA;
    if (name.find("Definition") != std::string::npos || name == "Curve") type = LASSECTION_DEFINITION;
    return Section(name, type, {}, text.find('|') == std::string::npos ? "" : text.substr(text.find('|') + 1));
}

TEST(SortSections, OrderOfEachVersion)
{
    const struct { bool las3; List given; List sorted; } cases[] = {  // empty: refused, nothing moved
        {false, {"ASCII", "Other", "Curve", "Well", "Parameter"}, {"Well", "Parameter", "Curve", "Other", "ASCII"}},
        {false, {"ASCII", "Downhole", "LOG", "curve", "Other", "WELL", "Well"},
         {"WELL", "curve", "Downhole", "LOG", "Other", "Well", "ASCII"}},
        {false, {"ASCII", "LOG"}, {"LOG", "ASCII"}},
        {false, {"ASCII|ascii", "Other"}, {"Other", "ASCII"}},  // main data linked to itself: placed once
        {true, {"Log_Data", "Log_Definition", "Core_Data", "Tops_Parameter", "Well", "Core_Definition", "Core_Parameter", "Log_Parameter"},
         {"Well", "Core_Parameter", "Core_Definition", "Core_Data", "Tops_Parameter", "Log_Parameter", "Log_Definition", "Log_Data"}},
        // A single data section is never grouped, whatever its name.
        {true, {"Core_Data", "Core_Parameter", "Other_Stuff"}, {"Core_Data", "Core_Parameter", "Other_Stuff"}},
        // Indexed data sections share the parameter section of their base.
        {true, {"ASCII", "Core_Parameter[1]", "Core_Data[2]", "Core_Data[1]", "Core_Parameter", "Core_Definition"},
         {"Core_Parameter", "Core_Definition", "Core_Data[2]", "Core_Data[1]", "Core_Parameter[1]", "ASCII"}},
        {true, {"Log_Data", "Log_Data[2]"}, {"Log_Data[2]", "Log_Data"}},  // a secondary data section
        // Definitions are found by link, else by base name.
        {true, {"Shared", "A_Data|Shared", "B_Data|Shared", "Log_Data", "Log_Definition", "Curve", "C_Data|Curve"},
         {"Curve", "Shared", "A_Data", "B_Data", "C_Data", "Log_Definition", "Log_Data"}},
        {true, {"Tops", "ASCII", "Well", "Core_Data", "Log_Data", "Core_Definition"}, {}},  // two log data names
        {true, {"LOG", "Log_Data"}, {}},
        {false, {}, {}},
    };
    for (const auto& c : cases) {
        CLasWriter w;
        w.SetFormat(c.las3, ' ');
        for (const std::string& name : c.given) WriterAccess::Sections(w).push_back(Typed(name));
        const List stored = Names(w);
        const bool refused = c.sorted.empty() && !c.given.empty();
        ASSERT_EQ(WriterAccess::SortSections(w), refused ? LASFILE_BAD_FORMAT : LASFILE_OK) << stored.size();
        EXPECT_EQ(Names(w), refused ? stored : c.sorted);
        EXPECT_EQ(Record(w), refused ? "3 - - -1 -1" : "0 - - -1 -1");
        if (refused) continue;
        EXPECT_EQ(WriterAccess::SortSections(w), LASFILE_OK);  // sorting twice changes nothing
        EXPECT_EQ(Names(w), c.sorted);
    }
}

// Runs FillWellSection `runs` times on a Well section and an "ASCII" section
// of one curve; gives the record and the Well section as "MNEM=value ...".
std::string Fill(std::vector<CLasParam> well, std::vector<CLasCurve> curves, int runs = 1)
{
    CLasWriter w;
    EXPECT_EQ(w.AddSection(Section("Well", LASSECTION_HEADER, std::move(well))), LASFILE_OK);
    EXPECT_EQ(w.AddSection(Data("ASCII", std::move(curves))), LASFILE_OK);
    for (int i = 0; i < runs; ++i) WriterAccess::FillWellSection(w);
    std::string text = Record(w) + ":";
    for (const CLasParam& p : WriterAccess::Sections(w)[0].m_params) text += " " + p.m_mnemonic + "=" + p.m_value;
    return text;
}

TEST(WellCompletion, DepthRangeAndAppendedParameters)
{
    const std::string rest = " COMP=Not Specified WELL=Not Specified FLD=Not Specified LOC=Not Specified";
    const std::string tail = " CNTY=Not Specified STAT=Not Specified CTRY=Not Specified SRVC=Not Specified";
    const std::string ok = "0 - - -1 -1:";
    const std::string full = ok + " STRT=100.00000000 STOP=100.50000000 STEP=0.25000000" + rest +
                             " API=Not Specified" + tail;
    EXPECT_EQ(Fill({}, {Numbers({100, 100.25, 100.5})}), full);
    EXPECT_EQ(Fill({}, {Numbers({100, 100.25, 100.5})}, 2), full);  // a second run appends nothing
    // UWI stands for API, any of PROV and STAT for CNTY, STAT and CTRY.
    EXPECT_EQ(Fill({Param("uwi", "", "1", ""), Param("Stat", "", "AB", "")}, {Numbers({1})}),
              ok + " uwi=1 Stat=AB STRT=1.00000000 STOP=1.00000000 STEP=0.00000000" + rest + " SRVC=Not Specified");
    EXPECT_EQ(Fill({Param("PROV", "", "x", ""), Param("API", "", "1", "")}, {Numbers({1})}),
              ok + " PROV=x API=1 STRT=1.00000000 STOP=1.00000000 STEP=0.00000000" + rest + " SRVC=Not Specified");
    // No curves, or no values, count as zero.
    EXPECT_EQ(Fill({}, {}).substr(0, 60), ok + " STRT=0.00000000 STOP=0.00000000 STEP=0.00000000");
    EXPECT_EQ(Fill({Param("STOP", "", "1", "")}, {Numbers({})}), "3 ASCII STOP 0 -1: STOP=1 STRT=0.00000000");
}

TEST(WellCompletion, PresentValuesAreTestedWithTheAbsoluteTolerance)
{
    const struct {
        std::vector<CLasParam> well;
        std::vector<double> depths;
        std::string record;  // the text of a present value is never rewritten
    } cases[] = {
        {{Param("strt", "", "100", "")}, {100.00000004}, "0 - - -1 -1: strt=100 STOP"},
        {{Param("STRT", "", "100", "")}, {100.0000002}, "3 ASCII STRT 0 0: STRT=100"},
        {{Param("STRT", "", "abc", "")}, {0.00000005}, "0 - - -1 -1: STRT=abc STOP"},
        {{Param("STOP", "", "5", "")}, {1, 2, 3}, "3 ASCII STOP 0 2: STOP=5 STRT=1.00000000"},
        {{Param("STEP", "", "0", "")}, {1, 5, 7}, "0 - - -1 -1: STEP=0 STRT"},
        {{Param("STEP", "", "x", "")}, {1, 5, 7}, "0 - - -1 -1: STEP=x STRT"},
        {{Param("STEP", "", "3", "")}, {1}, "0 - - -1 -1: STEP=3 STRT"},
        {{Param("STEP", "", "-0.5", "")}, {2, 1.5, 1}, "0 - - -1 -1: STEP=-0.5 STRT"},
        {{Param("STEP", "", "0.5", "")}, {2, 1.5, 1}, "3 ASCII STEP 0 1: STEP=0.5 STRT=2.00000000 STOP=1.00000000"},
        // A NaN difference is not greater than the tolerance.
        {{Param("STRT", "", "nan", ""), Param("STOP", "", "2", "")}, {1, NAN}, "0 - - -1 -1: STRT=nan STOP=2"},
    };
    for (const auto& c : cases) {
        const std::string got = Fill(c.well, {Numbers(c.depths)});
        EXPECT_EQ(got.substr(0, c.record.size()), c.record);
    }
    // Uneven data without STEP passes the first run and fails the second at row 2.
    EXPECT_EQ(Fill({}, {Numbers({100, 101, 103})}, 1).substr(0, 12), "0 - - -1 -1:");
    EXPECT_EQ(Fill({}, {Numbers({100, 101, 103})}, 2).substr(0, 19), "3 ASCII STEP 0 2: S");
    // A NaN depth gives the same on every run.
    EXPECT_EQ(Fill({}, {Numbers({NAN, 1, 2})}, 2).substr(0, 12), "0 - - -1 -1:");
}

TEST(WellCompletion, MissingSections)
{
    CLasWriter w;
    EXPECT_EQ(WriterAccess::FillWellSection(w), LASFILE_MISSING_SECTION);
    EXPECT_EQ(Record(w), "5 Well - -1 -1");
    ASSERT_EQ(w.AddSection(Section("Well", LASSECTION_HEADER)), LASFILE_OK);
    EXPECT_EQ(WriterAccess::FillWellSection(w), LASFILE_MISSING_SECTION);
    EXPECT_EQ(Record(w), "5 ASCII - -1 -1");
    ASSERT_EQ(w.AddSection(Data("LOG", {Numbers({7, 8})})), LASFILE_OK);  // "LOG" serves without "ASCII"
    EXPECT_EQ(WriterAccess::FillWellSection(w), LASFILE_OK);
    EXPECT_EQ(WriterAccess::Sections(w)[0].m_params[0].m_value, "7.00000000");
}

}  // namespace
}  // namespace quarl::test
