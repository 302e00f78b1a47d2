// Repair mode: what AddSection and Validate change, in the writer's copies,
// so that the chosen version can hold a document, each change recorded.
#include <quarl/writer.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>

#include "foundation/number_parse.h"
#include "foundation/platform.h"
#include "foundation/section_index.h"
#include "foundation/section_names.h"
#include "writer/curve_limit.h"
#include "writer/number_format.h"

namespace quarl {

namespace {

struct NamePair {
    const char* from;
    const char* to;
};

// The names a section takes in LAS 3.0, and in LAS 2.0 (where one-letter
// names are also written out in full).
constexpr NamePair kToLas3[] = {
    {"W", "Well"},
    {"P", "Log_Parameter"},
    {"C", "Log_Definition"},
    {"A", "Log_Data"},
    {"L", "Log_Data"},
    {"LOG", "Log_Data"},
    {"D", "Downhole"},
    {"Parameter", "Log_Parameter"},
    {"Curve", "Log_Definition"},
    {"ASCII", "Log_Data"},
};
constexpr NamePair kToLas2[] = {
    {"Log_Parameter", "Parameter"},
    {"Log_Definition", "Curve"},
    {"Log_Data", "ASCII"},
    {"W", "Well"},
    {"C", "Curve"},
    {"P", "Parameter"},
    {"A", "ASCII"},
    {"L", "ASCII"},
    {"O", "Other"},
    {"D", "Downhole"},
};

bool IsTextFormat(const std::string& format)
{
    return format.size() > 1 && (format[1] == 'S' || format[1] == 's' || format[1] == '}');
}

std::string Quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

// Shortest decimal text that reads back as `value`, or `digits` significant
// digits when `digits` is above 0.
std::string NumberText(double value, int digits = 0)
{
    char buffer[detail::kGeneralNumberMax];
    return std::string(buffer, digits > 0 ? detail::FormatGeneral(buffer, value, digits)
                                          : detail::FormatShortest(buffer, value));
}

bool IsVersionLine(const CLasParam& param)
{
    for (const char* mnemonic : {"VERS", "WRAP", "DLM"})
        if (AsciiEqualNoCase(param.m_mnemonic.c_str(), mnemonic)) return true;
    return false;
}

size_t RowCount(const CLasSection& data)
{
    size_t rows = 0;
    for (const CLasCurve& curve : data.m_curves)
        rows = std::max(rows, static_cast<size_t>(curve.size()));
    return rows;
}

// The name a section takes in the version: the other version's names of the
// log sections mapped, one-letter names written out.
std::string RepairedSectionName(const std::string& name, bool las3)
{
    for (const NamePair& pair : las3 ? kToLas3 : kToLas2) {
        if (AsciiEqualNoCase(name.c_str(), pair.from)) return pair.to;
    }
    return name;
}

// A mnemonic or unit the writer takes: every byte that separates the fields
// of a line (". : { } |", blanks, control bytes) as "_".
std::string LegalFieldName(const std::string& name)
{
    std::string legal = name;
    for (char& c : legal) {
        if (c == '.' || c == ':' || c == '{' || c == '}' || c == '|' ||
            static_cast<unsigned char>(c) <= ' ')
            c = '_';
    }
    return legal;
}

}  // namespace

CLasString LasSectionNameIn(const char* name, bool isLas3)
{
    return RepairedSectionName(name ? name : "", isLas3);
}

const char* LasRepairKindName(ELASREPAIRKIND kind)
{
    static const char* const kNames[] = {
        "LASREPAIR_SECTION_RENAMED",
        "LASREPAIR_SECTION_LEFT_OUT",
        "LASREPAIR_SECTION_MERGED",
        "LASREPAIR_SECTION_NOT_WRITTEN",
        "LASREPAIR_ASSOCIATION",
        "LASREPAIR_MNEMONIC",
        "LASREPAIR_UNIT",
        "LASREPAIR_VALUE",
        "LASREPAIR_FORMAT",
        "LASREPAIR_LINE_LEFT_OUT",
        "LASREPAIR_CURVE_LEFT_OUT",
        "LASREPAIR_CURVE_MOVED",
        "LASREPAIR_DEFINITION_ADDED",
        "LASREPAIR_DELIMITER",
        "LASREPAIR_WELL_RANGE",
        "LASREPAIR_CURVE_PADDED",
        "LASREPAIR_SECTION_NEXT_RUN",
    };
    const auto index = static_cast<size_t>(kind);
    if (kind < 0 || index >= sizeof kNames / sizeof kNames[0]) return "LASREPAIR_UNKNOWN";
    return kNames[index];
}

void CLasWriter::Record(ELASREPAIRKIND kind, const std::string& section,
                        const std::string& mnemonic, const std::string& from, const std::string& to,
                        const std::string& text)
{
    CLasRepair repair;
    repair.kind = kind;
    repair.section = section;
    repair.mnemonic = mnemonic;
    repair.from = from;
    repair.to = to;
    repair.text = text;
    m_repairs.push_back(std::move(repair));
}

CLasSection* CLasWriter::FindStored(const std::string& name)
{
    const int32_t index = FindSectionIndexByName(name.c_str());
    return index < 0 ? nullptr : &m_sections[static_cast<size_t>(index)];
}

// AddSection in repair mode: the Version section is left out, names follow
// the version, a second section of a name joins the first, and lines are
// made legal. What the data need is repaired by Validate, when every
// section is there.
ELASFILEERROR CLasWriter::AddRepaired(const CLasSection& input)
{
    if (IsVersionSectionName(input.m_name.c_str())) {
        const bool own = std::all_of(input.m_params.begin(), input.m_params.end(), IsVersionLine);
        if (!own)
            Record(LASREPAIR_SECTION_LEFT_OUT, input.m_name, "", input.m_name, "",
                   "section " + input.m_name + " left out: the writer makes its own version block");
        return LASFILE_OK;
    }
    CLasSection section = input;
    if (!RepairSectionName(section)) return LASFILE_OK;
    const bool isData = section.m_type == LASSECTION_DATA;
    for (size_t i = 0; isData && i < section.m_curves.size(); ++i) {
        if (static_cast<size_t>(section.m_curves[i].size()) > detail::g_maxCurveValues)
            return SetLastError(LASFILE_BAD_VALUE, section.m_name.c_str(), nullptr,
                                static_cast<int32_t>(i), -1);
    }
    if (HasSectionNamed(section.m_name.c_str()) && !NameNextRun(section)) {
        const bool merges =
            section.m_type == LASSECTION_PARAMETER || section.m_type == LASSECTION_HEADER;
        if (merges && MergeIntoStored(section, input.m_name)) return LASFILE_OK;
        Record(LASREPAIR_SECTION_LEFT_OUT, section.m_name, "", input.m_name, "",
               "a second section " + input.m_name +
                   " left out: only parameter lines merge, and LAS 2.0 holds one log");
        return LASFILE_OK;
    }
    RepairParams(section);
    for (CLasCurve& curve : section.m_curves)
        curve.m_definition.m_mnemonic = LegalFieldName(curve.m_definition.m_mnemonic);
    Store(std::move(section));
    return LASFILE_OK;
}

// Gives the section the name the version stores it under, and a data
// section's link the name its definition section gets. False, with a
// record, when the version cannot hold the section at all.
bool CLasWriter::RepairSectionName(CLasSection& section)
{
    // A LAS 2.0 writer writes one-letter names out in any mode, and a LAS 2.0
    // file holds no links: neither is a change to record.
    const std::string name = RepairedSectionName(section.m_name, m_isLas3);
    if (name != section.m_name) {
        if (m_isLas3 || section.m_name.size() != 1)
            Record(LASREPAIR_SECTION_RENAMED, name, "", section.m_name, name,
                   "section " + section.m_name + " written as " + name);
        section.m_name = name;
    }
    const std::string link = RepairedSectionName(section.m_association, m_isLas3);
    if (section.m_type == LASSECTION_DATA && link != section.m_association) {
        if (m_isLas3)
            Record(
                LASREPAIR_ASSOCIATION, name, "", section.m_association, link,
                "section " + name + " linked to " + link + " rather than " + section.m_association);
        section.m_association = link;
    }
    const bool typeKnown =
        section.m_type == LASSECTION_DATA || section.m_type == LASSECTION_PARAMETER ||
        section.m_type == LASSECTION_DEFINITION || section.m_type == LASSECTION_HEADER;
    if (typeKnown && IsNameOfVersion(name)) return true;
    const char* why = !typeKnown ? "it has no type the writer writes"
                      : m_isLas3 ? "LAS 3.0 has no section Other nor names of one letter"
                                 : "LAS 2.0 knows only the sections Well, Curve, Parameter, "
                                   "ASCII, Other and Downhole";
    Record(LASREPAIR_SECTION_LEFT_OUT, name, "", name, "", "section " + name + " left out: " + why);
    return false;
}

// In LAS 3.0 a second section of a group ("Log_Definition" again, as files
// that repeat ~Curve and ~Ascii for each logging run have it) becomes the
// next run of the group: "Log2_Definition", with "Log2_Parameter" and
// "Log2_Data" beside it, the data linked to the definition of its own run.
// False, with nothing changed, in LAS 2.0 and for names of no group.
bool CLasWriter::NameNextRun(CLasSection& section)
{
    static const char* const kSuffixes[] = {"_Parameter", "_Definition", "_Data"};
    const std::string& name = section.m_name;
    for (const char* suffix : kSuffixes) {
        const size_t length = std::char_traits<char>::length(suffix);
        if (!m_isLas3 || name.size() <= length ||
            !AsciiEqualNoCase(name.c_str() + name.size() - length, suffix))
            continue;
        const std::string base = name.substr(0, name.size() - length);
        int run = 2;
        while (HasSectionNamed((base + std::to_string(run) + suffix).c_str())) ++run;
        const std::string runName = base + std::to_string(run) + suffix;
        Record(
            LASREPAIR_SECTION_NEXT_RUN, runName, "", name, runName,
            "a second section " + name + " written as " + runName + ", the next run of its group");
        section.m_name = runName;
        const std::string definition = base + std::to_string(run) + "_Definition";
        if (section.m_type == LASSECTION_DATA && HasSectionNamed(definition.c_str()) &&
            section.m_association != definition) {
            Record(LASREPAIR_ASSOCIATION, runName, "", section.m_association, definition,
                   "section " + runName + " linked to " + definition + " rather than " +
                       section.m_association);
            section.m_association = definition;
        }
        return true;
    }
    return false;
}

// Appends the lines of a parameter section to the stored section of its
// name; false when that one is a data section or of another type.
bool CLasWriter::MergeIntoStored(const CLasSection& section, const std::string& given)
{
    CLasSection* stored = FindStored(section.m_name);
    if (!stored || stored->m_type != section.m_type) return false;
    CLasSection lines = section;
    lines.m_name = stored->m_name;
    RepairParams(lines);
    for (CLasParam& param : lines.m_params) stored->m_params.push_back(std::move(param));
    Record(LASREPAIR_SECTION_MERGED, stored->m_name, "", given, stored->m_name,
           "a second section " + given + ": its lines appended to " + stored->m_name);
    return true;
}

void CLasWriter::RepairParams(CLasSection& section)
{
    for (CLasParam& param : section.m_params) RepairParam(param, section.m_name);
}

// A mnemonic and unit without separators; a value without braces, bars and
// colons; a format in braces; in LAS 2.0 no association. A mnemonic that
// repeats, or an empty one, the writer takes as it is: it stays.
void CLasWriter::RepairParam(CLasParam& param, const std::string& section)
{
    const std::string mnemonic = LegalFieldName(param.m_mnemonic);
    if (mnemonic != param.m_mnemonic) {
        Record(LASREPAIR_MNEMONIC, section, mnemonic, param.m_mnemonic, mnemonic,
               "mnemonic " + Quoted(param.m_mnemonic) + " of section " + section + " written as " +
                   mnemonic);
        param.m_mnemonic = mnemonic;
    }
    const std::string unit = LegalFieldName(param.m_unit);
    if (unit != param.m_unit) {
        Record(LASREPAIR_UNIT, section, mnemonic, param.m_unit, unit,
               "unit " + Quoted(param.m_unit) + " of " + mnemonic + " in section " + section +
                   " written as " + unit);
        param.m_unit = unit;
    }
    std::string value = param.m_value;
    // A colon would end the value when the line is read back strictly.
    for (char& c : value) c = c == '{' ? '(' : c == '}' ? ')' : c == '|' ? '/' : c == ':' ? '_' : c;
    if (value != param.m_value) {
        Record(LASREPAIR_VALUE, section, mnemonic, param.m_value, value,
               "value of " + mnemonic + " in section " + section + " written as " + Quoted(value));
        param.m_value = value;
    }
    std::string format = param.m_format;
    if (!format.empty() && format.find('{') == std::string::npos) format.insert(0, "{");
    if (!format.empty() && format.find('}') == std::string::npos) format += "}";
    if (format != param.m_format) {
        Record(LASREPAIR_FORMAT, section, mnemonic, param.m_format, format,
               "format of " + mnemonic + " in section " + section + " written as " + format);
        param.m_format = format;
    }
    if (!m_isLas3 && !param.m_association.empty()) {
        Record(LASREPAIR_ASSOCIATION, section, mnemonic, param.m_association, "",
               "association " + Quoted(param.m_association) + " of " + mnemonic + " in section " +
                   section + " left out: LAS 2.0 has none");
        param.m_association.clear();
    }
}

// Validate in repair mode, before anything is tested: every data section
// made writable with its definition section, a main data section where
// there is none, and the delimiter that text with blanks needs.
void CLasWriter::RepairDocument()
{
    for (size_t i = 0; i < m_sections.size();) {
        if (m_sections[i].m_type != LASSECTION_DATA) {
            ++i;
            continue;
        }
        RepairDataSection(m_sections[i]);
        const CLasSection& data = m_sections[i];
        if (data.m_curves.empty() || data.m_curves[0].m_isNumeric) {
            ++i;
            continue;
        }
        Record(LASREPAIR_SECTION_LEFT_OUT, data.m_name, "", data.m_name, "",
               "section " + data.m_name + " left out: it has no numeric curve to be its index");
        m_sections.erase(m_sections.begin() + static_cast<std::ptrdiff_t>(i));
        m_names.reset();  // its places changed: counted again when next asked
    }
    AddMissingDataSection();
    UseTextDelimiter();
}

void CLasWriter::RepairDataSection(CLasSection& data)
{
    CLasSection* definition = FindStored(data.m_association);
    if (definition && definition->m_type != LASSECTION_DEFINITION) definition = nullptr;
    // First one definition line per curve, so that lines move and go with
    // their curves.
    PadCurves(data);
    FillEmptyTexts(data);
    NullForNotANumber(data);
    if (definition) AddMissingDefinitions(data, *definition);
    if (!m_isLas3) DropTextCurves(data, definition);
    if (m_isLas3) PutNumericIndexFirst(data, definition);
    RepairFormats(data, definition);
}

// LAS 2.0 data hold numbers only: text curves go, with their definition
// lines when the definition section has one line per curve.
void CLasWriter::DropTextCurves(CLasSection& data, CLasSection* definition)
{
    const bool paired = definition && definition->m_params.size() == data.m_curves.size();
    for (size_t i = data.m_curves.size(); i-- > 0;) {
        if (data.m_curves[i].m_isNumeric) continue;
        const std::string mnemonic = data.m_curves[i].m_definition.m_mnemonic;
        Record(LASREPAIR_CURVE_LEFT_OUT, data.m_name, mnemonic, mnemonic, "",
               "curve " + mnemonic + " of " + data.m_name +
                   " holds text, which LAS 2.0 data cannot: left out");
        data.m_curves.erase(data.m_curves.begin() + static_cast<std::ptrdiff_t>(i));
        if (paired)
            definition->m_params.erase(definition->m_params.begin() +
                                       static_cast<std::ptrdiff_t>(i));
    }
}

// The first curve is the index and must hold numbers: the first numeric
// curve moves to the front, with its definition line.
void CLasWriter::PutNumericIndexFirst(CLasSection& data, CLasSection* definition)
{
    std::vector<CLasCurve>& curves = data.m_curves;
    if (curves.empty() || curves[0].m_isNumeric) return;
    size_t first = 0;
    while (first < curves.size() && !curves[first].m_isNumeric) ++first;
    if (first == curves.size()) return;
    const bool paired = definition && definition->m_params.size() == curves.size();
    std::rotate(curves.begin(), curves.begin() + static_cast<std::ptrdiff_t>(first),
                curves.begin() + static_cast<std::ptrdiff_t>(first) + 1);
    if (paired) {
        auto lines = definition->m_params.begin();
        std::rotate(lines, lines + static_cast<std::ptrdiff_t>(first),
                    lines + static_cast<std::ptrdiff_t>(first) + 1);
    }
    const std::string mnemonic = curves[0].m_definition.m_mnemonic;
    Record(LASREPAIR_CURVE_MOVED, data.m_name, mnemonic, std::to_string(first), "0",
           "curve " + mnemonic + " of " + data.m_name +
               " written first: the index of a data section holds numbers");
}

// Formats that say what the values are, so that a strict read takes them as
// they are held: a numeric curve loses the array mark ("{AF10.4}" as
// "{F10.4}"), a text curve gets "{S}". The definition line follows.
void CLasWriter::RepairFormats(CLasSection& data, CLasSection* definition)
{
    const bool paired = definition && definition->m_params.size() == data.m_curves.size();
    for (size_t c = 0; c < data.m_curves.size(); ++c) {
        CLasCurve& curve = data.m_curves[c];
        CLasParam& line = paired ? definition->m_params[c] : curve.m_definition;
        const std::string format = line.m_format;
        const bool array =
            format.size() > 2 && format[0] == '{' && (format[1] == 'A' || format[1] == 'a');
        std::string wanted = format;
        if (curve.m_isNumeric && array) wanted.erase(1, 1);
        if (!curve.m_isNumeric && !IsTextFormat(format)) wanted = "{S}";
        if (wanted == format) continue;
        Record(LASREPAIR_FORMAT, paired ? definition->m_name : data.m_name, line.m_mnemonic, format,
               wanted,
               "format of " + line.m_mnemonic + " written as " + wanted + ": the values are " +
                   (curve.m_isNumeric ? "numbers" : "text"));
        line.m_format = wanted;
        curve.m_definition.m_format = wanted;
    }
}

// The text that stands for a missing value: the NULL value of the Well
// section, or "nan" (NaN as the writer writes it) when it has none.
std::string CLasWriter::MissingValueText()
{
    const CLasSection* well = FindStored("Well");
    CLasParam null;
    if (well && well->FindParameterByMnemonic("NULL", &null) >= 0 &&
        !std::isnan(ParseNumber(null.m_value.c_str())))
        return null.m_value;
    return "nan";
}

// A number that is no number (NaN: a lenient read's "ERR", "-", "(null)")
// is written as the Well section's NULL value, as LAS marks a value that was
// never measured, one record per curve; without a NULL value it stays NaN.
void CLasWriter::NullForNotANumber(CLasSection& data)
{
    const std::string text = MissingValueText();
    if (text == "nan") return;
    const double null = ParseNumber(text.c_str());
    for (CLasCurve& curve : data.m_curves) {
        size_t filled = 0;
        for (double& value : curve.m_numbers) {
            if (!std::isnan(value)) continue;
            value = null;
            ++filled;
        }
        if (filled == 0) continue;
        const std::string mnemonic = curve.m_definition.m_mnemonic;
        Record(LASREPAIR_VALUE, data.m_name, mnemonic, "nan", text,
               std::to_string(filled) + " value(s) of curve " + mnemonic + " of " + data.m_name +
                   " that are no number written as the NULL value " + text);
    }
}

// Curves shorter than the longest one get missing values at their end.
void CLasWriter::PadCurves(CLasSection& data)
{
    const size_t rows = RowCount(data);
    const std::string text = MissingValueText();
    for (CLasCurve& curve : data.m_curves) {
        const size_t size = static_cast<size_t>(curve.size());
        if (size == rows) continue;
        if (curve.m_isNumeric)
            curve.m_numbers.resize(rows, ParseNumber(text.c_str()));
        else
            curve.m_strings.resize(rows, CLasString(text));
        const std::string mnemonic = curve.m_definition.m_mnemonic;
        Record(LASREPAIR_CURVE_PADDED, data.m_name, mnemonic, std::to_string(size),
               std::to_string(rows),
               "curve " + mnemonic + " of " + data.m_name + " had " + std::to_string(size) +
                   " of " + std::to_string(rows) + " values: the rest written as " + text);
    }
}

// An empty text value cannot be written: it becomes the missing value, one
// record per curve.
void CLasWriter::FillEmptyTexts(CLasSection& data)
{
    for (CLasCurve& curve : data.m_curves) {
        size_t filled = 0;
        std::string text;
        for (CLasString& value : curve.m_strings) {
            if (!value.empty()) continue;
            if (text.empty()) text = MissingValueText();
            value = text;
            ++filled;
        }
        if (filled == 0) continue;
        const std::string mnemonic = curve.m_definition.m_mnemonic;
        Record(LASREPAIR_VALUE, data.m_name, mnemonic, "", text,
               std::to_string(filled) + " empty value(s) of curve " + mnemonic + " of " +
                   data.m_name + " written as " + text);
    }
}

// A definition section of fewer lines than its data section has curves
// gets the lines of the curves past its end; one of more lines than curves
// gives an empty curve per line past the end when there are no rows, and
// otherwise loses those lines.
void CLasWriter::AddMissingDefinitions(CLasSection& data, CLasSection& definition)
{
    std::vector<CLasParam>& lines = definition.m_params;
    if (lines.empty()) return;  // Validate fills it from the curves
    for (size_t c = lines.size(); c < data.m_curves.size(); ++c) {
        CLasParam line = data.m_curves[c].m_definition;
        RepairParam(line, definition.m_name);
        Record(LASREPAIR_DEFINITION_ADDED, definition.m_name, line.m_mnemonic, "", line.m_mnemonic,
               "curve " + std::to_string(c + 1) + " of " + data.m_name +
                   " had no definition line: " + line.m_mnemonic + " added");
        lines.push_back(line);
    }
    const bool noRows = RowCount(data) == 0;
    while (lines.size() > data.m_curves.size()) {
        const CLasParam& line = lines[data.m_curves.size()];
        if (noRows) {
            CLasCurve curve;
            curve.m_isNumeric = !IsTextFormat(line.m_format) || !m_isLas3;
            curve.m_definition = line;
            data.m_curves.push_back(curve);
            continue;
        }
        Record(LASREPAIR_LINE_LEFT_OUT, definition.m_name, line.m_mnemonic, line.m_mnemonic, "",
               "definition line " + line.m_mnemonic + " of " + definition.m_name +
                   " left out: " + data.m_name + " has no column for it");
        lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(data.m_curves.size()));
    }
}

