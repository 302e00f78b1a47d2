/// \file
/// CLasReader: turns a LAS 1.2, 2.0 or 3.0 file into a list of sections.
/// Open reads the whole file; the host then takes the sections out through
/// the accessors, and calls Close.
#ifndef QUARL_READER_H
#define QUARL_READER_H

#include <quarl/document.h>
#include <quarl/export.h>
#include <quarl/text_file.h>
#include <quarl/types.h>
#include <tessel/tessel.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quarl {

namespace detail {
struct ReaderAccess;  ///< the test suite's window on the private operations
class RowBytes;       ///< how the bytes of a data row behave
class KeptTokens;     ///< leniently, the odd tokens of a data section's numeric curves
class SectionNameIndex;
}  // namespace detail

/// How CLasReader::Open reads. The default is the strict reading: every rule
/// of the format as it stands, nothing relaxed, everything kept.
struct CLasReadOptions {
    /// Relaxes a few well-defined rules so that files written by real tools
    /// read as they mean; each relaxed rule that fires leaves a note of its
    /// own kind, LASNOTE_DECODED and the kinds behind it below, where
    /// each rule is told. Off, the result of every read is exactly the strict one.
    bool lenient = false;
    /// Reads every section but keeps no data values: the curves of a data
    /// section have their definitions and no values (no curves are added for
    /// values behind the last curve, as a full lenient read does). The rows are passed
    /// over without being cut into values, so a row that a full read would
    /// refuse (a missing delimiter) does not end the read, a data header
    /// followed by nothing but blank and comment lines is not the last line
    /// of the file, and the status callback hears of the rows of a data
    /// section once, at its end.
    bool headersOnly = false;
    /// With headersOnly, a read that costs the header alone: in a LAS 2.0
    /// file that is not wrapped, whose last 64 KiB hold no section header
    /// (leniently, also behind blanks), the ~A section is the last one, as the
    /// format has it. The read then stops at the ~A header and takes the first
    /// data row (the first line behind it that counts) and the last (the last
    /// line of the file that counts, found from the file's end), without
    /// passing the rows between. The curves of ~A then hold two values each,
    /// the first and the last row's (one for a section of one row, none for
    /// a section of none); a lenient read's column rules (text columns,
    /// decimal commas) are not applied to them, but a token that is no number
    /// is NaN as in a full lenient read, and values behind the last curve make
    /// curves only when one of the two rows holds them. Notes of the last row have
    /// line 0, and GetLineNumber() gives the first row's line. Every other
    /// file (LAS 3.0, wrapped, a section header near the end, text decoded
    /// from UTF-16 or read by carriage returns) is read as headersOnly reads
    /// it. Off by default, and nothing without headersOnly.
    bool dataEnds = false;
    /// The most a read may keep, in bytes; 0 is no bound. What counts: each
    /// stored section, parameter line and curve with the bytes of its texts,
    /// 8 bytes per number and the size of a string plus its bytes per text
    /// value. A read that would pass it ends with LASFILE_OUT_OF_MEMORY and
    /// a LASNOTE_BUDGET_EXCEEDED note; what was read up to there stays, with
    /// every curve of a data section one length (the row that did not fit is
    /// not stored). The line store of the file is not counted.
    uint64_t maxBytes = 0;
    /// The longest line a read takes, in bytes; 0 is no bound. A longer line
    /// ends the read at once with LASFILE_BAD_FORMAT and a
    /// LASNOTE_LINE_TOO_LONG note on its line, before it is stored whole: a
    /// device that never ends a line (/dev/urandom) or a damaged file costs
    /// no more than this much memory. The default, 256 MiB
    /// (CTextFile::kDefaultMaxLineLength), is far above any line of a LAS file.
    uint64_t maxLineLength = CTextFile::kDefaultMaxLineLength;
    /// How many threads cut the rows of a data section into values: 1 (the
    /// default) reads on the calling thread alone; 0 takes as many as the
    /// machine has; N takes N. The result is the same with any number, strict
    /// or lenient: sections, values, notes, results, line numbers and the
    /// budget. After the first 64 rows of a section, read line by line, the
    /// rows are read in blocks, on one thread too: a first block of at most
    /// 16 times the bytes read so far in the section, each next one four
    /// times larger while blocks are taken whole, up to 8 MiB per thread.
    /// The lines of a block are shared out in runs of whole lines, every
    /// thread converts the rows of its run into the curves where they stand
    /// in the block, and the calling thread joins the runs in file order. A
    /// run takes only rows that need nothing from the lines around them
    /// (each value one plain whole number, one per curve, nothing behind the
    /// last) and the blank and comment lines between them. The first line of
    /// another kind (a header, a short or long row, an odd or quoted token;
    /// leniently also a carriage return that no line feed follows) ends the
    /// block: the reader goes on behind the last row taken, line by line,
    /// and takes the next block behind the next row (behind 4096 rows when
    /// the last block gave fewer). These read line by line alone: wrapped
    /// files, text decoded from UTF-16/32, with a byte-order mark or read by
    /// carriage returns, data sections with a text curve or a delimiter that
    /// may stand in a number ('.', '+', '-', a digit, 'e'), headersOnly, and
    /// every read with a status callback (so the callback is called on the
    /// calling thread alone, at every tenth physical line). Once a block was
    /// taken whole, the curves get room for the rows the rest of the file may
    /// hold.
    unsigned threads = 1;
};

