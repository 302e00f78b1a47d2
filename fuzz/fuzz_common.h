// What the fuzz targets share: the input as a file on disk, since the
// library reads from paths.
#ifndef QUARL_FUZZ_COMMON_H
#define QUARL_FUZZ_COMMON_H

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace quarl::fuzz {

inline char g_scratchDir[] = "/tmp/quarl-fuzz-XXXXXX";

// Removes the scratch folder and the files in it when the process exits.
inline void RemoveScratchDir()
{
    std::error_code ignored;
    std::filesystem::remove_all(g_scratchDir, ignored);
}

// A scratch folder of this process, made once.
inline const std::string& ScratchDir()
{
    static const std::string dir = [] {
        if (!mkdtemp(g_scratchDir)) std::abort();
        std::atexit(&RemoveScratchDir);
        return std::string(g_scratchDir);
    }();
    return dir;
}

// Writes the input to the same scratch file every time; returns its path.
inline const std::string& WriteInput(const uint8_t* data, size_t size)
{
    static const std::string path = ScratchDir() + "/input.las";
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) std::abort();
    if (size && std::fwrite(data, 1, size, file) != size) std::abort();
    std::fclose(file);
    return path;
}

}  // namespace quarl::fuzz

#endif
