// The one reading of a parameter line:
//   MNEM.UNIT VALUE : DESCRIPTION {FORMAT} | ASSOCIATION
// Six scanners take the fields in order. The first three may refuse the line
// (they give null); the last three each search the rest of the line behind
// the value for themselves and never refuse.
#include <quarl/reader.h>

#include <cstring>
#include <string>

#include "foundation/platform.h"

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

// Up to the first colon, less the blanks in front of it; without a colon, to
// the end of the line with its trailing blanks. A brace refuses, and so does
// a bar in a version 3 file.
const char* ScanValue(const char* p, std::string& field, bool isLas3)
{
    field.clear();
    p = SkipBlanks(p);
    if (*p == '\0' || *p == ':') return p;
    const char* colon = std::strchr(p, ':');
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
    if (!line) return LASFILE_BAD_FORMAT;
    const char* afterMnemonic = ScanMnemonic(SkipBlanks(line), param.m_mnemonic);
    if (!afterMnemonic) return LASFILE_BAD_FORMAT;
    // "VERS" may do without a unit: the line then goes on from behind the
    // mnemonic, and the unit keeps what was gathered before the refusal.
    const char* cursor = ScanUnit(afterMnemonic, param.m_unit);
    if (!cursor) {
        if (!EqualsVers(param.m_mnemonic)) return LASFILE_BAD_FORMAT;
        cursor = afterMnemonic;
    }
    cursor = ScanValue(cursor, param.m_value, m_isLas3);
    if (!cursor) return LASFILE_BAD_FORMAT;
    ScanDescription(cursor, param.m_description);
    ScanFormat(cursor, param.m_format);
    ScanAssociation(cursor, param.m_association);
    return LASFILE_OK;
}

}  // namespace quarl
