#include "support/read_notes.h"

#include <cstdio>
#include <filesystem>

#include "support/text.h"

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
           ", \"kind\": " + JsonString(LasNoteKindName(note.kind)) +
           ", \"text\": " + JsonString(note.text) + "}";
}

void PrintNotesBounded(const char* program, const std::string& path,
                       const std::vector<CLasNote>& notes, size_t limit)
{
    for (size_t i = 0; i < notes.size() && i < limit; ++i)
        std::fprintf(stderr, "%s: %s: %s\n", program, path.c_str(), NoteLine(notes[i]).c_str());
    if (notes.size() > limit)
        std::fprintf(stderr, "%s: %s: %zu more note(s); quarl-check %s lists them all\n", program,
                     path.c_str(), notes.size() - limit, path.c_str());
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
            return true;
        default:
            return false;
    }
}

}  // namespace quarl::apps
