#include "writer/number_format.h"

#include <cmath>
#include <cstdint>
#include <cstring>

namespace quarl::detail {

namespace {

constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,
                                   1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17};
constexpr uint64_t kIntegerPowersOfTen[] = {1ull,
                                            10ull,
                                            100ull,
                                            1000ull,
                                            10000ull,
                                            100000ull,
                                            1000000ull,
                                            10000000ull,
                                            100000000ull,
                                            1000000000ull,
                                            10000000000ull,
                                            100000000000ull,
                                            1000000000000ull,
                                            10000000000000ull,
                                            100000000000000ull,
                                            1000000000000000ull,
                                            10000000000000000ull,
                                            100000000000000000ull};
constexpr int kMaxDecimals = 17;

// The common case of a log value: a number between 0.001 and 1e14 that is
// the double nearest to a decimal of at most 15 significant digits, m / 10^d.
// That decimal is then the only one of 15 digits within half a unit of the
// double, so it is exactly what "%.15g" rounds to, and in this range "%.15g"
// writes it in fixed notation without trailing zeros. Finds m and d by
// trying d = 0, 1, 2, ...; the division tells whether m / 10^d reads back as
// the same double. Null when the value is not of this kind.
char* FormatShortDecimal(char* out, double value)
{
    const double magnitude = std::fabs(value);
    if (!(magnitude >= 1e-3 && magnitude < 1e14)) return nullptr;
    for (int d = 0; d <= kMaxDecimals; ++d) {
        const double scaled = std::nearbyint(magnitude * kPowersOfTen[d]);
        if (scaled >= 1e15) return nullptr;
        if (scaled / kPowersOfTen[d] != magnitude) continue;
        const uint64_t m = static_cast<uint64_t>(scaled);
        if (value < 0) *out++ = '-';
        out = std::to_chars(out, out + 20, m / kIntegerPowersOfTen[d]).ptr;
        uint64_t fraction = m % kIntegerPowersOfTen[d];
        if (fraction == 0) return out;
        int digits = d;
        while (fraction % 10 == 0) {
            fraction /= 10;
            --digits;
        }
        *out++ = '.';
        char* end = out + digits;
        for (char* p = end; p > out; fraction /= 10) *--p = static_cast<char>('0' + fraction % 10);
        return end;
    }
    return nullptr;
}

}  // namespace

char* FormatGeneral15(char* out, double value)
{
    if (char* end = FormatShortDecimal(out, value)) return end;
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
