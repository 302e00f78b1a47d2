#include "catalog_record.h"

#include <set>
#include <string>

#include "common/log_facts.h"
#include "common/text.h"

namespace quarl::catalog {

CLasReadOptions CatalogReadOptions(size_t fileSize)
{
    CLasReadOptions options;
    options.lenient = true;
    options.headersOnly = true;
    options.dataEnds = true;
    // The budget of the programs' reads (ReadBudgetFor of apps/support), from the size.
    options.maxBytes = (64ULL << 20) + 64ULL * fileSize;
    return options;
}

bool NeedsFullRead(const CLasReader& reader)
{
    for (const auto& section : reader)
        if (section->m_type == LASSECTION_DATA && !section->m_curves.empty() &&
            section->m_curves[0].size() == 0)
            return true;
    // The ends' column rules are not applied: an index that is no clean
    // number is read as the full read reads it.
    for (const CLasNote& note : reader.GetNotes())
        if (note.kind == LASNOTE_NOT_A_NUMBER || note.kind == LASNOTE_NUMBER_IN_PART) return true;
    return false;
}

namespace {

void AddCurves(const CLasSection& data, FileRecord* record)
{
    const CLasCurve* index = data.m_curves.empty() ? nullptr : &data.m_curves[0];
    const bool hasDepths = index && index->m_isNumeric && !index->m_numbers.empty();
    for (const CLasCurve& curve : data.m_curves) {
        CurveRow row;
        row.section = data.m_name;
        row.mnemonic = curve.m_definition.m_mnemonic;
        row.unit = curve.m_definition.m_unit;
        row.description = common::Trim(curve.m_definition.m_description);
        row.apiCode = curve.m_definition.m_value;
        row.hasDepths = hasDepths;
        if (hasDepths) {
            row.firstDepth = index->m_numbers.front();
            row.lastDepth = index->m_numbers.back();
        }
        if (index) row.depthUnit = index->m_definition.m_unit;
        record->curves.push_back(std::move(row));
    }
}

void AddParams(const CLasSection& section, FileRecord* record)
{
    for (const CLasParam& p : section.m_params)
        record->params.push_back(
            {section.m_name, p.m_mnemonic, p.m_unit, p.m_value, p.m_description});
}

}  // namespace

void FillFromRead(const CLasReader& reader, ELASFILEERROR result, FileRecord* record)
{
    record->result = ResultName(result);
    record->reading = reader.GetOptions().lenient ? "lenient" : "strict";
    record->version.clear();
    record->wrap = reader.IsWrapped();
    record->well.clear();
    record->curves.clear();
    record->params.clear();
    record->notes.clear();
    std::vector<const CLasSection*> sections;
    std::set<std::string> defining;  // the definition sections of the data sections
    for (const auto& section : reader) {
        sections.push_back(section.get());
        if (section->m_type == LASSECTION_DATA) defining.insert(section->m_association);
    }
    if (!sections.empty()) {
        const std::string version = common::VersionText(sections[0]);
        record->version = version == "?" ? "" : version;
    }
    for (size_t i = 0; i < sections.size(); ++i) {
        const CLasSection& s = *sections[i];
        // The Well section is the second by place, as the reader has it.
        if (i == 1 && (s.m_type == LASSECTION_HEADER || s.m_type == LASSECTION_PARAMETER)) {
            for (const CLasParam& p : s.m_params)
                record->well.push_back({p.m_mnemonic, p.m_unit, p.m_value, p.m_description});
        } else if (s.m_type == LASSECTION_DATA) {
            AddCurves(s, record);
        } else if (s.m_type != LASSECTION_DEFINITION || !defining.count(s.m_name)) {
            AddParams(s, record);
        }
    }
    for (const CLasNote& note : reader.GetNotes())
        record->notes.push_back(
            {LasNoteKindName(note.kind), static_cast<int64_t>(note.line), note.text});
}

}  // namespace quarl::catalog
