// SortSections: the order of the sections in the file.
#include <gtest/gtest.h>

#include "support/writer_access.h"

namespace quarl {
namespace {

using detail::WriterAccess;
using Names = std::vector<std::string>;

CLasSection Typed(const std::string& name)
{
    ELASSECTIONTYPE type = LASSECTION_PARAMETER;
    if (name.find("Data") != std::string::npos || name == "ASCII" || name == "LOG" || name == "Core")
        type = LASSECTION_DATA;
    if (name.find("Definition") != std::string::npos || name == "Curve") type = LASSECTION_DEFINITION;
    return test::Section(name, type);
}

// Stores the sections as given and sorts them.
ELASFILEERROR Sort(bool las3, const Names& names, Names* sorted)
{
    CLasWriter w;
    w.SetFormat(las3, ' ');
    for (const std::string& name : names) WriterAccess::Sections(w).push_back(Typed(name));
    const ELASFILEERROR result = WriterAccess::SortSections(w);
    *sorted = test::Names(w);
    if (result == LASFILE_OK) {
        Names again;
        EXPECT_EQ(WriterAccess::SortSections(w), LASFILE_OK);
        EXPECT_EQ(test::Names(w), *sorted);  // sorting twice changes nothing
    }
    return result;
}

TEST(SortSections, Las2Order)
{
    Names out;
    ASSERT_EQ(Sort(false, {"ASCII", "Other", "Curve", "Well", "Parameter"}, &out), LASFILE_OK);
    EXPECT_EQ(out, (Names{"Well", "Parameter", "Curve", "Other", "ASCII"}));
    ASSERT_EQ(Sort(false, {"ASCII", "Downhole", "LOG", "curve", "Other", "WELL", "Well"}, &out), LASFILE_OK);
    EXPECT_EQ(out, (Names{"WELL", "curve", "Downhole", "LOG", "Other", "Well", "ASCII"}));
    ASSERT_EQ(Sort(false, {}, &out), LASFILE_OK);
}

TEST(SortSections, Las3Groups)
{
    Names out;
    ASSERT_EQ(Sort(true, {"Log_Data", "Log_Definition", "Core_Data", "Tops_Parameter", "Well", "Core_Definition",
                          "Core_Parameter", "Log_Parameter"},
                   &out),
              LASFILE_OK);
    EXPECT_EQ(out, (Names{"Well", "Core_Parameter", "Core_Definition", "Core_Data", "Tops_Parameter",
                          "Log_Parameter", "Log_Definition", "Log_Data"}));
    // A single data section is never grouped, whatever its name.
    ASSERT_EQ(Sort(true, {"Core_Data", "Core_Parameter", "Other_Stuff"}, &out), LASFILE_OK);
    EXPECT_EQ(out, (Names{"Core_Data", "Core_Parameter", "Other_Stuff"}));
    // Indexed data sections share the parameter section of their base.
    ASSERT_EQ(Sort(true, {"ASCII", "Core_Parameter[1]", "Core_Data[2]", "Core_Data[1]", "Core_Parameter",
                          "Core_Definition"},
                   &out),
              LASFILE_OK);
    EXPECT_EQ(out, (Names{"Core_Parameter", "Core_Definition", "Core_Data[2]", "Core_Data[1]",
                          "Core_Parameter[1]", "ASCII"}));
    // Log_Data[2] is a secondary data section.
    ASSERT_EQ(Sort(true, {"Log_Data", "Log_Data[2]"}, &out), LASFILE_OK);
    EXPECT_EQ(out, (Names{"Log_Data[2]", "Log_Data"}));
}

TEST(SortSections, TwoLogDataNamesFailAndLoseNothing)
{
    const Names given = {"Tops", "ASCII", "Well", "Core_Data", "Log_Data", "Core_Definition"};
    Names out;
    CLasWriter w;
    w.SetFormat(true, ' ');
    for (const std::string& name : given) WriterAccess::Sections(w).push_back(Typed(name));
    EXPECT_EQ(WriterAccess::SortSections(w), LASFILE_BAD_FORMAT);
    EXPECT_EQ(w.GetLastErrorSection(), nullptr);
    EXPECT_EQ(w.GetLastErrorColumn(), -1);
    EXPECT_EQ(test::Names(w), given);
    EXPECT_EQ(Sort(false, {"ASCII", "LOG"}, &out), LASFILE_OK);
    EXPECT_EQ(Sort(true, {"LOG", "Log_Data"}, &out), LASFILE_BAD_FORMAT);
}

TEST(SortSections, DefinitionsFoundByLinkOrBaseName)
{
    CLasWriter w;
    w.SetFormat(true, ' ');
    auto& sections = WriterAccess::Sections(w);
    for (const char* name : {"Shared", "A_Data", "B_Data", "Log_Data", "Log_Definition", "Curve", "C_Data"})
        sections.push_back(Typed(name));
    sections[1].m_association = "Shared";
    sections[2].m_association = "Shared";
    sections[6].m_association = "Curve";
    ASSERT_EQ(WriterAccess::SortSections(w), LASFILE_OK);
    EXPECT_EQ(test::Names(w), (Names{"Curve", "Shared", "A_Data", "B_Data", "C_Data", "Log_Definition", "Log_Data"}));
}

TEST(SortSections, MainDataLinkedToItselfIsPlacedOnce)
{
    CLasWriter w;
    auto& sections = WriterAccess::Sections(w);
    sections.push_back(Typed("ASCII"));
    sections.push_back(Typed("Other"));
    sections[0].m_association = "ascii";
    ASSERT_EQ(WriterAccess::SortSections(w), LASFILE_OK);
    EXPECT_EQ(test::Names(w), (Names{"Other", "ASCII"}));
}

}  // namespace
}  // namespace quarl
