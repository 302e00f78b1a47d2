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

}  // namespace
}  // namespace quarl::test
