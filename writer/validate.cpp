// Validate: creates and links what the host left out, orders the sections,
// tests the document as a whole and completes the Well section.
#include <quarl/writer.h>

#include <string>

#include "foundation/delimiter_words.h"
#include "foundation/section_index.h"
#include "foundation/section_names.h"

namespace quarl {

namespace {

void AppendSection(std::vector<CLasSection>& sections, const std::string& name,
                   ELASSECTIONTYPE type)
{
    CLasSection section;
    section.m_name = name;
    section.m_type = type;
    sections.push_back(section);
}

// The definition line made for a curve that has none of its own; `column`
// counts from 1.
CLasParam ColumnParam(const CLasCurve& curve, size_t column)
{
    CLasParam param;
    param.m_mnemonic = "COL" + std::to_string(column);
    param.m_description = "Column " + std::to_string(column);
    param.m_format = curve.m_isNumeric ? "{F}" : "{S}";
    return param;
}

}  // namespace

ELASFILEERROR CLasWriter::Validate()
{
    if (m_writing) return LASFILE_WRONG_STATE;  // from the status callback of a Write
    ClearLastError();
    if (!DelimiterWord(m_delimiter))
        return SetLastError(LASFILE_BAD_VALUE, nullptr, nullptr, -1, -1);
    if (m_repair) RepairDocument();
    CreateMissingSections();
    const ELASFILEERROR sortResult = SortSections();
    if (sortResult != LASFILE_OK) return sortResult;
    ELASFILEERROR result = CheckRequiredSections();
    if (result == LASFILE_OK) result = CheckColumnLengths();
    if (result == LASFILE_OK) result = FillDefinitionSections();
    if (result != LASFILE_OK) return result;
    return FillWellSection();
}

// The Well section, the definition section of "ASCII", and in LAS 3.0 a
// definition section for every other data section.
void CLasWriter::CreateMissingSections()
{
    if (FindSectionIndexByName("Well") < 0) AppendSection(m_sections, "Well", LASSECTION_HEADER);

    // Only the main data section under its first name gets a Curve section.
    const int32_t ascii = FindSectionIndexByName(kMainDataNames[0]);
    if (ascii >= 0 && FindSectionIndexByName("Curve") < 0) {
        const std::string link = m_sections[static_cast<size_t>(ascii)].m_association;
        if (FindSectionIndexByName(link.c_str()) < 0) {
            if (link.empty()) m_sections[static_cast<size_t>(ascii)].m_association = "Curve";
            AppendSection(m_sections, link.empty() ? "Curve" : link, LASSECTION_DEFINITION);
        }
    }
    if (!m_isLas3) return;

    const int32_t main = FindSectionIndexByName(kMainDataNames[0]);
    // One index of the names for all data sections, kept up to date as
    // sections are appended, rather than one search each.
    detail::SectionNameIndex byName;
    for (size_t i = 0; i < m_sections.size(); ++i)
        byName.Add(m_sections[i].m_name.c_str(), static_cast<int32_t>(i));
    for (size_t i = 0; i < m_sections.size(); ++i) {
        if (m_sections[i].m_type != LASSECTION_DATA || static_cast<int32_t>(i) == main) continue;
        std::string definition = m_sections[i].m_association;
        if (definition.empty()) {
            SplitSectionName(m_sections[i].m_name.c_str(), true, &definition, nullptr, nullptr);
            definition += "_Definition";
            m_sections[i].m_association = definition;
        }
        if (definition.c_str()[0] == '\0' || byName.Find(definition.c_str()) < 0) {
            AppendSection(m_sections, definition, LASSECTION_DEFINITION);
            byName.Add(definition.c_str(), static_cast<int32_t>(m_sections.size() - 1));
        }
    }
}

ELASFILEERROR CLasWriter::CheckRequiredSections()
{
    const char* missing = nullptr;
    if (FindSectionIndexByName("Well") < 0) {
        missing = "Well";
    } else if (FindSectionIndexByName("Curve") < 0 &&
               FindSectionIndexByName("Log_Definition") < 0) {
        missing = "Curve";
    } else if (FindMainDataSection() < 0) {
        missing = kMainDataNames[0];
    }
    if (!missing) return LASFILE_OK;
    return SetLastError(LASFILE_MISSING_SECTION, missing, nullptr, -1, -1);
}

ELASFILEERROR CLasWriter::CheckColumnLengths()
{
    for (const CLasSection& section : m_sections) {
        if (section.m_type != LASSECTION_DATA) continue;
        for (size_t i = 1; i < section.m_curves.size(); ++i) {
            if (section.m_curves[i].size() != section.m_curves[0].size())
                return SetLastError(LASFILE_BAD_VALUE, section.m_name.c_str(), nullptr,
                                    static_cast<int32_t>(i), -1);
        }
    }
    return LASFILE_OK;
}

// Each data section needs the definition section that its link names, with
// one line per curve; an empty one is filled from the curves.
ELASFILEERROR CLasWriter::FillDefinitionSections()
{
    detail::SectionNameIndex byName;  // the names don't change here
    for (size_t i = 0; i < m_sections.size(); ++i)
        byName.Add(m_sections[i].m_name.c_str(), static_cast<int32_t>(i));
    for (size_t i = 0; i < m_sections.size(); ++i) {
        if (m_sections[i].m_type != LASSECTION_DATA) continue;
        const std::string& link = m_sections[i].m_association;
        const int32_t found = link.c_str()[0] == '\0' ? -1 : byName.Find(link.c_str());
        if (found < 0) return SetLastError(LASFILE_MISSING_SECTION, link.c_str(), nullptr, -1, -1);
        const std::vector<CLasCurve>& curves = m_sections[i].m_curves;
        std::vector<CLasParam>& params = m_sections[static_cast<size_t>(found)].m_params;
        if (params.empty()) {
            for (size_t c = 0; c < curves.size(); ++c) {
                const CLasParam& own = curves[c].m_definition;
                params.push_back(own.m_mnemonic.empty() ? ColumnParam(curves[c], c + 1) : own);
            }
        }
        if (params.size() != curves.size())
            return SetLastError(LASFILE_MISSING_SECTION, m_sections[i].m_name.c_str(), nullptr, -1,
                                -1);
    }
    return LASFILE_OK;
}

}  // namespace quarl
