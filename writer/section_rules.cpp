// The rules a section must pass before AddSection stores it.
#include <quarl/writer.h>

#include <cstdint>
#include <cstring>

#include "foundation/platform.h"
#include "writer/curve_limit.h"

namespace quarl {

size_t detail::g_maxCurveValues = INT32_MAX;

namespace {

// The section names of LAS 2.0: the long form, the short form and the name
// that the short form is stored under.
struct Las2Name {
    const char* longForm;
    const char* shortForm;
    const char* stored;
};

constexpr Las2Name kLas2Names[] = {
    {"VERSION", "V", "Version"},     {"WELL", "W", "Well"},         {"CURVE", "C", "Curve"},
    {"PARAMETER", "P", "Parameter"}, {"ASCII", "A", "ASCII"},       {"LOG", "L", "ASCII"},
    {"OTHER", "O", "Other"},         {"DOWNHOLE", "D", "Downhole"},
};

bool IsLas2Name(const char* name)
{
    for (const Las2Name& entry : kLas2Names) {
        if (AsciiEqualNoCase(name, entry.longForm) || AsciiEqualNoCase(name, entry.shortForm))
            return true;
    }
    return false;
}

bool HasAnyOf(const std::string& text, const char* characters)
{
    return text.find_first_of(characters) != std::string::npos;
}

// Separators of the line form: not allowed in a mnemonic or a unit.
constexpr char kFieldSeparators[] = " \t.:{}|";
// Not allowed in a value.
constexpr char kValueDelimiters[] = "{}|";

}  // namespace

ELASFILEERROR CLasWriter::ValidateSectionName(const CLasSection& section)
{
    if (IsNameOfVersion(section.m_name)) return LASFILE_OK;
    return SetLastError(LASFILE_BAD_NAME, section.m_name.c_str(), nullptr, -1, -1);
}

bool CLasWriter::IsNameOfVersion(const std::string& name) const
{
    if (m_isLas3) return name.size() >= 2 && !AsciiEqualNoCase(name.c_str(), "OTHER");
    return IsLas2Name(name.c_str());
}

ELASFILEERROR CLasWriter::ValidateDataSection(const CLasSection& section)
{
    const char* name = section.m_name.c_str();
    if (section.m_type != LASSECTION_DATA)
        return SetLastError(LASFILE_BAD_VALUE, name, nullptr, -1, -1);
    const std::vector<CLasCurve>& curves = section.m_curves;
    if (curves.empty()) return LASFILE_OK;  // written as its head alone
    for (size_t i = 0; i < curves.size(); ++i) {
        const CLasCurve& curve = curves[i];
        const size_t values = curve.m_isNumeric ? curve.m_numbers.size() : curve.m_strings.size();
        if (values > detail::g_maxCurveValues)
            return SetLastError(LASFILE_BAD_VALUE, name, nullptr, static_cast<int32_t>(i), -1);
    }
    if (!curves[0].m_isNumeric) return SetLastError(LASFILE_BAD_VALUE, name, nullptr, 0, -1);
    for (size_t i = 1; i < curves.size() && !m_isLas3; ++i) {
        if (!curves[i].m_isNumeric)
            return SetLastError(LASFILE_BAD_VALUE, name, nullptr, static_cast<int32_t>(i), -1);
    }
    for (size_t i = 1; i < curves.size(); ++i) {
        if (curves[i].size() != curves[0].size())
            return SetLastError(LASFILE_BAD_VALUE, name, nullptr, static_cast<int32_t>(i), -1);
    }
    return LASFILE_OK;
}

ELASFILEERROR CLasWriter::ValidateParameterSection(const CLasSection& section)
{
    const char* name = section.m_name.c_str();
    if (section.m_type != LASSECTION_PARAMETER && section.m_type != LASSECTION_DEFINITION &&
        section.m_type != LASSECTION_HEADER)
        return SetLastError(LASFILE_BAD_VALUE, name, nullptr, -1, -1);
    // Three passes over all parameters, so that an earlier kind of fault is
    // reported ahead of a later kind wherever they stand.
    for (const CLasParam& param : section.m_params) {
        if (HasAnyOf(param.m_mnemonic, kFieldSeparators) ||
            HasAnyOf(param.m_unit, kFieldSeparators) || HasAnyOf(param.m_value, kValueDelimiters))
            return SetLastError(LASFILE_BAD_NAME, name, param.m_mnemonic.c_str(), -1, -1);
    }
    for (const CLasParam& param : section.m_params) {
        const std::string& format = param.m_format;
        if (!format.empty() &&
            (format.find('{') == std::string::npos || format.find('}') == std::string::npos))
            return SetLastError(LASFILE_BAD_NAME, name, param.m_mnemonic.c_str(), -1, -1);
    }
    for (const CLasParam& param : section.m_params) {
        if (!m_isLas3 && !param.m_association.empty())
            return SetLastError(LASFILE_BAD_VALUE, name, param.m_mnemonic.c_str(), -1, -1);
    }
    return LASFILE_OK;
}

void CLasWriter::GetLAS2FullSectionName(std::string& name) const
{
    if (name.size() != 1) return;
    for (const Las2Name& entry : kLas2Names) {
        if (AsciiEqualNoCase(name.c_str(), entry.shortForm)) {
            name = entry.stored;
            return;
        }
    }
}

}  // namespace quarl
