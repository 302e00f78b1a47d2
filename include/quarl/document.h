// The in-memory form of a LAS file: parameter lines, curves and sections.
// Plain values with public fields; they enforce nothing themselves.
#ifndef QUARL_DOCUMENT_H
#define QUARL_DOCUMENT_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <quarl/export.h>
#include <quarl/types.h>

namespace quarl {

// The byte string of the public interface. It adds nothing to std::string:
// every reading operation is the byte string's own. No encoding is assumed.
class QUARL_API CLasString : public std::string {
public:
    using std::string::string;
    // The operations of the interface live in the library; the moves stay
    // inline.
    CLasString();
    CLasString(const CLasString& other);
    CLasString(CLasString&&) noexcept = default;
    CLasString(const std::string& bytes);  // NOLINT: implicit by design
    CLasString(std::string&& bytes) noexcept : std::string(std::move(bytes)) {}  // NOLINT
    CLasString& operator=(const CLasString& other);
    CLasString& operator=(CLasString&&) noexcept = default;
    using std::string::operator=;
    ~CLasString();
};

// One parameter line: MNEM.UNIT VALUE : DESCRIPTION {FORMAT} | ASSOCIATION
struct CLasParam {
    CLasString m_mnemonic;
    CLasString m_unit;
    CLasString m_value;
    CLasString m_description;
    CLasString m_format;
    CLasString m_association;
};

// One column of a data section. Only the array that m_isNumeric selects is
// used; the other stays empty. Whoever builds a curve sets m_isNumeric.
class QUARL_API CLasCurve {
public:
    CLasCurve() = default;
    CLasCurve(const CLasCurve&) = default;
    CLasCurve(CLasCurve&&) noexcept = default;
    CLasCurve& operator=(const CLasCurve&) = default;
    CLasCurve& operator=(CLasCurve&&) noexcept = default;
    ~CLasCurve() = default;

    // Number of values in the array in use.
    int32_t size() const;

    bool m_isNumeric = true;
    std::vector<double> m_numbers;
    std::vector<CLasString> m_strings;
    CLasParam m_definition;
};

// One section of a LAS file.
class QUARL_API CLasSection {
public:
    // Bits of m_flags set by the reader.
    static constexpr uint32_t kFlagLogData = 16;
    static constexpr uint32_t kFlagLogDefinition = 32;

    CLasSection() = default;
    CLasSection(const CLasSection&) = default;
    CLasSection(CLasSection&&) noexcept = default;
    CLasSection& operator=(const CLasSection&) = default;
    CLasSection& operator=(CLasSection&&) noexcept = default;
    ~CLasSection() = default;

    // Index of the first parameter whose mnemonic equals `mnemonic`, ignoring
    // the case of ASCII letters, or -1. On a match a copy goes to `out` when
    // it is not null. Null or "" gives -1.
    int32_t FindParameterByMnemonic(const char* mnemonic, CLasParam* out) const;

    CLasString m_name;
    ELASSECTIONTYPE m_type = LASSECTION_ANY;
    uint32_t m_flags = 0;
    CLasString m_association;
    std::vector<CLasParam> m_params;
    std::vector<CLasCurve> m_curves;
};

}  // namespace quarl

#endif
