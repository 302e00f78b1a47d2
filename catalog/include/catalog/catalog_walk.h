// Walking the scanned folder trees: which files are LAS files, and what is
// passed over (other files, links that loop or lead nowhere, folders and
// files that cannot be read).
#ifndef QUARL_CATALOG_WALK_H
#define QUARL_CATALOG_WALK_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quarl::catalog {

// A LAS file found, by the path it was reached on, with its size and time.
struct FoundFile {
    std::string path;
    int64_t size = 0;
    int64_t mtimeNs = 0;
};

struct WalkResult {
    std::vector<FoundFile> files;  // in walking order: each folder's entries sorted by name
    // Folders and files that could not be read: what the catalog holds
    // under them stays.
    std::vector<std::string> unreadable;
    size_t notLas = 0;
    size_t links = 0;
    bool stopped = false;  // the walk was stopped before its end
};

// Whether a name ends in ".las", in any case.
bool HasLasName(const std::string& name);
// Whether the first bytes of `head` (behind a UTF-8 byte-order mark and
// blanks) begin a line with "~V" in either case.
bool StartsLikeLas(const std::string& head);

// The path made absolute against the working folder, without "." and ".."
// steps and a trailing slash; links are not resolved.
std::string AbsolutePath(const std::string& path);

// Whether every root is there (a folder or a file, through links); false
// with "ROOT: the reason" for the first that is not.
bool RootsExist(const std::vector<std::string>& roots, std::string* error);

// Walks every root (a folder or a single file). Folders reached through a
// link are walked unless they were walked already (which ends loops); a
// link to a file already found is passed over.
WalkResult WalkTrees(const std::vector<std::string>& roots, const std::atomic<bool>* stop);

}  // namespace quarl::catalog

#endif
