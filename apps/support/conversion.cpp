#include "support/conversion.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "common/text.h"

namespace quarl::apps {

std::string MapSectionName(const std::string& name, bool toLas3)
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
            if (common::EqualsNoCase(name, p.las2)) return p.las3;
        for (const Pair& p : pairs)
            if (common::EqualsNoCase(name, p.las2)) return p.las3;
    } else {
        for (const Pair& p : pairs)
            if (common::EqualsNoCase(name, p.las3)) return p.las2;
    }
    return name;
}

std::string StoredName(const std::string& name, bool las3)
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

std::vector<std::string> FixWellRange(std::vector<CLasSection>& sections, bool las3)
{
    std::vector<std::string> notes;
    CLasSection* well = nullptr;
    CLasSection* data = nullptr;
    for (CLasSection& s : sections)
        if (!well && common::EqualsNoCase(StoredName(s.m_name, las3), "Well")) well = &s;
    for (size_t i = 0; const char* name = MainDataName(i); ++i) {
        for (CLasSection& s : sections)
            if (common::EqualsNoCase(StoredName(s.m_name, las3), name)) {
                data = &s;
                break;
            }
        if (data) break;
    }
    if (!well || !data || data->m_curves.empty() || !data->m_curves[0].m_isNumeric ||
        data->m_curves[0].m_numbers.empty())
        return notes;
    const std::vector<double>& x = data->m_curves[0].m_numbers;
    auto fix = [&](const char* mnemonic, double wanted, const std::string& why) {
        for (CLasParam& p : well->m_params) {
            if (!common::EqualsNoCase(p.m_mnemonic, mnemonic)) continue;
            const std::string text = common::RoundTripNumber(wanted);
            notes.push_back(std::string(mnemonic) + " " + common::Trim(p.m_value) + " " + why +
                            ": written as " + text);
            p.m_value = text;
            return;
        }
    };
    CLasParam p;
    if (well->FindParameterByMnemonic("STRT", &p) >= 0 &&
        !DepthsAgree(std::atof(p.m_value.c_str()), x.front()))
        fix("STRT", x.front(), "is not the first depth");
    if (well->FindParameterByMnemonic("STOP", &p) >= 0 &&
        !DepthsAgree(std::atof(p.m_value.c_str()), x.back()))
        fix("STOP", x.back(), "is not the last depth");
    if (well->FindParameterByMnemonic("STEP", &p) >= 0 && x.size() > 1) {
        auto evenBy = [&](double step) { return FirstUnevenStep(x, step) == 0; };
        const double step = std::atof(p.m_value.c_str());
        if (step != 0.0 && !evenBy(step)) {
            const double interval = std::atof(common::FormatNumber(x[1] - x[0], 10).c_str());
            if (evenBy(interval))
                fix("STEP", interval, "is not the interval of the depths");
            else
                fix("STEP", 0.0, "does not fit depths that are not evenly spaced");
        }
    }
    return notes;
}

ConvertOptions RepairingOptions(ConvertOptions options)
{
    options.fixWellRange = true;
    options.dropUnsupported = true;
    options.dropRefusedLines = true;
    options.legalNames = true;
    options.dropTextCurves = true;
    return options;
}

std::string LegalName(const std::string& name, bool isUnit)
{
    std::string legal = name;
    for (char& c : legal) {
        if (c == '.' || c == ':' || c == '{' || c == '}' || c == '|' ||
            static_cast<unsigned char>(c) <= ' ')
            c = '_';
    }
    if (!isUnit && legal.find_first_not_of('_') == std::string::npos) legal = "UNKNOWN";
    return legal;
}

namespace {

std::string Upper(std::string text)
{
    for (char& c : text)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return text;
}

// A value without the bytes no value may hold: braces become parentheses,
// a bar a slash.
std::string LegalValue(std::string value)
{
    for (char& c : value) c = c == '{' ? '(' : c == '}' ? ')' : c == '|' ? '/' : c;
    return value;
}

// Renames a parameter's mnemonic and unit to legal names, unique among
// `taken`, and takes out of its value what no value may hold; a note when
// anything changed.
void LegalizeParam(CLasParam& param, const std::string& where, std::vector<std::string>& taken,
                   std::vector<std::string>& notes)
{
    std::string mnemonic = LegalName(param.m_mnemonic, false);
    const std::string base = mnemonic;
    for (int n = 2; std::find(taken.begin(), taken.end(), Upper(mnemonic)) != taken.end(); ++n)
        mnemonic = base + "_" + std::to_string(n);
    taken.push_back(Upper(mnemonic));
    const std::string unit = LegalName(param.m_unit, true);
    if (mnemonic != param.m_mnemonic)
        notes.push_back("mnemonic \"" + std::string(param.m_mnemonic) + "\" of " + where +
                        " written as " + mnemonic);
    if (unit != param.m_unit)
        notes.push_back("unit \"" + std::string(param.m_unit) + "\" of " + mnemonic + " in " +
                        where + " written as " + unit);
    const std::string value = LegalValue(param.m_value);
    if (value != param.m_value)
        notes.push_back("value of " + mnemonic + " in " + where + " written as \"" + value + "\"");
    param.m_mnemonic = mnemonic;
    param.m_unit = unit;
    param.m_value = value;
}

}  // namespace

