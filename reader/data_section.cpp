// Data sections: the curves come from the definition section, the rows of the
// file are cut into tokens and each token is appended to its curve at once.
#include <quarl/reader.h>

#include <cstdint>
#include <memory>
#include <string>

#include "foundation/number_parse.h"
#include "foundation/platform.h"
#include "foundation/section_names.h"

namespace quarl {

namespace detail {

// How the bytes of a data row behave, fixed once per section from the
// version and the delimiter: which bytes are blanks that are passed over in
// front of and behind a token, and which bytes end a token.
class RowBytes {
public:
    RowBytes(bool isLas3, char delimiter) : m_delimiter(delimiter)
    {
        const bool tabDelimits = delimiter == '\t';
        Mark(' ', kBlank);
        // Before version 3 a tab is a blank; when it is the delimiter it
        // delimits columns instead, so that tab-delimited files read.
        if (!isLas3 && !tabDelimits) Mark('\t', kBlank);
        Mark('\0', kEnd);
        Mark(delimiter, kEnd);
        if (!isLas3 && delimiter == ' ') Mark('\t', kEnd);
        // Converting a number while its token is cut must never take a byte
        // that ends a token; an odd delimiter such as '.' turns it off.
        for (const char* c = "0123456789.+-eE"; *c; ++c)
            if (Is(*c, kEnd)) m_plainNumbers = false;
    }

    const char* SkipBlanks(const char* p) const
    {
        while (Is(*p, kBlank)) ++p;
        return p;
    }
    const char* TokenEnd(const char* p) const
    {
        while (!Is(*p, kEnd)) ++p;
        return p;
    }
    char delimiter() const { return m_delimiter; }
    bool plainNumbers() const { return m_plainNumbers; }

private:
    static constexpr uint8_t kBlank = 1;
    static constexpr uint8_t kEnd = 2;

    void Mark(char c, uint8_t bit)
    {
        m_class[static_cast<unsigned char>(c)] = static_cast<uint8_t>(m_class[static_cast<unsigned char>(c)] | bit);
    }
    bool Is(char c, uint8_t bit) const { return (m_class[static_cast<unsigned char>(c)] & bit) != 0; }

    uint8_t m_class[256] = {};
    char m_delimiter;
    bool m_plainNumbers = true;
};

}  // namespace detail

namespace {

// A curve is numeric without a format, or when the byte behind the opening
// brace is f, i or e in either case; "{S}" and "{}" make text curves.
bool FormatIsNumeric(const CLasString& format)
{
    if (format.empty()) return true;
    if (format.size() < 2) return false;
    const char kind = AsciiLower(format[1]);
    return kind == 'f' || kind == 'i' || kind == 'e';
}

void AppendToken(CLasCurve& curve, const char* begin, const char* end)
{
    if (curve.m_isNumeric)
        curve.m_numbers.push_back(begin == end ? 0.0 : ParseNumber(begin, end));
    else
        curve.m_strings.emplace_back(begin, static_cast<size_t>(end - begin));
}

// The values a row lacks when the section ends inside it.
void FillRow(std::vector<CLasCurve>& curves, size_t from)
{
    for (size_t i = from; i < curves.size(); ++i) AppendToken(curves[i], nullptr, nullptr);
}

}  // namespace

ELASFILEERROR CLasReader::ReadDataSection()
{
    const char* line = m_file.GetLine();
    if (!line || line[0] != '~') return LASFILE_BAD_FORMAT;
    CLasSection section;
    if (!ParseSectionHeader(line, &section.m_name, &section.m_association))
        return LASFILE_BAD_FORMAT;
    section.m_type = LASSECTION_DATA;
    section.m_flags = IsLogDataName(section.m_name.c_str()) ? CLasSection::kFlagLogData : 0;

    // An association written in the header binds; only without one do the
    // name rules look for the definition.
    if (section.m_association.empty() &&
        FindDefinitionSectionForDataSection(section.m_name.c_str(), &section.m_association) < 0)
        return LASFILE_BAD_FORMAT;
    const int32_t definition = FindSectionIndexByName(section.m_association.c_str());
    if (definition < 0) return LASFILE_BAD_FORMAT;

    const std::vector<CLasParam>& params = m_sections[static_cast<size_t>(definition)]->m_params;
    section.m_curves.resize(params.size());
    for (size_t i = 0; i < params.size(); ++i) {
        section.m_curves[i].m_definition = params[i];
        section.m_curves[i].m_isNumeric = FormatIsNumeric(params[i].m_format);
    }

    auto stored = std::make_shared<CLasSection>(std::move(section));
    StoreSection(stored);
    const ELASFILEERROR result = ReadLine();
    if (result != LASFILE_OK) return result;
    return ReadDataRows(*stored);
}

// Row after row up to the next header or the end of the file. A section
// without curves passes over its lines.
ELASFILEERROR CLasReader::ReadDataRows(CLasSection& section)
{
    const detail::RowBytes bytes(m_isLas3, m_delimiter);
    for (;;) {
        const char* line = m_file.GetLine();
        if (!line || line[0] == '~') return LASFILE_OK;
        if (!section.m_curves.empty()) {
            bool headerReached = false;
            const ELASFILEERROR result = ReadDataRow(bytes, section, headerReached);
            if (result != LASFILE_OK || headerReached) return result;
        }
        const ELASFILEERROR result = ReadLine();
        if (result == LASFILE_IO_FAILED) return LASFILE_OK;
        if (result != LASFILE_OK) return result;
    }
}

// One row from the current line: one token per curve, in order; the rest of
// the line is ignored. A short row gets empty tokens (0.0 or ""). In wrap
// mode a row goes on over the following lines until every curve has a value;
// a header that comes first ends the section and fills the row's missing
// values, so that all curves keep one length.
ELASFILEERROR CLasReader::ReadDataRow(const detail::RowBytes& bytes, CLasSection& section,
                                      bool& headerReached)
{
    const bool checkDelimiter = bytes.delimiter() != ' ';
    std::vector<CLasCurve>& curves = section.m_curves;
    const size_t count = curves.size();
    const char* p = m_file.GetLine();

    for (size_t column = 0; column < count; ++column) {
        p = bytes.SkipBlanks(p);
        while (*p == '\0' && m_isWrapped) {
            const ELASFILEERROR result = ReadLine();
            if (result != LASFILE_OK) return result;
            const char* next = m_file.GetLine();
            if (next[0] == '~') {
                if (column > 0) FillRow(curves, column);
                headerReached = true;
                return LASFILE_OK;
            }
            p = bytes.SkipBlanks(next);
        }
        CLasCurve& curve = curves[column];
        // A number in its common form is converted while the token is cut:
        // the token goes on from where the number ended, and atof of the
        // whole token is that number. Every other token is cut first and
        // converted by AppendToken.
        double value = 0.0;
        const char* number =
            curve.m_isNumeric && bytes.plainNumbers() ? ParsePlainDecimal(p, &value) : nullptr;
        const char* begin = p;
        const char* end = bytes.TokenEnd(number ? number : p);
        p = bytes.SkipBlanks(end);
        if (checkDelimiter && *p != '\0' && column + 1 < count) {
            if (*p != bytes.delimiter()) return LASFILE_BAD_FORMAT;
            p = bytes.SkipBlanks(p + 1);
        }
        if (number)
            curve.m_numbers.push_back(value);
        else
            AppendToken(curve, begin, end);
    }
    return LASFILE_OK;
}

}  // namespace quarl
