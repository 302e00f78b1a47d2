#include "foundation/platform.h"

#include <stdio.h>
#include <unistd.h>

namespace quarl {

int AsciiCompareNoCase(const char* a, const char* b)
{
    if (!a) a = "";
    if (!b) b = "";
    for (;; ++a, ++b) {
        const unsigned char ca = static_cast<unsigned char>(AsciiLower(*a));
        const unsigned char cb = static_cast<unsigned char>(AsciiLower(*b));
        if (ca != cb || ca == 0) return static_cast<int>(ca) - static_cast<int>(cb);
    }
}

int AsciiCompareNoCaseN(const char* a, const char* b, size_t n)
{
    if (!a) a = "";
    if (!b) b = "";
    for (size_t i = 0; i < n; ++i) {
        const unsigned char ca = static_cast<unsigned char>(AsciiLower(a[i]));
        const unsigned char cb = static_cast<unsigned char>(AsciiLower(b[i]));
        if (ca != cb || ca == 0) return static_cast<int>(ca) - static_cast<int>(cb);
    }
    return 0;
}

int DeleteFile(const char* path)
{
    return ::unlink(path);
}

std::FILE* OpenStream(const char* path, const char* mode)
{
    return std::fopen(path, mode);
}

std::FILE* OpenMemoryStream(const void* data, size_t size)
{
    // Opened for reading only: the stream never writes into the bytes.
    return ::fmemopen(const_cast<void*>(data), size, "rb");
}

int SeekStream(std::FILE* file, int64_t offset, int whence)
{
    return ::fseeko(file, static_cast<off_t>(offset), whence);
}

int64_t TellStream(std::FILE* file)
{
    return static_cast<int64_t>(::ftello(file));
}

}  // namespace quarl
