/// \file
/// CLasWriter: takes sections, checks, completes and orders them, and writes
/// a LAS 2.0 or 3.0 file. The host calls SetFormat on the empty writer,
/// AddSection for each section, then Write; Validate alone shows whether a
/// Write would get past the document. The writer holds copies: nothing it does
/// reaches the host's objects, and nothing reads the stored sections back.
///
/// Every operation that returns a code, and SetStatusCallback, first clears
/// the last-error record; a failure fills it and stays readable until the
/// next of these calls. The record holds the code, the section and the
/// mnemonic concerned (null when none), and the 0-based column (curve index)
/// and row of a data section (-1 when none).
#ifndef QUARL_WRITER_H
#define QUARL_WRITER_H

#include <quarl/document.h>
#include <quarl/export.h>
#include <quarl/types.h>
#include <tessel/tessel.h>

#include <cstdint>
#include <cstdio>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace quarl {

namespace detail {
struct WriterAccess;  ///< the test suite's window on the private operations
class OutputBuffer;
class SectionNameIndex;
}  // namespace detail

/// The kinds of change a writer in repair mode makes (CLasWriter::SetRepair).
/// The numbers never change; new kinds are added at the end.
enum ELASREPAIRKIND : int32_t {
    /// A section stored under the name of the version: "Curve" as
    /// "Log_Definition" in LAS 3.0 and back, "W" as "Well".
    LASREPAIR_SECTION_RENAMED = 0,
    /// A section the version cannot hold, or a Version section with lines the
    /// writer does not make itself, left out.
    LASREPAIR_SECTION_LEFT_OUT = 1,
    /// A second parameter section of a name: its lines appended to the first.
    LASREPAIR_SECTION_MERGED = 2,
    /// A section that holds nothing (no lines, no rows) at the end of the
    /// document, not written: a file cannot end in a section header. A
    /// document without rows so writes its curves in the definition section
    /// alone, and reads back with them.
    LASREPAIR_SECTION_NOT_WRITTEN = 3,
    /// An association changed: a data section's link following its
    /// definition's new name, or a LAS 2.0 parameter's association removed.
    LASREPAIR_ASSOCIATION = 4,
    /// A mnemonic made legal: "." ":" "{" "}" "|" and blanks as "_".
    LASREPAIR_MNEMONIC = 5,
    /// A unit made legal the same way.
    LASREPAIR_UNIT = 6,
    /// A value without braces, bars and colons: "{" "}" "|" ":" as "(" ")" "/"
    /// "_" (a strict read ends the value at a colon); empty text values of a
    /// curve as the NULL value of the Well section, or "nan" without one.
    LASREPAIR_VALUE = 7,
    /// A format given braces, or made to say what the values are.
    LASREPAIR_FORMAT = 8,
    /// A parameter line left out because nothing smaller would do.
    LASREPAIR_LINE_LEFT_OUT = 9,
    /// A curve left out (LAS 2.0 text), with its definition line.
    LASREPAIR_CURVE_LEFT_OUT = 10,
    /// A numeric curve moved first, to be the index of its data section.
    LASREPAIR_CURVE_MOVED = 11,
    /// A definition line added for a curve that had none.
    LASREPAIR_DEFINITION_ADDED = 12,
    /// The data delimiter changed: tabs (or commas) for text that holds the
    /// delimiter.
    LASREPAIR_DELIMITER = 13,
    /// STRT, STOP or STEP of the Well section made to agree with the data.
    LASREPAIR_WELL_RANGE = 14,
    /// A short curve padded to the length of the longest one.
    LASREPAIR_CURVE_PADDED = 15,
    /// In LAS 3.0, a second section of a group ("Log_Definition" again, as
    /// files that repeat ~Curve and ~Ascii for each logging run have them)
    /// renamed as the next run of its group: "Log2_Definition".
    LASREPAIR_SECTION_NEXT_RUN = 16,
};

/// The name of a kind as written above ("LASREPAIR_SECTION_RENAMED");
/// "LASREPAIR_UNKNOWN" for any other value. A static string.
QUARL_API const char* LasRepairKindName(ELASREPAIRKIND kind);