/// What a read noticed and the host may want to know. Every read, strict or
/// lenient, collects them in the order of the file.
enum ELASNOTEKIND : int32_t {
    // Made in every read.
    LASNOTE_READ_STOPPED = 0,     ///< the read failed here; the text says why
    LASNOTE_SECTION_SKIPPED = 1,  ///< a section nothing reads was passed over
    LASNOTE_SHORT_ROW = 2,        ///< a row with fewer values than curves was filled
    LASNOTE_LONG_ROW = 3,         ///< values behind the last curve were dropped (strict reads only:
                                  ///< leniently they are kept, LASNOTE_EXTRA_COLUMNS)
    LASNOTE_NOT_A_NUMBER = 4,     ///< a numeric token that is no number was read as 0; leniently,
                                  ///< once its column is read, a token that no rule reads as one
                                  ///< whole number is NaN ("-", "ERR", "(null)", "12.5ft",
                                  ///< "1.2.3"), one note on its line
    LASNOTE_VALUE_CUT = 5,        ///< a parameter value ended at a colon inside a time (12:30)
    LASNOTE_HEADER_AT_END = 6,    ///< a section header is the last line of the file
    LASNOTE_BUDGET_EXCEEDED = 7,  ///< the read passed CLasReadOptions::maxBytes
    LASNOTE_MORE_NOTES = 8,       ///< notes of one kind past the cap, counted here
    LASNOTE_NUMBER_IN_PART = 9,   ///< a numeric token of which only a leading number counts
                                  ///< ("123,420", "12.5ft", "1.2.3", "5-3": 123, 12.5, 1.2, 5);
                                  ///< strict reads only: leniently such a token is NaN
    LASNOTE_NOT_TEXT = 10,        ///< the first 1024 bytes hold a NUL byte (a binary file, a device
                                  ///< of zeros): the read ends at once, on line 1, with
                                  ///< LASFILE_BAD_FORMAT
    LASNOTE_LINE_TOO_LONG = 11,   ///< a line is longer than CLasReadOptions::maxLineLength: the
                                  ///< read ends there with LASFILE_BAD_FORMAT
    // Made only in lenient reads, one kind for each relaxed rule.
    LASNOTE_DECODED = 16,               ///< a UTF-8 byte-order mark passed over, UTF-16/32 text
                                        ///< (with a mark, or UTF-16 seen by its zero bytes) read as
                                        ///< UTF-8, or carriage returns read as line ends (when the
                                        ///< first 1024 bytes hold them and no line feed; or, in a
                                        ///< file of line feeds, from the first carriage return that
                                        ///< no line feed follows on: one note, on the line it ends,
                                        ///< and line numbers count such lines)
    LASNOTE_TEXT_BEFORE_SECTIONS = 17,  ///< blank lines and text in front of the first "~" line
                                        ///< passed over (comments behind a first "#" line are no
                                        ///< note: strict reading passes them too)
    LASNOTE_NO_VERSION_FIRST = 18,      ///< the first section is not Version: LAS 2.0 assumed
    LASNOTE_SECTION_TITLE = 19,         ///< "~Curves", "~Params", "~Parameters" and "~Asc" (any
                                        ///< case) read and stored as Curve, Parameter, ASCII
    LASNOTE_HEADER_INDENTED = 20,       ///< a "~" behind blanks starts a section header
    LASNOTE_NO_PERIOD = 21,             ///< "PROV :ALBERTA": the mnemonic is the text before the
                                        ///< first colon, the unit is empty; when a number follows
                                        ///< its first word ("BS  222 : BIT SIZE") that word is the
                                        ///< mnemonic and the rest the value
    LASNOTE_LINE_PASSED_OVER = 22,      ///< a line of a parameter section that is no parameter line
                                        ///< is passed over instead of ending the read
    LASNOTE_VALUE_WITH_COLONS = 23,     ///< a value keeps colons that are no description colon: one
                                        ///< whose first colon stands between two digits (a time)
                                        ///< ends at the first colon that does not, or takes the
                                        ///< whole line when every colon is in a time ("CREA.
                                        ///< 8/24/2011 12:45:27"); a value whose first colon has no
                                        ///< blank in front ("LOC. X: 12 ft, Y: 3 : Location") ends
                                        ///< at the last colon that has a blank in front and a word
                                        ///< behind
    LASNOTE_LAS12_WELL_VALUE = 24,      ///< VERS 1.x, Well line other than STRT, STOP, STEP, NULL
                                        ///< with text on both sides of the colon: value and
                                        ///< description swapped ("COMP. COMPANY: ANY OIL CO"); with
                                        ///< text only in front of the colon, that text is the
                                        ///< description ("UWI .   UNIQUE WELL ID:")
    LASNOTE_NULL_FILLED = 25,           ///< a short row's numbers filled with the Well section's
                                        ///< NULL value instead of 0 (a row with no NULL in the Well
                                        ///< section is filled with 0: LASNOTE_SHORT_ROW)
    LASNOTE_COLUMNS_FROM_HEADER = 26,   ///< a data section without definition section whose header
                                        ///< names its columns ("~A DEPT GR") gets one numeric curve
                                        ///< per name and no association
    LASNOTE_LEADING_TAB = 27,           ///< a tab in front of the first value of a LAS 3.0
                                        ///< tab-delimited row is passed over
    LASNOTE_ARRAY_FORMAT = 28,          ///< a curve of format "{AF..}", "{AI..}" or "{AE..}" is
                                        ///< numeric; the note is on the data section's header
    LASNOTE_TEXT_COLUMN = 29,           ///< a numeric curve none of whose tokens is a number
                                        ///< (dates, names) holds them as text; the note is on the
                                        ///< data section's header, and its tokens have no notes of
                                        ///< their own
    LASNOTE_DECIMAL_COMMA = 30,         ///< a numeric curve whose tokens are whole numbers and
                                        ///< numbers with a comma ("12,5", "-0,25") and never a
                                        ///< period, in a file whose delimiter is not the comma, is
                                        ///< read with the comma as the decimal mark (not when every
                                        ///< comma has three digits behind it: "1,500"); the note is
                                        ///< on the data section's header. In a curve whose other
                                        ///< values have decimals (a period), each token of digits,
                                        ///< one comma and digits is read with the comma as the
                                        ///< decimal mark ("123,420" is 123.42), a note on its line.
                                        ///< A comma with a period ("1,500.25"), and a comma that
                                        ///< may group thousands, is no decimal comma: NaN with
                                        ///< LASNOTE_NOT_A_NUMBER
    LASNOTE_MNEMONIC_PERIODS = 31,      ///< a mnemonic that holds periods ends at a double period:
                                        ///< "Cond..MS/M" is mnemonic "Cond.", unit "MS/M"
    LASNOTE_NEAREST_DEFINITION = 32,    ///< a data section takes the nearest definition section of
                                        ///< its name above it (files that repeat ~Curve and ~Ascii
                                        ///< for each logging run), not the first
    LASNOTE_UNIT_WITH_COLONS = 33,      ///< a unit that holds colons ends at its first blank when
                                        ///< the line has a colon behind that blank:
                                        ///< "STRT.DD/MM/YYYY-HH:MM:SS 03/09/2021-00:00:00 : Start"
                                        ///< has unit "DD/MM/YYYY-HH:MM:SS" and the date as value
    LASNOTE_EXTRA_COLUMNS = 34,         ///< a row with values behind the last curve (in a file that
                                        ///< is not wrapped) gets a numeric curve for each, appended
                                        ///< to the definition section too; earlier rows are filled
                                        ///< as a short row is (the Well section's NULL, else 0).
                                        ///< The curves are named by the last "#" line between the
                                        ///< data header and the first row, else the one right above
                                        ///< the header, when its words (split on blanks) are one
                                        ///< per value of the row, or one per added curve; else by
                                        ///< the words behind the data header's name ("~A DEPT GR")
                                        ///< the same way; else "UNKNOWN:1", "UNKNOWN:2", ...
                                        ///< (LASNOTE_LONG_ROW strictly)
    LASNOTE_UNNAMED_CURVE = 35,         ///< a definition line without a mnemonic names its curve
                                        ///< "UNKNOWN:1", "UNKNOWN:2", ... in the order of the
                                        ///< section. These names, and those of
                                        ///< LASNOTE_EXTRA_COLUMNS, hold a colon, which CLasWriter
                                        ///< refuses in a mnemonic (LASFILE_BAD_NAME): a host
                                        ///< renames them before writing, as quarl-convert does
    LASNOTE_COMMA_ROWS = 36,            ///< a data section whose first row is values run together
                                        ///< by commas alone, one per curve ("1000.0,12.5,33.1"), in
                                        ///< a file whose delimiter is blanks and that is not
                                        ///< wrapped, has its rows read with the comma as the
                                        ///< delimiter; the note is on that first row
    LASNOTE_QUOTED_VALUE = 37,          ///< a data value in quotes is one value, blanks and
                                        ///< delimiters included, stored without its quotes ("pick
                                        ///< gamma", or 'pick delta' closed on its line); one in
                                        ///< double quotes that runs over several lines takes them,
                                        ///< joined by one blank, up to the closing quote (a header
                                        ///< or the file's end ends it too); the note is on the line
                                        ///< where it starts
};

