// What the reader's steps tell each other about the rules they relaxed or
// the odd things they saw, and what a stored item counts against the budget.
#ifndef QUARL_READER_READER_RULES_H
#define QUARL_READER_READER_RULES_H

#include <quarl/document.h>

#include <cstdint>

namespace quarl {

// Bits of the `relaxed` output of CLasReader::ParseParameterLineAs.
constexpr unsigned kRelaxedNoPeriod = 1;  // leniently read without a period
constexpr unsigned kValueCutAtColon = 2;  // the value ends at a colon inside a time
constexpr unsigned kColonsKept = 4;       // leniently the value kept its colons
constexpr unsigned kMnemonicPeriods = 8;  // leniently the mnemonic ended at a double period
constexpr unsigned kUnitColons = 16;      // leniently the unit kept colons up to a blank

inline uint64_t ParamBytes(const CLasParam& p)
{
    return sizeof(CLasParam) + p.m_mnemonic.size() + p.m_unit.size() + p.m_value.size() +
           p.m_description.size() + p.m_format.size() + p.m_association.size();
}

}  // namespace quarl

#endif