/// The name a section takes in a LAS 3.0 (true) or LAS 2.0 document, the one
/// repair mode gives it: in LAS 3.0 "W" "P" "C" "A" "L" "LOG" "Parameter"
/// "Curve" "ASCII" as "Well" "Log_Parameter" "Log_Definition" "Log_Data"; in
/// LAS 2.0 the three log names back, and one-letter names written out ("W"
/// as "Well", "L" as "ASCII"). Any other name, and null as "", as it is.
QUARL_API CLasString LasSectionNameIn(const char* name, bool isLas3);

/// One change a writer in repair mode made to its copy of the document.
struct CLasRepair {
    ELASREPAIRKIND kind = LASREPAIR_SECTION_RENAMED;  ///< what kind of change
    CLasString section;   ///< the section, under the name the writer stores it
    CLasString mnemonic;  ///< the line or curve; empty when the change is the section's own
    CLasString from;      ///< the text before the change ("" when something was added)
    CLasString to;        ///< the text after ("" when something was left out)
    CLasString text;      ///< the change in words, one line, for a person
};

/// Takes sections (AddSection), checks and completes them (Validate) and
/// writes them as a LAS file (Write), byte for byte.
class QUARL_API CLasWriter {
public:
    CLasWriter();
    /// Closes an output that a failed Write left open and removes its
    /// temporary file; the target is not touched.
    ~CLasWriter();

    /// Copies the sections, the format, the callback, repair mode with its
    /// repairs, and the last-error record. Never shares or leaks an open output: an unfinished
    /// output of the target is closed and its temporary file removed, and the copy has no open
    /// output. Does nothing when called from the target's own Write.
    CLasWriter& operator=(const CLasWriter& other);

