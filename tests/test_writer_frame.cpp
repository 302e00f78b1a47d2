// The writer object: format choice, the last-error record, AddSection and
// the lookups in the stored sections.
#include <gtest/gtest.h>

#include "support/writer_access.h"

namespace quarl {
namespace {

using detail::WriterAccess;
using test::Data;
using test::Numbers;
using test::Param;
using test::Section;

void ExpectRecord(const CLasWriter& w, ELASFILEERROR code, const char* section, const char* param,
                  int32_t column, int32_t row)
{
    EXPECT_EQ(w.GetLastError(), code);
    if (section) {
        EXPECT_STREQ(w.GetLastErrorSection(), section);
    } else {
        EXPECT_EQ(w.GetLastErrorSection(), nullptr);
    }
    if (param) {
        EXPECT_STREQ(w.GetLastErrorParam(), param);
    } else {
        EXPECT_EQ(w.GetLastErrorParam(), nullptr);
    }
    EXPECT_EQ(w.GetLastErrorColumn(), column);
    EXPECT_EQ(w.GetLastErrorRow(), row);
}

TEST(WriterFrame, FreshWriterHasAClearRecordAndLas20Space)
{
    CLasWriter w;
    ExpectRecord(w, LASFILE_OK, nullptr, nullptr, -1, -1);
    EXPECT_FALSE(WriterAccess::IsLas3(w));
    EXPECT_EQ(WriterAccess::Delimiter(w), ' ');
}

TEST(WriterFrame, SetFormatTestsVersionThenStateThenDelimiter)
{
    CLasWriter w;
    ASSERT_EQ(w.AddSection(Section("Well", LASSECTION_HEADER)), LASFILE_OK);
    EXPECT_EQ(w.SetFormat(false, ','), LASFILE_NOT_ALLOWED_IN_VERSION);
    ExpectRecord(w, LASFILE_NOT_ALLOWED_IN_VERSION, "VERSION", "DLM", -1, -1);
    EXPECT_EQ(w.SetFormat(false, ' '), LASFILE_WRONG_STATE);
    ExpectRecord(w, LASFILE_WRONG_STATE, nullptr, nullptr, -1, -1);

    CLasWriter empty;
    ASSERT_EQ(empty.SetFormat(true, '\t'), LASFILE_OK);
    EXPECT_EQ(empty.SetFormat(true, ';'), LASFILE_BAD_VALUE);
    EXPECT_TRUE(WriterAccess::IsLas3(empty));
    EXPECT_EQ(WriterAccess::Delimiter(empty), '\t');
    EXPECT_EQ(empty.SetFormat(false, ';'), LASFILE_NOT_ALLOWED_IN_VERSION);
    EXPECT_TRUE(WriterAccess::IsLas3(empty));
    ASSERT_EQ(empty.SetFormat(true, ','), LASFILE_OK);
    ExpectRecord(empty, LASFILE_OK, nullptr, nullptr, -1, -1);
}

TEST(WriterFrame, CallsThatBeginByClearingTheRecord)
{
    CLasWriter w;
    w.SetFormat(false, ',');
    ASSERT_EQ(w.GetLastError(), LASFILE_NOT_ALLOWED_IN_VERSION);
    w.SetStatusCallback(nullptr, nullptr);
    EXPECT_EQ(w.GetLastError(), LASFILE_OK);
    w.SetFormat(false, ',');
    ASSERT_EQ(w.AddSection(Section("Well", LASSECTION_HEADER)), LASFILE_OK);
    EXPECT_EQ(w.GetLastError(), LASFILE_OK);
    w.SetFormat(false, ',');
    w.ClearLastError();
    ExpectRecord(w, LASFILE_OK, nullptr, nullptr, -1, -1);
}

TEST(WriterFrame, AddSectionRefusesVersionAndDuplicatesAndStoresACopy)
{
    for (bool las3 : {false, true}) {
        CLasWriter w;
        ASSERT_EQ(w.SetFormat(las3, ' '), LASFILE_OK);
        for (const char* name : {"version", "V", "v"}) {
            EXPECT_EQ(w.AddSection(Section(name, LASSECTION_HEADER)), LASFILE_DUPLICATE_SECTION);
            ExpectRecord(w, LASFILE_DUPLICATE_SECTION, name, nullptr, -1, -1);
        }
        CLasSection well = Section("Well", LASSECTION_HEADER, {Param("WELL", "", "A", "")});
        ASSERT_EQ(w.AddSection(well), LASFILE_OK);
        well.m_params[0].m_value = "changed";
        EXPECT_EQ(WriterAccess::Sections(w)[0].m_params[0].m_value, "A");
        EXPECT_EQ(w.AddSection(Section("WELL", LASSECTION_HEADER)), LASFILE_DUPLICATE_SECTION);
        ExpectRecord(w, LASFILE_DUPLICATE_SECTION, "WELL", nullptr, -1, -1);
        EXPECT_EQ(WriterAccess::Sections(w).size(), 1u);
    }
}

TEST(WriterFrame, AddSectionReportsNameThenContentAndStoresNothingOnFailure)
{
    CLasWriter w;
    EXPECT_EQ(w.AddSection(Section("Log_Data", LASSECTION_DATA)), LASFILE_BAD_NAME);
    ExpectRecord(w, LASFILE_BAD_NAME, "Log_Data", nullptr, -1, -1);
    CLasSection untyped;
    untyped.m_name = "Other";
    EXPECT_EQ(w.AddSection(untyped), LASFILE_BAD_VALUE);
    ExpectRecord(w, LASFILE_BAD_VALUE, "Other", nullptr, -1, -1);
    EXPECT_EQ(w.AddSection(Section("Curve", LASSECTION_DEFINITION, {Param("A.B", "", "", "")})),
              LASFILE_BAD_NAME);
    ExpectRecord(w, LASFILE_BAD_NAME, "Curve", "A.B", -1, -1);
    EXPECT_TRUE(WriterAccess::Sections(w).empty());
}

TEST(WriterFrame, ShortLas2NamesAreExpandedAfterTheDuplicateTest)
{
    CLasWriter w;
    ASSERT_EQ(w.AddSection(Section("W", LASSECTION_HEADER)), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Section("l", LASSECTION_DATA)), LASFILE_OK);
    EXPECT_EQ(WriterAccess::FindSectionIndexByName(w, "well"), 0);
    ASSERT_EQ(w.AddSection(Section("W", LASSECTION_HEADER)), LASFILE_OK);  // compared with "Well"
    EXPECT_EQ(test::Names(w), (std::vector<std::string>{"Well", "ASCII", "Well"}));
    EXPECT_EQ(WriterAccess::FindSectionIndexByName(w, "WELL"), 0);
    EXPECT_EQ(WriterAccess::FindSectionIndexByName(w, ""), -1);
    EXPECT_EQ(WriterAccess::FindSectionIndexByName(w, nullptr), -1);
    EXPECT_EQ(WriterAccess::FindSectionIndexByName(w, "Wel"), -1);
    EXPECT_EQ(WriterAccess::CountSectionsByType(w, LASSECTION_HEADER), 2);
    EXPECT_EQ(WriterAccess::CountSectionsByType(w, LASSECTION_DATA), 1);
    EXPECT_EQ(WriterAccess::CountSectionsByType(w, LASSECTION_ANY), 3);
    EXPECT_EQ(WriterAccess::CountSectionsByType(w, LASSECTION_PARAMETER), 0);
}

TEST(WriterFrame, ResetKeepsTheOpenOutputAndClearsTheRest)
{
    CLasWriter w;
    ASSERT_EQ(w.SetFormat(true, ','), LASFILE_OK);
    ASSERT_EQ(w.AddSection(Section("Well", LASSECTION_HEADER)), LASFILE_OK);
    w.SetStatusCallback(&w, [](void*, double, const char*) -> int32_t { return 0; });
    w.SetFormat(false, ',');
    w.Reset();
    EXPECT_TRUE(WriterAccess::Sections(w).empty());
    EXPECT_FALSE(WriterAccess::IsLas3(w));
    EXPECT_EQ(WriterAccess::Delimiter(w), ' ');
    ExpectRecord(w, LASFILE_OK, nullptr, nullptr, -1, -1);
    EXPECT_EQ(w.SetFormat(true, ','), LASFILE_OK);
}

TEST(WriterFrame, AssignmentCopiesTheDocumentByValue)
{
    CLasWriter a;
    ASSERT_EQ(a.SetFormat(true, '\t'), LASFILE_OK);
    ASSERT_EQ(a.AddSection(Data("Log_Data", {Numbers({1, 2})})), LASFILE_OK);
    a.SetFormat(false, ',');
    CLasWriter b;
    b = a;
    EXPECT_TRUE(WriterAccess::IsLas3(b));
    EXPECT_EQ(WriterAccess::Delimiter(b), '\t');
    ExpectRecord(b, LASFILE_NOT_ALLOWED_IN_VERSION, "VERSION", "DLM", -1, -1);
    WriterAccess::Sections(a)[0].m_curves[0].m_numbers[0] = 9;
    EXPECT_EQ(WriterAccess::Sections(b)[0].m_curves[0].m_numbers[0], 1);
    b = b;
    EXPECT_EQ(WriterAccess::Sections(b).size(), 1u);
}

}  // namespace
}  // namespace quarl
