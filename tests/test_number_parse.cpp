// ParseNumber gives exactly what atof gives in the "C" locale, bounded by the
// end of the text, whatever locale the host has set.
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <locale.h>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/number_parse.h"

namespace quarl {
namespace {

uint64_t Bits(double v)
{
    uint64_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    return bits;
}

// The text alone, and the text with more bytes behind its end that must not
// be looked at, against strtod in the "C" locale.
void ExpectAtof(const std::string& text)
{
    static const locale_t c = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    const uint64_t want = Bits(strtod_l(text.c_str(), nullptr, c));
    ASSERT_EQ(Bits(ParseNumber(text.c_str())), want) << '"' << text << '"';
    for (const char* behind : {"", "7", "e5", ".5", "x1", "p3", " 9", "0000000001"}) {
        const std::string longer = text + behind;
        ASSERT_EQ(Bits(ParseNumber(longer.data(), longer.data() + text.size())), want)
            << '"' << text << "\" followed by " << behind;
    }
}

const std::vector<std::string>& FixedInputs()
{
    static const std::vector<std::string> inputs = {
        "0", "-0", "+0", "42", "007", "123456789012345678901234567890", "-9223372036854775809",
        "1.5", "-1.5", "+.5", "-.5", "5.", "1.e3", "1.5E+3", "1.5e-3", " 12", "\t\n\v\f\r -3.25", "  ",
        "0x10", "0X1A", "-0x1p3", "0x1.8p1", "0x", "0xg", "00x1", "0x.8",
        "inf", "-inf", "+Infinity", "infin", "nan", "-nan", "nan(123)", "nanx", "in", "n",
        "1e", "1e+", "1E", ".", "-", "+", "-.", "+-1", "--1", "e5", "", ".e5",
        "1e400", "-1e400", "1e-400", "1.7976931348623157e308", "1.7976931348623159e308",
        "2.2250738585072011e-308", "2.4703282292062328e-324", "2.4703282292062327e-324", "-1e-310",
        "12abc", "3.14.15", "1,5", "1 2", "1e5x", "0.1e-2q", "9\xE9",
        "0.1000000000000000055511151231257827021181583404541015625",
        std::string(400, '9'), "0." + std::string(400, '0') + "1", std::string(200, '0') + "1.5",
    };
    return inputs;
}

TEST(NumberParse, EqualsAtofOnFixedAndRandomInputs)
{
    for (const std::string& text : FixedInputs()) ExpectAtof(text);
    std::mt19937_64 random(0x51A7);
    char text[64];
    for (int i = 0; i < 20000; ++i) {
        double value;
        const uint64_t bits = random();
        std::memcpy(&value, &bits, sizeof value);
        if (i % 3 == 0) value = std::uniform_real_distribution<double>(-1e4, 1e4)(random);
        for (const char* format : {"%.17g", "%.6e", "%g", "%.3f", "%a"}) {
            std::snprintf(text, sizeof text, format, value);
            ExpectAtof(text);
        }
        std::snprintf(text, sizeof text, "%lld", static_cast<long long>(random() >> (i % 64)));
        ExpectAtof(text);
    }
}

// The one-pass reading of a data row's number: wherever it answers, the
// value and the end are strtod's; it declines forms it does not handle.
TEST(NumberParse, PlainDecimalEqualsStrtodWhereItAnswers)
{
    static const locale_t c = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    std::mt19937_64 random(0xDEC1);
    std::vector<std::string> texts = FixedInputs();
    char text[96];
    for (int i = 0; i < 200000; ++i) {
        const int digits = 1 + static_cast<int>(random() % 21);
        std::string t = random() % 4 == 0 ? "-" : "";
        for (int d = 0; d < digits; ++d) t += static_cast<char>('0' + random() % 10);
        const size_t point = random() % (t.size() + 2);
        if (point <= t.size() && (t.empty() || point > 0 || t[0] != '-')) t.insert(point, ".");
        if (random() % 5 == 0) t += "e" + std::to_string(static_cast<int>(random() % 61) - 30);
        const char* tails[] = {"", " ", ",", "\t", "x", "e", "E+", ".5", "abc"};
        t += tails[random() % 9];
        texts.push_back(t);
        std::snprintf(text, sizeof text, "%.*f", static_cast<int>(random() % 9),
                      std::uniform_real_distribution<double>(-1e5, 1e5)(random));
        texts.push_back(text);
    }
    size_t answered = 0;
    for (const std::string& t : texts) {
        double value = -123.0;
        const char* end = ParsePlainDecimal(t.c_str(), &value);
        if (!end) {
            ASSERT_EQ(value, -123.0) << t;
            continue;
        }
        ++answered;
        char* want = nullptr;
        const double expected = strtod_l(t.c_str(), &want, c);
        ASSERT_EQ(Bits(value), Bits(expected)) << '"' << t << '"';
        ASSERT_EQ(end, want) << '"' << t << '"';
    }
    // The common forms are answered, not left to the general case.
    EXPECT_GT(answered, texts.size() / 2);
    double value = 0.0;
    EXPECT_NE(ParsePlainDecimal("1234.5678", &value), nullptr);
    EXPECT_NE(ParsePlainDecimal("-999.25,", &value), nullptr);
    EXPECT_EQ(value, -999.25);
}

TEST(NumberParse, HostDecimalCommaChangesNothing)
{
    const std::string saved = std::setlocale(LC_ALL, nullptr);
    bool any = false;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.ISO-8859-1", "ru_RU.UTF-8"}) {
        if (!std::setlocale(LC_ALL, name) || std::strcmp(std::localeconv()->decimal_point, ",") != 0)
            continue;
        any = true;
        SCOPED_TRACE(name);
        EXPECT_EQ(ParseNumber("1.5"), 1.5);
        EXPECT_EQ(ParseNumber("1,5"), 1.0);
        for (const std::string& text : FixedInputs()) ExpectAtof(text);
    }
    std::setlocale(LC_ALL, saved.c_str());
    if (!any) GTEST_SKIP() << "no locale with a decimal comma installed";
}

}  // namespace
}  // namespace quarl
