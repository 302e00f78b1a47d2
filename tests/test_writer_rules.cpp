// The rules that a section must pass before it is stored.
#include <gtest/gtest.h>

#include "support/writer_access.h"

namespace quarl {
namespace {

using detail::WriterAccess;
using test::Data;
using test::Numbers;
using test::Param;
using test::Record;
using test::Section;
using test::Texts;

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
    EXPECT_EQ(test::Names(w),
              (std::vector<std::string>{"ASCII", "Parameter", "Other", "Downhole", "Curve", "well", "LOG"}));
    for (const char* unchanged : {"X", "", "WW"}) {
        std::string name = unchanged;
        WriterAccess::GetLAS2FullSectionName(w, name);
        EXPECT_EQ(name, unchanged);
    }
}

TEST(WriterRules, DataSections)
{
    const struct {
        bool las3;
        std::vector<CLasCurve> curves;
        std::string record;
    } cases[] = {
        {false, {Numbers({1}), Texts({"a"})}, "7 ASCII - 1 -1"},  // text only in LAS 3.0
        {true, {Numbers({1}), Texts({"a"})}, "0 - - -1 -1"},
        {false, {Texts({"a"}), Numbers({1})}, "7 ASCII - 0 -1"},
        {true, {Texts({"a"}), Numbers({1})}, "7 Log_Data - 0 -1"},  // the first column is numeric
        {true, {Numbers(std::vector<double>(10)), Numbers(std::vector<double>(10)), Numbers(std::vector<double>(9))},
         "7 Log_Data - 2 -1"},
        {true, {Numbers({1, 2}), Texts({"a"})}, "7 Log_Data - 1 -1"},
        {false, {}, "0 - - -1 -1"},
    };
    for (const auto& c : cases) {
        CLasWriter w;
        w.SetFormat(c.las3, ' ');
        w.AddSection(Data(c.las3 ? "Log_Data" : "ASCII", c.curves));
        EXPECT_EQ(Record(w), c.record);
    }
    // The type is tested first when the rule is run on its own.
    CLasWriter w;
    EXPECT_EQ(WriterAccess::ValidateDataSection(w, Section("ASCII", LASSECTION_PARAMETER)), LASFILE_BAD_VALUE);
    EXPECT_EQ(Record(w), "7 ASCII - -1 -1");
}

TEST(WriterRules, ParameterFieldsAndPassOrder)
{
    const struct {
        bool las3;
        std::vector<CLasParam> params;
        std::string record;
    } cases[] = {
        {true, {Param("A.B", "", "", "")}, "10 Tops A.B -1 -1"},
        {true, {Param("M", "k g", "", "")}, "10 Tops M -1 -1"},
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

}  // namespace
}  // namespace quarl
