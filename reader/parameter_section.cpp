// Sections of parameter lines: Version, Well, Parameter, Curve and every
// "_Parameter" and "_Definition" section. The VERS, WRAP and DLM lines of the
// Version section decide how the rest of the file is read.
#include <quarl/reader.h>

#include <climits>
#include <cstring>
#include <memory>
#include <string>

#include "foundation/delimiter_words.h"
#include "foundation/platform.h"
#include "foundation/section_names.h"
#include "reader/reader_rules.h"

namespace quarl {

namespace {

// atoi in the "C" locale: white space, a sign, then digits; 0 without any.
// Saturates instead of overflowing.
long LeadingInteger(const char* text)
{
    while (*text == ' ' || (*text >= '\t' && *text <= '\r')) ++text;
    bool negative = false;
    if (*text == '+' || *text == '-') negative = *text++ == '-';
    long value = 0;
    for (; *text >= '0' && *text <= '9'; ++text) {
        if (value < LONG_MAX / 10) value = value * 10 + (*text - '0');
    }
    return negative ? -value : value;
}

bool IsHeaderName(const std::string& name)
{
    return IsVersionSectionName(name.c_str()) || AsciiEqualNoCase(name.c_str(), "Well") ||
           AsciiEqualNoCase(name.c_str(), "W");
}

ELASSECTIONTYPE ParameterSectionType(const std::string& name, bool isDefinition)
{
    if (IsHeaderName(name)) return LASSECTION_HEADER;
    return isDefinition ? LASSECTION_DEFINITION : LASSECTION_PARAMETER;
}

char DelimiterFromValue(const CLasString& value, char current)
{
    if (value.empty()) return current;
    char named = current;
    return DelimiterOfWord(value.c_str(), &named) ? named : value[0];
}

}  // namespace

// VERS: a version written against the period ("VERS.2.0") is taken from the
// unit; a value from "3" upwards (any byte from 0x33 to 0x7F) makes the file
// version 3. WRAP: "Y" or "y" in the value, or "Y" directly behind the
// period, turns wrap mode on. DLM: the column delimiter of data rows. The
// flags are never turned off again within one read.
void CLasReader::ApplyVersionLine(CLasParam& param)
{
    const char* mnemonic = param.m_mnemonic.c_str();
    if (AsciiEqualNoCase(mnemonic, "VERS")) {
        if (param.m_value.empty() && !param.m_unit.empty() &&
            LeadingInteger(param.m_unit.c_str()) >= 1)
            param.m_value = param.m_unit;
        if (!param.m_value.empty() && static_cast<signed char>(param.m_value[0]) >= 0x33)
            m_isLas3 = true;
        m_isVersion1 = !param.m_value.empty() && param.m_value[0] == '1';
    } else if (AsciiEqualNoCase(mnemonic, "WRAP")) {
        if (!param.m_value.empty() && (param.m_value[0] == 'y' || param.m_value[0] == 'Y'))
            m_isWrapped = true;
        else if (!param.m_unit.empty() && param.m_unit[0] == 'Y')
            m_isWrapped = true;
    } else if (AsciiEqualNoCase(mnemonic, "DLM")) {
        m_delimiter = DelimiterFromValue(param.m_value, m_delimiter);
    }
}

// The section is stored before its first line is read, so that a failure
// leaves it in the list with the lines read so far. A refused line is not
// stored. The end of the file behind at least one line is the normal end.
ELASFILEERROR CLasReader::ReadParameterSection(bool isDefinition)
{
    const char* line = Line();
    if (!line || line[0] != '~') return LASFILE_BAD_FORMAT;
    std::string name;
    if (!ParseSectionHeader(line, &name, nullptr)) return LASFILE_BAD_FORMAT;
    name = SectionTitle(name);
    if (!Spend(sizeof(CLasSection) + name.size())) return LASFILE_OUT_OF_MEMORY;
    const bool isVersion = IsVersionSectionName(name.c_str());

    auto stored = std::make_shared<CLasSection>();
    stored->m_type = ParameterSectionType(name, isDefinition);
    stored->m_flags = IsLogDefinitionName(name.c_str()) ? CLasSection::kFlagLogDefinition : 0;
    stored->m_name = std::move(name);
    StoreSection(stored);
    CLasSection& section = *stored;

    ELASFILEERROR result = ReadLine();
    if (result == LASFILE_IO_FAILED) return HeaderAtEnd(section.m_name);
    if (result != LASFILE_OK) return result;
    for (;;) {
        line = Line();
        if (!line || line[0] == '~') return LASFILE_OK;
        result = ReadParameterLine(section, isVersion);
        if (result != LASFILE_OK) return result;
        result = ReadLine();
        if (result == LASFILE_IO_FAILED) return LASFILE_OK;
        if (result != LASFILE_OK) return result;
    }
}

// The current line into the section. A line that is no parameter line ends
// the read; leniently it is passed over with a note.
ELASFILEERROR CLasReader::ReadParameterLine(CLasSection& section, bool isVersion)
{
    CLasParam param;
    unsigned relaxed = 0;
    if (ParseParameterLineAs(Line(), param, m_options.lenient, relaxed) != LASFILE_OK) {
        if (!m_options.lenient)
            return Stop(LASFILE_BAD_FORMAT,
                        "a line of a parameter section is not MNEM.UNIT VALUE : DESCRIPTION");
        Note(LASNOTE_LINE_PASSED_OVER, "no parameter line: passed over");
        return LASFILE_OK;
    }
    const std::string quoted = param.m_mnemonic + " = \"" + param.m_value + "\"";
    if (relaxed & kRelaxedNoPeriod)
        Note(LASNOTE_NO_PERIOD, "no period behind " + param.m_mnemonic + ": empty unit");
    if (relaxed & kValueCutAtColon)
        Note(LASNOTE_VALUE_CUT, "value cut at a colon inside a time: " + quoted);
    if (relaxed & kColonsKept) Note(LASNOTE_VALUE_WITH_COLONS, "value keeps its colons: " + quoted);
    if (relaxed & kMnemonicPeriods)
        Note(LASNOTE_MNEMONIC_PERIODS, "mnemonic " + param.m_mnemonic + " ends at a double period");
    if (relaxed & kUnitColons)
        Note(LASNOTE_UNIT_WITH_COLONS,
             "unit of " + param.m_mnemonic + " keeps its colons: \"" + param.m_unit + "\"");
    if (m_options.lenient && section.m_type == LASSECTION_DEFINITION && param.m_mnemonic.empty()) {
        param.m_mnemonic =
            NextUnknownName(section.m_params,
                            [](const CLasParam& p) -> const std::string& { return p.m_mnemonic; });
        Note(LASNOTE_UNNAMED_CURVE, "a curve without a mnemonic named " + param.m_mnemonic);
    }
    if (!Spend(ParamBytes(param))) return LASFILE_OUT_OF_MEMORY;
    section.m_params.push_back(std::move(param));
    if (isVersion)
        ApplyVersionLine(section.m_params.back());
    else if (m_options.lenient && m_isVersion1)
        ApplyLas12WellLine(section, section.m_params.back());
    return LASFILE_OK;
}

// LAS 1.2 writers put the word that describes a Well line in front of the
// colon and the value behind it ("COMP. COMPANY: ANY OIL CO"), except on the
// depth and null lines.
void CLasReader::ApplyLas12WellLine(const CLasSection& section, CLasParam& param)
{
    if (!AsciiEqualNoCase(section.m_name.c_str(), "Well") &&
        !AsciiEqualNoCase(section.m_name.c_str(), "W"))
        return;
    for (const char* kept : {"STRT", "STOP", "STEP", "NULL"}) {
        if (AsciiEqualNoCase(param.m_mnemonic.c_str(), kept)) return;
    }
    // Text only in front of the colon ("UWI .   UNIQUE WELL ID:") is the
    // description too.
    const bool describedOnly = param.m_description.empty() && std::strchr(Line(), ':');
    if (param.m_value.empty() || (param.m_description.empty() && !describedOnly)) return;
    std::swap(param.m_value, param.m_description);
    Note(LASNOTE_LAS12_WELL_VALUE, "LAS 1.2 Well line: " + param.m_mnemonic + " = \"" +
                                       param.m_value + "\", described as \"" + param.m_description +
                                       "\"");
}

}  // namespace quarl
