// The log plot of quarl-plot: depth down the page, one track per curve, as a
// standalone SVG document. Knows nothing of files, only of depths and values.
#ifndef QUARL_APPS_SVG_PLOT_H
#define QUARL_APPS_SVG_PLOT_H

#include <string>
#include <utility>
#include <vector>

namespace quarl::apps {

// A "nice" interval for about `count` steps over `range`: 1, 2 or 5 times a
// power of ten. A range of zero or less gives 1.
double NiceStep(double range, double count);

// The scale of one track: the values at its left and right edges.
struct TrackScale {
    double left = 0.0;
    double right = 1.0;
    bool log = false;
    double step = 0.25;  // linear: the interval of the vertical grid lines
};

// A linear scale on nice bounds around [min, max], with about four grid
// intervals. A single value, or no value (NaN), still gives a usable scale.
TrackScale LinearScale(double min, double max);
// A logarithmic scale over whole decades around [min, max]. Values of zero
// or less cannot stand on it; when none is positive, 0.1 to 1000 is used.
TrackScale LogScale(double minPositive, double max);
// Where a value stands between the left (0) and right (1) edge; NaN for a
// value a log scale cannot show. Not clipped.
double ScalePosition(const TrackScale& scale, double value);

// The runs of drawable points of a curve, as (depth, value) pairs. A NULL
// value, a non-finite value or depth, or a value the scale cannot show ends
// a run, so that it is drawn as a gap.
std::vector<std::vector<std::pair<double, double>>> CurveRuns(const std::vector<double>& depths,
                                                              const std::vector<double>& values,
                                                              bool hasNull, double nullValue,
                                                              bool logScale);

struct PlotTrack {
    std::string mnemonic;
    std::string unit;
    std::string description;
    std::vector<double> values;
    bool log = false;
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
};

std::string RenderLogPlot(const PlotInput& in);

}  // namespace quarl::apps

#endif
