// Growth at the limits: for each shape of an extreme file, the time and peak
// memory of a read (or a write) at size N and 4N, each in a child process.
// Linear work shows a time ratio near 4; quadratic work near 16.
//
//   bench_limits [scale [word]]   (scale 1 by default, 4 gives N four times
//                                  larger; only the shapes whose name holds word)
//   bench_limits line-gb   (one read of a file that is a single 1 GB line)
#include <quarl/quarl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

namespace {

using quarl::CLasCurve;
using quarl::CLasSection;

const std::string kHead = "~Version\nVERS. 3.0 : v\nWRAP. NO : w\nDLM. COMMA : d\n";

// Writes a file made by `emit`, which appends text to a buffer that is
// flushed whenever it passes 1 MB.
std::string MakeFile(const std::string& name,
                     const std::function<void(std::string&, std::FILE*)>& emit)
{
    const std::string path = "/tmp/quarl-bench-limits-" + name + ".las";
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) std::abort();
    std::string buffer;
    emit(buffer, file);
    std::fwrite(buffer.data(), 1, buffer.size(), file);
    std::fclose(file);
    return path;
}

void Drain(std::string& buffer, std::FILE* file)
{
    if (buffer.size() < (1u << 20)) return;
    std::fwrite(buffer.data(), 1, buffer.size(), file);
    buffer.clear();
}

struct Measure {
    double seconds;
    long peakBytes;
};

// Runs `work` in a child; its time and the child's peak resident memory.
Measure InChild(const std::function<int()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) _exit(work());
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        std::printf("  (child failed: %d)\n", status);
    return {seconds, usage.ru_maxrss * 1024L};
}

int ReadFile(const std::string& path)
{
    quarl::CLasReader reader;
    const quarl::ELASFILEERROR result = reader.Open(tessel::TxString(path.c_str()));
    return result == quarl::LASFILE_OK ? 0 : 10 + result;
}

long FileSize(const std::string& path)
{
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) return 0;
    std::fseek(file, 0, SEEK_END);
    const long size = std::ftell(file);
    std::fclose(file);
    return size;
}

struct Shape {
    const char* name;
    long n;                                 // the smaller size; the larger is 4n
    std::function<std::string(long)> make;  // a file of size n; empty for a write shape
    std::function<int(long)> write;         // a write of size n, when make is empty
};

void Run(const Shape& shape)
{
    double first = 0;
    for (long n : {shape.n, 4 * shape.n}) {
        Measure m{};
        long bytes = 0;
        if (shape.make) {
            const std::string path = shape.make(n);
            bytes = FileSize(path);
            m = InChild([&] { return ReadFile(path); });
            std::remove(path.c_str());
        } else {
            m = InChild([&] { return shape.write(n); });
            bytes = FileSize("/tmp/quarl-bench-limits-out.las");
            std::remove("/tmp/quarl-bench-limits-out.las");
        }
        std::printf("%-34s N=%-9ld file %8.1f MB  %7.2f s  peak %7.1f MB", shape.name, n,
                    bytes / 1e6, m.seconds, m.peakBytes / 1e6);
        if (first > 0) std::printf("  time x%.1f", m.seconds / first);
        std::printf("\n");
        std::fflush(stdout);
        first = m.seconds;
    }
}

