// Reading speed and peak memory of CLasReader::Open on large generated files
// (LAS 2.0, LAS 3.0 comma-delimited, LAS 2.0 wrapped), each set beside a
// "limit": a minimal std::from_chars loop that reads every number of the
// same file into per-column arrays, the practical ceiling of any reader.
//
//   bench_read [rows]          default 400000 rows of 25 curves (~110 MB)
#include <quarl/reader.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int kCurves = 25;
constexpr int kRuns = 3;

enum class Kind { Las20, Las30Comma, Las20Wrapped };

const char* KindName(Kind kind)
{
    switch (kind) {
    case Kind::Las20: return "LAS 2.0, space";
    case Kind::Las30Comma: return "LAS 3.0, comma";
    case Kind::Las20Wrapped: return "LAS 2.0, wrapped";
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

size_t ValuesHeld(const quarl::CLasReader& reader)
{
    size_t values = 0;
    for (const auto& section : reader) {
        for (const auto& curve : section->m_curves) values += curve.m_numbers.size();
    }
    return values;
}

// Reads the file with the library; seconds, or a negative number on failure.
double ReadWithLibrary(const std::string& path, size_t& values)
{
    quarl::CLasReader reader;
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

}  // namespace

int main(int argc, char** argv)
{
    // Child modes for the memory measurement.
    if (argc == 3 && std::strcmp(argv[1], "--read") == 0) {
        size_t values = 0;
        return ReadWithLibrary(argv[2], values) < 0 ? 1 : 0;
    }
    if (argc == 2 && std::strcmp(argv[1], "--idle") == 0) return 0;

    const long rows = argc > 1 ? std::atol(argv[1]) : 400000;
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/quarl-bench-XXXXXX";
    if (!mkdtemp(pattern.data())) {
        std::perror("mkdtemp");
        return 1;
    }
    const long idle = ChildPeakBytes(argv[0], {"--idle"});
    std::printf("%-18s %9s %10s %10s %7s %12s %12s\n", "file", "MB", "quarl MB/s", "limit MB/s",
                "ratio", "peak MB", "8B/value MB");
    int status = 0;
    for (Kind kind : {Kind::Las20, Kind::Las30Comma, Kind::Las20Wrapped}) {
        const std::string path = pattern + "/bench.las";
        Generate(path, kind, rows);
        std::FILE* f = std::fopen(path.c_str(), "rb");
        std::fseek(f, 0, SEEK_END);
        const double megabytes = static_cast<double>(std::ftell(f)) / 1e6;
        std::fclose(f);

        double best = 1e30;
        double bestLimit = 1e30;
        size_t values = 0;
        size_t limitValues = 0;
        for (int run = 0; run < kRuns; ++run) {
            const double seconds = ReadWithLibrary(path, values);
            if (seconds < 0) {
                std::printf("%s: read failed\n", KindName(kind));
                status = 1;
                break;
            }
            if (seconds < best) best = seconds;
            const double limit = ReadWithLimit(path, limitValues);
            if (limit < bestLimit) bestLimit = limit;
        }
        if (kind != Kind::Las20Wrapped && limitValues != values) {
            std::printf("%s: the limit loop read %zu values, the library %zu\n", KindName(kind),
                        limitValues, values);
        }
        const long peak = ChildPeakBytes(argv[0], {"--read", path});
        const double held = static_cast<double>(values) * 8.0 / 1e6;
        std::printf("%-18s %9.1f %10.1f %10.1f %7.2f %12.1f %12.1f\n", KindName(kind), megabytes,
                    megabytes / best, megabytes / bestLimit, bestLimit / best,
                    static_cast<double>(peak - idle) / 1e6, held);
        std::remove(path.c_str());
    }
    rmdir(pattern.c_str());
    std::printf("peak: resident memory of a child that reads the file, less that of an idle "
                "child (%.1f MB)\n",
                static_cast<double>(idle) / 1e6);
    return status;
}
