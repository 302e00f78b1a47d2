// The helpers of the example programs that hold logic of their own: scales
// and gaps of the log plot, curve statistics, the format read back from a
// Version section, JSON and XML text, and the renaming between versions.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "examples/common/las_tools.h"
#include "examples/common/svg_plot.h"

namespace ex = quarl::examples;

namespace {

size_t Count(const std::string& text, const std::string& what)
{
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos;
         at = text.find(what, at + what.size()))
        ++n;
    return n;
}

quarl::CLasCurve Numeric(const std::string& mnemonic, std::vector<double> values)
{
    quarl::CLasCurve curve;
    curve.m_definition.m_mnemonic = mnemonic;
    curve.m_numbers = std::move(values);
    return curve;
}

quarl::CLasParam Param(const char* mnemonic, const char* unit, const char* value)
{
    quarl::CLasParam p;
    p.m_mnemonic = mnemonic;
    p.m_unit = unit;
    p.m_value = value;
    return p;
}

}  // namespace

TEST(PlotScales, NiceStepIsOneTwoOrFiveTimesAPowerOfTen)
{
    EXPECT_DOUBLE_EQ(ex::NiceStep(200.0, 4.0), 50.0);
    EXPECT_DOUBLE_EQ(ex::NiceStep(7.0, 4.0), 2.0);
    EXPECT_NEAR(ex::NiceStep(0.37, 4.0), 0.1, 1e-15);
    EXPECT_DOUBLE_EQ(ex::NiceStep(1000.0, 10.0), 100.0);
    // Nothing to divide: a usable step all the same.
    EXPECT_DOUBLE_EQ(ex::NiceStep(0.0, 4.0), 1.0);
    EXPECT_DOUBLE_EQ(ex::NiceStep(-3.0, 4.0), 1.0);
    EXPECT_DOUBLE_EQ(ex::NiceStep(NAN, 4.0), 1.0);
}

TEST(PlotScales, LinearScaleCoversTheValuesOnNiceBounds)
{
    const double cases[][2] = {{99.9, 127.7},  {-21.6, -13.7}, {0.2, 0.35},
                               {2410, 2575.1}, {0, 1e6},       {-5, 5}};
    for (const auto& c : cases) {
        const ex::TrackScale s = ex::LinearScale(c[0], c[1]);
        SCOPED_TRACE(std::to_string(c[0]) + " .. " + std::to_string(c[1]));
        EXPECT_FALSE(s.log);
        EXPECT_LE(s.left, c[0]);
        EXPECT_GE(s.right, c[1]);
        const double intervals = (s.right - s.left) / s.step;
        EXPECT_GE(intervals, 2.0 - 1e-9);
        EXPECT_LE(intervals, 6.0 + 1e-9);
        EXPECT_NEAR(s.left / s.step, std::round(s.left / s.step), 1e-9);
    }
    const ex::TrackScale gr = ex::LinearScale(99.9, 127.7);
    EXPECT_DOUBLE_EQ(gr.left, 90.0);
    EXPECT_DOUBLE_EQ(gr.right, 130.0);
    // One value, and no value at all, still make a scale with width.
    const ex::TrackScale single = ex::LinearScale(5.0, 5.0);
    EXPECT_LT(single.left, 5.0);
    EXPECT_GT(single.right, 5.0);
    const ex::TrackScale zero = ex::LinearScale(0.0, 0.0);
    EXPECT_LT(zero.left, 0.0);
    EXPECT_GT(zero.right, 0.0);
    const ex::TrackScale none = ex::LinearScale(NAN, NAN);
    EXPECT_LT(none.left, none.right);
}

TEST(PlotScales, LogScaleSpansWholeDecades)
{
    ex::TrackScale s = ex::LogScale(2.5, 13.0);
    EXPECT_TRUE(s.log);
    EXPECT_DOUBLE_EQ(s.left, 1.0);
    EXPECT_DOUBLE_EQ(s.right, 100.0);
    s = ex::LogScale(0.216, 0.9);
    EXPECT_NEAR(s.left, 0.1, 1e-15);
    EXPECT_NEAR(s.right, 1.0, 1e-15);
    // Values on a decade stay its bounds; a single value gets one decade.
    s = ex::LogScale(10.0, 100.0);
    EXPECT_DOUBLE_EQ(s.left, 10.0);
    EXPECT_DOUBLE_EQ(s.right, 100.0);
    s = ex::LogScale(5.0, 5.0);
    EXPECT_DOUBLE_EQ(s.left, 1.0);
    EXPECT_DOUBLE_EQ(s.right, 10.0);
    // No positive value: a default range rather than log of zero.
    s = ex::LogScale(NAN, -1.0);
    EXPECT_LT(0.0, s.left);
    EXPECT_LT(s.left, s.right);

    s = ex::LogScale(1.0, 100.0);
    EXPECT_NEAR(ex::ScalePosition(s, 10.0), 0.5, 1e-12);
    EXPECT_NEAR(ex::ScalePosition(s, 1.0), 0.0, 1e-12);
    EXPECT_TRUE(std::isnan(ex::ScalePosition(s, 0.0)));
    EXPECT_TRUE(std::isnan(ex::ScalePosition(s, -2.0)));
    const ex::TrackScale lin = ex::LinearScale(0.0, 150.0);
    EXPECT_NEAR(ex::ScalePosition(lin, 75.0), 0.5, 1e-12);
}

