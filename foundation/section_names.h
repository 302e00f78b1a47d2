// Section headers and names: how a "~" line is taken apart, the Version
// section's names, the names of the main data section, and the two families
// of names that mean the log curves. Shared by reader and writer.
#ifndef QUARL_FOUNDATION_SECTION_NAMES_H
#define QUARL_FOUNDATION_SECTION_NAMES_H

#include <string>

namespace quarl {

// "~Name extra | association": the name runs to the first space, tab or "|";
// the association is the word behind a "|" that directly follows the name.
// False, touching nothing, when `line` is null or empty or `name` is null.
bool ParseSectionHeader(const char* line, std::string* name, std::string* association);

// Takes a name (or a whole header line) apart into base, suffix and index:
// "Log_Data[2]" has the suffix "_Data" and the index "[2]"; its base is
// "Log" when a known suffix is stripped, otherwise "Log_Data". False when
// `text` is null or empty.
bool SplitSectionName(const char* text, bool stripKnownSuffix, std::string* base,
                      std::string* suffix, std::string* index);

// "ascii", "a", "log", "l" or "Log_Data", with any index.
bool IsLogDataName(const char* text);
// "curve", "c" or "Log_Definition", with any index.
bool IsLogDefinitionName(const char* text);

// "Version" or "V", ignoring the case of ASCII letters: the first section of
// every file, which says how the rest is read.
bool IsVersionSectionName(const char* name);

// The names of the main data section, in the order they are looked for:
// "ASCII", else "LOG", else "Log_Data". The first is the name a missing
// main data section is reported under. Hosts get them through
// quarl::MainDataName.
constexpr const char* kMainDataNames[] = {"ASCII", "LOG", "Log_Data"};
// Whether `name` is one of kMainDataNames as a whole, ignoring case.
bool IsMainDataName(const char* name);

// Whether a suffix is "_Data", "_Definition" or "_Parameter", ignoring case.
bool IsKnownSuffix(const std::string& suffix);

}  // namespace quarl

#endif
