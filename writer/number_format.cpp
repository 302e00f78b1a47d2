#include "writer/number_format.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#if defined(__SSE2__) && defined(__x86_64__)
#include <emmintrin.h>
#endif

// The formatter's helpers are small and run once per cell; an optimising
// compiler is told to inline them even where it would not on its own. An
// unoptimised build (debugging, coverage) keeps one copy of each.
#if (defined(__GNUC__) || defined(__clang__)) && defined(__OPTIMIZE__)
#define QUARL_ALWAYS_INLINE inline __attribute__((always_inline))
#else
#define QUARL_ALWAYS_INLINE inline
#endif

namespace quarl::detail {

namespace {

// 10^-5 to 10^15 as doubles: the one nearest to each power, exact from 10^0
// on.
constexpr double kPowersOfTen[] = {1e-5, 1e-4, 1e-3, 1e-2, 1e-1, 1e0,  1e1,  1e2,  1e3,  1e4, 1e5,
                                   1e6,  1e7,  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
constexpr int kPowersOfTenFirst = -5;

// 5^0 to 5^20: the scales applied run from 10^0 to 10^20.
constexpr uint64_t kPowersOfFive[] = {1ull,
                                      5ull,
                                      25ull,
                                      125ull,
                                      625ull,
                                      3125ull,
                                      15625ull,
                                      78125ull,
                                      390625ull,
                                      1953125ull,
                                      9765625ull,
                                      48828125ull,
                                      244140625ull,
                                      1220703125ull,
                                      6103515625ull,
                                      30517578125ull,
                                      152587890625ull,
                                      762939453125ull,
                                      3814697265625ull,
                                      19073486328125ull,
                                      95367431640625ull};
constexpr uint64_t kDigits15Low = 100000000000000ull;    // 10^14
constexpr uint64_t kDigits15High = 1000000000000000ull;  // 10^15

// An unsigned 128-bit number as two halves.
struct Wide {
    uint64_t high;
    uint64_t low;
};

QUARL_ALWAYS_INLINE Wide Multiply(uint64_t a, uint64_t b)
{
#if defined(__SIZEOF_INT128__)
    __extension__ typedef unsigned __int128 Product;
    const Product product = static_cast<Product>(a) * b;
    return {static_cast<uint64_t>(product >> 64), static_cast<uint64_t>(product)};
#else
    const uint64_t aLow = a & 0xffffffffu, aHigh = a >> 32;
    const uint64_t bLow = b & 0xffffffffu, bHigh = b >> 32;
    const uint64_t lowLow = aLow * bLow;
    const uint64_t lowHigh = aLow * bHigh;
    const uint64_t highLow = aHigh * bLow;
    const uint64_t middle = (lowLow >> 32) + (lowHigh & 0xffffffffu) + (highLow & 0xffffffffu);
    return {aHigh * bHigh + (lowHigh >> 32) + (highLow >> 32) + (middle >> 32),
            (middle << 32) | (lowLow & 0xffffffffu)};
#endif
}

// Bit `i` (0 to 127) of `w`.
QUARL_ALWAYS_INLINE bool Bit(const Wide& w, int i)
{
    return ((i < 64 ? w.low >> i : w.high >> (i - 64)) & 1u) != 0;
}

// Whether any of the `count` lowest bits (0 to 127) of `w` is set.
QUARL_ALWAYS_INLINE bool AnyBelow(const Wide& w, int count)
{
    if (count == 0) return false;
    if (count < 64) return (w.low & ((1ull << count) - 1)) != 0;
    if (count == 64) return w.low != 0;
    return w.low != 0 || (w.high & ((1ull << (count - 64)) - 1)) != 0;
}

// `w` shifted right by `shift` (1 to 127), for results that fit 64 bits.
QUARL_ALWAYS_INLINE uint64_t ShiftRight(const Wide& w, int shift)
{
    if (shift >= 64) return w.high >> (shift - 64);
    return (w.low >> shift) | (w.high << (64 - shift));
}

// significand * 2^exponent * 10^scale rounded to an integer, halves to even:
// the rounding that printf applies to the exact binary value. Exact as long
// as the product stays below 2^128 and the shift is positive.
QUARL_ALWAYS_INLINE uint64_t ScaleAndRound(uint64_t significand, int exponent, int scale)
{
    const Wide product = Multiply(significand, kPowersOfFive[scale]);
    const int shift = -(exponent + scale);
    uint64_t n = ShiftRight(product, shift);
    if (Bit(product, shift - 1) && (AnyBelow(product, shift - 1) || (n & 1u) != 0)) ++n;
    return n;
}

QUARL_ALWAYS_INLINE bool IsLittleEndian()
{
    const uint16_t one = 1;
    unsigned char first;
    std::memcpy(&first, &one, 1);
    return first == 1;
}

// Stores the eight bytes of `word` at out, the lowest byte first.
QUARL_ALWAYS_INLINE void Store8(char* out, uint64_t word)
{
    if (IsLittleEndian()) {
        std::memcpy(out, &word, sizeof word);
        return;
    }
    for (int i = 0; i < 8; ++i) out[i] = static_cast<char>(word >> (8 * i));
}

// The number of zero bits above the highest set bit of x, which is not 0.
QUARL_ALWAYS_INLINE int LeadingZeroBits(uint64_t x)
{
#if defined(__GNUC__) || defined(__clang__)
    return __builtin_clzll(x);
#else
    int count = 0;
    for (uint64_t bit = 1ull << 63; (x & bit) == 0; bit >>= 1) ++count;
    return count;
#endif
}

// The 15 digits of n (10^14 <= n < 10^15) as 16 bytes, the last one NUL.
// n is cut into its first 7 and its last 8 digits, each made 8 digits
// ("0" in front of the first 7), and the leading "0" is dropped.
// The eight decimal digits of x (below 10^8) as ASCII bytes in one word,
// the first digit in the lowest byte. Each step splits every lane of the
// word in two at once: 4 + 4 digits, then 2 + 2, then 1 + 1.
QUARL_ALWAYS_INLINE uint64_t EightDigits(uint32_t x)
{
    const uint64_t fours = (x / 10000) | (static_cast<uint64_t>(x % 10000) << 32);
    const uint64_t hundreds = ((fours * 10486) >> 20) & 0x0000007f0000007full;
    const uint64_t twos = hundreds | ((fours - hundreds * 100) << 16);
    const uint64_t tens = ((twos * 103) >> 10) & 0x000f000f000f000full;
    const uint64_t ones = tens | ((twos - tens * 10) << 8);
    return ones + 0x3030303030303030ull;
}

QUARL_ALWAYS_INLINE Wide FifteenDigitsPortable(uint64_t n)
{
    const uint64_t first = EightDigits(static_cast<uint32_t>(n / 100000000u));
    const uint64_t last = EightDigits(static_cast<uint32_t>(n % 100000000u));
    return {last >> 8, (first >> 8) | (last << 56)};
}

#if defined(__SSE2__) && defined(__x86_64__)
// Both halves at once in one vector register, by three splits: 4 + 4
// digits in 32-bit lanes, 2 + 2 in 16-bit lanes, then 1 + 1 in bytes.
QUARL_ALWAYS_INLINE Wide FifteenDigitsSse2(uint64_t n)
{
    const auto first = static_cast<long long>(n / 100000000u);
    const auto last = static_cast<long long>(n % 100000000u);
    const __m128i eights = _mm_set_epi64x(last, first);
    const __m128i highFours =  // x / 10000 as (x * 0xd1b71759) >> 45
        _mm_srli_epi64(_mm_mul_epu32(eights, _mm_set1_epi32(static_cast<int>(0xd1b71759u))), 45);
    const __m128i lowFours = _mm_sub_epi32(eights, _mm_mul_epu32(highFours, _mm_set1_epi32(10000)));
    const __m128i fours = _mm_or_si128(highFours, _mm_slli_epi64(lowFours, 32));
    const __m128i highTwos = _mm_srli_epi16(_mm_mulhi_epu16(fours, _mm_set1_epi16(10486)), 4);
    const __m128i lowTwos = _mm_sub_epi16(fours, _mm_mullo_epi16(highTwos, _mm_set1_epi16(100)));
    const __m128i twos = _mm_or_si128(highTwos, _mm_slli_epi32(lowTwos, 16));
    const __m128i tens = _mm_mulhi_epu16(twos, _mm_set1_epi16(103 << 6));
    const __m128i ones = _mm_sub_epi16(twos, _mm_mullo_epi16(tens, _mm_set1_epi16(10)));
    const __m128i digits =
        _mm_add_epi8(_mm_or_si128(tens, _mm_slli_epi16(ones, 8)), _mm_set1_epi8('0'));
    const __m128i fifteen = _mm_srli_si128(digits, 1);
    return {static_cast<uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(fifteen, fifteen))),
            static_cast<uint64_t>(_mm_cvtsi128_si64(fifteen))};
}
#endif

// The way the processor makes fastest.
QUARL_ALWAYS_INLINE Wide FifteenDigits(uint64_t n)
{
#if defined(__SSE2__) && defined(__x86_64__)
    return FifteenDigitsSse2(n);
#else
    return FifteenDigitsPortable(n);
#endif
}

// The digits of `w` from byte `skip` (1 to 15) on.
QUARL_ALWAYS_INLINE Wide DropBytes(const Wide& w, int skip)
{
    const int bits = 8 * skip;
    if (bits < 64) return {w.high >> bits, (w.low >> bits) | (w.high << (64 - bits))};
    return {0, w.high >> (bits - 64)};
}

// The number of zero digits at the end of the 15 digits that FifteenDigits
// gave. The last digit stands in the highest byte in use, so the zeros at
// the end are the zero bytes at the top once the ASCII '0' is taken off
// each digit: counted with one instruction instead of a division per digit.
QUARL_ALWAYS_INLINE int TrailingZeros(const Wide& digits)
{
    const uint64_t high = digits.high ^ 0x0030303030303030ull;  // digits 9 to 15, then the NUL
    const uint64_t low = digits.low ^ 0x3030303030303030ull;    // digits 1 to 8
    // Both counts, then a choice without a branch: which one holds varies
    // from value to value.
    const int inHigh = LeadingZeroBits(high | 1u) / 8 - 1;
    const int inBoth = 7 + LeadingZeroBits(low) / 8;
    return high != 0 ? inHigh : inBoth;
}

// "%.15g" for the values a log mostly holds: zero, and numbers whose decimal
// exponent after rounding lies between -4 and 14, which printf writes in
// fixed notation. The 15 significant digits come from exact integer
// arithmetic on the binary value, rounded half to even as printf rounds.
// Null for every other value (exponent notation, subnormals, infinities,
// NaN), which std::to_chars then formats.
template <bool kPortableDigits>
QUARL_ALWAYS_INLINE Wide Digits(uint64_t n)
{
    if constexpr (kPortableDigits)
        return FifteenDigitsPortable(n);
    else
        return FifteenDigits(n);
}

template <bool kPortableDigits>
QUARL_ALWAYS_INLINE char* FixedNotation(char* out, double value)
{
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    const bool negative = (bits >> 63) != 0;
    const int biased = static_cast<int>((bits >> 52) & 0x7ff);
    const uint64_t mantissa = bits & ((1ull << 52) - 1);
    if (biased == 0 && mantissa == 0) {
        if (negative) *out++ = '-';
        *out++ = '0';
        return out;
    }
    if (biased == 0 || biased == 0x7ff) return nullptr;
    const uint64_t significand = mantissa | (1ull << 52);
    const int exponent = biased - 1075;  // value = significand * 2^exponent
    // floor(log10(2^e)) for the leading bit; the true decimal exponent is
    // this or one more, and a comparison with the next power of ten mostly
    // settles which. Where the nearest double to a negative power of ten
    // misleads it by a hair, the checks on n below still find the digits.
    int decimal = ((biased - 1023) * 78913) >> 18;
    if (decimal < -6 || decimal > 14) return nullptr;
    const double magnitude = negative ? -value : value;
    decimal += magnitude >= kPowersOfTen[decimal + 1 - kPowersOfTenFirst] ? 1 : 0;
    if (decimal > 14) return nullptr;
    int scale = 14 - decimal;
    uint64_t n = ScaleAndRound(significand, exponent, scale);
    if (n >= kDigits15High) {
        if (scale == 0) return nullptr;
        ++decimal;
        --scale;
        n = ScaleAndRound(significand, exponent, scale);
    }
    if (n >= kDigits15High) {  // rounded up to the next power of ten
        n = kDigits15Low;
        ++decimal;
    }
    if (n < kDigits15Low || decimal < -4 || decimal > 14) return nullptr;

    // The digits are stored 16 bytes at a time; the bytes behind the
    // number are scratch within the room the caller gives.
    const Wide digits = Digits<kPortableDigits>(n);
    const int count = 15 - TrailingZeros(digits);
    *out = '-';
    out += negative ? 1 : 0;
    if (decimal < 0) {
        Store8(out, 0x3030303030302e30ull);  // "0.000000"
        out += 1 - decimal;
        Store8(out, digits.low);
        Store8(out + 8, digits.high);
        return out + count;
    }
    // All digits, then the point and the digits behind it over the ones
    // that went too far; an integer simply ends in front of the point.
    const int whole = decimal + 1;
    Store8(out, digits.low);
    Store8(out + 8, digits.high);
    out[whole] = '.';
    const Wide fraction = DropBytes(digits, whole);
    Store8(out + whole + 1, fraction.low);
    Store8(out + whole + 9, fraction.high);
    return count <= whole ? out + whole : out + count + 1;
}

constexpr size_t kPrefetchRows = 64;

QUARL_ALWAYS_INLINE void Prefetch(const double* value)
{
#if defined(__GNUC__) || defined(__clang__)
    __builtin_prefetch(value);
#else
    (void)value;
#endif
}

}  // namespace