/// The name of a note kind ("LASNOTE_SHORT_ROW"); "LASNOTE_UNKNOWN" for any
/// other value.
QUARL_API const char* LasNoteKindName(ELASNOTEKIND kind);

/// One note: the 1-based physical line of the file it is about, its kind and
/// a short text in words. Line 0 means the file as a whole.
struct CLasNote {
    uint64_t line = 0;                         ///< 1-based physical line; 0 for the whole file
    ELASNOTEKIND kind = LASNOTE_READ_STOPPED;  ///< what was noticed
    CLasString text;                           ///< what was noticed, in words
};

/// Reads a LAS file into a list of sections (Open), which the host then
/// takes out through the accessors.
class QUARL_API CLasReader {
public:
    /// The list of sections, in file order, and its iterators.
    ///@{
    using SectionList = std::vector<std::shared_ptr<CLasSection>>;
    using const_iterator = SectionList::const_iterator;
    using const_reverse_iterator = SectionList::const_reverse_iterator;
    ///@}

    CLasReader();
    ~CLasReader();

    /// Reads the whole file into the list of sections, in file order, under
    /// the options set by SetOptions (the default is the strict reading). First
    /// empties the list and the notes, closes an open file and resets IsLas3,
    /// IsWrapped and GetDelimiter. Returns:
    ///   LASFILE_OK             the file was read to its end.
    ///   LASFILE_IO_FAILED      the path cannot be opened (the reader stays
    ///                          closed); the file is empty or holds nothing but
    ///                          a comment; it ends right behind a section
    ///                          header, or inside a wrapped data row.
    ///   LASFILE_OUT_OF_MEMORY  a line could not be stored.
    ///   LASFILE_BAD_FORMAT     the first line that counts does not begin with
    ///                          "~V" in either case; a parameter line cannot be
    ///                          split; a data section has no definition; a data
    ///                          row lacks its delimiter; the bytes are no text
    ///                          (a NUL byte in the first 1024, LASNOTE_NOT_TEXT)
    ///                          or a line is longer than the options allow
    ///                          (LASNOTE_LINE_TOO_LONG).
    ///   LASFILE_CANCELLED      the status callback said stop, also when it did
    ///                          so only on the final report of 100.
    /// The read ends at the first failure and keeps what it read: every
    /// section before it, and the section being read as far as it got (a data
    /// section without a definition is not kept). Blank lines and lines whose
    /// first byte behind spaces and backslashes is "#" are passed over. Except
    /// for a path that cannot be opened, the reader is open afterwards, good
    /// result or not, until Close. The notes of the read are in GetNotes:
    /// every result but LASFILE_OK leaves a LASNOTE_READ_STOPPED note last, at
    /// GetLineNumber() (line 0 when the file cannot be opened). Lenient reading
    /// may pass over what the strict reading refuses: each rule it relaxes
    /// leaves a note.
    ELASFILEERROR Open(const tessel::TxString& path);
    /// Reads `size` bytes at `data` as Open reads a file holding those bytes:
    /// the same options, sections, results, notes, line numbers and status
    /// reports ("Reading " and `name`). `name` stands where Open has the path.
    /// The bytes are read in place, during this call only: they may go once
    /// it returns. An empty buffer reads as an empty file. Null `data` with a size above 0 gives
    /// LASFILE_IO_FAILED as a path that cannot be opened does.
    ELASFILEERROR OpenBuffer(const void* data, size_t size, const tessel::TxString& name);
    /// Reads a stream the caller opened, as Open reads a file of the same
    /// bytes (see CTextFile::OpenStream: it must seek, and the reader takes
    /// it and closes it). A stream whose reads wait for bytes still coming
    /// lets a read go on while a file arrives.
    ELASFILEERROR OpenStream(std::FILE* stream, const tessel::TxString& name);
    /// Closes the file and empties the list; shared pointers that a host
    /// holds stay valid. Keeps the callback, the options, the notes and what
    /// IsLas3, IsWrapped and GetDelimiter say. Does nothing on a closed reader.
    void Close();
    /// Whether the file starts as Open requires: a "#" line first is passed
    /// over, then the first line that counts begins with "~V" in either case.
    /// False for a file that cannot be opened or is empty, and when the status
    /// callback says stop. Leaves the reader closed; the sections of an
    /// earlier read stay in the list (see the accessors), and the notes and
    /// line number as the last Open left them.
    bool IsValidFile(const tessel::TxString& path);
    /// Whether a file is open: after every Open but one whose path could not
    /// be opened, until Close.
    bool IsOpen() const { return m_file.IsOpen(); }
    /// Registers the callback and its context for every later Open and
    /// IsValidFile; a null callback ends the reports. Open reports at every
    /// tenth physical line that counts and once with 100 at its end, with the
    /// message "Reading " and the path.
    void SetStatusCallback(void* context, LasStatusCallback callback);
    /// The options of the next Open; they stay until they are set again.
    /// IsValidFile follows the lenient option too: leniently, a file is valid
    /// when a "~" line stands anywhere in it.
    ///@{
    void SetOptions(const CLasReadOptions& options) { m_options = options; }
    const CLasReadOptions& GetOptions() const { return m_options; }
    ///@}

