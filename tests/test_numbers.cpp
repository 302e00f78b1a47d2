// Number texts in and out: ParseNumber gives exactly what strtod gives in the
// "C" locale, bounded by the end of the text; the writer's texts are the
// bytes of printf's "%.15g" and "%.8f"; the fast paths agree with the slow
// ones wherever they answer; the host's locale changes nothing.
#include <gtest/gtest.h>
#include <locale.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "foundation/number_parse.h"
#if __has_include(<fast_float/fast_float.h>)
#include <fast_float/fast_float.h>
#endif
#include "writer/number_format.h"

namespace quarl {
namespace {

const locale_t kC = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));

std::string Printf(const char* format, double value)
{
    char buffer[512];
    return std::string(buffer, static_cast<size_t>(std::snprintf(buffer, sizeof buffer, format, value)));
}

std::string Bits(double v)
{
    return Printf("%a", v);
}

// The text alone, and with bytes behind its end that must not be looked at.
void ExpectStrtod(const std::string& text)
{
    const std::string want = Bits(strtod_l(text.c_str(), nullptr, kC));
    for (const char* behind : {"", "7", "e5", ".5", "x1", "p3", " 9"}) {
        const std::string longer = text + behind;
        ASSERT_EQ(Bits(ParseNumber(longer.data(), longer.data() + text.size())), want)
            << '"' << text << "\" " << behind;
    }
    ASSERT_EQ(Bits(ParseNumber(text.c_str())), want) << text;
}

const std::vector<std::string> kFixed = {
    "0", "-0", "+0", "007", "123456789012345678901234567890", "-9223372036854775809", "+.5", "-.5", "5.", "1.e3",
    "1.5E+3", "\t\n\v\f\r -3.25", "  ", "0x10", "-0x1p3", "0x1.8p1", "0x", "0xg", "00x1", "0x.8", "inf", "+Infinity",
    "infin", "-nan", "nan(123)", "nanx", "in", "1e", "1e+", ".", "-", "-.", "+-1", "e5", "", ".e5", "1e400", "1e-400",
    "1.7976931348623159e308", "2.2250738585072011e-308", "2.4703282292062328e-324", "2.4703282292062327e-324", "12abc",
    "3.14.15", "1,5", "1e5x", "9\xE9", "0.1000000000000000055511151231257827021181583404541015625",
    std::string(400, '9'), "0." + std::string(400, '0') + "1", std::string(200, '0') + "1.5",
    // The general case copies short tokens to the stack: both sides of its 128-byte bound.
    "+" + std::string(126, '1'), "+" + std::string(127, '2'), "+" + std::string(128, '3')};

TEST(NumberParse, EqualsStrtodOnFixedAndRandomInputs)
{
    for (const std::string& text : kFixed) ExpectStrtod(text);
    std::mt19937_64 random(0x51A7);
    for (int i = 0; i < 20000; ++i) {
        const uint64_t bits = random();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        if (i % 3 == 0) value = std::uniform_real_distribution<double>(-1e4, 1e4)(random);
        for (const char* format : {"%.17g", "%.6e", "%g", "%.3f", "%a"}) ExpectStrtod(Printf(format, value));
        ExpectStrtod(std::to_string(static_cast<long long>(random() >> (i % 64))));
    }
    // The one-pass reading of a data row's number: wherever it answers, value
    // and end are strtod's; the common forms are answered.
    size_t answered = 0, asked = 0;
    for (int i = 0; i < 200000; ++i, ++asked) {
        std::string t = random() % 4 == 0 ? "-" : "";
        for (int d = 1 + static_cast<int>(random() % 21); d > 0; --d) t += static_cast<char>('0' + random() % 10);
        const size_t point = random() % (t.size() + 2);
        if (point <= t.size() && (point > 0 || t[0] != '-')) t.insert(point, ".");
        if (random() % 5 == 0) t += "e" + std::to_string(static_cast<int>(random() % 61) - 30);
        const char* tails[] = {"", " ", ",", "\t", "x", "e", "E+", ".5"};
        t = i % 2 ? t + tails[random() % 8] : Printf("%.3f", std::uniform_real_distribution<double>(-1e5, 1e5)(random));
        double value = -123.0;
        const char* end = ParsePlainDecimal(t.c_str(), &value);
        char* want = nullptr;
        const double expected = strtod_l(t.c_str(), &want, kC);
        ASSERT_EQ(end ? Bits(value) + std::to_string(end - t.c_str()) : Bits(value),
                  end ? Bits(expected) + std::to_string(want - t.c_str()) : Bits(-123.0))
            << t;
        answered += end != nullptr;
    }
    EXPECT_GT(answered, asked / 2);
}

std::vector<double> Samples()
{
    using Limits = std::numeric_limits<double>;
    std::vector<double> values = {0.0, -0.0, Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
                                  Limits::denorm_min(), Limits::min(), Limits::max(), 1e14, 1e15, 999999999999999.5,
                                  0.0001, 0.00001, 0.00099999999999999999, 99999999999999.99,
                                  // 15 nines: just below the next power of ten, in fixed and exponent form
                                  0.999999999999999, 9.99999999999999e-05, 999999999999999.0};
    std::mt19937_64 random(20240611);
    for (int i = 0; i < 50000; ++i) {
        uint64_t bits = random();
        for (int k = 0; k < 4; ++k, bits = random()) {
            double value;
            std::memcpy(&value, &bits, sizeof value);
            if (!std::isnan(value)) values.push_back(value);
        }
        values.push_back(static_cast<double>(static_cast<int64_t>(random() >> (random() % 64))));
        const double mantissa = static_cast<double>(random() % static_cast<uint64_t>(std::pow(10, 1 + random() % 15)));
        const int exponent = static_cast<int>(random() % 40) - 20;
        values.push_back(mantissa * std::pow(10.0, exponent));
        values.push_back((mantissa + 0.5) * std::pow(10.0, exponent - 15));
        values.push_back(1000.0 + 0.1 * i);
        values.push_back(std::ldexp(static_cast<double>(random() % 1000000), -static_cast<int>(random() % 40)));
        values.push_back(static_cast<double>(100000000000000ull + random() % 900000000000000ull) + 0.5);  // ties
    }
    return values;
}

