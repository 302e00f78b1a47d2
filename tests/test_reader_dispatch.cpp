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

TEST(SectionHeader, NameAndAssociation)
{
    std::string name = "old";
    std::string association = "old";
    EXPECT_FALSE(ParseSectionHeader("", &name, &association));
    EXPECT_FALSE(ParseSectionHeader(nullptr, &name, &association));
    EXPECT_FALSE(ParseSectionHeader("~A", nullptr, &association));
    EXPECT_EQ(name, "old");

    const struct {
        const char* line;
        const char* name;
        const char* association;
    } cases[] = {
        {"~Well Information | x", "Well", ""},
        {"~Log_Data | Log_Definition", "Log_Data", "Log_Definition"},
        {"~Log_Data|Log_Definition extra", "Log_Data", "Log_Definition"},
        {"~ \tLog_Data", "Log_Data", ""},
        {"~", "", ""},
        {"  Core_Data[2]  |\t Core_Definition[2]|x", "Core_Data[2]", "Core_Definition[2]"},
    };
    for (const auto& c : cases) {
        ASSERT_TRUE(ParseSectionHeader(c.line, &name, &association)) << c.line;
        EXPECT_EQ(name, c.name) << c.line;
        EXPECT_EQ(association, c.association) << c.line;
    }
}

TEST(SectionHeader, SplitAndLogNames)
{
    std::string base, suffix, index;
    ASSERT_TRUE(SplitSectionName("~Log_Data[2] x", true, &base, &suffix, &index));
    EXPECT_EQ(base, "Log");
    EXPECT_EQ(suffix, "_Data");
    EXPECT_EQ(index, "[2]");
    ASSERT_TRUE(SplitSectionName("Core_Run[2]", true, &base, &suffix, &index));
    EXPECT_EQ(base, "Core_Run");
    EXPECT_EQ(suffix, "_Run");
    ASSERT_TRUE(SplitSectionName("A_B_data", false, &base, &suffix, nullptr));
    EXPECT_EQ(base, "A_B_data");
    EXPECT_EQ(suffix, "_data");
    EXPECT_FALSE(SplitSectionName("", true, &base, nullptr, nullptr));

    EXPECT_TRUE(IsLogDataName("Log_Data[2]"));
    EXPECT_TRUE(IsLogDataName("a[1]"));
    EXPECT_TRUE(IsLogDataName("ASCII"));
    EXPECT_FALSE(IsLogDataName("Core_Data"));
    EXPECT_FALSE(IsLogDataName(""));
    EXPECT_TRUE(IsLogDefinitionName("~Curve Information"));
    EXPECT_TRUE(IsLogDefinitionName("log_definition"));
    EXPECT_FALSE(IsLogDefinitionName("Log_Parameter"));
}

const std::string kHead = "~Version\nVERS. 2.0 : v\n~Well\nSTEP.M 1 : s\n";

// Reads kHead plus `body` and gives "name:type" of each section behind the
// first two, joined by spaces.
std::string Dispatched(const std::string& body, ELASFILEERROR expected = LASFILE_OK,
                       const std::string& head = kHead)
{
    CLasReader reader;
    EXPECT_EQ(OpenText(reader, head + body), expected) << body;
    std::string result;
    for (size_t i = 2; i < reader.size(); ++i) {
        const CLasSection& s = reader.GetSection(static_cast<uint64_t>(i));
        if (!result.empty()) result += ' ';
        result += s.m_name + ":" + std::to_string(s.m_type);
    }
    return result;
}

TEST(Dispatch, KnownNamesGoToTheirReaders)
{
    EXPECT_EQ(Dispatched("~PARAMETER\nA.M 1 : a\n~p\n~cUrVe\nDEPT.M : d\n~a\n1\n"),
              "PARAMETER:0 p:0 cUrVe:1 a:2");
    EXPECT_EQ(Dispatched("~Log_Parameter\n~Log_Definition\nD.M : d\n~Log_Data\n5\n"),
              "Log_Parameter:0 Log_Definition:1 Log_Data:2");
    EXPECT_EQ(Dispatched("~C\nD.M : d\n~A_B_Data | C\n1\n~Log\n2\n~L\n3\n~ASCII\n4\n"),
              "C:1 A_B_Data:2 Log:2 L:2 ASCII:2");
}

TEST(Dispatch, HeaderSectionsAreTypedAsHeaders)
{
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, "~VeRsIoN\nVERS. 2.0 : v\n~W\nA.M 1 : a\n~Curve\nD.M : d\n"),
              LASFILE_OK);
    EXPECT_EQ(reader.GetSection(0ull).m_type, LASSECTION_HEADER);
    EXPECT_EQ(reader.GetSection(1ull).m_type, LASSECTION_HEADER);
    EXPECT_EQ(reader.GetSection(2ull).m_flags, CLasSection::kFlagLogDefinition);
    EXPECT_EQ(reader.GetSection(1ull).m_flags, 0u);
}

