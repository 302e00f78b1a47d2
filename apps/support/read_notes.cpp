#include "support/read_notes.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "common/text.h"

namespace quarl::apps {

uint64_t ReadBudgetFor(const std::string& path)
{
    std::error_code error;
    const uintmax_t size = std::filesystem::file_size(path, error);
    return (64ULL << 20) + 64ULL * (error ? 0 : static_cast<uint64_t>(size));
}

CLasReadOptions ProgramReadOptions(bool strict, const std::string& path)
{
    CLasReadOptions options;
    std::error_code error;
    const uintmax_t size = std::filesystem::file_size(path, error);
    if (!error && size >= kManyThreadsFrom) options.threads = 0;
    if (strict) return options;
    options.lenient = true;
    options.maxBytes = ReadBudgetFor(path);
    return options;
}

std::string NoteLine(const CLasNote& note)
{
    const std::string where = note.line ? "line " + std::to_string(note.line) + ": " : "";
    return where + LasNoteKindName(note.kind) + ": " + std::string(note.text);
}

std::string NoteJson(const CLasNote& note)
{
    return "{\"line\": " + std::to_string(note.line) +
           ", \"kind\": " + common::JsonString(LasNoteKindName(note.kind)) +
           ", \"text\": " + common::JsonString(note.text) + "}";
}

std::string NoteKindTitle(ELASNOTEKIND kind)
{
    struct Title {
        ELASNOTEKIND kind;
        const char* words;
    };
    static const Title titles[] = {
        {LASNOTE_READ_STOPPED, "read stopped"},
        {LASNOTE_SECTION_SKIPPED, "section passed over"},
        {LASNOTE_SHORT_ROW, "short row filled"},
        {LASNOTE_LONG_ROW, "values behind the last curve dropped"},
        {LASNOTE_NOT_A_NUMBER, "no number, read as 0 (leniently NaN)"},
        {LASNOTE_VALUE_CUT, "value cut at a time's colon"},
        {LASNOTE_HEADER_AT_END, "section header at the end of the file"},
        {LASNOTE_BUDGET_EXCEEDED, "read past its budget"},
        {LASNOTE_NUMBER_IN_PART, "number read in part"},
        {LASNOTE_NOT_TEXT, "bytes that are no text"},
        {LASNOTE_LINE_TOO_LONG, "line too long"},
        {LASNOTE_DECODED, "text decoded"},
        {LASNOTE_TEXT_BEFORE_SECTIONS, "text before the first section passed over"},
        {LASNOTE_NO_VERSION_FIRST, "no Version section first"},
        {LASNOTE_SECTION_TITLE, "section title read as its standard name"},
        {LASNOTE_HEADER_INDENTED, "indented section header"},
        {LASNOTE_NO_PERIOD, "parameter line without a period"},
        {LASNOTE_LINE_PASSED_OVER, "line that is no parameter line passed over"},
        {LASNOTE_VALUE_WITH_COLONS, "value keeps its colons"},
        {LASNOTE_LAS12_WELL_VALUE, "LAS 1.2 Well value and description swapped"},
        {LASNOTE_NULL_FILLED, "short row filled with NULL"},
        {LASNOTE_COLUMNS_FROM_HEADER, "curves named by the data header"},
        {LASNOTE_LEADING_TAB, "leading tab passed over"},
        {LASNOTE_ARRAY_FORMAT, "array curve read as numbers"},
        {LASNOTE_TEXT_COLUMN, "curve read as text"},
        {LASNOTE_DECIMAL_COMMA, "decimal comma"},
        {LASNOTE_MNEMONIC_PERIODS, "mnemonic with periods"},
        {LASNOTE_NEAREST_DEFINITION, "curves from the nearest definition"},
        {LASNOTE_UNIT_WITH_COLONS, "unit keeps its colons"},
        {LASNOTE_EXTRA_COLUMNS, "values behind the last curve kept as curves"},
        {LASNOTE_UNNAMED_CURVE, "curve without a mnemonic named"},
        {LASNOTE_COMMA_ROWS, "rows read by their commas"},
        {LASNOTE_QUOTED_VALUE, "quoted value read as one"},
    };
    for (const Title& title : titles)
        if (title.kind == kind) return title.words;
    return LasNoteKindName(kind);
}

namespace {

struct KindGroup {
    ELASNOTEKIND kind;
    size_t count = 0;
    std::vector<uint64_t> lines;
};

// "lines 11-18, 40", at most three runs, then "...".
std::string LineRanges(std::vector<uint64_t> lines)
{
    std::sort(lines.begin(), lines.end());
    lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
    lines.erase(std::remove(lines.begin(), lines.end(), 0u), lines.end());
    if (lines.empty()) return "";
    std::string text = lines.size() == 1 ? "line " : "lines ";
    size_t runs = 0;
    for (size_t i = 0; i < lines.size();) {
        size_t j = i;
        while (j + 1 < lines.size() && lines[j + 1] == lines[j] + 1) ++j;
        if (++runs > 3) return text + ", ...";
        text += (runs > 1 ? ", " : "") + std::to_string(lines[i]) +
                (j > i ? "-" + std::to_string(lines[j]) : "");
        i = j + 1;
    }
    return text;
}

// The kind and count of a note of notes past the cap ("150 more notes of
// kind LASNOTE_SHORT_ROW, ..."), or false.
bool PastTheCap(const CLasNote& note, ELASNOTEKIND* kind, size_t* count)
{
    if (note.kind != LASNOTE_MORE_NOTES) return false;
    *count = static_cast<size_t>(std::strtoull(note.text.c_str(), nullptr, 10));
    for (int k = 0; k < 40; ++k) {
        const char* name = LasNoteKindName(static_cast<ELASNOTEKIND>(k));
        if (note.text.find(std::string(name) + ",") != std::string::npos) {
            *kind = static_cast<ELASNOTEKIND>(k);
            return true;
        }
    }
    return false;
}

}  // namespace

std::string NotesSummary(const std::vector<CLasNote>& notes, const std::string& path)
{
    std::vector<KindGroup> groups;
    size_t total = 0;
    for (const CLasNote& note : notes) {
        ELASNOTEKIND kind = note.kind;
        size_t count = 1;
        const bool extra = PastTheCap(note, &kind, &count);
        auto group = std::find_if(groups.begin(), groups.end(),
                                  [&](const KindGroup& g) { return g.kind == kind; });
        if (group == groups.end()) group = groups.insert(groups.end(), KindGroup{kind, 0, {}});
        group->count += count;
        total += count;
        if (!extra) group->lines.push_back(note.line);
    }
    if (groups.empty()) return "";
    std::string text = std::to_string(total) + (total == 1 ? " note: " : " notes: ");
    for (const KindGroup& group : groups) {
        const std::string lines = LineRanges(group.lines);
        text += std::to_string(group.count) + " x " + NoteKindTitle(group.kind) +
                (lines.empty() ? "" : " (" + lines + ")") + "; ";
    }
    return text + "quarl-check " + path + " lists them";
}

void PrintNotesSummary(const char* program, const std::string& path,
                       const std::vector<CLasNote>& notes)
{
    const std::string summary = NotesSummary(notes, path);
    if (!summary.empty())
        std::fprintf(stderr, "%s: %s: %s\n", program, path.c_str(), summary.c_str());
}

bool NoteLosesData(const CLasNote& note)
{
    switch (note.kind) {
        case LASNOTE_READ_STOPPED:
        case LASNOTE_SECTION_SKIPPED:
        case LASNOTE_LONG_ROW:
        case LASNOTE_NOT_A_NUMBER:
        case LASNOTE_VALUE_CUT:
        case LASNOTE_BUDGET_EXCEEDED:
        case LASNOTE_TEXT_BEFORE_SECTIONS:
        case LASNOTE_LINE_PASSED_OVER:
        case LASNOTE_NUMBER_IN_PART:
            return true;
        default:
            return false;
    }
}

}  // namespace quarl::apps
