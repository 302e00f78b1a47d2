#include "catalog/catalog_scan.h"

#include <cstdio>

#include "catalog/catalog_commands.h"

namespace quarl::catalog {

// Placeholders until the scanner lands: they read nothing, and say so.
int RunScan(int, char**)
{
    std::fprintf(stderr, "quarl-catalog: scan is not built yet\n");
    return 1;
}

FileRecord ReadFileRecord(const std::string& path, const ScanOptions&)
{
    FileRecord record;
    record.path = path;
    record.result = "not built";
    return record;
}

FileRecord ReadFileRecordFromBuffer(const std::string& path, const char*, size_t length,
                                    int64_t mtimeNs)
{
    FileRecord record;
    record.path = path;
    record.size = static_cast<int64_t>(length);
    record.mtimeNs = mtimeNs;
    record.result = "not built";
    return record;
}

bool ScanTrees(CatalogDb&, const std::vector<std::string>&, const ScanOptions&, ScanSummary*,
               std::string* error)
{
    if (error) *error = "scan is not built yet";
    return false;
}

}  // namespace quarl::catalog
