#include "support/conversion.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "support/text.h"

namespace quarl::apps {

ConvertOptions RepairingOptions(ConvertOptions options)
{
    options.repair = true;
    return options;
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

// Without repair: the section under its name in the target version, with a
// note when that differs.
// (A LAS 2.0 writer writes one-letter names out itself, without a note.)
void MapNames(CLasSection& section, bool toLas3, std::vector<std::string>& notes)
{
    const std::string name = LasSectionNameIn(section.m_name.c_str(), toLas3);
    if (name != section.m_name && (toLas3 || section.m_name.size() != 1)) {
        notes.push_back("section " + section.m_name + " written as " + name);
        section.m_name = name;
    }
    section.m_association = LasSectionNameIn(section.m_association.c_str(), toLas3);
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

    writer.SetRepair(options.repair);
    for (auto it = reader.begin(); it != reader.end(); ++it) {
        const bool version = it == reader.begin() && (EqualsNoCase((*it)->m_name, "Version") ||
                                                      EqualsNoCase((*it)->m_name, "V"));
        // The writer makes its own version block; in repair mode it says
        // what it leaves out of the one handed in.
        if (version && !options.repair) continue;
        CLasSection section = **it;
        if (options.mapNames && !options.repair) MapNames(section, options.toLas3, result.notes);
        // The LAS 2.0 writer writes one-letter names out in full; the link
        // of a data section must follow, or it names nothing.
        if (!options.toLas3 && section.m_type == LASSECTION_DATA &&
            section.m_association.size() == 1)
            section.m_association = LasSectionNameIn(section.m_association.c_str(), false);
        const ELASFILEERROR code = writer.AddSection(section);
        if (code == LASFILE_OK) {
            result.sectionsAdded += version ? 0 : 1;
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
        result.code = code;
        result.stage = "add";
        result.versionLimit = versionLimit;
        result.message = "section " + section.m_name + " cannot be written: " + why;
        return result;
    }

    const ELASFILEERROR writeCode = writer.Write(tessel::TxString(out));
    result.repairs = writer.GetRepairs();
    for (const CLasRepair& repair : result.repairs) result.notes.push_back(repair.text);
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
