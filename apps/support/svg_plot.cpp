#include "support/svg_plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "support/log_facts.h"
#include "support/text.h"

namespace quarl::apps {

double NiceStep(double range, double count)
{
    if (!(range > 0) || !(count > 0) || !std::isfinite(range)) return 1.0;
    const double raw = range / count;
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    const double mantissa = raw / power;
    double nice = 10.0;
    if (mantissa <= 1.0)
        nice = 1.0;
    else if (mantissa <= 2.0)
        nice = 2.0;
    else if (mantissa <= 5.0)
        nice = 5.0;
    return nice * power;
}

TrackScale LinearScale(double min, double max)
{
    TrackScale scale;
    if (std::isnan(min) || std::isnan(max)) return scale;
    if (max < min) std::swap(min, max);
    if (max == min) {
        const double pad = min == 0.0 ? 1.0 : std::fabs(min) * 0.1;
        min -= pad;
        max += pad;
    }
    double step = NiceStep(max - min, 4.0);
    double left = std::floor(min / step) * step;
    double right = std::ceil(max / step) * step;
    // Nice bounds may need a coarser step to stay near four intervals.
    while ((right - left) / step > 6.0) {
        step = NiceStep(right - left, 3.0);
        left = std::floor(min / step) * step;
        right = std::ceil(max / step) * step;
    }
    scale.left = left;
    scale.right = right;
    scale.step = step;
    return scale;
}

TrackScale LogScale(double minPositive, double max)
{
    TrackScale scale;
    scale.log = true;
    if (!(minPositive > 0) || !(max > 0) || std::isnan(minPositive)) {
        scale.left = 0.1;
        scale.right = 1000.0;
        return scale;
    }
    double low = std::floor(std::log10(minPositive) + 1e-9);
    double high = std::ceil(std::log10(max) - 1e-9);
    if (high <= low) high = low + 1;
    scale.left = std::pow(10.0, low);
    scale.right = std::pow(10.0, high);
    return scale;
}

double ScalePosition(const TrackScale& scale, double value)
{
    if (scale.log) {
        if (!(value > 0)) return std::nan("");
        return (std::log10(value) - std::log10(scale.left)) /
               (std::log10(scale.right) - std::log10(scale.left));
    }
    if (scale.right == scale.left) return 0.5;
    return (value - scale.left) / (scale.right - scale.left);
}

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
        const bool bad = IsNullValue(v, hasNull, nullValue) || !std::isfinite(v) ||
                         IsNullValue(d, hasNull, nullValue) || !std::isfinite(d) ||
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

namespace {

std::string Px(double value)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.1f", value);
    std::string text = buffer;
    if (text.size() > 2 && text.compare(text.size() - 2, 2, ".0") == 0)
        text.resize(text.size() - 2);
    return text == "-0" ? "0" : text;
}

// A label of a scale or axis value: short, no exponent for common values.
std::string AxisLabel(double value)
{
    if (std::fabs(value) < 1e-12) return "0";
    return FormatNumber(value, 6);
}

}  // namespace

