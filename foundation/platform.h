// What the library needs of the platform: comparison of byte strings that
// ignores the case of ASCII letters only (never the host's locale), file
// deletion, and C stdio streams opened for large files.
#ifndef QUARL_FOUNDATION_PLATFORM_H
#define QUARL_FOUNDATION_PLATFORM_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace quarl {

inline char AsciiLower(char c)
{
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// Like _stricmp: <0, 0 or >0, comparing bytes as unsigned after folding
// ASCII letters to lower case. Null pointers are treated as "".
int AsciiCompareNoCase(const char* a, const char* b);
// Like _strnicmp over at most n bytes.
int AsciiCompareNoCaseN(const char* a, const char* b, size_t n);
inline bool AsciiEqualNoCase(const char* a, const char* b)
{
    return AsciiCompareNoCase(a, b) == 0;
}

// Like _unlink: 0 on success.
int DeleteFile(const char* path);

// Opens a stream; mode as for fopen.
std::FILE* OpenStream(const char* path, const char* mode);
// A stream that reads `size` bytes at `data` (never writes them), with the
// seeks and tells of a file of those bytes; null when none can be had.
std::FILE* OpenMemoryStream(const void* data, size_t size);
int SeekStream(std::FILE* file, int64_t offset, int whence);
int64_t TellStream(std::FILE* file);
// The descriptor of a stream opened on a file; -1 for a memory stream.
int StreamDescriptor(std::FILE* file);

// Bytes of a file mapped read-only into memory, unmapped with the object.
class MappedBytes {
public:
    MappedBytes() = default;
    ~MappedBytes() { Unmap(); }
    MappedBytes(const MappedBytes&) = delete;
    MappedBytes& operator=(const MappedBytes&) = delete;
    // Maps `length` bytes (more than 0) from `offset` of the file `fd`;
    // false when the system cannot.
    bool Map(int fd, uint64_t offset, size_t length);
    void Unmap();
    const char* data() const { return m_data; }

private:
    void* m_map = nullptr;
    size_t m_mapLength = 0;
    const char* m_data = nullptr;
};

}  // namespace quarl

#endif
