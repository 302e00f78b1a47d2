#include "foundation/number_parse.h"

#include <locale.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <string>

namespace quarl {

namespace {

locale_t CLocale()
{
    static const locale_t c = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    return c;
}

}  // namespace

double ParseNumberSlow(const char* begin, const char* end)
{
    const size_t length = static_cast<size_t>(end - begin);
    char small[128];
    std::string large;
    const char* text = small;
    if (length < sizeof small) {
        std::memcpy(small, begin, length);
        small[length] = '\0';
    } else {
        large.assign(begin, length);
        text = large.c_str();
    }
    const locale_t c = CLocale();
    return c ? strtod_l(text, nullptr, c) : std::strtod(text, nullptr);
}

double ParseNumber(const char* text)
{
    if (!text) return 0.0;
    return ParseNumber(text, text + std::strlen(text));
}

}  // namespace quarl
