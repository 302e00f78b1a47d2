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
    // read as they mean; each relaxed rule that fires leaves a note of its
    // own kind, LASNOTE_DECODED to LASNOTE_ARRAY_FORMAT below, where each
    // rule is told. Off, the result of every read is exactly the strict one.
    bool lenient = false;
    // Reads every section but keeps no data values: the curves of a data
    // section have their definitions and no values. The rows are passed
    // over without being cut into values, so a row that a full read would
    // refuse (a missing delimiter) does not end the read, a data header
    // followed by nothing but blank and comment lines is not the last line
    // of the file, and the status callback hears of the rows of a data
    // section once, at its end.
    bool headersOnly = false;
    // The most a read may keep, in bytes; 0 is no bound. What counts: each
    // stored section, parameter line and curve with the bytes of its texts,
    // 8 bytes per number and the size of a string plus its bytes per text
    // value. A read that would pass it ends with LASFILE_OUT_OF_MEMORY and
    // a LASNOTE_BUDGET_EXCEEDED note; what was read up to there stays, with
    // every curve of a data section one length (the row that did not fit is
    // not stored). The line store of the file is not counted.
    uint64_t maxBytes = 0;
};

// What a read noticed and the host may want to know. Every read, strict or
// lenient, collects them in the order of the file.
enum ELASNOTEKIND : int32_t {
    // Made in every read.
    LASNOTE_READ_STOPPED = 0,       // the read failed here; the text says why
    LASNOTE_SECTION_SKIPPED = 1,    // a section nothing reads was passed over
    LASNOTE_SHORT_ROW = 2,          // a row with fewer values than curves was filled
    LASNOTE_LONG_ROW = 3,           // values behind the last curve were dropped
    LASNOTE_NOT_A_NUMBER = 4,       // a numeric token that is no number was read as 0
    LASNOTE_VALUE_CUT = 5,          // a parameter value ended at a colon inside a time (12:30)
    LASNOTE_HEADER_AT_END = 6,      // a section header is the last line of the file
    LASNOTE_BUDGET_EXCEEDED = 7,    // the read passed CLasReadOptions::maxBytes
    LASNOTE_MORE_NOTES = 8,         // notes of one kind past the cap, counted here
    // Made only in lenient reads, one kind for each relaxed rule.
    LASNOTE_DECODED = 16,           // a UTF-8 byte-order mark passed over, UTF-16/32 text
                                    // (with a mark, or UTF-16 seen by its zero bytes) read
                                    // as UTF-8, or carriage returns read as line ends (when
                                    // the first 1024 bytes hold them and no line feed)
    LASNOTE_TEXT_BEFORE_SECTIONS = 17,  // blank lines and text in front of the first "~"
                                        // line passed over (comments behind a first "#"
                                        // line are no note: strict reading passes them too)
    LASNOTE_NO_VERSION_FIRST = 18,  // the first section is not Version: LAS 2.0 assumed
    LASNOTE_SECTION_TITLE = 19,     // "~Curves", "~Params", "~Parameters" and "~Asc" (any
                                    // case) read and stored as Curve, Parameter, ASCII
    LASNOTE_HEADER_INDENTED = 20,   // a "~" behind blanks starts a section header
    LASNOTE_NO_PERIOD = 21,         // "PROV :ALBERTA": the mnemonic is the text before the
                                    // first colon, the unit is empty
    LASNOTE_LINE_PASSED_OVER = 22,  // a line of a parameter section that is no parameter
                                    // line is passed over instead of ending the read
    LASNOTE_VALUE_WITH_COLONS = 23, // a value whose first colon stands between two digits
                                    // (a time) ends at the first colon that does not
    LASNOTE_LAS12_WELL_VALUE = 24,  // VERS 1.x, Well line other than STRT, STOP, STEP, NULL
                                    // with text on both sides of the colon: value and
                                    // description swapped ("COMP. COMPANY: ANY OIL CO")
    LASNOTE_NULL_FILLED = 25,       // a short row's numbers filled with the Well section's
                                    // NULL value instead of 0 (a row with no NULL in the
                                    // Well section is filled with 0: LASNOTE_SHORT_ROW)
    LASNOTE_COLUMNS_FROM_HEADER = 26,   // a data section without definition section whose
                                        // header names its columns ("~A DEPT GR") gets one
                                        // numeric curve per name and no association
    LASNOTE_LEADING_TAB = 27,       // a tab in front of the first value of a LAS 3.0
                                    // tab-delimited row is passed over
    LASNOTE_ARRAY_FORMAT = 28,      // a curve of format "{AF..}", "{AI..}" or "{AE..}" is
                                    // numeric; the note is on the data section's header
};

// The name of a note kind ("LASNOTE_SHORT_ROW"); "LASNOTE_UNKNOWN" for any
// other value.
QUARL_API const char* LasNoteKindName(ELASNOTEKIND kind);

