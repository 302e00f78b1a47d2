// Text to number, exactly as the C library's atof does in the "C" locale:
// the longest number at the start of the text counts, and text without one
// gives 0.0. It never throws, never allocates for ordinary tokens and never
// looks at the host's locale.
#ifndef QUARL_FOUNDATION_NUMBER_PARSE_H
#define QUARL_FOUNDATION_NUMBER_PARSE_H

#include <charconv>
#include <cstddef>

namespace quarl {

// The general case: white space, '+', hexadecimal, infinity and NaN forms,
// and numbers out of range, through strtod in the "C" locale.
double ParseNumberSlow(const char* begin, const char* end);

// atof of the bytes [begin, end). Decimal numbers take std::from_chars, which
// gives the correctly rounded result that strtod gives; everything else goes
// to the general case.
inline double ParseNumber(const char* begin, const char* end)
{
    const char* p = begin;
    if (p < end && *p == '-') ++p;
    if (p < end && ((*p >= '0' && *p <= '9') || *p == '.')) {
        double value = 0.0;
        const std::from_chars_result r = std::from_chars(begin, end, value);
        if (r.ec == std::errc() && (r.ptr == end || (*r.ptr != 'x' && *r.ptr != 'X')))
            return value;
    }
    return ParseNumberSlow(begin, end);
}

// atof of a NUL-terminated text.
double ParseNumber(const char* text);

}  // namespace quarl

#endif
