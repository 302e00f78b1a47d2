// Helpers shared by the example programs: result code names, the format of a
// file as its Version section declares it, curve statistics, JSON and XML
// text, option lists, and the conversion of a read file into a writer.
// Header-only and built on the public interface alone.
#ifndef QUARL_EXAMPLES_LAS_TOOLS_H
#define QUARL_EXAMPLES_LAS_TOOLS_H

#include <quarl/quarl.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

namespace quarl::examples {

// ---------------------------------------------------------------- result codes

using quarl::ResultName;

inline const char* ResultMeaning(ELASFILEERROR code)
{
    return quarl::ResultDescription(code);
}

inline const char* SectionTypeName(ELASSECTIONTYPE type)
{
    switch (type) {
        case LASSECTION_PARAMETER:
            return "parameter";
        case LASSECTION_DEFINITION:
            return "definition";
        case LASSECTION_DATA:
            return "data";
        case LASSECTION_HEADER:
            return "header";
        case LASSECTION_ANY:
            return "untyped";
    }
    return "unknown";
}

// --------------------------------------------------------------------- text

inline bool EqualsNoCase(const std::string& a, const std::string& b)
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

inline std::string Trim(const std::string& text)
{
    size_t begin = 0, end = text.size();
    while (begin < end && (text[begin] == ' ' || text[begin] == '\t')) ++begin;
    while (end > begin && (text[end - 1] == ' ' || text[end - 1] == '\t')) --end;
    return text.substr(begin, end - begin);
}

// "RES,ILD" -> {"RES", "ILD"}; empty items are dropped.
inline std::vector<std::string> SplitList(const std::string& text)
{
    std::vector<std::string> items;
    std::string item;
    for (char c : text + ",") {
        if (c == ',') {
            item = Trim(item);
            if (!item.empty()) items.push_back(item);
            item.clear();
        } else {
            item += c;
        }
    }
    return items;
}

inline bool ListContainsNoCase(const std::vector<std::string>& list, const std::string& name)
{
    for (const std::string& item : list)
        if (EqualsNoCase(item, name)) return true;
    return false;
}

// A number as a short, exact-enough text: up to `digits` significant digits,
// trailing zeros dropped. Non-finite numbers give "nan", "inf" or "-inf".
inline std::string FormatNumber(double value, int digits = 6)
{
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*g", digits, value);
    return buffer;
}

// JSON string literal, quotes included. Bytes of 0x80 and above pass as they
// are, so UTF-8 text stays readable; control bytes are escaped.
inline std::string JsonString(const std::string& text)
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

// A JSON number, or null for what JSON cannot hold.
inline std::string JsonNumber(double value)
{
    if (!std::isfinite(value)) return "null";
    return FormatNumber(value, 15);
}

// Text for XML character data and attribute values.
inline std::string XmlEscape(const std::string& text)
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
                // Control bytes are not allowed in XML 1.0.
                if (c < 0x20 && c != '\t' && c != '\n')
                    out += '?';
                else
                    out += static_cast<char>(c);
        }
    }
    return out;
}

// --------------------------------------------------------- file format facts

// What the Version section declares: the facts the reader acts on, read back
// from its parameters the way the reader reads them.
struct FileFormat {
    std::string version = "?";  // the VERS text, "2.0", "3.0", "1.2", ...
    bool isLas3 = false;
    bool isWrapped = false;
    char delimiter = ' ';
};

inline FileFormat FormatOf(const CLasSection* versionSection)
{
    FileFormat format;
    if (!versionSection) return format;
    for (const CLasParam& p : versionSection->m_params) {
        if (EqualsNoCase(p.m_mnemonic, "VERS")) {
            std::string value = p.m_value.empty() ? std::string(p.m_unit) : std::string(p.m_value);
            if (!value.empty()) {
                format.version = value;
                format.isLas3 = static_cast<signed char>(value[0]) >= 0x33;
            }
        } else if (EqualsNoCase(p.m_mnemonic, "WRAP")) {
            if ((!p.m_value.empty() && (p.m_value[0] == 'y' || p.m_value[0] == 'Y')) ||
                (!p.m_unit.empty() && p.m_unit[0] == 'Y'))
                format.isWrapped = true;
        } else if (EqualsNoCase(p.m_mnemonic, "DLM") && !p.m_value.empty()) {
            if (EqualsNoCase(p.m_value, "SPACE"))
                format.delimiter = ' ';
            else if (EqualsNoCase(p.m_value, "COMMA"))
                format.delimiter = ',';
            else if (EqualsNoCase(p.m_value, "TAB"))
                format.delimiter = '\t';
            else
                format.delimiter = p.m_value[0];
        }
    }
    return format;
}

