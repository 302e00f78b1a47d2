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
using test::Record;
using test::Section;

// Runs FillWellSection `runs` times on a Well section and an "ASCII" section
// of one curve; gives the record and the Well section as "MNEM=value ...".
std::string Fill(std::vector<CLasParam> well, std::vector<CLasCurve> curves, int runs = 1)
{
    CLasWriter w;
    EXPECT_EQ(w.AddSection(Section("Well", LASSECTION_HEADER, std::move(well))), LASFILE_OK);
    EXPECT_EQ(w.AddSection(Data("ASCII", std::move(curves))), LASFILE_OK);
    for (int i = 0; i < runs; ++i) WriterAccess::FillWellSection(w);
    std::string text = Record(w) + ":";
    for (const CLasParam& p : WriterAccess::Sections(w)[0].m_params) text += " " + p.m_mnemonic + "=" + p.m_value;
    return text;
}

TEST(WellCompletion, DepthRangeAndAppendedParameters)
{
    const std::string rest = " COMP=Not Specified WELL=Not Specified FLD=Not Specified LOC=Not Specified";
    const std::string tail = " CNTY=Not Specified STAT=Not Specified CTRY=Not Specified SRVC=Not Specified";
    const std::string ok = "0 - - -1 -1:";
    const std::string full = ok + " STRT=100.00000000 STOP=100.50000000 STEP=0.25000000" + rest +
                             " API=Not Specified" + tail;
    EXPECT_EQ(Fill({}, {Numbers({100, 100.25, 100.5})}), full);
    EXPECT_EQ(Fill({}, {Numbers({100, 100.25, 100.5})}, 2), full);  // a second run appends nothing
    // UWI stands for API, any of PROV and STAT for CNTY, STAT and CTRY.
    EXPECT_EQ(Fill({Param("uwi", "", "1", ""), Param("Stat", "", "AB", "")}, {Numbers({1})}),
              ok + " uwi=1 Stat=AB STRT=1.00000000 STOP=1.00000000 STEP=0.00000000" + rest + " SRVC=Not Specified");
    EXPECT_EQ(Fill({Param("PROV", "", "x", ""), Param("API", "", "1", "")}, {Numbers({1})}),
              ok + " PROV=x API=1 STRT=1.00000000 STOP=1.00000000 STEP=0.00000000" + rest + " SRVC=Not Specified");
    // No curves, or no values, count as zero.
    EXPECT_EQ(Fill({}, {}).substr(0, 60), ok + " STRT=0.00000000 STOP=0.00000000 STEP=0.00000000");
    EXPECT_EQ(Fill({Param("STOP", "", "1", "")}, {Numbers({})}), "3 ASCII STOP 0 -1: STOP=1 STRT=0.00000000");
}

TEST(WellCompletion, PresentValuesAreTestedWithTheAbsoluteTolerance)
{
    const struct {
        std::vector<CLasParam> well;
        std::vector<double> depths;
        std::string record;  // the text of a present value is never rewritten
    } cases[] = {
        {{Param("strt", "", "100", "")}, {100.00000004}, "0 - - -1 -1: strt=100 STOP"},
        {{Param("STRT", "", "100", "")}, {100.0000002}, "3 ASCII STRT 0 0: STRT=100"},
        {{Param("STRT", "", "abc", "")}, {0.00000005}, "0 - - -1 -1: STRT=abc STOP"},
        {{Param("STOP", "", "5", "")}, {1, 2, 3}, "3 ASCII STOP 0 2: STOP=5 STRT=1.00000000"},
        {{Param("STEP", "", "0", "")}, {1, 5, 7}, "0 - - -1 -1: STEP=0 STRT"},
        {{Param("STEP", "", "x", "")}, {1, 5, 7}, "0 - - -1 -1: STEP=x STRT"},
        {{Param("STEP", "", "3", "")}, {1}, "0 - - -1 -1: STEP=3 STRT"},
        {{Param("STEP", "", "-0.5", "")}, {2, 1.5, 1}, "0 - - -1 -1: STEP=-0.5 STRT"},
        {{Param("STEP", "", "0.5", "")}, {2, 1.5, 1}, "3 ASCII STEP 0 1: STEP=0.5 STRT=2.00000000 STOP=1.00000000"},
    };
    for (const auto& c : cases) {
        const std::string got = Fill(c.well, {Numbers(c.depths)});
        EXPECT_EQ(got.substr(0, c.record.size()), c.record);
    }
    // Uneven data without STEP passes the first run and fails the second at row 2.
    EXPECT_EQ(Fill({}, {Numbers({100, 101, 103})}, 1).substr(0, 12), "0 - - -1 -1:");
    EXPECT_EQ(Fill({}, {Numbers({100, 101, 103})}, 2).substr(0, 19), "3 ASCII STEP 0 2: S");
}

TEST(WellCompletion, MissingSections)
{
    CLasWriter w;
    EXPECT_EQ(WriterAccess::FillWellSection(w), LASFILE_MISSING_SECTION);
    EXPECT_EQ(Record(w), "5 Well - -1 -1");
    ASSERT_EQ(w.AddSection(Section("Well", LASSECTION_HEADER)), LASFILE_OK);
    EXPECT_EQ(WriterAccess::FillWellSection(w), LASFILE_MISSING_SECTION);
    EXPECT_EQ(Record(w), "5 ASCII - -1 -1");
    ASSERT_EQ(w.AddSection(Data("LOG", {Numbers({7, 8})})), LASFILE_OK);  // "LOG" serves without "ASCII"
    EXPECT_EQ(WriterAccess::FillWellSection(w), LASFILE_OK);
    EXPECT_EQ(WriterAccess::Sections(w)[0].m_params[0].m_value, "7.00000000");
}

}  // namespace
}  // namespace quarl
