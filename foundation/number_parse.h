// Text to number, exactly as the C library's atof does in the "C" locale:
// the longest number at the start of the text counts, and text without one
// gives 0.0. It never throws, never allocates for ordinary tokens and never
// looks at the host's locale.
#ifndef QUARL_FOUNDATION_NUMBER_PARSE_H
#define QUARL_FOUNDATION_NUMBER_PARSE_H

#include <cfloat>
#include <charconv>
#include <cstddef>
#include <cstdint>

// A standard library without the floating-point std::from_chars (the libc++
// of the WebAssembly build) reads decimal numbers with fast_float, which
// rounds them as exactly; QUARL_FAST_FLOAT chooses it everywhere.
#if !defined(__cpp_lib_to_chars) || defined(QUARL_FAST_FLOAT)
#include <fast_float/fast_float.h>
#define QUARL_NUMBERS_BY_FAST_FLOAT 1
#endif

namespace quarl {

// The general case: white space, '+', hexadecimal, infinity and NaN forms,
// and numbers out of range, through strtod in the "C" locale.
double ParseNumberSlow(const char* begin, const char* end);

// A decimal number at the start of [begin, end), correctly rounded as strtod
// rounds it: where it ends, or null when none stands there or it is out of
// range.
inline const char* ParseDecimal(const char* begin, const char* end, double& value)
{
#if defined(QUARL_NUMBERS_BY_FAST_FLOAT)
    const fast_float::from_chars_result r = fast_float::from_chars(begin, end, value);
#else
    const std::from_chars_result r = std::from_chars(begin, end, value);
#endif
    return r.ec == std::errc() ? r.ptr : nullptr;
}

// atof of the bytes [begin, end). Decimal numbers take ParseDecimal;
// everything else goes to the general case.
inline double ParseNumber(const char* begin, const char* end)
{
    const char* p = begin;
    if (p < end && *p == '-') ++p;
    if (p < end && ((*p >= '0' && *p <= '9') || *p == '.')) {
        double value = 0.0;
        const char* stop = ParseDecimal(begin, end, value);
        if (stop && (stop == end || (*stop != 'x' && *stop != 'X'))) return value;
    }
    return ParseNumberSlow(begin, end);
}

// The number of a data row in its most common form, read in one pass: an
// optional '-', digits with at most one '.', at least one digit, an optional
// exponent, and no more than 19 digits in all. Returns where the number ends
// and its value in `value`, which is then exactly atof's; null when the
// text is of another form, or when the value needs more than one rounding
// (beyond 2^53 or 10^+-22), and then `value` is untouched. The text must be
// NUL-terminated or end in a byte that no number holds.
inline const char* ParsePlainDecimal(const char* p, double* value)
{
    static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                         1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
#if FLT_EVAL_METHOD != 0
    // Arithmetic in a wider type would round twice.
    (void)p;
    (void)value;
    return nullptr;
#else
    const bool negative = *p == '-';
    if (negative) ++p;
    uint64_t digits = 0;
    int count = 0;
    int decimals = 0;
    for (; static_cast<unsigned char>(*p - '0') < 10; ++p, ++count)
        digits = digits * 10 + static_cast<unsigned char>(*p - '0');
    if (*p == '.') {
        for (++p; static_cast<unsigned char>(*p - '0') < 10; ++p, ++count, ++decimals)
            digits = digits * 10 + static_cast<unsigned char>(*p - '0');
    }
    if (count == 0 || count > 19) return nullptr;
    int exponent = 0;
    if (*p == 'e' || *p == 'E') {
        const char* q = p + 1;
        const bool down = *q == '-';
        if (*q == '-' || *q == '+') ++q;
        if (static_cast<unsigned char>(*q - '0') >= 10) return nullptr;
        for (; static_cast<unsigned char>(*q - '0') < 10; ++q) {
            if (exponent < 10000) exponent = exponent * 10 + (*q - '0');
        }
        if (down) exponent = -exponent;
        p = q;
    } else if (*p == 'x' || *p == 'X') {
        return nullptr;
    }
    exponent -= decimals;
    if (digits > (uint64_t(1) << 53) || exponent < -22 || exponent > 22) return nullptr;
    // Both operands are exact, so the one rounding of the product or the
    // quotient is the correctly rounded result that strtod gives.
    double result = static_cast<double>(digits);
    result = exponent < 0 ? result / kPowers[-exponent] : result * kPowers[exponent];
    *value = negative ? -result : result;
    return p;
#endif
}

// atof of a NUL-terminated text.
double ParseNumber(const char* text);

}  // namespace quarl

#endif