    /// Back to a new writer: no sections, LAS 2.0 with the space, no callback,
    /// repair mode off and no repairs, the record cleared. Does nothing when called from the status
    /// callback of a Write.
    void Reset();
    /// Chooses LAS 3.0 (true) or 2.0, and the data delimiter. Returns, tested
    /// in this order:
    ///   LASFILE_NOT_ALLOWED_IN_VERSION  LAS 2.0 with a delimiter other than
    ///                                   ' ' (recorded as "VERSION", "DLM").
    ///   LASFILE_WRONG_STATE             the writer already holds sections.
    ///   LASFILE_BAD_VALUE               the delimiter is not ' ', tab or ','; the
    ///                                   version is then set, the delimiter
    ///                                   stays as it was.
    ELASFILEERROR SetFormat(bool isLas3, char delimiter);
    /// Registers the callback and its context for every later Write; a null
    /// callback ends the reports. Write reports with 0 first, at the start of
    /// each section, before every tenth parameter line or data row, and with
    /// 100 at the end, with the message "Writing " and the path. From inside
    /// the callback, AddSection, Validate and Write return LASFILE_WRONG_STATE,
    /// and Reset and assignment to this writer do nothing.
    void SetStatusCallback(void* context, LasStatusCallback callback);
    /// Repair mode, off in a new writer. While it is on, AddSection and
    /// Validate change, in the writer's copies, what the chosen version cannot
    /// hold, in the smallest way that lets it be written, and record each
    /// change; what they would refuse becomes a repair (docs/WRITING.md lists
    /// the rules). Results that no repair can avoid (a writer busy writing, a
    /// bad delimiter, a data section past the size limit) stay as they are.
    /// Turning it on or off keeps the sections and the repairs made so far.
    ///@{
    void SetRepair(bool repair) { m_repair = repair; }
    bool IsRepairing() const { return m_repair; }
    ///@}
    /// The changes made since the writer was new, Reset, or SetFormat (which
    /// clears them whether it succeeds or not), in the order they were made.
    const std::vector<CLasRepair>& GetRepairs() const { return m_repairs; }
    /// Stores a copy of the section at the end of the list if it passes the
    /// rules of the version; a refused section stores nothing. Returns:
    ///   LASFILE_DUPLICATE_SECTION  a stored section has that name (ignoring
    ///                              ASCII case), or it is "Version" or "V".
    ///   LASFILE_BAD_NAME           the name: LAS 2.0 takes only Well, Curve,
    ///                              Parameter, ASCII, Log, Other, Downhole and
    ///                              their first letters; LAS 3.0 any name of two
    ///                              bytes or more but Other. Or a parameter
    ///                              line: a mnemonic or unit holding a blank,
    ///                              tab, ".", ":", "{", "}" or "|"; a value
    ///                              holding "{", "}" or "|"; a format without
    ///                              both braces (recorded with the mnemonic).
    ///   LASFILE_BAD_VALUE          a type that is not data, parameter,
    ///                              definition or header; a first curve that
    ///                              holds text, or in LAS 2.0 any curve that
    ///                              does; curves of unequal length (recorded
    ///                              with the column); in LAS 2.0 a parameter
    ///                              with an association (with the mnemonic).
    ///   LASFILE_WRONG_STATE        called from the callback of a Write.
    /// In LAS 2.0 a one-letter name is stored written out: W as Well, C as
    /// Curve, P as Parameter, A and L as ASCII, O as Other, D as Downhole.
    /// In repair mode (SetRepair) the section is renamed, merged, made legal
    /// or left out instead of refused, and the Version section is taken (and
    /// left out); only LASFILE_WRONG_STATE and a data section past the size
    /// limit (LASFILE_BAD_VALUE with the column) remain.
    ELASFILEERROR AddSection(const CLasSection& section);
    /// Completes, orders and tests the stored document, in place; what it
    /// changed stays changed when a later step fails. A second run adds
    /// nothing more, but a STEP that the first derived from unevenly spaced
    /// depths fails it. In this order it
    /// - adds an empty section "Well" when there is none; when "ASCII" is
    ///   there but "Curve" is not, adds the definition section that ASCII's
    ///   link names (or "Curve", linked to it, when the link is empty) unless
    ///   the link finds a section; in LAS 3.0 links every other data section
    ///   without a link to "<base>_Definition" and adds that section if
    ///   missing. Added sections go to the end, then:
    /// - reorders: Well, Parameter, Curve; in LAS 3.0 each further data section
    ///   behind its "<base>_Parameter" and definition section; every section
    ///   that no rule names, in the order of adding; last the main data
    ///   section (the first named "ASCII", else "LOG", else "Log_Data") behind
    ///   its parameter and definition section. LASFILE_BAD_FORMAT, with the
    ///   order unchanged, when in LAS 3.0 two or more data sections are named
    ///   "ASCII", "LOG" or "Log_Data".
    /// - LASFILE_MISSING_SECTION when there is no "Well", no "Curve" or
    ///   "Log_Definition" (recorded as "Curve"), no main data section
    ///   (recorded as "ASCII").
    /// - LASFILE_BAD_VALUE when the curves of a data section differ in length
    ///   (recorded with the section and the column).
    /// - fills an empty definition section with one line per curve of its data
    ///   section: the curve's m_definition, or "COL<n>" with "Column <n>" and
    ///   "{F}" or "{S}" when that has no mnemonic. LASFILE_MISSING_SECTION when
    ///   a data section's link is empty or finds nothing (recorded with the
    ///   link), or its definition has another number of lines than it has
    ///   curves (recorded with the data section).
    /// - tests STRT, STOP and STEP of the Well section against the first curve
    ///   of the main data section: LASFILE_BAD_FORMAT, recorded with the data
    ///   section, the mnemonic, column 0 and the row, when STRT or STOP is off
    ///   by more than 1e-07 or a step differs from a non-zero STEP by more;
    ///   appends the ones missing, taken from the data ("%.8f"). Then appends
    ///   as "Not Specified" what is missing of COMP, WELL, FLD, LOC; API when
    ///   there is neither UWI nor API; CNTY, STAT and CTRY when there is none
    ///   of PROV, CNTY, STAT and CTRY; SRVC.
    /// Returns LASFILE_BAD_VALUE first when the delimiter is not ' ', tab or
    /// ',', and LASFILE_WRONG_STATE from the callback of a Write.
    /// In repair mode, before all this, each data section gets one definition
    /// line per curve and curves of one length, loses its LAS 2.0 text curves
    /// or gets a numeric index first in LAS 3.0, and formats that say what
    /// its values are; a main data section without rows is added when there
    /// is none, tabs delimit LAS 3.0 text that holds the delimiter; and STRT, STOP and STEP
    /// are taken from the data rather than refused (a document without rows
    /// keeps them).
    ELASFILEERROR Validate();
    /// Runs Validate, then writes the document to `path`: a head with the
    /// version block made from SetFormat (VERS, WRAP NO, and DLM in LAS 3.0),
    /// then each section in the order Validate gave, with numbers as "%.15g".
    /// The target is replaced only where that keeps its identity: a regular
    /// file of this process's user with no other hard link, in a folder where
    /// we may create a file, or a path where nothing is yet, is written under
    /// a temporary name beside it and renamed onto it when complete (with its
    /// group and permission bits; a symbolic link is resolved once and stays a
    /// link), so a Write that fails or is cancelled leaves the old file as it
    /// was; without room for a second copy, the temporary file takes the
    /// target's place then and the write goes on in place. Anything else
    /// (another user's file, hard links, a folder we may not write, a link
    /// that leads nowhere, a device, a pipe) is written in place, emptied at
    /// once, and keeps what was written when a Write fails. The results and
    /// their order are the same either way.
    /// Returns:
    ///   LASFILE_IO_FAILED   the target cannot be written (a missing folder, a
    ///                       folder, no permission; nothing is validated
    ///                       then); an output call, the final flush, close or
    ///                       rename failed (recorded with the section,
    ///                       mnemonic, column and row of the failed piece; a
    ///                       failure in the first three lines is not recorded).
    ///   LASFILE_CANCELLED   the status callback said stop (not recorded).
    ///   LASFILE_BAD_FORMAT  a stored section has a type that nothing writes
    ///                       (AddSection lets none in).
    ///   LASFILE_WRONG_STATE called from its own callback.
    ///   whatever Validate returns.
    /// An empty text cell cannot be written: it fails with LASFILE_IO_FAILED
    /// and its column and row. The unfinished temporary file of a failed Write
    /// is removed at the latest by the next Write or the destructor. The
    /// stored sections stay as Validate left them.
    ELASFILEERROR Write(const tessel::TxString& path);
    /// Like Write, into memory: `text` gets exactly the bytes Write would put
    /// in a file, with `name` where the file head names the path. The same
    /// validation, status reports ("Writing " and `name`), results and
    /// last-error record as Write; there is no target to open, so nothing is
    /// refused before Validate. `text` is replaced only when the write
    /// succeeds, and is left as it was on any failure; LASFILE_IO_FAILED when
    /// the text cannot grow (out of memory), or an empty text cell.
    ELASFILEERROR WriteToString(std::string& text, const tessel::TxString& name);
    /// Like WriteToString, into `stream`, with what is written handed over in
    /// large pieces as the write goes on: a failed or cancelled write leaves
    /// what it had handed over. A stream that goes bad fails the write with
    /// LASFILE_IO_FAILED (recorded as Write records a refused output call); a
    /// stream that throws on failure throws through the write. Flushed at the
    /// end of a write that succeeds.
    ELASFILEERROR WriteToStream(std::ostream& stream, const tessel::TxString& name);