std::string LongLine(long bytes)
{
    return MakeFile("line", [&](std::string& out, std::FILE* file) {
        out = kHead + "~Well\nWELL. x : ";
        for (long i = 0; i < bytes; ++i) {
            out.push_back(static_cast<char>('a' + i % 26));
            Drain(out, file);
        }
        out += "\n";
    });
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc > 1 && std::strcmp(argv[1], "line-gb") == 0) {
        Run({"one line, bytes (read)", 1L << 28, &LongLine, nullptr});
        return 0;
    }
    const long scale = argc > 1 ? std::atol(argv[1]) : 1;
    const Shape shapes[] = {
        {"one line, bytes (read)", scale << 24, &LongLine, nullptr},
        {"definition/data pairs (read)", scale * 25000,
         [](long n) {
             return MakeFile("pairs", [&](std::string& out, std::FILE* file) {
                 out = kHead;
                 for (long i = 0; i < n; ++i) {
                     out += "~Core_Definition[" + std::to_string(i) + "]\nDEPT.M : d\n~Core_Data[" +
                            std::to_string(i) + "]\n" + std::to_string(i) + "\n";
                     Drain(out, file);
                 }
             });
         },
         nullptr},
        {"parameter sections (read)", scale * 250000,
         [](long n) {
             return MakeFile("sections", [&](std::string& out, std::FILE* file) {
                 out = kHead;
                 for (long i = 0; i < n; ++i) {
                     out += "~Log_Parameter[" + std::to_string(i) + "]\nA.M 1 : a\n";
                     Drain(out, file);
                 }
             });
         },
         nullptr},
        {"unknown sections (read)", scale * 250000,
         [](long n) {
             return MakeFile("unknown", [&](std::string& out, std::FILE* file) {
                 out = kHead + "~Well\nSTEP.M 1 : s\n";
                 for (long i = 0; i < n; ++i) {
                     out += "~Extra" + std::to_string(i) + "\nsome text\n";
                     Drain(out, file);
                 }
             });
         },
         nullptr},
        {"curves in one definition (read)", scale * 250000,
         [](long n) {
             return MakeFile("curves", [&](std::string& out, std::FILE* file) {
                 out = kHead + "~Log_Definition\n";
                 for (long i = 0; i < n; ++i) {
                     out += "C" + std::to_string(i) + ".M : c\n";
                     Drain(out, file);
                 }
                 out += "~Log_Data\n";
                 for (long i = 0; i < n; ++i) {
                     out += i ? ",1.5" : "1.5";
                     Drain(out, file);
                 }
                 out += "\n";
             });
         },
         nullptr},
        {"comment lines (read)", scale * 1000000,
         [](long n) {
             return MakeFile("comments", [&](std::string& out, std::FILE* file) {
                 out = kHead + "~Well\n";
                 for (long i = 0; i < n; ++i) {
                     out += "# a comment line of some length\n";
                     Drain(out, file);
                 }
                 out += "STEP.M 1 : s\n";
             });
         },
         nullptr},
        {"sections added and written", scale * 10000, nullptr,
         [](long n) {
             quarl::CLasWriter writer;
             writer.SetFormat(true, ',');
             for (long i = 0; i < n; ++i) {
                 CLasSection section;
                 section.m_name = "Set" + std::to_string(i) + "_Parameter";
                 section.m_type = quarl::LASSECTION_PARAMETER;
                 if (writer.AddSection(section) != quarl::LASFILE_OK) return 1;
             }
             CLasSection data;
             data.m_name = "Log_Data";
             data.m_type = quarl::LASSECTION_DATA;
             data.m_curves.resize(1);
             data.m_curves[0].m_numbers = {1000.0, 1000.5};
             if (writer.AddSection(data) != quarl::LASFILE_OK) return 3;
             return writer.Write("/tmp/quarl-bench-limits-out.las") == quarl::LASFILE_OK ? 0 : 2;
         }},
        {"data sections written", scale * 5000, nullptr,
         [](long n) {
             quarl::CLasWriter writer;
             writer.SetFormat(true, ',');
             for (long i = 0; i < n; ++i) {
                 CLasSection data;
                 data.m_name = "Set" + std::to_string(i) + "_Data";
                 data.m_type = quarl::LASSECTION_DATA;
                 data.m_curves.resize(1);
                 data.m_curves[0].m_numbers = {1.0};
                 if (writer.AddSection(data) != quarl::LASFILE_OK) return 1;
             }
             CLasSection log;
             log.m_name = "Log_Data";
             log.m_type = quarl::LASSECTION_DATA;
             log.m_curves.resize(1);
             log.m_curves[0].m_numbers = {1000.0, 1000.5};
             if (writer.AddSection(log) != quarl::LASFILE_OK) return 3;
             return writer.Write("/tmp/quarl-bench-limits-out.las") == quarl::LASFILE_OK ? 0 : 2;
         }},
        {"curves written", scale * 100000, nullptr,
         [](long n) {
             quarl::CLasWriter writer;
             writer.SetFormat(true, ',');
             CLasSection data;
             data.m_name = "Log_Data";
             data.m_type = quarl::LASSECTION_DATA;
             data.m_curves.resize(static_cast<size_t>(n));
             for (CLasCurve& curve : data.m_curves) curve.m_numbers = {1000.0, 1000.5};
             if (writer.AddSection(data) != quarl::LASFILE_OK) return 1;
             return writer.Write("/tmp/quarl-bench-limits-out.las") == quarl::LASFILE_OK ? 0 : 2;
         }},
    };
    for (const Shape& shape : shapes) {
        if (argc < 3 || std::strstr(shape.name, argv[2])) Run(shape);
    }
    return 0;
}
