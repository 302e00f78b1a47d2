// The writer's number texts must be the bytes of printf's "%.15g" and
// "%.8f" in the "C" locale.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "writer/number_format.h"

namespace quarl {
namespace {

std::string Printf(const char* format, double value)
{
    char buffer[512];
    return std::string(buffer, static_cast<size_t>(std::snprintf(buffer, sizeof buffer, format, value)));
}

// Random bit patterns (every magnitude, subnormals included), integers,
// short decimals, exact halves at the rounding digit, and special values.
std::vector<double> Samples()
{
    using Limits = std::numeric_limits<double>;
    std::vector<double> values = {0.0, -0.0, Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
                                  -Limits::quiet_NaN(), Limits::denorm_min(), Limits::min(), Limits::max(),
                                  -Limits::max(), 1e14, 1e15, 999999999999999.5, 0.0001, 0.00001, 0.1, 2.5,
                                  0.125, 0.00099999999999999999, 99999999999999.99, 0.000123456789012345};
    std::mt19937_64 random(20240611);
    for (int i = 0; i < 200000; ++i) {
        const uint64_t bits = random();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isnan(value)) values.push_back(value);
    }
    for (int i = 0; i < 50000; ++i) {
        values.push_back(static_cast<double>(static_cast<int64_t>(random() >> (random() % 64))));
        const int digits = 1 + static_cast<int>(random() % 15);
        const double mantissa = static_cast<double>(random() % static_cast<uint64_t>(std::pow(10, digits)));
        const int exponent = static_cast<int>(random() % 40) - 20;
        values.push_back(mantissa * std::pow(10.0, exponent));
        values.push_back((mantissa + 0.5) * std::pow(10.0, exponent - 15));
        values.push_back(1000.0 + 0.1 * i);
        values.push_back(std::nextafter(mantissa * std::pow(10.0, exponent), 1e300));
        values.push_back(std::ldexp(static_cast<double>(random() % 1000000), -static_cast<int>(random() % 40)));
        // Exact ties at the 15th digit, which round to the even neighbour.
        values.push_back(static_cast<double>(100000000000000ull + random() % 900000000000000ull) + 0.5);
    }
    return values;
}

TEST(NumberFormat, General15AndFixed8MatchPrintf)
{
    char buffer[detail::kGeneralNumberMax];
    size_t mismatches = 0;
    for (double value : Samples()) {
        const std::string general(buffer, detail::FormatGeneral15(buffer, value));
        if (general != Printf("%.15g", value) && ++mismatches < 10)
            ADD_FAILURE() << general << " vs " << Printf("%.15g", value);
        if (detail::Fixed8(value) != Printf("%.8f", value) && ++mismatches < 10)
            ADD_FAILURE() << detail::Fixed8(value) << " vs " << Printf("%.8f", value);
    }
    EXPECT_EQ(mismatches, 0u);
    EXPECT_EQ(detail::General15(1000.0), "1000");
}

// The integer path answers for the values a log holds, and wherever it
// answers it agrees with the general one.
TEST(NumberFormat, FixedNotationPathEqualsTheGeneralOne)
{
    char fast[detail::kGeneralNumberMax];
    char slow[detail::kGeneralNumberMax];
    size_t answered = 0;
    const std::vector<double> samples = Samples();
    for (double value : samples) {
        char* end = detail::FormatGeneral15Fixed(fast, value);
        if (!end) continue;
        ++answered;
        ASSERT_EQ(std::string(fast, end), std::string(slow, detail::FormatGeneral15Slow(slow, value)));
    }
    EXPECT_GT(answered, samples.size() / 3);
    EXPECT_NE(detail::FormatGeneral15Fixed(fast, 1234.5678), nullptr);
    EXPECT_NE(detail::FormatGeneral15Fixed(fast, -0.000123), nullptr);
    EXPECT_EQ(detail::FormatGeneral15Fixed(fast, 1e15), nullptr);
}

}  // namespace
}  // namespace quarl
