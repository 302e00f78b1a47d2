// Reading speed and peak memory of CLasReader::Open on large generated files
// (LAS 2.0, LAS 3.0 comma-delimited, LAS 2.0 wrapped), each set beside a
// "limit": a minimal std::from_chars loop that reads every number of the
// same file into per-column arrays, the practical ceiling of any reader.
//
// Then the cost against the size of the input (MB/s at 1, 10 and 100 MB, and
// 1000 MB with --gb or QUARL_BENCH_GB=1), against the number of sections,
// parameters and curves, and the time to open and read a typical 50 KB file.
//
//   bench_read [rows] [--gb]   default 400000 rows of 25 curves (~110 MB)
//   bench_read --make KIND ROWS PATH   writes a file (0 LAS 2.0, 1 LAS 3.0
//                                      comma, 2 wrapped) for profiling
//   bench_read --options ROWS          strict, lenient, headersOnly and dataEnds reads
//                                      of one LAS 2.0 file side by side
//   bench_read --time PATH             the median seconds of a strict read of PATH
//                                      (bench_web.py compares the browser's with it)
#include <fcntl.h>
#include <quarl/reader.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

constexpr int kCurves = 25;
constexpr int kRuns = 5;

enum class Kind { Las20, Las30Comma, Las20Wrapped };

const char* KindName(Kind kind)
{
    switch (kind) {
        case Kind::Las20:
            return "LAS 2.0, space";
        case Kind::Las30Comma:
            return "LAS 3.0, comma";
        case Kind::Las20Wrapped:
            return "LAS 2.0, wrapped";
    }
    return "";
}

// A value with four decimals, like 1234.5678, from a simple generator.
double NextValue(uint64_t& state)
{
    state = state * 6364136223846793005ull + 1442695040888963407ull;
    return static_cast<double>((state >> 33) % 100000000ull) / 10000.0;
}

std::string Head(Kind kind, long rows)
{
    const bool las3 = kind == Kind::Las30Comma;
    std::string head = "~Version\nVERS. ";
    head += las3 ? "3.0 : CWLS LOG ASCII STANDARD -VERSION 3.0\n"
                 : "2.0 : CWLS LOG ASCII STANDARD -VERSION 2.0\n";
    head += kind == Kind::Las20Wrapped ? "WRAP. YES : Multiple lines per depth step\n"
                                       : "WRAP. NO : One line per depth step\n";
    if (las3) head += "DLM. COMMA : Column delimiter\n";
    char line[160];
    std::snprintf(line, sizeof line,
                  "~Well\nSTRT.M 1000.0 : start\nSTOP.M %.3f : stop\nSTEP.M 0.125 : step\n"
                  "NULL. -999.25 : null\n",
                  1000.0 + 0.125 * static_cast<double>(rows - 1));
    head += line;
    head += las3 ? "~Log_Definition\n" : "~Curve\n";
    head += "DEPT.M : depth\n";
    for (int c = 1; c < kCurves; ++c) head += "C" + std::to_string(c) + ".UNIT : curve\n";
    head += las3 ? "~Log_Data\n" : "~A\n";
    return head;
}

void Generate(const std::string& path, Kind kind, long rows)
{
    std::FILE* out = std::fopen(path.c_str(), "wb");
    if (!out) {
        std::perror(path.c_str());
        std::exit(1);
    }
    const std::string head = Head(kind, rows);
    std::fwrite(head.data(), 1, head.size(), out);
    uint64_t state = 42;
    char row[1024];
    for (long r = 0; r < rows; ++r) {
        int n = std::snprintf(row, sizeof row, "%10.3f", 1000.0 + 0.125 * static_cast<double>(r));
        for (int c = 1; c < kCurves; ++c) {
            const char* sep = kind == Kind::Las30Comma ? ", " : " ";
            if (kind == Kind::Las20Wrapped && (c - 1) % 6 == 0) sep = "\n";
            n += std::snprintf(row + n, sizeof row - static_cast<size_t>(n), "%s%10.4f", sep,
                               NextValue(state));
        }
        row[n++] = '\n';
        std::fwrite(row, 1, static_cast<size_t>(n), out);
    }
    std::fclose(out);
}

