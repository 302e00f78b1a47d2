// Section headers, names and the dispatch of a section by its name; the
// lookup of a stored section by name and of a data section's definition.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/platform.h"
#include "reader/section_names.h"
#include "support/reader_access.h"

namespace quarl::test {
namespace {

TEST(SectionHeader, NameAssociationAndSplit)
{
    std::string name = "old", association = "old";
    EXPECT_FALSE(ParseSectionHeader("", &name, &association));
    EXPECT_FALSE(ParseSectionHeader(nullptr, &name, &association));
    EXPECT_FALSE(ParseSectionHeader("~A", nullptr, &association));
    EXPECT_EQ(name, "old");
    const struct {
        const char* line;
        const char* parsed;  // "name|association"
    } cases[] = {
        {"~Well Information | x", "Well|"},
        {"~Log_Data|Log_Definition extra", "Log_Data|Log_Definition"},
        {"~ \tLog_Data", "Log_Data|"},
        {"~", "|"},
        {"  Core_Data[2]  |\t Core_Definition[2]|x", "Core_Data[2]|Core_Definition[2]"},
    };
    for (const auto& c : cases) {
        ASSERT_TRUE(ParseSectionHeader(c.line, &name, &association)) << c.line;
        EXPECT_EQ(name + "|" + association, c.parsed);
    }
    std::string base, suffix, index;
    ASSERT_TRUE(SplitSectionName("~Log_Data[2] x", true, &base, &suffix, &index));
    EXPECT_EQ(base + " " + suffix + " " + index, "Log _Data [2]");
    ASSERT_TRUE(SplitSectionName("Core_Run[2]", true, &base, &suffix, &index));
    EXPECT_EQ(base + " " + suffix, "Core_Run _Run");
    ASSERT_TRUE(SplitSectionName("A_B_data", false, &base, &suffix, nullptr));
    EXPECT_EQ(base + " " + suffix, "A_B_data _data");
    EXPECT_FALSE(SplitSectionName("", true, &base, nullptr, nullptr));
    for (const char* log : {"Log_Data[2]", "a[1]", "ASCII"}) EXPECT_TRUE(IsLogDataName(log)) << log;
    for (const char* other : {"Core_Data", ""}) EXPECT_FALSE(IsLogDataName(other)) << other;
    EXPECT_TRUE(IsLogDefinitionName("~Curve Information"));
    EXPECT_TRUE(IsLogDefinitionName("log_definition"));
    EXPECT_FALSE(IsLogDefinitionName("Log_Parameter"));
}

TEST(Dispatch, SectionsAreReadAsTheirNameSays)
{
    const std::string v2 = "~VeRsIoN\nVERS. 2.0 : v\n~W\nSTEP.M 1 : s\n";
    const std::string v3 = "~Version\nVERS. 3.0 : v\n~Well\nSTEP.M 1 : s\n";
    const struct {
        std::string text;
        ELASFILEERROR result;
        std::string sections;  // behind Version and Well
    } cases[] = {
        {v2 + "~PARAMETER\nA.M 1 : a\n~p\n~cUrVe\nDEPT.M : d\n~a\n1\n", LASFILE_OK,
         "PARAMETER:0(1) p:0(0) cUrVe:1/32(1) a:2/16|cUrVe{1}"},
        {v2 + "~Log_Parameter\n~Log_Definition\nD.M : d\n~Log_Data\n5\n", LASFILE_OK,
         "Log_Parameter:0(0) Log_Definition:1/32(1) Log_Data:2/16|Log_Definition{5}"},
        {v2 + "~C\nD.M : d\n~A_B_Data | C\n1\n~Log\n2\n~L\n3\n~ASCII\n4\n", LASFILE_OK,
         "C:1/32(1) A_B_Data:2|C{1} Log:2/16|C{2} L:2/16|C{3} ASCII:2/16|C{4}"},
        // Unknown names are skipped whole; a known suffix is read without
        // asking whether a definition exists.
        {v2 + "~Other\nfree text : { | }\n~Tops\nA.M 1 : a\n~\nx\n~Drilling\n1 2\n~P\nA.M 1 : a\n", LASFILE_OK,
         "P:0(1)"},
        {v2 + "~Drilling_Data\n1 2\n", LASFILE_BAD_FORMAT, ""},
        // "Other" is data in version 3 only, and only with a definition.
        {v3 + "~Other_Definition\nX.M : x\n~Other\n7\n", LASFILE_OK, "Other_Definition:1(1) Other:2|Other_Definition{7}"},
        {v3 + "~Other\n7\n~P\nA.M 1 : a\n", LASFILE_OK, "P:0(1)"},
        {v2 + "~Other_Definition\nX.M : x\n~Other\n7\n", LASFILE_OK, "Other_Definition:1(1)"},
        // Indexed sections are read as their suffix says; Curve[1] finds no
        // definition and is skipped.
        {v2 + "~Core_Definition\nA.M : a\n~Core_Parameter[2]\nP.M 1 : p\n~Core_Definition[2]\nB.M : b\nC.M : c\n"
              "~Core_Data[2]\n1 2\n~Core_Data\n3\n~Curve[1]\n4\n",
         LASFILE_OK,
         "Core_Definition:1(1) Core_Parameter[2]:0(1) Core_Definition[2]:1(2) "
         "Core_Data[2]:2|Core_Definition[2]{1;2} Core_Data:2|Core_Definition{3}"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        CLasReader reader;
        EXPECT_EQ(OpenText(reader, c.text), c.result);
        EXPECT_EQ(reader.CountSectionsByType(LASSECTION_HEADER), 2);
        EXPECT_EQ(Dump(reader, 2), c.sections);
    }
    // "~Vers" passes the first-line test but is skipped: the next section is first.
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, "~Vers\nVERS. 2.0 : v\n~Well\nA.M 1 : a\n"), LASFILE_OK);
    EXPECT_EQ(Dump(reader), "Well:3(1)");
}

TEST(Lookup, SectionByNameAndDefinitionOfDataSection)
{
    CLasReader reader;
    for (const char* name : {"", "Well", "WELL", "Log_Definition", "Curve", "CORE_DEFINITION", "Core_Run_Definition[2]"})
        Access::AddSection(reader, name);
    EXPECT_EQ(Access::FindSectionIndexByName(reader, nullptr), -1);
    EXPECT_EQ(Access::FindSectionIndexByName(reader, ""), -1);
    EXPECT_EQ(Access::FindSectionIndexByName(reader, "well"), 1);  // the first in any case
    EXPECT_EQ(Access::FindSectionIndexByName(reader, "Wel"), -1);
    const struct {
        const char* data;
        int32_t index;
    } cases[] = {{"Log_Data[2]", 4}, {"", -1}, {"core_data", 5}, {"Core_Data[3]", 5}, {"Core", 5},
                 {"Core_Run[2]", 6}, {"Core_Run", -1}, {"Other_Data", -1}};
    for (const auto& c : cases) {
        std::string found = "untouched";
        EXPECT_EQ(Access::FindDefinition(reader, c.data, &found), c.index) << c.data;
        EXPECT_EQ(found, c.index < 0 ? "untouched" : reader.GetSection(static_cast<uint64_t>(c.index)).m_name);
        EXPECT_EQ(Access::FindDefinition(reader, c.data, nullptr), c.index) << c.data;
    }
}

// The lookup tests lengths and compares from the end first; it must find
// what a plain case-blind comparison from the start finds, also for names
// with a NUL inside that a host may have set.
TEST(Lookup, FindSectionIndexByNameEqualsAPlainComparison)
{
    const std::vector<std::string> names = {"Core_Data[12]", "core_data[12]", "Core_Data[2]",
                                            "Core_Data", std::string("Core\0Data", 9),
                                            std::string("Well\0x", 6), "well", "Well_",
                                            "[12]", "A", "a", "b", "~", "Core_Data[12] "};
    CLasReader reader;
    for (const std::string& name : names) Access::AddSection(reader, name);
    for (const char* query : {"Core_Data[12]", "CORE_DATA[2]", "Core", "WELL", "well_", "a",
                              "B", "[12]", "2]", "Core_Data[12] ", "Core_Data[1", "x"}) {
        int32_t want = -1;
        for (size_t i = 0; i < names.size() && want < 0; ++i)
            if (AsciiEqualNoCase(query, names[i].c_str())) want = static_cast<int32_t>(i);
        EXPECT_EQ(Access::FindSectionIndexByName(reader, query), want) << query;
    }
}

}  // namespace
}  // namespace quarl::test
