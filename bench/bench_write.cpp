// Write speed: a document of 25 numeric curves x 400,000 rows written as
// LAS 2.0 and as LAS 3.0 with the comma, in MB/s, beside a plain
// snprintf("%.15g") loop over the same cells for reference.
#include <chrono>
#include <cstdio>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <quarl/writer.h>

namespace {

constexpr int kCurves = 25;
constexpr int kRows = 400000;

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

quarl::CLasSection MakeData(const char* name)
{
    quarl::CLasSection data;
    data.m_name = name;
    data.m_type = quarl::LASSECTION_DATA;
    for (int c = 0; c < kCurves; ++c) {
        quarl::CLasCurve curve;
        curve.m_definition.m_mnemonic = c == 0 ? std::string("DEPT") : "C" + std::to_string(c);
        curve.m_numbers.reserve(kRows);
        for (int i = 0; i < kRows; ++i) {
            const double value = c == 0 ? 1000.0 + 0.1 * i : 1234.5678 + c * 3.25 + (i % 977) * 0.0625 - (i % 13) * 1.125;
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

// Writes the document once (plus one warm-up) and prints its rate.
double WriteOnce(bool isLas3, char delimiter, const std::string& path)
{
    quarl::CLasWriter writer;
    writer.SetFormat(isLas3, delimiter);
    writer.AddSection(MakeData(isLas3 ? "Log_Data" : "ASCII"));
    if (writer.Write(path) != quarl::LASFILE_OK) std::printf("write failed: %d\n", writer.GetLastError());
    const Clock::time_point start = Clock::now();
    if (writer.Write(path) != quarl::LASFILE_OK) std::printf("write failed: %d\n", writer.GetLastError());
    const double seconds = Seconds(start);
    const double mb = FileSizeMb(path);
    std::printf("%-22s %8.1f MB in %6.3f s: %7.1f MB/s\n", isLas3 ? "LAS 3.0 comma" : "LAS 2.0 space", mb,
                seconds, mb / seconds);
    return mb / seconds;
}

// The reference: every cell through snprintf into a buffer, no file.
double SnprintfRate()
{
    const quarl::CLasSection data = MakeData("ASCII");
    const Clock::time_point start = Clock::now();
    size_t bytes = 0;
    char cell[64];
    for (int r = 0; r < kRows; ++r) {
        for (int c = 0; c < kCurves; ++c)
            bytes += static_cast<size_t>(std::snprintf(cell, sizeof cell, "%.15g", data.m_curves[c].m_numbers[r])) + 1;
        bytes += 2;
    }
    const double seconds = Seconds(start);
    const double mb = static_cast<double>(bytes) / 1e6;
    std::printf("%-22s %8.1f MB in %6.3f s: %7.1f MB/s\n", "snprintf cells", mb, seconds, mb / seconds);
    return mb / seconds;
}

}  // namespace

int main(int argc, char** argv)
{
    const std::string folder = argc > 1 ? argv[1] : "/tmp";
    const std::string path = folder + "/quarl_bench_write.las";
    std::printf("%d curves x %d rows\n", kCurves, kRows);
    const double las2 = WriteOnce(false, ' ', path);
    const double las3 = WriteOnce(true, ',', path);
    const double reference = SnprintfRate();
    std::printf("ratio to snprintf: LAS 2.0 %.2fx, LAS 3.0 %.2fx\n", las2 / reference, las3 / reference);
    unlink(path.c_str());
    return 0;
}