    /// What the last Open found in the Version section, kept until the next
    /// Open: version 3 (a VERS value that begins with a byte from "3" up), wrap
    /// mode (a WRAP value that begins with "Y" or "y", or a "Y" right behind
    /// the period) and the column delimiter of the data rows (' ', or what a
    /// DLM line names: SPACE, COMMA or TAB, or else its first byte). A new
    /// reader says false, false and ' '.
    ///@{
    bool IsLas3() const { return m_isLas3; }
    bool IsWrapped() const { return m_isWrapped; }
    char GetDelimiter() const { return m_delimiter; }
    ///@}
    /// The notes of the last Open, in the order of the file; empty before
    /// the first Open. Close keeps them; the next Open replaces them. At most
    /// 100 notes of one kind are kept; past that, one LASNOTE_MORE_NOTES note
    /// per kind at the end says how many more there were, at the line of the
    /// last of them. LASNOTE_READ_STOPPED comes after those.
    const std::vector<CLasNote>& GetNotes() const { return m_notes; }
    /// The 1-based physical line of the file at which the last Open ended:
    /// the line where it failed, or after a good read the last line of the
    /// file (blank and comment lines count; so does a last line without a
    /// line feed). 0 before the first Open and when the file could not be
    /// opened or is empty.
    uint64_t GetLineNumber() const { return m_lineNumber; }

