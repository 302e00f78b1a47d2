// quarl-check run as a user runs it, over every file of the corpus: it ends
// with 0 or 1 on each, promptly, and the file --fix writes reads strictly.
#include <gtest/gtest.h>
#include <quarl/quarl.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace fs = std::filesystem;

namespace {

// A scratch folder of this process's own: other runs of the suite may be
// going on at the same time.
fs::path OwnFolder(const std::string& name)
{
    return fs::path(testing::TempDir()) / (name + "_" + std::to_string(getpid()));
}

std::vector<std::string> CorpusFiles()
{
    std::vector<std::string> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(QUARL_CORPUS_DIR, error))
        if (entry.is_regular_file()) files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    return files;
}

// The exit code of the program run with `args`, or -1 when it did not exit
// (a crash); how long it ran goes to `seconds`.
int RunCheck(const std::string& args, double* seconds)
{
#if defined(_WIN32)
    (void)args;
    (void)seconds;
    return -1;
#else
    const std::string command = std::string("'") + QUARL_CHECK_PROGRAM + "' " + args + " >/dev/null 2>&1";
    const auto start = std::chrono::steady_clock::now();
    const int status = std::system(command.c_str());
    *seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
}

std::string Quoted(const std::string& path)
{
    return "'" + path + "'";
}

// Read strictly this file stops at the PROV line; read leniently, PROV has
// an empty unit and the short last row is filled with the NULL value. The BS
// line may give a name the writer refuses: that line goes, not its section.
const char kLenientOnly[] =
    "~Version\nVERS. 2.0 :\nWRAP. NO :\n~Well\nSTRT.M 1 :\nSTOP.M 3 :\nSTEP.M 1 :\nNULL. -999.25 :\n"
    "PROV   :PROVINCE\nBS    222 : BIT SIZE\n~Curves\nDEPT.M :\nGR.API :\n~A\n1 45\n2 46\n3\n";

TEST(QuarlCheck, FixWritesTheLenientReadingSoThatItReadsStrictly)
{
    const fs::path dir = OwnFolder("quarl_check_fix");
    fs::create_directories(dir);
    const std::string in = (dir / "in.las").string(), out = (dir / "out.las").string();
    std::ofstream(in, std::ios::binary) << kLenientOnly;
    double seconds = 0.0;
    EXPECT_EQ(RunCheck(Quoted(in), &seconds), 1);
    ASSERT_EQ(RunCheck("--fix " + Quoted(out) + " " + Quoted(in), &seconds), 0);
    quarl::CLasReader back;
    ASSERT_EQ(back.Open(tessel::TxString(out)), quarl::LASFILE_OK);
    EXPECT_TRUE(back.GetNotes().empty());
    quarl::CLasParam prov;
    EXPECT_GE(back.GetWellHeaders().FindParameterByMnemonic("PROV", &prov), 0);
    EXPECT_EQ(std::string(prov.m_description), "PROVINCE");
    const quarl::CLasSection& data = back.GetSection(back.size() - 1);
    ASSERT_EQ(data.m_curves.size(), 2u);
    EXPECT_EQ(data.m_curves[1].m_numbers, (std::vector<double>{45, 46, -999.25}));
    back.Close();
    fs::remove_all(dir);
}

// Curves the lenient read names UNKNOWN:n (no mnemonic, values behind the
// last curve) are written under legal names and read back strictly.
TEST(QuarlCheck, FixRenamesCurvesNamedUnknown)
{
    const fs::path dir = OwnFolder("quarl_check_unknown");
    fs::create_directories(dir);
    const std::string in = (dir / "in.las").string(), out = (dir / "out.las").string();
    std::ofstream(in, std::ios::binary)
        << "~Version\nVERS. 2.0 :\nWRAP. NO :\n~Well\nSTRT.M 1 :\nSTOP.M 2 :\n"
           "STEP.M 1 :\nNULL. -999.25 :\n~Curve\nDEPT.M :\n.OHMM : r\n~A\n1 5 7\n2 6 8\n";
    double seconds = 0.0;
    ASSERT_EQ(RunCheck("--fix " + Quoted(out) + " " + Quoted(in), &seconds), 0);
    quarl::CLasReader back;
    ASSERT_EQ(back.Open(tessel::TxString(out)), quarl::LASFILE_OK);
    const quarl::CLasSection& data = back.GetSection(back.size() - 1);
    ASSERT_EQ(data.m_curves.size(), 3u);
    EXPECT_EQ(std::string(data.m_curves[1].m_definition.m_mnemonic), "UNKNOWN_1");
    EXPECT_EQ(std::string(data.m_curves[2].m_definition.m_mnemonic), "UNKNOWN_2");
    EXPECT_EQ(data.m_curves[2].m_numbers, (std::vector<double>{7, 8}));
    back.Close();
    fs::remove_all(dir);
}

