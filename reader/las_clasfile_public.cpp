// What a host takes out of the reader once Open has returned: counts, names,
// copies with result codes, and references and shared pointers that throw.
// Positions 0 and 1 of the list are called the Version and the Well section
// by place alone.
#include <quarl/reader.h>

namespace quarl {

namespace {

const char kModule[] = "Quarl";
const char kFile[] = "las_clasfile_public";
constexpr int32_t kCode = 2;
const char kInternalError[] = "Internal Error!";
const char kIndexOutOfRange[] = "Internal Error!  Section index out of range.";

bool TypeMatches(const CLasSection& section, ELASSECTIONTYPE type)
{
    return type == LASSECTION_ANY || section.m_type == type;
}

}  // namespace

int32_t CLasReader::CountSectionsByType(ELASSECTIONTYPE type) const
{
    int32_t count = 0;
    for (const auto& section : m_sections) {
        if (TypeMatches(*section, type)) ++count;
    }
    return count;
}

ELASFILEERROR CLasReader::GetSectionNames(ELASSECTIONTYPE type,
                                          std::vector<CLasString>& names) const
{
    names.clear();
    for (const auto& section : m_sections) {
        if (TypeMatches(*section, type)) names.push_back(section->m_name);
    }
    return LASFILE_OK;
}

ELASFILEERROR CLasReader::GetVersionHeaders(CLasSection& section) const
{
    if (!IsOpen() || m_sections.empty()) return LASFILE_WRONG_STATE;
    section = *m_sections[0];
    return LASFILE_OK;
}

ELASFILEERROR CLasReader::GetWellHeaders(CLasSection& section) const
{
    if (!IsOpen() || m_sections.size() < 2) return LASFILE_WRONG_STATE;
    section = *m_sections[1];
    return LASFILE_OK;
}

ELASFILEERROR CLasReader::GetSection(uint32_t index, CLasSection& section) const
{
    if (!IsOpen()) return LASFILE_WRONG_STATE;
    if (index >= m_sections.size()) return LASFILE_BAD_VALUE;
    section = *m_sections[index];
    return LASFILE_OK;
}

ELASFILEERROR CLasReader::GetSection(const char* name, CLasSection& section) const
{
    if (!IsOpen()) return LASFILE_WRONG_STATE;
    const int32_t index = FindSectionIndexByName(name);
    if (index < 0) return LASFILE_BAD_VALUE;
    return GetSection(static_cast<uint32_t>(index), section);
}

// With includeHeaders false the first two sections are left out, whatever
// they are.
ELASFILEERROR CLasReader::GetSections(std::vector<CLasSection>& sections, bool includeHeaders) const
{
    if (!IsOpen()) return LASFILE_WRONG_STATE;
    sections.clear();
    for (size_t i = includeHeaders ? 0 : 2; i < m_sections.size(); ++i)
        sections.push_back(*m_sections[i]);
    return LASFILE_OK;
}

const CLasSection& CLasReader::GetVersionHeaders() const
{
    return *GetVersionHeadersPtr();
}

const CLasSection& CLasReader::GetWellHeaders() const
{
    return *GetWellHeadersPtr();
}

const CLasSection& CLasReader::GetSection(uint64_t index) const
{
    return *GetSectionPtr(index);
}

std::shared_ptr<CLasSection> CLasReader::GetVersionHeadersPtr() const
{
    NoteSectionsLent();
    if (m_sections.empty())
        throw tessel::Exception(kModule, kFile, __LINE__, kCode, kInternalError);
    return m_sections[0];
}

std::shared_ptr<CLasSection> CLasReader::GetWellHeadersPtr() const
{
    NoteSectionsLent();
    if (m_sections.size() < 2)
        throw tessel::Exception(kModule, kFile, __LINE__, kCode, kInternalError);
    return m_sections[1];
}

std::shared_ptr<CLasSection> CLasReader::GetSectionPtr(uint64_t index) const
{
    NoteSectionsLent();
    if (index >= m_sections.size())
        throw tessel::Exception(kModule, kFile, __LINE__, kCode, kIndexOutOfRange);
    return m_sections[static_cast<size_t>(index)];
}

}  // namespace quarl