// One note: the 1-based physical line of the file it is about, its kind and
// a short text in words. Line 0 means the file as a whole.
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

    // Reads the whole file under the options set by SetOptions. The reader
    // stays open with what was read, also after a failure; the host calls
    // Close. Clears the notes first; every result but LASFILE_OK leaves a
    // LASNOTE_READ_STOPPED note last, at GetLineNumber() (line 0 when the
    // file cannot be opened).
    ELASFILEERROR Open(const tessel::TxString& path);
    void Close();
    // Whether the file starts like a LAS file. Leaves the reader closed, and
    // its notes and line number as the last Open left them.
    bool IsValidFile(const tessel::TxString& path);
    bool IsOpen() const { return m_file.IsOpen(); }
    void SetStatusCallback(void* context, LasStatusCallback callback);
    // The options of the next Open; they stay until they are set again.
    // IsValidFile follows the lenient option too: leniently, a file is valid
    // when a "~" line stands anywhere in it.
    void SetOptions(const CLasReadOptions& options) { m_options = options; }
    const CLasReadOptions& GetOptions() const { return m_options; }

    // What the last Open found out about the file: version 3, wrap mode and
    // the column delimiter of the data rows (' ', ',' or '\t', or the byte
    // a DLM line named).
    bool IsLas3() const { return m_isLas3; }
    bool IsWrapped() const { return m_isWrapped; }
    char GetDelimiter() const { return m_delimiter; }
    // The notes of the last Open, in the order of the file; empty before
    // the first Open. Close keeps them; the next Open replaces them. At most
    // 100 notes of one kind are kept; past that, one LASNOTE_MORE_NOTES note
    // per kind at the end says how many more there were, at the line of the
    // last of them. LASNOTE_READ_STOPPED comes after those.
    const std::vector<CLasNote>& GetNotes() const { return m_notes; }
    // The 1-based physical line of the file at which the last Open ended:
    // the line where it failed, or after a good read the last line of the
    // file (blank and comment lines count; so does a last line without a
    // line feed). 0 before the first Open and when the file could not be
    // opened or is empty.
    uint64_t GetLineNumber() const { return m_lineNumber; }

    // Shares the source's sections. Never two owners of one stream: the
    // target's file is closed first and the copy's file is closed.
    CLasReader& operator=(const CLasReader& other);

    // Counting and iteration over the sections as they stand.
    uint64_t size() const { return m_sections.size(); }
    uint64_t GetSectionCount() const { return m_sections.size(); }
    bool empty() const { return m_sections.empty(); }
    const_iterator begin() const { return m_sections.cbegin(); }
    const_iterator cbegin() const { return m_sections.cbegin(); }
    const_iterator end() const { return m_sections.cend(); }
    const_iterator cend() const { return m_sections.cend(); }
    const_reverse_iterator rbegin() const { return m_sections.crbegin(); }
    const_reverse_iterator rend() const { return m_sections.crend(); }
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

    // Notes, the budget and the relaxed rules.
    ELASFILEERROR ReadFile();
    // The current line; leniently from a "~" behind blanks on.
    const char* Line() const
    {
        const char* line = m_file.GetLine();
        return line ? line + m_lineOffset : line;
    }
    bool CountNote(ELASNOTEKIND kind, uint64_t line);
    void Note(ELASNOTEKIND kind, const std::string& text) { NoteAt(m_lineNumber, kind, text); }
    void NoteAt(uint64_t line, ELASNOTEKIND kind, const std::string& text);
    void FinishNotes(ELASFILEERROR result);
    ELASFILEERROR Stop(ELASFILEERROR result, const char* why);
    // Adds `bytes` to what the read keeps; false once that passes the budget.
    bool Spend(uint64_t bytes)
    {
        m_bytesKept += bytes;
        return m_options.maxBytes == 0 || m_bytesKept <= m_options.maxBytes || BudgetPassed();
    }
    bool BudgetPassed();
    void LookAtLine();
    ELASFILEERROR PassLeadingText();
    ELASFILEERROR HeaderAtEnd(const std::string& name);
    std::string SectionTitle(const std::string& name) const;
    ELASFILEERROR ParseParameterLineAs(const char* line, CLasParam& param, bool lenient,
                                       unsigned& relaxed) const;
    ELASFILEERROR ReadParameterLine(CLasSection& section, bool isVersion);
    void ApplyLas12WellLine(const CLasSection& section, CLasParam& param);
    ELASFILEERROR MakeCurvesFromHeader(CLasSection& section);
    double OddNumber(const CLasCurve& curve, const char* begin, const char* end);
    void FillShortRow(std::vector<CLasCurve>& curves, size_t column);
    void NoteRowEnd(const detail::RowBytes& bytes, const char* p, size_t count);
    ELASFILEERROR PassDataRows(const std::string& name);

    CTextFile m_file;
    LasStatusCallback m_statusCallback;
    void* m_statusContext;
    SectionList m_sections;
    bool m_isLas3;
    bool m_isWrapped;
    char m_delimiter;
    CLasReadOptions m_options;
    std::vector<CLasNote> m_notes;
    // The physical line of the current line, and for a lenient read the
    // blanks in front of a "~" that make it a header.
    uint64_t m_lineNumber = 0;
    size_t m_lineOffset = 0;
    // Bytes kept so far against m_options.maxBytes.
    uint64_t m_bytesKept = 0;
    // Why the read stopped, set where it stopped; empty while it goes on.
    std::string m_stopReason;
    // Notes per kind so far, and the line of the last one past the cap.
    uint32_t m_noteCounts[32] = {};
    uint64_t m_noteLastLines[32] = {};
    // The VERS line named a version before 2 (LAS 1.2).
    bool m_isVersion1 = false;
    // What a short row is filled with: 0, or leniently the NULL value.
    double m_fillValue = 0.0;
    // The sections by name while Open reads, null otherwise.
    std::unique_ptr<detail::SectionNameIndex> m_nameIndex;
};

}  // namespace quarl

#endif
