#include "foundation/section_names.h"

#include <quarl/document.h>

#include "foundation/platform.h"

namespace quarl {

namespace {

bool IsSpaceOrTab(char c)
{
    return c == ' ' || c == '\t';
}

const char* SkipSpacesAndTabs(const char* p)
{
    while (IsSpaceOrTab(*p)) ++p;
    return p;
}

// Appends bytes up to the end of the line, a space, a tab or a "|".
const char* TakeWord(const char* p, std::string* out)
{
    const char* start = p;
    while (*p && !IsSpaceOrTab(*p) && *p != '|') ++p;
    if (out) out->append(start, static_cast<size_t>(p - start));
    return p;
}

// Steps 3 and 4 of reading a header: blanks, one "~", blanks, the name.
const char* TakeName(const char* line, std::string* name)
{
    const char* p = SkipSpacesAndTabs(line);
    if (*p == '~') ++p;
    p = SkipSpacesAndTabs(p);
    return TakeWord(p, name);
}

bool BaseIsOneOf(const char* text, const char* const* names)
{
    std::string base;
    if (!SplitSectionName(text, false, &base, nullptr, nullptr)) return false;
    for (; *names; ++names) {
        if (AsciiEqualNoCase(base.c_str(), *names)) return true;
    }
    return false;
}

}  // namespace

bool ParseSectionHeader(const char* line, std::string* name, std::string* association)
{
    if (!line || !*line || !name) return false;
    name->clear();
    if (association) association->clear();
    const char* p = SkipSpacesAndTabs(TakeName(line, name));
    if (*p != '|') return true;
    p = SkipSpacesAndTabs(p + 1);
    TakeWord(p, association);
    return true;
}

bool IsVersionSectionName(const char* name)
{
    return AsciiEqualNoCase(name, "Version") || AsciiEqualNoCase(name, "V");
}

bool IsMainDataName(const char* name)
{
    for (const char* mainName : kMainDataNames) {
        if (AsciiEqualNoCase(name, mainName)) return true;
    }
    return false;
}

const char* MainDataName(size_t index)
{
    constexpr size_t kCount = sizeof(kMainDataNames) / sizeof(kMainDataNames[0]);
    return index < kCount ? kMainDataNames[index] : nullptr;
}

bool IsKnownSuffix(const std::string& suffix)
{
    return AsciiEqualNoCase(suffix.c_str(), "_Data") ||
           AsciiEqualNoCase(suffix.c_str(), "_Definition") ||
           AsciiEqualNoCase(suffix.c_str(), "_Parameter");
}

bool SplitSectionName(const char* text, bool stripKnownSuffix, std::string* base,
                      std::string* suffix, std::string* index)
{
    if (!text || !*text) return false;
    if (base) base->clear();
    if (suffix) suffix->clear();
    if (index) index->clear();

    std::string name;
    TakeName(text, &name);
    std::string rest = name;
    std::string foundIndex;
    const size_t bracket = name.find('[');
    if (bracket != std::string::npos) {
        foundIndex = name.substr(bracket);
        rest = name.substr(0, bracket);
    }
    std::string foundSuffix;
    const size_t underscore = rest.rfind('_');
    if (underscore != std::string::npos) foundSuffix = rest.substr(underscore);

    std::string foundBase = rest;
    if (stripKnownSuffix && IsKnownSuffix(foundSuffix))
        foundBase = rest.substr(0, rest.size() - foundSuffix.size());

    if (base) *base = foundBase;
    if (suffix) *suffix = foundSuffix;
    if (index) *index = foundIndex;
    return true;
}

bool IsLogDataName(const char* text)
{
    static const char* const kNames[] = {"ascii", "a", "log", "l", "Log_Data", nullptr};
    return BaseIsOneOf(text, kNames);
}

bool IsLogDefinitionName(const char* text)
{
    static const char* const kNames[] = {"curve", "c", "Log_Definition", nullptr};
    return BaseIsOneOf(text, kNames);
}

}  // namespace quarl
