// The test suite's window on the private operations and fields of
// CLasReader, and helpers that read a LAS text through a scratch file.
#ifndef QUARL_TESTS_READER_ACCESS_H
#define QUARL_TESTS_READER_ACCESS_H

#include <memory>
#include <sstream>
#include <string>

#include <quarl/reader.h>

#include "support/test_util.h"

namespace quarl::detail {

struct ReaderAccess {
    static ELASFILEERROR ParseParameterLine(const CLasReader& reader, const char* line, CLasParam& param)
    {
        return reader.ParseParameterLine(line, param);
    }
    static int32_t FindSectionIndexByName(const CLasReader& reader, const char* name)
    {
        return reader.FindSectionIndexByName(name);
    }
    static int32_t FindDefinition(const CLasReader& reader, const char* name, std::string* found)
    {
        return reader.FindDefinitionSectionForDataSection(name, found);
    }
    static void AddSection(CLasReader& reader, const std::string& name)
    {
        auto section = std::make_shared<CLasSection>();
        section->m_name = name;
        section->m_type = LASSECTION_DEFINITION;
        reader.m_sections.push_back(section);
    }
    static void SetLas3(CLasReader& reader, bool isLas3) { reader.m_isLas3 = isLas3; }
    // "3 W ," for LAS 3.0, wrapped, comma; "2 - " for LAS 2.0, unwrapped, blank.
    static std::string Format(const CLasReader& reader)
    {
        return std::string(reader.m_isLas3 ? "3 " : "2 ") + (reader.m_isWrapped ? "W " : "- ") + reader.m_delimiter;
    }
};

}  // namespace quarl::detail

namespace quarl::test {

using Access = detail::ReaderAccess;

// Writes `text` to a scratch file and opens it with `reader`. The reader
// keeps what it read after the scratch folder is gone.
inline ELASFILEERROR OpenText(CLasReader& reader, const std::string& text)
{
    TempDir dir;
    return reader.Open(tessel::TxString(dir.Write("t.las", text)));
}

// One section as text: "name:type", "/flags" when there are any, with the number of parameter lines in
// parentheses, or for a data section its association and the values of
// each curve, "Log_Data:2|Log_Definition{1,2;a,b}". Text values are quoted.
inline std::string Dump(const CLasSection& s)
{
    std::ostringstream out;
    out << s.m_name << ':' << s.m_type;
    if (s.m_flags) out << '/' << s.m_flags;
    if (s.m_type != LASSECTION_DATA) {
        out << '(' << s.m_params.size() << ')';
        return out.str();
    }
    out << '|' << s.m_association << '{';
    for (size_t c = 0; c < s.m_curves.size(); ++c) {
        out << (c ? ";" : "");
        const CLasCurve& curve = s.m_curves[c];
        for (int32_t r = 0; r < curve.size(); ++r) {
            out << (r ? "," : "");
            if (curve.m_isNumeric) {
                out << curve.m_numbers[static_cast<size_t>(r)];
            } else {
                out << '"' << curve.m_strings[static_cast<size_t>(r)] << '"';
            }
        }
    }
    out << '}';
    return out.str();
}

// Every section of the reader from `first` on, joined by blanks.
inline std::string Dump(const CLasReader& reader, size_t first = 0)
{
    std::string text;
    for (size_t i = first; i < reader.size(); ++i)
        text += (text.empty() ? "" : " ") + Dump(reader.GetSection(static_cast<uint64_t>(i)));
    return text;
}

// The head of a LAS 2.0 file: Version (with `wrap` and `extra` lines), Well
// and Curve sections with the given mnemonic lines.
inline std::string Las20Head(const std::string& curves, const char* wrap = "NO", const std::string& extra = "")
{
    return std::string("~Version\nVERS. 2.0 : v\nWRAP. ") + wrap + " : w\n" + extra +
           "~Well\nSTRT.M 1 : s\nSTOP.M 3 : s\nSTEP.M 1 : s\n~Curve\n" + curves;
}

// The head of a LAS 3.0 file with the given delimiter word and a
// Log_Definition section.
inline std::string Las30Head(const std::string& definitions, const char* dlm = "SPACE", const char* wrap = "NO")
{
    return std::string("~Version\nVERS. 3.0 : v\nWRAP. ") + wrap + " : w\nDLM. " + dlm +
           " : d\n~Well\nSTEP.M 1 : s\n~Log_Definition\n" + definitions;
}

}  // namespace quarl::test

#endif
