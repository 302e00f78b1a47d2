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

const ErrorRecord kClear;

std::string Format(const CLasWriter& w)
{
    return std::string(WriterAccess::IsLas3(w) ? "3" : "2") + WriterAccess::Delimiter(w);
}

TEST(WriterFrame, SetFormatTestsVersionThenStateThenDelimiter)
{
    CLasWriter w;
    EXPECT_EQ(LastError(w), kClear);
    EXPECT_EQ(Format(w), "2 ");
    ASSERT_EQ(w.AddSection(Section("Well", LASSECTION_HEADER)), LASFILE_OK);
    EXPECT_EQ(w.SetFormat(false, ','), LASFILE_NOT_ALLOWED_IN_VERSION);
    EXPECT_EQ(LastError(w), (ErrorRecord{LASFILE_NOT_ALLOWED_IN_VERSION, "VERSION", "DLM"}));
    EXPECT_EQ(w.SetFormat(false, ' '), LASFILE_WRONG_STATE);
    EXPECT_EQ(LastError(w), ErrorRecord{LASFILE_WRONG_STATE});
    w.SetStatusCallback(nullptr, nullptr);  // clears the record, as AddSection does
    EXPECT_EQ(LastError(w), kClear);
    w.SetFormat(false, ',');
    ASSERT_EQ(w.AddSection(Section("Other", LASSECTION_PARAMETER)), LASFILE_OK);
    EXPECT_EQ(w.GetLastError(), LASFILE_OK);
    w.SetFormat(false, ',');
    w.ClearLastError();
    EXPECT_EQ(LastError(w), kClear);

    CLasWriter empty;
    ASSERT_EQ(empty.SetFormat(true, '\t'), LASFILE_OK);
    EXPECT_EQ(empty.SetFormat(true, ';'), LASFILE_BAD_VALUE);
    EXPECT_EQ(empty.SetFormat(false, ';'), LASFILE_NOT_ALLOWED_IN_VERSION);
    EXPECT_EQ(Format(empty), "3\t");
    ASSERT_EQ(empty.SetFormat(true, ','), LASFILE_OK);
    EXPECT_EQ(LastError(empty), kClear);
}

TEST(WriterFrame, AddSectionRefusesAndStoresACopy)
{
    for (bool las3 : {false, true}) {
        CLasWriter w;
        ASSERT_EQ(w.SetFormat(las3, ' '), LASFILE_OK);
        for (const char* name : {"version", "V", "v"}) {
            EXPECT_EQ(w.AddSection(Section(name, LASSECTION_HEADER)), LASFILE_DUPLICATE_SECTION);
            EXPECT_EQ(LastError(w), (ErrorRecord{LASFILE_DUPLICATE_SECTION, name}));
        }
        CLasSection well = Section("Well", LASSECTION_HEADER, {Param("WELL", "", "A", "")});
        ASSERT_EQ(w.AddSection(well), LASFILE_OK);
        well.m_params[0].m_value = "changed";
        EXPECT_EQ(WriterAccess::Sections(w)[0].m_params[0].m_value, "A");
        EXPECT_EQ(w.AddSection(Section("WELL", LASSECTION_HEADER)), LASFILE_DUPLICATE_SECTION);
        EXPECT_EQ(LastError(w), (ErrorRecord{LASFILE_DUPLICATE_SECTION, "WELL"}));
        EXPECT_EQ(WriterAccess::Sections(w).size(), 1u);
    }
    // The name first, then the content; nothing is stored on failure.
    CLasWriter w;
    EXPECT_EQ(w.AddSection(Section("Log_Data", LASSECTION_DATA)), LASFILE_BAD_NAME);
    EXPECT_EQ(LastError(w), (ErrorRecord{LASFILE_BAD_NAME, "Log_Data"}));
    EXPECT_EQ(w.AddSection(Section("Other", LASSECTION_ANY)), LASFILE_BAD_VALUE);
    EXPECT_EQ(LastError(w), (ErrorRecord{LASFILE_BAD_VALUE, "Other"}));
    EXPECT_EQ(w.AddSection(Section("Curve", LASSECTION_DEFINITION, {Param("A.B", "", "", "")})), LASFILE_BAD_NAME);
    EXPECT_EQ(LastError(w), (ErrorRecord{LASFILE_BAD_NAME, "Curve", "A.B"}));
    EXPECT_TRUE(WriterAccess::Sections(w).empty());
}

