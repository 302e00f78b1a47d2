#include "foundation/delimiter_words.h"

#include "foundation/platform.h"

namespace quarl {

namespace {

struct DelimiterName {
    char delimiter;
    const char* word;
};

constexpr DelimiterName kDelimiters[] = {{' ', "SPACE"}, {',', "COMMA"}, {'\t', "TAB"}};

}  // namespace

const char* DelimiterWord(char delimiter)
{
    for (const DelimiterName& entry : kDelimiters) {
        if (entry.delimiter == delimiter) return entry.word;
    }
    return nullptr;
}

bool DelimiterOfWord(const char* word, char* delimiter)
{
    for (const DelimiterName& entry : kDelimiters) {
        if (AsciiEqualNoCase(word, entry.word)) {
            *delimiter = entry.delimiter;
            return true;
        }
    }
    return false;
}

}  // namespace quarl