TEST(Dispatch, UnknownNamesAreSkippedWhole)
{
    EXPECT_EQ(Dispatched("~Other\nfree text : { | }\n~Tops\nA.M 1 : a\n~\nx\n~P\nA.M 1 : a\n"), "P:0");
    EXPECT_EQ(Dispatched("~Drilling\n1 2 3\n~P\nA.M 1 : a\n"), "P:0");
    // A known suffix is read without asking whether a definition exists.
    EXPECT_EQ(Dispatched("~Drilling_Data\n1 2\n", LASFILE_BAD_FORMAT), "");
    // "~Vers" passes the first-line test but is skipped: the next section is first.
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, "~Vers\nVERS. 2.0 : v\n~Well\nA.M 1 : a\n"), LASFILE_OK);
    ASSERT_EQ(reader.size(), 1u);
    EXPECT_EQ(reader.GetSection(0ull).m_name, "Well");
}

TEST(Dispatch, OtherIsDataInVersionThreeOnlyWithADefinition)
{
    const std::string v3 = "~Version\nVERS. 3.0 : v\n~Well\nSTEP.M 1 : s\n";
    EXPECT_EQ(Dispatched("~Other_Definition\nX.M : x\n~Other\n7\n", LASFILE_OK, v3),
              "Other_Definition:1 Other:2");
    EXPECT_EQ(Dispatched("~Other\n7\n~P\nA.M 1 : a\n", LASFILE_OK, v3), "P:0");
    EXPECT_EQ(Dispatched("~Other_Definition\nX.M : x\n~Other\n7\n"), "Other_Definition:1");
}

TEST(Dispatch, IndexedSectionsAreReadAsTheirSuffixSays)
{
    const std::string body =
        "~Core_Definition\nA.M : a\n~Core_Parameter[2]\nP.M 1 : p\n"
        "~Core_Definition[2]\nB.M : b\nC.M : c\n~Core_Data[2]\n1 2\n~Core_Data\n3\n"
        "~Curve[1]\n4\n";
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, kHead + body), LASFILE_OK);
    ASSERT_EQ(reader.size(), 7u);  // Curve[1] finds no definition and is skipped
    EXPECT_EQ(reader.GetSection(3ull).m_type, LASSECTION_PARAMETER);
    EXPECT_EQ(reader.GetSection(4ull).m_type, LASSECTION_DEFINITION);
    const CLasSection& second = reader.GetSection(5ull);
    EXPECT_EQ(second.m_association, "Core_Definition[2]");
    ASSERT_EQ(second.m_curves.size(), 2u);
    EXPECT_EQ(second.m_curves[1].m_numbers, std::vector<double>{2.0});
    EXPECT_EQ(reader.GetSection(6ull).m_association, "Core_Definition");
}

TEST(Lookup, FindSectionIndexByNameTakesTheFirstInAnyCase)
{
    CLasReader reader;
    Access::AddSection(reader, "");
    Access::AddSection(reader, "Well");
    Access::AddSection(reader, "WELL");
    EXPECT_EQ(Access::FindSectionIndexByName(reader, nullptr), -1);
    EXPECT_EQ(Access::FindSectionIndexByName(reader, ""), -1);
    EXPECT_EQ(Access::FindSectionIndexByName(reader, "well"), 1);
    EXPECT_EQ(Access::FindSectionIndexByName(reader, "Wel"), -1);
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

TEST(Lookup, DefinitionOfALogDataSectionPrefersCurve)
{
    CLasReader reader;
    Access::AddSection(reader, "Log_Definition");
    Access::AddSection(reader, "C", LASSECTION_DATA);
    Access::AddSection(reader, "Curve");
    std::string found = "untouched";
    EXPECT_EQ(Access::FindDefinition(reader, "Log_Data[2]", &found), 2);
    EXPECT_EQ(found, "Curve");
    EXPECT_EQ(Access::FindDefinition(reader, "Core_Data", &found), -1);
    EXPECT_EQ(found, "Curve");
    EXPECT_EQ(Access::FindDefinition(reader, "", &found), -1);
}

TEST(Lookup, DefinitionOfOtherSectionsByBaseAndIndex)
{
    CLasReader reader;
    Access::AddSection(reader, "CORE_DEFINITION");
    Access::AddSection(reader, "Core_Run_Definition[2]");
    std::string found;
    EXPECT_EQ(Access::FindDefinition(reader, "core_data", &found), 0);
    EXPECT_EQ(found, "CORE_DEFINITION");
    EXPECT_EQ(Access::FindDefinition(reader, "Core_Data[3]", &found), 0);
    EXPECT_EQ(Access::FindDefinition(reader, "Core", nullptr), 0);
    EXPECT_EQ(Access::FindDefinition(reader, "Core_Run[2]", &found), 1);
    EXPECT_EQ(Access::FindDefinition(reader, "Core_Run", nullptr), -1);
}

}  // namespace
}  // namespace quarl::test
