#include "writer/number_format.h"

#include <cstdint>
#include <cstring>

namespace quarl::detail {

namespace {

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
constexpr uint64_t kDigits15Low = 100000000000000ull;   // 10^14
constexpr uint64_t kDigits15High = 1000000000000000ull; // 10^15

// An unsigned 128-bit number as two halves.
struct Wide {
    uint64_t high;
    uint64_t low;
};

Wide Multiply(uint64_t a, uint64_t b)
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
bool Bit(const Wide& w, int i)
{
    return ((i < 64 ? w.low >> i : w.high >> (i - 64)) & 1u) != 0;
}

// Whether any of the `count` lowest bits (0 to 127) of `w` is set.
bool AnyBelow(const Wide& w, int count)
{
    if (count == 0) return false;
    if (count < 64) return (w.low & ((1ull << count) - 1)) != 0;
    if (count == 64) return w.low != 0;
    return w.low != 0 || (w.high & ((1ull << (count - 64)) - 1)) != 0;
}

// `w` shifted right by `shift` (1 to 127), for results that fit 64 bits.
uint64_t ShiftRight(const Wide& w, int shift)
{
    if (shift >= 64) return w.high >> (shift - 64);
    return (w.low >> shift) | (w.high << (64 - shift));
}

// significand * 2^exponent * 10^scale rounded to an integer, halves to even:
// the rounding that printf applies to the exact binary value. Exact as long
// as the product stays below 2^128 and the shift is positive.
uint64_t ScaleAndRound(uint64_t significand, int exponent, int scale)
{
    const Wide product = Multiply(significand, kPowersOfFive[scale]);
    const int shift = -(exponent + scale);
    uint64_t n = ShiftRight(product, shift);
    if (Bit(product, shift - 1) && (AnyBelow(product, shift - 1) || (n & 1u) != 0)) ++n;
    return n;
}

// The eight decimal digits of x (below 10^8) as ASCII bytes in one word,
// the first digit in the lowest byte. Each step splits every lane of the
// word in two at once: 4 + 4 digits, then 2 + 2, then 1 + 1.
uint64_t EightDigits(uint32_t x)
{
    const uint64_t fours = (x / 10000) | (static_cast<uint64_t>(x % 10000) << 32);
    const uint64_t hundreds = ((fours * 10486) >> 20) & 0x0000007f0000007full;
    const uint64_t twos = hundreds | ((fours - hundreds * 100) << 16);
    const uint64_t tens = ((twos * 103) >> 10) & 0x000f000f000f000full;
    const uint64_t ones = tens | ((twos - tens * 10) << 8);
    return ones + 0x3030303030303030ull;
}

bool IsLittleEndian()
{
    const uint16_t one = 1;
    unsigned char first;
    std::memcpy(&first, &one, 1);
    return first == 1;
}

// Stores the eight bytes of `word` at out, the lowest byte first.
void Store8(char* out, uint64_t word)
{
    if (IsLittleEndian()) {
        std::memcpy(out, &word, sizeof word);
        return;
    }
    for (int i = 0; i < 8; ++i) out[i] = static_cast<char>(word >> (8 * i));
}

// The 15 digits of n (10^14 <= n < 10^15) as 16 bytes, the last one NUL.
Wide FifteenDigits(uint64_t n)
{
    const uint64_t first = EightDigits(static_cast<uint32_t>(n / 100000000u));  // "0" + 7 digits
    const uint64_t last = EightDigits(static_cast<uint32_t>(n % 100000000u));
    return {last >> 8, (first >> 8) | (last << 56)};
}

// The digits of `w` from byte `skip` (1 to 15) on.
Wide DropBytes(const Wide& w, int skip)
{
    const int bits = 8 * skip;
    if (bits < 64) return {w.high >> bits, (w.low >> bits) | (w.high << (64 - bits))};
    return {0, w.high >> (bits - 64)};
}

// How many of the digits of n end it in zeros.
int TrailingZeros(uint64_t n)
{
    int zeros = 0;
    if (n % 100000000u == 0) { n /= 100000000u; zeros += 8; }
    if (n % 10000u == 0) { n /= 10000u; zeros += 4; }
    if (n % 100u == 0) { n /= 100u; zeros += 2; }
    if (n % 10u == 0) zeros += 1;
    return zeros;
}

}  // namespace

// "%.15g" for the values a log mostly holds: zero, and numbers whose decimal
// exponent after rounding lies between -4 and 14, which printf writes in
// fixed notation. The 15 significant digits come from exact integer
// arithmetic on the binary value, rounded half to even as printf rounds.
// Null for every other value (exponent notation, subnormals, infinities,
// NaN), which std::to_chars then formats.
char* FormatGeneral15Fixed(char* out, double value)
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
    // this or one more.
    int decimal = ((biased - 1023) * 78913) >> 18;
    if (decimal < -6 || decimal > 14) return nullptr;
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
    const Wide digits = FifteenDigits(n);
    const int count = 15 - TrailingZeros(n);
    if (negative) *out++ = '-';
    if (decimal < 0) {
        Store8(out, 0x3030303030302e30ull);  // "0.000000"
        out += 1 - decimal;
        Store8(out, digits.low);
        Store8(out + 8, digits.high);
        return out + count;
    }
    const int whole = decimal + 1;
    Store8(out, digits.low);
    Store8(out + 8, digits.high);
    if (count <= whole) return out + whole;
    out += whole;
    *out++ = '.';
    const Wide fraction = DropBytes(digits, whole);
    Store8(out, fraction.low);
    Store8(out + 8, fraction.high);
    return out + (count - whole);
}

char* FormatGeneral15(char* out, double value)
{
    if (char* end = FormatGeneral15Fixed(out, value)) return end;
    return FormatGeneral15Slow(out, value);
}

char* FormatGeneral15Slow(char* out, double value)
{
    return std::to_chars(out, out + kGeneralNumberMax, value, std::chars_format::general, 15).ptr;
}

std::string General15(double value)
{
    char buffer[kGeneralNumberMax];
    return std::string(buffer, FormatGeneral15(buffer, value));
}

std::string Fixed8(double value)
{
    char buffer[kFixedNumberMax];
    const std::to_chars_result r =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 8);
    return std::string(buffer, r.ptr);
}

}  // namespace quarl::detail