// Assignment copies the document by value, the format and the record; Reset
// starts over. A section's name is compared with the names stored at the
// time of the call, however the sections got there or went.
TEST(WriterFrame, AssignmentAndResetAndTheDuplicateTestAfterThem)
{
    CLasWriter a, b;
    ASSERT_EQ(a.SetFormat(true, '\t'), LASFILE_OK);
    ASSERT_EQ(a.AddSection(Data("Log_Data", {Numbers({1, 2})})), LASFILE_OK);
    a.SetFormat(false, ',');
    b = a;
    EXPECT_EQ(Format(b), "3\t");
    EXPECT_EQ(LastError(b), (ErrorRecord{LASFILE_NOT_ALLOWED_IN_VERSION, "VERSION", "DLM"}));
    WriterAccess::Sections(a)[0].m_curves[0].m_numbers[0] = 9;
    EXPECT_EQ(WriterAccess::Sections(b)[0].m_curves[0].m_numbers[0], 1);
    b = b;
    EXPECT_EQ(WriterAccess::Sections(b).size(), 1u);

    const CLasSection extra = Section("Extra_Parameter", LASSECTION_PARAMETER);
    ASSERT_EQ(a.AddSection(extra), LASFILE_OK);
    EXPECT_EQ(a.AddSection(extra), LASFILE_DUPLICATE_SECTION);
    a.Validate();  // appends "Well"
    EXPECT_EQ(a.AddSection(Section("WELL", LASSECTION_PARAMETER)), LASFILE_DUPLICATE_SECTION);
    a.Reset();
    EXPECT_TRUE(WriterAccess::Sections(a).empty());
    EXPECT_EQ(Format(a), "2 ");
    EXPECT_EQ(LastError(a), kClear);
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
    for (const char* name :
         {"WELL", "w", "Curve", "c", "PARAMETER", "p", "ascii", "A", "Log", "l", "Other", "o", "dOwNhOlE", "D"})
        EXPECT_EQ(add(false, name), LASFILE_OK) << name;
    for (const char* name : {"", "Log_Data", "Well[1]", "X", "Wells", "Curve "})
        EXPECT_EQ(add(false, name), LASFILE_BAD_NAME) << name;
    for (const char* name : {"ASCII", "log", "Log_Data", "Core_Data[2]", "My Section", "Xy"})
        EXPECT_EQ(add(true, name), LASFILE_OK) << name;
    for (const char* name : {"", "A", "W", "other", "OTHER"}) EXPECT_EQ(add(true, name), LASFILE_BAD_NAME) << name;
    // LAS 2.0 stores one-letter names in full and longer names as given,
    // after the duplicate test: "W" is compared with "well", not "Well".
    CLasWriter w;
    for (const char* name : {"A", "l", "p", "o", "d", "c", "well", "W", "LOG"})
        ASSERT_EQ(w.AddSection(Section(name, LASSECTION_PARAMETER)), LASFILE_OK) << name;
    EXPECT_EQ(Names(w), (List{"ASCII", "ASCII", "Parameter", "Other", "Downhole", "Curve", "well", "Well", "LOG"}));
}

