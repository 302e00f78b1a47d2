// Write speed of CLasWriter::Write for 25 numeric curves as LAS 2.0 and as
// LAS 3.0 with the comma, beside the target of 300 MB/s and, for reference,
// snprintf("%.15g") and std::to_chars loops over the same cells and the raw
// speed of writing the same bytes, all interleaved run by run.
// Then the cost against the size of the document (1, 10, 100 MB, and 1000 MB
// with --gb or QUARL_BENCH_GB=1) and against the number of sections and
// parameters, and a proof that the cell format gives snprintf's bytes.
//
//   bench_write [folder] [--gb] [--prove COUNT]   COUNT values compared with
//                                                  snprintf (default 20 million)
#include <quarl/writer.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "writer/number_format.h"

namespace {

constexpr int kCurves = 25;
constexpr int kRows = 400000;
constexpr int kRuns = 7;

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double MedianSeconds(int runs, const std::function<void()>& action)
{
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        const Clock::time_point start = Clock::now();
        action();
        times.push_back(Seconds(start));
    }
    return Median(times);
}

quarl::CLasSection MakeData(const char* name, int rows)
{
    quarl::CLasSection data;
    data.m_name = name;
    data.m_type = quarl::LASSECTION_DATA;
    for (int c = 0; c < kCurves; ++c) {
        quarl::CLasCurve curve;
        curve.m_definition.m_mnemonic = c == 0 ? std::string("DEPT") : "C" + std::to_string(c);
        curve.m_numbers.reserve(static_cast<size_t>(rows));
        for (int i = 0; i < rows; ++i) {
            const double value = c == 0
                                     ? 1000.0 + 0.1 * i
                                     : 1234.5678 + c * 3.25 + (i % 977) * 0.0625 - (i % 13) * 1.125;
            curve.m_numbers.push_back(value);
        }
        data.m_curves.push_back(curve);
    }
    return data;
}

double FileSizeMb(const std::string& path)
{
    struct stat st {};
    stat(path.c_str(), &st);
    return static_cast<double>(st.st_size) / 1e6;
}

void Write(quarl::CLasWriter& writer, const std::string& path)
{
    if (writer.Write(path) != quarl::LASFILE_OK) {
        std::printf("write failed: %d\n", writer.GetLastError());
        std::exit(1);
    }
}

// MB/s of `runs` writes of the document, median, after one warm-up.
double WriteRate(quarl::CLasWriter& writer, const std::string& path, int runs, double* mb)
{
    Write(writer, path);
    const double seconds = MedianSeconds(runs, [&] { Write(writer, path); });
    *mb = FileSizeMb(path);
    return *mb / seconds;
}

// The bytes of the file at `path`.
std::vector<char> FileBytes(const std::string& path)
{
    std::FILE* in = std::fopen(path.c_str(), "rb");
    std::vector<char> bytes(static_cast<size_t>(FileSizeMb(path) * 1e6 + 0.5));
    if (!in || std::fread(bytes.data(), 1, bytes.size(), in) != bytes.size()) std::exit(1);
    std::fclose(in);
    return bytes;
}

// Seconds to write `bytes` from memory to a file in one call: the raw
// output speed.
double RawPass(const std::vector<char>& bytes, const std::string& path)
{
    const Clock::time_point start = Clock::now();
    std::FILE* out = std::fopen(path.c_str(), "wb");
    std::fwrite(bytes.data(), 1, bytes.size(), out);
    std::fclose(out);
    return Seconds(start);
}

// Seconds to format every cell of `data` as a row would hold it, with
// snprintf("%.15g") or std::to_chars(general, 15) into a buffer, no file;
// `bytes` gets the size of the text.
double FormatPass(const quarl::CLasSection& data, bool useToChars, size_t* bytes)
{
    const Clock::time_point start = Clock::now();
    size_t total = 0;
    char cell[64];
    for (size_t r = 0; r < data.m_curves[0].m_numbers.size(); ++r) {
        for (const quarl::CLasCurve& curve : data.m_curves) {
            const double value = curve.m_numbers[r];
            total += useToChars
                         ? static_cast<size_t>(std::to_chars(cell, cell + sizeof cell, value,
                                                             std::chars_format::general, 15)
                                                   .ptr -
                                               cell)
                         : static_cast<size_t>(std::snprintf(cell, sizeof cell, "%.15g", value));
            ++total;  // the delimiter, or the line end behind the last cell
        }
        ++total;  // the leading blank
    }
    *bytes = total;
    return Seconds(start);
}