TEST(PlotCurves, NullValuesAndUnplottableValuesBreakTheLine)
{
    const std::vector<double> depth = {100, 100.5, 101, 101.5, 102, 102.5, 103};
    const std::vector<double> gr = {50, 51, -999.25, -999.25, 60, NAN, 62};
    auto runs = ex::CurveRuns(depth, gr, true, -999.25, false);
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(runs[0].size(), 2u);
    EXPECT_EQ(runs[1].size(), 1u);
    EXPECT_DOUBLE_EQ(runs[1][0].first, 102.0);
    EXPECT_DOUBLE_EQ(runs[2][0].second, 62.0);

    // Without a NULL value -999.25 is an ordinary reading.
    EXPECT_EQ(ex::CurveRuns(depth, gr, false, 0.0, false).size(), 2u);

    // On a log scale zero and negative readings are gaps as well.
    const std::vector<double> res = {2, 0, 3, -1, 4, 5, 6};
    runs = ex::CurveRuns(depth, res, true, -999.25, true);
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(runs[2].size(), 3u);

    // A NULL depth drops its row; a short curve ends where it ends.
    const std::vector<double> badDepth = {100, -999.25, 101};
    runs = ex::CurveRuns(badDepth, {1, 2, 3, 4}, true, -999.25, false);
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_EQ(runs[1].size(), 1u);
}

TEST(PlotCurves, RenderedSvgHasOneTrackPerCurveWithHeadersAndGaps)
{
    ex::PlotInput in;
    in.title = "R&D <well>";
    in.depthUnit = "M";
    in.depths = {1500, 1500.5, 1501, 1501.5, 1502};
    in.hasNull = true;
    in.nullValue = -999.25;
    ex::PlotTrack gr;
    gr.mnemonic = "GR";
    gr.unit = "GAPI";
    gr.values = {50, 60, -999.25, 70, 80};
    ex::PlotTrack ild;
    ild.mnemonic = "ILD";
    ild.unit = "OHMM";
    ild.values = {2, 5, 20, 8, 3};
    ild.log = true;
    in.tracks = {gr, ild};
    const std::string svg = ex::RenderLogPlot(in);

    EXPECT_EQ(svg.rfind("<?xml", 0), 0u);
    EXPECT_NE(svg.find("xmlns=\"http://www.w3.org/2000/svg\""), std::string::npos);
    EXPECT_EQ(svg.substr(svg.size() - 7), "</svg>\n");
    EXPECT_NE(svg.find("R&amp;D &lt;well&gt;"), std::string::npos);
    EXPECT_EQ(svg.find("<well>"), std::string::npos);
    EXPECT_EQ(Count(svg, "<path "), 2u);
    // The GR line is cut at its NULL: two moves in its path.
    const size_t grPath = svg.find("<path ");
    const std::string grD = svg.substr(grPath, svg.find("/>", grPath) - grPath);
    EXPECT_EQ(Count(grD, "M"), 2u);
    EXPECT_NE(svg.find(">GAPI<"), std::string::npos);
    EXPECT_NE(svg.find(">OHMM  log<"), std::string::npos);
    // Scale labels: GR on nice linear bounds, ILD on decades 1 to 100.
    EXPECT_NE(svg.find(">50<"), std::string::npos);
    EXPECT_NE(svg.find(">80<"), std::string::npos);
    EXPECT_NE(svg.find(">100<"), std::string::npos);
    // Depth labels on the axis.
    EXPECT_NE(svg.find(">1500<"), std::string::npos);
    EXPECT_NE(svg.find(">1502<"), std::string::npos);

    // A track with nothing to draw says so instead of drawing an empty path.
    in.tracks[0].values.assign(5, -999.25);
    const std::string empty = ex::RenderLogPlot(in);
    EXPECT_EQ(Count(empty, "<path "), 1u);
    EXPECT_NE(empty.find(">no values<"), std::string::npos);
}

