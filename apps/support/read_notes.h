// How the programs read a file and tell its notes: lenient by default with a
// bounded list on stderr, or strict, and each note as a line of text or JSON.
#ifndef QUARL_APPS_READ_NOTES_H
#define QUARL_APPS_READ_NOTES_H

#include <quarl/quarl.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quarl::apps {

// What a program's read of `path` may keep: 64 MB and 64 bytes for each byte
// of the file, so that a small file that asks for huge tables ends with
// LASFILE_OUT_OF_MEMORY at once instead of exhausting the machine.
uint64_t ReadBudgetFor(const std::string& path);

// Files of this many bytes and more are read on every core.
constexpr uint64_t kManyThreadsFrom = 16ULL << 20;

// The read options of a program: lenient and bounded by ReadBudgetFor, or
// with --strict the reader's defaults, exactly; a file of kManyThreadsFrom
// bytes or more is read on every core (CLasReadOptions::threads 0), which
// reads what one thread reads.
CLasReadOptions ProgramReadOptions(bool strict, const std::string& path);

// "line 12: LASNOTE_SHORT_ROW: <text>"; a note about the whole file has no line.
std::string NoteLine(const CLasNote& note);
// {"line": 12, "kind": "LASNOTE_SHORT_ROW", "text": "..."}
std::string NoteJson(const CLasNote& note);

// A few words for a kind of note: "LAS 1.2 Well value and description
// swapped" for LASNOTE_LAS12_WELL_VALUE; the kind's name for one it does
// not know.
std::string NoteKindTitle(ELASNOTEKIND kind);

// The notes of a read in one line, grouped by kind in the order each kind
// first comes: "9 notes: 8 x LAS 1.2 Well value and description swapped
// (lines 11-18); 1 x section passed over (line 40); quarl-check FILE lists
// them". Runs of lines are ranges, at most three a kind, then "...". The
// counts of notes past the reader's cap are added to their kind. Empty for
// no notes.
std::string NotesSummary(const std::vector<CLasNote>& notes, const std::string& path);

// Prints NotesSummary to stderr as "<program>: <path>: <summary>".
void PrintNotesSummary(const char* program, const std::string& path,
                       const std::vector<CLasNote>& notes);

// Whether a note tells of something a read did not keep as the file has
// it: values dropped or read as 0, text cut, a section passed over, or the
// rest of the file after the read stopped.
bool NoteLosesData(const CLasNote& note);

}  // namespace quarl::apps

#endif