inline std::string DelimiterName(char delimiter)
{
    switch (delimiter) {
        case ' ':
            return "space";
        case '\t':
            return "tab";
        case ',':
            return "comma";
        default:
            return std::string("'") + delimiter + "'";
    }
}

// -------------------------------------------------------------- curve facts

// The NULL value of the Well section, if it has a numeric one.
inline bool NullValueOf(const CLasSection* well, double* value)
{
    if (!well) return false;
    CLasParam param;
    if (well->FindParameterByMnemonic("NULL", &param) < 0) return false;
    const std::string text = Trim(param.m_value);
    if (text.empty()) return false;
    char* end = nullptr;
    const double parsed = std::strtod(text.c_str(), &end);
    if (end == text.c_str()) return false;
    *value = parsed;
    return true;
}

// A value that stands for "no reading": the file's NULL or not a number.
inline bool IsNullValue(double value, bool hasNull, double nullValue)
{
    if (std::isnan(value)) return true;
    if (!hasNull) return false;
    return std::fabs(value - nullValue) <= 1e-9 * std::fmax(1.0, std::fabs(nullValue));
}

struct CurveStats {
    int32_t count = 0;  // values in the curve
    int32_t nulls = 0;  // of them, NULL values
    double min = std::numeric_limits<double>::quiet_NaN();
    double max = std::numeric_limits<double>::quiet_NaN();
};

inline CurveStats StatsOf(const CLasCurve& curve, bool hasNull, double nullValue)
{
    CurveStats stats;
    stats.count = curve.size();
    if (!curve.m_isNumeric) return stats;
    for (double v : curve.m_numbers) {
        if (IsNullValue(v, hasNull, nullValue) || std::isinf(v)) {
            ++stats.nulls;
            continue;
        }
        if (std::isnan(stats.min) || v < stats.min) stats.min = v;
        if (std::isnan(stats.max) || v > stats.max) stats.max = v;
    }
    return stats;
}

// Index of the depth curve of a data section: DEPT, M__DEPTH or DEPTH by
// mnemonic, else the first curve; -1 when there is no numeric curve there.
inline int DepthCurveIndex(const CLasSection& data)
{
    for (const char* name : {"DEPT", "M__DEPTH", "DEPTH"}) {
        for (size_t i = 0; i < data.m_curves.size(); ++i)
            if (EqualsNoCase(data.m_curves[i].m_definition.m_mnemonic, name) &&
                data.m_curves[i].m_isNumeric)
                return static_cast<int>(i);
    }
    if (!data.m_curves.empty() && data.m_curves[0].m_isNumeric) return 0;
    return -1;
}

// ---------------------------------------------------------------- conversion

// The name a section takes in the other LAS version, so that the log curves
// of a LAS 3.0 file become the Parameter, Curve and ASCII sections of a
// LAS 2.0 file, and the other way round. Other names stay as they are.
inline std::string MapSectionName(const std::string& name, bool toLas3)
{
    struct Pair {
        const char* las2;
        const char* las3;
    };
    static const Pair pairs[] = {
        {"Parameter", "Log_Parameter"}, {"Curve", "Log_Definition"}, {"ASCII", "Log_Data"}};
    if (toLas3) {
        static const Pair shortForms[] = {{"W", "Well"},           {"P", "Log_Parameter"},
                                          {"C", "Log_Definition"}, {"A", "Log_Data"},
                                          {"L", "Log_Data"},       {"LOG", "Log_Data"}};
        for (const Pair& p : shortForms)
            if (EqualsNoCase(name, p.las2)) return p.las3;
        for (const Pair& p : pairs)
            if (EqualsNoCase(name, p.las2)) return p.las3;
    } else {
        for (const Pair& p : pairs)
            if (EqualsNoCase(name, p.las3)) return p.las2;
    }
    return name;
}

struct ConvertOptions {
    bool toLas3 = false;
    char delimiter = ' ';
    bool mapNames = true;          // rename the log group between the versions
    bool dropUnsupported = false;  // leave out sections the writer refuses
    bool fixWellRange = false;     // make STRT, STOP and STEP agree with the data
};

// The name under which a LAS 2.0 writer stores a section: one-letter names
// are written out in full.
inline std::string StoredName(const std::string& name, bool las3)
{
    if (las3 || name.size() != 1) return name;
    switch (name[0]) {
        case 'W':
        case 'w':
            return "Well";
        case 'C':
        case 'c':
            return "Curve";
        case 'P':
        case 'p':
            return "Parameter";
        case 'A':
        case 'a':
        case 'L':
        case 'l':
            return "ASCII";
        case 'O':
        case 'o':
            return "Other";
        case 'D':
        case 'd':
            return "Downhole";
        default:
            return name;
    }
}

