#include "common/log_facts.h"

#include <cmath>
#include <cstdlib>

#include "common/text.h"

namespace quarl::common {

std::string VersionText(const CLasSection* versionSection)
{
    CLasParam vers;
    if (!versionSection || versionSection->FindParameterByMnemonic("VERS", &vers) < 0) return "?";
    // "VERS.3.0 :" puts the number where the unit stands.
    const std::string text = Trim(vers.m_value.empty() ? vers.m_unit : vers.m_value);
    return text.empty() ? "?" : text;
}

bool NullValueOf(const CLasSection* well, double* value)
{
    if (!well) return false;
    CLasParam param;
    if (well->FindParameterByMnemonic("NULL", &param) < 0) return false;
    const std::string text = Trim(param.m_value);
    if (text.empty()) return false;
    char* end = nullptr;
    const double parsed = std::strtod(text.c_str(), &end);
    if (end == text.c_str()) return false;
    *value = parsed;
    return true;
}

bool IsNullValue(double value, bool hasNull, double nullValue)
{
    if (std::isnan(value)) return true;
    if (!hasNull) return false;
    return std::fabs(value - nullValue) <= 1e-9 * std::fmax(1.0, std::fabs(nullValue));
}

CurveStats StatsOf(const CLasCurve& curve, bool hasNull, double nullValue)
{
    CurveStats stats;
    stats.count = curve.size();
    if (!curve.m_isNumeric) return stats;
    for (double v : curve.m_numbers) {
        if (IsNullValue(v, hasNull, nullValue) || std::isinf(v)) {
            ++stats.nulls;
            continue;
        }
        if (std::isnan(stats.min) || v < stats.min) stats.min = v;
        if (std::isnan(stats.max) || v > stats.max) stats.max = v;
    }
    return stats;
}

int DepthCurveIndex(const CLasSection& data)
{
    for (size_t rank = 0; const char* name = DepthMnemonic(rank); ++rank) {
        for (size_t i = 0; i < data.m_curves.size(); ++i)
            if (EqualsNoCase(data.m_curves[i].m_definition.m_mnemonic, name) &&
                data.m_curves[i].m_isNumeric)
                return static_cast<int>(i);
    }
    if (!data.m_curves.empty() && data.m_curves[0].m_isNumeric) return 0;
    return -1;
}

}  // namespace quarl::common
