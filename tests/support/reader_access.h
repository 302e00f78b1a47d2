// The test suite's window on the private operations and fields of
// CLasReader, and a helper that reads a LAS text through a scratch file.
#ifndef QUARL_TESTS_READER_ACCESS_H
#define QUARL_TESTS_READER_ACCESS_H

#include <memory>
#include <string>

#include <quarl/reader.h>

#include "support/test_util.h"

namespace quarl::detail {

struct ReaderAccess {
    static ELASFILEERROR ParseParameterLine(const CLasReader& reader, const char* line,
                                            CLasParam& param)
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
    static void AddSection(CLasReader& reader, const std::string& name,
                           ELASSECTIONTYPE type = LASSECTION_DEFINITION)
    {
        auto section = std::make_shared<CLasSection>();
        section->m_name = name;
        section->m_type = type;
        reader.m_sections.push_back(section);
    }
    static void SetLas3(CLasReader& reader, bool isLas3) { reader.m_isLas3 = isLas3; }
    static bool IsLas3(const CLasReader& reader) { return reader.m_isLas3; }
    static bool IsWrapped(const CLasReader& reader) { return reader.m_isWrapped; }
    static char Delimiter(const CLasReader& reader) { return reader.m_delimiter; }
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

// The head of a LAS 2.0 file: Version (with `wrap` and `extra` lines), Well
// and Curve sections with the given mnemonic lines.
inline std::string Las20Head(const std::string& curves, const char* wrap = "NO",
                             const std::string& extra = "")
{
    return std::string("~Version\nVERS. 2.0 : v\nWRAP. ") + wrap + " : w\n" + extra +
           "~Well\nSTRT.M 1 : s\nSTOP.M 3 : s\nSTEP.M 1 : s\n~Curve\n" + curves;
}

// The head of a LAS 3.0 file with the given delimiter word and a
// Log_Definition section.
inline std::string Las30Head(const std::string& definitions, const char* dlm = "SPACE",
                             const char* wrap = "NO")
{
    return std::string("~Version\nVERS. 3.0 : v\nWRAP. ") + wrap + " : w\nDLM. " + dlm +
           " : d\n~Well\nSTEP.M 1 : s\n~Log_Definition\n" + definitions;
}

}  // namespace quarl::test

#endif
