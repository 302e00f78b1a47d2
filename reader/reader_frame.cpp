// The frame of CLasReader: opening a file and walking it section by section,
// the lines that count, progress reports, skipping a section, and assignment.
#include <quarl/reader.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "foundation/platform.h"
#include "foundation/section_index.h"
#include "foundation/section_names.h"
#include "reader/reader_rules.h"

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

// A line whose first value is a number, as the rows of a data section are.
bool LooksLikeData(const char* line)
{
    while (*line == ' ' || *line == '\t') ++line;
    if (*line == '-' || *line == '+') ++line;
    if (*line == '.') ++line;
    return *line >= '0' && *line <= '9';
}

std::string HeaderName(const char* line)
{
    std::string name;
    ParseSectionHeader(line, &name, nullptr);
    return name;
}

const char* TextFormName(CTextFile::ETextForm form)
{
    switch (form) {
        case CTextFile::kFormUtf8Bom:
            return "a UTF-8 byte-order mark was passed over";
        case CTextFile::kFormUtf16Le:
            return "UTF-16 LE text read as UTF-8";
        case CTextFile::kFormUtf16Be:
            return "UTF-16 BE text read as UTF-8";
        case CTextFile::kFormUtf32Le:
            return "UTF-32 LE text read as UTF-8";
        case CTextFile::kFormUtf32Be:
            return "UTF-32 BE text read as UTF-8";
        case CTextFile::kFormBytes:
            break;
    }
    return "";
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
    if (m_nameIndex) m_nameIndex->EnterCallback();
    const bool stop = m_statusCallback(m_statusContext, percent, message.c_str()) != 0;
    if (m_nameIndex) m_nameIndex->LeaveCallback();
    // A host that closed the reader from its callback has stopped the read
    // as well: there is no line left to go on with.
    return stop || !m_file.IsOpen() ? LASFILE_CANCELLED : LASFILE_OK;
}

// Moves to the next line that counts. A report is due at every tenth
// physical line, and only a line that counts can bring one.
ELASFILEERROR CLasReader::ReadLine()
{
    m_lineOffset = 0;
    if (m_options.lenient) m_commentAbove.clear();
    for (;;) {
        const ELASFILEERROR result = m_file.ReadLine();
        if (result == LASFILE_BAD_FORMAT) ++m_lineNumber;  // the line refused
        if (result != LASFILE_OK) return result;
        ++m_lineNumber;
        NoteLoneReturn();
        if (LineCounts(m_file.GetLine())) break;
        if (m_options.lenient) KeepComment(m_file.GetLine());
    }
    if (m_options.lenient) LookAtLine();
    if (!m_statusCallback) return LASFILE_OK;
    if (m_file.GetLineCount() % 10 != 0) return LASFILE_OK;
    return ReportProgress(m_file.GetPercentRead());
}

// Leniently, the last "#" line passed over in front of the current line,
// without its "#" marks: it may name the columns of the rows below it.
void CLasReader::KeepComment(const char* line)
{
    while (*line == ' ' || *line == '\\' || *line == '\t') ++line;
    if (*line != '#') return;
    while (*line == '#') ++line;
    m_commentAbove = line;
}

// Leniently, once: the first line ended by a carriage return alone, after
// which either line end counts.
void CLasReader::NoteLoneReturn()
{
    const uint64_t line = m_file.GetLoneReturnLine();
    if (line == 0 || m_loneReturnNoted) return;
    m_loneReturnNoted = true;
    NoteAt(line, LASNOTE_DECODED,
           "a carriage return without a line feed ends line " + std::to_string(line) +
               ", and so on in the rest of the file");
}

// Moves past the section whose header is the current line. The end of the
// file inside the body ends the section; right behind the header it fails.
ELASFILEERROR CLasReader::SkipSection()
{
    if (!StartsWithHeader(Line())) return LASFILE_BAD_FORMAT;
    const uint64_t headerLine = m_lineNumber;
    const std::string name = HeaderName(Line());
    ELASFILEERROR result = ReadLine();
    if (result == LASFILE_IO_FAILED) return HeaderAtEnd(name);
    if (result != LASFILE_OK) return result;
    NoteAt(headerLine, LASNOTE_SECTION_SKIPPED,
           "section ~" + name + " passed over" +
               (LooksLikeData(Line()) ? "; its lines look like data rows" : ""));
    while (!StartsWithHeader(Line())) {
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
        if (result == LASFILE_IO_FAILED) return Stop(result, "nothing but comments in the file");
        if (result != LASFILE_OK) return result;
    }
    if (StartsLikeVersionSection(m_file.GetLine())) return LASFILE_OK;
    return Stop(LASFILE_BAD_FORMAT, "the first line that counts does not begin with ~V");
}

// Lenient start: any lines in front of the first "~" line are passed over,
// and the first section may be any section. A note says so where the strict
// start would have refused the file.
ELASFILEERROR CLasReader::PassLeadingText()
{
    const bool commentFirst = m_file.GetLine() && m_file.GetLine()[0] == '#';
    bool noted = false;
    for (bool first = true; !StartsWithHeader(Line()); first = false) {
        const bool strictPasses = first ? commentFirst : commentFirst && !LineCounts(Line());
        if (!strictPasses && !noted) {
            Note(LASNOTE_TEXT_BEFORE_SECTIONS, "lines in front of the first section passed over");
            noted = true;
        }
        const ELASFILEERROR result = ReadLine();
        if (result == LASFILE_IO_FAILED)
            return Stop(LASFILE_BAD_FORMAT, "no section header in the file");
        if (result != LASFILE_OK) return result;
    }
    if (!StartsLikeVersionSection(Line()))
        Note(LASNOTE_NO_VERSION_FIRST, "the file starts with ~" + HeaderName(Line()) +
                                           ", not a Version section: LAS 2.0 assumed");
    return LASFILE_OK;
}

