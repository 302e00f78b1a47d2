// The log plot of quarl-plot: depth down the page, tracks of one or more
// curves side by side, as a standalone SVG document. Knows nothing of files,
// only of depths and values.
#ifndef QUARL_APPS_SVG_PLOT_H
#define QUARL_APPS_SVG_PLOT_H

#include <string>
#include <utility>
#include <vector>

#include "support/plot_scale.h"

namespace quarl::apps {

// The runs of drawable points of a curve, as (depth, value) pairs. A NULL
// value, a non-finite value or depth, or a value the scale cannot show ends
// a run, so that it is drawn as a gap.
std::vector<std::vector<std::pair<double, double>>> CurveRuns(const std::vector<double>& depths,
                                                              const std::vector<double>& values,
                                                              bool hasNull, double nullValue,
                                                              bool logScale);

// A point of a curve on the page, in pixels; `start` begins a new line.
struct PagePoint {
    double x = 0.0;
    double y = 0.0;
    bool start = false;
};
// At most two points for each pixel row that a stretch of points stays in:
// the leftmost and the rightmost, in their order, so that a spike survives.
// A gap within one pixel row cannot be seen and is closed. Never more than
// `cap` points: what is still over it is taken evenly.
std::vector<PagePoint> ThinPoints(const std::vector<PagePoint>& points, size_t cap);

enum class CurveStyle { kAuto, kLines, kPoints };

struct PlotCurve {
    std::string mnemonic;
    std::string unit;
    std::string description;
    std::vector<double> values;
    bool log = false;
    bool hasRange = false;  // the scale runs from `from` to `to` as given
    double from = 0.0;
    double to = 1.0;
    bool reversed = false;  // the default scale runs from high to low values
    // kAuto draws sparse readings (runs of fewer than three on average) as
    // points, the others as lines.
    CurveStyle style = CurveStyle::kAuto;
};

// The scale a curve is drawn on: its range as given, else a nice scale
// over its values without spikes, reversed when asked.
TrackScale ScaleOf(const PlotCurve& curve, bool hasNull, double nullValue);

// One track: curves drawn over each other, each on its own scale, the grid
// from the first.
struct PlotTrack {
    std::vector<PlotCurve> curves;
};

struct PlotInput {
    std::string title;     // well name
    std::string subtitle;  // file, company, ...
    std::string depthMnemonic = "DEPT";
    std::string depthUnit;
    std::vector<double> depths;
    std::vector<PlotTrack> tracks;
    bool hasNull = false;
    double nullValue = 0.0;
    double dataHeight = 0.0;  // pixels for the depth range; 0 chooses
    double trackWidth = 150.0;
    // How many tracks stand left of the depth track (0: it is the first).
    size_t depthAfter = 0;
};

std::string RenderLogPlot(const PlotInput& in);

}  // namespace quarl::apps

#endif
