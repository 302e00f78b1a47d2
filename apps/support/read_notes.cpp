#include "support/read_notes.h"

#include <cstdio>

#include "support/text.h"

namespace quarl::apps {

CLasReadOptions ProgramReadOptions(bool strict)
{
    CLasReadOptions options;
    options.lenient = !strict;
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
