// Which stored section defines the columns of a data section, by name alone.
#include <quarl/reader.h>

#include <string>

#include "foundation/section_names.h"

namespace quarl {

// Log data sections take "curve", "c" or "Log_Definition", in this order.
// Any other data section takes its base name with "_Definition", first with
// its index and then without: "Core_Data[2]" looks for "Core_Definition[2]",
// then "Core_Definition". Only sections already read are found. On a hit,
// `found` receives the stored section's name as the file writes it.
int32_t CLasReader::FindDefinitionSectionForDataSection(const char* name, std::string* found) const
{
    int32_t index = -1;
    if (IsLogDataName(name)) {
        static const char* const kLogDefinitions[] = {"curve", "c", "Log_Definition"};
        for (const char* candidate : kLogDefinitions) {
            index = FindSectionIndexByName(candidate);
            if (index >= 0) break;
        }
    } else {
        std::string base;
        std::string suffix;
        std::string bracket;
        if (!SplitSectionName(name, true, &base, &suffix, &bracket)) return -1;
        const std::string definition = base + "_Definition";
        index = FindSectionIndexByName((definition + bracket).c_str());
        if (index < 0) index = FindSectionIndexByName(definition.c_str());
    }
    if (index >= 0 && found) *found = m_sections[static_cast<size_t>(index)]->m_name;
    return index;
}

}  // namespace quarl
