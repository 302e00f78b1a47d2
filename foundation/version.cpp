// The version of the library, compiled in from the generated header.
#include <quarl/version.h>

namespace quarl {

const char* VersionString()
{
    return QUARL_VERSION_STRING;
}

}  // namespace quarl
