// The scales of quarl-plot: which values a track spans, where a value stands
// on it, and where its grid lines go. Every result is finite and every list
// bounded, whatever the values: spikes, 1e308, 5e-324 or depths near 1e17.
#ifndef QUARL_APPS_PLOT_SCALE_H
#define QUARL_APPS_PLOT_SCALE_H

#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

namespace quarl::apps {

// A "nice" interval for about `count` steps over `range`: 1, 2 or 5 times a
// power of ten. A range of zero or less, or one too large to hold, gives 1.
double NiceStep(double range, double count);

// The scale of one track: the values at its left and right edges. The left
// value may be the larger one: a reversed scale.
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
// The decades stay within 1e-300 to 1e300.
TrackScale LogScale(double minPositive, double max);
// Where a value stands between the left (0) and right (1) edge; NaN for a
// value a log scale cannot show. Not clipped.
double ScalePosition(const TrackScale& scale, double value);
// Where `value` stands from `low` (0) to `high` (1), even when high - low
// is too large for a double.
double Fraction(double value, double low, double high);

// The span of a curve's values for its default scale: the values without
// spikes. A value more than three times the spread of the middle half away
// from it (below the lower or above the upper quartile) is a spike. With a
// middle half of one value every value counts. `log` looks at positive
// values only and measures their spread in decades. NaN when none is left.
struct ValueRange {
    double min = std::numeric_limits<double>::quiet_NaN();
    double max = std::numeric_limits<double>::quiet_NaN();
};
ValueRange RobustRange(std::vector<double> values, bool log);

// The multiples of `step` from `low` to `high`, in order; none when there
// would be more than `cap` of them or the bounds are not finite.
std::vector<double> GridValues(double low, double high, double step, size_t cap);
// The grid of a log scale between two positive values: 1 to 9 times each
// power of ten, true for the powers themselves. Spans of more than eight
// decades get the powers alone.
std::vector<std::pair<double, bool>> LogGridValues(double low, double high);

// Significant digits that tell apart labels `step` apart near `magnitude`:
// 6, or more for small steps on large values (depths near 1e17), at most 17.
int LabelDigits(double magnitude, double step);

}  // namespace quarl::apps

#endif
