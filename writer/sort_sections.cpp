// SortSections: puts the stored sections in the order of a LAS file. The
// order is worked out on positions first and applied only when it is
// complete, so a failure leaves every section where it was.
#include <algorithm>
#include <string>

#include <quarl/writer.h>

#include "foundation/platform.h"
#include "reader/section_names.h"

namespace quarl {

namespace {

constexpr size_t kNone = static_cast<size_t>(-1);

// The sections not yet placed, as positions into the stored list, and the
// order built so far.
struct Placement {
    const std::vector<CLasSection>& sections;
    std::vector<size_t> left;
    std::vector<size_t> order;

    // Where in `left` the first section of that name stands, or kNone.
    size_t Find(const std::string& name) const
    {
        if (name.empty()) return kNone;
        for (size_t i = 0; i < left.size(); ++i) {
            if (AsciiEqualNoCase(sections[left[i]].m_name.c_str(), name.c_str())) return i;
        }
        return kNone;
    }
    void Take(size_t at)
    {
        order.push_back(left[at]);
        left.erase(left.begin() + static_cast<std::ptrdiff_t>(at));
    }
    void MoveByName(const std::string& name)
    {
        const size_t at = Find(name);
        if (at != kNone) Take(at);
    }
    size_t CountData() const
    {
        size_t count = 0;
        for (size_t index : left) count += sections[index].m_type == LASSECTION_DATA ? 1 : 0;
        return count;
    }
};

bool IsLogDataWholeName(const std::string& name)
{
    return AsciiEqualNoCase(name.c_str(), "ASCII") || AsciiEqualNoCase(name.c_str(), "LOG") ||
           AsciiEqualNoCase(name.c_str(), "Log_Data");
}

std::string BaseName(const CLasSection& section)
{
    std::string base;
    SplitSectionName(section.m_name.c_str(), true, &base, nullptr, nullptr);
    return base;
}

std::string ParameterName(const CLasSection& data)
{
    return BaseName(data) + "_Parameter";
}

std::string DefinitionName(const CLasSection& data)
{
    if (!data.m_association.empty()) return data.m_association;
    return BaseName(data) + "_Definition";
}

// The first secondary data section still to be placed, as a position in
// `left`, or kNone.
size_t FindSecondaryData(const Placement& placement)
{
    for (size_t i = 0; i < placement.left.size(); ++i) {
        const CLasSection& section = placement.sections[placement.left[i]];
        if (section.m_type == LASSECTION_DATA && !IsLogDataWholeName(section.m_name)) return i;
    }
    return kNone;
}

// The main data section with its parameter and definition sections go last;
// everything else still to be placed goes ahead of them in list order.
void PlaceMainData(Placement& placement)
{
    size_t at = placement.Find("ASCII");
    if (at == kNone) at = placement.Find("LOG");
    if (at == kNone) at = placement.Find("Log_Data");
    std::vector<size_t> last;
    if (at != kNone) {
        const CLasSection& data = placement.sections[placement.left[at]];
        for (size_t found : {placement.Find(ParameterName(data)),
                             placement.Find(DefinitionName(data)), at}) {
            if (found == kNone) continue;
            const size_t index = placement.left[found];
            if (std::find(last.begin(), last.end(), index) == last.end()) last.push_back(index);
        }
    }
    for (size_t index : placement.left) {
        if (std::find(last.begin(), last.end(), index) == last.end())
            placement.order.push_back(index);
    }
    placement.order.insert(placement.order.end(), last.begin(), last.end());
    placement.left.clear();
}

}  // namespace

ELASFILEERROR CLasWriter::SortSections()
{
    ClearLastError();
    if (m_sections.empty()) return LASFILE_OK;
    Placement placement{m_sections, {}, {}};
    for (size_t i = 0; i < m_sections.size(); ++i) placement.left.push_back(i);

    placement.MoveByName("Well");
    placement.MoveByName("Parameter");
    placement.MoveByName("Curve");
    while (m_isLas3 && placement.CountData() >= 2) {
        const size_t at = FindSecondaryData(placement);
        if (at == kNone) return SetLastError(LASFILE_BAD_FORMAT, nullptr, nullptr, -1, -1);
        const size_t data = placement.left[at];
        placement.left.erase(placement.left.begin() + static_cast<std::ptrdiff_t>(at));
        placement.MoveByName(ParameterName(m_sections[data]));
        placement.MoveByName(DefinitionName(m_sections[data]));
        placement.order.push_back(data);
    }
    PlaceMainData(placement);

    std::vector<CLasSection> sorted;
    sorted.reserve(m_sections.size());
    for (size_t index : placement.order) sorted.push_back(std::move(m_sections[index]));
    m_sections.swap(sorted);
    return LASFILE_OK;
}

}  // namespace quarl
