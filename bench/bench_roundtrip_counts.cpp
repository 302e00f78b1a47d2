// bench_roundtrip_counts FOLDER: for the .las files under a folder (any
// case, in subfolders too), how many
// read leniently, write as LAS 2.0 and 3.0 with the writer's repair mode,
// read back strictly, and hold the same values and parameter texts (but
// where a repair says what changed), and how many needed repairs, with the
// repairs counted by kind.
#include <quarl/quarl.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "bench/roundtrip_compare.h"

namespace fs = std::filesystem;
namespace rt = quarl::roundtrip;

namespace {

struct Counts {
    int written = 0;
    int readBack = 0;
    int same = 0;
    int repaired = 0;
    std::map<std::string, int> kinds;
};

bool IsLasName(const fs::path& path)
{
    std::string extension = path.extension().string();
    for (char& c : extension) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return extension == ".las";
}

void Count(const std::vector<quarl::CLasSection>& document, bool las3, Counts& counts,
           const std::string& path, bool verbose)
{
    const rt::Trip trip = rt::WriteAndCompare(document, las3);
    counts.written += trip.written == quarl::LASFILE_OK ? 1 : 0;
    counts.readBack += trip.readBack == quarl::LASFILE_OK && trip.readBackNotes == 0 ? 1 : 0;
    counts.same += trip.same ? 1 : 0;
    counts.repaired += trip.repairs.empty() ? 0 : 1;
    for (const quarl::CLasRepair& r : trip.repairs)
        ++counts.kinds[quarl::LasRepairKindName(r.kind)];
    if (verbose && !trip.same)
        std::printf("  %s as LAS %s: %s\n", path.c_str(), las3 ? "3.0" : "2.0",
                    trip.difference.c_str());
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_roundtrip_counts FOLDER [--verbose]\n");
        return 2;
    }
    const bool verbose = argc > 2 && std::string(argv[2]) == "--verbose";
    std::vector<std::string> files;
    std::error_code error;
    for (const auto& entry : fs::recursive_directory_iterator(argv[1], error))
        if (entry.is_regular_file(error) && IsLasName(entry.path()))
            files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    int lenient = 0, logRows = 0;
    Counts las2, las3;
    for (const std::string& path : files) {
        quarl::CLasReadOptions options;
        options.lenient = true;
        quarl::CLasReader reader;
        reader.SetOptions(options);
        if (reader.Open(tessel::TxString(path)) != quarl::LASFILE_OK) continue;
        std::vector<quarl::CLasSection> document;
        rt::ReadSections(reader, document);
        if (!rt::HasContent(document)) continue;
        ++lenient;
        logRows += rt::HasLogRows(document) ? 1 : 0;
        Count(document, false, las2, path, verbose);
        Count(document, true, las3, path, verbose);
    }
    std::printf("files: %zu, read leniently with content: %d (with log rows: %d)\n", files.size(),
                lenient, logRows);
    for (const auto& [name, c] :
         {std::make_pair("LAS 2.0", las2), std::make_pair("LAS 3.0", las3)}) {
        std::printf("%s: written %d, read back strictly %d, same values %d, with repairs %d\n",
                    name, c.written, c.readBack, c.same, c.repaired);
        for (const auto& [kind, n] : c.kinds) std::printf("  %6d  %s\n", n, kind.c_str());
    }
    return 0;
}