// Makes STRT, STOP and STEP of the Well section agree with the first curve
// of the main data section, the way the writer tests them: STRT and STOP
// take the first and last depth, an uneven STEP becomes the even interval
// of the data or, when there is none, 0. Returns a note per change.
inline std::vector<std::string> FixWellRange(std::vector<CLasSection>& sections, bool las3)
{
    std::vector<std::string> notes;
    CLasSection* well = nullptr;
    CLasSection* data = nullptr;
    for (CLasSection& s : sections)
        if (!well && EqualsNoCase(StoredName(s.m_name, las3), "Well")) well = &s;
    for (const char* name : {"ASCII", "LOG", "Log_Data"}) {
        for (CLasSection& s : sections)
            if (EqualsNoCase(StoredName(s.m_name, las3), name)) {
                data = &s;
                break;
            }
        if (data) break;
    }
    if (!well || !data || data->m_curves.empty() || !data->m_curves[0].m_isNumeric ||
        data->m_curves[0].m_numbers.empty())
        return notes;
    const std::vector<double>& x = data->m_curves[0].m_numbers;
    const double tolerance = 1e-7;
    auto fix = [&](const char* mnemonic, double wanted, const std::string& why) {
        for (CLasParam& p : well->m_params) {
            if (!EqualsNoCase(p.m_mnemonic, mnemonic)) continue;
            const std::string text = FormatNumber(wanted, 10);
            notes.push_back(std::string(mnemonic) + " " + Trim(p.m_value) + " " + why +
                            ": written as " + text);
            p.m_value = text;
            return;
        }
    };
    CLasParam p;
    if (well->FindParameterByMnemonic("STRT", &p) >= 0 &&
        std::fabs(std::atof(p.m_value.c_str()) - x.front()) > tolerance)
        fix("STRT", x.front(), "is not the first depth");
    if (well->FindParameterByMnemonic("STOP", &p) >= 0 &&
        std::fabs(std::atof(p.m_value.c_str()) - x.back()) > tolerance)
        fix("STOP", x.back(), "is not the last depth");
    if (well->FindParameterByMnemonic("STEP", &p) >= 0 && x.size() > 1) {
        auto evenBy = [&](double step) {
            for (size_t i = 1; i < x.size(); ++i)
                if (std::fabs(step + x[i - 1] - x[i]) > tolerance) return false;
            return true;
        };
        const double step = std::atof(p.m_value.c_str());
        if (step != 0.0 && !evenBy(step)) {
            const double interval = std::atof(FormatNumber(x[1] - x[0], 10).c_str());
            if (evenBy(interval))
                fix("STEP", interval, "is not the interval of the depths");
            else
                fix("STEP", 0.0, "does not fit depths that are not evenly spaced");
        }
    }
    return notes;
}

// What the writer said about a failure, as one line of text.
inline std::string DescribeWriterError(const CLasWriter& writer)
{
    const ELASFILEERROR code = writer.GetLastError();
    std::string text = std::string(ResultName(code)) + " (" + ResultMeaning(code) + ")";
    if (const char* section = writer.GetLastErrorSection())
        text += std::string(", section ") + section;
    if (const char* param = writer.GetLastErrorParam()) text += std::string(", mnemonic ") + param;
    if (writer.GetLastErrorColumn() >= 0)
        text += ", column " + std::to_string(writer.GetLastErrorColumn());
    if (writer.GetLastErrorRow() >= 0) text += ", row " + std::to_string(writer.GetLastErrorRow());
    return text;
}

struct ConvertResult {
    ELASFILEERROR code = LASFILE_OK;
    std::string stage;               // "read", "format", "add", "write"
    std::string message;             // what went wrong, for a person
    std::vector<std::string> notes;  // renamed or dropped sections
    int sectionsAdded = 0;
    bool versionLimit = false;  // refused for what LAS 2.0 cannot hold
};

