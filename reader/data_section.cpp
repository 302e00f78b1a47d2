// Data sections: the curves come from the definition section, the rows of the
// file are cut into tokens and each token is appended to its curve at once.
#include <quarl/reader.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "foundation/number_parse.h"
#include "foundation/platform.h"
#include "foundation/section_names.h"
#include "reader/reader_rules.h"
#include "reader/row_bytes.h"

namespace quarl {

namespace detail {

// Leniently, the tokens of numeric curves that are not plain numbers, by
// curve: the row and the bytes. Plain files keep nothing here.
class KeptTokens {
public:
    struct Token {
        size_t row;
        uint64_t line;
        std::string text;
    };
    explicit KeptTokens(size_t curves) : m_tokens(curves) {}
    void AddCurves(size_t count) { m_tokens.resize(m_tokens.size() + count); }
    // The bytes the kept token costs against the budget.
    uint64_t Keep(size_t column, size_t row, uint64_t line, const char* begin, const char* end)
    {
        m_tokens[column].push_back(Token{row, line, std::string(begin, end)});
        return sizeof(Token) + static_cast<uint64_t>(end - begin);
    }
    const std::vector<Token>& Of(size_t column) const { return m_tokens[column]; }

private:
    std::vector<std::vector<Token>> m_tokens;
};

}  // namespace detail

namespace {

// A curve is numeric without a format, or when the byte behind the opening
// brace is f, i or e in either case; "{S}" and "{}" make text curves.
// Leniently, an array format ("{AF13.4}", "{AI}") is numeric too.
bool FormatIsNumeric(const CLasString& format, bool lenient)
{
    if (format.empty()) return true;
    if (format.size() < 2) return false;
    size_t at = 1;
    if (lenient && AsciiLower(format[1]) == 'a' && format.size() > 2) at = 2;
    const char kind = AsciiLower(format[at]);
    return kind == 'f' || kind == 'i' || kind == 'e';
}

// Whether atof finds a number at the start of [begin, end).
bool HasLeadingNumber(const char* begin, const char* end)
{
    const char* p = begin;
    while (p < end && (*p == ' ' || (*p >= '\t' && *p <= '\r'))) ++p;
    if (p < end && (*p == '-' || *p == '+')) ++p;
    if (p < end && *p == '.') ++p;
    if (p < end && *p >= '0' && *p <= '9') return true;
    const size_t left = static_cast<size_t>(end - p);
    return (left >= 3 &&
            (AsciiCompareNoCaseN(p, "inf", 3) == 0 || AsciiCompareNoCaseN(p, "nan", 3) == 0));
}

// The values a row lacks: `fill` in numeric curves, "" in text curves.
void FillRow(std::vector<CLasCurve>& curves, size_t from, double fill)
{
    for (size_t i = from; i < curves.size(); ++i) {
        if (curves[i].m_isNumeric)
            curves[i].m_numbers.push_back(fill);
        else
            curves[i].m_strings.emplace_back();
    }
}

// "12,5", "-0,25": digits, a comma and digits, optionally signed.
bool IsCommaDecimal(const std::string& t)
{
    size_t i = (!t.empty() && (t[0] == '-' || t[0] == '+')) ? 1 : 0;
    const size_t digitsBefore = i;
    while (i < t.size() && t[i] >= '0' && t[i] <= '9') ++i;
    if (i == digitsBefore || i >= t.size() || t[i] != ',') return false;
    const size_t digitsAfter = ++i;
    while (i < t.size() && t[i] >= '0' && t[i] <= '9') ++i;
    return i > digitsAfter && i == t.size();
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The whole token is one number: [+-] digits [. digits] [e [+-] digits],
// with a digit on either side of the period, or inf or nan.
bool IsWholeNumber(const std::string& t)
{
    size_t i = (!t.empty() && (t[0] == '-' || t[0] == '+')) ? 1 : 0;
    if (t.size() - i == 3 && (AsciiCompareNoCaseN(t.c_str() + i, "inf", 3) == 0 ||
                              AsciiCompareNoCaseN(t.c_str() + i, "nan", 3) == 0))
        return true;
    size_t digits = 0;
    while (i < t.size() && IsDigit(t[i])) ++i, ++digits;
    if (i < t.size() && t[i] == '.') {
        ++i;
        while (i < t.size() && IsDigit(t[i])) ++i, ++digits;
    }
    if (digits == 0) return false;
    if (i < t.size() && (t[i] == 'e' || t[i] == 'E')) {
        ++i;
        if (i < t.size() && (t[i] == '-' || t[i] == '+')) ++i;
        if (i == t.size() || !IsDigit(t[i])) return false;
        while (i < t.size() && IsDigit(t[i])) ++i;
    }
    return i == t.size();
}

// Every value of the curve is a kept token that is neither a number nor a
// number with a decimal comma ("2021-05-13", "13/05/2021", "SAND").
bool AllNotNumbers(const CLasCurve& curve, const std::vector<detail::KeptTokens::Token>& kept)
{
    if (kept.empty() || kept.size() != curve.m_numbers.size()) return false;
    for (const auto& token : kept) {
        if (IsWholeNumber(token.text) || IsCommaDecimal(token.text)) return false;
    }
    return true;
}

// Every kept token has a decimal comma, and every other value is whole. When
// every comma has three digits behind it ("1,500") it may as well group
// thousands: no guess then.
bool AllCommaDecimals(const CLasCurve& curve, const std::vector<detail::KeptTokens::Token>& kept)
{
    if (kept.empty()) return false;
    bool onlyThousands = true;
    for (const auto& token : kept) {
        if (!IsCommaDecimal(token.text)) return false;
        if (token.text.size() - token.text.find(',') != 4) onlyThousands = false;
    }
    if (onlyThousands) return false;
    size_t next = 0;
    for (size_t row = 0; row < curve.m_numbers.size(); ++row) {
        if (next < kept.size() && kept[next].row == row) {
            ++next;
            continue;
        }
        const double v = curve.m_numbers[row];
        if (!(v == std::floor(v))) return false;  // no cast: 1e20 is whole too
    }
    return true;
}

// "123,420" as 123.42.
double CommaDecimal(std::string text)
{
    text[text.find(',')] = '.';
    return ParseNumber(text.c_str());
}

// A value in a note: as "%g" writes it.
std::string FormatValue(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

// Some value of the curve outside the kept tokens has decimals: the column
// writes its decimal mark as a period.
bool ColumnUsesPeriods(const CLasCurve& curve, const std::vector<detail::KeptTokens::Token>& kept)
{
    size_t next = 0;
    for (size_t row = 0; row < curve.m_numbers.size(); ++row) {
        if (next < kept.size() && kept[next].row == row) {
            ++next;
            continue;
        }
        const double v = curve.m_numbers[row];
        if (std::isfinite(v) && v != std::floor(v)) return true;
    }
    return false;
}

// Takes back the values of row `row` that a row ended early had stored.
void DropRow(std::vector<CLasCurve>& curves, size_t row)
{
    for (CLasCurve& curve : curves) {
        if (curve.m_isNumeric && curve.m_numbers.size() > row) curve.m_numbers.resize(row);
        if (!curve.m_isNumeric && curve.m_strings.size() > row) curve.m_strings.resize(row);
    }
}

uint64_t RowBytes(const std::vector<CLasCurve>& curves)
{
    uint64_t bytes = 0;
    for (const CLasCurve& curve : curves)
        bytes += curve.m_isNumeric ? sizeof(double) : sizeof(CLasString);
    return bytes;
}

// The NULL value of the Well section, when it has one that is a number.
bool WellNullValue(const CLasSection& well, double& value)
{
    CLasParam null;
    if (well.FindParameterByMnemonic("NULL", &null) < 0) return false;
    const char* text = null.m_value.c_str();
    if (!HasLeadingNumber(text, text + null.m_value.size())) return false;
    value = ParseNumber(text);
    return true;
}

// Leniently, the text of a data header behind its name ("~A  DEPTH DT").
std::string HeaderWords(const char* line)
{
    while (*line == '~' || *line == ' ' || *line == '\t') ++line;
    while (*line && *line != ' ' && *line != '\t') ++line;
    return line;
}

}  // namespace

// Leniently, a data section without a definition whose header line names
// its columns ("~A  DEPT GR") gets one numeric curve for each name.
ELASFILEERROR CLasReader::MakeCurvesFromHeader(CLasSection& section)
{
    const char* p = Line();
    while (*p == '~' || *p == ' ' || *p == '\t') ++p;
    while (*p && *p != ' ' && *p != '\t') ++p;  // the name
    for (;;) {
        while (*p == ' ' || *p == '\t') ++p;
        const char* word = p;
        while (*p && *p != ' ' && *p != '\t') ++p;
        if (p == word) break;
        section.m_curves.emplace_back();
        section.m_curves.back().m_definition.m_mnemonic.assign(word, static_cast<size_t>(p - word));
    }
    if (section.m_curves.empty())
        return Stop(LASFILE_BAD_FORMAT, "a data section without a definition section");
    Note(LASNOTE_COLUMNS_FROM_HEADER, "no definition for ~" + section.m_name + ": " +
                                          std::to_string(section.m_curves.size()) +
                                          " curves named by the header line");
    return LASFILE_OK;
}

ELASFILEERROR CLasReader::ReadDataSection()
{
    const char* line = Line();
    if (!line || line[0] != '~') return LASFILE_BAD_FORMAT;
    CLasSection section;
    if (!ParseSectionHeader(line, &section.m_name, &section.m_association))
        return LASFILE_BAD_FORMAT;
    section.m_name = SectionTitle(section.m_name);
    section.m_type = LASSECTION_DATA;
    section.m_flags = IsLogDataName(section.m_name.c_str()) ? CLasSection::kFlagLogData : 0;

    // An association written in the header binds; only without one do the
    // name rules look for the definition.
    const bool named = !section.m_association.empty();
    if (!named &&
        FindDefinitionSectionForDataSection(section.m_name.c_str(), &section.m_association) < 0) {
        if (!m_options.lenient)
            return Stop(LASFILE_BAD_FORMAT, "a data section without a definition section");
        section.m_association.clear();
        const ELASFILEERROR made = MakeCurvesFromHeader(section);
        if (made != LASFILE_OK) return made;
    } else {
        const int32_t definition = DefinitionIndex(section.m_association);
        if (definition < 0)
            return Stop(LASFILE_BAD_FORMAT,
                        "the association of a data section names no section read before it");
        const std::vector<CLasParam>& params =
            m_sections[static_cast<size_t>(definition)]->m_params;
        uint64_t bytes = sizeof(CLasSection) + section.m_name.size();
        for (const CLasParam& param : params) bytes += sizeof(CLasCurve) + ParamBytes(param);
        if (!Spend(bytes)) return LASFILE_OUT_OF_MEMORY;
        section.m_curves.resize(params.size());
        for (size_t i = 0; i < params.size(); ++i) {
            CLasCurve& curve = section.m_curves[i];
            curve.m_definition = params[i];
            curve.m_isNumeric = FormatIsNumeric(params[i].m_format, m_options.lenient);
            if (curve.m_isNumeric && !FormatIsNumeric(params[i].m_format, false))
                Note(LASNOTE_ARRAY_FORMAT, "curve " + params[i].m_mnemonic + " " +
                                               params[i].m_format + " read as numbers");
        }
    }

    auto stored = std::make_shared<CLasSection>(std::move(section));
    StoreSection(stored);
    m_columnComment = m_commentAbove;
    m_headerWords = m_options.lenient ? HeaderWords(Line()) : std::string();
    m_fillValue = 0.0;
    int32_t well = m_options.lenient ? FindSectionIndexByName("Well") : -1;
    if (well < 0 && m_options.lenient) well = FindSectionIndexByName("W");
    if (well >= 0) WellNullValue(*m_sections[static_cast<size_t>(well)], m_fillValue);
    if (m_options.headersOnly && m_options.dataEnds && !m_isLas3 && !m_isWrapped &&
        !stored->m_curves.empty())
        return ReadDataEnds(*stored);
    if (m_options.headersOnly) return PassDataRows(stored->m_name);
    const uint64_t headerLine = m_lineNumber;
    const ELASFILEERROR result = ReadLine();
    if (result == LASFILE_IO_FAILED) return HeaderAtEnd(stored->m_name);
    if (result != LASFILE_OK) return result;
    if (!m_commentAbove.empty()) m_columnComment = m_commentAbove;
    return ReadDataRows(*stored, headerLine);
}

// The definition section a data section's curves come from: the first of
// its name; leniently the nearest above it, with a note when that is
// another one (files that repeat ~Curve and ~Ascii for each run).
int32_t CLasReader::DefinitionIndex(const std::string& name)
{
    const int32_t first = FindSectionIndexByName(name.c_str());
    if (!m_options.lenient || first < 0) return first;
    const int32_t nearest = FindNearestSectionIndexByName(name.c_str());
    if (nearest != first)
        Note(LASNOTE_NEAREST_DEFINITION,
             "curves from the nearest ~" + name + " above, not the first of that name");
    return nearest;
}

namespace {

// How much of the file's end a read of the data's ends looks at.
constexpr size_t kDataEndsTail = 1 << 16;

// Whether a line counts (not blank, not a comment) and whether it is a
// section header, for the bytes [begin, end) of one line.
bool LineCountsIn(const char* begin, const char* end)
{
    while (begin < end && (*begin == ' ' || *begin == '\t' || *begin == '\r' || *begin == '\\'))
        ++begin;
    return begin < end && *begin != '#';
}

}  // namespace

// The first and the last row of the ~A section of a LAS 2.0 file, the last
// one found from the file's end. A section header in the file's last bytes,
// or no whole line there, reads the rows as headersOnly does.
ELASFILEERROR CLasReader::ReadDataEnds(CLasSection& section)
{
    std::string tail;
    uint64_t tailStart = 0;
    if (!m_file.ReadTail(kDataEndsTail, tail, tailStart)) return PassDataRows(section.m_name);
    const char* begin = tail.data();
    const char* end = begin + tail.size();
    // The lines of the tail behind the ~A header; its first line only when
    // the header ends right in front of it.
    const uint64_t here = m_file.GetOffset();
    const char* first = nullptr;
    if (here >= tailStart)
        first = begin + (here - tailStart);
    else if (const char* feed = static_cast<const char*>(std::memchr(begin, '\n', tail.size())))
        first = feed + 1;
    if (!first) return PassDataRows(section.m_name);
    const char* lastLine = nullptr;
    for (const char* line = first; line < end;) {
        const char* feed =
            static_cast<const char*>(std::memchr(line, '\n', static_cast<size_t>(end - line)));
        const char* stop = feed ? feed : end;
        const char* lead = line;
        while (m_options.lenient && lead < stop && (*lead == ' ' || *lead == '\t')) ++lead;
        if (lead < stop && *lead == '~') return PassDataRows(section.m_name);
        if (LineCountsIn(line, stop)) lastLine = line;
        line = feed ? feed + 1 : end;
    }
    ELASFILEERROR result = ReadLine();
    if (result == LASFILE_IO_FAILED) return HeaderAtEnd(section.m_name);
    if (result != LASFILE_OK || Line()[0] == '~') return result;
    const detail::RowBytes bytes(m_isLas3, m_delimiter);
    std::unique_ptr<detail::KeptTokens> kept;
    if (m_options.lenient) kept.reset(new detail::KeptTokens(section.m_curves.size()));
    bool headerReached = false;
    result = ReadDataRow(bytes, section, headerReached, kept.get());
    if (result != LASFILE_OK) return result;
    const uint64_t lastOffset = lastLine ? tailStart + static_cast<uint64_t>(lastLine - begin) : 0;
    if (lastLine && lastOffset >= m_file.GetOffset()) {  // more than one row
        const uint64_t firstRowLine = m_lineNumber;
        m_lineNumber = 0;
        result = m_file.ReadLineAt(lastOffset);
        if (result == LASFILE_OK) result = ReadDataRow(bytes, section, headerReached, kept.get());
        m_lineNumber = firstRowLine;
        while (result == LASFILE_OK)
            result = m_file.ReadLine();  // to the end: trailing blanks and comments
        if (result != LASFILE_IO_FAILED) return result;
    }
    if (kept) NoNumbersAsNaN(section, *kept);
    return LASFILE_OK;
}

// Without values: the lines up to the next header are passed over whole.
ELASFILEERROR CLasReader::PassDataRows(const std::string& name)
{
    ELASFILEERROR result = LASFILE_OK;
    if (m_options.lenient) {
        // Leniently a header may stand behind blanks: every line is looked at.
        uint64_t rows = 0;
        do {
            result = ReadLine();
            rows += result == LASFILE_OK;
        } while (result == LASFILE_OK && Line()[0] != '~');
        if (result == LASFILE_IO_FAILED && rows == 0) return HeaderAtEnd(name);
    } else {
        uint64_t passed = 0;
        result = m_file.SkipToLineStartingWith('~', passed);
        m_lineNumber += passed;
        NoteLoneReturn();
        if (result == LASFILE_IO_FAILED && passed == 0) return HeaderAtEnd(name);
        if (m_statusCallback && (result == LASFILE_OK || result == LASFILE_IO_FAILED) &&
            ReportProgress(m_file.GetPercentRead()) != LASFILE_OK)
            return LASFILE_CANCELLED;
    }
    return result == LASFILE_IO_FAILED ? LASFILE_OK : result;
}

namespace {

// A quote that opens a value: a double quote, or a single quote that
// closes on the same line.
bool IsQuote(const char* p)
{
    return *p == '"' || (*p == '\'' && std::strchr(p + 1, '\''));
}

// A row of values run together by commas alone ("1000.0,12.5,33.1"): no
// blank between its first and last byte, and one comma fewer than `curves`.
bool IsCommaRow(const char* line, size_t curves)
{
    while (*line == ' ' || *line == '\t') ++line;
    size_t commas = 0;
    for (; *line && *line != ' ' && *line != '\t'; ++line) commas += *line == ',';
    while (*line == ' ' || *line == '\t' || *line == '\r') ++line;
    return *line == '\0' && curves > 1 && commas + 1 == curves;
}

}  // namespace

// The delimiter of the rows of a data section: the file's; leniently the
// comma when the file says blanks and the first row is a comma row.
char CLasReader::RowDelimiter(size_t curves)
{
    if (!m_options.lenient || m_delimiter != ' ' || m_isWrapped || !IsCommaRow(Line(), curves))
        return m_delimiter;
    Note(LASNOTE_COMMA_ROWS, "rows read by their commas: the file names no comma delimiter");
    return ',';
}

// Rows read line by line in a data section before its rows are first taken
// block by block: a section of a few rows never costs a block.
constexpr uint64_t kRowsBeforeBlocks = 64;
// Rows taken from blocks fewer than this: the next this many rows are read
// line by line before blocks take the rows again.
constexpr uint64_t kShortRun = 4096;
// A block is at most this many times the bytes read line by line before it
// in the section, so that blocks that end early cost little.
constexpr uint64_t kBlockPerByteRead = 16;

// Row after row up to the next header or the end of the file. A section
// without curves passes over its lines. Leniently, the odd tokens of numeric
// curves are kept aside and looked at once the section is read.
ELASFILEERROR CLasReader::ReadDataRows(CLasSection& section, uint64_t headerLine)
{
    const detail::RowBytes bytes(m_isLas3, RowDelimiter(section.m_curves.size()));
    uint64_t rowBytes = RowBytes(section.m_curves);
    size_t curveCount = section.m_curves.size();
    std::unique_ptr<detail::KeptTokens> kept;
    if (m_options.lenient) kept.reset(new detail::KeptTokens(section.m_curves.size()));
    ELASFILEERROR result = LASFILE_OK;
    const bool inBlocks = RowsMayGoInBlocks(section, bytes);
    const uint64_t sectionStart = m_file.GetOffset();
    uint64_t rowsToNextBlock = kRowsBeforeBlocks;
    for (;;) {
        const char* line = Line();
        if (!line || line[0] == '~') break;
        if (!section.m_curves.empty()) {
            if (!Spend(rowBytes)) return LASFILE_OUT_OF_MEMORY;
            bool headerReached = false;
            result = ReadDataRow(bytes, section, headerReached, kept.get());
            if (result != LASFILE_OK || headerReached) break;
            if (section.m_curves.size() != curveCount) {  // leniently, columns were added
                curveCount = section.m_curves.size();
                rowBytes = RowBytes(section.m_curves);
            }
        }
        if (inBlocks && rowsToNextBlock-- == 0) {
            const uint64_t readBytes = m_file.GetOffset() - sectionStart;
            const uint64_t rows = ReadRowsInBlocks(
                section, bytes, rowBytes, static_cast<size_t>(readBytes * kBlockPerByteRead));
            rowsToNextBlock = rows < kShortRun ? kShortRun : 0;
        }
        result = ReadLine();
        if (result == LASFILE_IO_FAILED) {
            result = LASFILE_OK;  // the end of the file
            break;
        }
        if (result != LASFILE_OK) break;
    }
    if (result == LASFILE_OK && kept)
        ApplyColumnRules(section, *kept, headerLine, bytes.delimiter());
    return result;
}

// Leniently, once a data section is read: a numeric curve of nothing but
// non-numbers becomes a text curve, and one of whole numbers and numbers
// with a decimal comma is read with the comma as the decimal mark; in a
// curve whose values have decimals, a token with one comma and no period is
// a decimal comma. In a curve with numbers and non-numbers, every token that
// no rule reads as one whole number is NaN, with a note on its line: the
// notes tell what each value finally became.
void CLasReader::ApplyColumnRules(CLasSection& section, const detail::KeptTokens& kept,
                                  uint64_t headerLine, char delimiter)
{
    for (size_t i = 0; i < section.m_curves.size(); ++i) {
        CLasCurve& curve = section.m_curves[i];
        const auto& tokens = kept.Of(i);
        if (!curve.m_isNumeric || tokens.empty()) continue;
        if (AllNotNumbers(curve, tokens)) {
            curve.m_isNumeric = false;
            curve.m_numbers.clear();
            curve.m_numbers.shrink_to_fit();
            for (const auto& token : tokens) curve.m_strings.push_back(token.text);
            NoteAt(headerLine, LASNOTE_TEXT_COLUMN,
                   "curve " + curve.m_definition.m_mnemonic + " holds no number: read as text");
            continue;
        }
        if (delimiter != ',' && AllCommaDecimals(curve, tokens)) {
            for (const auto& token : tokens) curve.m_numbers[token.row] = CommaDecimal(token.text);
            NoteAt(headerLine, LASNOTE_DECIMAL_COMMA,
                   "curve " + curve.m_definition.m_mnemonic + " read with a decimal comma");
            continue;
        }
        const bool periods = delimiter != ',' && ColumnUsesPeriods(curve, tokens);
        for (const auto& token : tokens) {
            if (periods && IsCommaDecimal(token.text)) {
                curve.m_numbers[token.row] = CommaDecimal(token.text);
                NoteAt(token.line, LASNOTE_DECIMAL_COMMA,
                       "curve " + curve.m_definition.m_mnemonic + " read \"" + token.text +
                           "\" as " + FormatValue(curve.m_numbers[token.row]) +
                           ": a decimal comma among periods");
            } else {
                NoNumberAsNaN(curve, token.row, token.line, token.text);
            }
        }
    }
}

// Leniently, for the rows of a read of the data's ends, where no column rule
// applies: each odd token that is no one whole number is NaN.
void CLasReader::NoNumbersAsNaN(CLasSection& section, const detail::KeptTokens& kept)
{
    for (size_t i = 0; i < section.m_curves.size(); ++i) {
        for (const auto& token : kept.Of(i))
            NoNumberAsNaN(section.m_curves[i], token.row, token.line, token.text);
    }
}

// A kept token that is no one whole number ("-", "ERR", "12.5ft", "1.2.3")
// is NaN, with a note on its line.
void CLasReader::NoNumberAsNaN(CLasCurve& curve, size_t row, uint64_t line, const std::string& text)
{
    if (IsWholeNumber(text)) return;
    curve.m_numbers[row] = std::nan("");
    NoteAt(line, LASNOTE_NOT_A_NUMBER,
           "\"" + text + "\" in curve " + curve.m_definition.m_mnemonic +
               " is no number: read as NaN");
}

// A token of which atof takes only a leading number, with what it read.
void CLasReader::NoteNumberInPart(const CLasCurve& curve, uint64_t line, const std::string& token)
{
    const char* begin = token.c_str();
    const char* end = begin + token.size();
    if (!HasLeadingNumber(begin, end) || IsWholeNumber(token)) return;
    NoteAt(line, LASNOTE_NUMBER_IN_PART,
           "\"" + token + "\" in curve " + curve.m_definition.m_mnemonic + " read as " +
               FormatValue(ParseNumber(begin, end)) + ": only its leading number counts");
}

// A numeric token that did not take the quick way: atof of it, with a note
// when no number stands at its start.
double CLasReader::OddNumber(const CLasCurve& curve, const char* begin, const char* end,
                             bool notePart)
{
    if (begin == end) return 0.0;
    if (notePart) NoteNumberInPart(curve, m_lineNumber, std::string(begin, end));
    if (!HasLeadingNumber(begin, end) && CountNote(LASNOTE_NOT_A_NUMBER, m_lineNumber))
        m_notes.push_back(CLasNote{m_lineNumber, LASNOTE_NOT_A_NUMBER,
                                   "\"" + std::string(begin, end) + "\" in curve " +
                                       curve.m_definition.m_mnemonic + " read as 0"});
    return ParseNumber(begin, end);
}

// A row that ends before its last curve: the rest is filled with 0 and ""
// (leniently with the Well section's NULL value), with a note.
void CLasReader::FillShortRow(std::vector<CLasCurve>& curves, size_t column)
{
    FillRow(curves, column, m_fillValue);
    const bool withNull = m_options.lenient && m_fillValue != 0.0;
    const ELASNOTEKIND kind = withNull ? LASNOTE_NULL_FILLED : LASNOTE_SHORT_ROW;
    if (!CountNote(kind, m_lineNumber)) return;
    char fill[40];
    std::snprintf(fill, sizeof fill, "%g", m_fillValue);
    m_notes.push_back(CLasNote{m_lineNumber, kind,
                               "row of " + std::to_string(column) + " values for " +
                                   std::to_string(curves.size()) +
                                   " curves; the rest filled with " +
                                   (withNull ? std::string("NULL ") : std::string()) + fill});
}

namespace {

// How many values stand in the rest of a row from `p`, which is the
// delimiter behind a value (or, for blanks, the next value): as the row is
// cut, an empty value behind a delimiter counts, a delimiter alone is none.
size_t ValuesBehind(const detail::RowBytes& bytes, const char* p)
{
    size_t count = 0;
    if (bytes.delimiter() != ' ') {
        if (*p != bytes.delimiter()) return 0;  // text glued to a closing quote
        p = bytes.SkipBlanks(p + 1);
        if (*p == '\0') return 0;
        for (count = 1; *p; ++p) count += *p == bytes.delimiter();
        return count;
    }
    for (; *p != '\0'; ++count) p = bytes.SkipBlanks(bytes.TokenEnd(p));
    return count;
}

// The words of a comment line, split on blanks.
std::vector<std::string> Words(const std::string& text)
{
    std::vector<std::string> words;
    size_t at = 0;
    for (;;) {
        at = text.find_first_not_of(" \t\r", at);
        if (at == std::string::npos) return words;
        const size_t end = std::min(text.find_first_of(" \t\r", at), text.size());
        words.push_back(text.substr(at, end - at));
        at = end;
    }
}

}  // namespace

// Leniently, the names of `added` curves behind `curves`: from the comment
// above the rows when it names every column or every added one, else from
// the words behind the data header's name ("~A  DEPTH DT RHOB") the same
// way, else "UNKNOWN:n" counted on from the names already there.
std::vector<std::string> CLasReader::ExtraCurveNames(const std::vector<CLasCurve>& curves,
                                                     size_t added) const
{
    std::vector<std::string> names;
    for (const std::string& text : {m_columnComment, m_headerWords}) {
        const std::vector<std::string> words = Words(text);
        if (words.size() == curves.size() + added)
            names.assign(words.end() - static_cast<std::ptrdiff_t>(added), words.end());
        else if (words.size() == added)
            names = words;
        if (!names.empty()) return names;
    }
    std::vector<std::string> taken;
    for (const CLasCurve& curve : curves) taken.push_back(curve.m_definition.m_mnemonic);
    for (size_t i = 0; i < added; ++i) {
        names.push_back(
            NextUnknownName(taken, [](const std::string& s) -> const std::string& { return s; }));
        taken.push_back(names.back());
    }
    return names;
}

// Leniently, a row with `added` values behind its last curve: a numeric
// curve for each, filled in the rows above as a short row is, and a
// definition line for each in the definition section. False, with the row
// taken back, when the budget has no room for them.
bool CLasReader::AddExtraCurves(CLasSection& section, size_t added, detail::KeptTokens& kept)
{
    std::vector<CLasCurve>& curves = section.m_curves;
    const size_t rowsAbove = static_cast<size_t>(curves.front().size()) - 1;
    const std::vector<std::string> names = ExtraCurveNames(curves, added);
    uint64_t bytes = 0;
    for (const std::string& name : names)
        bytes +=
            sizeof(CLasCurve) + sizeof(CLasParam) + 2 * name.size() + rowsAbove * sizeof(double);
    if (!Spend(bytes)) {
        DropRow(curves, rowsAbove);
        return false;
    }
    const int32_t definition = section.m_association.empty()
                                   ? -1
                                   : FindNearestSectionIndexByName(section.m_association.c_str());
    std::string list;
    for (const std::string& name : names) {
        CLasCurve curve;
        curve.m_definition.m_mnemonic = name;
        curve.m_numbers.assign(rowsAbove, m_fillValue);
        if (definition >= 0)
            m_sections[static_cast<size_t>(definition)]->m_params.push_back(curve.m_definition);
        curves.push_back(std::move(curve));
        list += (list.empty() ? "" : " ") + name;
    }
    kept.AddCurves(added);
    std::string fill;
    if (rowsAbove > 0)
        fill = "; the " + std::to_string(rowsAbove) + " rows above hold " +
               (m_fillValue != 0.0 ? "NULL " : "") + FormatValue(m_fillValue);
    Note(LASNOTE_EXTRA_COLUMNS,
         std::to_string(added) + " values behind the last curve kept as curves " + list + fill);
    return true;
}

// Leniently, a value in quotes from `p` on: the text up to the closing
// quote, blanks and delimiters included, without the quotes. Single quotes
// close on their line; a value in double quotes that runs over several lines takes them, joined by
// one blank, up to the line with the closing quote; a header or the end of the file ends it and
// sets `sectionEnded`. `p` goes on behind the closing quote. One note, on the
// line where the value starts.
ELASFILEERROR CLasReader::ReadQuoted(const char*& p, std::string& text, bool& sectionEnded)
{
    static const char kNothing[] = "";
    const char quote = *p;
    const uint64_t first = m_lineNumber;
    const char* close = std::strchr(p + 1, quote);
    text.assign(p + 1, close ? static_cast<size_t>(close - p - 1) : std::strlen(p + 1));
    size_t lines = 1;
    while (!close) {
        const ELASFILEERROR result = ReadLine();
        if (result != LASFILE_OK && result != LASFILE_IO_FAILED) return result;
        if (result == LASFILE_IO_FAILED || Line()[0] == '~') {
            sectionEnded = true;
            p = kNothing;
            NoteAt(first, LASNOTE_QUOTED_VALUE,
                   "a quoted value of " + std::to_string(lines) + " lines has no closing quote");
            return LASFILE_OK;
        }
        const char* line = Line();
        while (*line == ' ' || *line == '\t') ++line;
        close = std::strchr(line, quote);
        while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.pop_back();
        text += ' ';
        text.append(line, close ? static_cast<size_t>(close - line) : std::strlen(line));
        ++lines;
    }
    p = close + 1;
    NoteAt(first, LASNOTE_QUOTED_VALUE,
           "a quoted value" +
               (lines > 1 ? " of " + std::to_string(lines) + " lines" : std::string()) +
               " read as one value: " + text.substr(0, 40));
    return LASFILE_OK;
}

// What stands behind the last value of a row: a delimiter alone is nothing,
// anything else values that were dropped.
void CLasReader::NoteRowEnd(const detail::RowBytes& bytes, const char* p, size_t count)
{
    if (*p == bytes.delimiter()) p = bytes.SkipBlanks(p + 1);
    if (*p == '\0' || !CountNote(LASNOTE_LONG_ROW, m_lineNumber)) return;
    m_notes.push_back(CLasNote{m_lineNumber, LASNOTE_LONG_ROW,
                               "row of more values than its " + std::to_string(count) +
                                   " curves; dropped: " + std::string(p).substr(0, 40)});
}

// One row from the current line: one token per curve, in order; the rest of
// the line is ignored (leniently, values there become curves of their own).
// A short row gets empty tokens (0.0 or ""); an empty token right behind a
// delimiter is a value of its own. In wrap mode a row goes on over the
// following lines until every curve has a value; a header that comes first
// ends the section and fills the row's missing values, so that all curves
// keep one length. Leniently a quoted value is one token, and one that runs
// into a header or the file's end ends the row the same way.
ELASFILEERROR CLasReader::ReadDataRow(const detail::RowBytes& bytes, CLasSection& section,
                                      bool& headerReached, detail::KeptTokens* kept)
{
    const bool checkDelimiter = bytes.delimiter() != ' ';
    std::vector<CLasCurve>& curves = section.m_curves;
    size_t count = curves.size();
    const char* p = Line();
    if (*p == '\t' && m_options.lenient && m_isLas3 && bytes.delimiter() == '\t') {
        ++p;
        Note(LASNOTE_LEADING_TAB, "a tab in front of the first value passed over");
    }
    bool afterDelimiter = false;
    std::string quoted;

    for (size_t column = 0; column < count; ++column) {
        p = bytes.SkipBlanks(p);
        if (*p == '\0') {
            if (!m_isWrapped) {
                if (!afterDelimiter) {
                    FillShortRow(curves, column);
                    return LASFILE_OK;
                }
            } else {
                do {
                    const ELASFILEERROR result = ReadLine();
                    if (result == LASFILE_IO_FAILED)
                        return Stop(result, "the file ends inside a wrapped row");
                    if (result != LASFILE_OK) return result;
                    const char* next = Line();
                    if (next[0] == '~') {
                        if (column > 0) FillShortRow(curves, column);
                        headerReached = true;
                        return LASFILE_OK;
                    }
                    p = bytes.SkipBlanks(next);
                } while (*p == '\0');
            }
        }
        afterDelimiter = false;
        CLasCurve& curve = curves[column];
        // A number in its common form is converted while the token is cut:
        // the token goes on from where the number ended, and atof of the
        // whole token is that number. Every other token is cut first and
        // converted by OddNumber.
        double value = 0.0;
        const char* number = nullptr;
        const char* begin = p;
        const char* end = nullptr;
        if (kept && IsQuote(p)) {  // leniently, a quoted value is one value
            const ELASFILEERROR result = ReadQuoted(p, quoted, headerReached);
            if (result != LASFILE_OK) return result;
            begin = quoted.data();
            end = begin + quoted.size();
        } else {
            number =
                curve.m_isNumeric && bytes.plainNumbers() ? ParsePlainDecimal(p, &value) : nullptr;
            end = bytes.TokenEnd(number ? number : p);
            p = end;
        }
        p = bytes.SkipBlanks(p);
        if (checkDelimiter && *p != '\0' && column + 1 < count) {
            if (*p != bytes.delimiter())
                return Stop(LASFILE_BAD_FORMAT, "no delimiter between two values of a row");
            p = bytes.SkipBlanks(p + 1);
            afterDelimiter = true;
        }
        // Leniently, blanks in front of a delimiter are no part of a number.
        if (kept && curve.m_isNumeric && number != end)
            while (end > begin && (end[-1] == ' ' || end[-1] == '\t')) --end;
        if (kept && curve.m_isNumeric && begin != end && number != end) {
            const size_t row = curve.m_numbers.size();
            if (!Spend(kept->Keep(column, row, m_lineNumber, begin, end))) {
                DropRow(curves, row);
                return LASFILE_OUT_OF_MEMORY;
            }
        }
        if (number) {
            if (!kept && number != end)
                NoteNumberInPart(curve, m_lineNumber, std::string(begin, end));
            curve.m_numbers.push_back(value);
        } else if (curve.m_isNumeric) {
            // Leniently an odd token is kept and decided once the whole
            // column is known; until then it holds what atof reads.
            curve.m_numbers.push_back(kept && begin != end ? ParseNumber(begin, end)
                                                           : OddNumber(curve, begin, end, !kept));
        } else {
            curve.m_strings.emplace_back(begin, static_cast<size_t>(end - begin));
            m_bytesKept += static_cast<uint64_t>(end - begin);
        }
        if (headerReached) {  // a quoted value ran into the next header or the end
            if (column + 1 < count) FillShortRow(curves, column + 1);
            return LASFILE_OK;
        }
        // Leniently, values behind the last curve become curves of their own.
        if (column + 1 == count && kept && !m_isWrapped && *p != '\0') {
            const size_t added = ValuesBehind(bytes, p);
            if (added > 0 && !AddExtraCurves(section, added, *kept)) return LASFILE_OUT_OF_MEMORY;
            if (added > 0 && checkDelimiter) p = bytes.SkipBlanks(p + 1);
            afterDelimiter = added > 0 && checkDelimiter;
            count = curves.size();
        }
    }
    if (*p != '\0') NoteRowEnd(bytes, p, count);
    return LASFILE_OK;
}

}  // namespace quarl