// Values of every kind for the proof: random bit patterns, integers, 1 to
// 15 significant digits at every scale, exact halves at the 15th digit,
// neighbours of short decimals, and the special values.
double NextValue(std::mt19937_64& random, uint64_t i)
{
    switch (i % 8) {
        case 0: {
            const uint64_t bits = random();
            double value;
            std::memcpy(&value, &bits, sizeof value);
            return value;
        }
        case 1:
            return static_cast<double>(static_cast<int64_t>(random() >> (random() % 64)));
        case 2:
        case 3: {
            const int digits = 1 + static_cast<int>(random() % 15);
            const double mantissa =
                static_cast<double>(random() % static_cast<uint64_t>(std::pow(10, digits)));
            return (random() & 1 ? -mantissa : mantissa) *
                   std::pow(10.0, static_cast<int>(random() % 44) - 22);
        }
        case 4:
            return static_cast<double>(100000000000000ull + random() % 900000000000000ull) + 0.5;
        case 5: {
            const double base = static_cast<double>(random() % 100000000) / 10000.0;
            return std::nextafter(base, random() & 1 ? 1e300 : -1e300);
        }
        case 6:
            return std::ldexp(static_cast<double>(random() % 1000000),
                              static_cast<int>(random() % 120) - 80);
        default: {
            static const double kSpecial[] = {0.0,
                                              -0.0,
                                              std::numeric_limits<double>::infinity(),
                                              -std::numeric_limits<double>::infinity(),
                                              std::numeric_limits<double>::quiet_NaN(),
                                              std::numeric_limits<double>::denorm_min(),
                                              5e-324 * 12345,
                                              std::numeric_limits<double>::max(),
                                              0.0001,
                                              0.00009999999999999999};
            return kSpecial[random() % 10];
        }
    }
}

// Compares the cell format and "%.8f" with snprintf on `count` values.
bool Prove(uint64_t count)
{
    std::mt19937_64 random(20240611);
    char mine[quarl::detail::kGeneralNumberMax];
    char theirs[512];
    uint64_t mismatches = 0;
    const Clock::time_point start = Clock::now();
    for (uint64_t i = 0; i < count; ++i) {
        const double value = NextValue(random, i);
        const size_t length =
            static_cast<size_t>(quarl::detail::FormatGeneral15(mine, value) - mine);
        const int n = std::snprintf(theirs, sizeof theirs, "%.15g", value);
        bool same = length == static_cast<size_t>(n) && std::memcmp(mine, theirs, length) == 0;
        if (i % 64 == 0) {
            std::snprintf(theirs, sizeof theirs, "%.8f", value);
            same = same && quarl::detail::Fixed8(value) == theirs;
        }
        if (!same && ++mismatches <= 5) std::printf("  mismatch at %.17g\n", value);
    }
    std::printf(
        "\nProof: %llu values through the cell format and snprintf(\"%%.15g\") (every "
        "64th also \"%%.8f\"): %llu mismatches, %.0f s\n",
        static_cast<unsigned long long>(count), static_cast<unsigned long long>(mismatches),
        Seconds(start));
    return mismatches == 0;
}

// The write speed of the document as LAS 2.0 with the blank and as LAS 3.0
// with the comma, beside the target and beside what the standard library's
// formatters and the raw output reach over the same cells. The runs of all
// of them are interleaved, so that a busy moment of a shared machine falls
// on each alike.
void HeadlineFigures(const std::string& path)
{
    const quarl::CLasSection data = MakeData("ASCII", kRows);
    quarl::CLasWriter writers[2];
    for (int v = 0; v < 2; ++v) {
        writers[v].SetFormat(v == 1, v == 1 ? ',' : ' ');
        quarl::CLasSection section = data;
        section.m_name = v == 1 ? "Log_Data" : "ASCII";
        writers[v].AddSection(section);
    }
    const std::string paths[2] = {path, path + ".las3"};
    for (int v = 0; v < 2; ++v) Write(writers[v], paths[v]);  // warm-up, and the files to copy
    const std::vector<char> bytes = FileBytes(paths[0]);
    const double mb[2] = {FileSizeMb(paths[0]), FileSizeMb(paths[1])};
    std::vector<double> write[2], raw, printfRate, toChars;
    for (int run = 0; run < kRuns; ++run) {
        for (int v = 0; v < 2; ++v) {
            const Clock::time_point start = Clock::now();
            Write(writers[v], paths[v]);
            write[v].push_back(mb[v] / Seconds(start));
        }
        size_t text = 0;
        const double printfSeconds = FormatPass(data, false, &text);
        printfRate.push_back(static_cast<double>(text) / 1e6 / printfSeconds);
        const double toCharsSeconds = FormatPass(data, true, &text);
        toChars.push_back(static_cast<double>(text) / 1e6 / toCharsSeconds);
        raw.push_back(static_cast<double>(bytes.size()) / 1e6 / RawPass(bytes, path + ".raw"));
    }
    unlink((path + ".raw").c_str());
    unlink(paths[1].c_str());
    const double snprintfMedian = Median(printfRate), toCharsMedian = Median(toChars);
    std::printf("Write speed, %d curves x %d rows, medians of %d interleaved runs (MB/s):\n",
                kCurves, kRows, kRuns);
    std::printf("%-16s %6s %7s %7s %6s %9s %6s %9s %6s %7s\n", "file", "MB", "quarl", "target",
                "ratio", "snprintf", "x", "to_chars", "x", "raw");
    for (int v = 0; v < 2; ++v) {
        const double rate = Median(write[v]);
        std::printf("%-16s %6.1f %7.1f %7.0f %6.2f %9.1f %6.2f %9.1f %6.2f %7.1f\n",
                    v == 1 ? "LAS 3.0, comma" : "LAS 2.0, space", mb[v], rate, 300.0, rate / 300.0,
                    snprintfMedian, rate / snprintfMedian, toCharsMedian, rate / toCharsMedian,
                    Median(raw));
    }
    std::printf(
        "(snprintf and to_chars: the same cells into memory, no file. Where the target was "
        "set, they ran at 41 and 132 MB/s: 300 MB/s is %.1fx snprintf and %.1fx to_chars.)\n",
        300.0 / 41, 300.0 / 132);
}

}  // namespace

