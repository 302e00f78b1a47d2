// Text helpers of the programs and the catalog: comparing names, trimming, numbers as short
// text, and escaping for JSON and XML output.
#ifndef QUARL_COMMON_TEXT_H
#define QUARL_COMMON_TEXT_H

#include <string>

namespace quarl::common {

// ASCII letters compared without case; other bytes as they are.
bool EqualsNoCase(const std::string& a, const std::string& b);
// Without the blanks and tabs at both ends.
std::string Trim(const std::string& text);

// A number as a short, exact-enough text: up to `digits` significant digits,
// trailing zeros dropped. Non-finite numbers give "nan", "inf" or "-inf".
std::string FormatNumber(double value, int digits = 6);
// The shortest such text that reads back as exactly the same number, so that
// a value written out compares equal to the one it came from.
std::string RoundTripNumber(double value);

// Cuts a text to `max` bytes with an ellipsis, never inside a UTF-8 sequence.
std::string Shorten(const std::string& text, size_t max);

// A JSON string literal, quotes included. Bytes of 0x80 and above pass as
// they are, so UTF-8 text stays readable; control bytes are escaped.
std::string JsonString(const std::string& text);
// A JSON number, or null for what JSON cannot hold.
std::string JsonNumber(double value);

// Text for XML character data and attribute values; control bytes that XML
// 1.0 does not allow become '?'.
std::string XmlEscape(const std::string& text);

}  // namespace quarl::common

#endif
