#include "foundation/platform.h"

#include <stdio.h>
#include <sys/mman.h>
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

int StreamDescriptor(std::FILE* file)
{
    return ::fileno(file);
}

bool MappedBytes::Map(int fd, uint64_t offset, size_t length)
{
    Unmap();
    const uint64_t page = static_cast<uint64_t>(::sysconf(_SC_PAGESIZE));
    const uint64_t aligned = offset - offset % page;
    const size_t lead = static_cast<size_t>(offset - aligned);
    void* map =
        ::mmap(nullptr, length + lead, PROT_READ, MAP_PRIVATE, fd, static_cast<off_t>(aligned));
    if (map == MAP_FAILED) return false;
    m_map = map;
    m_mapLength = length + lead;
    m_data = static_cast<const char*>(map) + lead;
    return true;
}

void MappedBytes::Unmap()
{
    if (m_map) ::munmap(m_map, m_mapLength);
    m_map = nullptr;
    m_data = nullptr;
}

}  // namespace quarl
