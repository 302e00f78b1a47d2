// Numbers as the writer puts them in a file: the bytes that printf gives for
// "%.15g" and "%.8f" in the "C" locale, made without printf and without
// looking at the host's locale, so a file never gets a decimal comma.
#ifndef QUARL_WRITER_NUMBER_FORMAT_H
#define QUARL_WRITER_NUMBER_FORMAT_H

#include <charconv>
#include <cstddef>
#include <string>

namespace quarl::detail {

// Room for any double under "%.15g": sign, 15 digits, point and a
// three-digit exponent come to 23 bytes; the formatter may use all 32 bytes
// as scratch.
constexpr size_t kGeneralNumberMax = 32;
// Room for any double under "%.8f": 309 integer digits, sign, point and
// eight decimals.
constexpr size_t kFixedNumberMax = 330;

// Writes "%.15g" of `value` at `out`, which has room for kGeneralNumberMax
// bytes, and returns the end. No terminating NUL.
char* FormatGeneral15(char* out, double value);

// The two ways FormatGeneral15 takes. The fast one handles zero and every
// value that "%.15g" writes in fixed notation (decimal exponent -4 to 14)
// with integer arithmetic, and returns null for the rest; the slow one is
// std::to_chars and handles everything.
char* FormatGeneral15Fixed(char* out, double value);
char* FormatGeneral15Slow(char* out, double value);

// "%.15g" of `value` as a string.
std::string General15(double value);
// "%.8f" of `value` as a string.
std::string Fixed8(double value);

}  // namespace quarl::detail

#endif
