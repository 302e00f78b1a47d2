#include "support/svg_plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "common/log_facts.h"
#include "common/text.h"

namespace quarl::apps {

std::vector<std::vector<std::pair<double, double>>> CurveRuns(const std::vector<double>& depths,
                                                              const std::vector<double>& values,
                                                              bool hasNull, double nullValue,
                                                              bool logScale)
{
    std::vector<std::vector<std::pair<double, double>>> runs;
    std::vector<std::pair<double, double>> run;
    const size_t n = std::min(depths.size(), values.size());
    for (size_t i = 0; i < n; ++i) {
        const double d = depths[i], v = values[i];
        const bool bad = common::IsNullValue(v, hasNull, nullValue) || !std::isfinite(v) ||
                         common::IsNullValue(d, hasNull, nullValue) || !std::isfinite(d) ||
                         (logScale && !(v > 0));
        if (bad) {
            if (!run.empty()) runs.push_back(std::move(run));
            run.clear();
            continue;
        }
        run.emplace_back(d, v);
    }
    if (!run.empty()) runs.push_back(std::move(run));
    return runs;
}

std::vector<PagePoint> ThinPoints(const std::vector<PagePoint>& points, size_t cap)
{
    std::vector<PagePoint> out;
    for (size_t i = 0; i < points.size();) {
        // The stretch of points that stay in the pixel row of points[i].
        const double row = std::floor(points[i].y);
        size_t left = i, right = i, end = i + 1;
        for (; end < points.size() && std::floor(points[end].y) == row; ++end) {
            if (points[end].x < points[left].x) left = end;
            if (points[end].x > points[right].x) right = end;
        }
        out.push_back(points[std::min(left, right)]);
        out.back().start = points[i].start;
        if (left != right) {
            out.push_back(points[std::max(left, right)]);
            out.back().start = false;
        }
        i = end;
    }
    if (cap == 0 || out.size() <= cap) return out;
    // Depths that go up and down again: every so many, a gap kept as a gap.
    std::vector<PagePoint> even;
    const size_t every = (out.size() + cap - 1) / cap;
    bool start = false;
    for (size_t k = 0; k < out.size(); ++k) {
        start = start || out[k].start;
        if (k % every != 0) continue;
        even.push_back(out[k]);
        even.back().start = start;
        start = false;
    }
    return even;
}

TrackScale ScaleOf(const PlotCurve& curve, bool hasNull, double nullValue)
{
    TrackScale scale;
    if (curve.hasRange) {
        scale.log = curve.log;
        scale.left = curve.from;
        scale.right = curve.to;
        scale.step = NiceStep(std::fabs(curve.to - curve.from), 4.0);
        return scale;
    }
    std::vector<double> readings;
    for (double v : curve.values)
        if (!common::IsNullValue(v, hasNull, nullValue)) readings.push_back(v);
    const ValueRange range = RobustRange(std::move(readings), curve.log);
    scale = curve.log ? LogScale(range.min, range.max) : LinearScale(range.min, range.max);
    if (curve.reversed) std::swap(scale.left, scale.right);
    return scale;
}

namespace {

const char* const kColours[] = {"#1a7a3a", "#c0392b", "#1f5fa8", "#7d3c98", "#d35400",
                                "#117a65", "#8e5a1e", "#b03a7a", "#34495e", "#2e86c1"};

// A pixel coordinate as short text; what lies far off the page is drawn at
// its edge of the world, so that no coordinate grows without bound.
std::string Px(double value)
{
    if (!std::isfinite(value)) value = 0.0;
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.1f", std::clamp(value, -1e6, 1e6));
    std::string text = buffer;
    if (text.size() > 2 && text.compare(text.size() - 2, 2, ".0") == 0)
        text.resize(text.size() - 2);
    return text == "-0" ? "0" : text;
}

// A label of a scale or axis value: short, no exponent for common values.
std::string AxisLabel(double value, int digits = 6)
{
    if (std::fabs(value) < 1e-12) return "0";
    return common::FormatNumber(value, digits);
}

std::string Line(double x1, double y1, double x2, double y2, const char* stroke, const char* width)
{
    return "<line x1=\"" + Px(x1) + "\" y1=\"" + Px(y1) + "\" x2=\"" + Px(x2) + "\" y2=\"" +
           Px(y2) + "\" stroke=\"" + stroke + "\" stroke-width=\"" + width + "\"/>\n";
}

std::string Text(double x, double y, const std::string& attributes, const std::string& text)
{
    return "<text x=\"" + Px(x) + "\" y=\"" + Px(y) + "\" " + attributes + ">" + text + "</text>\n";
}

// Where things go on the page.
struct Frame {
    double margin = 16, titleHeight = 54, headerHeight = 78, depthWidth = 72;
    double plotTop = 0, depthLeft = 0, gridLeft = 0, height = 0, trackWidth = 150;
    size_t depthAfter = 0;
    double top = 0, bottom = 1;  // the depth range
    double yOf(double depth) const { return plotTop + Fraction(depth, top, bottom) * height; }
    double headTop() const { return margin + titleHeight; }
};

// The depth grid across the tracks, and the ticks and labels of the axis.
void DepthAxis(const Frame& f, double gridRight, std::string* grid, std::string* labels)
{
    const double major = NiceStep(f.bottom - f.top, f.height / 90.0);
    const int digits = LabelDigits(std::fmax(std::fabs(f.top), std::fabs(f.bottom)), major);
    for (double d : GridValues(f.top, f.bottom, major / 5.0, 2000)) {
        const double y = f.yOf(d);
        const double ratio = d / major;
        const bool isMajor = std::fabs(ratio - std::round(ratio)) < 1e-6;
        const double axis = f.depthLeft + f.depthWidth;  // ticks and labels at its right edge
        *grid += Line(f.gridLeft, y, gridRight, y, isMajor ? "#b8b8b8" : "#e4e4e4",
                      isMajor ? "0.9" : "0.6");
        *labels += Line(axis - (isMajor ? 8 : 4), y, axis, y, "#444", "0.8");
        // Labels at the very top and bottom stay inside the track.
        double labelY = y + 4;
        if (y - f.plotTop < 6)
            labelY = y + 11;
        else if (f.plotTop + f.height - y < 6)
            labelY = y - 3;
        if (isMajor)
            *labels += Text(axis - 11, labelY, "font-size=\"11\" text-anchor=\"end\" fill=\"#222\"",
                            AxisLabel(std::round(ratio) * major, digits));
    }
}

// The vertical grid of a track, from the scale of its first curve.
std::string TrackGrid(const Frame& f, double x0, const TrackScale& scale)
{
    std::string grid;
    auto vline = [&](double v, bool strong) {
        const double x = x0 + ScalePosition(scale, v) * f.trackWidth;
        grid += Line(x, f.plotTop, x, f.plotTop + f.height, strong ? "#b8b8b8" : "#e4e4e4",
                     strong ? "0.9" : "0.6");
    };
    if (scale.log) {
        for (const auto& [v, decade] : LogGridValues(scale.left, scale.right)) vline(v, decade);
        return grid;
    }
    const double low = std::fmin(scale.left, scale.right),
                 high = std::fmax(scale.left, scale.right);
    for (double v : GridValues(low, high, scale.step, 100))
        if (v > low + scale.step * 1e-6 && v < high - scale.step * 1e-6) vline(v, true);
    return grid;
}

// The header lines of one curve: mnemonic and unit, description, and the
// scale bar with its edge values, in 40 pixels from `top`.
std::string CurveHeader(const Frame& f, double x0, double top, const PlotCurve& curve,
                        const TrackScale& scale, const char* colour)
{
    const double x1 = x0 + f.trackWidth, mid = x0 + f.trackWidth / 2;
    std::string unit = curve.unit.empty() ? std::string("(no unit)") : curve.unit;
    if (scale.log) unit += "  log";
    std::string s =
        Text(mid, top + 13,
             "font-size=\"12.5\" font-weight=\"bold\" text-anchor=\"middle\" fill=\"" +
                 std::string(colour) + "\"",
             common::XmlEscape(common::Shorten(curve.mnemonic, 16)) +
                 "<tspan dx=\"5\" font-size=\"10.5\" font-weight=\"normal\" fill=\"#333\">" +
                 common::XmlEscape(common::Shorten(unit, 16)) + "</tspan>");
    const size_t descMax = static_cast<size_t>(std::max(8.0, f.trackWidth / 6.2));
    s += Text(mid, top + 24, "font-size=\"9.5\" text-anchor=\"middle\" fill=\"#777\"",
              common::XmlEscape(common::Shorten(common::Trim(curve.description), descMax)));
    s += Line(x0 + 6, top + 28, x1 - 6, top + 28, colour, "2");
    s += Text(x0 + 5, top + 39, "font-size=\"10.5\" fill=\"#222\"", AxisLabel(scale.left));
    s += Text(x1 - 5, top + 39, "font-size=\"10.5\" text-anchor=\"end\" fill=\"#222\"",
              AxisLabel(scale.right));
    return s;
}

// The readings of one curve as a line with gaps, or as points, clipped to
// its track; empty when there is nothing to draw.
std::string CurveMarks(const Frame& f, const std::vector<double>& depths, const PlotInput& in,
                       double x0, const PlotCurve& curve, const TrackScale& scale,
                       const char* colour, const std::string& clip)
{
    const auto runs = CurveRuns(depths, curve.values, in.hasNull, in.nullValue, scale.log);
    std::vector<PagePoint> points;
    for (const auto& run : runs)
        for (size_t i = 0; i < run.size(); ++i) {
            // Far off the scale is as good as just off it: the track clips both.
            const double at = std::clamp(ScalePosition(scale, run[i].second), -1.0, 2.0);
            points.push_back({x0 + at * f.trackWidth, f.yOf(run[i].first), i == 0});
        }
    if (points.empty()) return std::string();
    const bool dots = curve.style == CurveStyle::kPoints ||
                      (curve.style == CurveStyle::kAuto && points.size() < 3 * runs.size());
    points = ThinPoints(points, static_cast<size_t>(4 * f.height) + 16);
    std::string d;
    for (size_t i = 0; i < points.size(); ++i) {
        const PagePoint& p = points[i];
        d += (dots || p.start ? "M" : "L") + Px(p.x) + " " + Px(p.y) + " ";
        // A lone reading, or any reading drawn as a point, is a dot.
        if (dots || (p.start && (i + 1 == points.size() || points[i + 1].start))) d += "h0.01 ";
    }
    d.pop_back();
    return "<path d=\"" + d + "\" fill=\"none\" stroke=\"" + colour + "\" stroke-width=\"" +
           (dots ? "4.5" : "1.3") +
           "\" stroke-linejoin=\"round\" stroke-linecap=\"round\" clip-path=\"url(#" + clip +
           ")\"/>\n";
}

}  // namespace

std::string RenderLogPlot(const PlotInput& in)
{
    Frame f;
    f.trackWidth = in.trackWidth;
    size_t mostCurves = 1;
    for (const PlotTrack& track : in.tracks) mostCurves = std::max(mostCurves, track.curves.size());
    f.headerHeight = std::max(78.0, 8 + 40.0 * static_cast<double>(mostCurves));

    // Depth range from the depths that are real numbers.
    double top = std::nan(""), bottom = std::nan("");
    for (double d : in.depths) {
        if (!std::isfinite(d) || common::IsNullValue(d, in.hasNull, in.nullValue)) continue;
        if (std::isnan(top) || d < top) top = d;
        if (std::isnan(bottom) || d > bottom) bottom = d;
    }
    if (std::isnan(top)) top = bottom = 0.0;
    f.top = top;
    f.bottom = bottom;
    if (f.bottom == f.top) {  // one depth: a range below it, or above it at the largest
        const double pad = std::fmax(1.0, std::fabs(f.top) * 1e-9);
        if (std::isfinite(f.top + pad))
            f.bottom = f.top + pad;
        else
            f.top = f.bottom - pad;
    }
    f.height = in.dataHeight;
    if (!(f.height > 0))
        f.height = std::clamp(static_cast<double>(in.depths.size()) * 3.0, 700.0, 2400.0);

    const double margin = f.margin;
    f.plotTop = margin + f.titleHeight + f.headerHeight;
    const double plotLeft = margin;
    f.depthAfter = std::min(in.depthAfter, in.tracks.size());
    f.depthLeft = plotLeft + f.trackWidth * static_cast<double>(f.depthAfter);
    f.gridLeft = plotLeft;
    const double gridRight =
        plotLeft + f.depthWidth + f.trackWidth * static_cast<double>(in.tracks.size());
    const double fullWidth = std::max(gridRight + margin, 360.0);
    const double fullHeight = f.plotTop + f.height + margin + 18;

    std::string s;
    s += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    s += "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + Px(fullWidth) + "\" height=\"" +
         Px(fullHeight) + "\" viewBox=\"0 0 " + Px(fullWidth) + " " + Px(fullHeight) +
         "\" font-family=\"DejaVu Sans, Helvetica, Arial, sans-serif\">\n";
    s += "<rect x=\"0\" y=\"0\" width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";

    // Title block.
    s += Text(margin, margin + 20, "font-size=\"18\" font-weight=\"bold\" fill=\"#222\"",
              common::XmlEscape(
                  common::Shorten(in.title, static_cast<size_t>((fullWidth - 2 * margin) / 11.5))));
    s += Text(margin, margin + 40, "font-size=\"12\" fill=\"#555\"",
              common::XmlEscape(common::Shorten(
                  in.subtitle, static_cast<size_t>((fullWidth - 2 * margin) / 6.9))));

    std::string grid, labels;
    DepthAxis(f, gridRight, &grid, &labels);

    // Depth track header.
    const double headTop = f.headTop();
    s += "<rect x=\"" + Px(f.depthLeft) + "\" y=\"" + Px(headTop) + "\" width=\"" +
         Px(f.depthWidth) + "\" height=\"" + Px(f.headerHeight) +
         "\" fill=\"#f4f4f4\" stroke=\"#444\" stroke-width=\"1\"/>\n";
    s += Text(f.depthLeft + f.depthWidth / 2, headTop + f.headerHeight / 2 - 7,
              "font-size=\"13\" font-weight=\"bold\" text-anchor=\"middle\" fill=\"#222\"",
              common::XmlEscape(common::Shorten(in.depthMnemonic, 9)));
    s += Text(f.depthLeft + f.depthWidth / 2, headTop + f.headerHeight / 2 + 11,
              "font-size=\"11\" text-anchor=\"middle\" fill=\"#555\"",
              common::XmlEscape(in.depthUnit.empty() ? std::string("depth")
                                                     : common::Shorten(in.depthUnit, 10)));

    s += "<g id=\"grid\">\n" + grid + "</g>\n";

    std::string defs;
    size_t colourIndex = 0;
    for (size_t t = 0; t < in.tracks.size(); ++t) {
        const PlotTrack& track = in.tracks[t];
        const double x0 = plotLeft + f.trackWidth * static_cast<double>(t) +
                          (t >= f.depthAfter ? f.depthWidth : 0.0);
        std::vector<TrackScale> scales;
        for (const PlotCurve& curve : track.curves)
            scales.push_back(ScaleOf(curve, in.hasNull, in.nullValue));
        const std::string id =
            common::XmlEscape(track.curves.empty() ? "" : track.curves[0].mnemonic);
        if (!scales.empty())
            s += "<g id=\"grid-" + id + "\">\n" + TrackGrid(f, x0, scales[0]) + "</g>\n";

        s += "<rect x=\"" + Px(x0) + "\" y=\"" + Px(headTop) + "\" width=\"" + Px(f.trackWidth) +
             "\" height=\"" + Px(f.headerHeight) +
             "\" fill=\"#fafafa\" stroke=\"#444\" stroke-width=\"1\"/>\n";
        const std::string clip = "clip" + std::to_string(t);
        // Room above and below the track for the whole dot of a sample there.
        defs += "<clipPath id=\"" + clip + "\"><rect x=\"" + Px(x0) + "\" y=\"" +
                Px(f.plotTop - 3) + "\" width=\"" + Px(f.trackWidth) + "\" height=\"" +
                Px(f.height + 6) + "\"/></clipPath>\n";
        // The curves' headers are stacked and centred in the header.
        const double blocks = 40.0 * static_cast<double>(track.curves.size());
        double blockTop = headTop + (f.headerHeight - blocks) / 2;
        bool drawn = false;
        for (size_t c = 0; c < track.curves.size(); ++c, blockTop += 40) {
            const char* colour = kColours[colourIndex++ % (sizeof kColours / sizeof kColours[0])];
            s += CurveHeader(f, x0, blockTop, track.curves[c], scales[c], colour);
            const std::string marks =
                CurveMarks(f, in.depths, in, x0, track.curves[c], scales[c], colour, clip);
            drawn = drawn || !marks.empty();
            s += marks;
        }
        if (!drawn)
            s += Text(x0 + f.trackWidth / 2, f.plotTop + 30,
                      "font-size=\"11\" text-anchor=\"middle\" fill=\"#999\"", "no values");
        s += "<rect x=\"" + Px(x0) + "\" y=\"" + Px(f.plotTop) + "\" width=\"" + Px(f.trackWidth) +
             "\" height=\"" + Px(f.height) +
             "\" fill=\"none\" stroke=\"#444\" stroke-width=\"1\"/>\n";
    }

    // Depth track body with its labels.
    s += "<rect x=\"" + Px(f.depthLeft) + "\" y=\"" + Px(f.plotTop) + "\" width=\"" +
         Px(f.depthWidth) + "\" height=\"" + Px(f.height) +
         "\" fill=\"none\" stroke=\"#444\" stroke-width=\"1\"/>\n";
    s += "<g id=\"depth-axis\">\n" + labels + "</g>\n";
    const int digits = LabelDigits(std::fmax(std::fabs(top), std::fabs(bottom)), bottom - top);
    s += Text(margin, f.plotTop + f.height + 16, "font-size=\"10\" fill=\"#777\"",
              "Depth " + AxisLabel(top, digits) + " to " + AxisLabel(bottom, digits) + " " +
                  common::XmlEscape(in.depthUnit) + "; gaps are NULL values");
    s += "<defs>\n" + defs + "</defs>\n";
    s += "</svg>\n";
    return s;
}

}  // namespace quarl::apps
