// ReadFileRecord and ReadFileRecordFromBuffer: one file's record, read from
// disk while it holds still, or from memory.
#include <sys/stat.h>

#include <cstdint>
#include <string>

#include "catalog/catalog_hash.h"
#include "catalog/catalog_scan.h"
#include "catalog_record.h"

namespace quarl::catalog {

namespace {

// How often a file that changes while it is read is read again.
constexpr int kReadTries = 3;

struct Stamp {
    bool ok = false;
    int64_t size = 0;
    int64_t mtimeNs = 0;
    bool operator==(const Stamp& o) const
    {
        return ok == o.ok && size == o.size && mtimeNs == o.mtimeNs;
    }
};

Stamp StampOf(const std::string& path)
{
    struct stat st;
    Stamp stamp;
    // Only a regular file is read: a pipe or a device could block the read.
    if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return stamp;
    stamp.ok = true;
    stamp.size = static_cast<int64_t>(st.st_size);
    stamp.mtimeNs = static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000LL +
                    static_cast<int64_t>(st.st_mtim.tv_nsec);
    return stamp;
}

// The header read, then a full one when the header read left a data
// section's ends unknown (see NeedsFullRead).
template <typename OpenFn>
void ReadInto(size_t size, OpenFn open, FileRecord* record)
{
    CLasReader reader;
    CLasReadOptions options = CatalogReadOptions(size);
    reader.SetOptions(options);
    ELASFILEERROR result = open(reader);
    if (NeedsFullRead(reader)) {
        options.headersOnly = options.dataEnds = false;
        reader.SetOptions(options);
        result = open(reader);
    }
    FillFromRead(reader, result, record);
    reader.Close();
}

void ReadOnce(const std::string& path, const Stamp& stamp, bool hash, FileRecord* record)
{
    record->size = stamp.size;
    record->mtimeNs = stamp.mtimeNs;
    ReadInto(
        static_cast<size_t>(stamp.size),
        [&](CLasReader& reader) { return reader.Open(tessel::TxString(path)); }, record);
    record->hash = hash ? FileSha256(path) : std::string();
}

}  // namespace

FileRecord ReadFileRecord(const std::string& path, const ScanOptions& options)
{
    FileRecord record;
    record.path = path;
    for (int attempt = 0; attempt < kReadTries; ++attempt) {
        const Stamp before = StampOf(path);
        if (!before.ok) {
            record.result = ResultName(LASFILE_IO_FAILED);
            record.reading = "lenient";
            return record;
        }
        ReadOnce(path, before, options.hash, &record);
        record.changedWhileRead = !(StampOf(path) == before);
        if (!record.changedWhileRead) break;
    }
    return record;
}

FileRecord ReadFileRecordFromBuffer(const std::string& path, const char* data, size_t length,
                                    int64_t mtimeNs)
{
    FileRecord record;
    record.path = path;
    record.size = static_cast<int64_t>(length);
    record.mtimeNs = mtimeNs;
    ReadInto(
        length,
        [&](CLasReader& reader) { return reader.OpenBuffer(data, length, tessel::TxString(path)); },
        &record);
    return record;
}

}  // namespace quarl::catalog
