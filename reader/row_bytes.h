// How the bytes of a data row behave: the blanks and the bytes that end a
// token, for the rows of one data section.
#ifndef QUARL_READER_ROW_BYTES_H
#define QUARL_READER_ROW_BYTES_H

#include <cstdint>

namespace quarl {
namespace detail {

// How the bytes of a data row behave, fixed once per section from the
// version and the delimiter: which bytes are blanks that are passed over in
// front of and behind a token, and which bytes end a token.
class RowBytes {
public:
    RowBytes(bool isLas3, char delimiter) : m_delimiter(delimiter)
    {
        const bool tabDelimits = delimiter == '\t';
        Mark(' ', kBlank);
        // Before version 3 a tab is a blank; when it is the delimiter it
        // delimits columns instead, so that tab-delimited files read.
        if (!isLas3 && !tabDelimits) Mark('\t', kBlank);
        Mark('\0', kEnd);
        Mark(delimiter, kEnd);
        if (!isLas3 && delimiter == ' ') Mark('\t', kEnd);
        // Converting a number while its token is cut must never take a byte
        // that ends a token; an odd delimiter such as '.' turns it off.
        for (const char* c = "0123456789.+-eE"; *c; ++c)
            if (Is(*c, kEnd)) m_plainNumbers = false;
    }

    const char* SkipBlanks(const char* p) const
    {
        while (Is(*p, kBlank)) ++p;
        return p;
    }
    const char* TokenEnd(const char* p) const
    {
        while (!Is(*p, kEnd)) ++p;
        return p;
    }
    bool EndsToken(char c) const { return Is(c, kEnd); }
    // The same bytes for rows read where they stand in the file: a carriage
    // return and a line feed end a token too.
    RowBytes EndingAtLineBreaks() const
    {
        RowBytes copy = *this;
        copy.Mark('\r', kEnd);
        copy.Mark('\n', kEnd);
        return copy;
    }
    char delimiter() const { return m_delimiter; }
    bool plainNumbers() const { return m_plainNumbers; }

private:
    static constexpr uint8_t kBlank = 1;
    static constexpr uint8_t kEnd = 2;

    void Mark(char c, uint8_t bit)
    {
        m_class[static_cast<unsigned char>(c)] =
            static_cast<uint8_t>(m_class[static_cast<unsigned char>(c)] | bit);
    }
    bool Is(char c, uint8_t bit) const
    {
        return (m_class[static_cast<unsigned char>(c)] & bit) != 0;
    }

    uint8_t m_class[256] = {};
    char m_delimiter;
    bool m_plainNumbers = true;
};

}  // namespace detail
}  // namespace quarl

#endif
