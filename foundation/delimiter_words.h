// The words that name the column delimiter of data rows on the DLM line of a
// LAS 3.0 Version section: SPACE, COMMA and TAB.
#ifndef QUARL_FOUNDATION_DELIMITER_WORDS_H
#define QUARL_FOUNDATION_DELIMITER_WORDS_H

namespace quarl {

// "SPACE", "COMMA" or "TAB" for ' ', ',' or '\t'; null for any other byte.
// These three are the delimiters the writer can write.
const char* DelimiterWord(char delimiter);

// The delimiter that `word` names, ignoring the case of ASCII letters.
// False, touching nothing, when `word` is not one of the three words.
bool DelimiterOfWord(const char* word, char* delimiter);

}  // namespace quarl

#endif