double Seconds(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// The median of `runs` timings of `action`, in seconds.
double MedianSeconds(int runs, const std::function<void()>& action)
{
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        const auto start = std::chrono::steady_clock::now();
        action();
        times.push_back(Seconds(start));
    }
    return Median(times);
}

size_t ValuesHeld(const quarl::CLasReader& reader)
{
    size_t values = 0;
    for (const auto& section : reader) {
        for (const auto& curve : section->m_curves) values += curve.m_numbers.size();
    }
    return values;
}

// Reads the file with the library; seconds, or a negative number on failure.
double ReadWithLibrary(const std::string& path, size_t& values, unsigned threads = 1)
{
    quarl::CLasReader reader;
    quarl::CLasReadOptions options;
    options.threads = threads;
    reader.SetOptions(options);
    const auto start = std::chrono::steady_clock::now();
    const quarl::ELASFILEERROR result = reader.Open(tessel::TxString(path));
    const double seconds = Seconds(start);
    values = ValuesHeld(reader);
    return result == quarl::LASFILE_OK ? seconds : -1.0;
}

// The limit: the whole file mapped into memory, then from_chars over every
// number behind the data header, column after column; commas and line ends
// are separators. No parameter lines, no comments, no checks, no copy.
double ReadWithLimit(const std::string& path, size_t& values)
{
    const auto start = std::chrono::steady_clock::now();
    const int fd = open(path.c_str(), O_RDONLY);
    struct stat st {};
    fstat(fd, &st);
    const size_t size = static_cast<size_t>(st.st_size);
    void* mapped = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, fd, 0);
    close(fd);
    if (mapped == MAP_FAILED) return 1e30;
    const char* p = static_cast<const char*>(mapped);
    const char* end = p + size;
    const std::string_view text(p, size);
    size_t data = text.find("_Data\n");
    if (data == std::string_view::npos) data = text.find("~A\n");
    p = data == std::string_view::npos ? end : p + text.find('\n', data) + 1;

    std::vector<std::vector<double>> columns(kCurves);
    int column = 0;
    while (p < end) {
        while (p < end && (*p == ' ' || *p == ',' || *p == '\n')) ++p;
        if (p >= end) break;
        double value = 0.0;
        const std::from_chars_result r = std::from_chars(p, end, value);
        if (r.ec != std::errc()) break;
        p = r.ptr;
        columns[static_cast<size_t>(column)].push_back(value);
        column = column + 1 == kCurves ? 0 : column + 1;
    }
    const double seconds = Seconds(start);
    munmap(mapped, size);
    values = 0;
    for (const auto& c : columns) values += c.size();
    return seconds;
}