std::vector<std::string> LegalizeNames(std::vector<CLasSection>& sections)
{
    std::vector<std::string> notes;
    for (CLasSection& section : sections) {
        std::vector<std::string> taken;
        for (CLasParam& param : section.m_params)
            LegalizeParam(param, "section " + section.m_name, taken, notes);
        taken.clear();
        std::vector<std::string> unused;
        for (CLasCurve& curve : section.m_curves)
            LegalizeParam(curve.m_definition, "section " + section.m_name, taken, unused);
    }
    return notes;
}

namespace {

// LAS 2.0 data hold numbers only: text curves go, with their definitions.
void DropTextCurves(std::vector<CLasSection>& sections, std::vector<std::string>& notes)
{
    for (CLasSection& data : sections) {
        if (data.m_type != LASSECTION_DATA) continue;
        CLasSection* definition = nullptr;
        for (CLasSection& s : sections)
            if (!data.m_association.empty() && common::EqualsNoCase(s.m_name, data.m_association))
                definition = &s;
        const bool paired = definition && definition->m_params.size() == data.m_curves.size();
        for (size_t i = data.m_curves.size(); i-- > 0;) {
            if (data.m_curves[i].m_isNumeric) continue;
            notes.push_back("curve " + std::string(data.m_curves[i].m_definition.m_mnemonic) +
                            " of " + data.m_name +
                            " holds text, which LAS 2.0 data cannot: left out");
            data.m_curves.erase(data.m_curves.begin() + static_cast<std::ptrdiff_t>(i));
            if (paired)
                definition->m_params.erase(definition->m_params.begin() +
                                           static_cast<std::ptrdiff_t>(i));
        }
    }
}

// Formats that say what the values are, so that a strict read takes them
// as they were read: a numeric curve of an array format ("{AF10.4}", read
// leniently as numbers) loses its array mark ("{F10.4}"); a curve that holds
// text gets "{S}". The definition line of the same mnemonic follows.
void FormatsOfValues(std::vector<CLasSection>& sections, std::vector<std::string>& notes)
{
    for (CLasSection& data : sections) {
        if (data.m_type != LASSECTION_DATA) continue;
        for (CLasCurve& curve : data.m_curves) {
            const std::string format = curve.m_definition.m_format;
            const bool array =
                format.size() > 2 && format[0] == '{' && (format[1] == 'A' || format[1] == 'a');
            const bool textFormat =
                format.size() > 1 && (format[1] == 'S' || format[1] == 's' || format[1] == '}');
            std::string wanted = format;
            if (curve.m_isNumeric && array) wanted.erase(1, 1);
            if (!curve.m_isNumeric && !textFormat) wanted = "{S}";
            if (wanted == format) continue;
            notes.push_back("format of " + std::string(curve.m_definition.m_mnemonic) +
                            " written as " + wanted + ": the values are " +
                            (curve.m_isNumeric ? "numbers" : "text"));
            for (CLasSection& s : sections)
                if (common::EqualsNoCase(s.m_name, data.m_association))
                    for (CLasParam& param : s.m_params)
                        if (param.m_mnemonic == curve.m_definition.m_mnemonic)
                            param.m_format = wanted;
            curve.m_definition.m_format = wanted;
        }
    }
}

bool TextWithBlanks(const std::vector<CLasSection>& sections)
{
    for (const CLasSection& section : sections)
        for (const CLasCurve& curve : section.m_curves)
            for (const CLasString& value : curve.m_strings)
                if (value.find(' ') != std::string::npos) return true;
    return false;
}

// The first curve of a data section is its index, which must hold numbers:
// the first numeric curve moves to the front, with its definition.
void PutNumericIndexFirst(std::vector<CLasSection>& sections, std::vector<std::string>& notes)
{
    for (CLasSection& data : sections) {
        if (data.m_type != LASSECTION_DATA || data.m_curves.empty() || data.m_curves[0].m_isNumeric)
            continue;
        size_t first = 0;
        while (first < data.m_curves.size() && !data.m_curves[first].m_isNumeric) ++first;
        if (first == data.m_curves.size()) continue;
        CLasSection* definition = nullptr;
        for (CLasSection& s : sections)
            if (!data.m_association.empty() && common::EqualsNoCase(s.m_name, data.m_association))
                definition = &s;
        std::rotate(data.m_curves.begin(),
                    data.m_curves.begin() + static_cast<std::ptrdiff_t>(first),
                    data.m_curves.begin() + static_cast<std::ptrdiff_t>(first) + 1);
        if (definition && definition->m_params.size() > first)
            std::rotate(definition->m_params.begin(),
                        definition->m_params.begin() + static_cast<std::ptrdiff_t>(first),
                        definition->m_params.begin() + static_cast<std::ptrdiff_t>(first) + 1);
        notes.push_back("curve " + std::string(data.m_curves[0].m_definition.m_mnemonic) + " of " +
                        data.m_name + " written first: the index of a data section holds numbers");
    }
}

}  // namespace

