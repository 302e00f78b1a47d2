// The writer object itself: its lifecycle, the format choice, the
// last-error record, AddSection and the lookups in the stored sections.
#include <quarl/writer.h>

#include "foundation/delimiter_words.h"
#include "foundation/platform.h"
#include "foundation/section_index.h"
#include "foundation/section_names.h"
#include "writer/output_stream.h"

namespace quarl {

CLasWriter::CLasWriter()
    : m_statusCallback(nullptr),
      m_statusContext(nullptr),
      m_isLas3(false),
      m_delimiter(' '),
      m_lastError(LASFILE_OK),
      m_errorColumn(-1),
      m_errorRow(-1),
      m_file(nullptr),
      m_namesCounted(0),
      m_writing(false),
      m_repair(false)
{
}

// Not offered to hosts; the copy gets the document but no open output.
CLasWriter::CLasWriter(const CLasWriter& other) : CLasWriter()
{
    *this = other;
}

CLasWriter::~CLasWriter()
{
    CloseOutput();
}

CLasWriter& CLasWriter::operator=(const CLasWriter& other)
{
    // From the status callback of a Write, the writer being written is left
    // alone: its sections and output are in use.
    if (this == &other || m_writing) return *this;
    CloseOutput();
    m_statusCallback = other.m_statusCallback;
    m_statusContext = other.m_statusContext;
    m_sections = other.m_sections;
    m_isLas3 = other.m_isLas3;
    m_delimiter = other.m_delimiter;
    m_lastError = other.m_lastError;
    m_errorSection = other.m_errorSection;
    m_errorParam = other.m_errorParam;
    m_errorColumn = other.m_errorColumn;
    m_errorRow = other.m_errorRow;
    m_repair = other.m_repair;
    m_repairs = other.m_repairs;
    m_names.reset();
    return *this;
}

// Closes an output that a Write left open and removes its temporary file;
// the target itself is never touched here.
void CLasWriter::CloseOutput()
{
    if (m_file) detail::DiscardOutput(m_file, m_tempPath);
    m_file = nullptr;
    m_filename.clear();
    m_tempPath.clear();
    m_replacedPath.clear();
}

void CLasWriter::Reset()
{
    if (m_writing) return;  // called from the status callback of a Write
    m_statusCallback = nullptr;
    m_statusContext = nullptr;
    m_sections.clear();
    m_isLas3 = false;
    m_delimiter = ' ';
    m_repair = false;
    m_repairs.clear();
    ClearLastError();
}

ELASFILEERROR CLasWriter::SetFormat(bool isLas3, char delimiter)
{
    ClearLastError();
    m_repairs.clear();
    if (!isLas3 && delimiter != ' ')
        return SetLastError(LASFILE_NOT_ALLOWED_IN_VERSION, "VERSION", "DLM", -1, -1);
    if (!m_sections.empty()) return SetLastError(LASFILE_WRONG_STATE, nullptr, nullptr, -1, -1);
    m_isLas3 = isLas3;
    if (!DelimiterWord(delimiter)) return SetLastError(LASFILE_BAD_VALUE, nullptr, nullptr, -1, -1);
    m_delimiter = delimiter;
    return LASFILE_OK;
}

void CLasWriter::SetStatusCallback(void* context, LasStatusCallback callback)
{
    m_statusContext = context;
    m_statusCallback = callback;
    ClearLastError();
}

ELASFILEERROR CLasWriter::AddSection(const CLasSection& section)
{
    if (m_writing) return LASFILE_WRONG_STATE;  // from the status callback of a Write
    ClearLastError();
    if (m_repair) return AddRepaired(section);
    const char* name = section.m_name.c_str();
    if (HasSectionNamed(name) || IsVersionSectionName(name))
        return SetLastError(LASFILE_DUPLICATE_SECTION, name, nullptr, -1, -1);
    const ELASFILEERROR nameResult = ValidateSectionName(section);
    if (nameResult != LASFILE_OK) return SetLastError(nameResult, name, nullptr, -1, -1);
    const ELASFILEERROR contentResult = section.m_type == LASSECTION_DATA
                                            ? ValidateDataSection(section)
                                            : ValidateParameterSection(section);
    if (contentResult != LASFILE_OK) return contentResult;
    CLasSection copy = section;
    if (!m_isLas3 && copy.m_name.size() == 1) GetLAS2FullSectionName(copy.m_name);
    Store(std::move(copy));
    return LASFILE_OK;
}

// Appends a section that passed the rules, and its name to the index.
void CLasWriter::Store(CLasSection&& section)
{
    m_sections.push_back(std::move(section));
    if (m_names && m_namesCounted + 1 == m_sections.size()) {
        m_names->Add(m_sections.back().m_name.c_str(), static_cast<int32_t>(m_namesCounted));
        ++m_namesCounted;
    }
}

ELASFILEERROR CLasWriter::SetLastError(ELASFILEERROR code, const char* section, const char* param,
                                       int32_t column, int32_t row)
{
    m_lastError = code;
    m_errorSection = section ? section : "";
    m_errorParam = param ? param : "";
    m_errorColumn = column;
    m_errorRow = row;
    return code;
}

void CLasWriter::ClearLastError()
{
    SetLastError(LASFILE_OK, nullptr, nullptr, -1, -1);
}

const char* CLasWriter::GetLastErrorSection() const
{
    return m_errorSection.empty() ? nullptr : m_errorSection.c_str();
}

const char* CLasWriter::GetLastErrorParam() const
{
    return m_errorParam.empty() ? nullptr : m_errorParam.c_str();
}

int32_t CLasWriter::FindSectionIndexByName(const char* name) const
{
    if (!name || !*name) return -1;
    for (size_t i = 0; i < m_sections.size(); ++i) {
        if (AsciiEqualNoCase(m_sections[i].m_name.c_str(), name)) return static_cast<int32_t>(i);
    }
    return -1;
}

// FindSectionIndexByName(name) >= 0 without a search through all sections,
// so that adding N sections takes linear time. The names are counted again
// whenever the number of sections differs from the number counted: Validate
// appends sections, Reset clears them, assignment drops the names. Sorting
// changes no name.
bool CLasWriter::HasSectionNamed(const char* name)
{
    if (!name || !*name) return false;
    if (!m_names || m_namesCounted != m_sections.size()) {
        m_names = std::make_unique<detail::SectionNameIndex>();
        for (size_t i = 0; i < m_sections.size(); ++i)
            m_names->Add(m_sections[i].m_name.c_str(), static_cast<int32_t>(i));
        m_namesCounted = m_sections.size();
    }
    return m_names->Find(name) >= 0;
}

// The main data section: the first one named "ASCII", else "LOG", else
// "Log_Data"; -1 when there is none.
int32_t CLasWriter::FindMainDataSection() const
{
    for (const char* name : kMainDataNames) {
        const int32_t index = FindSectionIndexByName(name);
        if (index >= 0) return index;
    }
    return -1;
}

int32_t CLasWriter::CountSectionsByType(ELASSECTIONTYPE type) const
{
    if (type == LASSECTION_ANY) return static_cast<int32_t>(m_sections.size());
    int32_t count = 0;
    for (const CLasSection& section : m_sections) {
        if (section.m_type == type) ++count;
    }
    return count;
}

}  // namespace quarl