TEST(NumberFormat, General15AndFixed8MatchPrintfAndTheFastPathTheSlowOne)
{
    char buffer[detail::kGeneralNumberMax], slow[detail::kGeneralNumberMax];
    size_t mismatches = 0, answered = 0;
    const std::vector<double> samples = Samples();
    for (double value : samples) {
        const std::string general(buffer, detail::FormatGeneral15(buffer, value));
        if ((general != Printf("%.15g", value) || detail::Fixed8(value) != Printf("%.8f", value)) && ++mismatches < 10)
            ADD_FAILURE() << general << " / " << detail::Fixed8(value) << " vs " << Printf("%.15g", value);
        if (char* end = detail::FormatGeneral15Fixed(buffer, value)) {
            ++answered;
            ASSERT_EQ(std::string(buffer, end), std::string(slow, detail::FormatGeneral15Slow(slow, value)));
            char* portable = detail::FormatGeneral15FixedPortable(slow, value);
            ASSERT_TRUE(portable);
            ASSERT_EQ(std::string(buffer, end), std::string(slow, portable));
        } else {
            ASSERT_FALSE(detail::FormatGeneral15FixedPortable(slow, value));
        }
    }
    EXPECT_EQ(mismatches, 0u);
    EXPECT_GT(answered, samples.size() / 3);
}

// The routes of a standard library without floating-point std::to_chars
// (the WebAssembly build) give the bytes std::to_chars gives: the shortest
// text that reads back, "%.*g" and "%.8f". Powers of two are where the
// shortest text may lie on the far side of the nearest one.
TEST(NumberFormat, PortableRoutesGiveTheBytesOfToChars)
{
    // Every 32nd sample: the routes run printf and strtod many times a value.
    std::vector<double> values;
    const std::vector<double> samples = Samples();
    for (size_t i = 0; i < samples.size(); i += 32) values.push_back(samples[i]);
    for (int e = -1074; e <= 1023; ++e) values.push_back(std::ldexp(1.0, e));
    for (double v :
         {0.0, -0.0, 5e-324, 1.7976931348623157e308, 1e21, 1e22, 1e23, 123456789012345680000.0, 0.0001, 0.001, 100.0,
          -2.5e-7, std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(), std::nan("")})
        values.push_back(v);
    char want[detail::kFixedNumberMax], got[detail::kFixedNumberMax];
    size_t mismatches = 0;
    auto expect = [&](const char* what, double value, char* wantEnd, char* gotEnd) {
        if (std::string(want, wantEnd) != std::string(got, gotEnd) && ++mismatches < 10)
            ADD_FAILURE() << what << " of " << Bits(value) << ": " << std::string(got, gotEnd) << " instead of "
                          << std::string(want, wantEnd);
    };
    for (double value : values) {
        expect("shortest", value, std::to_chars(want, want + sizeof want, value).ptr,
               detail::FormatShortestPortable(got, value));
        for (int digits : {1, 6, 10, 15, 17})
            expect("general", value,
                   std::to_chars(want, want + sizeof want, value, std::chars_format::general, digits).ptr,
                   detail::FormatGeneralPortable(got, value, digits));
        expect("fixed", value, std::to_chars(want, want + sizeof want, value, std::chars_format::fixed, 8).ptr,
               detail::FormatFixed8Portable(got, value));
    }
    EXPECT_EQ(mismatches, 0u);
}

#if __has_include(<fast_float/fast_float.h>)
// fast_float, which reads the numbers where std::from_chars has no floating
// point, rounds every decimal text as strtod does.
TEST(NumberParse, FastFloatEqualsStrtod)
{
    size_t mismatches = 0;
    const std::vector<double> samples = Samples();
    for (size_t i = 0; i < samples.size(); i += 16) {
        const double value = samples[i];
        for (const std::string& text :
             {Printf("%.17g", value), Printf("%.15g", value), Printf("%.25e", value), Printf("%.3f", value)}) {
            double got = -1.0;
            const auto r = fast_float::from_chars(text.data(), text.data() + text.size(), got);
            const double want = strtod_l(text.c_str(), nullptr, kC);
            if (r.ec != std::errc() || Bits(got) != Bits(want))
                if (++mismatches < 10) ADD_FAILURE() << text << ": " << Bits(got) << " vs " << Bits(want);
        }
    }
    EXPECT_EQ(mismatches, 0u);
}
#endif

TEST(Numbers, HostDecimalCommaChangesNothing)
{
    const std::string saved = std::setlocale(LC_ALL, nullptr);
    bool any = false;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "ru_RU.UTF-8"}) {
        if (!std::setlocale(LC_ALL, name) || std::strcmp(std::localeconv()->decimal_point, ",") != 0) continue;
        any = true;
        EXPECT_EQ(Bits(ParseNumber("1.5")) + Bits(ParseNumber("1,5")), Bits(1.5) + Bits(1.0)) << name;
        for (const std::string& text : kFixed) ExpectStrtod(text);
        EXPECT_EQ(detail::General15(0.125) + detail::Fixed8(2.5), "0.1252.50000000") << name;
    }
    std::setlocale(LC_ALL, saved.c_str());
    if (!any) GTEST_SKIP() << "no locale with a decimal comma installed";
}

}  // namespace
}  // namespace quarl