TEST(WriterRules, DataSections)
{
    const struct {
        bool las3;
        std::vector<CLasCurve> curves;
        ErrorRecord record;
    } cases[] = {
        {false, {Numbers({1}), Texts({"a"})}, {LASFILE_BAD_VALUE, "ASCII", "", 1}},  // text only in LAS 3.0
        {true, {Numbers({1}), Texts({"a"})}, kClear},
        {false, {Texts({"a"}), Numbers({1})}, {LASFILE_BAD_VALUE, "ASCII", "", 0}},
        {true, {Texts({"a"}), Numbers({1})}, {LASFILE_BAD_VALUE, "Log_Data", "", 0}},  // the first column is numeric
        {true,
         {Numbers(std::vector<double>(10)), Numbers(std::vector<double>(10)), Numbers(std::vector<double>(9))},
         {LASFILE_BAD_VALUE, "Log_Data", "", 2}},
        {true, {Numbers({1, 2}), Texts({"a"})}, {LASFILE_BAD_VALUE, "Log_Data", "", 1}},
        {false, {}, kClear},
    };
    for (const auto& c : cases) {
        CLasWriter w;
        w.SetFormat(c.las3, ' ');
        w.AddSection(Data(c.las3 ? "Log_Data" : "ASCII", c.curves));
        EXPECT_EQ(LastError(w), c.record);
    }
    // A curve longer than a signed 32-bit count is refused before the row
    // test could see it cut to its length modulo 2^32. The bound is lowered
    // here: a curve at the real bound, 2^31 values, takes 16 GB.
    const size_t bound = detail::g_maxCurveValues;
    detail::g_maxCurveValues = 4;
    for (const auto& c :
         {std::make_pair(std::vector<CLasCurve>{Numbers({1, 2, 3, 4, 5}), Numbers({1})},
                         ErrorRecord{LASFILE_BAD_VALUE, "Log_Data", "", 0}),
          std::make_pair(std::vector<CLasCurve>{Numbers({1, 2, 3, 4, 5}), Texts({"a", "b", "c", "d", "e"})},
                         ErrorRecord{LASFILE_BAD_VALUE, "Log_Data", "", 0}),
          std::make_pair(std::vector<CLasCurve>{Numbers({1, 2, 3, 4}), Texts({"a", "b", "c", "d"})}, kClear)}) {
        CLasWriter w;
        w.SetFormat(true, ' ');
        w.AddSection(Data("Log_Data", c.first));
        EXPECT_EQ(LastError(w), c.second);
    }
    detail::g_maxCurveValues = bound;
    // The type is tested first when the rule is run on its own.
    CLasWriter w;
    EXPECT_EQ(WriterAccess::ValidateDataSection(w, Section("ASCII", LASSECTION_PARAMETER)), LASFILE_BAD_VALUE);
    EXPECT_EQ(LastError(w), (ErrorRecord{LASFILE_BAD_VALUE, "ASCII"}));
}

TEST(WriterRules, ParameterFieldsAndPassOrder)
{
    const struct {
        bool las3;
        std::vector<CLasParam> params;
        ErrorRecord record;
    } cases[] = {
        {true, {Param("A.B", "", "", "")}, {LASFILE_BAD_NAME, "Tops", "A.B"}},
        {true, {Param("M", "k g", "", "")}, {LASFILE_BAD_NAME, "Tops", "M"}},
        {false, {Param("V", "", "1{", "")}, {LASFILE_BAD_NAME, "Other", "V"}},
        {false, {Param("V", "", "}", "")}, {LASFILE_BAD_NAME, "Other", "V"}},
        {false, {Param("V", "", "a|b", "")}, {LASFILE_BAD_NAME, "Other", "V"}},
        {false, {Param("OK", "", "1.5: a b", "any .:{}| text"), Param("", "", "", "")}, kClear},
        {false, {Param("F", "", "", "", "{F}"), Param("G", "", "", "", "}F{")}, kClear},
        {false, {Param("F", "", "", "", "{F")}, {LASFILE_BAD_NAME, "Other", "F"}},
        {true, {Param("R", "", "", "", "", "RUNS")}, kClear},
        {false, {Param("R", "", "", "", "", "RUNS")}, {LASFILE_BAD_VALUE, "Other", "R"}},
        // A later pass on an early parameter comes after an earlier pass on a late one.
        {false,
         {Param("R", "", "", "", "", "RUNS"), Param("F", "", "", "", "{F"), Param("X:", "", "", "")},
         {LASFILE_BAD_NAME, "Other", "X:"}},
        {false, {Param("R", "", "", "", "", "RUNS"), Param("F", "", "", "", "{F")}, {LASFILE_BAD_NAME, "Other", "F"}},
    };
    for (const auto& c : cases) {
        CLasWriter w;
        w.SetFormat(c.las3, ' ');
        w.AddSection(Section(c.las3 ? "Tops" : "Other", LASSECTION_PARAMETER, c.params));
        EXPECT_EQ(LastError(w), c.record);
    }
    CLasWriter w;
    w.SetFormat(true, ' ');
    EXPECT_EQ(w.AddSection(Section("Tops", LASSECTION_ANY, {Param("A.B", "", "", "")})), LASFILE_BAD_VALUE);
    EXPECT_EQ(w.AddSection(Section("Tops", LASSECTION_DEFINITION)), LASFILE_OK);
}

