// Extreme files: a very long line, very many sections, curves and comment
// lines. Each is read whole and right, in a child process whose peak memory
// must stay within a multiple of the file's size. How the time grows, and
// what names that collide in the standard string hash cost, is shown by
// bench/bench_limits.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "support/reader_access.h"
#include "support/writer_access.h"

// The sanitizer's own memory hides the library's.
#if defined(__SANITIZE_ADDRESS__)
#define QUARL_MEMORY_MEASURED 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUARL_MEMORY_MEASURED 0
#endif
#endif
#ifndef QUARL_MEMORY_MEASURED
#define QUARL_MEMORY_MEASURED 1
#endif

namespace quarl::test {
namespace {

const std::string kHead = "~Version\nVERS. 3.0 : v\nWRAP. NO : w\nDLM. COMMA : d\n";

// Writes the file piece by piece, as `emit` appends them.
std::string MakeFile(const TempDir& dir, const std::function<void(std::string&, std::FILE*)>& emit)
{
    const std::string path = dir.File("big.las");
    std::FILE* file = std::fopen(path.c_str(), "wb");
    EXPECT_NE(file, nullptr);
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

// Reads `path` in a child process, where `check` tests what was read (a
// failed expectation there makes the child fail). Expects the child's peak
// resident memory to stay within `perByte` times the file's size plus what
// an empty process takes.
void ReadInChild(const std::string& path, double perByte, const std::function<bool(const CLasReader&)>& check)
{
    const long size = static_cast<long>(ReadFileBytes(path).size());
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        CLasReader reader;
        const bool good = reader.Open(path) == LASFILE_OK && check(reader);
        _exit(good && !::testing::Test::HasFailure() ? 0 : 1);
    }
    int status = 0;
    rusage usage{};
    ASSERT_EQ(wait4(child, &status, 0, &usage), child);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << path << " status " << status;
    // Under valgrind (tools/memcheck.sh) its own memory counts as the child's.
    if (QUARL_MEMORY_MEASURED && !std::getenv("QUARL_UNDER_VALGRIND")) {
        const double peak = usage.ru_maxrss * 1024.0;
        EXPECT_LT(peak, perByte * size + 64e6) << "peak " << peak / 1e6 << " MB for " << size / 1e6 << " MB";
    }
}

TEST(Limits, LineOf64MegabytesIsOneValue)
{
    TempDir dir;
    const long length = 64L << 20;
    const std::string path = MakeFile(dir, [&](std::string& out, std::FILE* file) {
        out = kHead + "~Well\nWELL. ";
        for (long i = 0; i < length; ++i) {
            out.push_back(static_cast<char>('a' + i % 26));
            Drain(out, file);
        }
        out += " : the well\nSTEP.M 1 : s\n";
    });
    // The line store grows in steps, never to more than twice the line.
    std::string tail;
    for (long i = length - 3; i < length; ++i) tail.push_back(static_cast<char>('a' + i % 26));
    ReadInChild(path, 3.5, [&](const CLasReader& reader) {
        const CLasSection& well = reader.GetSection(1ull);
        return well.m_params.size() == 2 && well.m_params[0].m_value.size() == static_cast<size_t>(length) &&
               well.m_params[0].m_value.compare(length - 3, 3, tail) == 0 && well.m_params[1].m_mnemonic == "STEP";
    });
}

// Input that never ends a line costs no more than the bound on a line: a
// device of zeros is refused at its first block, and a line of 64 MiB read
// with a bound of 1 MiB ends at the bound. Both in a child, whose peak
// memory stays far below the line's size.
TEST(Limits, EndlessInputEndsWithinItsBound)
{
    TempDir dir;
    const long length = 64L << 20;
    const std::string path = MakeFile(dir, [&](std::string& out, std::FILE* file) {
        out = kHead + "~Well\nWELL. ";
        for (long i = 0; i < length; ++i) {
            out.push_back('x');
            Drain(out, file);
        }
    });
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        CLasReader reader;
        CLasReadOptions options;
        options.maxLineLength = 1 << 20;
        reader.SetOptions(options);
        const bool line = reader.Open(path) == LASFILE_BAD_FORMAT && reader.GetNotes().size() == 2 &&
                          reader.GetNotes()[0].kind == LASNOTE_LINE_TOO_LONG && reader.GetLineNumber() == 6;
        const bool zeros =
            reader.Open("/dev/zero") == LASFILE_BAD_FORMAT && reader.GetNotes()[0].kind == LASNOTE_NOT_TEXT;
        _exit(line && zeros ? 0 : 1);
    }
    int status = 0;
    rusage usage{};
    ASSERT_EQ(wait4(child, &status, 0, &usage), child);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
    if (QUARL_MEMORY_MEASURED && !std::getenv("QUARL_UNDER_VALGRIND")) {
        const double peak = usage.ru_maxrss * 1024.0;
        EXPECT_LT(peak, 40e6) << "peak " << peak / 1e6 << " MB for a line of " << length / 1e6 << " MB";
    }
}

// The writer looks names up in an index that each stored section joins:
// forty thousand sections are stored in well under a second, where an index
// built again for each would take minutes.
TEST(Limits, WriterStoresManySectionsInLinearTime)
{
    CLasWriter w;
    ASSERT_EQ(w.SetFormat(true, ','), LASFILE_OK);
    const int count = 40000;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < count; ++i) {
        const std::string name = "Run" + std::to_string(i) + "_Parameter";
        ASSERT_EQ(w.AddSection(Section(name, LASSECTION_PARAMETER, {Param("RUN", "", "1", "run")})), LASFILE_OK);
    }
    EXPECT_EQ(w.AddSection(Section("Run7_Parameter", LASSECTION_PARAMETER, {Param("RUN", "", "1", "run")})),
              LASFILE_DUPLICATE_SECTION);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_LT(seconds, 10.0) << count << " sections";
}

