// Scanning folder trees into the catalog: walking them, reading the headers
// of every LAS file in worker threads, and storing the records in whole-file
// transactions. quarl-catalog scan and the Python package both run it.
#ifndef QUARL_CATALOG_SCAN_H
#define QUARL_CATALOG_SCAN_H

#include <atomic>
#include <cstddef>
#include <string>
#include <vector>

#include "catalog/catalog_db.h"

namespace quarl::catalog {

struct ScanOptions {
    bool hash = false;      // SHA-256 of every file read (reads it whole)
    unsigned threads = 0;   // reading threads; 0 is one per core
    bool progress = false;  // a progress line on stderr
    // Set from another thread or a signal handler: the scan stops after the
    // files stored so far, and ScanTrees returns false with "interrupted".
    const std::atomic<bool>* stop = nullptr;
};

// What a scan did, counted.
struct ScanSummary {
    size_t seen = 0;        // LAS files found
    size_t read = 0;        // of them read and stored (new or changed)
    size_t unchanged = 0;   // of them left as stored (same size and time)
    size_t failed = 0;      // of the read ones, those whose read ended in an error
    size_t changed = 0;     // of the read ones, changed during every try to read them
    size_t removed = 0;     // stored files no longer there, removed
    size_t notLas = 0;      // other files passed over
    size_t unreadable = 0;  // folders and files that could not be opened
    size_t links = 0;       // links passed over: loops, dangling, or seen before
    double seconds = 0.0;
};

// The record of the file at `path`: its headers read leniently (the first
// and last depth from the data's ends), its notes, size and time; the hash
// with options.hash. Never fails: a file that cannot be read gives a record
// whose result says why.
FileRecord ReadFileRecord(const std::string& path, const ScanOptions& options);
// The same for a file's contents already in memory (from an object store);
// `size` and `mtimeNs` are stored as given.
FileRecord ReadFileRecordFromBuffer(const std::string& path, const char* data, size_t length,
                                    int64_t mtimeNs);

// Scans `roots` into `db`: new and changed files are read, vanished ones
// removed. False, with `error`, when a root is not there (nothing is
// scanned), the catalog fails or the scan was stopped; what was stored
// before stays.
bool ScanTrees(CatalogDb& db, const std::vector<std::string>& roots, const ScanOptions& options,
               ScanSummary* summary, std::string* error);

}  // namespace quarl::catalog

#endif
