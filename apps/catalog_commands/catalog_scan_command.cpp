// quarl-catalog scan DIR... --db FILE [--hash] [--threads N] [--progress|--no-progress]
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "catalog/catalog_hash.h"
#include "catalog/catalog_scan.h"
#include "catalog/catalog_walk.h"
#include "catalog_commands/catalog_commands.h"
#include "support/command_line.h"

namespace quarl::catalog {

namespace {

std::atomic<bool> g_interrupted{false};

extern "C" void OnInterrupt(int)
{
    g_interrupted.store(true);
}

struct ScanRequest {
    std::vector<std::string> roots;
    std::string db;
    ScanOptions options;
    int progress = 0;  // 0 on a terminal, 1 always, -1 never
};

void ScanUsage()
{
    std::fprintf(stderr,
                 "usage: quarl-catalog scan DIR... --db CATALOG [--hash] [--threads N]\n"
                 "                          [--progress|--no-progress]\n");
}

bool ParseScan(int argc, char** argv, ScanRequest* request)
{
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        double threads = 0;
        if (arg == "--db" && i + 1 < argc) {
            request->db = argv[++i];
        } else if (arg == "--hash") {
            request->options.hash = true;
        } else if (arg == "--threads" && i + 1 < argc) {
            if (!apps::ParseNumberIn(argv[++i], 1, 1024, &threads) ||
                threads != static_cast<unsigned>(threads)) {
                std::fprintf(stderr,
                             "quarl-catalog: --threads wants a whole number from 1 to 1024\n");
                return false;
            }
            request->options.threads = static_cast<unsigned>(threads);
        } else if (arg == "--progress" || arg == "--no-progress") {
            request->progress = arg == "--progress" ? 1 : -1;
        } else if (!apps::TakeOperand("quarl-catalog", arg, request->roots)) {
            return false;
        }
    }
    if (request->roots.empty() || request->db.empty()) {
        std::fprintf(stderr, "quarl-catalog: scan wants a folder and --db CATALOG\n");
        return false;
    }
    return true;
}

// The folder a path is in, with its links resolved where they exist.
std::string ResolvedFolder(const std::string& path, bool isFolder)
{
    std::error_code error;
    const std::filesystem::path absolute(AbsolutePath(path));
    const std::filesystem::path folder = isFolder ? absolute : absolute.parent_path();
    const std::filesystem::path resolved = std::filesystem::weakly_canonical(folder, error);
    return error ? folder.string() : resolved.string();
}

bool Inside(const std::string& folder, const std::string& root)
{
    if (root == "/") return true;
    return folder.compare(0, root.size(), root) == 0 &&
           (folder.size() == root.size() || folder[root.size()] == '/');
}

// The catalog, its -wal and its -shm file stand beside each other: none of
// them may be inside a scanned tree, by its path or through links.
bool CatalogOutsideRoots(const ScanRequest& request)
{
    for (const std::string& root : request.roots) {
        std::error_code error;
        // A root that is a file, or is not there, holds no catalog.
        if (!std::filesystem::is_directory(root, error)) continue;
        const std::string rootFolder = ResolvedFolder(root, true);
        const std::string dbFolder = ResolvedFolder(request.db, false);
        const std::string dbPlain = std::filesystem::path(AbsolutePath(request.db)).parent_path();
        if (Inside(dbFolder, rootFolder) || Inside(dbPlain, AbsolutePath(root))) {
            std::fprintf(stderr,
                         "quarl-catalog: the catalog %s is inside the scanned tree %s; a scan "
                         "never writes there: put it elsewhere\n",
                         request.db.c_str(), root.c_str());
            return false;
        }
    }
    return true;
}

void PrintSummary(const ScanSummary& s)
{
    // Files found per second: a rescan's pace too, where few are read.
    const double rate = s.seconds > 0 ? static_cast<double>(s.seen) / s.seconds : 0.0;
    std::printf(
        "%zu LAS files: %zu read (%zu failed, %zu changed while read), %zu unchanged, "
        "%zu removed; %zu other files, %zu unreadable, %zu links passed over; "
        "%.3f s, %.0f files/s\n",
        s.seen, s.read, s.failed, s.changed, s.unchanged, s.removed, s.notLas, s.unreadable,
        s.links, s.seconds, rate);
}

}  // namespace

int RunScan(int argc, char** argv)
{
    ScanRequest request;
    if (!ParseScan(argc, argv, &request)) {
        ScanUsage();
        return 2;
    }
    if (request.options.hash && !HashAvailable()) {
        std::fprintf(stderr, "quarl-catalog: --hash needs a build with OpenSSL's libcrypto\n");
        return 2;
    }
    if (!CatalogOutsideRoots(request)) return 2;
    std::string error;
    // A root that is not there is said before the catalog is made.
    if (!RootsExist(request.roots, &error)) {
        std::fprintf(stderr, "quarl-catalog: %s\n", error.c_str());
        return 1;
    }
    request.options.progress =
        request.progress == 1 || (request.progress == 0 && isatty(STDERR_FILENO));
    CatalogDb db;
    if (!db.Open(request.db, true, &error)) {
        std::fprintf(stderr, "quarl-catalog: %s: %s\n", request.db.c_str(), error.c_str());
        return 1;
    }
    g_interrupted.store(false);
    request.options.stop = &g_interrupted;
    void (*previous)(int) = std::signal(SIGINT, OnInterrupt);
    ScanSummary summary;
    const bool ok = ScanTrees(db, request.roots, request.options, &summary, &error);
    std::signal(SIGINT, previous);
    db.Close();
    PrintSummary(summary);
    if (g_interrupted.load()) {
        std::fprintf(stderr, "quarl-catalog: interrupted; what was read is stored\n");
        return 130;
    }
    if (!ok) {
        std::fprintf(stderr, "quarl-catalog: %s: %s\n", request.db.c_str(), error.c_str());
        return 1;
    }
    return 0;
}

}  // namespace quarl::catalog