    /// Shares the source's sections (the same objects, by shared pointer) and
    /// copies its callback, options, notes and format. Never two owners of one
    /// stream: the target's file is closed first, and the target is closed.
    CLasReader& operator=(const CLasReader& other);

    /// Counting and iteration over the list as it stands, open or closed. The
    /// iterators' elements are the shared pointers; Open and Close invalidate
    /// them. LASSECTION_ANY counts and names every section; any other type
    /// only the sections of exactly that type. GetSectionNames empties `names`
    /// first and always returns LASFILE_OK.
    ///@{
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
    ///@}

    /// Access by copy, with result codes. A deep copy of the section goes to
    /// `section` (a data section's copy holds all its values). Each returns
    /// LASFILE_WRONG_STATE when the reader is not open, and leaves `section`
    /// untouched on any failure. The Version and the Well section are the
    /// first and the second of the list, by place alone; with fewer sections
    /// the header getters give LASFILE_WRONG_STATE.
    ///@{
    ELASFILEERROR GetVersionHeaders(CLasSection& section) const;
    ELASFILEERROR GetWellHeaders(CLasSection& section) const;
    ///@}
    /// LASFILE_BAD_VALUE when `index` is not below size().
    ///
    /// GetSection(0, s) does not compile: a literal 0 converts as well to the
    /// index as to a null name, and the call is ambiguous. Write
    /// GetSection(0u, s), or pass a variable of an integer type. Any other
    /// integer literal selects the index.
    ELASFILEERROR GetSection(uint32_t index, CLasSection& section) const;
    /// The first section whose whole name equals `name`, ignoring the case of
    /// ASCII letters. LASFILE_BAD_VALUE when none does, and for null or "".
    ELASFILEERROR GetSection(const char* name, CLasSection& section) const;
    /// Empties `sections`, then copies every section into it, or every one
    /// behind the first two when `includeHeaders` is false (whatever those two
    /// are). LASFILE_WRONG_STATE, with `sections` untouched, when not open.
    ELASFILEERROR GetSections(std::vector<CLasSection>& sections, bool includeHeaders) const;

