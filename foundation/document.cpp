#include <quarl/document.h>

#include "foundation/platform.h"

namespace quarl {

CLasString::CLasString() = default;

CLasString::CLasString(const CLasString& other) = default;

CLasString::CLasString(const std::string& bytes) : std::string(bytes) {}

CLasString& CLasString::operator=(const CLasString& other) = default;

CLasString::~CLasString() = default;

int32_t CLasCurve::size() const
{
    return static_cast<int32_t>(m_isNumeric ? m_numbers.size() : m_strings.size());
}

int32_t CLasSection::FindParameterByMnemonic(const char* mnemonic, CLasParam* out) const
{
    if (!mnemonic || !*mnemonic) return -1;
    for (size_t i = 0; i < m_params.size(); ++i) {
        if (AsciiEqualNoCase(mnemonic, m_params[i].m_mnemonic.c_str())) {
            if (out) *out = m_params[i];
            return static_cast<int32_t>(i);
        }
    }
    return -1;
}

}  // namespace quarl
