// The speed of quarl-catalog's scan on a generated archive: 10,000 LAS 2.0
// files of realistic headers and sizes (most of tens to hundreds of KB, a
// tenth of a few MB, twenty of tens of MB), written to a temporary folder so
// that they are in the page cache. Side by side in one run it prints files/s
// of
//   - the first scan into a new catalog,
//   - a second scan of the unchanged tree,
//   - the same files read whole by CLasReader, with as many threads,
// and the cost of the header reads the scan makes (headersOnly with
// dataEnds) against whole reads of the same files.
//
//   bench_catalog [--files N] [--threads N] [--keep DIR]
#include <quarl/reader.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "catalog/catalog_db.h"
#include "catalog/catalog_scan.h"

namespace fs = std::filesystem;

namespace {

uint64_t Next(uint64_t& state)
{
    state = state * 6364136223846793005ull + 1442695040888963407ull;
    return state >> 33;
}

const char* const kMnemonics[] = {"GR",   "CALI", "SP",   "RHOB", "NPHI", "DT",   "ILD", "ILM",
                                  "SFLU", "PEF",  "DRHO", "LLD",  "LLS",  "MSFL", "DTS", "CGR",
                                  "SGR",  "TNPH", "RT",   "RXO",  "BS",   "TENS", "SPD", "MINV"};

// The header of file `n`: Version, Well with the usual lines, Curve with
// `curves` curves, Parameter with a few lines.
std::string Header(uint64_t n, int curves, long rows, uint64_t& state)
{
    char line[512];
    std::string h =
        "~VERSION INFORMATION\n VERS.   2.0 : CWLS LOG ASCII STANDARD - VERSION 2.0\n"
        " WRAP.   NO  : ONE LINE PER DEPTH STEP\n~WELL INFORMATION\n";
    const double start = 200.0 + static_cast<double>(Next(state) % 3000);
    std::snprintf(line, sizeof line,
                  " STRT.M %.4f : START DEPTH\n STOP.M %.4f : STOP DEPTH\n STEP.M 0.1524 : STEP\n"
                  " NULL. -999.25 : NULL VALUE\n COMP. OPERATOR %llu LTD : COMPANY\n"
                  " WELL. WELL %llu-%llu : WELL\n FLD . FIELD %llu : FIELD\n",
                  start, start + 0.1524 * static_cast<double>(rows - 1),
                  static_cast<unsigned long long>(n % 97), static_cast<unsigned long long>(n / 3),
                  static_cast<unsigned long long>(n % 3), static_cast<unsigned long long>(n % 41));
    h += line;
    std::snprintf(line, sizeof line,
                  " LOC . %llu-%llu-0%llu-2%lluW5 : LOCATION\n PROV. ALBERTA : PROVINCE\n"
                  " SRVC. LOGGING CO : SERVICE COMPANY\n DATE. 2019-06-%02llu : LOG DATE\n"
                  " UWI . 100%012llu : UNIQUE WELL ID\n LATI. 52.%llu : LATITUDE\n"
                  " LONG. -114.%llu : LONGITUDE\n",
                  static_cast<unsigned long long>(n % 16), static_cast<unsigned long long>(n % 36),
                  static_cast<unsigned long long>(n % 9), static_cast<unsigned long long>(n % 7),
                  static_cast<unsigned long long>(1 + n % 28), static_cast<unsigned long long>(n),
                  static_cast<unsigned long long>(Next(state) % 100000),
                  static_cast<unsigned long long>(Next(state) % 100000));
    h += line;
    h += "~CURVE INFORMATION\n DEPT.M : DEPTH\n";
    for (int c = 1; c < curves; ++c) {
        const size_t m = static_cast<size_t>(c - 1) % std::size(kMnemonics);
        std::string name = kMnemonics[m];
        if (c > static_cast<int>(std::size(kMnemonics))) name += std::to_string(c);
        h += " " + name + ".UNIT 07 310 01 00 : CURVE " + std::to_string(c) + "\n";
    }
    h += "~PARAMETER INFORMATION\n BHT .DEGC 68.0 : BOTTOM HOLE TEMPERATURE\n"
         " BS  .MM 222.0 : BIT SIZE\n RMF .OHMM 0.216 : MUD FILTRATE RESISTIVITY\n"
         " MDEN.K/M3 2710.0 : MATRIX DENSITY\n~A DEPT\n";
    return h;
}

// Writes a file of about `bytes` bytes.
void WriteFile(const fs::path& path, uint64_t n, size_t bytes, uint64_t& state)
{
    const int curves = 6 + static_cast<int>(Next(state) % 20);
    const size_t rowBytes = 12 * static_cast<size_t>(curves);
    const long rows = std::max<long>(2, static_cast<long>(bytes / rowBytes));
    std::string text = Header(n, curves, rows, state);
    // The values of one row repeat with the depth changed: the data's bytes
    // matter here, not their variety.
    std::string values;
    char cell[32];
    for (int c = 1; c < curves; ++c) {
        std::snprintf(cell, sizeof cell, " %11.4f",
                      static_cast<double>(Next(state) % 100000) / 100.0);
        values += cell;
    }
    values += "\n";
    const double start = std::strtod(text.c_str() + text.find("STRT.M") + 6, nullptr);
    text.reserve(text.size() + static_cast<size_t>(rows) * (values.size() + 12));
    for (long r = 0; r < rows; ++r) {
        std::snprintf(cell, sizeof cell, "%.4f", start + 0.1524 * static_cast<double>(r));
        text += cell;
        text += values;
    }
    std::ofstream(path, std::ios::binary)
        .write(text.data(), static_cast<std::streamsize>(text.size()));
}

// The archive: folders of 100 files; sizes as archives hold them.
std::vector<std::string> MakeArchive(const fs::path& root, size_t files)
{
    std::vector<std::string> paths;
    uint64_t state = 42;
    for (size_t n = 0; n < files; ++n) {
        const fs::path folder =
            root / ("field" + std::to_string(n / 1000)) / ("w" + std::to_string(n / 100));
        if (n % 100 == 0) fs::create_directories(folder);
        size_t bytes = 20000 + Next(state) % 180000;              // 20-200 KB
        if (n % 10 == 3) bytes = 200000 + Next(state) % 2800000;  // 0.2-3 MB
        if (files >= 500 && n % (files / 20) == 7)
            bytes = 20000000 + Next(state) % 20000000;  // 20-40 MB
        const fs::path path = folder / ("log" + std::to_string(n) + ".las");
        WriteFile(path, n, bytes, state);
        paths.push_back(path.string());
    }
    return paths;
}

double Seconds(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Reads every file with `options` in `threads` threads; the seconds taken.
double ReadAll(const std::vector<std::string>& paths, const quarl::CLasReadOptions& options,
               unsigned threads)
{
    std::atomic<size_t> next{0}, failed{0};
    const auto start = std::chrono::steady_clock::now();
    std::vector<std::thread> workers;
    for (unsigned t = 0; t < threads; ++t)
        workers.emplace_back([&] {
            for (size_t i; (i = next++) < paths.size();) {
                quarl::CLasReader reader;
                reader.SetOptions(options);
                if (reader.Open(tessel::TxString(paths[i])) != quarl::LASFILE_OK) ++failed;
            }
        });
    for (std::thread& w : workers) w.join();
    const double seconds = Seconds(start);
    if (failed) std::printf("  (%zu files failed to read)\n", failed.load());
    return seconds;
}

double Scan(const std::string& root, const std::string& db, unsigned threads,
            quarl::catalog::ScanSummary* summary)
{
    quarl::catalog::CatalogDb catalog;
    std::string error;
    if (!catalog.Open(db, true, &error)) {
        std::printf("cannot open the catalog: %s\n", error.c_str());
        std::exit(1);
    }
    quarl::catalog::ScanOptions options;
    options.threads = threads;
    const auto start = std::chrono::steady_clock::now();
    if (!quarl::catalog::ScanTrees(catalog, {root}, options, summary, &error)) {
        std::printf("scan failed: %s\n", error.c_str());
        std::exit(1);
    }
    return Seconds(start);
}

}  // namespace

int main(int argc, char** argv)
{
    size_t files = 10000;
    unsigned threads = 2;
    std::string keep;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!std::strcmp(argv[i], "--files")) files = std::strtoul(argv[i + 1], nullptr, 10);
        if (!std::strcmp(argv[i], "--threads"))
            threads = static_cast<unsigned>(std::atoi(argv[i + 1]));
        if (!std::strcmp(argv[i], "--keep")) keep = argv[i + 1];
    }
    const fs::path work = keep.empty() ? fs::temp_directory_path() /
                                             ("quarl_bench_catalog_" + std::to_string(getpid()))
                                       : fs::path(keep);
    const fs::path root = work / "archive";
    const std::string db = (work / "catalog.sqlite").string();
    std::vector<std::string> paths;
    if (keep.empty() || !fs::exists(root)) {
        std::printf("writing %zu files under %s ...\n", files, root.c_str());
        paths = MakeArchive(root, files);
    } else {
        for (const auto& e : fs::recursive_directory_iterator(root))
            if (e.is_regular_file()) paths.push_back(e.path().string());
    }
    uintmax_t bytes = 0;
    for (const std::string& p : paths) bytes += fs::file_size(p);
    std::printf("%zu files, %.1f MB, %u threads\n", paths.size(), static_cast<double>(bytes) / 1e6,
                threads);
    fs::remove(db);
    fs::remove(db + "-wal");
    fs::remove(db + "-shm");

    quarl::CLasReadOptions whole;
    whole.lenient = true;
    quarl::CLasReadOptions headers = whole;
    headers.headersOnly = true;
    headers.dataEnds = true;
    ReadAll(paths, whole, threads);  // warms the page cache
    quarl::catalog::ScanSummary first, again;
    const double firstSeconds = Scan(root.string(), db, threads, &first);
    const double againSeconds = Scan(root.string(), db, threads, &again);
    const double wholeSeconds = ReadAll(paths, whole, threads);
    const double headerSeconds = ReadAll(paths, headers, threads);
    // The large files alone: there a header read costs its header, not the file.
    std::vector<std::string> large;
    for (const std::string& p : paths)
        if (fs::file_size(p) >= 10000000) large.push_back(p);
    const double largeWhole = ReadAll(large, whole, 1);
    const double largeHeaders = ReadAll(large, headers, 1);
    const double n = static_cast<double>(paths.size());
    std::printf("first scan:      %8.3f s  %9.0f files/s  (%zu read)\n", firstSeconds,
                n / firstSeconds, first.read);
    std::printf("unchanged scan:  %8.3f s  %9.0f files/s  (%zu read, %zu unchanged)\n",
                againSeconds, n / againSeconds, again.read, again.unchanged);
    std::printf("whole reads:     %8.3f s  %9.0f files/s\n", wholeSeconds, n / wholeSeconds);
    std::printf("header reads:    %8.3f s  %9.0f files/s  (%.2f%% of the whole reads)\n",
                headerSeconds, n / headerSeconds, headerSeconds * 100.0 / wholeSeconds);
    std::printf(
        "the %zu files of 10 MB or more, one thread: whole %.3f s, headers %.4f s (%.3f%%)\n",
        large.size(), largeWhole, largeHeaders, largeHeaders * 100.0 / largeWhole);
    std::printf("first scan / whole reads: %.3f   unchanged scan / whole reads: %.4f\n",
                firstSeconds / wholeSeconds, againSeconds / wholeSeconds);
    if (keep.empty()) fs::remove_all(work);
    return 0;
}