    /// Access without copying, open or closed. They throw tessel::Exception
    /// (and no other type) when there is nothing to refer to: an empty list
    /// for the Version section, fewer than two sections for the Well section,
    /// an index not below size(). A reference stays valid until the list is
    /// next emptied; a shared pointer keeps its section alive through Close
    /// and the reader's end, and what a host changes through it every later
    /// access sees.
    ///@{
    const CLasSection& GetVersionHeaders() const;
    const CLasSection& GetWellHeaders() const;
    const CLasSection& GetSection(uint64_t index) const;
    std::shared_ptr<CLasSection> GetVersionHeadersPtr() const;
    std::shared_ptr<CLasSection> GetWellHeadersPtr() const;
    std::shared_ptr<CLasSection> GetSectionPtr(uint64_t index) const;
    ///@}

    /// Whether the depths of every log data section (CLasSection::
    /// kFlagLogData) advance by the STEP of the second section, the Well
    /// section by place. The depth column is the one defined as DEPT, else
    /// M__DEPTH, else DEPTH, else the first. Changes nothing. Returns:
    ///   LASFILE_OK               every log data section steps evenly, or there
    ///                            is none; one without curves is passed over.
    ///   LASFILE_WRONG_STATE      the reader is not open, or holds fewer than
    ///                            two sections.
    ///   LASFILE_MISSING_SECTION  the second section has no STEP parameter.
    ///   LASFILE_BAD_VALUE        a log data section's m_association names no
    ///                            stored section.
    ///   LASFILE_BAD_FORMAT       a depth column holds text, or a depth differs
    ///                            from the one before plus STEP by more than
    ///                            1e-07.
    /// STEP is read like atof, so text that is no number is 0 and any change
    /// of depth then fails; falling depths need a negative STEP. The first
    /// fault ends the test.
    ELASFILEERROR CheckDataStepping() const;

private:
    friend struct detail::ReaderAccess;
    CLasReader(CLasReader& other);  ///< not offered