// A document without a main data section gets one without rows, so that
// the definition section is filled and checked as for any other document:
// one empty curve per line of the log definition section, which is added
// empty when it is missing too. Neither is written when it holds nothing
// (WrittenSectionCount), so nothing is recorded here.
void CLasWriter::AddMissingDataSection()
{
    if (FindMainDataSection() >= 0) return;
    const std::string definitionName = m_isLas3 ? "Log_Definition" : "Curve";
    CLasSection* definition = FindStored(definitionName);
    if (!definition) {
        CLasSection added;
        added.m_name = definitionName;
        added.m_type = LASSECTION_DEFINITION;
        Store(std::move(added));
        definition = &m_sections.back();
    }
    CLasSection data;
    data.m_name = m_isLas3 ? "Log_Data" : "ASCII";
    data.m_type = LASSECTION_DATA;
    data.m_association = definition->m_name;
    for (const CLasParam& line : definition->m_params) {
        CLasCurve curve;
        curve.m_isNumeric = !m_isLas3 || !IsTextFormat(line.m_format) || data.m_curves.empty();
        curve.m_definition = line;
        data.m_curves.push_back(curve);
    }
    Store(std::move(data));
}

namespace {

bool HoldsNothing(const CLasSection& section)
{
    if (!section.m_params.empty()) return false;
    for (const CLasCurve& curve : section.m_curves)
        if (curve.size() > 0) return false;
    return true;
}

}  // namespace

