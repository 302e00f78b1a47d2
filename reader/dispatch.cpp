// Which reader a section goes to, decided by its name, and the lookup of a
// stored section by name.
#include <quarl/reader.h>

#include <cstring>
#include <string>

#include "foundation/platform.h"
#include "foundation/section_index.h"
#include "foundation/section_names.h"

namespace quarl {

namespace {

bool NameIsOneOf(const std::string& name, const char* a, const char* b)
{
    return AsciiEqualNoCase(name.c_str(), a) || AsciiEqualNoCase(name.c_str(), b);
}

// The text from the last "_" to the end of the name, once an index ("[2]")
// has been taken off, so that "Log_Parameter[2]" is read as what its suffix
// says. Empty when the name has no "_".
std::string NameTail(const std::string& name)
{
    std::string tail;
    if (!name.empty()) SplitSectionName(name.c_str(), false, nullptr, &tail, nullptr);
    return tail;
}

}  // namespace

// Leniently, the titles that real writers give the standard sections are
// read as those sections' names.
std::string CLasReader::SectionTitle(const std::string& name) const
{
    if (!m_options.lenient) return name;
    static const char* const kTitles[][2] = {{"curves", "Curve"},
                                             {"params", "Parameter"},
                                             {"parameters", "Parameter"},
                                             {"asc", "ASCII"}};
    for (const auto& title : kTitles) {
        if (AsciiEqualNoCase(name.c_str(), title[0])) return title[1];
    }
    return name;
}

ELASFILEERROR CLasReader::ReadSection()
{
    const char* line = Line();
    if (!line || line[0] != '~') return LASFILE_BAD_FORMAT;
    std::string name;
    ParseSectionHeader(line, &name, nullptr);
    const std::string title = SectionTitle(name);
    if (title != name) Note(LASNOTE_SECTION_TITLE, "~" + name + " read as ~" + title);
    name = title;
    const std::string tail = NameTail(name);

    if (IsVersionSectionName(name.c_str()) || NameIsOneOf(name, "well", "w") ||
        NameIsOneOf(name, "parameter", "p"))
        return ReadParameterSection(false);
    if (NameIsOneOf(name, "curve", "c")) return ReadParameterSection(true);
    // Only a file before version 3 knows "Other" as a section of free text.
    if (!m_isLas3 && NameIsOneOf(name, "other", "o")) return SkipSection();
    if (NameIsOneOf(name, "ascii", "a") || NameIsOneOf(name, "log", "l")) return ReadDataSection();
    if (AsciiEqualNoCase(tail.c_str(), "_parameter")) return ReadParameterSection(false);
    if (AsciiEqualNoCase(tail.c_str(), "_definition")) return ReadParameterSection(true);
    if (AsciiEqualNoCase(tail.c_str(), "_data")) return ReadDataSection();
    // A name nothing else knows is data if a definition for it has been read.
    if (FindDefinitionSectionForDataSection(name.c_str(), nullptr) >= 0) return ReadDataSection();
    return SkipSection();
}

void CLasReader::NoteSectionsLent() const
{
    if (m_nameIndex) m_nameIndex->NoteSectionsLent();
}

// Every section that the reader stores comes through here, so that the
// index of a read in progress knows it.
void CLasReader::StoreSection(std::shared_ptr<CLasSection> section)
{
    m_sections.push_back(std::move(section));
    if (m_nameIndex)
        m_nameIndex->Add(m_sections.back()->m_name.c_str(),
                         static_cast<int32_t>(m_sections.size() - 1));
}

// While Open reads, only StoreSection adds sections, so the index answers;
// it is built again when a host that holds sections may have renamed them
// from its callback. Otherwise the names are searched as they stand.
// The index of a read in progress, brought up to date first when a host may
// have renamed sections it holds.
void CLasReader::RefreshNameIndex() const
{
    if (!m_nameIndex->IsStale()) return;
    m_nameIndex->Clear();
    for (size_t i = 0; i < m_sections.size(); ++i)
        m_nameIndex->Add(m_sections[i]->m_name.c_str(), static_cast<int32_t>(i));
    m_nameIndex->NoteRebuilt();
}

// The last section of that name so far; outside a read, the first.
int32_t CLasReader::FindNearestSectionIndexByName(const char* name) const
{
    if (!name || !*name || !m_nameIndex) return FindSectionIndexByName(name);
    RefreshNameIndex();
    return m_nameIndex->FindLast(name);
}

int32_t CLasReader::FindSectionIndexByName(const char* name) const
{
    if (!name || !*name) return -1;
    if (m_nameIndex) {
        RefreshNameIndex();
        return m_nameIndex->Find(name);
    }
    // Folding the case keeps the length, so a stored name can only match
    // when its text up to its first NUL is as long as `name`. The bytes are
    // compared from the end, where names such as "Core_Data[12]" differ.
    const size_t length = std::strlen(name);
    for (size_t i = 0; i < m_sections.size(); ++i) {
        const CLasString& stored = m_sections[i]->m_name;
        if (stored.size() < length || (stored.size() > length && stored[length] != '\0')) continue;
        size_t k = length;
        while (k > 0 && AsciiLower(stored[k - 1]) == AsciiLower(name[k - 1])) --k;
        if (k == 0) return static_cast<int32_t>(i);
    }
    return -1;
}

}  // namespace quarl
