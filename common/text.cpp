#include "common/text.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace quarl::common {

bool EqualsNoCase(const std::string& a, const std::string& b)
{
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
        if (x != y) return false;
    }
    return true;
}

std::string Trim(const std::string& text)
{
    size_t begin = 0, end = text.size();
    while (begin < end && (text[begin] == ' ' || text[begin] == '\t')) ++begin;
    while (end > begin && (text[end - 1] == ' ' || text[end - 1] == '\t')) --end;
    return text.substr(begin, end - begin);
}

std::string FormatNumber(double value, int digits)
{
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*g", digits, value);
    return buffer;
}

std::string RoundTripNumber(double value)
{
    std::string text;
    for (int digits = 1; digits <= 17; ++digits) {
        text = FormatNumber(value, digits);
        if (!std::isfinite(value) || std::strtod(text.c_str(), nullptr) == value) break;
    }
    return text;
}

std::string Shorten(const std::string& text, size_t max)
{
    if (text.size() <= max) return text;
    size_t cut = max > 1 ? max - 1 : 0;
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
    return text.substr(0, cut) + "\xE2\x80\xA6";
}

std::string JsonString(const std::string& text)
{
    std::string out = "\"";
    for (unsigned char c : text) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (c < 0x20) {
                    char buffer[8];
                    std::snprintf(buffer, sizeof buffer, "\\u%04x", c);
                    out += buffer;
                } else {
                    out += static_cast<char>(c);
                }
        }
    }
    return out + "\"";
}

std::string JsonNumber(double value)
{
    if (!std::isfinite(value)) return "null";
    return FormatNumber(value, 15);
}

std::string XmlEscape(const std::string& text)
{
    std::string out;
    for (unsigned char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&apos;";
                break;
            default:
                if (c < 0x20 && c != '\t' && c != '\n')
                    out += '?';
                else
                    out += static_cast<char>(c);
        }
    }
    return out;
}

}  // namespace quarl::common
