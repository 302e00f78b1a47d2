// What the reader's steps tell each other about the rules they relaxed or
// the odd things they saw, and what a stored item counts against the budget.
#ifndef QUARL_READER_READER_RULES_H
#define QUARL_READER_READER_RULES_H

#include <quarl/document.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace quarl {

// Bits of the `relaxed` output of CLasReader::ParseParameterLineAs.
constexpr unsigned kRelaxedNoPeriod = 1;  // leniently read without a period
constexpr unsigned kValueCutAtColon = 2;  // the value ends at a colon inside a time
constexpr unsigned kColonsKept = 4;       // leniently the value kept its colons
constexpr unsigned kMnemonicPeriods = 8;  // leniently the mnemonic ended at a double period
constexpr unsigned kUnitColons = 16;      // leniently the unit kept colons up to a blank

// Blank lines and comments never reach a section reader. Spaces and
// backslashes in any mixture may stand in front of the "#"; a tab may not.
inline bool LineCounts(const char* line)
{
    while (*line == ' ' || *line == '\\') ++line;
    return *line != '#' && *line != '\0';
}

// Leniently, a curve that has no name of its own is "UNKNOWN:1",
// "UNKNOWN:2", ...: the number of such a name, 0 for any other name.
inline size_t UnknownNumber(const std::string& mnemonic)
{
    if (mnemonic.compare(0, 8, "UNKNOWN:") != 0 || mnemonic.size() == 8 || mnemonic.size() > 16)
        return 0;
    size_t number = 0;
    for (size_t i = 8; i < mnemonic.size(); ++i) {
        if (mnemonic[i] < '0' || mnemonic[i] > '9') return 0;
        number = number * 10 + static_cast<size_t>(mnemonic[i] - '0');
    }
    return number;
}

// The name after the highest "UNKNOWN:n" among `mnemonics` of `items`.
template <typename Items, typename Mnemonic>
std::string NextUnknownName(const Items& items, Mnemonic mnemonic)
{
    size_t highest = 0;
    for (const auto& item : items) {
        const size_t number = UnknownNumber(mnemonic(item));
        if (number > highest) highest = number;
    }
    return "UNKNOWN:" + std::to_string(highest + 1);
}

inline uint64_t ParamBytes(const CLasParam& p)
{
    return sizeof(CLasParam) + p.m_mnemonic.size() + p.m_unit.size() + p.m_value.size() +
           p.m_description.size() + p.m_format.size() + p.m_association.size();
}

}  // namespace quarl

#endif
