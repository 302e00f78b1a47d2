// The families of log curves that petrophysicists group by: gamma ray,
// density, neutron, sonic, resistivity and the others, each with the
// mnemonics tools write for it and the scale it is customarily drawn on.
// quarl-catalog stores this table as the default of its alias table and
// answers "--curve GR" with every member of the family; quarl-plot lays out
// its default tracks from it.
#ifndef QUARL_COMMON_CURVE_FAMILIES_H
#define QUARL_COMMON_CURVE_FAMILIES_H

#include <cstddef>
#include <string>

namespace quarl::common {

// Where a family is drawn by default: the first track (gamma ray, SP,
// caliper), the resistivity track, the porosity track (neutron, density,
// sonic), or a further track of its own.
enum class FamilyTrack { kFirst, kResistivity, kPorosity, kOther };

struct CurveFamily {
    const char* name;         // "gamma_ray"
    const char* description;  // "Gamma ray"
    FamilyTrack track;
    // Its customary scale, left edge to right edge (the left may be the
    // larger value: a reversed scale), and whether it is logarithmic. Both
    // NaN-free; left == right means "from the values".
    double left;
    double right;
    bool log;
    // The unit the scale is in ("API", "g/cm3", "us/ft", "ohm.m", "v/v"),
    // empty for none.
    const char* unit;
    // The mnemonics of the family, upper case, separated by single spaces.
    const char* mnemonics;
};

// The families in the order their tracks are drawn.
const CurveFamily* CurveFamilies(size_t& count);
// The family a mnemonic belongs to, compared ignoring ASCII case after
// passing over a ":2"-style suffix; null for none.
const CurveFamily* FindCurveFamily(const std::string& mnemonic);
// The family of a given name ("gamma_ray"), or null.
const CurveFamily* FindCurveFamilyByName(const std::string& name);
// Whether a mnemonic names a depth or time index column (DEPT, DEPTH,
// M__DEPTH, MD, TVD, TVDSS, TIME, ETIM, INDEX): such a column is the
// vertical axis and never a curve of a track.
bool IsIndexMnemonic(const std::string& mnemonic);

}  // namespace quarl::common

#endif
