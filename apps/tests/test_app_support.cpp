// The support of the programs where it computes: scales and gaps of the log
// plot, curve statistics, the well range taken from the data for conversion,
// and the conversion of the real files of the corpus.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "common/curve_families.h"
#include "common/log_facts.h"
#include "common/text.h"
#include "support/conversion.h"
#include "support/plot_request.h"
#include "support/read_notes.h"
#include "support/svg_plot.h"

namespace ex = quarl::apps;
namespace common = quarl::common;
namespace fs = std::filesystem;
using quarl::CLasCurve;
using quarl::CLasParam;
using quarl::CLasSection;
using quarl::LASFILE_OK;

namespace {

CLasParam Param(const char* mnemonic, const char* unit, const char* value)
{
    CLasParam p;
    p.m_mnemonic = mnemonic;
    p.m_unit = unit;
    p.m_value = value;
    return p;
}

CLasCurve Numeric(const char* mnemonic, std::vector<double> values)
{
    CLasCurve c;
    c.m_isNumeric = true;
    c.m_definition = Param(mnemonic, "", "");
    c.m_numbers = std::move(values);
    return c;
}

std::string Scale(const ex::TrackScale& s)
{
    return std::to_string(s.log) + " " + std::to_string(s.left) + " " + std::to_string(s.right);
}

TEST(PlotScales, NiceStepsAndBounds)
{
    const double steps[][3] = {{200, 4, 50}, {7, 4, 2},  {0.37, 4, 0.1}, {1000, 10, 100},
                               {0, 4, 1},    {-3, 4, 1}, {NAN, 4, 1}};
    for (const auto& c : steps) EXPECT_NEAR(ex::NiceStep(c[0], c[1]), c[2], 1e-15) << c[0];
    const double ranges[][2] = {{99.9, 127.7}, {-21.6, -13.7}, {0.2, 0.35}, {2410, 2575.1},
                                {0, 1e6},      {-5, 5},        {5, 5},      {0, 0}};
    for (const auto& c : ranges) {  // covers the values, strictly when they are one, on 2 to 6 nice steps
        const ex::TrackScale s = ex::LinearScale(c[0], c[1]);
        const double intervals = (s.right - s.left) / s.step;
        EXPECT_TRUE(!s.log && s.left <= c[0] && s.right >= c[1] && s.left < s.right && intervals > 2 - 1e-9 &&
                    intervals < 6 + 1e-9 && std::fabs(s.left / s.step - std::round(s.left / s.step)) < 1e-9)
            << c[0] << " " << c[1];
    }
    EXPECT_EQ(Scale(ex::LinearScale(99.9, 127.7)), "0 90.000000 130.000000");
    EXPECT_LT(ex::LinearScale(NAN, NAN).left, ex::LinearScale(NAN, NAN).right);
    // Log scales span whole decades; no positive value gives a default range.
    EXPECT_EQ(Scale(ex::LogScale(2.5, 13.0)) + Scale(ex::LogScale(10, 100)) + Scale(ex::LogScale(5, 5)),
              "1 1.000000 100.0000001 10.000000 100.0000001 1.000000 10.000000");
    EXPECT_NEAR(ex::LogScale(0.216, 0.9).left, 0.1, 1e-15);
    EXPECT_NEAR(ex::LogScale(0.216, 0.9).right, 1.0, 1e-15);
    const ex::TrackScale none = ex::LogScale(NAN, -1.0);
    EXPECT_TRUE(0 < none.left && none.left < none.right);
    const ex::TrackScale log = ex::LogScale(1.0, 100.0);
    EXPECT_NEAR(ex::ScalePosition(log, 10.0), 0.5, 1e-12);
    EXPECT_NEAR(ex::ScalePosition(log, 1.0), 0.0, 1e-12);
    EXPECT_TRUE(std::isnan(ex::ScalePosition(log, 0.0)) && std::isnan(ex::ScalePosition(log, -2.0)));
    EXPECT_NEAR(ex::ScalePosition(ex::LinearScale(0.0, 150.0), 75.0), 0.5, 1e-12);
}

TEST(PlotScales, SpikesAndExtremeValuesGiveFiniteBoundedScales)
{
    // The default range leaves out a spike, but not the rare values of a flag.
    std::vector<double> gr;
    for (int i = 0; i < 200; ++i) gr.push_back(40 + i % 80);
    gr.push_back(-2324);
    const ex::ValueRange spiked = ex::RobustRange(gr, false);
    EXPECT_EQ(common::FormatNumber(spiked.min) + " " + common::FormatNumber(spiked.max), "40 119");
    gr.assign(50, 0.0);
    gr.push_back(1);
    EXPECT_EQ(ex::RobustRange(gr, false).max, 1.0);
    EXPECT_NEAR(ex::RobustRange({0.5, 2, 3, 5, 8, 1e9}, true).max, 8, 1e-9);  // spread in decades
    const double extremes[][2] = {
        {-1e308, 1e308}, {1.7e308, 1.7e308}, {-DBL_MAX, -DBL_MAX}, {1e17, 1e17 + 64}, {5e-324, 5e-324}};
    for (const auto& c : extremes) {
        const ex::TrackScale s = ex::LinearScale(c[0], c[1]);
        EXPECT_TRUE(std::isfinite(s.left) && std::isfinite(s.right) && s.left < s.right && s.left <= c[0] &&
                    s.right >= c[1])
            << c[0];
    }
    EXPECT_GT(ex::LogScale(5e-324, 1).left, 0.0);
    EXPECT_EQ(ex::GridValues(1e17, 1e17 + 1024, 200, 100).size(), 6u);
    EXPECT_TRUE(ex::GridValues(1e17, 1e17 + 1024, 0.2, 100).empty() && ex::GridValues(-1e308, 1e308, 1, 100).empty());
    EXPECT_EQ(ex::LogGridValues(0.2, 2000).size(), 37u);  // 0.2 to 0.9, 1 to 9, ..., 100 to 900, 1000, 2000
    EXPECT_LT(ex::LogGridValues(5e-324, 1e308).size(), 700u);
}

ex::PlotCurve Curve(const char* mnemonic, std::vector<double> values)
{
    ex::PlotCurve curve;
    curve.mnemonic = mnemonic;
    curve.values = std::move(values);
    return curve;
}

size_t Count(const std::string& text, const std::string& what)
{
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

TEST(PlotRender, ExtremeValuesAndManyRowsEndInABoundedPicture)
{
    const double big = 1e17;
    const struct {
        std::vector<double> depths, values;
        bool log;
    } cases[] = {{{big, big + 16, big + 32, big + 1000}, {1, 2, 3, 4}, false},
                 {{-1e308, 0, 1e308}, {-1e308, 0, 1e308}, false},
                 {{1, 2, 3}, {1.7e308, 1.7e308, 1.7e308}, false},
                 {{1, 2, 3, 4}, {5e-324, 5e-324, 1e-300, 1}, true},
                 {{7, 7}, {5e-324, 5e-324}, true}};
    for (const auto& c : cases) {
        ex::PlotInput in;
        in.depths = c.depths;
        in.tracks = {{{Curve("GR", c.values)}}};
        in.tracks[0].curves[0].log = c.log;
        const std::string svg = ex::RenderLogPlot(in);
        EXPECT_TRUE(svg.size() < 30000 && svg.find("nan") == std::string::npos && svg.find("inf") == std::string::npos)
            << c.depths[0] << " " << c.values[0] << "\n"
            << svg;
    }
    ex::PlotInput in;  // a million rows: a few points per pixel row
    for (int i = 0; i < 1000000; ++i) in.depths.push_back(1000 + i * 0.01);
    in.tracks = {{{Curve("GR", in.depths)}}};
    EXPECT_LT(ex::RenderLogPlot(in).size(), 200000u);
    // Thinning keeps the leftmost and rightmost point of a pixel row, in order, and gaps wider than a row.
    std::string kept;
    for (const ex::PagePoint& p : ex::ThinPoints(
             {{5, 10.1, true}, {9, 10.5, false}, {1, 10.7, true}, {4, 10.9, false}, {3, 11.2, false}, {3, 14, true}},
             100))
        kept += common::FormatNumber(p.x) + "," + common::FormatNumber(p.y) + (p.start ? "s " : " ");
    EXPECT_EQ(kept, "9,10.5s 1,10.7 3,11.2 3,14s ");
    EXPECT_EQ(ex::ThinPoints(std::vector<ex::PagePoint>(1000, {1, 10, false}), 10).size(), 1u);
}

TEST(PlotRender, TracksOfSeveralCurvesGivenAndReversedScalesAndSparseSamples)
{
    ex::PlotInput in;
    in.depths = {100, 101, 102, 103, 104, 105};
    in.hasNull = true;
    in.nullValue = -999.25;
    ex::PlotCurve perm = Curve("PERM", {-999.25, 12, -999.25, -999.25, 40, -999.25});  // sparse: points
    in.tracks = {{{Curve("GR", {50, 60, 70, 80, 90, 100}), Curve("SP", {-5, -4, -3, -2, -1, 0}), perm}}};
    const std::string svg = ex::RenderLogPlot(in);
    EXPECT_EQ(Count(svg, "<path "), 3u);
    EXPECT_EQ(Count(svg, "stroke-width=\"4.5\""), 1u);
    ex::PlotCurve nphi = Curve("NPHI", {0.1, 0.3});
    nphi.reversed = true;
    const ex::TrackScale reversed = ex::ScaleOf(nphi, false, 0);
    EXPECT_GT(reversed.left, reversed.right);
    nphi.hasRange = true;
    nphi.from = 0.45;
    nphi.to = -0.15;
    EXPECT_NEAR(ex::ScalePosition(ex::ScaleOf(nphi, false, 0), 0.45), 0.0, 1e-12);
    EXPECT_NEAR(ex::ScalePosition(ex::ScaleOf(nphi, false, 0), 0.0), 0.75, 1e-12);
}

TEST(PlotRequest, ScalesTracksAndWhatOnePictureHolds)
{
    std::vector<ex::CurveRange> ranges;
    EXPECT_TRUE(ex::ParseScaleList("GR=0:150, NPHI=0.45:-0.15", &ranges));
    ASSERT_EQ(ranges.size(), 2u);
    EXPECT_TRUE(ranges[1].mnemonic == "NPHI" && ranges[1].from == 0.45 && ranges[1].to == -0.15);
    for (const char* bad : {"GR", "GR=0", "=0:1", "GR=1:1", "GR=a:2", ""})
        EXPECT_FALSE(ex::ParseScaleList(bad, &ranges)) << bad;
    ex::TrackRequest track;
    EXPECT_TRUE(ex::ParseTrackList("ILD, ILM:log", &track) && track.log && track.curves.size() == 2);
    EXPECT_FALSE(ex::ParseTrackList("ILD:wide", &track) || ex::ParseTrackList(":log", &track));

    CLasSection data;
    data.m_name = "Core_Data";
    for (int i = 0; i <= 100; ++i) data.m_curves.push_back(Numeric(("C" + std::to_string(i)).c_str(), {1, 2}));
    ex::PlotRequest request;  // by default the first 40 curves, with a note; core data as points
    ex::TrackChoice choice = ex::ChooseTracks(data, 0, request);
    EXPECT_TRUE(choice.tracks.size() == 40 && choice.notes.size() == 1 && choice.error.empty());
    EXPECT_TRUE(choice.tracks[0].curves[0].style == ex::CurveStyle::kPoints);
    request.tracks.assign(41, {{"C1"}, false});
    EXPECT_FALSE(ex::ChooseTracks(data, 0, request).error.empty());
    request.tracks = {{{"C1", "C2", "C3", "C4", "C5", "C6", "C7"}, false}};
    EXPECT_FALSE(ex::ChooseTracks(data, 0, request).error.empty());
    request.tracks = {{{"C1", "C2"}, true}};
    request.ranges = {{"C2", 0, 10}};  // a log scale cannot reach 0
    EXPECT_FALSE(ex::ChooseTracks(data, 0, request).error.empty());
}

TEST(PlotRequest, DefaultLayoutFollowsTheCurveFamilies)
{
    CLasSection data;
    const auto add = [&](const char* mnemonic, const char* unit, std::vector<double> values) {
        data.m_curves.push_back(Numeric(mnemonic, std::move(values)));
        data.m_curves.back().m_definition.m_unit = unit;
    };
    add("DEPT", "M", {1, 2});
    add("GR", "GAPI", {50, 60});
    add("ILD", "OHMM", {2, 3});
    add("NPHI", "PU", {20, 25});  // percent: the scale in percent
    add("RHOB", "K/M3", {2400, 2500});
    add("DT", "US/M", {300, 310});
    add("CALI", "MM", {220, 230});
    add("TVD", "M", {1, 2});  // an index column: not drawn
    add("XYZ", "", {1, 2});   // no family: a track of its own
    add("LLD", "OHMM", {4, 5});
    ex::PlotRequest request;
    request.ranges = {{"GR", 0, 200}};  // --scale wins over the family's scale
    const ex::TrackChoice choice = ex::ChooseTracks(data, 0, request);
    ASSERT_EQ(choice.tracks.size(), 4u);
    EXPECT_EQ(choice.depthAfter, 1u);
    std::vector<std::string> layout;
    for (const ex::PlotTrack& track : choice.tracks) {
        std::string text;
        for (const ex::PlotCurve& c : track.curves)
            text += c.mnemonic + "=" + common::FormatNumber(c.from) + ":" + common::FormatNumber(c.to) +
                    (c.log ? "L " : " ");
        layout.push_back(text);
    }
    EXPECT_EQ(layout[0], "GR=0:200 CALI=152.4:406.4 ");
    EXPECT_EQ(layout[1], "ILD=0.2:2000L LLD=0.2:2000L ");
    EXPECT_EQ(layout[2], "NPHI=45:-15 RHOB=1950:2950 DT=" + common::FormatNumber(140 / 0.3048) + ":" +
                             common::FormatNumber(40 / 0.3048) + " ");
    EXPECT_EQ(layout[3].substr(0, 4), "XYZ=");
    ASSERT_EQ(choice.notes.size(), 1u);
    EXPECT_NE(choice.notes[0].find("1 index column"), std::string::npos);

    // The depth track stands behind the first track: its header and the
    // first track's curve are left of the second track.
    ex::PlotInput in;
    in.depths = {1, 2};
    in.depthMnemonic = "DEPT";
    in.tracks = choice.tracks;
    in.depthAfter = choice.depthAfter;
    const std::string svg = ex::RenderLogPlot(in);
    const size_t depthHeader = svg.find(">DEPT<"), ild = svg.find(">ILD<");
    ASSERT_TRUE(depthHeader != std::string::npos && ild != std::string::npos);
    const auto xBefore = [&](size_t at) { return std::stod(svg.substr(svg.rfind("x=\"", at) + 3)); };
    EXPECT_GT(xBefore(depthHeader), in.trackWidth);
    EXPECT_GT(xBefore(ild), xBefore(depthHeader));
}

// The runs of a plotted curve as "depth:value ..." joined by " / ".
std::string Runs(const std::vector<double>& depth, const std::vector<double>& values, bool hasNull, bool log)
{
    std::string text;
    for (const auto& run : ex::CurveRuns(depth, values, hasNull, -999.25, log)) {
        text += text.empty() ? "" : "/";
        for (const auto& [d, v] : run) text += " " + common::FormatNumber(d) + ":" + common::FormatNumber(v);
    }
    return text;
}

TEST(PlotCurves, NullAndUnplottableValuesBreakTheLine)
{
    const std::vector<double> depth = {100, 100.5, 101, 101.5, 102, 102.5, 103};
    EXPECT_EQ(Runs(depth, {50, 51, -999.25, -999.25, 60, NAN, 62}, true, false), " 100:50 100.5:51/ 102:60/ 103:62");
    EXPECT_EQ(Runs(depth, {50, 51, -999.25, -999.25, 60, NAN, 62}, false, false),
              " 100:50 100.5:51 101:-999.25 101.5:-999.25 102:60/ 103:62");
    EXPECT_EQ(Runs(depth, {2, 0, 3, -1, 4, 5, 6}, true, true), " 100:2/ 101:3/ 102:4 102.5:5 103:6");
    EXPECT_EQ(Runs({100, -999.25, 101}, {1, 2, 3, 4}, true, false), " 100:1/ 101:3");  // a NULL depth drops its row
}

TEST(CurveFamilies, MnemonicsFindTheirFamilyInAnyCaseAndWithADuplicateSuffix)
{
    const struct {
        const char* mnemonic;
        const char* family;  // null: none
    } cases[] = {{"GR", "gamma_ray"},    {"sgr", "gamma_ray"},   {"GR:2", "gamma_ray"}, {"RHOB", "density"},
                 {"ZDEN", "density"},    {"NPHI", "neutron"},    {"TNPH", "neutron"},   {"DT", "sonic"},
                 {"ILD", "resistivity"}, {"LLD", "resistivity"}, {"G", nullptr},        {"GRX", nullptr},
                 {"", nullptr},          {"DEPT", nullptr}};
    for (const auto& c : cases) {
        const common::CurveFamily* family = common::FindCurveFamily(c.mnemonic);
        EXPECT_EQ(family ? std::string(family->name) : "", c.family ? c.family : "") << c.mnemonic;
    }
    EXPECT_TRUE(common::IsIndexMnemonic("dept"));
    EXPECT_TRUE(common::IsIndexMnemonic("DEPTH:2"));
    EXPECT_FALSE(common::IsIndexMnemonic("DT"));
    size_t count = 0;
    const common::CurveFamily* all = common::CurveFamilies(count);
    ASSERT_GT(count, 0u);
    EXPECT_EQ(common::FindCurveFamilyByName(all[count - 1].name), &all[count - 1]);
    EXPECT_TRUE(common::FindCurveFamily("RT")->log);
}

TEST(ReadNotes, OneLineAKindWithCountsAndRangesOfLines)
{
    std::vector<quarl::CLasNote> notes;
    for (uint64_t line = 11; line <= 18; ++line) notes.push_back({line, quarl::LASNOTE_LAS12_WELL_VALUE, "x"});
    notes.push_back({40, quarl::LASNOTE_SECTION_SKIPPED, "section ~Other passed over"});
    EXPECT_EQ(ex::NotesSummary(notes, "f.las"),
              "9 notes: 8 x LAS 1.2 Well value and description swapped (lines 11-18); 1 x section passed over "
              "(line 40); quarl-check f.las lists them");
    std::vector<quarl::CLasNote> rows;
    for (uint64_t line : {1, 2, 3, 5, 7, 9, 11}) rows.push_back({line, quarl::LASNOTE_SHORT_ROW, "r"});
    rows.push_back({0, quarl::LASNOTE_DECODED, "whole file"});
    rows.push_back({90, quarl::LASNOTE_MORE_NOTES, "150 more notes of kind LASNOTE_SHORT_ROW, the last on this line"});
    EXPECT_EQ(ex::NotesSummary(rows, "g"),
              "158 notes: 157 x short row filled (lines 1-3, 5, 7, ...); 1 x text decoded; quarl-check g lists them");
    EXPECT_EQ(ex::NotesSummary({}, "g"), "");
}

TEST(CurveFacts, StatisticsNullValueAndDepthCurve)
{
    const CLasCurve curve = Numeric("GR", {45.5, -999.25, 120.0, -999.25, 3.0, NAN});
    const auto stats = [](const CLasCurve& c, bool hasNull) {
        const common::CurveStats s = common::StatsOf(c, hasNull, -999.25);
        return std::to_string(s.count) + " " + std::to_string(s.nulls) + " " + common::FormatNumber(s.min) + " " +
               common::FormatNumber(s.max);
    };
    EXPECT_EQ(stats(curve, true), "6 3 3 120");
    EXPECT_EQ(stats(curve, false), "6 1 -999.25 120");
    EXPECT_EQ(stats(Numeric("X", {-999.25, -999.25}), true).substr(0, 4), "2 2 ");
    EXPECT_TRUE(std::isnan(common::StatsOf(Numeric("X", {-999.25}), true, -999.25).min));
    CLasCurve text;
    text.m_isNumeric = false;
    text.m_strings = {"sand", "shale"};
    EXPECT_EQ(stats(text, true).substr(0, 4), "2 0 ");

    CLasSection well;
    double value = 0;
    EXPECT_FALSE(common::NullValueOf(&well, &value) || common::NullValueOf(nullptr, &value));
    well.m_params.push_back(Param("null", "", "  -999.25 "));
    EXPECT_TRUE(common::NullValueOf(&well, &value) && value == -999.25);
    well.m_params[0].m_value = "ERR";
    EXPECT_FALSE(common::NullValueOf(&well, &value));

    CLasSection data;
    data.m_curves = {Numeric("TIME", {1}), Numeric("GR", {1}), Numeric("depth", {1})};
    EXPECT_EQ(common::DepthCurveIndex(data), 2);
    data.m_curves[2].m_definition.m_mnemonic = "X";
    EXPECT_EQ(common::DepthCurveIndex(data), 0);
    data.m_curves[0].m_isNumeric = false;
    EXPECT_EQ(common::DepthCurveIndex(data), -1);
}

std::string ReadBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

// The bytes of a written file without its "# Filename:" line.
std::string WithoutFilename(std::string bytes)
{
    const size_t start = bytes.find("# Filename: ");
    if (start == std::string::npos) return bytes;
    return bytes.erase(start, bytes.find('\n', start) + 1 - start);
}

// The values of every curve, 15 significant digits each, sorted by curve;
// text curves are marked "|text ".
std::string Values(const std::string& path, quarl::ELASFILEERROR* result = nullptr)
{
    quarl::CLasReader reader;
    const quarl::ELASFILEERROR opened = reader.Open(tessel::TxString(path));
    if (result) *result = opened;
    std::vector<std::string> curves;
    for (const auto& s : reader)
        for (const CLasCurve& c : s->m_curves) {
            curves.push_back((c.m_isNumeric ? "|" : "|text ") + c.m_definition.m_mnemonic + ":");
            for (double v : c.m_numbers) curves.back() += common::FormatNumber(v, 15) + ",";
            for (const std::string& v : c.m_strings) curves.back() += v + ",";
        }
    std::sort(curves.begin(), curves.end());
    std::string text;
    for (const std::string& c : curves) text += c;
    return text;
}

// Fewer real round trips than this proves nothing about the corpus.
constexpr int kMinimumCorpusRoundTrips = 70;

// The numbers of the log data section of a read (the first one the reader
// flags as log data), curve by curve, sorted; empty without one.
std::string LogNumbers(const std::string& path, const quarl::CLasReadOptions& options, quarl::ELASFILEERROR* result)
{
    quarl::CLasReader reader;
    reader.SetOptions(options);
    *result = reader.Open(tessel::TxString(path));
    // A missing value is the NULL value or NaN (a token that is no number),
    // which a repairing write gives as the NULL value: both compare alike.
    quarl::CLasSection well;
    quarl::CLasParam null;
    const bool hasNull = reader.GetWellHeaders(well) == LASFILE_OK && well.FindParameterByMnemonic("NULL", &null) >= 0;
    const double nullValue = hasNull ? std::atof(null.m_value.c_str()) : std::nan("");
    std::vector<std::string> sections;
    for (const auto& s : reader) {
        if (s->m_type != quarl::LASSECTION_DATA || !(s->m_flags & CLasSection::kFlagLogData)) continue;
        std::vector<std::string> curves;
        for (const CLasCurve& c : s->m_curves) {
            if (!c.m_isNumeric) continue;
            curves.emplace_back("|");
            for (double v : c.m_numbers)
                curves.back() += (std::isnan(v) || v == nullValue ? "NULL" : common::FormatNumber(v, 15)) + ",";
        }
        std::sort(curves.begin(), curves.end());  // a curve may move: compare the set
        sections.emplace_back();
        for (const std::string& c : curves) sections.back() += c;
    }
    return sections.empty() ? "" : sections[0];
}

// quarl-convert's default: every file of the corpus that reads leniently and
// holds rows of log data converts to both versions, and the result reads
// back strictly with the same log numbers.
TEST(Conversion, EveryCorpusFileConvertsToBothVersionsByDefault)
{
    std::vector<std::string> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(QUARL_CORPUS_DIR, error))
        if (entry.path().extension() == ".las") files.push_back(entry.path().string());
    if (files.empty()) GTEST_SKIP() << "no corpus at " << QUARL_CORPUS_DIR;
    std::sort(files.begin(), files.end());
    const fs::path dir = fs::path(testing::TempDir()) / ("quarl_convert_all_" + std::to_string(getpid()));
    fs::create_directories(dir);
    const std::string out = (dir / "out.las").string();
    quarl::CLasReadOptions lenient;
    lenient.lenient = true;
    int converted = 0;
    for (const std::string& path : files) {
        quarl::ELASFILEERROR read;
        const std::string original = LogNumbers(path, lenient, &read);
        const std::string name = fs::path(path).filename().string();
        if (read != LASFILE_OK || original.find(',') == std::string::npos) continue;
        for (bool las3 : {false, true}) {
            SCOPED_TRACE(path + (las3 ? " to LAS 3.0" : " to LAS 2.0"));
            ex::ConvertOptions options;
            options.toLas3 = las3;
            options.read = lenient;
            const ex::ConvertResult result = ex::ConvertFile(path, out, ex::RepairingOptions(options));
            ASSERT_EQ(result.code, LASFILE_OK) << result.message;
            EXPECT_EQ(LogNumbers(out, quarl::CLasReadOptions(), &read), original);
            EXPECT_EQ(read, LASFILE_OK);
            ++converted;
        }
    }
    std::printf("corpus: %zu files, %d conversions\n", files.size(), converted);
    EXPECT_GE(converted, 2 * 80);
    // Strictly, a unit the writer cannot hold stays a refusal; by default
    // it is renamed, with a note.
    const std::string period = (dir / "period.las").string();
    std::ofstream(period) << "~V\nVERS. 2.0 :\nWRAP. NO :\n~W\nSTRT.M 1 :\nSTOP.M 1 :\nSTEP.M 0 :\n"
                             "~C\nDEPT.M :\nCond..MS/M :\n~A\n1 2\n";
    ex::ConvertOptions strict;
    EXPECT_EQ(ex::ConvertFile(period, out, strict).code, quarl::LASFILE_BAD_NAME);
    strict.read.lenient = true;
    const ex::ConvertResult repaired = ex::ConvertFile(period, out, ex::RepairingOptions(strict));
    EXPECT_EQ(repaired.code, LASFILE_OK);
    EXPECT_NE(
        std::find(repaired.notes.begin(), repaired.notes.end(), "mnemonic \"Cond.\" of section Curve written as Cond_"),
        repaired.notes.end());
    fs::remove_all(dir);
}

TEST(Conversion, CorpusAndSamplesSurviveConversion)
{
    std::vector<std::string> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(QUARL_CORPUS_DIR, error))
        if (entry.path().extension() == ".las") files.push_back(entry.path().string());
    if (files.empty()) GTEST_SKIP() << "no corpus at " << QUARL_CORPUS_DIR;
    std::sort(files.begin(), files.end());
    // A folder of this process's own: other runs of the suite may be going on.
    const fs::path dir = fs::path(testing::TempDir()) / ("quarl_app_support_" + std::to_string(getpid()));
    fs::create_directories(dir);
    const std::string out = (dir / "out.las").string();
    // Real files often give a STOP or STEP their depths do not follow, which
    // the writer refuses: in repair mode the range is taken from the data,
    // values untouched. Files whose curves a repair changes (a section or
    // curve left out or renamed, a data section added) are passed over.
    ex::ConvertOptions options;
    options.repair = true;
    const auto keepsValues = [](const ex::ConvertResult& result) {
        for (const quarl::CLasRepair& r : result.repairs) {
            const std::string section = r.section;
            const bool version =
                quarl::common::EqualsNoCase(section, "Version") || quarl::common::EqualsNoCase(section, "V");
            const bool curveNames =
                quarl::common::EqualsNoCase(section, "Curve") || section.find("_Definition") != std::string::npos;
            const bool changesCurves =
                r.kind == quarl::LASREPAIR_SECTION_NOT_WRITTEN || r.kind == quarl::LASREPAIR_CURVE_LEFT_OUT ||
                r.kind == quarl::LASREPAIR_CURVE_MOVED || r.kind == quarl::LASREPAIR_CURVE_PADDED ||
                r.kind == quarl::LASREPAIR_DEFINITION_ADDED || r.kind == quarl::LASREPAIR_LINE_LEFT_OUT;
            if (changesCurves || (r.kind == quarl::LASREPAIR_SECTION_LEFT_OUT && !version) ||
                (r.kind == quarl::LASREPAIR_MNEMONIC && curveNames))
                return false;
        }
        return true;
    };
    int roundTrips = 0;
    for (const std::string& path : files) {
        SCOPED_TRACE(path);
        quarl::ELASFILEERROR read;
        const std::string original = Values(path, &read);
        if (read != LASFILE_OK || original.find("|text ") != std::string::npos || original.empty()) continue;
        std::remove(out.c_str());
        const ex::ConvertResult first = ex::ConvertFile(path, out, options);
        if (first.code != LASFILE_OK) {  // only for what the file holds, never for a fault
            EXPECT_TRUE((first.stage == "add" || first.stage == "write") && first.code != quarl::LASFILE_IO_FAILED &&
                        first.code != quarl::LASFILE_OUT_OF_MEMORY && first.code != quarl::LASFILE_WRONG_STATE)
                << first.message;
            continue;
        }
        if (!keepsValues(first)) continue;
        EXPECT_EQ(Values(out), original);
        const std::string again = (dir / "again.las").string();
        ASSERT_EQ(ex::ConvertFile(out, again, options).code, LASFILE_OK);
        EXPECT_EQ(WithoutFilename(ReadBytes(again)), WithoutFilename(ReadBytes(out)))
            << "converting the written file again changed it";
        ++roundTrips;
    }
    std::printf("corpus: %zu files, %d round trips\n", files.size(), roundTrips);
    EXPECT_GE(roundTrips, kMinimumCorpusRoundTrips);
    // The bundled LAS 3.0 sample, text column and all, with the comma.
    const std::string sample = std::string(QUARL_SAMPLE_DIR) + "/sample_las30.las";
    options.toLas3 = true;
    options.delimiter = ',';
    ASSERT_EQ(ex::ConvertFile(sample, out, options).code, LASFILE_OK);
    EXPECT_EQ(Values(out), Values(sample));
    fs::remove_all(dir);
}

}  // namespace

// A large file is read on every core, strictly or leniently; a small one and
// a missing one on one thread.
TEST(ReadOptions, LargeFilesAreReadOnEveryCore)
{
    const fs::path dir = fs::temp_directory_path() / ("quarl-threads-" + std::to_string(getpid()));
    fs::create_directories(dir);
    const std::string small = (dir / "small.las").string();
    const std::string large = (dir / "large.las").string();
    std::ofstream(small) << "~V\n";
    std::ofstream(large).close();
    fs::resize_file(large, ex::kManyThreadsFrom);
    for (bool strict : {true, false}) {
        EXPECT_EQ(ex::ProgramReadOptions(strict, large).threads, 0u);
        EXPECT_EQ(ex::ProgramReadOptions(strict, small).threads, 1u);
        EXPECT_EQ(ex::ProgramReadOptions(strict, (dir / "none.las").string()).threads, 1u);
    }
    EXPECT_FALSE(ex::ProgramReadOptions(true, large).lenient);
    EXPECT_TRUE(ex::ProgramReadOptions(false, large).lenient);
    fs::remove_all(dir);
}