// Leniently, a "~" behind blanks makes a header: the current line is then
// taken from the "~" on.
void CLasReader::LookAtLine()
{
    m_lineOffset = 0;
    const char* line = m_file.GetLine();
    const char* p = line;
    while (*p == ' ' || *p == '\t') ++p;
    if (p == line || *p != '~') return;
    m_lineOffset = static_cast<size_t>(p - line);
    Note(LASNOTE_HEADER_INDENTED, "a section header behind blanks");
}

// A header on the last line: strictly the read fails there; leniently the
// section is complete without lines.
ELASFILEERROR CLasReader::HeaderAtEnd(const std::string& name)
{
    Note(LASNOTE_HEADER_AT_END, "the header of ~" + name + " is the last line of the file" +
                                    (m_options.lenient ? "; read as a section without lines" : ""));
    if (m_options.lenient) return LASFILE_OK;
    return Stop(LASFILE_IO_FAILED, "the file ends with a section header");
}

ELASFILEERROR CLasReader::Open(const tessel::TxString& path)
{
    return OpenWith([&] { return m_file.Open(path); });
}

ELASFILEERROR CLasReader::OpenBuffer(const void* data, size_t size, const tessel::TxString& name)
{
    return OpenWith([&] { return m_file.OpenBuffer(data, size, name); });
}

ELASFILEERROR CLasReader::OpenStream(std::FILE* stream, const tessel::TxString& name)
{
    return OpenWith([&] { return m_file.OpenStream(stream, name); });
}

// Forgets the last read, opens the input through `open` and reads it whole.
template <typename OpenInput>
ELASFILEERROR CLasReader::OpenWith(OpenInput open)
{
    m_sections.clear();
    m_notes.clear();
    m_isLas3 = false;
    m_isWrapped = false;
    m_delimiter = ' ';
    m_lineNumber = 0;
    m_lineOffset = 0;
    m_bytesKept = 0;
    m_rowsInBlocks = 0;
    m_stopReason.clear();
    std::fill(std::begin(m_noteCounts), std::end(m_noteCounts), 0u);
    m_isVersion1 = false;
    m_loneReturnNoted = false;
    m_fillValue = 0.0;
    m_commentAbove.clear();
    m_columnComment.clear();
    m_headerWords.clear();
    if (m_file.IsOpen()) m_file.Close();

    m_file.SetDecoding(m_options.lenient);
    m_file.SetMaxLineLength(static_cast<size_t>(m_options.maxLineLength));
    m_file.SetRefuseNul(true);
    ELASFILEERROR result = open();
    if (result == LASFILE_OK) {
        m_lineNumber = 1;
        result = ReadFile();
    } else if (m_file.GetRefusal() != CTextFile::kNotRefused) {
        m_lineNumber = 1;
    } else {
        Stop(result,
             m_file.IsOpen() ? "the file is empty or cannot be read" : "the file cannot be opened");
    }
    FinishNotes(result);
    return result;
}

ELASFILEERROR CLasReader::ReadFile()
{
    if (m_options.lenient) {
        if (m_file.GetTextForm() != CTextFile::kFormBytes)
            Note(LASNOTE_DECODED, TextFormName(m_file.GetTextForm()));
        if (m_file.HasCarriageReturnLines())
            Note(LASNOTE_DECODED, "carriage returns without line feeds read as line ends");
        LookAtLine();
    }

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

    ELASFILEERROR result = m_options.lenient ? PassLeadingText() : PassLeadingComment();
    if (result != LASFILE_OK) return result;

    do {
        result = ReadSection();
    } while (result == LASFILE_OK && StartsWithHeader(Line()));

    // The final report comes after every run of the loop, good or not, and
    // a stop on it replaces whatever the loop gave.
    if (m_statusCallback && ReportProgress(100.0) != LASFILE_OK) {
        m_stopReason.clear();
        return Stop(LASFILE_CANCELLED, "the status callback stopped the read");
    }
    return result;
}

// The notes and the line number stay those of the last Open.
bool CLasReader::IsValidFile(const tessel::TxString& path)
{
    if (m_file.IsOpen()) m_file.Close();
    const std::vector<CLasNote> notes = m_notes;
    const uint64_t lineNumber = m_lineNumber;
    m_file.SetDecoding(m_options.lenient);
    m_file.SetMaxLineLength(static_cast<size_t>(m_options.maxLineLength));
    m_file.SetRefuseNul(true);
    bool valid = m_file.Open(path) == LASFILE_OK;
    if (valid) {
        if (m_options.lenient) LookAtLine();
        valid = (m_options.lenient ? PassLeadingText() : PassLeadingComment()) == LASFILE_OK;
    }
    m_file.Close();
    m_lineOffset = 0;
    m_notes = notes;
    m_lineNumber = lineNumber;
    m_stopReason.clear();
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
    m_lineNumber = other.m_lineNumber;
    return *this;
}

}  // namespace quarl