    template <typename OpenInput>
    ELASFILEERROR OpenWith(OpenInput open);
    ELASFILEERROR ReadLine();
    ELASFILEERROR SkipSection();
    ELASFILEERROR ReadSection();
    int32_t FindSectionIndexByName(const char* name) const;
    int32_t FindNearestSectionIndexByName(const char* name) const;
    void RefreshNameIndex() const;
    ELASFILEERROR ParseParameterLine(const char* line, CLasParam& param) const;
    ELASFILEERROR ReadParameterSection(bool isDefinition);
    int32_t FindDefinitionSectionForDataSection(const char* name, std::string* found) const;
    ELASFILEERROR ReadDataSection();

    /// Helpers of the operations above, one concern each.
    ELASFILEERROR ReportProgress(double percent);
    ELASFILEERROR PassLeadingComment();
    void ApplyVersionLine(CLasParam& param);
    ELASFILEERROR ReadDataRows(CLasSection& section, uint64_t headerLine);
    bool RowsMayGoInBlocks(const CLasSection& section, const detail::RowBytes& bytes) const;
    uint64_t ReadRowsInBlocks(CLasSection& section, const detail::RowBytes& bytes,
                              uint64_t rowBytes, size_t firstBlock);
    ELASFILEERROR ReadDataRow(const detail::RowBytes& bytes, CLasSection& section,
                              bool& headerReached, detail::KeptTokens* kept);
    void StoreSection(std::shared_ptr<CLasSection> section);
    /// A host was given sections it can change (rename) while a read runs.
    void NoteSectionsLent() const;