// Reads `in`, hands every section but the Version section to a writer and
// writes `out`. The writer's last-error record is put into words.
inline ConvertResult ConvertFile(const std::string& in, const std::string& out,
                                 const ConvertOptions& options)
{
    ConvertResult result;
    CLasWriter writer;
    if (writer.SetFormat(options.toLas3, options.delimiter) != LASFILE_OK) {
        result.code = writer.GetLastError();
        result.stage = "format";
        result.message = "the output format was refused: " + DescribeWriterError(writer);
        if (!options.toLas3 && options.delimiter != ' ')
            result.message += "; LAS 2.0 allows the space delimiter only";
        return result;
    }

    CLasReader reader;
    const ELASFILEERROR readCode = reader.Open(tessel::TxString(in));
    if (readCode != LASFILE_OK) {
        result.code = readCode;
        result.stage = "read";
        result.message = std::string("reading ") + in + " failed with " + ResultName(readCode) +
                         " (" + ResultMeaning(readCode) + ")";
        if (!reader.IsOpen())
            result.message += ": the file cannot be opened";
        else if (reader.empty() && readCode == LASFILE_BAD_FORMAT)
            result.message += ": not a LAS file (it must begin with a ~Version section)";
        else
            result.message += " after " + std::to_string(reader.size()) + " section(s)";
        reader.Close();
        return result;
    }

    std::vector<CLasSection> sections;
    for (auto it = reader.begin(); it != reader.end(); ++it) {
        if (it == reader.begin()) continue;  // the writer makes its own version block
        CLasSection section = **it;
        if (options.mapNames) {
            const std::string name = MapSectionName(section.m_name, options.toLas3);
            if (name != section.m_name) {
                result.notes.push_back("section " + section.m_name + " written as " + name);
                section.m_name = name;
            }
            if (!section.m_association.empty())
                section.m_association = MapSectionName(section.m_association, options.toLas3);
        }
        // The LAS 2.0 writer writes one-letter names out in full; the link
        // of a data section must follow, or it names nothing.
        if (!options.toLas3 && section.m_type == LASSECTION_DATA)
            section.m_association = StoredName(section.m_association, false);
        sections.push_back(std::move(section));
    }
    reader.Close();
    if (options.fixWellRange)
        for (const std::string& note : FixWellRange(sections, options.toLas3))
            result.notes.push_back(note);

    for (const CLasSection& section : sections) {
        const ELASFILEERROR code = writer.AddSection(section);
        if (code == LASFILE_OK) {
            ++result.sectionsAdded;
            continue;
        }
        std::string why = DescribeWriterError(writer);
        const int column = writer.GetLastErrorColumn();
        const bool hasParam = writer.GetLastErrorParam() != nullptr;
        bool versionLimit = false;
        if (code == LASFILE_BAD_NAME && !hasParam) {
            if (!options.toLas3) {
                why +=
                    "; LAS 2.0 knows only the sections Well, Curve, Parameter, ASCII, Other "
                    "and Downhole";
                versionLimit = true;
            }
        } else if (code == LASFILE_BAD_NAME) {
            why +=
                " (a mnemonic or unit with one of . : { } | blank, a value with { } |, or a "
                "format without braces)";
        } else if (!options.toLas3 && code == LASFILE_BAD_VALUE && hasParam) {
            why += " (parameter associations exist only in LAS 3.0)";
            versionLimit = true;
        } else if (!options.toLas3 && code == LASFILE_BAD_VALUE && column >= 0 &&
                   column < static_cast<int>(section.m_curves.size()) &&
                   !section.m_curves[static_cast<size_t>(column)].m_isNumeric) {
            why +=
                " (" +
                std::string(section.m_curves[static_cast<size_t>(column)].m_definition.m_mnemonic) +
                " is a text curve; LAS 2.0 data must be numeric)";
            versionLimit = true;
        }
        if (options.dropUnsupported) {
            result.notes.push_back("section " + section.m_name + " left out: " + why);
            continue;
        }
        result.code = code;
        result.stage = "add";
        result.versionLimit = versionLimit;
        result.message = "section " + section.m_name + " cannot be written: " + why;
        return result;
    }

    const ELASFILEERROR writeCode = writer.Write(tessel::TxString(out));
    if (writeCode != LASFILE_OK) {
        result.code = writeCode;
        result.stage = "write";
        if (writeCode == LASFILE_CANCELLED) {
            result.message = "writing was cancelled";
        } else if (writer.GetLastError() == LASFILE_OK) {
            result.message =
                std::string("writing ") + out + " failed with " + ResultName(writeCode);
        } else {
            result.message =
                std::string("writing ") + out + " failed: " + DescribeWriterError(writer);
            if (writeCode == LASFILE_IO_FAILED && writer.GetLastErrorColumn() >= 0)
                result.message += " (an empty text value cannot be written)";
            const char* param = writer.GetLastErrorParam();
            if (writeCode == LASFILE_BAD_FORMAT && param &&
                (EqualsNoCase(param, "STRT") || EqualsNoCase(param, "STOP") ||
                 EqualsNoCase(param, "STEP")))
                result.message += std::string("; the Well section's ") + param +
                                  " does not agree with the depths of the data";
        }
    }
    return result;
}

}  // namespace quarl::examples

#endif
