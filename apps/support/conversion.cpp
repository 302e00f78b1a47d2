#include "support/conversion.h"

#include <cstdlib>

#include "support/text.h"

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
            if (EqualsNoCase(name, p.las2)) return p.las3;
        for (const Pair& p : pairs)
            if (EqualsNoCase(name, p.las2)) return p.las3;
    } else {
        for (const Pair& p : pairs)
            if (EqualsNoCase(name, p.las3)) return p.las2;
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
        if (!well && EqualsNoCase(StoredName(s.m_name, las3), "Well")) well = &s;
    for (size_t i = 0; const char* name = MainDataName(i); ++i) {
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
    auto fix = [&](const char* mnemonic, double wanted, const std::string& why) {
        for (CLasParam& p : well->m_params) {
            if (!EqualsNoCase(p.m_mnemonic, mnemonic)) continue;
            const std::string text = RoundTripNumber(wanted);
            notes.push_back(std::string(mnemonic) + " " + Trim(p.m_value) + " " + why +
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
            const double interval = std::atof(FormatNumber(x[1] - x[0], 10).c_str());
            if (evenBy(interval))
                fix("STEP", interval, "is not the interval of the depths");
            else
                fix("STEP", 0.0, "does not fit depths that are not evenly spaced");
        }
    }
    return notes;
}

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
                (EqualsNoCase(param, "STRT") || EqualsNoCase(param, "STOP") ||
                 EqualsNoCase(param, "STEP")))
                result.message += std::string("; the Well section's ") + param +
                                  " does not agree with the depths of the data";
        }
    }
    return result;
}

}  // namespace quarl::apps
