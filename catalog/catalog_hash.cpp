#include "catalog/catalog_hash.h"

#include <cstdio>
#include <memory>
#include <vector>

#if defined(QUARL_HAVE_OPENSSL)
#include <openssl/evp.h>
#endif

namespace quarl::catalog {

#if defined(QUARL_HAVE_OPENSSL)

bool HashAvailable()
{
    return true;
}

std::string FileSha256(const std::string& path)
{
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                         &std::fclose);
    std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    if (!file || !context || EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) != 1)
        return std::string();
    std::vector<unsigned char> buffer(1 << 20);
    size_t got = 0;
    while ((got = std::fread(buffer.data(), 1, buffer.size(), file.get())) > 0)
        if (EVP_DigestUpdate(context.get(), buffer.data(), got) != 1) return std::string();
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (std::ferror(file.get()) || EVP_DigestFinal_ex(context.get(), digest, &length) != 1)
        return std::string();
    static const char kHex[] = "0123456789abcdef";
    std::string hex;
    for (unsigned int i = 0; i < length; ++i) {
        hex += kHex[digest[i] >> 4];
        hex += kHex[digest[i] & 15];
    }
    return hex;
}

#else

bool HashAvailable()
{
    return false;
}
std::string FileSha256(const std::string&)
{
    return std::string();
}

#endif

}  // namespace quarl::catalog
