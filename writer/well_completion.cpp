// FillWellSection: the depth range of the Well section against the main
// data, and the descriptive parameters that a Well section needs.
#include <quarl/writer.h>

#include "foundation/number_parse.h"
#include "foundation/section_names.h"
#include "writer/number_format.h"

namespace quarl {

namespace {

bool Has(const CLasSection& section, const char* mnemonic)
{
    return section.FindParameterByMnemonic(mnemonic, nullptr) >= 0;
}

double ValueOf(const CLasSection& section, const char* mnemonic)
{
    return ParseNumber(
        section.m_params[static_cast<size_t>(section.FindParameterByMnemonic(mnemonic, nullptr))]
            .m_value.c_str());
}

void Append(CLasSection& section, const char* mnemonic, const std::string& value,
            const char* description, const char* format)
{
    CLasParam param;
    param.m_mnemonic = mnemonic;
    param.m_value = value;
    param.m_description = description;
    param.m_format = format;
    section.m_params.push_back(param);
}

void AppendNotSpecified(CLasSection& section, const char* mnemonic)
{
    Append(section, mnemonic, "Not Specified", "", "");
}

// The depths of the first curve; empty when the section has no curves.
const std::vector<double>& Depths(const CLasSection& data)
{
    static const std::vector<double> none;
    return data.m_curves.empty() ? none : data.m_curves[0].m_numbers;
}

}  // namespace

ELASFILEERROR CLasWriter::FillWellSection()
{
    ClearLastError();
    const int32_t wellIndex = FindSectionIndexByName("Well");
    if (wellIndex < 0) return SetLastError(LASFILE_MISSING_SECTION, "Well", nullptr, -1, -1);
    const int32_t dataIndex = FindMainDataSection();
    if (dataIndex < 0)
        return SetLastError(LASFILE_MISSING_SECTION, kMainDataNames[0], nullptr, -1, -1);

    CLasSection& well = m_sections[static_cast<size_t>(wellIndex)];
    const CLasSection& data = m_sections[static_cast<size_t>(dataIndex)];
    if (m_repair) RepairWellRange(data, well);
    const ELASFILEERROR depthResult = CheckDepths(data, well);
    if (depthResult != LASFILE_OK) return depthResult;

    static const char* const kDescriptive[] = {"COMP", "WELL", "FLD", "LOC"};
    for (const char* mnemonic : kDescriptive) {
        if (!Has(well, mnemonic)) AppendNotSpecified(well, mnemonic);
    }
    if (!Has(well, "UWI") && !Has(well, "API")) AppendNotSpecified(well, "API");
    if (!Has(well, "PROV") && !Has(well, "CNTY") && !Has(well, "STAT") && !Has(well, "CTRY")) {
        AppendNotSpecified(well, "CNTY");
        AppendNotSpecified(well, "STAT");
        AppendNotSpecified(well, "CTRY");
    }
    if (!Has(well, "SRVC")) AppendNotSpecified(well, "SRVC");
    return LASFILE_OK;
}

// STRT, STOP and STEP: tested when the Well section has them, derived from
// the first curve when it has not. A first curve without values, or no
// curve at all, counts as depth 0.
ELASFILEERROR CLasWriter::CheckDepths(const CLasSection& data, CLasSection& well)
{
    const std::vector<double>& depths = Depths(data);
    const double first = depths.empty() ? 0.0 : depths.front();
    const double last = depths.empty() ? 0.0 : depths.back();
    const char* name = data.m_name.c_str();
    // In repair mode a document without rows keeps its range: there is
    // nothing to test it against.
    if (m_repair && depths.empty() && Has(well, "STRT") && Has(well, "STOP") && Has(well, "STEP"))
        return LASFILE_OK;

    if (!Has(well, "STRT")) {
        Append(well, "STRT", detail::Fixed8(first), "Starting Depth", "{F}");
    } else if (!DepthsAgree(ValueOf(well, "STRT"), first)) {
        return SetLastError(LASFILE_BAD_FORMAT, name, "STRT", 0, 0);
    }
    if (!Has(well, "STOP")) {
        Append(well, "STOP", detail::Fixed8(last), "Stopping Depth", "{F}");
    } else if (!DepthsAgree(ValueOf(well, "STOP"), last)) {
        const int32_t row = static_cast<int32_t>(depths.size()) - 1;
        return SetLastError(LASFILE_BAD_FORMAT, name, "STOP", 0, row);
    }
    if (!Has(well, "STEP")) {
        const double step = depths.size() >= 2 ? depths[1] - depths[0] : 0.0;
        Append(well, "STEP", detail::Fixed8(step), "Step interval between samples", "{F}");
        return LASFILE_OK;
    }
    const double step = ValueOf(well, "STEP");
    if (step == 0.0) return LASFILE_OK;
    const size_t uneven = FirstUnevenStep(depths, step);
    if (uneven != 0)
        return SetLastError(LASFILE_BAD_FORMAT, name, "STEP", 0, static_cast<int32_t>(uneven));
    return LASFILE_OK;
}

}  // namespace quarl