std::string RenderLogPlot(const PlotInput& in)
{
    static const char* const kColours[] = {"#1a7a3a", "#c0392b", "#1f5fa8", "#7d3c98", "#d35400",
                                           "#117a65", "#8e5a1e", "#b03a7a", "#34495e", "#2e86c1"};
    const double margin = 16, titleHeight = 54, headerHeight = 78, depthWidth = 72;
    const double trackWidth = in.trackWidth;

    // Depth range from the depths that are real numbers.
    double top = std::nan(""), bottom = std::nan("");
    for (double d : in.depths) {
        if (!std::isfinite(d) || IsNullValue(d, in.hasNull, in.nullValue)) continue;
        if (std::isnan(top) || d < top) top = d;
        if (std::isnan(bottom) || d > bottom) bottom = d;
    }
    if (std::isnan(top)) top = bottom = 0.0;
    if (bottom == top) bottom = top + 1.0;
    double height = in.dataHeight;
    if (!(height > 0))
        height = std::clamp(static_cast<double>(in.depths.size()) * 3.0, 700.0, 2400.0);

    const double plotTop = margin + titleHeight + headerHeight;
    const double plotLeft = margin;
    const double tracksLeft = plotLeft + depthWidth;
    const double width = tracksLeft + trackWidth * static_cast<double>(in.tracks.size()) + margin;
    const double fullWidth = std::max(width, 360.0);
    const double fullHeight = plotTop + height + margin + 18;
    auto yOf = [&](double depth) { return plotTop + (depth - top) / (bottom - top) * height; };

    std::string s;
    s += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    s += "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + Px(fullWidth) + "\" height=\"" +
         Px(fullHeight) + "\" viewBox=\"0 0 " + Px(fullWidth) + " " + Px(fullHeight) +
         "\" font-family=\"DejaVu Sans, Helvetica, Arial, sans-serif\">\n";
    s += "<rect x=\"0\" y=\"0\" width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";

    // Title block.
    s += "<text x=\"" + Px(margin) + "\" y=\"" + Px(margin + 20) +
         "\" font-size=\"18\" font-weight=\"bold\" fill=\"#222\">" +
         XmlEscape(Shorten(in.title, static_cast<size_t>((fullWidth - 2 * margin) / 11.5))) +
         "</text>\n";
    s += "<text x=\"" + Px(margin) + "\" y=\"" + Px(margin + 40) +
         "\" font-size=\"12\" fill=\"#555\">" +
         XmlEscape(Shorten(in.subtitle, static_cast<size_t>((fullWidth - 2 * margin) / 6.9))) +
         "</text>\n";

    // Depth ticks.
    const double major = NiceStep(bottom - top, height / 90.0);
    const double minor = major / 5.0;
    std::string grid, labels;
    const double gridRight = tracksLeft + trackWidth * static_cast<double>(in.tracks.size());
    for (double d = std::ceil(top / minor - 1e-9) * minor; d <= bottom + minor * 1e-6; d += minor) {
        const double y = yOf(d);
        const double ratio = d / major;
        const bool isMajor = std::fabs(ratio - std::round(ratio)) < 1e-6;
        grid += "<line x1=\"" + Px(tracksLeft) + "\" y1=\"" + Px(y) + "\" x2=\"" + Px(gridRight) +
                "\" y2=\"" + Px(y) + "\" stroke=\"" + (isMajor ? "#b8b8b8" : "#e4e4e4") +
                "\" stroke-width=\"" + (isMajor ? "0.9" : "0.6") + "\"/>\n";
        labels += "<line x1=\"" + Px(tracksLeft - (isMajor ? 8 : 4)) + "\" y1=\"" + Px(y) +
                  "\" x2=\"" + Px(tracksLeft) + "\" y2=\"" + Px(y) +
                  "\" stroke=\"#444\" stroke-width=\"0.8\"/>\n";
        // Labels at the very top and bottom stay inside the track.
        double labelY = y + 4;
        if (y - plotTop < 6)
            labelY = y + 11;
        else if (plotTop + height - y < 6)
            labelY = y - 3;
        if (isMajor)
            labels += "<text x=\"" + Px(tracksLeft - 11) + "\" y=\"" + Px(labelY) +
                      "\" font-size=\"11\" text-anchor=\"end\" fill=\"#222\">" +
                      AxisLabel(std::round(ratio) * major) + "</text>\n";
    }

    // Depth track header.
    const double headTop = margin + titleHeight;
    s += "<rect x=\"" + Px(plotLeft) + "\" y=\"" + Px(headTop) + "\" width=\"" + Px(depthWidth) +
         "\" height=\"" + Px(headerHeight) +
         "\" fill=\"#f4f4f4\" stroke=\"#444\" stroke-width=\"1\"/>\n";
    s += "<text x=\"" + Px(plotLeft + depthWidth / 2) + "\" y=\"" + Px(headTop + 32) +
         "\" font-size=\"13\" font-weight=\"bold\" text-anchor=\"middle\" fill=\"#222\">" +
         XmlEscape(Shorten(in.depthMnemonic, 9)) + "</text>\n";
    s += "<text x=\"" + Px(plotLeft + depthWidth / 2) + "\" y=\"" + Px(headTop + 50) +
         "\" font-size=\"11\" text-anchor=\"middle\" fill=\"#555\">" +
         XmlEscape(in.depthUnit.empty() ? std::string("depth") : Shorten(in.depthUnit, 10)) +
         "</text>\n";

    s += "<g id=\"grid\">\n" + grid + "</g>\n";

    std::string defs;
    for (size_t t = 0; t < in.tracks.size(); ++t) {
        const PlotTrack& track = in.tracks[t];
        const char* colour = kColours[t % (sizeof kColours / sizeof kColours[0])];
        const double x0 = tracksLeft + trackWidth * static_cast<double>(t);
        const double x1 = x0 + trackWidth;

        // Scale from the values that will be drawn.
        double min = std::nan(""), max = std::nan(""), minPositive = std::nan("");
        for (double v : track.values) {
            if (!std::isfinite(v) || IsNullValue(v, in.hasNull, in.nullValue)) continue;
            if (std::isnan(min) || v < min) min = v;
            if (std::isnan(max) || v > max) max = v;
            if (v > 0 && (std::isnan(minPositive) || v < minPositive)) minPositive = v;
        }
        const TrackScale scale = track.log ? LogScale(minPositive, max) : LinearScale(min, max);
        auto xOf = [&](double v) { return x0 + ScalePosition(scale, v) * trackWidth; };

        // Vertical grid of the track.
        std::string vgrid;
        auto vline = [&](double x, bool strong) {
            vgrid += "<line x1=\"" + Px(x) + "\" y1=\"" + Px(plotTop) + "\" x2=\"" + Px(x) +
                     "\" y2=\"" + Px(plotTop + height) + "\" stroke=\"" +
                     (strong ? "#b8b8b8" : "#e4e4e4") + "\" stroke-width=\"" +
                     (strong ? "0.9" : "0.6") + "\"/>\n";
        };
        if (scale.log) {
            for (double decade = scale.left; decade < scale.right * 0.999; decade *= 10.0) {
                vline(xOf(decade), true);
                for (int k = 2; k <= 9; ++k) vline(xOf(decade * k), false);
            }
        } else {
            for (double v = scale.left + scale.step; v < scale.right - scale.step * 1e-6;
                 v += scale.step)
                vline(xOf(v), true);
        }
        s += "<g id=\"grid-" + XmlEscape(track.mnemonic) + "\">\n" + vgrid + "</g>\n";

        // Header: mnemonic, unit, description, and the scale bar.
        s += "<rect x=\"" + Px(x0) + "\" y=\"" + Px(headTop) + "\" width=\"" + Px(trackWidth) +
             "\" height=\"" + Px(headerHeight) +
             "\" fill=\"#fafafa\" stroke=\"#444\" stroke-width=\"1\"/>\n";
        const double mid = x0 + trackWidth / 2;
        s += "<text x=\"" + Px(mid) + "\" y=\"" + Px(headTop + 17) +
             "\" font-size=\"13\" font-weight=\"bold\" text-anchor=\"middle\" fill=\"" + colour +
             "\">" + XmlEscape(Shorten(track.mnemonic, 16)) + "</text>\n";
        std::string unitLine = track.unit.empty() ? std::string("(no unit)") : track.unit;
        if (scale.log) unitLine += "  log";
        s += "<text x=\"" + Px(mid) + "\" y=\"" + Px(headTop + 32) +
             "\" font-size=\"11\" text-anchor=\"middle\" fill=\"#333\">" +
             XmlEscape(Shorten(unitLine, 22)) + "</text>\n";
        const size_t descMax = static_cast<size_t>(std::max(8.0, trackWidth / 6.2));
        s += "<text x=\"" + Px(mid) + "\" y=\"" + Px(headTop + 46) +
             "\" font-size=\"9.5\" text-anchor=\"middle\" fill=\"#777\">" +
             XmlEscape(Shorten(Trim(track.description), descMax)) + "</text>\n";
        const double barY = headTop + 58;
        s += "<line x1=\"" + Px(x0 + 6) + "\" y1=\"" + Px(barY) + "\" x2=\"" + Px(x1 - 6) +
             "\" y2=\"" + Px(barY) + "\" stroke=\"" + colour + "\" stroke-width=\"2\"/>\n";
        s += "<text x=\"" + Px(x0 + 5) + "\" y=\"" + Px(barY + 14) +
             "\" font-size=\"10.5\" fill=\"#222\">" + AxisLabel(scale.left) + "</text>\n";
        s += "<text x=\"" + Px(x1 - 5) + "\" y=\"" + Px(barY + 14) +
             "\" font-size=\"10.5\" text-anchor=\"end\" fill=\"#222\">" + AxisLabel(scale.right) +
             "</text>\n";

        // The curve, NULL values as gaps, clipped to the track.
        const std::string clip = "clip" + std::to_string(t);
        defs += "<clipPath id=\"" + clip + "\"><rect x=\"" + Px(x0) + "\" y=\"" + Px(plotTop) +
                "\" width=\"" + Px(trackWidth) + "\" height=\"" + Px(height) + "\"/></clipPath>\n";
        std::string d;
        for (const auto& run :
             CurveRuns(in.depths, track.values, in.hasNull, in.nullValue, scale.log)) {
            bool firstPoint = true;
            for (const auto& point : run) {
                d += firstPoint ? "M" : "L";
                d += Px(xOf(point.second)) + " " + Px(yOf(point.first)) + " ";
                firstPoint = false;
            }
            if (run.size() == 1) d += "h0.01 ";  // a lone reading stays visible
        }
        if (d.empty()) {
            s += "<text x=\"" + Px(mid) + "\" y=\"" + Px(plotTop + 30) +
                 "\" font-size=\"11\" text-anchor=\"middle\" fill=\"#999\">no values</text>\n";
        } else {
            d.pop_back();
            s += "<path d=\"" + d + "\" fill=\"none\" stroke=\"" + colour +
                 "\" stroke-width=\"1.3\" stroke-linejoin=\"round\" stroke-linecap=\"round\" "
                 "clip-path=\"url(#" +
                 clip + ")\"/>\n";
        }
        s += "<rect x=\"" + Px(x0) + "\" y=\"" + Px(plotTop) + "\" width=\"" + Px(trackWidth) +
             "\" height=\"" + Px(height) +
             "\" fill=\"none\" stroke=\"#444\" stroke-width=\"1\"/>\n";
    }

    // Depth track body with its labels.
    s += "<rect x=\"" + Px(plotLeft) + "\" y=\"" + Px(plotTop) + "\" width=\"" + Px(depthWidth) +
         "\" height=\"" + Px(height) + "\" fill=\"none\" stroke=\"#444\" stroke-width=\"1\"/>\n";
    s += "<g id=\"depth-axis\">\n" + labels + "</g>\n";
    s += "<text x=\"" + Px(margin) + "\" y=\"" + Px(plotTop + height + 16) +
         "\" font-size=\"10\" fill=\"#777\">Depth " + AxisLabel(top) + " to " + AxisLabel(bottom) +
         " " + XmlEscape(in.depthUnit) + "; gaps are NULL values</text>\n";
    s += "<defs>\n" + defs + "</defs>\n";
    s += "</svg>\n";
    return s;
}

}  // namespace quarl::apps