TEST(CurveFacts, StatisticsLeaveOutTheNullValue)
{
    const quarl::CLasCurve curve = Numeric("GR", {45.5, -999.25, 120.0, -999.25, 3.0, NAN});
    ex::CurveStats s = ex::StatsOf(curve, true, -999.25);
    EXPECT_EQ(s.count, 6);
    EXPECT_EQ(s.nulls, 3);
    EXPECT_DOUBLE_EQ(s.min, 3.0);
    EXPECT_DOUBLE_EQ(s.max, 120.0);
    s = ex::StatsOf(curve, false, 0.0);
    EXPECT_EQ(s.nulls, 1);
    EXPECT_DOUBLE_EQ(s.min, -999.25);

    const quarl::CLasCurve allNull = Numeric("X", {-999.25, -999.25});
    s = ex::StatsOf(allNull, true, -999.25);
    EXPECT_EQ(s.nulls, 2);
    EXPECT_TRUE(std::isnan(s.min));

    quarl::CLasCurve text;
    text.m_isNumeric = false;
    text.m_strings = {"sand", "shale"};
    s = ex::StatsOf(text, true, -999.25);
    EXPECT_EQ(s.count, 2);
    EXPECT_EQ(s.nulls, 0);
}

TEST(CurveFacts, NullValueAndDepthCurveAreFound)
{
    quarl::CLasSection well;
    double value = 0;
    EXPECT_FALSE(ex::NullValueOf(&well, &value));
    EXPECT_FALSE(ex::NullValueOf(nullptr, &value));
    well.m_params.push_back(Param("null", "", "  -999.25 "));
    ASSERT_TRUE(ex::NullValueOf(&well, &value));
    EXPECT_DOUBLE_EQ(value, -999.25);
    well.m_params[0].m_value = "ERR";
    EXPECT_FALSE(ex::NullValueOf(&well, &value));

    quarl::CLasSection data;
    data.m_curves = {Numeric("TIME", {1}), Numeric("GR", {1}), Numeric("depth", {1})};
    EXPECT_EQ(ex::DepthCurveIndex(data), 2);
    data.m_curves[2].m_definition.m_mnemonic = "X";
    EXPECT_EQ(ex::DepthCurveIndex(data), 0);
    data.m_curves[0].m_isNumeric = false;
    EXPECT_EQ(ex::DepthCurveIndex(data), -1);
}

TEST(FileFacts, FormatIsReadBackFromTheVersionSection)
{
    quarl::CLasSection version;
    EXPECT_EQ(ex::FormatOf(&version).version, "?");
    version.m_params = {Param("VERS", "", "2.0"), Param("WRAP", "", "NO")};
    ex::FileFormat f = ex::FormatOf(&version);
    EXPECT_EQ(f.version, "2.0");
    EXPECT_FALSE(f.isLas3);
    EXPECT_FALSE(f.isWrapped);
    EXPECT_EQ(f.delimiter, ' ');

    // Written against the period, wrapped in the unit, delimiter by name.
    version.m_params = {Param("VERS", "3.0", ""), Param("WRAP", "YES", ""),
                        Param("dlm", "", "comma")};
    f = ex::FormatOf(&version);
    EXPECT_EQ(f.version, "3.0");
    EXPECT_TRUE(f.isLas3);
    EXPECT_TRUE(f.isWrapped);
    EXPECT_EQ(f.delimiter, ',');

    version.m_params = {Param("VERS", "", "1.2"), Param("WRAP", "", "yes"),
                        Param("DLM", "", "TAB")};
    f = ex::FormatOf(&version);
    EXPECT_FALSE(f.isLas3);
    EXPECT_TRUE(f.isWrapped);
    EXPECT_EQ(f.delimiter, '\t');
    EXPECT_EQ(ex::DelimiterName(f.delimiter), "tab");
}

