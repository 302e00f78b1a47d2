// The first stored section of each name, found in constant time. The
// sections are compared by name ignoring the case of ASCII letters, as in a
// linear search for the first match, so that a file of many sections is
// read in linear time.
#ifndef QUARL_FOUNDATION_SECTION_INDEX_H
#define QUARL_FOUNDATION_SECTION_INDEX_H

#include <cstdint>
#include <string>
#include <unordered_map>

#include "foundation/platform.h"

namespace quarl::detail {

// The key under which a section name is compared: the name up to its first
// NUL, with ASCII letters folded to lower case.
inline std::string FoldSectionName(const char* name)
{
    std::string folded(name);
    for (char& c : folded) c = AsciiLower(c);
    return folded;
}

class SectionNameIndex {
public:
    // Records section `index` under `name` unless an earlier one has it.
    void Add(const char* name, int32_t index) { m_first.emplace(FoldSectionName(name), index); }
    // The first index recorded under `name`, or -1.
    int32_t Find(const char* name) const
    {
        const auto found = m_first.find(FoldSectionName(name));
        return found == m_first.end() ? -1 : found->second;
    }

private:
    std::unordered_map<std::string, int32_t> m_first;
};

}  // namespace quarl::detail

#endif
