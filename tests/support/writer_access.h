// The tests' window on CLasWriter's private parts, and small builders of
// documents.
#ifndef QUARL_TESTS_WRITER_ACCESS_H
#define QUARL_TESTS_WRITER_ACCESS_H

#include <quarl/quarl.h>

#include <ostream>
#include <string>
#include <tuple>
#include <utility>

#include "support/test_util.h"

namespace quarl::detail {

struct WriterAccess {
    static std::vector<CLasSection>& Sections(CLasWriter& w) { return w.m_sections; }
    static bool IsLas3(const CLasWriter& w) { return w.m_isLas3; }
    static char Delimiter(const CLasWriter& w) { return w.m_delimiter; }
    static bool HasOpenOutput(const CLasWriter& w) { return w.m_file != nullptr; }
    static const tessel::TxString& Filename(const CLasWriter& w) { return w.m_filename; }
    static ELASFILEERROR ValidateDataSection(CLasWriter& w, const CLasSection& s) { return w.ValidateDataSection(s); }
    static ELASFILEERROR FillWellSection(CLasWriter& w) { return w.FillWellSection(); }
    static ELASFILEERROR SortSections(CLasWriter& w) { return w.SortSections(); }
};

}  // namespace quarl::detail

namespace quarl::test {

inline CLasParam Param(const std::string& mnemonic, const std::string& unit, const std::string& value,
                       const std::string& description, const std::string& format = "",
                       const std::string& association = "")
{
    return {mnemonic, unit, value, description, format, association};
}

inline CLasSection Section(const std::string& name, ELASSECTIONTYPE type, std::vector<CLasParam> params = {},
                           const std::string& association = "")
{
    CLasSection s;
    s.m_name = name;
    s.m_type = type;
    s.m_params = std::move(params);
    s.m_association = association;
    return s;
}

inline CLasCurve Numbers(std::vector<double> values, const CLasParam& definition = CLasParam())
{
    CLasCurve c;
    c.m_numbers = std::move(values);
    c.m_definition = definition;
    return c;
}

inline CLasCurve Texts(std::vector<std::string> values)
{
    CLasCurve c;
    c.m_isNumeric = false;
    c.m_strings.assign(values.begin(), values.end());
    return c;
}

inline CLasSection Data(const std::string& name, std::vector<CLasCurve> curves, const std::string& association = "")
{
    CLasSection s = Section(name, LASSECTION_DATA, {}, association);
    s.m_curves = std::move(curves);
    return s;
}

// The writer's last-error record, field by field; "" stands for no section
// or mnemonic, -1 for no column or row. ErrorRecord{} is a clear record.
struct ErrorRecord {
    ELASFILEERROR code = LASFILE_OK;
    std::string section{};
    std::string param{};
    int32_t column = -1;
    int32_t row = -1;

    bool operator==(const ErrorRecord& o) const
    {
        return std::tie(code, section, param, column, row) == std::tie(o.code, o.section, o.param, o.column, o.row);
    }
};

inline std::ostream& operator<<(std::ostream& out, const ErrorRecord& r)
{
    return out << ResultName(r.code) << " section '" << r.section << "' param '" << r.param << "' column " << r.column
               << " row " << r.row;
}

inline ErrorRecord LastError(const CLasWriter& w)
{
    const char* section = w.GetLastErrorSection();
    const char* param = w.GetLastErrorParam();
    return {w.GetLastError(), section ? section : "", param ? param : "", w.GetLastErrorColumn(), w.GetLastErrorRow()};
}

// The names of the stored sections, in order.
inline std::vector<std::string> Names(CLasWriter& w)
{
    std::vector<std::string> names;
    for (const CLasSection& s : detail::WriterAccess::Sections(w)) names.push_back(s.m_name);
    return names;
}

}  // namespace quarl::test

#endif
