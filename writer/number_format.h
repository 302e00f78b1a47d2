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
// three-digit exponent come to 23 bytes.
constexpr size_t kGeneralNumberMax = 32;
// Room for any double under "%.8f": 309 integer digits, sign, point and
// eight decimals.
constexpr size_t kFixedNumberMax = 330;

// Writes "%.15g" of `value` at `out`, which has room for kGeneralNumberMax
// bytes, and returns the end. No terminating NUL.
char* FormatGeneral15(char* out, double value);

// "%.15g" of `value` as a string.
std::string General15(double value);
// "%.8f" of `value` as a string.
std::string Fixed8(double value);

}  // namespace quarl::detail

#endif
