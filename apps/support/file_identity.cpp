#include "support/file_identity.h"

#include <filesystem>
#include <system_error>

namespace quarl::apps {

bool SameFile(const std::string& a, const std::string& b)
{
    std::error_code error;
    const bool same = std::filesystem::equivalent(a, b, error);
    return !error && same;
}

}  // namespace quarl::apps
