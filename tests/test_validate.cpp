// Validate: what it creates and links, and how it tests the document.
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
using Names = std::vector<std::string>;

TEST(Validate, EmptyWriterGetsWellAndMissesCurve)
{
    CLasWriter w;
    EXPECT_EQ(w.Validate(), LASFILE_MISSING_SECTION);
    EXPECT_STREQ(w.GetLastErrorSection(), "Curve");
    EXPECT_EQ(test::Names(w), Names{"Well"});
}

TEST(Validate, AsciiAloneGetsCurveFilledFromItsCurves)
{
    CLasWriter w;
    ASSERT_EQ(w.AddSection(Data("ASCII", {Numbers({1, 2}, Param("DEPT", "M", "", "Depth")), Numbers({3, 4}),
                                          Numbers({5, 6}, Param("GR", "", "", ""))})),
              LASFILE_OK);
    ASSERT_EQ(w.Validate(), LASFILE_OK);
    EXPECT_EQ(test::Names(w), (Names{"Well", "Curve", "ASCII"}));
    const auto& sections = WriterAccess::Sections(w);
    EXPECT_EQ(sections[2].m_association, "Curve");
    const auto& params = sections[1].m_params;
    ASSERT_EQ(params.size(), 3u);
    EXPECT_EQ(params[0].m_unit, "M");
    EXPECT_EQ(params[1].m_mnemonic, "COL2");
    EXPECT_EQ(params[1].m_description, "Column 2");
    EXPECT_EQ(params[1].m_format, "{F}");
    EXPECT_EQ(params[2].m_mnemonic, "GR");
    EXPECT_EQ(sections[0].m_params.size(), 12u);
    // A second run finds everything in place.
    ASSERT_EQ(w.Validate(), LASFILE_OK);
    EXPECT_EQ(WriterAccess::Sections(w)[1].m_params.size(), 3u);
    EXPECT_EQ(WriterAccess::Sections(w)[0].m_params.size(), 12u);
}

TEST(Validate, Las3CreatesDefinitionsByBaseName)
{
    CLasWriter w;
    ASSERT_EQ(w.SetFormat(true, ','), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Data("Log_Data", {Numbers({1}), Texts({"a"})})), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Data("Core_Data[1]", {Numbers({1})})), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Data("Core_Data[2]", {Numbers({2})})), LASFILE_OK);
    ASSERT_EQ(w.Validate(), LASFILE_OK);
    EXPECT_EQ(test::Names(w), (Names{"Well", "Core_Definition", "Core_Data[1]", "Core_Data[2]", "Log_Definition",
                                     "Log_Data"}));
    EXPECT_EQ(WriterAccess::Sections(w)[4].m_params[1].m_format, "{S}");
    EXPECT_EQ(WriterAccess::Sections(w)[3].m_association, "Core_Definition");
}

TEST(Validate, Failures)
{
    {  // "Curve" given, link of "ASCII" empty: the link names nothing.
        CLasWriter w;
        ASSERT_EQ(w.AddSection(Section("Curve", LASSECTION_DEFINITION)), LASFILE_OK);
        ASSERT_EQ(w.AddSection(Data("ASCII", {Numbers({1})})), LASFILE_OK);
        EXPECT_EQ(w.Validate(), LASFILE_MISSING_SECTION);
        EXPECT_EQ(w.GetLastErrorSection(), nullptr);
    }
    {  // A link to a missing section in LAS 2.0 creates it, then Curve is missing.
        CLasWriter w;
        ASSERT_EQ(w.AddSection(Data("ASCII", {Numbers({1})}, "Defs")), LASFILE_OK);
        EXPECT_EQ(w.Validate(), LASFILE_MISSING_SECTION);
        EXPECT_STREQ(w.GetLastErrorSection(), "Curve");
        EXPECT_GE(WriterAccess::FindSectionIndexByName(w, "Defs"), 0);
    }
    {  // One definition too few names the data section.
        CLasWriter w;
        ASSERT_EQ(w.AddSection(Section("Curve", LASSECTION_DEFINITION, {Param("DEPT", "", "", "")})), LASFILE_OK);
        ASSERT_EQ(w.AddSection(Data("ASCII", {Numbers({1}), Numbers({2})}, "Curve")), LASFILE_OK);
        EXPECT_EQ(w.Validate(), LASFILE_MISSING_SECTION);
        EXPECT_STREQ(w.GetLastErrorSection(), "ASCII");
    }
    {  // Curves of unequal length put in after AddSection.
        CLasWriter w;
        ASSERT_EQ(w.AddSection(Data("ASCII", {Numbers({1, 2}), Numbers({2, 3})})), LASFILE_OK);
        WriterAccess::Sections(w)[0].m_curves[1].m_numbers.push_back(4);
        EXPECT_EQ(w.Validate(), LASFILE_BAD_VALUE);
        EXPECT_STREQ(w.GetLastErrorSection(), "ASCII");
        EXPECT_EQ(w.GetLastErrorColumn(), 1);
        EXPECT_TRUE(WriterAccess::Sections(w)[1].m_params.empty());  // never filled
    }
    {  // LAS 3.0: a data section of another base only, no log data.
        CLasWriter w;
        ASSERT_EQ(w.SetFormat(true, ' '), LASFILE_OK);
        ASSERT_EQ(w.AddSection(Data("Core_Data", {Numbers({1})})), LASFILE_OK);
        EXPECT_EQ(w.Validate(), LASFILE_MISSING_SECTION);
        EXPECT_STREQ(w.GetLastErrorSection(), "Curve");
    }
    {  // A data section without curves passes with an empty definition.
        CLasWriter w;
        ASSERT_EQ(w.SetFormat(true, ' '), LASFILE_OK);
        ASSERT_EQ(w.AddSection(Data("Log_Data", {})), LASFILE_OK);
        EXPECT_EQ(w.Validate(), LASFILE_OK);
    }
}

TEST(Validate, HostObjectsAreNeverTouched)
{
    CLasWriter w;
    const CLasSection ascii = Data("ASCII", {Numbers({1, 2})});
    ASSERT_EQ(w.AddSection(ascii), LASFILE_OK);
    ASSERT_EQ(w.Validate(), LASFILE_OK);
    EXPECT_TRUE(ascii.m_association.empty());
    EXPECT_EQ(WriterAccess::Sections(w)[2].m_association, "Curve");
}

}  // namespace
}  // namespace quarl
