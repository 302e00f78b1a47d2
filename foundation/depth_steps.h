// When two depths agree, and whether a column of depths advances by a step.
// The reader's CheckDataStepping and the writer's completion of the Well
// section use the same tolerance and the same test.
#ifndef QUARL_FOUNDATION_DEPTH_STEPS_H
#define QUARL_FOUNDATION_DEPTH_STEPS_H

#include <cstddef>
#include <vector>

namespace quarl {

// Two depths agree when they differ by no more than this; a difference equal
// to it passes.
constexpr double kDepthTolerance = 1e-07;

bool DepthsAgree(double a, double b);

// The first row whose depth is not the depth of the row before plus `step`,
// within kDepthTolerance; 0 when every row steps evenly (row 0 has nothing
// before it, so it never fails).
size_t FirstUnevenStep(const std::vector<double>& depths, double step);

}  // namespace quarl

#endif
