#include "support/command_line.h"

#include <cstdio>
#include <cstdlib>

#include "common/text.h"

namespace quarl::apps {

bool TakeOperand(const char* program, const std::string& word, std::vector<std::string>& operands)
{
    if (word.size() > 1 && word[0] == '-') {
        std::fprintf(stderr, "%s: unknown option %s\n", program, word.c_str());
        return false;
    }
    operands.push_back(word);
    return true;
}

std::vector<std::string> SplitList(const std::string& text)
{
    std::vector<std::string> items;
    std::string item;
    for (char c : text + ",") {
        if (c == ',') {
            item = common::Trim(item);
            if (!item.empty()) items.push_back(item);
            item.clear();
        } else {
            item += c;
        }
    }
    return items;
}

bool ListContainsNoCase(const std::vector<std::string>& list, const std::string& name)
{
    for (const std::string& item : list)
        if (common::EqualsNoCase(item, name)) return true;
    return false;
}

bool ParseNumberIn(const char* text, double low, double high, double* out)
{
    char* end = nullptr;
    const double value = std::strtod(text, &end);
    if (end == text || *end != '\0' || !(value >= low && value <= high)) return false;
    *out = value;
    return true;
}

bool ParseDelimiterName(const std::string& name, char* delimiter)
{
    if (name == "space")
        *delimiter = ' ';
    else if (name == "tab")
        *delimiter = '\t';
    else if (name == "comma")
        *delimiter = ',';
    else
        return false;
    return true;
}

std::string DelimiterName(char delimiter)
{
    switch (delimiter) {
        case ' ':
            return "space";
        case '\t':
            return "tab";
        case ',':
            return "comma";
        default:
            return std::string("'") + delimiter + "'";
    }
}

}  // namespace quarl::apps