int main(int argc, char** argv)
{
    std::string folder = "/tmp";
    const char* gbEnv = std::getenv("QUARL_BENCH_GB");
    bool gigabyte = gbEnv && std::strcmp(gbEnv, "1") == 0;
    uint64_t prove = 20000000;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--gb") == 0)
            gigabyte = true;
        else if (std::strcmp(argv[i], "--prove") == 0 && i + 1 < argc)
            prove = std::strtoull(argv[++i], nullptr, 10);
        else
            folder = argv[i];
    }
    const std::string path = folder + "/quarl_bench_write.las";

    HeadlineFigures(path);

    std::printf("\nCost against size (LAS 2.0, space; medians):\n%-10s %10s\n", "size",
                "quarl MB/s");
    std::vector<int> sizes = {1, 10, 100};
    if (gigabyte) sizes.push_back(1000);
    for (int mb : sizes) {
        quarl::CLasWriter writer;
        writer.SetFormat(false, ' ');
        writer.AddSection(MakeData("ASCII", mb * 1000000 / 250));
        double written = 0;
        const double rate = WriteRate(writer, path,
                                      mb <= 1     ? 31
                                      : mb <= 10  ? 11
                                      : mb <= 100 ? 5
                                                  : 3,
                                      &written);
        std::printf("%7.0f MB %10.1f\n", written, rate);
    }

    std::printf("\nCost against counts (medians):\n");
    for (int count : {1000, 10000}) {
        quarl::CLasWriter writer;
        writer.SetFormat(true, ',');
        writer.AddSection(MakeData("Log_Data", 10));
        for (int i = 0; i < count; ++i) {
            quarl::CLasSection section;
            section.m_name = "Run_Parameter[" + std::to_string(i) + "]";
            section.m_type = quarl::LASSECTION_PARAMETER;
            quarl::CLasParam param;
            param.m_mnemonic = "P";
            param.m_value = std::to_string(i);
            section.m_params.push_back(param);
            writer.AddSection(section);
        }
        Write(writer, path);
        const double seconds = MedianSeconds(5, [&] { Write(writer, path); });
        std::printf("%6d parameter sections: %8.2f ms, %7.3f us/section\n", count, seconds * 1e3,
                    seconds * 1e6 / count);
    }
    for (int count : {10000, 100000}) {
        quarl::CLasWriter writer;
        writer.AddSection(MakeData("ASCII", 10));
        quarl::CLasSection section;
        section.m_name = "Parameter";
        section.m_type = quarl::LASSECTION_PARAMETER;
        for (int i = 0; i < count; ++i) {
            quarl::CLasParam param;
            param.m_mnemonic = "P" + std::to_string(i);
            param.m_value = std::to_string(i);
            section.m_params.push_back(param);
        }
        writer.AddSection(section);
        Write(writer, path);
        const double seconds = MedianSeconds(5, [&] { Write(writer, path); });
        std::printf("%6d parameters in one section: %8.2f ms, %7.3f us/parameter\n", count,
                    seconds * 1e3, seconds * 1e6 / count);
    }
    unlink(path.c_str());
    return Prove(prove) ? 0 : 1;
}
