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
// three-digit exponent come to 23 bytes; the formatter may use all 40 bytes
// as scratch.
constexpr size_t kGeneralNumberMax = 40;
// Room for any double under "%.8f": 309 integer digits, sign, point and
// eight decimals.
constexpr size_t kFixedNumberMax = 330;

// Writes "%.15g" of `value` at `out`, which has room for kGeneralNumberMax
// bytes, and returns the end. No terminating NUL.
char* FormatGeneral15(char* out, double value);

// One data row of numbers at `out`: a blank, then "%.15g" of
// columns[c][row] for each of the `count` columns, which hold `rows`
// values each, with `delimiter` behind all but the last, then a line feed.
// `out` has room for GeneralRowRoom(count) bytes; returns the end.
char* FormatGeneral15Row(char* out, const double* const* columns, size_t count, size_t rows,
                         size_t row, char delimiter);
constexpr size_t GeneralRowRoom(size_t count)
{
    return 1 + count * (kGeneralNumberMax + 1);
}

// The two ways FormatGeneral15 takes. The fast one handles zero and every
// value that "%.15g" writes in fixed notation (decimal exponent -4 to 14)
// with integer arithmetic, and returns null for the rest; the slow one is
// std::to_chars and handles everything.
char* FormatGeneral15Fixed(char* out, double value);
// FormatGeneral15Fixed with the digits always made in 64-bit words, the way
// taken where there is no SSE2; the tests hold it to the same bytes.
char* FormatGeneral15FixedPortable(char* out, double value);
char* FormatGeneral15Slow(char* out, double value);

// The same bytes as std::to_chars of `value` at `out`, which has room for
// kGeneralNumberMax bytes: the shortest text that reads back as `value`, or
// with `digits` (1 to 17) significant digits as "%.*g" has them. Where the
// standard library has no floating-point std::to_chars (the WebAssembly
// build) the Portable forms serve, built on the C library's exact printf
// and strtod; the tests hold them to the same bytes.
char* FormatShortest(char* out, double value);
char* FormatGeneral(char* out, double value, int digits);
char* FormatShortestPortable(char* out, double value);
char* FormatGeneralPortable(char* out, double value, int digits);
// "%.8f" of `value` at `out`, which has room for kFixedNumberMax bytes.
char* FormatFixed8Portable(char* out, double value);

// "%.15g" of `value` as a string.
std::string General15(double value);
// "%.8f" of `value` as a string.
std::string Fixed8(double value);

}  // namespace quarl::detail

#endif
