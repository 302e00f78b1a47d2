// The writer object: format choice, the last-error record, AddSection,
// Reset, assignment and the lookups in the stored sections.
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
    EXPECT_EQ(test::Names(w), (std::vector<std::string>{"Well", "ASCII", "Well"}));
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
}

}  // namespace
}  // namespace quarl