char* FormatGeneral15Fixed(char* out, double value)
{
    return FixedNotation<false>(out, value);
}

char* FormatGeneral15FixedPortable(char* out, double value)
{
    return FixedNotation<true>(out, value);
}

char* FormatGeneral15(char* out, double value)
{
    if (char* end = FixedNotation<false>(out, value)) return end;
    return FormatGeneral15Slow(out, value);
}

char* FormatGeneral15Row(char* out, const double* const* columns, size_t count, size_t rows,
                         size_t row, char delimiter)
{
    // A row takes one value from each of many columns, more streams than
    // the processor follows on its own: each cell asks for its column's
    // value some rows further on, so that it is in the cache when needed.
    const size_t ahead = rows - row > kPrefetchRows ? row + kPrefetchRows : row;
    *out++ = ' ';
    for (size_t c = 0; c < count; ++c) {
        const double value = columns[c][row];
        Prefetch(columns[c] + ahead);
        char* end = FixedNotation<false>(out, value);
        out = end ? end : FormatGeneral15Slow(out, value);
        *out++ = delimiter;
    }
    out[-1] = '\n';
    return out;
}

char* FormatGeneral15Slow(char* out, double value)
{
    return FormatGeneral(out, value, 15);
}

namespace {

// printf into `out` (room for `size` bytes). The C library's conversions
// are exact; they follow the host's locale, but the "C" locale is the only
// one a WebAssembly module has, and natively these routes serve the tests.
template <typename... Args>
char* Print(char* out, size_t size, const char* format, Args... args)
{
    const int n = std::snprintf(out, size, format, args...);
    return out + (n < 0 ? 0 : std::min(static_cast<size_t>(n), size - 1));
}

// A decimal number as its significant digits and the exponent of the first
// one: 1.25e+2 is "125" and 2.
struct Decimal {
    char digits[24] = {};
    int count = 0;
    int exponent = 0;
};

// The digits of `text` as "%.*e" writes it: "-1.25e+02".
Decimal FromScientific(const char* text)
{
    Decimal d;
    const char* p = text + (*text == '-' ? 1 : 0);
    for (; *p != 'e'; ++p)
        if (*p != '.') d.digits[d.count++] = *p;
    d.exponent = std::atoi(p + 1);
    return d;
}

// `d` with one unit added to (up) or taken from its last digit.
Decimal Neighbour(Decimal d, bool up)
{
    int i = d.count - 1;
    for (; i >= 0 && d.digits[i] == (up ? '9' : '0'); --i) d.digits[i] = up ? '0' : '9';
    if (i >= 0) {
        d.digits[i] = static_cast<char>(d.digits[i] + (up ? 1 : -1));
    } else {  // 99 became 100
        std::memmove(d.digits + 1, d.digits, static_cast<size_t>(d.count));
        d.digits[0] = '1';
        ++d.count;
        ++d.exponent;
    }
    if (d.digits[0] == '0' && d.count > 1) {  // 10 became 09
        std::memmove(d.digits, d.digits + 1, static_cast<size_t>(d.count));
        --d.count;
        --d.exponent;
    }
    return d;
}

double ValueOf(const Decimal& d, bool negative)
{
    char text[48];
    Print(text, sizeof text, "%s0.%.*se%d", negative ? "-" : "", d.count, d.digits, d.exponent + 1);
    return std::strtod(text, nullptr);
}

// The fewest digits that read back as `value`, the nearest such number
// when there are two (near a power of two the neighbour on the far side may
// be the one inside the value's rounding interval).
Decimal ShortestDigits(double value)
{
    const bool negative = std::signbit(value);
    char text[48];
    Decimal d;
    for (int digits = 1; digits <= 17; ++digits) {
        Print(text, sizeof text, "%.*e", digits - 1, value);
        d = FromScientific(text);
        const double near = ValueOf(d, negative);
        if (near == value) break;
        const Decimal other = Neighbour(d, (std::fabs(near) < std::fabs(value)));
        if (ValueOf(other, negative) == value) return other;
    }
    while (d.count > 1 && d.digits[d.count - 1] == '0') --d.count;
    return d;
}

// `d` as std::to_chars writes it: fixed notation unless the scientific one
// is shorter. A whole number in fixed notation has all its exact digits,
// not the shortest ones padded with zeros.
char* WriteShortest(char* out, const Decimal& d, double magnitude)
{
    char fixed[kGeneralNumberMax], scientific[kGeneralNumberMax];
    char* f = fixed;
    if (d.exponent < 0) {
        f = Print(f, sizeof fixed, "0.%0*d%.*s", -d.exponent - 1, 0, d.count, d.digits);
        if (d.exponent == -1) f = Print(fixed, sizeof fixed, "0.%.*s", d.count, d.digits);
    } else if (d.count <= d.exponent + 1) {
        f = Print(f, sizeof fixed, "%.*s%0*d", d.count, d.digits, d.exponent + 1 - d.count, 0);
        if (d.count == d.exponent + 1) f = Print(fixed, sizeof fixed, "%.*s", d.count, d.digits);
    } else {
        f = Print(f, sizeof fixed, "%.*s.%.*s", d.exponent + 1, d.digits, d.count - d.exponent - 1,
                  d.digits + d.exponent + 1);
    }
    char* s = d.count == 1
                  ? Print(scientific, sizeof scientific, "%ce%+03d", d.digits[0], d.exponent)
                  : Print(scientific, sizeof scientific, "%c.%.*se%+03d", d.digits[0], d.count - 1,
                          d.digits + 1, d.exponent);
    const bool useFixed = f - fixed <= s - scientific;
    if (useFixed && d.count <= d.exponent + 1)
        return Print(out, kGeneralNumberMax, "%.0f", magnitude);
    const char* from = useFixed ? fixed : scientific;
    const size_t length = static_cast<size_t>(useFixed ? f - fixed : s - scientific);
    std::memcpy(out, from, length);
    return out + length;
}

}  // namespace

