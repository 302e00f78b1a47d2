// Every file of the shared corpus opens without crash, hang or leak, with the
// result code and section count in tests/data/corpus_results.txt, so that any
// change of behaviour shows. QUARL_WRITE_CORPUS_RESULTS=1 prints the table.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <string>

#include "support/reader_access.h"

namespace quarl::test {
namespace {

TEST(ReaderCorpus, EveryFileGivesItsRecordedResult)
{
    const std::vector<std::string> files = CorpusFiles();
    if (files.empty()) GTEST_SKIP() << "no corpus at " << CorpusDir();
    const bool write = std::getenv("QUARL_WRITE_CORPUS_RESULTS") != nullptr;
    const std::string here = __FILE__;
    const std::string tablePath = here.substr(0, here.rfind('/')) + "/data/corpus_results.txt";
    std::map<std::string, std::string> table;  // "name result sections" per line
    std::ifstream in(tablePath);
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && line[0] != '#') table[line.substr(0, line.find(' '))] = line.substr(line.find(' ') + 1);
    ASSERT_TRUE(write || !table.empty()) << tablePath;

    for (const std::string& path : files) {
        CLasReader reader;
        const ELASFILEERROR result = reader.Open(tessel::TxString(path));
        const std::string got = std::to_string(result) + " " + std::to_string(reader.size());
        // Every accessor works on whatever was read.
        std::vector<CLasSection> copies;
        EXPECT_EQ(reader.GetSections(copies, true), LASFILE_OK);
        EXPECT_EQ(copies.size(), reader.size());
        reader.CheckDataStepping();
        const std::string name = path.substr(path.rfind('/') + 1);
        if (write) {
            std::printf("%s %s\n", name.c_str(), got.c_str());
        } else {
            EXPECT_EQ(got, table.count(name) ? table[name] : "missing from " + tablePath) << name;
        }
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
            for (int flips = 0; flips < 6 && !bytes.empty(); ++flips) bytes[next(bytes.size())] = kBytes[next(sizeof kBytes)];
            if (round % 2) bytes.resize(next(bytes.size() + 1));
            CLasReader reader;
            const ELASFILEERROR result = reader.Open(tessel::TxString(dir.Write("m.las", bytes)));
            EXPECT_LE(static_cast<int>(result), static_cast<int>(LASFILE_BAD_FORMAT)) << path;
            std::vector<CLasSection> copies;
            EXPECT_EQ(reader.GetSections(copies, true), LASFILE_OK);
            EXPECT_EQ(copies.size(), reader.size());
            reader.CheckDataStepping();
        }
    }
}

}  // namespace
}  // namespace quarl::test