    /// The last-error record. The texts are null when empty and stay valid
    /// until the record next changes; reading it changes nothing.
    ///@{
    ELASFILEERROR GetLastError() const { return m_lastError; }
    const char* GetLastErrorSection() const;
    const char* GetLastErrorParam() const;
    int32_t GetLastErrorColumn() const { return m_errorColumn; }
    int32_t GetLastErrorRow() const { return m_errorRow; }
    ///@}
    /// Records LASFILE_OK, no section, no mnemonic, column and row -1.
    void ClearLastError();

private:
    friend struct detail::WriterAccess;
    CLasWriter(const CLasWriter& other);  ///< not offered

    ELASFILEERROR SetLastError(ELASFILEERROR code, const char* section, const char* param,
                               int32_t column, int32_t row);
    int32_t FindSectionIndexByName(const char* name) const;
    int32_t FindMainDataSection() const;
    bool HasSectionNamed(const char* name);
    int32_t CountSectionsByType(ELASSECTIONTYPE type) const;
    ELASFILEERROR ValidateSectionName(const CLasSection& section);
    bool IsNameOfVersion(const std::string& name) const;
    void Store(CLasSection&& section);
    ELASFILEERROR ValidateDataSection(const CLasSection& section);
    ELASFILEERROR ValidateParameterSection(const CLasSection& section);
    void GetLAS2FullSectionName(std::string& name) const;
    ELASFILEERROR FillWellSection();
    ELASFILEERROR SortSections();

