// SHA-256 of a whole file, through OpenSSL's libcrypto when the build has it.
#ifndef QUARL_CATALOG_HASH_H
#define QUARL_CATALOG_HASH_H

#include <string>

namespace quarl::catalog {

// Whether this build can hash (it was linked with libcrypto).
bool HashAvailable();

// The SHA-256 of the file at `path` in lowercase hex; empty when the file
// cannot be read or the build cannot hash.
std::string FileSha256(const std::string& path);

}  // namespace quarl::catalog

#endif