// The stored sections as "name(lines)association", each definition section
// followed by its lines as "MNEM.UNIT:description{format}".
std::string Sections(CLasWriter& w)
{
    std::string text;
    for (const CLasSection& s : WriterAccess::Sections(w)) {
        text += (text.empty() ? "" : " ") + s.m_name + "(" + std::to_string(s.m_params.size()) + ")" + s.m_association;
        if (s.m_type == LASSECTION_DEFINITION)
            for (const CLasParam& p : s.m_params)
                text += " " + p.m_mnemonic + "." + p.m_unit + ":" + p.m_description + p.m_format;
    }
    return text;
}

TEST(Validate, CreatesLinksAndTestsTheDocument)
{
    const std::vector<CLasCurve> three = {Numbers({1, 2}, Param("DEPT", "M", "", "Depth")), Numbers({3, 4}),
                                          Numbers({5, 6}, Param("GR", "", "", ""))};
    const struct {
        const char* rule;
        bool las3;
        std::vector<CLasSection> given;
        ErrorRecord record;
        std::string sections;
    } cases[] = {
        {"an empty document lacks Curve", false, {}, {LASFILE_MISSING_SECTION, "Curve"}, "Well(0)"},
        {"Curve is filled from the curves",
         false,
         {Data("ASCII", three)},
         kClear,
         "Well(12) Curve(3) DEPT.M:Depth COL2.:Column 2{F} GR.: ASCII(0)Curve"},
        {"LAS 3.0 makes definitions by base name, {S} for text",
         true,
         {Data("Log_Data", {Numbers({1}), Texts({"a"})}), Data("Core_Data[1]", {Numbers({1})}),
          Data("Core_Data[2]", {Numbers({2})})},
         kClear,
         "Well(12) Core_Definition(1) COL1.:Column 1{F} Core_Data[1](0)Core_Definition Core_Data[2](0)Core_Definition "
         "Log_Definition(2) COL1.:Column 1{F} COL2.:Column 2{S} Log_Data(0)Log_Definition"},
        {"a missing definition named by two links is made once",
         true,
         {Data("Log_Data", {Numbers({1})}), Data("Core_Data", {Numbers({1})}, "X"),
          Data("Drill_Data", {Numbers({2})}, "X")},
         kClear,
         "Well(12) X(1) COL1.:Column 1{F} Core_Data(0)X Drill_Data(0)X Log_Definition(1) COL1.:Column 1{F} "
         "Log_Data(0)Log_Definition"},
        {"Curve given, the empty link of ASCII names nothing",
         false,
         {Section("Curve", LASSECTION_DEFINITION), Data("ASCII", {Numbers({1})})},
         {LASFILE_MISSING_SECTION},
         "Well(0) Curve(0) ASCII(0)"},
        {"a link to a missing section in LAS 2.0 makes it, and Curve is missing",
         false,
         {Data("ASCII", {Numbers({1})}, "Defs")},
         {LASFILE_MISSING_SECTION, "Curve"},
         "Well(0) Defs(0) ASCII(0)Defs"},
        {"one definition too few names the data section",
         false,
         {Section("Curve", LASSECTION_DEFINITION, {Param("DEPT", "", "", "")}),
          Data("ASCII", {Numbers({1}), Numbers({2})}, "Curve")},
         {LASFILE_MISSING_SECTION, "ASCII"},
         "Well(0) Curve(1) DEPT.: ASCII(0)Curve"},
        {"LAS 3.0 data of another base only lacks Curve",
         true,
         {Data("Core_Data", {Numbers({1})})},
         {LASFILE_MISSING_SECTION, "Curve"},
         "Well(0) Core_Data(0)Core_Definition Core_Definition(0)"},
        {"a Curve handed over first is found",
         false,
         {Section("Curve", LASSECTION_DEFINITION, {Param("DEPT", "M", "", "d")}),
          Data("ASCII", {Numbers({1})}, "Curve")},
         kClear,
         "Well(12) Curve(1) DEPT.M:d ASCII(0)Curve"},
        {"a Log_Definition handed over first is found",
         true,
         {Section("Log_Definition", LASSECTION_DEFINITION, {Param("DEPT", "M", "", "d")}),
          Data("Log_Data", {Numbers({1})}, "Log_Definition")},
         kClear,
         "Well(12) Log_Definition(1) DEPT.M:d Log_Data(0)Log_Definition"},
        {"a linked definition handed over first is found",
         true,
         {Section("Run_Definition", LASSECTION_DEFINITION, {Param("A", "", "", "a")}),
          Data("Core_Data", {Numbers({1})}, "Run_Definition"), Data("Log_Data", {Numbers({1})})},
         kClear,
         "Well(12) Run_Definition(1) A.:a Core_Data(0)Run_Definition Log_Definition(1) COL1.:Column 1{F} "
         "Log_Data(0)Log_Definition"},
        {"log data without curves passes",
         true,
         {Data("Log_Data", {})},
         kClear,
         "Well(12) Log_Definition(0) Log_Data(0)Log_Definition"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rule);
        CLasWriter w;
        ASSERT_EQ(w.SetFormat(c.las3, ' '), LASFILE_OK);
        for (const CLasSection& s : c.given) ASSERT_EQ(w.AddSection(s), LASFILE_OK);
        ASSERT_NE(w.AddSection(CLasSection()), LASFILE_OK);  // a record that Validate replaces
        EXPECT_EQ(w.Validate(), c.record.code);
        EXPECT_EQ(LastError(w), c.record);
        EXPECT_EQ(Sections(w), c.sections);
        if (c.record.code != LASFILE_OK) continue;
        EXPECT_EQ(w.Validate(), LASFILE_OK);  // a second run finds everything in place
        EXPECT_EQ(Sections(w), c.sections);
    }
}

