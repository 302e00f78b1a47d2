#include "support/plot_scale.h"

#include <algorithm>
#include <cmath>

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
        // Near the largest doubles only one side can take the pad.
        const double pad = std::fabs(min) < 1e-200 ? 1.0 : std::fabs(min) * 0.1;
        if (std::isfinite(max + pad)) max += pad;
        if (std::isfinite(min - pad)) min -= pad;
    }
    // The plain bounds serve when no nice ones can be had.
    scale.left = min;
    scale.right = max;
    scale.step = max / 4 - min / 4;
    double step = NiceStep(max - min, 4.0);
    // Nice bounds may need a coarser step to stay near four intervals.
    for (int tries = 0; tries < 4; ++tries) {
        const double left = std::floor(min / step) * step;
        const double right = std::ceil(max / step) * step;
        if (!std::isfinite(left) || !std::isfinite(right) || !(left < right)) break;
        if ((right - left) / step <= 6.0) {
            scale.left = left;
            scale.right = right;
            scale.step = step;
            break;
        }
        step = NiceStep(right - left, 3.0);
    }
    return scale;
}

TrackScale LogScale(double minPositive, double max)
{
    TrackScale scale;
    scale.log = true;
    if (!(minPositive > 0) || !(max > 0) || !std::isfinite(minPositive) || !std::isfinite(max)) {
        scale.left = 0.1;
        scale.right = 1000.0;
        return scale;
    }
    const double low = std::clamp(std::floor(std::log10(minPositive) + 1e-9), -300.0, 299.0);
    double high = std::clamp(std::ceil(std::log10(max) - 1e-9), -299.0, 300.0);
    if (high <= low) high = low + 1;
    scale.left = std::pow(10.0, low);
    scale.right = std::pow(10.0, high);
    return scale;
}

double Fraction(double value, double low, double high)
{
    if (high == low) return 0.5;
    const double span = high - low;
    if (std::isfinite(span)) return (value - low) / span;
    return (value / 2 - low / 2) / (high / 2 - low / 2);
}

double ScalePosition(const TrackScale& scale, double value)
{
    if (!scale.log) return Fraction(value, scale.left, scale.right);
    if (!(value > 0)) return std::nan("");
    return Fraction(std::log10(value), std::log10(scale.left), std::log10(scale.right));
}

ValueRange RobustRange(std::vector<double> values, bool log)
{
    size_t n = 0;
    for (double v : values) {
        if (!std::isfinite(v) || (log && !(v > 0))) continue;
        values[n++] = log ? std::log10(v) : v;
    }
    values.resize(n);
    ValueRange range;
    if (n == 0) return range;
    std::sort(values.begin(), values.end());
    const double q1 = values[(n - 1) / 4], q3 = values[(n - 1) * 3 / 4];
    const double spread = q3 - q1;
    double low = values.front(), high = values.back();
    if (spread > 0 && std::isfinite(spread)) {
        low = *std::lower_bound(values.begin(), values.end(), q1 - 3 * spread);
        high = *(std::upper_bound(values.begin(), values.end(), q3 + 3 * spread) - 1);
    }
    range.min = log ? std::pow(10.0, low) : low;
    range.max = log ? std::pow(10.0, high) : high;
    return range;
}

std::vector<double> GridValues(double low, double high, double step, size_t cap)
{
    std::vector<double> values;
    if (!(step > 0) || !std::isfinite(step) || !std::isfinite(low) || !std::isfinite(high))
        return values;
    const double first = std::ceil(low / step - 1e-9), last = std::floor(high / step + 1e-9);
    if (!std::isfinite(first) || !std::isfinite(last) || last < first ||
        last - first >= static_cast<double>(cap))
        return values;
    // Counted, not stepped: near 1e17 adding a step may not change a double.
    const size_t count = static_cast<size_t>(last - first) + 1;
    for (size_t i = 0; i < count; ++i) values.push_back((first + static_cast<double>(i)) * step);
    return values;
}

std::vector<std::pair<double, bool>> LogGridValues(double low, double high)
{
    std::vector<std::pair<double, bool>> values;
    if (low > high) std::swap(low, high);
    if (!(low > 0) || !std::isfinite(high)) return values;
    // A positive finite double lies between 1e-324 and 1e309: a bounded count.
    const int first = static_cast<int>(std::floor(std::log10(low)));
    const int last = static_cast<int>(std::ceil(std::log10(high)));
    const int multiples = last - first <= 8 ? 9 : 1;
    for (int e = first; e <= last; ++e)
        for (int k = 1; k <= multiples; ++k) {
            const double v = k * std::pow(10.0, e);
            if (v >= low * (1 - 1e-9) && v <= high * (1 + 1e-9)) values.emplace_back(v, k == 1);
        }
    return values;
}

int LabelDigits(double magnitude, double step)
{
    if (!(step > 0) || !std::isfinite(step) || !std::isfinite(magnitude)) return 6;
    const double digits = std::ceil(std::log10(std::fabs(magnitude) / step)) + 1;
    return static_cast<int>(std::clamp(digits, 6.0, 17.0));
}

}  // namespace quarl::apps
