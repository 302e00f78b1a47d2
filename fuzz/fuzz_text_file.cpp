// CTextFile on arbitrary bytes: every line it delivers must be the bytes of
// the input between line feeds, without carriage returns.
#include <quarl/quarl.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_common.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string& path = quarl::fuzz::WriteInput(data, size);
    quarl::CTextFile file;
    quarl::ELASFILEERROR result = file.Open(tessel::TxString(path.c_str()));
    if (size == 0) {
        if (result != quarl::LASFILE_IO_FAILED) std::abort();
        return 0;
    }
    if (result != quarl::LASFILE_OK) std::abort();

    // The expected lines, built the slow way.
    std::string expected;
    for (size_t i = 0; i < size; ++i) {
        if (data[i] != '\r') expected.push_back(static_cast<char>(data[i]));
    }
    std::string seen;
    uint32_t lines = 0;
    do {
        seen.append(file.GetLine(), file.GetLineLength());
        if (file.GetPercentRead() < 0.0 || file.GetPercentRead() > 100.0) std::abort();
        if (file.GetLineCount() != lines + 1 && file.GetLineCount() != lines) std::abort();
        lines = file.GetLineCount();
        seen.push_back('\n');
    } while ((result = file.ReadLine()) == quarl::LASFILE_OK);
    if (result != quarl::LASFILE_IO_FAILED) std::abort();
    if (file.GetPercentRead() != 100.0) std::abort();
    // Every line ended by a feed is followed by one; the last line may not be.
    if (!expected.empty() && expected.back() != '\n') expected.push_back('\n');
    if (seen != expected && seen != expected + "\n") std::abort();
    return 0;
}
