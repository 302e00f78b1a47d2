// FillWellSection: the depth range against the data, and the appended
// parameters.
#include <gtest/gtest.h>

#include "support/writer_access.h"

namespace quarl {
namespace {

using detail::WriterAccess;
using test::Data;
using test::Numbers;
using test::Param;
using test::Section;

struct Outcome {
    ELASFILEERROR result;
    std::string param;
    int32_t row;
    std::vector<std::string> mnemonics;  // of the Well section afterwards
    std::vector<std::string> values;
};

Outcome Fill(std::vector<CLasParam> well, std::vector<CLasCurve> curves, int runs = 1)
{
    CLasWriter w;
    EXPECT_EQ(w.AddSection(Section("Well", LASSECTION_HEADER, std::move(well))), LASFILE_OK);
    EXPECT_EQ(w.AddSection(Data("ASCII", std::move(curves))), LASFILE_OK);
    ELASFILEERROR result = LASFILE_OK;
    for (int i = 0; i < runs; ++i) result = WriterAccess::FillWellSection(w);
    Outcome out{result, w.GetLastErrorParam() ? w.GetLastErrorParam() : "", w.GetLastErrorRow(), {}, {}};
    if (result != LASFILE_OK) {
        EXPECT_STREQ(w.GetLastErrorSection(), "ASCII");
        EXPECT_EQ(w.GetLastErrorColumn(), 0);
    }
    for (const CLasParam& p : WriterAccess::Sections(w)[0].m_params) {
        out.mnemonics.push_back(p.m_mnemonic);
        out.values.push_back(p.m_value);
    }
    return out;
}

TEST(WellCompletion, EmptyWellGetsTwelveParametersInOrder)
{
    const Outcome out = Fill({}, {Numbers({100, 100.25, 100.5})});
    ASSERT_EQ(out.result, LASFILE_OK);
    EXPECT_EQ(out.mnemonics, (std::vector<std::string>{"STRT", "STOP", "STEP", "COMP", "WELL", "FLD", "LOC",
                                                       "API", "CNTY", "STAT", "CTRY", "SRVC"}));
    EXPECT_EQ(out.values[0], "100.00000000");
    EXPECT_EQ(out.values[1], "100.50000000");
    EXPECT_EQ(out.values[2], "0.25000000");
    EXPECT_EQ(out.values[3], "Not Specified");
    // A second run appends nothing.
    EXPECT_EQ(Fill({}, {Numbers({100, 100.25, 100.5})}, 2).mnemonics.size(), 12u);
}

TEST(WellCompletion, IdentifierAndLocationRules)
{
    const Outcome uwi = Fill({Param("uwi", "", "1", ""), Param("Stat", "", "AB", "")}, {Numbers({1})});
    EXPECT_EQ(uwi.mnemonics, (std::vector<std::string>{"uwi", "Stat", "STRT", "STOP", "STEP", "COMP", "WELL",
                                                       "FLD", "LOC", "SRVC"}));
    const Outcome prov = Fill({Param("PROV", "", "x", ""), Param("API", "", "1", "")}, {Numbers({1})});
    EXPECT_EQ(prov.mnemonics.size(), 2u + 3u + 5u);
}

TEST(WellCompletion, PresentDepthsAreTestedWithTheAbsoluteTolerance)
{
    EXPECT_EQ(Fill({Param("strt", "", "100", "")}, {Numbers({100.00000004})}).result, LASFILE_OK);
    EXPECT_EQ(Fill({Param("STRT", "", "100", "")}, {Numbers({100.0000002})}).param, "STRT");
    EXPECT_EQ(Fill({Param("STRT", "", "abc", "")}, {Numbers({0.00000005})}).result, LASFILE_OK);
    const Outcome stop = Fill({Param("STOP", "", "5", "")}, {Numbers({1, 2, 3})});
    EXPECT_EQ(stop.result, LASFILE_BAD_FORMAT);
    EXPECT_EQ(stop.param, "STOP");
    EXPECT_EQ(stop.row, 2);
    EXPECT_EQ(stop.mnemonics, (std::vector<std::string>{"STOP", "STRT"}));  // STRT stays appended
    // The text of a present value is never rewritten.
    EXPECT_EQ(Fill({Param("STRT", "", "100", "")}, {Numbers({100.00000004})}).values[0], "100");
}

TEST(WellCompletion, StepIsTestedAgainstEveryInterval)
{
    EXPECT_EQ(Fill({Param("STEP", "", "0", "")}, {Numbers({1, 5, 7})}).result, LASFILE_OK);
    EXPECT_EQ(Fill({Param("STEP", "", "x", "")}, {Numbers({1, 5, 7})}).result, LASFILE_OK);
    EXPECT_EQ(Fill({Param("STEP", "", "3", "")}, {Numbers({1})}).result, LASFILE_OK);
    EXPECT_EQ(Fill({Param("STEP", "", "-0.5", "")}, {Numbers({2, 1.5, 1})}).result, LASFILE_OK);
    const Outcome wrongSign = Fill({Param("STEP", "", "0.5", "")}, {Numbers({2, 1.5, 1})});
    EXPECT_EQ(wrongSign.param, "STEP");
    EXPECT_EQ(wrongSign.row, 1);
    // Uneven data passes the first run and fails the second at row 2.
    EXPECT_EQ(Fill({}, {Numbers({100, 101, 103})}, 1).result, LASFILE_OK);
    const Outcome second = Fill({}, {Numbers({100, 101, 103})}, 2);
    EXPECT_EQ(second.result, LASFILE_BAD_FORMAT);
    EXPECT_EQ(second.param, "STEP");
    EXPECT_EQ(second.row, 2);
}

TEST(WellCompletion, NoCurvesOrNoValuesCountAsZero)
{
    const Outcome none = Fill({}, {});
    ASSERT_EQ(none.result, LASFILE_OK);
    EXPECT_EQ(none.values[0], "0.00000000");
    EXPECT_EQ(none.values[2], "0.00000000");
    const Outcome empty = Fill({Param("STOP", "", "1", "")}, {Numbers({})});
    EXPECT_EQ(empty.param, "STOP");
    EXPECT_EQ(empty.row, -1);
}

TEST(WellCompletion, MissingSections)
{
    CLasWriter w;
    EXPECT_EQ(WriterAccess::FillWellSection(w), LASFILE_MISSING_SECTION);
    EXPECT_STREQ(w.GetLastErrorSection(), "Well");
    ASSERT_EQ(w.AddSection(Section("Well", LASSECTION_HEADER)), LASFILE_OK);
    EXPECT_EQ(WriterAccess::FillWellSection(w), LASFILE_MISSING_SECTION);
    EXPECT_STREQ(w.GetLastErrorSection(), "ASCII");
    // "LOG" serves when there is no "ASCII".
    ASSERT_EQ(w.AddSection(Data("LOG", {Numbers({7, 8})})), LASFILE_OK);
    EXPECT_EQ(WriterAccess::FillWellSection(w), LASFILE_OK);
    EXPECT_EQ(WriterAccess::Sections(w)[0].m_params[0].m_value, "7.00000000");
}

}  // namespace
}  // namespace quarl