// Peak resident memory in bytes of a child that runs this program with
// `args`; the child reads a file and exits.
long ChildPeakBytes(const char* self, const std::vector<std::string>& args)
{
    const pid_t child = fork();
    if (child == 0) {
        std::vector<char*> argv{const_cast<char*>(self)};
        for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        execv("/proc/self/exe", argv.data());
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return -1;
    return usage.ru_maxrss * 1024L;
}

double FileMegabytes(const std::string& path)
{
    struct stat st {};
    stat(path.c_str(), &st);
    return static_cast<double>(st.st_size) / 1e6;
}

void WriteText(const std::string& path, const std::string& text)
{
    std::FILE* out = std::fopen(path.c_str(), "wb");
    if (!out) {
        std::perror(path.c_str());
        std::exit(1);
    }
    std::fwrite(text.data(), 1, text.size(), out);
    std::fclose(out);
}

// Library and limit over one file, interleaved run by run; medians.
struct Pair {
    double library = 0;
    double limit = 0;
    size_t values = 0;
    size_t limitValues = 0;
    bool failed = false;
};

Pair ReadBoth(const std::string& path, int runs)
{
    Pair pair;
    std::vector<double> library;
    std::vector<double> limit;
    for (int run = 0; run < runs; ++run) {
        const double seconds = ReadWithLibrary(path, pair.values);
        if (seconds < 0) pair.failed = true;
        library.push_back(seconds);
        limit.push_back(ReadWithLimit(path, pair.limitValues));
    }
    pair.library = Median(library);
    pair.limit = Median(limit);
    return pair;
}

// Seconds for CLasReader::Open of the file, median of `runs`.
double OpenSeconds(const std::string& path, int runs)
{
    return MedianSeconds(runs, [&] {
        quarl::CLasReader reader;
        if (reader.Open(tessel::TxString(path)) != quarl::LASFILE_OK) {
            std::printf("%s: read failed\n", path.c_str());
            std::exit(1);
        }
    });
}

// MB/s at 1, 10, 100 (and 1000) MB of LAS 2.0 beside the limit.
void SizeScaling(const std::string& folder, bool gigabyte)
{
    std::printf("\nCost against size (LAS 2.0, space; medians):\n");
    std::printf("%-10s %10s %10s %7s\n", "size", "quarl MB/s", "limit MB/s", "ratio");
    const std::string path = folder + "/scale.las";
    std::vector<long> sizes = {1, 10, 100};
    if (gigabyte) sizes.push_back(1000);
    for (long mb : sizes) {
        Generate(path, Kind::Las20, mb * 1000000 / 275);
        const double megabytes = FileMegabytes(path);
        const int runs = mb <= 1 ? 31 : mb <= 10 ? 11 : mb <= 100 ? 5 : 3;
        const Pair pair = ReadBoth(path, runs);
        std::printf("%7.0f MB %10.1f %10.1f %7.2f%s\n", megabytes, megabytes / pair.library,
                    megabytes / pair.limit, pair.limit / pair.library,
                    pair.failed ? "  (read failed)" : "");
        std::remove(path.c_str());
    }
}

// Files with many sections, parameters or curves, each at two counts ten
// times apart: a cost per item that stays the same is linear.
void CountScaling(const std::string& folder)
{
    std::printf("\nCost against counts (medians):\n");
    std::printf("%-44s %10s %14s\n", "file", "ms", "per item");
    const std::string path = folder + "/count.las";
    const std::string version = "~Version\nVERS. 2.0 : v\nWRAP. NO : w\n~Well\nNULL. -999.25 : n\n";
    auto report = [&](const char* what, long count, const char* unit, double perItemScale) {
        const double seconds = OpenSeconds(path, 5);
        std::printf("%-32s %11ld %10.2f %10.3f %s\n", what, count, seconds * 1e3,
                    seconds * perItemScale / static_cast<double>(count), unit);
    };
    for (long count : {1000L, 10000L}) {
        std::string text = version;
        for (long i = 0; i < count / 2; ++i) {
            const std::string n = std::to_string(i);
            text +=
                "~Core_Definition[" + n + "]\nA.M : a\nB.M : b\n~Core_Data[" + n + "]\n1 2\n3 4\n";
        }
        WriteText(path, text);
        report("sections (definition + data)", count, "us/section", 1e6);
    }
    for (long count : {10000L, 100000L}) {
        std::string text = version + "~Parameter\n";
        for (long i = 0; i < count; ++i)
            text += "P" + std::to_string(i) + ".M " + std::to_string(i) + " : parameter\n";
        WriteText(path, text);
        report("parameters in one section", count, "us/parameter", 1e6);
    }
    for (long count : {1000L, 10000L}) {
        std::string text = version + "~Curve\n";
        for (long i = 0; i < count; ++i) text += "C" + std::to_string(i) + ".M : curve\n";
        text += "~A\n";
        for (int row = 0; row < 40; ++row) {
            for (long i = 0; i < count; ++i)
                text += " " + std::to_string(row * 7 + i % 1000) + ".25";
            text += "\n";
        }
        WriteText(path, text);
        report("curves x 40 rows", count, "us/curve", 1e6);
    }
    std::remove(path.c_str());
}

// Seconds for one read of the file under `options`; exits on failure.
double ReadWithOptions(const std::string& path, const quarl::CLasReadOptions& options)
{
    quarl::CLasReader reader;
    reader.SetOptions(options);
    const auto start = std::chrono::steady_clock::now();
    const quarl::ELASFILEERROR result = reader.Open(tessel::TxString(path));
    const double seconds = Seconds(start);
    if (result != quarl::LASFILE_OK) {
        std::printf("%s: read failed\n", path.c_str());
        std::exit(1);
    }
    return seconds;
}

// Seconds to take every byte of the file from the system in 256 KiB blocks
// and look at none: what any read that must see every byte costs at least.
double ReadBytesAlone(const std::string& path)
{
    const auto start = std::chrono::steady_clock::now();
    const int fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0) std::exit(1);
    std::vector<char> block(1 << 18);
    while (::read(fd, block.data(), block.size()) > 0) {
    }
    ::close(fd);
    return Seconds(start);
}

