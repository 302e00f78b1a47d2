// CLasReader: turns a LAS 1.2, 2.0 or 3.0 file into a list of sections.
#ifndef QUARL_READER_H
#define QUARL_READER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <quarl/document.h>
#include <quarl/export.h>
#include <quarl/text_file.h>
#include <quarl/types.h>
#include <tessel/tessel.h>

namespace quarl {

namespace detail {
struct ReaderAccess;  // the test suite's window on the private operations
class RowBytes;      // how the bytes of a data row behave
class SectionNameIndex;
}

// How CLasReader::Open reads. The default is the strict reading: every rule
// of the format as it stands, nothing relaxed, everything kept.
struct CLasReadOptions {
    // Relaxes a few well-defined rules so that files written by real tools
    // read as they mean; each relaxed rule that fires leaves a note.
    bool lenient = false;
    // Reads every section but keeps no data values: the curves of a data
    // section have their definitions and no values.
    bool headersOnly = false;
    // The most a read may allocate for values and sections, in bytes; 0 is
    // no bound. A read that would pass it ends with LASFILE_OUT_OF_MEMORY
    // and keeps what was read up to there.
    uint64_t maxBytes = 0;
};

// What a read noticed and the host may want to know. Every read, strict or
// lenient, collects them in the order of the file.
enum ELASNOTEKIND : int32_t {
    LASNOTE_READ_STOPPED = 0,       // the read failed here; the text says why
    LASNOTE_SECTION_SKIPPED = 1,    // a section nothing reads was passed over
    LASNOTE_SHORT_ROW = 2,          // a row with fewer values than curves was filled
    LASNOTE_LONG_ROW = 3,           // values behind the last curve were dropped
    LASNOTE_NOT_A_NUMBER = 4,       // a numeric token that is no number was read as 0
    LASNOTE_VALUE_CUT = 5,          // a parameter value ended at a colon inside it
    LASNOTE_HEADER_AT_END = 6,      // a section header is the last line of the file
    LASNOTE_BUDGET_EXCEEDED = 7,    // the read passed CLasReadOptions::maxBytes
    LASNOTE_LENIENT = 8,            // a rule was relaxed in lenient reading
};

// One note: the 1-based physical line of the file it is about, its kind and
// a short text in words.
struct CLasNote {
    uint64_t line = 0;
    ELASNOTEKIND kind = LASNOTE_READ_STOPPED;
    CLasString text;
};

class QUARL_API CLasReader {
public:
    using SectionList = std::vector<std::shared_ptr<CLasSection>>;
    using const_iterator = SectionList::const_iterator;
    using const_reverse_iterator = SectionList::const_reverse_iterator;

    CLasReader();
    ~CLasReader();

    // Reads the whole file. The reader stays open with what was read, also
    // after a failure; the host calls Close.
    ELASFILEERROR Open(const tessel::TxString& path);
    void Close();
    // Whether the file starts like a LAS file. Leaves the reader closed.
    bool IsValidFile(const tessel::TxString& path);
    bool IsOpen() const { return m_file.IsOpen(); }
    void SetStatusCallback(void* context, LasStatusCallback callback);
    // The options of the next Open; they stay until they are set again.
    void SetOptions(const CLasReadOptions& options) { m_options = options; }
    const CLasReadOptions& GetOptions() const { return m_options; }

    // What the last Open found out about the file: version 3, wrap mode and
    // the column delimiter of the data rows (' ', ',' or '\t', or the byte
    // a DLM line named).
    bool IsLas3() const { return m_isLas3; }
    bool IsWrapped() const { return m_isWrapped; }
    char GetDelimiter() const { return m_delimiter; }
    // The notes of the last Open, in the order of the file; empty before
    // the first Open. Close keeps them.
    const std::vector<CLasNote>& GetNotes() const { return m_notes; }

    // Shares the source's sections. Never two owners of one stream: the
    // target's file is closed first and the copy's file is closed.
    CLasReader& operator=(const CLasReader& other);

    // Counting and iteration over the sections as they stand.
    uint64_t size() const { return m_sections.size(); }
    uint64_t GetSectionCount() const { return m_sections.size(); }
    bool empty() const { return m_sections.empty(); }
    const_iterator begin() const { return NoteSectionsLent(), m_sections.cbegin(); }
    const_iterator cbegin() const { return NoteSectionsLent(), m_sections.cbegin(); }
    const_iterator end() const { return NoteSectionsLent(), m_sections.cend(); }
    const_iterator cend() const { return NoteSectionsLent(), m_sections.cend(); }
    const_reverse_iterator rbegin() const { return NoteSectionsLent(), m_sections.crbegin(); }
    const_reverse_iterator rend() const { return NoteSectionsLent(), m_sections.crend(); }
    int32_t CountSectionsByType(ELASSECTIONTYPE type) const;
    ELASFILEERROR GetSectionNames(ELASSECTIONTYPE type, std::vector<CLasString>& names) const;

    // Access by copy, with result codes.
    ELASFILEERROR GetVersionHeaders(CLasSection& section) const;
    ELASFILEERROR GetWellHeaders(CLasSection& section) const;
    ELASFILEERROR GetSection(uint32_t index, CLasSection& section) const;
    ELASFILEERROR GetSection(const char* name, CLasSection& section) const;
    ELASFILEERROR GetSections(std::vector<CLasSection>& sections, bool includeHeaders) const;

    // Access without copying; these throw tessel::Exception when there is
    // nothing to refer to.
    const CLasSection& GetVersionHeaders() const;
    const CLasSection& GetWellHeaders() const;
    const CLasSection& GetSection(uint64_t index) const;
    std::shared_ptr<CLasSection> GetVersionHeadersPtr() const;
    std::shared_ptr<CLasSection> GetWellHeadersPtr() const;
    std::shared_ptr<CLasSection> GetSectionPtr(uint64_t index) const;

    // Whether the depths of the log data advance by the Well section's STEP.
    ELASFILEERROR CheckDataStepping() const;

private:
    friend struct detail::ReaderAccess;
    CLasReader(CLasReader& other);  // not offered

    ELASFILEERROR ReadLine();
    ELASFILEERROR SkipSection();
    ELASFILEERROR ReadSection();
    int32_t FindSectionIndexByName(const char* name) const;
    ELASFILEERROR ParseParameterLine(const char* line, CLasParam& param) const;
    ELASFILEERROR ReadParameterSection(bool isDefinition);
    int32_t FindDefinitionSectionForDataSection(const char* name, std::string* found) const;
    ELASFILEERROR ReadDataSection();

    // Helpers of the operations above, one concern each.
    ELASFILEERROR ReportProgress(double percent);
    ELASFILEERROR PassLeadingComment();
    void ApplyVersionLine(CLasParam& param);
    ELASFILEERROR ReadDataRows(CLasSection& section);
    ELASFILEERROR ReadDataRow(const detail::RowBytes& bytes, CLasSection& section,
                              bool& headerReached);
    void StoreSection(std::shared_ptr<CLasSection> section);
    // A host was given sections it can change (rename) while a read runs.
    void NoteSectionsLent() const;

    CTextFile m_file;
    LasStatusCallback m_statusCallback;
    void* m_statusContext;
    SectionList m_sections;
    bool m_isLas3;
    bool m_isWrapped;
    char m_delimiter;
    CLasReadOptions m_options;
    std::vector<CLasNote> m_notes;
    // The sections by name while Open reads, null otherwise.
    std::unique_ptr<detail::SectionNameIndex> m_nameIndex;
};

}  // namespace quarl

#endif