    /// Notes, the budget and the relaxed rules.
    ELASFILEERROR ReadFile();
    /// The current line; leniently from a "~" behind blanks on.
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
    /// Adds `bytes` to what the read keeps; false once that passes the budget.
    bool Spend(uint64_t bytes)
    {
        m_bytesKept += bytes;
        return m_options.maxBytes == 0 || m_bytesKept <= m_options.maxBytes || BudgetPassed();
    }
    bool BudgetPassed();
    void NoteRefusal();
    void LookAtLine();
    ELASFILEERROR PassLeadingText();
    ELASFILEERROR HeaderAtEnd(const std::string& name);
    std::string SectionTitle(const std::string& name) const;
    ELASFILEERROR ParseParameterLineAs(const char* line, CLasParam& param, bool lenient,
                                       unsigned& relaxed) const;
    ELASFILEERROR ReadParameterLine(CLasSection& section, bool isVersion);
    void ApplyLas12WellLine(const CLasSection& section, CLasParam& param);
    ELASFILEERROR MakeCurvesFromHeader(CLasSection& section);
    double OddNumber(const CLasCurve& curve, const char* begin, const char* end, bool notePart);
    void NoteNumberInPart(const CLasCurve& curve, uint64_t line, const std::string& token);
    void FillShortRow(std::vector<CLasCurve>& curves, size_t column);
    void NoteRowEnd(const detail::RowBytes& bytes, const char* p, size_t count);
    void NoteLoneReturn();
    void KeepComment(const char* line);
    bool AddExtraCurves(CLasSection& section, size_t added, detail::KeptTokens& kept);
    std::vector<std::string> ExtraCurveNames(const std::vector<CLasCurve>& curves,
                                             size_t added) const;
    ELASFILEERROR PassDataRows(const std::string& name);
    int32_t DefinitionIndex(const std::string& name);
    ELASFILEERROR ReadDataEnds(CLasSection& section);
    void ApplyColumnRules(CLasSection& section, const detail::KeptTokens& kept, uint64_t headerLine,
                          char delimiter);
    char RowDelimiter(size_t curves);
    ELASFILEERROR ReadQuoted(const char*& p, std::string& text, bool& sectionEnded);
    void NoNumbersAsNaN(CLasSection& section, const detail::KeptTokens& kept);
    void NoNumberAsNaN(CLasCurve& curve, size_t row, uint64_t line, const std::string& text);

    CTextFile m_file;
    LasStatusCallback m_statusCallback;
    void* m_statusContext;
    SectionList m_sections;
    bool m_isLas3;
    bool m_isWrapped;
    char m_delimiter;
    CLasReadOptions m_options;
    std::vector<CLasNote> m_notes;
    /// The physical line of the current line, and for a lenient read the
    /// blanks in front of a "~" that make it a header.
    uint64_t m_lineNumber = 0;
    size_t m_lineOffset = 0;
    /// Rows of the last read taken in blocks (see CLasReadOptions::threads).
    uint64_t m_rowsInBlocks = 0;
    /// Bytes kept so far against m_options.maxBytes.
    uint64_t m_bytesKept = 0;
    /// Why the read stopped, set where it stopped; empty while it goes on.
    std::string m_stopReason;
    /// Notes per kind so far, and the line of the last one past the cap.
    uint32_t m_noteCounts[40] = {};
    uint64_t m_noteLastLines[40] = {};
    /// The VERS line named a version before 2 (LAS 1.2).
    bool m_isVersion1 = false;
    /// The first line ended by a carriage return alone has its note.
    bool m_loneReturnNoted = false;
    /// What a short row is filled with: 0, or leniently the NULL value.
    double m_fillValue = 0.0;
    /// Leniently, the last comment line right above the current line, and
    /// the one that names the columns of the data section being read.
    std::string m_commentAbove;
    std::string m_columnComment;
    std::string m_headerWords;
    /// The sections by name while Open reads, null otherwise.
    std::unique_ptr<detail::SectionNameIndex> m_nameIndex;
};

/// What a result of CLasReader::CheckDataStepping means, in one line for
/// people to read ("the Well section has no STEP" for
/// LASFILE_MISSING_SECTION). For a code that CheckDataStepping never returns
/// it gives ResultDescription(code). A static text that never changes.
QUARL_API const char* SteppingDescription(ELASFILEERROR code);

/// The mnemonics that mark the depth column for CheckDataStepping, in the
/// order they are looked for: DepthMnemonic(0) "DEPT", 1 "M__DEPTH", 2
/// "DEPTH", each matched as a whole ignoring case; null for any later index.
/// When none is defined the first column is the depth.
QUARL_API const char* DepthMnemonic(size_t index);

}  // namespace quarl

#endif
