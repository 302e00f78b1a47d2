// The one reading of a parameter line:
//   MNEM.UNIT VALUE : DESCRIPTION {FORMAT} | ASSOCIATION
// Six scanners take the fields in order. The first three may refuse the line
// (they give null); the last three each search the rest of the line behind
// the value for themselves and never refuse.
#include <quarl/reader.h>

#include <cstring>
#include <string>

#include "foundation/platform.h"
#include "reader/reader_rules.h"

namespace quarl {

namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

const char* SkipBlanks(const char* p)
{
    while (IsBlank(*p)) ++p;
    return p;
}

bool IsBrace(char c)
{
    return c == '{' || c == '}';
}

// The last occurrence of `c` in [from, end of line), or null.
const char* FindLast(const char* from, char c)
{
    return std::strrchr(from, c);
}

// Trims blanks from the end of [begin, end) and stores what is left.
void AssignTrimmed(const char* begin, const char* end, std::string& field)
{
    while (end > begin && IsBlank(end[-1])) --end;
    field.assign(begin, static_cast<size_t>(end - begin));
}

bool EqualsVers(const std::string& text)
{
    return AsciiEqualNoCase(text.c_str(), "VERS");
}

// Up to the first period or tab. Spaces belong to the mnemonic (trailing ones
// are removed); a colon, brace or bar in front of the period refuses the line.
// Only "VERS" may stand without a period.
const char* ScanMnemonic(const char* p, std::string& field)
{
    field.clear();
    p = SkipBlanks(p);
    const char* start = p;
    while (*p && *p != '\t' && *p != '.') {
        if (*p == ':' || IsBrace(*p) || *p == '|') return nullptr;
        ++p;
    }
    field.assign(start, static_cast<size_t>(p - start));
    p = SkipBlanks(p);
    if (*p != '.' && !EqualsVers(field)) return nullptr;
    while (!field.empty() && field.back() == ' ') field.pop_back();
    return p;
}

// Directly behind the period, up to a blank or colon. A brace or bar refuses,
// and what was taken before it stays in the field.
const char* ScanUnit(const char* p, std::string& field)
{
    field.clear();
    if (*p != '.') return nullptr;
    ++p;
    const char* start = p;
    while (*p && !IsBlank(*p) && *p != ':') {
        if (IsBrace(*p) || *p == '|') {
            field.assign(start, static_cast<size_t>(p - start));
            return nullptr;
        }
        ++p;
    }
    field.assign(start, static_cast<size_t>(p - start));
    return SkipBlanks(p);
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// Leniently, a unit that holds colons ("DD/MM/YYYY-HH:MM:SS") ends at its
// first blank: when the text from the period to that blank has a colon with
// more text behind it, no brace or bar, and the rest of the line still has a
// colon for the description. Gives the end of the unit, or null.
const char* UnitWithColons(const char* period)
{
    const char* start = period + 1;
    const char* end = start;
    while (*end && !IsBlank(*end)) ++end;
    const char* colon =
        static_cast<const char*>(std::memchr(start, ':', static_cast<size_t>(end - start)));
    if (!colon || colon + 1 == end) return nullptr;
    for (const char* q = start; q < end; ++q) {
        if (IsBrace(*q) || *q == '|') return nullptr;
    }
    return std::strchr(end, ':') ? end : nullptr;
}

// Whether a number starts at `p`: a digit, behind a sign or a period.
bool StartsNumber(const char* p)
{
    if (*p == '-' || *p == '+') ++p;
    if (*p == '.') ++p;
    return IsDigit(*p);
}

// Leniently, a line without a period: the mnemonic is the text in front of
// the first colon, and the value starts at that colon. When a number follows
// the first word ("BS   222 : BIT SIZE"), the mnemonic is that word and the
// value starts at the number; words alone ("HOLE NUMBER :hole") stay one
// mnemonic.
const char* ScanMnemonicWithoutPeriod(const char* p, std::string& field)
{
    field.clear();
    p = SkipBlanks(p);
    const char* colon = std::strchr(p, ':');
    if (!colon) return nullptr;
    for (const char* q = p; q < colon; ++q) {
        if (IsBrace(*q) || *q == '|') return nullptr;
    }
    AssignTrimmed(p, colon, field);
    if (field.empty()) return nullptr;
    const size_t blank = field.find_first_of(" \t");
    if (blank == std::string::npos || !StartsNumber(SkipBlanks(p + blank))) return colon;
    field.resize(blank);
    return SkipBlanks(p + blank);
}

// The last colon behind `first` that has a blank in front of it and a word
// (a letter) behind it; null when there is none.
const char* DescriptionColon(const char* first)
{
    const char* found = nullptr;
    for (const char* c = std::strchr(first + 1, ':'); c; c = std::strchr(c + 1, ':')) {
        if (!IsBlank(c[-1])) continue;
        for (const char* q = c + 1; *q && *q != '{' && *q != '|'; ++q) {
            if ((*q >= 'A' && *q <= 'Z') || (*q >= 'a' && *q <= 'z')) {
                found = c;
                break;
            }
        }
    }
    return found;
}

// Leniently, a mnemonic that holds periods ("Cond.", "I. Res.") ends at a
// double period, and the unit stands behind it ("Cond..MS/M"). Only when no
// colon, brace or bar, no run of blanks and no period with text right
// behind it (a unit) stand in front of the double period. Gives where the
// unit's period is, or null.
const char* DoublePeriod(const char* p)
{
    const char* twice = std::strstr(p, "..");
    if (!twice || twice == p) return nullptr;
    for (const char* q = p; q < twice; ++q) {
        if (*q == ':' || IsBrace(*q) || *q == '|' || *q == '\t') return nullptr;
        if (*q == ' ' && q[1] == ' ') return nullptr;
        if (*q == '.' && !IsBlank(q[1])) return nullptr;
    }
    return twice + 1;
}

// The colon that ends the value: the first one. A colon between two digits
// is part of a time ("11:37:04"); leniently such a value keeps its colons,
// and ends at the first colon that does not stand between two digits, when
// there is one. `relaxed` says whether the value was cut inside a time, and
// whether the lenient choice kept the colons.
//
// Leniently two more rules keep colons that are no description colon. A
// value of a date and a time with no other colon ("8/24/2011 12:45:27") is
// the whole line. A value whose first colon has no blank in front of it
// ("X: -0000000.00 ft, Y: 000 : Location") ends at the last colon that has a
// blank in front and a word behind it, when there is one.
const char* ValueColon(const char* p, bool lenient, unsigned& relaxed)
{
    p = SkipBlanks(p);
    const char* first = std::strchr(p, ':');
    const auto inTime = [p](const char* c) { return c > p && IsDigit(c[-1]) && IsDigit(c[1]); };
    if (!first) return first;
    if (!inTime(first)) {
        const char* last =
            lenient && first > p && !IsBlank(first[-1]) ? DescriptionColon(first) : nullptr;
        if (!last) return first;
        relaxed |= kColonsKept;
        return last;
    }
    if (lenient) {
        for (const char* c = std::strchr(first + 1, ':'); c; c = std::strchr(c + 1, ':')) {
            if (!inTime(c)) {
                relaxed |= kColonsKept;
                return c;
            }
        }
        if (std::memchr(p, ' ', static_cast<size_t>(first - p)) ||
            std::memchr(p, '\t', static_cast<size_t>(first - p))) {
            relaxed |= kColonsKept;  // a date, then a time: the whole line
            return nullptr;
        }
    }
    relaxed |= kValueCutAtColon;
    return first;
}

// Up to `colon`, less the blanks in front of it; without a colon, to the end
// of the line with its trailing blanks. A brace refuses, and so does a bar in
// a version 3 file.
const char* ScanValue(const char* p, std::string& field, bool isLas3, const char* colon)
{
    field.clear();
    p = SkipBlanks(p);
    if (*p == '\0' || *p == ':') return p;
    const char* end = colon ? colon : p + std::strlen(p);
    if (colon) {
        while (end > p && IsBlank(end[-1])) --end;
    }
    for (const char* q = p; q < end; ++q) {
        if (IsBrace(*q) || (isLas3 && *q == '|')) return nullptr;
    }
    field.assign(p, static_cast<size_t>(end - p));
    return SkipBlanks(end);
}

// Behind the first colon, up to the last "{" or the last "|", whichever
// comes first, trimmed at both ends.
void ScanDescription(const char* p, std::string& field)
{
    field.clear();
    const char* colon = std::strchr(p, ':');
    if (!colon) return;
    const char* start = SkipBlanks(colon + 1);
    const char* end = start + std::strlen(start);
    const char* brace = FindLast(start, '{');
    const char* bar = FindLast(start, '|');
    if (brace && brace < end) end = brace;
    if (bar && bar < end) end = bar;
    AssignTrimmed(start, end, field);
}

// The last brace group: from the last "}" back to the nearest "{".
void ScanFormat(const char* p, std::string& field)
{
    field.clear();
    const char* close = FindLast(p, '}');
    if (!close) return;
    for (const char* open = close; open > p;) {
        --open;
        if (*open == '{') {
            field.assign(open, static_cast<size_t>(close + 1 - open));
            return;
        }
    }
}

// Behind the last "|", trimmed at both ends.
void ScanAssociation(const char* p, std::string& field)
{
    field.clear();
    const char* bar = FindLast(p, '|');
    if (!bar) return;
    const char* start = SkipBlanks(bar + 1);
    AssignTrimmed(start, start + std::strlen(start), field);
}

}  // namespace

ELASFILEERROR CLasReader::ParseParameterLine(const char* line, CLasParam& param) const
{
    unsigned relaxed = 0;
    return ParseParameterLineAs(line, param, false, relaxed);
}

// The reading of ParseParameterLine; `lenient` relaxes the two rules of
// ScanMnemonicWithoutPeriod and ValueColon, and `relaxed` gets the bits of
// reader_rules.h for the rules that fired and the odd things seen.
ELASFILEERROR CLasReader::ParseParameterLineAs(const char* line, CLasParam& param, bool lenient,
                                               unsigned& relaxed) const
{
    relaxed = 0;
    if (!line) return LASFILE_BAD_FORMAT;
    const char* cursor = nullptr;
    const char* unitPeriod = lenient ? DoublePeriod(SkipBlanks(line)) : nullptr;
    const char* afterMnemonic = ScanMnemonic(SkipBlanks(line), param.m_mnemonic);
    if (unitPeriod) {
        AssignTrimmed(SkipBlanks(line), unitPeriod, param.m_mnemonic);
        cursor = ScanUnit(unitPeriod, param.m_unit);
        if (!cursor) return LASFILE_BAD_FORMAT;
        relaxed |= kMnemonicPeriods;
    } else if (const char* unitEnd = lenient && afterMnemonic && *afterMnemonic == '.'
                                         ? UnitWithColons(afterMnemonic)
                                         : nullptr) {
        param.m_unit.assign(afterMnemonic + 1, static_cast<size_t>(unitEnd - afterMnemonic - 1));
        cursor = SkipBlanks(unitEnd);
        relaxed |= kUnitColons;
    } else if (afterMnemonic) {
        // "VERS" may do without a unit: the line then goes on from behind the
        // mnemonic, and the unit keeps what was gathered before the refusal.
        cursor = ScanUnit(afterMnemonic, param.m_unit);
        if (!cursor) {
            if (!EqualsVers(param.m_mnemonic)) return LASFILE_BAD_FORMAT;
            cursor = afterMnemonic;
        }
    } else {
        if (!lenient) return LASFILE_BAD_FORMAT;
        cursor = ScanMnemonicWithoutPeriod(line, param.m_mnemonic);
        if (!cursor) return LASFILE_BAD_FORMAT;
        param.m_unit.clear();
        relaxed |= kRelaxedNoPeriod;
    }
    cursor = ScanValue(cursor, param.m_value, m_isLas3, ValueColon(cursor, lenient, relaxed));
    if (!cursor) return LASFILE_BAD_FORMAT;
    ScanDescription(cursor, param.m_description);
    ScanFormat(cursor, param.m_format);
    ScanAssociation(cursor, param.m_association);
    return LASFILE_OK;
}

}  // namespace quarl