// Curves of unequal length, put in after AddSection tested them: Validate
// names the data section and the first column that differs, and fills no
// definition. Curves that a host hangs on a parameter section are no
// columns and are not tested.
TEST(Validate, ColumnLengthsAreTestedInDataSectionsOnly)
{
    for (bool inData : {true, false}) {
        CLasWriter w;
        ASSERT_EQ(w.AddSection(Section("Parameter", LASSECTION_PARAMETER)), LASFILE_OK);
        ASSERT_EQ(w.AddSection(Data("ASCII", {Numbers({1, 2}), Numbers({2, 3})})), LASFILE_OK);
        WriterAccess::Sections(w)[inData ? 1 : 0].m_curves = {Numbers({1, 2}), Numbers({2, 3, 4})};
        if (inData) {
            EXPECT_EQ(w.Validate(), LASFILE_BAD_VALUE);
            EXPECT_EQ(LastError(w), (ErrorRecord{LASFILE_BAD_VALUE, "ASCII", "", 1}));
            EXPECT_EQ(Sections(w), "Well(0) Parameter(0) Curve(0) ASCII(0)Curve");
        } else {
            EXPECT_EQ(w.Validate(), LASFILE_OK);
        }
    }
}

// A section of the type its name suggests; "name|link" sets the association.
CLasSection Typed(const std::string& text)
{
    const std::string name = text.substr(0, text.find('|'));
    ELASSECTIONTYPE type = LASSECTION_PARAMETER;
    if (name.find("Data") != std::string::npos || name == "ASCII" || name == "LOG" || name == "Core")
        type = LASSECTION_DATA;
    if (name.find("Definition") != std::string::npos || name == "Curve") type = LASSECTION_DEFINITION;
    return Section(name, type, {}, text.find('|') == std::string::npos ? "" : text.substr(text.find('|') + 1));
}