TEST(Text, JsonAndXmlEscaping)
{
    EXPECT_EQ(ex::JsonString("a\"b\\c\n\t\x01"), "\"a\\\"b\\\\c\\n\\t\\u0001\"");
    EXPECT_EQ(ex::JsonString("m\xC2\xB3"), "\"m\xC2\xB3\"");
    EXPECT_EQ(ex::JsonNumber(NAN), "null");
    EXPECT_EQ(ex::JsonNumber(INFINITY), "null");
    EXPECT_EQ(ex::JsonNumber(1699.5), "1699.5");
    EXPECT_EQ(ex::JsonNumber(0.1), "0.1");
    EXPECT_EQ(ex::XmlEscape("a<b>&\"c'\x02"), "a&lt;b&gt;&amp;&quot;c&apos;?");
    EXPECT_EQ(ex::Shorten("abcdef", 4), "abc\xE2\x80\xA6");
    EXPECT_EQ(ex::Shorten("abc", 4), "abc");
    // Never cut inside a UTF-8 sequence: "ab" + 3-byte char, cut after 3 bytes.
    EXPECT_EQ(ex::Shorten("ab\xE2\x82\xAC"
                          "cd",
                          4),
              "ab\xE2\x80\xA6");
}

TEST(Text, OptionListsAndSectionNames)
{
    EXPECT_EQ(ex::SplitList(" RES, ILD ,,"), (std::vector<std::string>{"RES", "ILD"}));
    EXPECT_TRUE(ex::SplitList("").empty());
    EXPECT_TRUE(ex::ListContainsNoCase({"RES", "ild"}, "ILD"));
    EXPECT_FALSE(ex::ListContainsNoCase({"RES", "ild"}, "IL"));

    EXPECT_EQ(ex::MapSectionName("Log_Definition", false), "Curve");
    EXPECT_EQ(ex::MapSectionName("log_data", false), "ASCII");
    EXPECT_EQ(ex::MapSectionName("Core_Data", false), "Core_Data");
    EXPECT_EQ(ex::MapSectionName("Well", false), "Well");
    EXPECT_EQ(ex::MapSectionName("A", true), "Log_Data");
    EXPECT_EQ(ex::MapSectionName("curve", true), "Log_Definition");
    EXPECT_EQ(ex::MapSectionName("W", true), "Well");
    EXPECT_EQ(ex::MapSectionName("Other", true), "Other");
}

TEST(Conversion, WellRangeIsTakenFromTheDataSoTheWriterAcceptsIt)
{
    auto document = [](std::vector<double> depths, const char* stop, const char* step) {
        quarl::CLasSection well;
        well.m_name = "W";  // stored by a LAS 2.0 writer as "Well"
        well.m_type = quarl::LASSECTION_HEADER;
        well.m_params = {Param("STRT", "M", "100"), Param("STOP", "M", stop),
                         Param("STEP", "M", step), Param("WELL", "", "X")};
        quarl::CLasSection data;
        data.m_name = "A";
        data.m_type = quarl::LASSECTION_DATA;
        data.m_curves = {Numeric("DEPT", depths), Numeric("GR", depths)};
        return std::vector<quarl::CLasSection>{well, data};
    };
    auto accepted = [](const std::vector<quarl::CLasSection>& sections) {
        quarl::CLasWriter writer;
        for (const quarl::CLasSection& s : sections)
            if (writer.AddSection(s) != quarl::LASFILE_OK) return false;
        return writer.Validate() == quarl::LASFILE_OK;
    };

    // A STOP and a STEP the depths do not follow.
    auto sections = document({100, 100.5, 101}, "200", "1");
    EXPECT_FALSE(accepted(sections));
    auto notes = ex::FixWellRange(sections, false);
    EXPECT_EQ(notes.size(), 2u);
    EXPECT_EQ(sections[0].m_params[1].m_value, "101");
    EXPECT_EQ(sections[0].m_params[2].m_value, "0.5");
    EXPECT_EQ(sections[0].m_params[0].m_value, "100");  // STRT was right and stays
    EXPECT_TRUE(accepted(sections));

    // Uneven depths: STEP 0, which the writer does not test.
    sections = document({100, 101, 103}, "103", "1");
    EXPECT_FALSE(accepted(sections));
    notes = ex::FixWellRange(sections, false);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_NE(notes[0].find("not evenly spaced"), std::string::npos);
    EXPECT_EQ(sections[0].m_params[2].m_value, "0");
    EXPECT_TRUE(accepted(sections));

    // A range that agrees is left alone, text and all.
    sections = document({100, 100.25, 100.5}, "100.50000", "0.2500");
    EXPECT_TRUE(ex::FixWellRange(sections, false).empty());
    EXPECT_EQ(sections[0].m_params[1].m_value, "100.50000");

    // In LAS 3.0 one-letter names are not written out in full: no Well and no
    // ASCII section is found, and nothing changes.
    sections = document({100, 100.5}, "200", "1");
    EXPECT_TRUE(ex::FixWellRange(sections, true).empty());
}
