// CLasReader::Open on arbitrary bytes, then every accessor and the stepping
// check on whatever was read.
#include <quarl/quarl.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "fuzz_common.h"

namespace {

void Check(bool condition)
{
    if (!condition) std::abort();
}

int32_t Callback(void*, double percent, const char*)
{
    Check(percent >= 0.0 && percent <= 100.0);
    return 0;
}

void VisitAccessors(const quarl::CLasReader& reader, quarl::ELASFILEERROR result)
{
    const uint64_t count = reader.size();
    Check(reader.CountSectionsByType(quarl::LASSECTION_ANY) == static_cast<int32_t>(count));
    std::vector<quarl::CLasString> names;
    Check(reader.GetSectionNames(quarl::LASSECTION_ANY, names) == quarl::LASFILE_OK);
    Check(names.size() == count);

    quarl::CLasSection copy;
    Check((reader.GetVersionHeaders(copy) == quarl::LASFILE_OK) == (count >= 1));
    Check((reader.GetWellHeaders(copy) == quarl::LASFILE_OK) == (count >= 2));
    Check(reader.GetSection(static_cast<uint32_t>(count), copy) == quarl::LASFILE_BAD_VALUE);
    std::vector<quarl::CLasSection> all;
    Check(reader.GetSections(all, true) == quarl::LASFILE_OK && all.size() == count);

    for (uint64_t i = 0; i < count; ++i) {
        const quarl::CLasSection& section = reader.GetSection(i);
        Check(reader.GetSectionPtr(i).get() == &section);
        Check(reader.GetSection(section.m_name.c_str(), copy) == quarl::LASFILE_OK);
        if (section.m_type != quarl::LASSECTION_DATA || result != quarl::LASFILE_OK) continue;
        // A read that ended well leaves every curve of a section one length.
        for (const quarl::CLasCurve& curve : section.m_curves)
            Check(curve.size() == section.m_curves.front().size());
    }
    try {
        reader.GetSection(count);
        Check(false);
    } catch (const tessel::Exception& e) {
        Check(e.Code() == 2);
    }
    reader.CheckDataStepping();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string& path = quarl::fuzz::WriteInput(data, size);
    quarl::CLasReader reader;
    reader.SetStatusCallback(nullptr, &Callback);
    const quarl::ELASFILEERROR result = reader.Open(tessel::TxString(path.c_str()));
    Check(result >= quarl::LASFILE_OK && result <= quarl::LASFILE_BAD_NAME);
    VisitAccessors(reader, result);
    reader.Close();
    Check(reader.empty() && !reader.IsOpen());
    return 0;
}
