// The strict reading of every file of the shared corpus stays what it was:
// the result code, the number of sections and a digest of everything read
// (names, types, flags, every field of every parameter line and curve
// definition, every value's bytes) are recorded in
// tests/data/corpus_results.txt. Any change of the strict reading shows here.
// QUARL_WRITE_CORPUS_RESULTS=1 prints the table instead of comparing.
// Only the public interface is used, so that the table can be made by any
// version of the library.
#include <gtest/gtest.h>
#include <quarl/quarl.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "support/test_util.h"

namespace quarl {
namespace {

// FNV-1a over bytes, with a separator after each field so that fields
// cannot trade bytes with their neighbours.
class Digest {
public:
    void Add(const void* bytes, size_t size)
    {
        const auto* p = static_cast<const unsigned char*>(bytes);
        for (size_t i = 0; i < size; ++i) m_value = (m_value ^ p[i]) * 0x100000001b3ULL;
        m_value = (m_value ^ 0xff) * 0x100000001b3ULL;
    }
    void Add(const std::string& text) { Add(text.data(), text.size()); }
    void Add(uint64_t number) { Add(&number, sizeof number); }
    uint64_t value() const { return m_value; }

private:
    uint64_t m_value = 0xcbf29ce484222325ULL;
};

void AddParam(Digest& digest, const CLasParam& param)
{
    for (const CLasString* field : {&param.m_mnemonic, &param.m_unit, &param.m_value, &param.m_description,
                                    &param.m_format, &param.m_association})
        digest.Add(*field);
}

uint64_t DigestOf(const CLasReader& reader)
{
    Digest digest;
    for (const std::shared_ptr<CLasSection>& section : reader) {
        digest.Add(section->m_name);
        digest.Add(static_cast<uint64_t>(section->m_type) << 32 | section->m_flags);
        digest.Add(section->m_association);
        for (const CLasParam& param : section->m_params) AddParam(digest, param);
        for (const CLasCurve& curve : section->m_curves) {
            AddParam(digest, curve.m_definition);
            digest.Add(static_cast<uint64_t>(curve.m_isNumeric));
            digest.Add(curve.m_numbers.data(), curve.m_numbers.size() * sizeof(double));
            for (const CLasString& text : curve.m_strings) digest.Add(text);
        }
    }
    return digest.value();
}

TEST(ReaderCorpus, StrictReadingOfEveryFileIsAsRecorded)
{
    const std::vector<std::string> files = test::CorpusFiles();
    if (files.empty()) GTEST_SKIP() << "no corpus at " << test::CorpusDir();
    const bool write = std::getenv("QUARL_WRITE_CORPUS_RESULTS") != nullptr;
    const std::string here = __FILE__;
    const std::string tablePath = here.substr(0, here.rfind('/')) + "/data/corpus_results.txt";
    std::map<std::string, std::string> table;  // name -> "result sections digest"
    std::ifstream in(tablePath);
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && line[0] != '#') table[line.substr(0, line.find(' '))] = line.substr(line.find(' ') + 1);
    ASSERT_TRUE(write || !table.empty()) << tablePath;

    for (const std::string& path : files) {
        CLasReader reader;
        const ELASFILEERROR result = reader.Open(tessel::TxString(path.c_str()));
        char got[96];
        std::snprintf(got, sizeof got, "%d %zu %016" PRIx64, static_cast<int>(result),
                      static_cast<size_t>(reader.size()), DigestOf(reader));
        const std::string name = path.substr(path.rfind('/') + 1);
        if (write)
            std::printf("%s %s\n", name.c_str(), got);
        else
            EXPECT_EQ(got, table.count(name) ? table[name] : "missing from " + tablePath) << name;
    }
}

}  // namespace
}  // namespace quarl
