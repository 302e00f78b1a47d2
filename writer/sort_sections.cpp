// SortSections: puts the stored sections in the order of a LAS file. The
// order is worked out on positions first and applied only when it is
// complete, so a failure leaves every section where it was.
#include <quarl/writer.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "foundation/section_index.h"
#include "foundation/section_names.h"

namespace quarl {

namespace {

constexpr size_t kNone = static_cast<size_t>(-1);

// The sections not yet placed and the order built so far. The sections
// still to place keep the order of the stored list; each name leads to the
// positions of the sections of that name (ASCII case folded), so that a
// lookup by name takes logarithmic time and the count of data sections
// constant time, whatever the names.
struct Placement {
    explicit Placement(const std::vector<CLasSection>& stored)
        : sections(stored), placed(stored.size())
    {
        for (size_t i = 0; i < sections.size(); ++i) {
            byName[detail::FoldSectionName(sections[i].m_name.c_str())].positions.push_back(i);
            dataLeft += sections[i].m_type == LASSECTION_DATA ? 1 : 0;
        }
    }

    // The first section of that name not yet placed, or kNone.
    size_t Find(const std::string& name)
    {
        if (name.empty()) return kNone;
        const auto found = byName.find(detail::FoldSectionName(name.c_str()));
        if (found == byName.end()) return kNone;
        Positions& same = found->second;
        while (same.next < same.positions.size() && placed[same.positions[same.next]]) ++same.next;
        return same.next < same.positions.size() ? same.positions[same.next] : kNone;
    }
    void Take(size_t index)
    {
        placed[index] = true;
        dataLeft -= sections[index].m_type == LASSECTION_DATA ? 1 : 0;
    }
    void Place(size_t index)
    {
        Take(index);
        order.push_back(index);
    }
    void MoveByName(const std::string& name)
    {
        const size_t index = Find(name);
        if (index != kNone) Place(index);
    }
    size_t CountData() const { return dataLeft; }

    struct Positions {
        std::vector<size_t> positions;
        size_t next = 0;  // those before it are placed
    };
    const std::vector<CLasSection>& sections;
    std::vector<bool> placed;
    std::map<std::string, Positions> byName;  // ordered: no names can make it slow
    size_t dataLeft = 0;
    size_t secondaryCursor = 0;  // no secondary data section stands before it unplaced
    std::vector<size_t> order;
};

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

// The first secondary data section still to be placed, or kNone. Sections
// are only ever placed, so the search goes on from where the last one ended.
size_t FindSecondaryData(Placement& placement)
{
    size_t& i = placement.secondaryCursor;
    for (; i < placement.sections.size(); ++i) {
        const CLasSection& section = placement.sections[i];
        if (!placement.placed[i] && section.m_type == LASSECTION_DATA &&
            !IsMainDataName(section.m_name.c_str()))
            return i;
    }
    return kNone;
}

// The main data section with its parameter and definition sections go last;
// everything else still to be placed goes ahead of them in list order.
void PlaceMainData(Placement& placement)
{
    size_t at = kNone;
    for (const char* name : kMainDataNames) {
        at = placement.Find(name);
        if (at != kNone) break;
    }
    std::vector<size_t> last;
    if (at != kNone) {
        const CLasSection& data = placement.sections[at];
        for (size_t found :
             {placement.Find(ParameterName(data)), placement.Find(DefinitionName(data)), at}) {
            if (found == kNone) continue;
            if (std::find(last.begin(), last.end(), found) == last.end()) last.push_back(found);
        }
    }
    for (size_t index : last) placement.Take(index);
    for (size_t index = 0; index < placement.sections.size(); ++index) {
        if (!placement.placed[index]) placement.Place(index);
    }
    placement.order.insert(placement.order.end(), last.begin(), last.end());
}

}  // namespace

ELASFILEERROR CLasWriter::SortSections()
{
    ClearLastError();
    if (m_sections.empty()) return LASFILE_OK;
    Placement placement(m_sections);

    placement.MoveByName("Well");
    placement.MoveByName("Parameter");
    placement.MoveByName("Curve");
    while (m_isLas3 && placement.CountData() >= 2) {
        const size_t at = FindSecondaryData(placement);
        if (at == kNone) return SetLastError(LASFILE_BAD_FORMAT, nullptr, nullptr, -1, -1);
        const size_t data = at;
        placement.Take(data);
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