// How many of the ordered sections are written: all of them, but in repair
// mode the sections that hold nothing at the end of the document, since a
// strict read refuses a file that ends in a section header. Each is recorded
// once, however often the document is written.
size_t CLasWriter::WrittenSectionCount()
{
    size_t count = m_sections.size();
    if (!m_repair) return count;
    while (count > 0 && HoldsNothing(m_sections[count - 1])) {
        const std::string& name = m_sections[--count].m_name;
        const auto same = [&](const CLasRepair& r) {
            return r.kind == LASREPAIR_SECTION_NOT_WRITTEN && r.section == name;
        };
        if (std::none_of(m_repairs.begin(), m_repairs.end(), same))
            Record(LASREPAIR_SECTION_NOT_WRITTEN, name, "", name, "",
                   "section " + name +
                       " holds no lines and no rows and is not written: a file cannot end in a "
                       "section header");
    }
    return count;
}

namespace {

// The text value of the sections that holds `delimiter`, and its curve;
// null when none does.
const CLasString* TextHolding(const std::vector<CLasSection>& sections, char delimiter,
                              const CLasSection** section, const CLasCurve** curve)
{
    for (const CLasSection& s : sections) {
        for (const CLasCurve& c : s.m_curves) {
            for (const CLasString& value : c.m_strings) {
                if (value.find(delimiter) == std::string::npos) continue;
                *section = &s;
                *curve = &c;
                return &value;
            }
        }
    }
    return nullptr;
}

const char* DelimiterWords(char delimiter)
{
    return delimiter == ' ' ? "blanks" : delimiter == ',' ? "commas" : "tabs";
}

}  // namespace

