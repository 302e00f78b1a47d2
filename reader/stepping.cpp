// Whether the depths of every log data section advance by the STEP that the
// Well section (the second section of the list) declares.
#include <quarl/reader.h>

#include "foundation/number_parse.h"
#include "foundation/section_index.h"

namespace quarl {

namespace {

constexpr const char* kDepthNames[] = {"DEPT", "M__DEPTH", "DEPTH"};

// The column of "DEPT", else "M__DEPTH", else "DEPTH", else the first one.
size_t DepthColumn(const CLasSection& definition)
{
    for (const char* name : kDepthNames) {
        const int32_t index = definition.FindParameterByMnemonic(name, nullptr);
        if (index >= 0) return static_cast<size_t>(index);
    }
    return 0;
}

}  // namespace

ELASFILEERROR CLasReader::CheckDataStepping() const
{
    if (!IsOpen() || m_sections.size() < 2) return LASFILE_WRONG_STATE;
    CLasParam stepParam;
    if (m_sections[1]->FindParameterByMnemonic("STEP", &stepParam) < 0)
        return LASFILE_MISSING_SECTION;
    const double step = ParseNumber(stepParam.m_value.c_str());

    // The first section of each name, as FindSectionIndexByName would find
    // it, in one pass rather than one search per data section.
    detail::SectionNameIndex byName;
    for (size_t i = 0; i < m_sections.size(); ++i)
        byName.Add(m_sections[i]->m_name.c_str(), static_cast<int32_t>(i));
    for (const auto& section : m_sections) {
        if ((section->m_flags & CLasSection::kFlagLogData) == 0) continue;
        const char* association = section->m_association.c_str();
        const int32_t definition = *association ? byName.Find(association) : -1;
        if (definition < 0) return LASFILE_BAD_VALUE;
        // A section without a column to test (no curves, or fewer than the
        // definition names) is passed over.
        const size_t column = DepthColumn(*m_sections[static_cast<size_t>(definition)]);
        if (column >= section->m_curves.size()) continue;
        const CLasCurve& depth = section->m_curves[column];
        if (!depth.m_isNumeric) return LASFILE_BAD_FORMAT;
        if (FirstUnevenStep(depth.m_numbers, step) != 0) return LASFILE_BAD_FORMAT;
    }
    return LASFILE_OK;
}

const char* DepthMnemonic(size_t index)
{
    constexpr size_t kCount = sizeof(kDepthNames) / sizeof(kDepthNames[0]);
    return index < kCount ? kDepthNames[index] : nullptr;
}

const char* SteppingDescription(ELASFILEERROR code)
{
    switch (code) {
        case LASFILE_OK:
            return "the depths of the log data advance by STEP";
        case LASFILE_BAD_FORMAT:
            return "the depths do not advance by STEP, or the depth curve is text";
        case LASFILE_MISSING_SECTION:
            return "the Well section has no STEP";
        case LASFILE_BAD_VALUE:
            return "a log data section names no stored definition section";
        case LASFILE_WRONG_STATE:
            return "fewer than two sections were read";
        default:
            return ResultDescription(code);
    }
}

}  // namespace quarl
