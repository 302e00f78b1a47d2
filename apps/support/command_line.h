// What the programs' command lines take: lists of names, bounded numbers and
// delimiter names.
#ifndef QUARL_APPS_COMMAND_LINE_H
#define QUARL_APPS_COMMAND_LINE_H

#include <string>
#include <vector>

namespace quarl::apps {

// The last branch of every program's option loop: a word that starts with
// "-" and that no option took is a usage error, said on stderr as
// "PROGRAM: unknown option WORD" (false); any other word is an operand and
// goes to the end of `operands` (true).
bool TakeOperand(const char* program, const std::string& word, std::vector<std::string>& operands);

// "RES, ILD" -> {"RES", "ILD"}; empty items are dropped.
std::vector<std::string> SplitList(const std::string& text);
bool ListContainsNoCase(const std::vector<std::string>& list, const std::string& name);

// The whole text as a number from `low` to `high`; false for anything else.
bool ParseNumberIn(const char* text, double low, double high, double* out);

// "space", "tab" or "comma" as the delimiter byte.
bool ParseDelimiterName(const std::string& name, char* delimiter);
// The delimiter byte in words: "space", "tab", "comma" or the byte quoted.
std::string DelimiterName(char delimiter);

}  // namespace quarl::apps

#endif