// The reading options on the 100 MB LAS 2.0 file: a strict read, a lenient
// one and one of the headers only, interleaved run by run; medians.
void Options(const std::string& folder, long rows)
{
    const std::string path = folder + "/options.las";
    Generate(path, Kind::Las20, rows);
    quarl::CLasReadOptions lenient;
    lenient.lenient = true;
    quarl::CLasReadOptions headers;
    headers.headersOnly = true;
    quarl::CLasReadOptions ends = headers;
    ends.dataEnds = true;
    quarl::CLasReadOptions endsLenient = ends;
    endsLenient.lenient = true;
    std::vector<double> strictTimes, lenientTimes, headerTimes, byteTimes, endTimes,
        endLenientTimes;
    for (int run = 0; run < kRuns; ++run) {
        strictTimes.push_back(ReadWithOptions(path, {}));
        lenientTimes.push_back(ReadWithOptions(path, lenient));
        headerTimes.push_back(ReadWithOptions(path, headers));
        byteTimes.push_back(ReadBytesAlone(path));
        endTimes.push_back(ReadWithOptions(path, ends));
        endLenientTimes.push_back(ReadWithOptions(path, endsLenient));
    }
    const double strict = Median(strictTimes);
    std::printf("\nReading options, %.0f MB LAS 2.0 (medians of %d interleaved runs):\n",
                FileMegabytes(path), kRuns);
    std::printf(
        "strict %.3f s, lenient %.3f s (%.2f x strict), headersOnly %.4f s (%.1f%% of "
        "strict)\n",
        strict, Median(lenientTimes), Median(lenientTimes) / strict, Median(headerTimes),
        Median(headerTimes) * 100.0 / strict);
    // The data rows end only at the next header, so a read of the headers
    // passes every byte of them: this is its floor.
    std::printf("the file's bytes alone, looked at by nothing: %.4f s (%.1f%% of strict)\n",
                Median(byteTimes), Median(byteTimes) * 100.0 / strict);
    // Stopping at ~A and taking the last row from the file's end passes none.
    std::printf("headersOnly with dataEnds: %.6f s (%.3f%% of strict), leniently %.6f s (%.3f%%)\n",
                Median(endTimes), Median(endTimes) * 100.0 / strict, Median(endLenientTimes),
                Median(endLenientTimes) * 100.0 / strict);
    std::remove(path.c_str());
}

// Open and read of a typical small file: 25 curves, about 50 KB.
void SmallFile(const std::string& folder)
{
    const std::string path = folder + "/small.las";
    Generate(path, Kind::Las20, 180);
    const double kb = FileMegabytes(path) * 1000.0;
    OpenSeconds(path, 100);  // warm
    std::vector<double> batches;
    for (int b = 0; b < 15; ++b) batches.push_back(OpenSeconds(path, 201));
    std::printf(
        "\nSmall file: open and read of a %.0f KB LAS 2.0 file: %.1f us (median; limit "
        "100 us)\n",
        kb, Median(batches) * 1e6);
    std::remove(path.c_str());
}

}  // namespace

