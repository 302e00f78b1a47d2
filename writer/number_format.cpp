#include "writer/number_format.h"

namespace quarl::detail {

std::string General15(double value)
{
    char buffer[kGeneralNumberMax];
    return std::string(buffer, FormatGeneral15(buffer, value));
}

std::string Fixed8(double value)
{
    char buffer[kFixedNumberMax];
    const std::to_chars_result r =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 8);
    return std::string(buffer, r.ptr);
}

}  // namespace quarl::detail
