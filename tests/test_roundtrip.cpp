// Every file of the corpus read leniently, written with repair on as LAS 2.0
// and as LAS 3.0, reads back strictly with the same values and parameter
// texts, except where a repair record names the section or line.
#include <gtest/gtest.h>
#include <quarl/quarl.h>

#include <cstdio>
#include <string>
#include <vector>

#include "bench/roundtrip_compare.h"
#include "support/test_util.h"

namespace quarl::test {
namespace {

using roundtrip::Trip;

std::vector<CLasSection> ReadLeniently(const std::string& path, ELASFILEERROR* result)
{
    CLasReadOptions options;
    options.lenient = true;
    CLasReader reader;
    reader.SetOptions(options);
    *result = reader.Open(tessel::TxString(path));
    std::vector<CLasSection> sections;
    if (*result == LASFILE_OK) roundtrip::ReadSections(reader, sections);
    return sections;
}

// Files of the corpus that read leniently with rows of log data, and those
// without; fewer than these would hide a round trip that fails.
constexpr int kMinimumWithRows = 95;
constexpr int kMinimumWithoutRows = 20;

TEST(RoundTrip, CorpusFilesWriteInBothVersionsAndReadBackStrictlyWithTheirValues)
{
    const std::vector<std::string> files = CorpusFiles();
    if (files.empty()) GTEST_SKIP() << "no corpus at " << CorpusDir();
    int readLeniently = 0, withRows = 0, withoutRows = 0, same = 0;
    int withRepairs = 0;
    for (const std::string& path : files) {
        ELASFILEERROR read = LASFILE_OK;
        const std::vector<CLasSection> document = ReadLeniently(path, &read);
        if (read != LASFILE_OK || !roundtrip::HasContent(document)) continue;
        ++readLeniently;
        const bool rows = roundtrip::HasLogRows(document);
        rows ? ++withRows : ++withoutRows;
        for (bool las3 : {false, true}) {
            SCOPED_TRACE(path + (las3 ? " as LAS 3.0" : " as LAS 2.0"));
            const Trip trip = roundtrip::WriteAndCompare(document, las3);
            EXPECT_EQ(trip.written, LASFILE_OK) << trip.difference;
            withRepairs += trip.repairs.empty() ? 0 : 1;
            EXPECT_TRUE(trip.same) << trip.difference;
            same += trip.same ? 1 : 0;
        }
    }
    std::printf(
        "corpus: %zu files, %d read leniently with content (%d with log rows, %d "
        "without); the same, read back strictly: %d of %d trips; %d trips with repairs\n",
        files.size(), readLeniently, withRows, withoutRows, same, 2 * readLeniently, withRepairs);
    EXPECT_GE(withRows, kMinimumWithRows);
    EXPECT_GE(withoutRows, kMinimumWithoutRows);
    EXPECT_EQ(same, 2 * readLeniently);
}

// The text a writer makes of the document, "" when it refuses it.
std::string Written(const std::vector<CLasSection>& document, bool repair)
{
    CLasWriter writer;
    writer.SetRepair(repair);
    for (size_t i = 0; i < document.size(); ++i) {
        if (i == 0 && !repair) continue;  // the Version section
        if (writer.AddSection(document[i]) != LASFILE_OK) return "";
    }
    std::string text;
    writer.WriteToString(text, "roundtrip.las");
    for (const CLasRepair& r : writer.GetRepairs()) {
        // Renaming one-letter sections is what the writer does anyway.
        const bool ownVersion = r.kind == LASREPAIR_SECTION_LEFT_OUT && &r == &writer.GetRepairs()[0];
        if (r.kind != LASREPAIR_SECTION_RENAMED && r.kind != LASREPAIR_ASSOCIATION && !ownVersion) return "repaired";
    }
    return text;
}

// The same files with repair off: most are refused, which the round trip
// above would fail on; those the writer takes as they are come out the same
// with repair on, but where a repair was needed all the same (a second line
// of a mnemonic made unique).
TEST(RoundTrip, WithoutRepairMostCorpusFilesAreRefusedAndTheRestWriteTheSame)
{
    const std::vector<std::string> files = CorpusFiles();
    if (files.empty()) GTEST_SKIP() << "no corpus at " << CorpusDir();
    int refused = 0, written = 0, identical = 0;
    for (const std::string& path : files) {
        ELASFILEERROR read = LASFILE_OK;
        const std::vector<CLasSection> document = ReadLeniently(path, &read);
        if (read != LASFILE_OK || !roundtrip::HasContent(document)) continue;
        const std::string strict = Written(document, false);
        if (strict.empty()) {
            ++refused;
            continue;
        }
        ++written;
        const std::string repaired = Written(document, true);
        if (repaired == "repaired") continue;
        EXPECT_EQ(repaired, strict) << path;
        ++identical;
    }
    std::printf("without repair: %d refused, %d written, %d of them the same with repair\n", refused, written,
                identical);
    EXPECT_GT(refused, written);
    EXPECT_GT(identical, 10);
}

}  // namespace
}  // namespace quarl::test