    /// Helpers of the operations above.
    ELASFILEERROR CheckDepths(const CLasSection& data, CLasSection& well);
    void CreateMissingSections();
    ELASFILEERROR CheckRequiredSections();
    ELASFILEERROR CheckColumnLengths();
    ELASFILEERROR FillDefinitionSections();
    void CloseOutput();
    bool Report(double percent, const tessel::TxString& message) const;
    ELASFILEERROR WriteToSink(const std::function<size_t(const char*, size_t)>& sink,
                              const tessel::TxString& name);
    ELASFILEERROR WriteValidated(detail::OutputBuffer& out);
    ELASFILEERROR WriteDocument(detail::OutputBuffer& out, const tessel::TxString& message);
    ELASFILEERROR WriteHead(detail::OutputBuffer& out);
    ELASFILEERROR WriteSectionHead(detail::OutputBuffer& out, const CLasSection& section);
    ELASFILEERROR WriteParams(detail::OutputBuffer& out, const CLasSection& section, double base,
                              double step, const tessel::TxString& message);
    ELASFILEERROR WriteRows(detail::OutputBuffer& out, const CLasSection& section, double base,
                            double step, const tessel::TxString& message);
    ELASFILEERROR FinishWrite(detail::OutputBuffer& out);
    ELASFILEERROR RowsRefused(const CLasSection& section, uint64_t offset);
    size_t CellLength(const CLasCurve& curve, size_t row) const;

    /// Repair mode (writer/repair.cpp).
    void Record(ELASREPAIRKIND kind, const std::string& section, const std::string& mnemonic,
                const std::string& from, const std::string& to, const std::string& text);
    ELASFILEERROR AddRepaired(const CLasSection& section);
    bool RepairSectionName(CLasSection& section);
    void RepairParams(CLasSection& section);
    void RepairParam(CLasParam& param, const std::string& section);
    bool MergeIntoStored(const CLasSection& section, const std::string& given);
    bool NameNextRun(CLasSection& section);
    void RepairDocument();
    void RepairDataSection(CLasSection& data);
    void DropTextCurves(CLasSection& data, CLasSection* definition);
    void PutNumericIndexFirst(CLasSection& data, CLasSection* definition);
    void RepairFormats(CLasSection& data, CLasSection* definition);
    std::string MissingValueText();
    void PadCurves(CLasSection& data);
    void NullForNotANumber(CLasSection& data);
    void FillEmptyTexts(CLasSection& data);
    void AddMissingDefinitions(CLasSection& data, CLasSection& definition);
    void AddMissingDataSection();
    size_t WrittenSectionCount();
    void UseTextDelimiter();
    void RepairWellRange(const CLasSection& data, CLasSection& well);
    CLasSection* FindStored(const std::string& name);

    LasStatusCallback m_statusCallback;
    void* m_statusContext;
    std::vector<CLasSection> m_sections;
    bool m_isLas3;
    char m_delimiter;
    ELASFILEERROR m_lastError;
    std::string m_errorSection;
    std::string m_errorParam;
    int32_t m_errorColumn;
    int32_t m_errorRow;
    std::FILE* m_file;
    tessel::TxString m_filename;
    /// The temporary file that becomes the target once it is complete; empty
    /// when no output is open or when the target is written in place.
    std::string m_tempPath;
    /// The file that the temporary file replaces: the target, with a symbolic
    /// link resolved once when the output was opened.
    std::string m_replacedPath;
    /// The names in m_sections, for the duplicate test of AddSection, and how
    /// many sections they were taken from.
    std::unique_ptr<detail::SectionNameIndex> m_names;
    size_t m_namesCounted;
    /// Write is emitting sections: the status callback may not change them.
    bool m_writing;
    /// Repair mode and the changes it made.
    bool m_repair;
    std::vector<CLasRepair> m_repairs;
};

}  // namespace quarl

#endif
