// What the programs and the catalog tell about the sections and curves of a read file: the
// version text, the NULL value, curve statistics and the depth curve.
#ifndef QUARL_COMMON_LOG_FACTS_H
#define QUARL_COMMON_LOG_FACTS_H

#include <quarl/quarl.h>

#include <cstdint>
#include <limits>
#include <string>

namespace quarl::common {

// The VERS text of a Version section as written ("2.0", "3.0", "1.2"), or
// "?" when there is none.
std::string VersionText(const CLasSection* versionSection);

// The NULL value of the Well section, if it has a numeric one.
bool NullValueOf(const CLasSection* well, double* value);
// A value that stands for "no reading": the file's NULL or not a number.
bool IsNullValue(double value, bool hasNull, double nullValue);

struct CurveStats {
    int32_t count = 0;  // values in the curve
    int32_t nulls = 0;  // of them, NULL or infinite values
    double min = std::numeric_limits<double>::quiet_NaN();
    double max = std::numeric_limits<double>::quiet_NaN();
};
CurveStats StatsOf(const CLasCurve& curve, bool hasNull, double nullValue);

// Index of the depth curve of a data section: the first numeric curve named
// by DepthMnemonic, in its order, else the first curve; -1 when that is not
// numeric. Unlike CheckDataStepping it passes over text curves of those
// names, so that a plot finds a numeric depth when there is one.
int DepthCurveIndex(const CLasSection& data);

}  // namespace quarl::common

#endif
