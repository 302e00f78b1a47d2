// The frame of CLasReader: opening a file and walking it section by section,
// the lines that count, progress reports, skipping a section, and assignment.
#include <quarl/reader.h>

#include "foundation/platform.h"
#include "foundation/section_index.h"

namespace quarl {

namespace {

bool StartsWithHeader(const char* line)
{
    return line && line[0] == '~';
}

// The first line that counts must begin with "~V" in either case.
bool StartsLikeVersionSection(const char* line)
{
    return line && AsciiCompareNoCaseN(line, "~V", 2) == 0;
}

// Blank lines and comments never reach a section reader. Spaces and
// backslashes in any mixture may stand in front of the "#"; a tab may not.
bool LineCounts(const char* line)
{
    while (*line == ' ' || *line == '\\') ++line;
    return *line != '#' && *line != '\0';
}

}  // namespace

CLasReader::CLasReader()
    : m_statusCallback(nullptr),
      m_statusContext(nullptr),
      m_isLas3(false),
      m_isWrapped(false),
      m_delimiter(' ')
{
}

CLasReader::~CLasReader()
{
    Close();
}

void CLasReader::SetStatusCallback(void* context, LasStatusCallback callback)
{
    m_statusContext = context;
    m_statusCallback = callback;
}

ELASFILEERROR CLasReader::ReportProgress(double percent)
{
    tessel::TxString message("Reading ");
    message += m_file.GetFilename();
    const bool stop = m_statusCallback(m_statusContext, percent, message.c_str()) != 0;
    if (m_nameIndex) m_nameIndex->NoteCallback();
    // A host that closed the reader from its callback has stopped the read
    // as well: there is no line left to go on with.
    return stop || !m_file.IsOpen() ? LASFILE_CANCELLED : LASFILE_OK;
}

// Moves to the next line that counts. A report is due at every tenth
// physical line, and only a line that counts can bring one.
ELASFILEERROR CLasReader::ReadLine()
{
    for (;;) {
        const ELASFILEERROR result = m_file.ReadLine();
        if (result != LASFILE_OK) return result;
        if (LineCounts(m_file.GetLine())) break;
    }
    if (!m_statusCallback) return LASFILE_OK;
    if (m_file.GetLineCount() % 10 != 0) return LASFILE_OK;
    return ReportProgress(m_file.GetPercentRead());
}

// Moves past the section whose header is the current line. The end of the
// file inside the body ends the section; right behind the header it fails.
ELASFILEERROR CLasReader::SkipSection()
{
    if (!StartsWithHeader(m_file.GetLine())) return LASFILE_BAD_FORMAT;
    ELASFILEERROR result = ReadLine();
    if (result != LASFILE_OK) return result;
    while (!StartsWithHeader(m_file.GetLine())) {
        result = ReadLine();
        if (result == LASFILE_IO_FAILED) return LASFILE_OK;
        if (result != LASFILE_OK) return result;
    }
    return LASFILE_OK;
}

// A "#" in the very first column of the first line starts comments that
// ReadLine passes over; then the file must start with the Version section.
ELASFILEERROR CLasReader::PassLeadingComment()
{
    if (m_file.GetLine() && m_file.GetLine()[0] == '#') {
        const ELASFILEERROR result = ReadLine();
        if (result != LASFILE_OK) return result;
    }
    return StartsLikeVersionSection(m_file.GetLine()) ? LASFILE_OK : LASFILE_BAD_FORMAT;
}

ELASFILEERROR CLasReader::Open(const tessel::TxString& path)
{
    m_sections.clear();
    m_notes.clear();
    m_isLas3 = false;
    m_isWrapped = false;
    m_delimiter = ' ';
    if (m_file.IsOpen()) m_file.Close();

    ELASFILEERROR result = m_file.Open(path);
    if (result != LASFILE_OK) return result;

    // Lookups by name go through an index for as long as the read runs, so
    // that a file of many sections does not take quadratic time.
    struct IndexWhileReading {
        explicit IndexWhileReading(CLasReader& reader) : m_reader(reader)
        {
            m_reader.m_nameIndex = std::make_unique<detail::SectionNameIndex>();
        }
        ~IndexWhileReading() { m_reader.m_nameIndex.reset(); }
        IndexWhileReading(const IndexWhileReading&) = delete;
        IndexWhileReading& operator=(const IndexWhileReading&) = delete;
        CLasReader& m_reader;
    } indexWhileReading(*this);

    result = PassLeadingComment();
    if (result != LASFILE_OK) return result;

    do {
        result = ReadSection();
    } while (result == LASFILE_OK && StartsWithHeader(m_file.GetLine()));

    // The final report comes after every run of the loop, good or not, and
    // a stop on it replaces whatever the loop gave.
    if (m_statusCallback && ReportProgress(100.0) != LASFILE_OK) return LASFILE_CANCELLED;
    return result;
}

bool CLasReader::IsValidFile(const tessel::TxString& path)
{
    if (m_file.IsOpen()) m_file.Close();
    const bool valid = m_file.Open(path) == LASFILE_OK && PassLeadingComment() == LASFILE_OK;
    m_file.Close();
    return valid;
}

void CLasReader::Close()
{
    m_file.Close();
    m_sections.clear();
    m_nameIndex.reset();  // a host may close the reader from its callback mid-read
}

// The target shares the source's sections. The file follows CTextFile's
// assignment, which never leaves one stream with two owners.
CLasReader& CLasReader::operator=(const CLasReader& other)
{
    if (this == &other) return *this;
    m_file = other.m_file;
    m_statusCallback = other.m_statusCallback;
    m_statusContext = other.m_statusContext;
    m_sections = other.m_sections;
    other.NoteSectionsLent();  // the copy can rename the source's sections
    m_nameIndex.reset();       // it indexed the sections that were replaced
    m_isLas3 = other.m_isLas3;
    m_isWrapped = other.m_isWrapped;
    m_delimiter = other.m_delimiter;
    m_options = other.m_options;
    m_notes = other.m_notes;
    return *this;
}

}  // namespace quarl
