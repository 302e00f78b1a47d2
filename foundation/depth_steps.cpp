// When two depths agree, and whether a column of depths advances by a step.
#include <quarl/document.h>

#include <cmath>

namespace quarl {

// "Not greater than": a NaN difference agrees, as it passes the step test,
// so that every run over the same data gives the same.
bool DepthsAgree(double a, double b)
{
    return !(std::fabs(a - b) > kDepthTolerance);
}

size_t FirstUnevenStep(const std::vector<double>& depths, double step)
{
    for (size_t row = 1; row < depths.size(); ++row) {
        if (std::fabs(depths[row - 1] + step - depths[row]) > kDepthTolerance) return row;
    }
    return 0;
}

}  // namespace quarl
