// The tests' window on CLasReader's private parts, helpers that read a LAS
// text through a scratch file, and a text form of what was read.
#ifndef QUARL_TESTS_READER_ACCESS_H
#define QUARL_TESTS_READER_ACCESS_H

#include <quarl/reader.h>

#include <memory>
#include <sstream>

#include "support/test_util.h"

namespace quarl::detail {

struct ReaderAccess {
    static ELASFILEERROR ParseParameterLine(const CLasReader& r, const char* line, CLasParam& param)
    {
        return r.ParseParameterLine(line, param);
    }
    static int32_t FindSectionIndexByName(const CLasReader& r, const char* name)
    {
        return r.FindSectionIndexByName(name);
    }
    static int32_t FindDefinition(const CLasReader& r, const char* name, std::string* found)
    {
        return r.FindDefinitionSectionForDataSection(name, found);
    }
    static void AddSection(CLasReader& r, const std::string& name)
    {
        r.m_sections.push_back(std::make_shared<CLasSection>());
        r.m_sections.back()->m_name = name;
        r.m_sections.back()->m_type = LASSECTION_DEFINITION;
    }
    static uint64_t RowsInBlocks(const CLasReader& r) { return r.m_rowsInBlocks; }
    static uint64_t BytesKept(const CLasReader& r) { return r.m_bytesKept; }
    static void SetLas3(CLasReader& r, bool isLas3) { r.m_isLas3 = isLas3; }
    // "3 W ," for LAS 3.0, wrapped, comma; "2 - " for LAS 2.0, unwrapped, blank.
    static std::string Format(const CLasReader& r)
    {
        return std::string(r.IsLas3() ? "3 " : "2 ") + (r.IsWrapped() ? "W " : "- ") + r.GetDelimiter();
    }
};

}  // namespace quarl::detail

namespace quarl::test {

using Access = detail::ReaderAccess;

// Writes `text` to a scratch file and opens it with `reader`, which keeps
// what it read after the file is gone.
inline ELASFILEERROR OpenText(CLasReader& reader, const std::string& text)
{
    TempDir dir;
    return reader.Open(tessel::TxString(dir.Write("t.las", text)));
}

// A section as "name:type", "/flags" when there are any, and the number of
// parameter lines in parentheses, or for a data section its association and
// the values of each curve: "Log_Data:2|Log_Definition{1,2;"a","b"}".
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
        for (size_t r = 0; r < static_cast<size_t>(s.m_curves[c].size()); ++r) {
            out << (r ? "," : "");
            if (s.m_curves[c].m_isNumeric)
                out << s.m_curves[c].m_numbers[r];
            else
                out << '"' << s.m_curves[c].m_strings[r] << '"';
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
        text += (text.empty() ? "" : " ") + Dump(reader.GetSection(uint64_t{i}));
    return text;
}

// A LAS 2.0 head: Version (with `wrap` and `extra` lines), Well, and Curve with `curves`.
inline std::string Las20Head(const std::string& curves, const char* wrap = "NO", const std::string& extra = "")
{
    return std::string("~Version\nVERS. 2.0 : v\nWRAP. ") + wrap + " : w\n" + extra +
           "~Well\nSTRT.M 1 : s\nSTOP.M 3 : s\nSTEP.M 1 : s\n~Curve\n" + curves;
}

// A LAS 3.0 head with the delimiter word `dlm` and Log_Definition with `definitions`.
inline std::string Las30Head(const std::string& definitions, const char* dlm = "SPACE", const char* wrap = "NO")
{
    return std::string("~Version\nVERS. 3.0 : v\nWRAP. ") + wrap + " : w\nDLM. " + dlm +
           " : d\n~Well\nSTEP.M 1 : s\n~Log_Definition\n" + definitions;
}

}  // namespace quarl::test

#endif