// Fewer repairs than this would hide a --fix that fails everywhere.
constexpr int kMinimumRepairs = 85;

TEST(QuarlCheck, EveryCorpusFileEndsWithZeroOrOneAndItsRepairReadsStrictly)
{
#if defined(_WIN32)
    GTEST_SKIP() << "runs the program through a POSIX shell";
#endif
    const std::vector<std::string> files = CorpusFiles();
    if (files.empty()) GTEST_SKIP() << "no corpus at " << QUARL_CORPUS_DIR;
    const fs::path dir = OwnFolder("quarl_check");
    fs::create_directories(dir);
    const std::string out = (dir / "fixed.las").string();
    int codes[2] = {0, 0}, repaired = 0;
    double slowest = 0.0;
    std::string slowestFile;
    for (const std::string& path : files) {
        SCOPED_TRACE(path);
        double seconds = 0.0;
        const int code = RunCheck(Quoted(path), &seconds);
        ASSERT_TRUE(code == 0 || code == 1) << "exit " << code;
        ++codes[code];
        if (seconds > slowest) slowest = seconds, slowestFile = path;
        fs::remove(out);
        const int fixCode = RunCheck("--fix " + Quoted(out) + " " + Quoted(path), &seconds);
        ASSERT_TRUE(fixCode == 0 || fixCode == 1) << "--fix exit " << fixCode;
        if (seconds > slowest) slowest = seconds, slowestFile = path + " --fix";
        if (fixCode != 0) continue;
        quarl::CLasReader back;  // the program's word is not taken for it
        EXPECT_EQ(back.Open(tessel::TxString(out)), quarl::LASFILE_OK);
        EXPECT_TRUE(back.GetNotes().empty());
        ++repaired;
    }
    std::printf("corpus: %zu files, exit 0: %d, exit 1: %d, repaired: %d, slowest %.3f s (%s)\n", files.size(),
                codes[0], codes[1], repaired, slowest, slowestFile.c_str());
    EXPECT_LT(slowest, 10.0) << "a run that long is a hang, not a slow file";
    EXPECT_GE(repaired, kMinimumRepairs);
    fs::remove_all(dir);
}

// A device that gives zeros without end, and a file of zeros, are no text:
// the program says so at once (exit 1) instead of reading one endless line,
// and --fix writes nothing.
TEST(QuarlCheck, DeviceOfZerosEndsAtOnce)
{
#if defined(_WIN32)
    GTEST_SKIP() << "runs the program through a POSIX shell";
#endif
    const fs::path dir = OwnFolder("quarl_check_zeros");
    fs::create_directories(dir);
    const std::string zeros = (dir / "zeros.las").string(), out = (dir / "fixed.las").string();
    std::ofstream(zeros) << std::string(1 << 20, '\0');
    for (const std::string& path : {std::string("/dev/zero"), zeros}) {
        SCOPED_TRACE(path);
        double seconds = 0.0;
        EXPECT_EQ(RunCheck(Quoted(path), &seconds), 1);
        EXPECT_LT(seconds, 5.0);
        EXPECT_EQ(RunCheck("--fix " + Quoted(out) + " " + Quoted(path), &seconds), 1);
        EXPECT_LT(seconds, 5.0);
        EXPECT_FALSE(fs::exists(out));
    }
    fs::remove_all(dir);
}

}  // namespace
