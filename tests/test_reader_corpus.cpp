// Every file of the shared corpus opens without crash, hang or leak, and
// gives the result code and section count recorded in
// tests/data/corpus_results.txt, so that any change of behaviour shows.
// With QUARL_WRITE_CORPUS_RESULTS=1 in the environment the table is printed
// to standard output instead of being compared.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "support/reader_access.h"

namespace quarl::test {
namespace {

std::string BaseName(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

std::string ResultsTablePath()
{
    const std::string here = __FILE__;
    return here.substr(0, here.rfind('/')) + "/data/corpus_results.txt";
}

// "name result sections" per line.
std::map<std::string, std::string> LoadTable()
{
    std::map<std::string, std::string> table;
    std::ifstream in(ResultsTablePath());
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        const size_t space = line.find(' ');
        table[line.substr(0, space)] = line.substr(space + 1);
    }
    return table;
}

TEST(ReaderCorpus, EveryFileGivesItsRecordedResult)
{
    const std::vector<std::string> files = CorpusFiles();
    if (files.empty()) GTEST_SKIP() << "no corpus at " << CorpusDir();
    const bool write = std::getenv("QUARL_WRITE_CORPUS_RESULTS") != nullptr;
    const std::map<std::string, std::string> table = LoadTable();
    if (!write) {
        ASSERT_FALSE(table.empty()) << ResultsTablePath();
    }

    for (const std::string& path : files) {
        CLasReader reader;
        const ELASFILEERROR result = reader.Open(tessel::TxString(path));
        std::ostringstream got;
        got << result << ' ' << reader.size();
        // Every accessor works on whatever was read.
        std::vector<CLasSection> copies;
        EXPECT_EQ(reader.GetSections(copies, true), LASFILE_OK);
        EXPECT_EQ(copies.size(), reader.size());
        reader.CheckDataStepping();
        reader.Close();

        const std::string name = BaseName(path);
        if (write) {
            std::printf("%s %s\n", name.c_str(), got.str().c_str());
            continue;
        }
        const auto expected = table.find(name);
        if (expected == table.end()) {
            ADD_FAILURE() << name << " is not in " << ResultsTablePath() << " (gives " << got.str() << ")";
            continue;
        }
        EXPECT_EQ(got.str(), expected->second) << name;
    }
}

// Corpus files with bytes of meaning put in at random places, and cut short:
// every read ends with a result code, and everything read stays accessible.
TEST(ReaderCorpus, MutatedFilesNeverCrashOrHang)
{
    const std::vector<std::string> files = CorpusFiles();
    if (files.empty()) GTEST_SKIP() << "no corpus at " << CorpusDir();
    static const char kBytes[] = {'~', '\n', '|', '{', '}', ':', '.', '\t', ' ', ',', '\0', '#', '[', '_', '\r', '\\'};
    uint64_t state = 12345;
    auto next = [&state](uint64_t bound) {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return bound ? (state >> 33) % bound : 0;
    };
    TempDir dir;
    for (const std::string& path : files) {
        const std::string original = ReadFileBytes(path);
        for (int round = 0; round < 8; ++round) {
            std::string bytes = original;
            for (int flips = 0; flips < 6 && !bytes.empty(); ++flips)
                bytes[next(bytes.size())] = kBytes[next(sizeof kBytes)];
            if (round % 2) bytes.resize(next(bytes.size() + 1));
            CLasReader reader;
            const ELASFILEERROR result = reader.Open(tessel::TxString(dir.Write("m.las", bytes)));
            EXPECT_LE(static_cast<int>(result), static_cast<int>(LASFILE_BAD_FORMAT)) << path;
            for (const auto& section : reader) {
                for (const auto& curve : section->m_curves) EXPECT_GE(curve.size(), 0);
            }
            reader.CheckDataStepping();
        }
    }
}

}  // namespace
}  // namespace quarl::test