TEST(SortSections, OrderOfEachVersion)
{
    const struct {
        bool las3;
        List given;
        List sorted;
    } cases[] = {
        // empty: refused, nothing moved
        {false, {"ASCII", "Other", "Curve", "Well", "Parameter"}, {"Well", "Parameter", "Curve", "Other", "ASCII"}},
        {false,
         {"ASCII", "Downhole", "LOG", "curve", "Other", "WELL", "Well"},
         {"WELL", "curve", "Downhole", "LOG", "Other", "Well", "ASCII"}},
        {false, {"ASCII", "LOG"}, {"LOG", "ASCII"}},
        {false, {"ASCII|ascii", "Other"}, {"Other", "ASCII"}},  // main data linked to itself: placed once
        {true,
         {"Log_Data", "Log_Definition", "Core_Data", "Tops_Parameter", "Well", "Core_Definition", "Core_Parameter",
          "Log_Parameter"},
         {"Well", "Core_Parameter", "Core_Definition", "Core_Data", "Tops_Parameter", "Log_Parameter", "Log_Definition",
          "Log_Data"}},
        // A single data section is never grouped, whatever its name.
        {true, {"Core_Data", "Core_Parameter", "Other_Stuff"}, {"Core_Data", "Core_Parameter", "Other_Stuff"}},
        // Indexed data sections share the parameter section of their base.
        {true,
         {"ASCII", "Core_Parameter[1]", "Core_Data[2]", "Core_Data[1]", "Core_Parameter", "Core_Definition"},
         {"Core_Parameter", "Core_Definition", "Core_Data[2]", "Core_Data[1]", "Core_Parameter[1]", "ASCII"}},
        {true, {"Log_Data", "Log_Data[2]"}, {"Log_Data[2]", "Log_Data"}},  // a secondary data section
        // Definitions are found by link, else by base name.
        {true,
         {"Shared", "A_Data|Shared", "B_Data|Shared", "Log_Data", "Log_Definition", "Curve", "C_Data|Curve"},
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
        EXPECT_EQ(LastError(w), refused ? ErrorRecord{LASFILE_BAD_FORMAT} : kClear);
        if (refused) continue;
        EXPECT_EQ(WriterAccess::SortSections(w), LASFILE_OK);  // sorting twice changes nothing
        EXPECT_EQ(Names(w), c.sorted);
    }
}

// The record after FillWellSection ran `runs` times on a Well section and an
// "ASCII" section of one curve, and the Well section as " MNEM=value ...".
struct Filled {
    ErrorRecord record;
    std::string well;
};

Filled Fill(std::vector<CLasParam> well, std::vector<CLasCurve> curves, int runs = 1)
{
    CLasWriter w;
    EXPECT_EQ(w.AddSection(Section("Well", LASSECTION_HEADER, std::move(well))), LASFILE_OK);
    EXPECT_EQ(w.AddSection(Data("ASCII", std::move(curves))), LASFILE_OK);
    for (int i = 0; i < runs; ++i) WriterAccess::FillWellSection(w);
    Filled filled{LastError(w), ""};
    for (const CLasParam& p : WriterAccess::Sections(w)[0].m_params)
        filled.well += " " + p.m_mnemonic + "=" + p.m_value;
    return filled;
}

TEST(WellCompletion, DepthRangeAndAppendedParameters)
{
    const std::string rest = " COMP=Not Specified WELL=Not Specified FLD=Not Specified LOC=Not Specified";
    const std::string tail = " CNTY=Not Specified STAT=Not Specified CTRY=Not Specified SRVC=Not Specified";
    const std::string full =
        " STRT=100.00000000 STOP=100.50000000 STEP=0.25000000" + rest + " API=Not Specified" + tail;
    const struct {
        const char* rule;
        std::vector<CLasParam> well;
        std::vector<CLasCurve> curves;
        int runs;
        std::string filled;
    } cases[] = {
        {"the depth range of the first curve, then the missing names", {}, {Numbers({100, 100.25, 100.5})}, 1, full},
        {"a second run appends nothing", {}, {Numbers({100, 100.25, 100.5})}, 2, full},
        {"UWI stands for API, STAT for CNTY, STAT and CTRY",
         {Param("uwi", "", "1", ""), Param("Stat", "", "AB", "")},
         {Numbers({1})},
         1,
         " uwi=1 Stat=AB STRT=1.00000000 STOP=1.00000000 STEP=0.00000000" + rest + " SRVC=Not Specified"},
        {"PROV stands for CNTY, STAT and CTRY",
         {Param("PROV", "", "x", ""), Param("API", "", "1", "")},
         {Numbers({1})},
         1,
         " PROV=x API=1 STRT=1.00000000 STOP=1.00000000 STEP=0.00000000" + rest + " SRVC=Not Specified"},
        {"no curves count as zero",
         {},
         {},
         1,
         " STRT=0.00000000 STOP=0.00000000 STEP=0.00000000" + rest + " API=Not Specified" + tail},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rule);
        const Filled got = Fill(c.well, c.curves, c.runs);
        EXPECT_EQ(got.record, kClear);
        EXPECT_EQ(got.well, c.filled);
    }
    // A curve without values against a present STOP: the first row it lacks.
    const Filled empty = Fill({Param("STOP", "", "1", "")}, {Numbers({})});
    EXPECT_EQ(empty.record, (ErrorRecord{LASFILE_BAD_FORMAT, "ASCII", "STOP", 0}));
    EXPECT_EQ(empty.well, " STOP=1 STRT=0.00000000");
}