TEST(Limits, QuarterMillionSectionPairsAndMillionCommentLines)
{
    TempDir dir;
    const long pairs = 1L << 18;
    const std::string path = MakeFile(dir, [&](std::string& out, std::FILE* file) {
        out = kHead + "~Well\nSTEP.M 1 : s\n";
        for (long i = 0; i < pairs; ++i) {
            const std::string index = std::to_string(i);
            out += "~Core_Definition[" + index + "]\nDEPT.M : d\n~Core_Data[" + index + "]\n" + index + "\n";
            for (int c = 0; c < 4; ++c) out += "# comment between rows\n";
            Drain(out, file);
        }
    });
    // A section costs a few hundred bytes beside its 40 bytes of text.
    ReadInChild(path, 12.0, [&](const CLasReader& reader) {
        if (reader.size() != static_cast<uint64_t>(2 + 2 * pairs)) return false;
        const CLasSection& last = reader.GetSection(reader.size() - 1);
        return last.m_association == "Core_Definition[" + std::to_string(pairs - 1) + "]" &&
               last.m_curves.size() == 1 && last.m_curves[0].m_numbers == std::vector<double>{pairs - 1.0} &&
               reader.CheckDataStepping() == LASFILE_OK;
    });
}

TEST(Limits, MillionCurvesInOneDefinition)
{
    TempDir dir;
    const long curves = 1L << 20;
    const std::string path = MakeFile(dir, [&](std::string& out, std::FILE* file) {
        out = kHead + "~Log_Definition\n";
        for (long i = 0; i < curves; ++i) {
            out += "C" + std::to_string(i) + ".M : c\n";
            Drain(out, file);
        }
        out += "~Log_Data\n";
        for (int row = 0; row < 2; ++row) {
            for (long i = 0; i < curves; ++i) {
                out += (i ? "," : "") + std::to_string(row * 10 + i % 7);
                Drain(out, file);
            }
            out += "\n";
        }
    });
    // A curve holds a copy of its definition line and two arrays.
    ReadInChild(path, 40.0, [&](const CLasReader& reader) {
        const CLasSection& data = reader.GetSection(2ull);
        return data.m_curves.size() == static_cast<size_t>(curves) &&
               data.m_curves.back().m_definition.m_mnemonic == "C" + std::to_string(curves - 1) &&
               data.m_curves.back().m_numbers == std::vector<double>{(curves - 1) % 7, 10.0 + (curves - 1) % 7};
    });
}

}  // namespace
}  // namespace quarl::test
