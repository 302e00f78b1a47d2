// The rules that a section must pass before it is stored.
#include <gtest/gtest.h>

#include "support/writer_access.h"

namespace quarl {
namespace {

using detail::WriterAccess;
using test::Data;
using test::Numbers;
using test::Param;
using test::Section;
using test::Texts;

ELASFILEERROR AddNamed(bool las3, const std::string& name)
{
    CLasWriter w;
    w.SetFormat(las3, ' ');
    return w.AddSection(Section(name, LASSECTION_PARAMETER));
}

TEST(WriterRules, SectionNamesOfEachVersion)
{
    for (const char* name : {"WELL", "w", "Curve", "c", "PARAMETER", "p", "ascii", "A", "Log", "l",
                             "Other", "o", "dOwNhOlE", "D"})
        EXPECT_EQ(AddNamed(false, name), LASFILE_OK) << name;
    for (const char* name : {"", "Log_Data", "Well[1]", "X", "Wells", "Curve "})
        EXPECT_EQ(AddNamed(false, name), LASFILE_BAD_NAME) << name;
    for (const char* name : {"ASCII", "log", "Log_Data", "Core_Data[2]", "My Section", "Xy"})
        EXPECT_EQ(AddNamed(true, name), LASFILE_OK) << name;
    for (const char* name : {"", "A", "W", "other", "OTHER"})
        EXPECT_EQ(AddNamed(true, name), LASFILE_BAD_NAME) << name;
}

TEST(WriterRules, Las2StoresShortNamesInFullAndLongNamesAsGiven)
{
    CLasWriter w;
    for (const char* name : {"A", "p", "o", "d", "c"}) ASSERT_EQ(w.AddSection(Section(name, LASSECTION_PARAMETER)), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Section("well", LASSECTION_HEADER)), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Section("LOG", LASSECTION_DATA)), LASFILE_OK);
    EXPECT_EQ(test::Names(w), (std::vector<std::string>{"ASCII", "Parameter", "Other", "Downhole", "Curve",
                                                        "well", "LOG"}));
    std::string name = "L";
    WriterAccess::GetLAS2FullSectionName(w, name);
    EXPECT_EQ(name, "ASCII");
    for (const char* unchanged : {"X", "", "WW"}) {
        name = unchanged;
        WriterAccess::GetLAS2FullSectionName(w, name);
        EXPECT_EQ(name, unchanged);
    }
}

struct DataCase {
    bool las3;
    std::vector<CLasCurve> curves;
    ELASFILEERROR result;
    int32_t column;
};

TEST(WriterRules, DataSections)
{
    const std::vector<DataCase> cases = {
        {false, {Numbers({1}), Texts({"a"})}, LASFILE_BAD_VALUE, 1},
        {true, {Numbers({1}), Texts({"a"})}, LASFILE_OK, -1},
        {false, {Texts({"a"}), Numbers({1})}, LASFILE_BAD_VALUE, 0},
        {true, {Texts({"a"}), Numbers({1})}, LASFILE_BAD_VALUE, 0},
        {true, {Numbers(std::vector<double>(10)), Numbers(std::vector<double>(10)), Numbers(std::vector<double>(9))},
         LASFILE_BAD_VALUE, 2},
        {true, {Numbers({1, 2}), Texts({"a"})}, LASFILE_BAD_VALUE, 1},
        {false, {Numbers({1, 2})}, LASFILE_OK, -1},
        {false, {}, LASFILE_OK, -1},
    };
    for (size_t i = 0; i < cases.size(); ++i) {
        CLasWriter w;
        w.SetFormat(cases[i].las3, ' ');
        EXPECT_EQ(w.AddSection(Data(cases[i].las3 ? "Log_Data" : "ASCII", cases[i].curves)), cases[i].result) << i;
        EXPECT_EQ(w.GetLastErrorColumn(), cases[i].column) << i;
        EXPECT_EQ(w.GetLastErrorRow(), -1);
    }
    // The type is tested first when the rule is run on its own.
    CLasWriter w;
    EXPECT_EQ(WriterAccess::ValidateDataSection(w, Section("ASCII", LASSECTION_PARAMETER)), LASFILE_BAD_VALUE);
    EXPECT_STREQ(w.GetLastErrorSection(), "ASCII");
    EXPECT_EQ(w.GetLastErrorColumn(), -1);
}

// The result and the reported mnemonic of a parameter section.
std::pair<ELASFILEERROR, std::string> CheckParams(bool las3, std::vector<CLasParam> params,
                                                  ELASSECTIONTYPE type = LASSECTION_PARAMETER)
{
    CLasWriter w;
    w.SetFormat(las3, ' ');
    const ELASFILEERROR result = w.AddSection(Section(las3 ? "Tops" : "Other", type, std::move(params)));
    const char* param = w.GetLastErrorParam();
    return {result, param ? param : ""};
}

TEST(WriterRules, ParameterFieldsAndPassOrder)
{
    using Result = std::pair<ELASFILEERROR, std::string>;
    EXPECT_EQ(CheckParams(true, {Param("A.B", "", "", "")}), Result(LASFILE_BAD_NAME, "A.B"));
    EXPECT_EQ(CheckParams(true, {Param("M", "k g", "", "")}), Result(LASFILE_BAD_NAME, "M"));
    for (const char* bad : {"1{", "}", "a|b"})
        EXPECT_EQ(CheckParams(false, {Param("V", "", bad, "")}), Result(LASFILE_BAD_NAME, "V")) << bad;
    EXPECT_EQ(CheckParams(false, {Param("OK", "", "1.5: a b", "any .:{}| text")}), Result(LASFILE_OK, ""));
    EXPECT_EQ(CheckParams(false, {Param("", "", "", "")}), Result(LASFILE_OK, ""));
    EXPECT_EQ(CheckParams(false, {Param("F", "", "", "", "{F}"), Param("G", "", "", "", "}F{")}),
              Result(LASFILE_OK, ""));
    EXPECT_EQ(CheckParams(false, {Param("F", "", "", "", "{F")}), Result(LASFILE_BAD_NAME, "F"));
    EXPECT_EQ(CheckParams(true, {Param("R", "", "", "", "", "RUNS")}), Result(LASFILE_OK, ""));
    EXPECT_EQ(CheckParams(false, {Param("R", "", "", "", "", "RUNS")}), Result(LASFILE_BAD_VALUE, "R"));
    // A later pass on an early parameter comes after an earlier pass on a
    // late one.
    EXPECT_EQ(CheckParams(false, {Param("R", "", "", "", "", "RUNS"), Param("F", "", "", "", "{F"),
                                  Param("X:", "", "", "")}),
              Result(LASFILE_BAD_NAME, "X:"));
    EXPECT_EQ(CheckParams(false, {Param("R", "", "", "", "", "RUNS"), Param("F", "", "", "", "{F")}),
              Result(LASFILE_BAD_NAME, "F"));
    EXPECT_EQ(CheckParams(true, {Param("A.B", "", "", "")}, LASSECTION_ANY), Result(LASFILE_BAD_VALUE, ""));
    EXPECT_EQ(CheckParams(true, {}, LASSECTION_DEFINITION), Result(LASFILE_OK, ""));
}

}  // namespace
}  // namespace quarl
