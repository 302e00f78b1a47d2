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

}  // namespace
}  // namespace quarl::test
