// The notes of a read, the reason a read stopped, and the budget of bytes a
// read may keep.
#include <quarl/reader.h>

#include <string>

namespace quarl {

namespace {

// Past this many notes of one kind, a read only counts them.
constexpr uint32_t kNotesPerKind = 100;
constexpr size_t kKindSlots = 40;

size_t Slot(ELASNOTEKIND kind)
{
    return static_cast<size_t>(kind) % kKindSlots;
}

struct KindName {
    ELASNOTEKIND kind;
    const char* name;
};

constexpr KindName kKindNames[] = {
    {LASNOTE_READ_STOPPED, "LASNOTE_READ_STOPPED"},
    {LASNOTE_SECTION_SKIPPED, "LASNOTE_SECTION_SKIPPED"},
    {LASNOTE_SHORT_ROW, "LASNOTE_SHORT_ROW"},
    {LASNOTE_LONG_ROW, "LASNOTE_LONG_ROW"},
    {LASNOTE_NOT_A_NUMBER, "LASNOTE_NOT_A_NUMBER"},
    {LASNOTE_VALUE_CUT, "LASNOTE_VALUE_CUT"},
    {LASNOTE_HEADER_AT_END, "LASNOTE_HEADER_AT_END"},
    {LASNOTE_BUDGET_EXCEEDED, "LASNOTE_BUDGET_EXCEEDED"},
    {LASNOTE_MORE_NOTES, "LASNOTE_MORE_NOTES"},
    {LASNOTE_NUMBER_IN_PART, "LASNOTE_NUMBER_IN_PART"},
    {LASNOTE_NOT_TEXT, "LASNOTE_NOT_TEXT"},
    {LASNOTE_LINE_TOO_LONG, "LASNOTE_LINE_TOO_LONG"},
    {LASNOTE_DECODED, "LASNOTE_DECODED"},
    {LASNOTE_TEXT_BEFORE_SECTIONS, "LASNOTE_TEXT_BEFORE_SECTIONS"},
    {LASNOTE_NO_VERSION_FIRST, "LASNOTE_NO_VERSION_FIRST"},
    {LASNOTE_SECTION_TITLE, "LASNOTE_SECTION_TITLE"},
    {LASNOTE_HEADER_INDENTED, "LASNOTE_HEADER_INDENTED"},
    {LASNOTE_NO_PERIOD, "LASNOTE_NO_PERIOD"},
    {LASNOTE_LINE_PASSED_OVER, "LASNOTE_LINE_PASSED_OVER"},
    {LASNOTE_VALUE_WITH_COLONS, "LASNOTE_VALUE_WITH_COLONS"},
    {LASNOTE_LAS12_WELL_VALUE, "LASNOTE_LAS12_WELL_VALUE"},
    {LASNOTE_NULL_FILLED, "LASNOTE_NULL_FILLED"},
    {LASNOTE_COLUMNS_FROM_HEADER, "LASNOTE_COLUMNS_FROM_HEADER"},
    {LASNOTE_LEADING_TAB, "LASNOTE_LEADING_TAB"},
    {LASNOTE_ARRAY_FORMAT, "LASNOTE_ARRAY_FORMAT"},
    {LASNOTE_TEXT_COLUMN, "LASNOTE_TEXT_COLUMN"},
    {LASNOTE_DECIMAL_COMMA, "LASNOTE_DECIMAL_COMMA"},
    {LASNOTE_MNEMONIC_PERIODS, "LASNOTE_MNEMONIC_PERIODS"},
    {LASNOTE_NEAREST_DEFINITION, "LASNOTE_NEAREST_DEFINITION"},
    {LASNOTE_UNIT_WITH_COLONS, "LASNOTE_UNIT_WITH_COLONS"},
    {LASNOTE_EXTRA_COLUMNS, "LASNOTE_EXTRA_COLUMNS"},
    {LASNOTE_UNNAMED_CURVE, "LASNOTE_UNNAMED_CURVE"},
    {LASNOTE_COMMA_ROWS, "LASNOTE_COMMA_ROWS"},
    {LASNOTE_QUOTED_VALUE, "LASNOTE_QUOTED_VALUE"},
};

}  // namespace

const char* LasNoteKindName(ELASNOTEKIND kind)
{
    for (const KindName& entry : kKindNames) {
        if (entry.kind == kind) return entry.name;
    }
    return "LASNOTE_UNKNOWN";
}

// Counts a note of `kind`; true while the cap leaves room to keep it.
bool CLasReader::CountNote(ELASNOTEKIND kind, uint64_t line)
{
    const size_t slot = Slot(kind);
    if (++m_noteCounts[slot] <= kNotesPerKind) return true;
    m_noteLastLines[slot] = line;
    return false;
}

void CLasReader::NoteAt(uint64_t line, ELASNOTEKIND kind, const std::string& text)
{
    if (!CountNote(kind, line)) return;
    CLasNote note;
    note.line = line;
    note.kind = kind;
    note.text = text;
    m_notes.push_back(std::move(note));
}

// Records why the read stops here, unless a deeper step already said so.
ELASFILEERROR CLasReader::Stop(ELASFILEERROR result, const char* why)
{
    if (m_stopReason.empty()) m_stopReason = why;
    return result;
}

// The counts of the kinds that passed the cap, then where and why a failed
// read stopped.
void CLasReader::FinishNotes(ELASFILEERROR result)
{
    for (const KindName& entry : kKindNames) {
        const size_t slot = Slot(entry.kind);
        if (m_noteCounts[slot] <= kNotesPerKind) continue;
        CLasNote note;
        note.line = m_noteLastLines[slot];
        note.kind = LASNOTE_MORE_NOTES;
        note.text = std::to_string(m_noteCounts[slot] - kNotesPerKind) + " more notes of kind " +
                    entry.name + ", the last on this line";
        m_notes.push_back(std::move(note));
    }
    if (result == LASFILE_OK) return;
    if (result == LASFILE_BAD_FORMAT) NoteRefusal();
    if (m_stopReason.empty()) {
        if (result == LASFILE_CANCELLED)
            m_stopReason = "the status callback stopped the read";
        else if (result == LASFILE_OUT_OF_MEMORY)
            m_stopReason = "no memory for a line of the file";
        else
            m_stopReason = ResultDescription(result);
    }
    CLasNote note;
    note.line = m_lineNumber;
    note.kind = LASNOTE_READ_STOPPED;
    note.text = m_stopReason;
    m_notes.push_back(std::move(note));
}

// The note and the reason of a read that the text file refused: its bytes
// are no text, or a line is too long. The refusal ends the read wherever it
// came, and its reason replaces any other.
void CLasReader::NoteRefusal()
{
    const CTextFile::ERefusal refusal = m_file.GetRefusal();
    if (refusal == CTextFile::kRefusedNul) {
        Note(LASNOTE_NOT_TEXT, "a NUL byte in the first 1024 bytes");
        m_stopReason = "the file holds bytes that are no text";
    } else if (refusal == CTextFile::kRefusedLongLine) {
        Note(LASNOTE_LINE_TOO_LONG,
             "a line longer than " + std::to_string(m_options.maxLineLength) + " bytes");
        m_stopReason = "a line is longer than the read allows";
    }
}

// The note and the reason of a read that passed its budget; always false.
bool CLasReader::BudgetPassed()
{
    Note(LASNOTE_BUDGET_EXCEEDED,
         "the read would keep more than " + std::to_string(m_options.maxBytes) + " bytes");
    Stop(LASFILE_OUT_OF_MEMORY, "the read passed its budget of bytes");
    return false;
}

}  // namespace quarl
