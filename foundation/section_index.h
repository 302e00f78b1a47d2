// The first and the last stored section of each name, found in logarithmic
// time. The
// sections are compared by name ignoring the case of ASCII letters, as in a
// linear search for the first match, so that a file of many sections is
// read in linear time. The names are kept in order, not hashed, so that no
// choice of names can make a lookup slow.
#ifndef QUARL_FOUNDATION_SECTION_INDEX_H
#define QUARL_FOUNDATION_SECTION_INDEX_H

#include <cstdint>
#include <map>
#include <string>

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
    // Records section `index` under `name`: the first of that name, and the
    // last so far.
    void Add(const char* name, int32_t index)
    {
        std::string folded = FoldSectionName(name);
        m_last[folded] = index;
        m_first.emplace(std::move(folded), index);
    }
    // The first index recorded under `name`, or -1.
    int32_t Find(const char* name) const
    {
        const auto found = m_first.find(FoldSectionName(name));
        return found == m_first.end() ? -1 : found->second;
    }
    // The last index recorded under `name`, or -1.
    int32_t FindLast(const char* name) const
    {
        const auto found = m_last.find(FoldSectionName(name));
        return found == m_last.end() ? -1 : found->second;
    }
    void Clear()
    {
        m_first.clear();
        m_last.clear();
    }

    // A reader's sections can be renamed by a host that holds them, and only
    // from the status callback while a read runs: the index is stale when
    // sections were handed out and a callback has run since it was built,
    // and while a callback runs (a host may rename and look up in one call).
    void NoteSectionsLent() { m_lent = true; }
    void EnterCallback() { m_inCallback = true; }
    void LeaveCallback()
    {
        m_inCallback = false;
        if (m_lent) m_callbackSinceBuild = true;
    }
    bool IsStale() const { return m_callbackSinceBuild || (m_inCallback && m_lent); }
    void NoteRebuilt() { m_callbackSinceBuild = false; }

private:
    std::map<std::string, int32_t> m_first;
    std::map<std::string, int32_t> m_last;
    bool m_lent = false;
    bool m_inCallback = false;
    bool m_callbackSinceBuild = false;
};

}  // namespace quarl::detail

#endif
