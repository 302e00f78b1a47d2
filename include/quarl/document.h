/// \file
/// The in-memory form of a LAS file: parameter lines, curves and sections.
/// Plain values with public fields; they enforce nothing themselves. Copies
/// are deep: a copied section shares no string, parameter or curve with its
/// source. What a file may hold is decided by the writer (CLasWriter::
/// AddSection and Validate), not here.
#ifndef QUARL_DOCUMENT_H
#define QUARL_DOCUMENT_H

#include <quarl/export.h>
#include <quarl/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace quarl {

/// The byte string of the public interface. It adds nothing to std::string:
/// every reading operation is the byte string's own. No encoding is assumed.
class QUARL_API CLasString : public std::string {
public:
    using std::string::string;
    /// Built, copied and assigned like std::string, and from one (implicitly,
    /// by design). The operations of the interface live in the library; the
    /// moves stay inline.
    ///@{
    CLasString();
    CLasString(const CLasString& other);
    CLasString(CLasString&&) noexcept = default;
    CLasString(const std::string& bytes);  // NOLINT: implicit by design
    CLasString(std::string&& bytes) noexcept : std::string(std::move(bytes)) {}  // NOLINT
    CLasString& operator=(const CLasString& other);
    CLasString& operator=(CLasString&&) noexcept = default;
    ///@}
    using std::string::operator=;
    ~CLasString();
};

/// One parameter line: MNEM.UNIT VALUE : DESCRIPTION {FORMAT} | ASSOCIATION.
/// Every field is text as the file has it, without the blanks that separate
/// the fields; empty when the line has none.
struct CLasParam {
    CLasString m_mnemonic;     ///< in front of the first period
    CLasString m_unit;         ///< directly behind that period
    CLasString m_value;        ///< in front of the colon
    CLasString m_description;  ///< behind the colon
    CLasString m_format;       ///< with its braces, such as "{F}"
    CLasString m_association;  ///< behind the last "|"
};

/// One column of a data section, one value per row. Only the array that
/// m_isNumeric selects is used; the other stays empty. The reader makes a
/// curve numeric when its definition has no format or one whose letter behind
/// the brace is F, I or E in either case ("{F}", "{I4}"), and a text curve
/// otherwise ("{S}", "{}"). A host that builds a curve sets m_isNumeric.
class QUARL_API CLasCurve {
public:
    /// An empty numeric curve; copies are deep.
    ///@{
    CLasCurve() = default;
    CLasCurve(const CLasCurve&) = default;
    CLasCurve(CLasCurve&&) noexcept = default;
    CLasCurve& operator=(const CLasCurve&) = default;
    CLasCurve& operator=(CLasCurve&&) noexcept = default;
    ///@}
    ~CLasCurve() = default;

    /// Number of values in the array that m_isNumeric selects; the other array
    /// is not looked at.
    int32_t size() const;

    bool m_isNumeric = true;            ///< the values are in m_numbers, else in m_strings
    std::vector<double> m_numbers;      ///< the values of a numeric curve
    std::vector<CLasString> m_strings;  ///< the values of a text curve
    /// The line that defines the column, copied from the definition section
    /// when the reader made the curve; later changes to that section do not
    /// reach it. The writer uses it only to fill an empty definition section.
    CLasParam m_definition;
};

/// One section of a LAS file. A section read from a file holds, by its type:
///   LASSECTION_HEADER, _PARAMETER: the lines in m_params, in file order.
///   LASSECTION_DEFINITION: one line per column of its data section.
///   LASSECTION_DATA: one curve per line of its definition section in
///     m_curves, and that section's name in m_association; after a complete
///     read all curves have one length.
class QUARL_API CLasSection {
public:
    /// Bits of m_flags, set by the reader and by nothing else; the writer
    /// neither sets nor reads them.
    /// A data section named "ASCII", "A", "LOG", "L" or "Log_Data", with any
    /// index: the log data, which CLasReader::CheckDataStepping tests.
    static constexpr uint32_t kFlagLogData = 16;
    /// A definition section named "Curve", "C" or "Log_Definition", with any
    /// index: the log definition.
    static constexpr uint32_t kFlagLogDefinition = 32;

    /// An empty section of type LASSECTION_ANY; copies are deep.
    ///@{
    CLasSection() = default;
    CLasSection(const CLasSection&) = default;
    CLasSection(CLasSection&&) noexcept = default;
    CLasSection& operator=(const CLasSection&) = default;
    CLasSection& operator=(CLasSection&&) noexcept = default;
    ///@}
    ~CLasSection() = default;

    /// Index of the first parameter whose mnemonic equals `mnemonic` as a
    /// whole, ignoring the case of ASCII letters, or -1. On a match a copy of
    /// the parameter goes to `out` when it is not null; otherwise `out` is
    /// untouched. Null or "" gives -1. Curve definitions of a data section are
    /// not searched.
    int32_t FindParameterByMnemonic(const char* mnemonic, CLasParam* out) const;

    /// The first word of the header behind the "~", with its index ("[2]").
    CLasString m_name;
    ELASSECTIONTYPE m_type = LASSECTION_ANY;  ///< what the section holds (see the class comment)
    uint32_t m_flags = 0;                     ///< kFlagLogData, kFlagLogDefinition
    /// Of a data section: the name of the section that defines its columns.
    CLasString m_association;
    std::vector<CLasParam> m_params;  ///< the lines of a section that is not a data section
    std::vector<CLasCurve> m_curves;  ///< the columns of a data section
};

/// The names of the main data section, the one whose first curve the writer
/// checks against STRT, STOP and STEP: MainDataName(0) "ASCII", 1 "LOG" and
/// 2 "Log_Data", in the order the writer looks for them, each matched as a
/// whole name ignoring case. Null for any later index.
QUARL_API const char* MainDataName(size_t index);

/// Two depths agree when they differ by no more than kDepthTolerance (a
/// difference equal to it passes); the reader's stepping test and the
/// writer's check of STRT, STOP and STEP use this one rule.
constexpr double kDepthTolerance = 1e-07;
/// Whether |a - b| is not greater than kDepthTolerance; a NaN on either side
/// agrees, as it does in the step test.
QUARL_API bool DepthsAgree(double a, double b);
/// The first row whose depth is not the depth of the row before plus `step`,
/// within kDepthTolerance; 0 when every row steps evenly, and for fewer than
/// two rows (row 0 has nothing before it, so it never fails). Changes
/// nothing, throws nothing.
QUARL_API size_t FirstUnevenStep(const std::vector<double>& depths, double step);

}  // namespace quarl

#endif