// A delimiter inside a text value would split it when read back: LAS 3.0
// data whose text holds the delimiter are delimited by tabs, or by commas
// or blanks, the first that no text holds.
void CLasWriter::UseTextDelimiter()
{
    const CLasSection* section = nullptr;
    const CLasCurve* curve = nullptr;
    if (!m_isLas3 || !TextHolding(m_sections, m_delimiter, &section, &curve)) return;
    for (const char other : {'\t', ',', ' '}) {
        const CLasSection* unused = nullptr;
        const CLasCurve* unusedCurve = nullptr;
        if (other == m_delimiter || TextHolding(m_sections, other, &unused, &unusedCurve)) continue;
        Record(LASREPAIR_DELIMITER, section->m_name, curve->m_definition.m_mnemonic,
               std::string(1, m_delimiter), std::string(1, other),
               std::string("text values hold ") + DelimiterWords(m_delimiter) +
                   ": the data are delimited by " + DelimiterWords(other));
        m_delimiter = other;
        return;
    }
}

// STRT and STOP take the first and last depth of the data; an uneven STEP
// becomes the even interval of the depths or, when there is none, 0.
void CLasWriter::RepairWellRange(const CLasSection& data, CLasSection& well)
{
    if (data.m_curves.empty() || !data.m_curves[0].m_isNumeric) return;
    const std::vector<double>& depths = data.m_curves[0].m_numbers;
    if (depths.empty()) return;
    const auto fix = [&](const char* mnemonic, double wanted, const std::string& why) {
        const int32_t index = well.FindParameterByMnemonic(mnemonic, nullptr);
        CLasParam& param = well.m_params[static_cast<size_t>(index)];
        const std::string text = NumberText(wanted);
        Record(LASREPAIR_WELL_RANGE, well.m_name, param.m_mnemonic, param.m_value, text,
               std::string(mnemonic) + " " + param.m_value + " " + why + ": written as " + text);
        param.m_value = text;
    };
    CLasParam param;
    if (well.FindParameterByMnemonic("STRT", &param) >= 0 &&
        !DepthsAgree(ParseNumber(param.m_value.c_str()), depths.front()))
        fix("STRT", depths.front(), "is not the first depth");
    if (well.FindParameterByMnemonic("STOP", &param) >= 0 &&
        !DepthsAgree(ParseNumber(param.m_value.c_str()), depths.back()))
        fix("STOP", depths.back(), "is not the last depth");
    if (well.FindParameterByMnemonic("STEP", &param) < 0 || depths.size() < 2) return;
    const double step = ParseNumber(param.m_value.c_str());
    if (step == 0.0 || FirstUnevenStep(depths, step) == 0) return;
    const double interval = ParseNumber(NumberText(depths[1] - depths[0], 10).c_str());
    if (FirstUnevenStep(depths, interval) == 0)
        fix("STEP", interval, "is not the interval of the depths");
    else
        fix("STEP", 0.0, "does not fit depths that are not evenly spaced");
}

}  // namespace quarl