std::string DescribeWriterError(const CLasWriter& writer)
{
    const ELASFILEERROR code = writer.GetLastError();
    std::string text = std::string(ResultName(code)) + " (" + ResultDescription(code) + ")";
    if (const char* section = writer.GetLastErrorSection())
        text += std::string(", section ") + section;
    if (const char* param = writer.GetLastErrorParam()) text += std::string(", mnemonic ") + param;
    if (writer.GetLastErrorColumn() >= 0)
        text += ", column " + std::to_string(writer.GetLastErrorColumn());
    if (writer.GetLastErrorRow() >= 0) text += ", row " + std::to_string(writer.GetLastErrorRow());
    return text;
}

namespace {

// Removes the parameter line the writer named in its refusal of `section`,
// with a note; false when it named none. Curve definitions stay, for the
// data depend on them.
bool DropRefusedLine(const CLasWriter& writer, CLasSection& section,
                     std::vector<std::string>& notes)
{
    const char* mnemonic = writer.GetLastErrorParam();
    if (!mnemonic || section.m_type == LASSECTION_DEFINITION) return false;
    for (auto it = section.m_params.begin(); it != section.m_params.end(); ++it) {
        if (it->m_mnemonic != mnemonic) continue;
        notes.push_back("parameter " + std::string(mnemonic) + " of section " + section.m_name +
                        " left out: " + DescribeWriterError(writer));
        section.m_params.erase(it);
        return true;
    }
    return false;
}

}  // namespace

ConvertResult ConvertFile(const std::string& in, const std::string& out,
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
    reader.SetOptions(options.read);
    const ELASFILEERROR readCode = reader.Open(tessel::TxString(in));
    result.readNotes = reader.GetNotes();
    if (readCode != LASFILE_OK && options.keepPartial && reader.size() > 1) {
        result.notes.push_back(std::string("the read stopped with ") + ResultName(readCode) +
                               " after section " + (*reader.rbegin())->m_name +
                               " (kept as far as it was read); the rest of the file is not kept");
    } else if (readCode != LASFILE_OK) {
        result.code = readCode;
        result.stage = "read";
        result.message = std::string("reading ") + in + " failed with " + ResultName(readCode) +
                         " (" + ResultDescription(readCode) + ")";
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
        // The writer makes its own version block.
        if (it == reader.begin() && (common::EqualsNoCase((*it)->m_name, "Version") ||
                                     common::EqualsNoCase((*it)->m_name, "V")))
            continue;
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
    if (options.legalNames)
        for (const std::string& note : LegalizeNames(sections)) result.notes.push_back(note);
    if (options.dropTextCurves && !options.toLas3) DropTextCurves(sections, result.notes);
    if (options.dropTextCurves && options.toLas3) PutNumericIndexFirst(sections, result.notes);
    if (options.dropTextCurves) FormatsOfValues(sections, result.notes);
    if (options.dropTextCurves && options.toLas3 && options.delimiter == ' ' &&
        TextWithBlanks(sections)) {
        // A blank inside a text value would split it when read back.
        writer.SetFormat(true, '\t');
        result.notes.push_back("text values hold blanks: the data are delimited by tabs");
    }
    if (options.fixWellRange)
        for (const std::string& note : FixWellRange(sections, options.toLas3))
            result.notes.push_back(note);

    for (CLasSection& section : sections) {
        ELASFILEERROR code = writer.AddSection(section);
        while (code != LASFILE_OK && options.dropRefusedLines &&
               DropRefusedLine(writer, section, result.notes))
            code = writer.AddSection(section);
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
                (common::EqualsNoCase(param, "STRT") || common::EqualsNoCase(param, "STOP") ||
                 common::EqualsNoCase(param, "STEP")))
                result.message += std::string("; the Well section's ") + param +
                                  " does not agree with the depths of the data";
        }
    }
    return result;
}

}  // namespace quarl::apps
