// How the programs read a file and tell its notes: lenient by default with a
// bounded list on stderr, or strict, and each note as a line of text or JSON.
#ifndef QUARL_APPS_READ_NOTES_H
#define QUARL_APPS_READ_NOTES_H

#include <quarl/quarl.h>

#include <cstddef>
#include <string>
#include <vector>

namespace quarl::apps {

// The read options of a program: lenient unless it was given --strict.
CLasReadOptions ProgramReadOptions(bool strict);

// "line 12: LASNOTE_SHORT_ROW: <text>"; a note about the whole file has no line.
std::string NoteLine(const CLasNote& note);
// {"line": 12, "kind": "LASNOTE_SHORT_ROW", "text": "..."}
std::string NoteJson(const CLasNote& note);

// Prints the first `limit` notes to stderr as "<program>: <path>: line ...",
// then how many more there were and where to see them all.
void PrintNotesBounded(const char* program, const std::string& path,
                       const std::vector<CLasNote>& notes, size_t limit = 5);

// Whether a note tells of something a read did not keep as the file has
// it: values dropped or read as 0, text cut, a section passed over, or the
// rest of the file after the read stopped.
bool NoteLosesData(const CLasNote& note);

}  // namespace quarl::apps

#endif
