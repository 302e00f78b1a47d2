// Growth at the limits: for each shape of an extreme file, the time and peak
// memory of a read (or a write) at size N and 4N, each in a child process.
// Linear work shows a time ratio near 4; quadratic work near 16. Last, the
// cost of section names that collide in the standard string hash.
//
//   bench_limits [scale [word]]   (scale 1 by default, 4 gives N four times
//                                  larger; only the shapes whose name holds word)
//   bench_limits line-gb   (one read of a file that is a single 1 GB line)
#include <quarl/quarl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <vector>

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

// Section names of 16 bytes of which all have the same std::hash once a
// common suffix is appended: the second 8-byte block of the standard
// library's 64-bit hash of strings is solved for from the first, so that
// the state after both is one constant. Empty where the standard library
// hashes strings in some other way.
std::vector<std::string> CollidingNames(size_t count, const std::string& suffix)
{
    std::vector<std::string> names;
    if (sizeof(size_t) != 8) return names;
    const uint64_t mul = 0xc6a4a7935bd1e995ull;
    uint64_t inverse = mul;  // Newton's iteration for the inverse modulo 2^64
    for (int i = 0; i < 6; ++i) inverse *= 2 - mul * inverse;
    const auto shiftMix = [](uint64_t v) { return v ^ (v >> 47); };
    const auto block = [&](uint64_t k) { return shiftMix(k * mul) * mul; };
    const uint64_t length = 16 + suffix.size();
    const uint64_t start = 0xc70f6907ull ^ (length * mul);
    const uint64_t wanted = 0x0123456789abcdefull;
    const auto usable = [](unsigned char c) {
        return c >= 0x21 && !(c >= 'A' && c <= 'Z') && !std::strchr("|[]_~#", c) && c != 0x7f;
    };
    for (uint64_t i = 0; names.size() < count; ++i) {
        char first[8];
        uint64_t n = i;
        for (char& c : first) c = static_cast<char>('a' + n % 26), n /= 26;
        uint64_t k1 = 0;
        std::memcpy(&k1, first, 8);
        const uint64_t k2 = shiftMix((((start ^ block(k1)) * mul) ^ wanted) * inverse) * inverse;
        char second[8];
        std::memcpy(second, &k2, 8);
        bool good = true;
        for (char c : second) good = good && usable(static_cast<unsigned char>(c));
        if (good) names.push_back(std::string(first, 8) + std::string(second, 8) + suffix);
    }
    const std::hash<std::string> hash;
    for (const std::string& name : names)
        if (hash(name) != hash(names[0])) return {};
    return names;
}

// The same number of names of the same length that do not collide.
std::vector<std::string> PlainNames(size_t count, const std::string& suffix)
{
    std::vector<std::string> names;
    for (size_t i = 0; i < count; ++i) {
        std::string digits = std::to_string(i);
        names.push_back(std::string(16 - digits.size(), 'x') + digits + suffix);
    }
    return names;
}

// The best of three runs, in seconds; exits when a run fails.
double BestSeconds(const std::function<bool()>& run)
{
    double best = 1e9;
    for (int i = 0; i < 3; ++i) {
        const auto begin = std::chrono::steady_clock::now();
        if (!run()) {
            std::printf("  (run failed)\n");
            std::exit(1);
        }
        best = std::min(
            best, std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    }
    return best;
}

// 16,384 section names that all collide in std::hash against as many plain
// ones, read and then added and validated, side by side. While the name
// indexes hashed the names, the colliding ones took 12 s to read against
// 0.1 s (and 74 s against 0.2 s to write) in a debug build.
void CollidingNamesFigures()
{
    const size_t count = 1 << 14;
    const std::vector<std::string> colliding = CollidingNames(count, "_parameter");
    if (colliding.empty() ||
        std::set<std::string>(colliding.begin(), colliding.end()).size() != count) {
        std::printf("colliding names: this standard library hashes strings differently\n");
        return;
    }
    const std::vector<std::string> plain = PlainNames(count, "_parameter");
    const auto read = [&](const std::vector<std::string>& names) {
        std::string text = kHead;
        for (const std::string& name : names) text += "~" + name + "\nP.M 1 : p\n";
        const std::string path =
            MakeFile("names", [&](std::string& out, std::FILE*) { out = text; });
        const double seconds = BestSeconds([&] {
            quarl::CLasReader reader;
            return reader.Open(tessel::TxString(path.c_str())) == quarl::LASFILE_OK &&
                   reader.size() == names.size() + 1;
        });
        std::remove(path.c_str());
        return seconds;
    };
    const auto write = [&](const std::vector<std::string>& names) {
        return BestSeconds([&] {
            quarl::CLasWriter writer;
            bool good = writer.SetFormat(true, ',') == quarl::LASFILE_OK;
            CLasSection section;
            section.m_type = quarl::LASSECTION_PARAMETER;
            for (const std::string& name : names) {
                section.m_name = name;
                good = good && writer.AddSection(section) == quarl::LASFILE_OK;
            }
            CLasSection data;
            data.m_name = "Log_Data";
            data.m_type = quarl::LASSECTION_DATA;
            data.m_curves.resize(1);
            data.m_curves[0].m_numbers = {1.0};
            return good && writer.AddSection(data) == quarl::LASFILE_OK &&
                   writer.Validate() == quarl::LASFILE_OK;
        });
    };
    const double readPlain = read(plain), readColliding = read(colliding);
    const double writePlain = write(plain), writeColliding = write(colliding);
    std::printf(
        "%zu names colliding in std::hash against plain names: read %.3f s against %.3f s (x%.2f), "
        "added and validated %.3f s against %.3f s (x%.2f)\n",
        count, readColliding, readPlain, readColliding / readPlain, writeColliding, writePlain,
        writeColliding / writePlain);
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
    if (argc < 3 || std::strstr("colliding names", argv[2])) CollidingNamesFigures();
    return 0;
}