char* FormatShortestPortable(char* out, double value)
{
    if (!std::isfinite(value) || value == 0.0) return Print(out, kGeneralNumberMax, "%g", value);
    if (std::signbit(value)) *out++ = '-';
    return WriteShortest(out, ShortestDigits(value), std::fabs(value));
}

char* FormatGeneralPortable(char* out, double value, int digits)
{
    return Print(out, kGeneralNumberMax, "%.*g", digits, value);
}

char* FormatFixed8Portable(char* out, double value)
{
    return Print(out, kFixedNumberMax, "%.8f", value);
}

#if defined(__cpp_lib_to_chars)
char* FormatShortest(char* out, double value)
{
    return std::to_chars(out, out + kGeneralNumberMax, value).ptr;
}

char* FormatGeneral(char* out, double value, int digits)
{
    return std::to_chars(out, out + kGeneralNumberMax, value, std::chars_format::general, digits)
        .ptr;
}

static char* FormatFixed8(char* out, double value)
{
    return std::to_chars(out, out + kFixedNumberMax, value, std::chars_format::fixed, 8).ptr;
}
#else
char* FormatShortest(char* out, double value)
{
    return FormatShortestPortable(out, value);
}

char* FormatGeneral(char* out, double value, int digits)
{
    return FormatGeneralPortable(out, value, digits);
}

static char* FormatFixed8(char* out, double value)
{
    return FormatFixed8Portable(out, value);
}
#endif

std::string General15(double value)
{
    char buffer[kGeneralNumberMax];
    return std::string(buffer, FormatGeneral15(buffer, value));
}

std::string Fixed8(double value)
{
    char buffer[kFixedNumberMax];
    return std::string(buffer, FormatFixed8(buffer, value));
}

}  // namespace quarl::detail