// Reads the file on `threads` threads; wall seconds and CPU seconds of the
// whole process, or a negative number on failure.
double ReadOnThreads(const std::string& path, unsigned threads, double& cpuSeconds)
{
    quarl::CLasReader reader;
    quarl::CLasReadOptions options;
    options.threads = threads;
    reader.SetOptions(options);
    rusage before{}, after{};
    getrusage(RUSAGE_SELF, &before);
    const auto start = std::chrono::steady_clock::now();
    const quarl::ELASFILEERROR result = reader.Open(tessel::TxString(path));
    const double seconds = Seconds(start);
    getrusage(RUSAGE_SELF, &after);
    auto cpu = [](const rusage& u) {
        return static_cast<double>(u.ru_utime.tv_sec + u.ru_stime.tv_sec) +
               static_cast<double>(u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
    };
    cpuSeconds = cpu(after) - cpu(before);
    return result == quarl::LASFILE_OK ? seconds : -1.0;
}

// The rate of a strict read of one LAS 2.0 file for each thread count up to
// the machine's cores (at least 2), runs interleaved, with the CPU time of
// each read and the peak memory of a child that reads it.
int ThreadScaling(const char* self, const std::string& folder, long rows)
{
    const std::string path = folder + "/threads.las";
    Generate(path, Kind::Las20, rows);
    const double megabytes = FileMegabytes(path);
    const unsigned most = std::max(2u, std::thread::hardware_concurrency());
    std::vector<std::vector<double>> wall(most + 1), cpu(most + 1);
    for (int run = 0; run < kRuns; ++run) {
        for (unsigned n = 1; n <= most; ++n) {
            double cpuSeconds = 0.0;
            const double seconds = ReadOnThreads(path, n, cpuSeconds);
            if (seconds < 0) {
                std::printf("%u threads: read failed\n", n);
                return 1;
            }
            wall[n].push_back(seconds);
            cpu[n].push_back(cpuSeconds);
        }
    }
    const long idle = ChildPeakBytes(self, {"--idle"});
    std::printf("\nThreads, %.0f MB LAS 2.0 (medians of %d interleaved runs; %u cores):\n",
                megabytes, kRuns, std::thread::hardware_concurrency());
    std::printf("%7s %10s %9s %9s %9s %9s\n", "threads", "MB/s", "speedup", "wall s", "cpu s",
                "peak MB");
    for (unsigned n = 1; n <= most; ++n) {
        const long peak = ChildPeakBytes(self, {"--read-threads", std::to_string(n), path});
        std::printf("%7u %10.1f %9.2f %9.4f %9.4f %9.1f\n", n, megabytes / Median(wall[n]),
                    Median(wall[1]) / Median(wall[n]), Median(wall[n]), Median(cpu[n]),
                    static_cast<double>(peak - idle) / 1e6);
    }
    std::remove(path.c_str());
    return 0;
}

int main(int argc, char** argv)
{
    // Child modes for the memory measurement.
    if (argc == 3 && std::strcmp(argv[1], "--read") == 0) {
        size_t values = 0;
        return ReadWithLibrary(argv[2], values) < 0 ? 1 : 0;
    }
    if (argc == 4 && std::strcmp(argv[1], "--read-threads") == 0) {
        double cpuSeconds = 0.0;
        return ReadOnThreads(argv[3], static_cast<unsigned>(std::atoi(argv[2])), cpuSeconds) < 0;
    }
    if (argc == 2 && std::strcmp(argv[1], "--idle") == 0) return 0;
    // Only the rate for each thread count: --threads [rows].
    if (argc >= 2 && std::strcmp(argv[1], "--threads") == 0) {
        const char* base = std::getenv("TMPDIR");
        return ThreadScaling(argv[0], base && *base ? base : "/tmp",
                             argc > 2 ? std::atol(argv[2]) : 400000);
    }
    // --time FILE [THREADS]: the median time of a strict read.
    if ((argc == 3 || argc == 4) && std::strcmp(argv[1], "--time") == 0) {
        const unsigned threads = argc == 4 ? static_cast<unsigned>(std::atoi(argv[3])) : 1;
        std::vector<double> seconds;
        for (int run = 0; run < kRuns; ++run) {
            size_t values = 0;
            seconds.push_back(ReadWithLibrary(argv[2], values, threads));
            if (seconds.back() < 0) return 1;
        }
        std::printf("%.4f\n", Median(seconds));
        return 0;
    }
    if (argc == 3 && std::strcmp(argv[1], "--options") == 0) {
        const char* base = std::getenv("TMPDIR");
        Options(base && *base ? base : "/tmp", std::atol(argv[2]));
        return 0;
    }
    if (argc == 5 && std::strcmp(argv[1], "--make") == 0) {
        Generate(argv[4], static_cast<Kind>(std::atoi(argv[2])), std::atol(argv[3]));
        return 0;
    }

    long rows = 400000;
    const char* gbEnv = std::getenv("QUARL_BENCH_GB");
    bool gigabyte = gbEnv && std::strcmp(gbEnv, "1") == 0;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--gb") == 0)
            gigabyte = true;
        else
            rows = std::atol(argv[i]);
    }
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/quarl-bench-XXXXXX";
    if (!mkdtemp(pattern.data())) {
        std::perror("mkdtemp");
        return 1;
    }
    const long idle = ChildPeakBytes(argv[0], {"--idle"});
    std::printf("Read speed (medians of %d interleaved runs) and peak memory:\n", kRuns);
    std::printf("%-18s %9s %10s %10s %7s %7s %9s %11s %7s\n", "file", "MB", "quarl MB/s",
                "limit MB/s", "ratio", "target", "peak MB", "allowed MB", "ratio");
    int status = 0;
    for (Kind kind : {Kind::Las20, Kind::Las30Comma, Kind::Las20Wrapped}) {
        const std::string path = pattern + "/bench.las";
        Generate(path, kind, rows);
        const double megabytes = FileMegabytes(path);
        const Pair pair = ReadBoth(path, kRuns);
        if (pair.failed) {
            std::printf("%s: read failed\n", KindName(kind));
            status = 1;
        }
        if (kind != Kind::Las20Wrapped && pair.limitValues != pair.values) {
            std::printf("%s: the limit loop read %zu values, the library %zu\n", KindName(kind),
                        pair.limitValues, pair.values);
        }
        const long peak = ChildPeakBytes(argv[0], {"--read", path});
        const double held = static_cast<double>(pair.values) * 8.0 / 1e6;
        const double allowed = held * 1.3 + 16.0;
        const double peakMb = static_cast<double>(peak - idle) / 1e6;
        std::printf("%-18s %9.1f %10.1f %10.1f %7.2f %7.2f %9.1f %11.1f %7.2f\n", KindName(kind),
                    megabytes, megabytes / pair.library, megabytes / pair.limit,
                    pair.limit / pair.library, kind == Kind::Las20Wrapped ? 0.6 : 0.8, peakMb,
                    allowed, peakMb / allowed);
        std::remove(path.c_str());
    }
    std::printf(
        "peak: resident memory of a child that reads the file, less that of an idle "
        "child (%.1f MB); allowed: 1.3 x 8 bytes per value + 16 MB\n",
        static_cast<double>(idle) / 1e6);
    status |= ThreadScaling(argv[0], pattern, rows);
    Options(pattern, rows);
    SizeScaling(pattern, gigabyte);
    CountScaling(pattern);
    SmallFile(pattern);
    rmdir(pattern.c_str());
    return status;
}