// A present value is tested against the data and never rewritten; a
// failure names the parameter, column 0 and the row whose depth it missed.
TEST(WellCompletion, PresentValuesAreTestedWithTheAbsoluteTolerance)
{
    const struct {
        std::vector<CLasParam> well;
        std::vector<double> depths;
        ErrorRecord record;
        std::string wellStart;
    } cases[] = {
        {{Param("strt", "", "100", "")}, {100.00000004}, kClear, " strt=100 STOP"},
        {{Param("STRT", "", "100", "")}, {100.0000002}, {LASFILE_BAD_FORMAT, "ASCII", "STRT", 0, 0}, " STRT=100"},
        {{Param("STRT", "", "abc", "")}, {0.00000005}, kClear, " STRT=abc STOP"},
        {{Param("STOP", "", "5", "")},
         {1, 2, 3},
         {LASFILE_BAD_FORMAT, "ASCII", "STOP", 0, 2},
         " STOP=5 STRT=1.00000000"},
        {{Param("STEP", "", "0", "")}, {1, 5, 7}, kClear, " STEP=0 STRT"},
        {{Param("STEP", "", "x", "")}, {1, 5, 7}, kClear, " STEP=x STRT"},
        {{Param("STEP", "", "3", "")}, {1}, kClear, " STEP=3 STRT"},
        {{Param("STEP", "", "-0.5", "")}, {2, 1.5, 1}, kClear, " STEP=-0.5 STRT"},
        {{Param("STEP", "", "0.5", "")},
         {2, 1.5, 1},
         {LASFILE_BAD_FORMAT, "ASCII", "STEP", 0, 1},
         " STEP=0.5 STRT=2.00000000 STOP=1.00000000"},
        // A NaN difference is not greater than the tolerance.
        {{Param("STRT", "", "nan", ""), Param("STOP", "", "2", "")}, {1, NAN}, kClear, " STRT=nan STOP=2"},
    };
    for (const auto& c : cases) {
        const Filled got = Fill(c.well, {Numbers(c.depths)});
        EXPECT_EQ(got.record, c.record) << c.wellStart;
        EXPECT_EQ(got.well.substr(0, c.wellStart.size()), c.wellStart);
    }
    // Uneven data without STEP passes the first run and fails the second at row 2.
    EXPECT_EQ(Fill({}, {Numbers({100, 101, 103})}, 1).record, kClear);
    EXPECT_EQ(Fill({}, {Numbers({100, 101, 103})}, 2).record, (ErrorRecord{LASFILE_BAD_FORMAT, "ASCII", "STEP", 0, 2}));
    // A NaN depth gives the same on every run.
    EXPECT_EQ(Fill({}, {Numbers({NAN, 1, 2})}, 2).record, kClear);
}

TEST(WellCompletion, MissingSections)
{
    CLasWriter w;
    EXPECT_EQ(WriterAccess::FillWellSection(w), LASFILE_MISSING_SECTION);
    EXPECT_EQ(LastError(w), (ErrorRecord{LASFILE_MISSING_SECTION, "Well"}));
    ASSERT_EQ(w.AddSection(Section("Well", LASSECTION_HEADER)), LASFILE_OK);
    EXPECT_EQ(WriterAccess::FillWellSection(w), LASFILE_MISSING_SECTION);
    EXPECT_EQ(LastError(w), (ErrorRecord{LASFILE_MISSING_SECTION, "ASCII"}));
    ASSERT_EQ(w.AddSection(Data("LOG", {Numbers({7, 8})})), LASFILE_OK);  // "LOG" serves without "ASCII"
    EXPECT_EQ(WriterAccess::FillWellSection(w), LASFILE_OK);
    EXPECT_EQ(WriterAccess::Sections(w)[0].m_params[0].m_value, "7.00000000");
}

}  // namespace
}  // namespace quarl::test
