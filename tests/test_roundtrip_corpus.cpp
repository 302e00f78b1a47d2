// Round trips through the writer: real files of the shared corpus and the
// bundled samples are read, handed to CLasWriter (all sections but the
// Version section, the way quarl-convert does it), written, and read back.
// Every value must survive to the 15 significant digits that the writer
// prints, and converting the written file again must give the same bytes.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "examples/common/las_tools.h"
#include "support/test_util.h"

namespace ex = quarl::examples;
using quarl::test::ReadFileBytes;
using quarl::test::SampleFile;
using quarl::test::TempDir;

namespace {

// Fewer real round trips than this means that the test no longer proves
// anything about the corpus, whatever the reasons given for the skips.
constexpr int kMinimumCorpusRoundTrips = 70;

std::string Digits15(double value)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.15g", value);
    return buffer;
}

struct ReadResult {
    quarl::ELASFILEERROR code = quarl::LASFILE_IO_FAILED;
    std::vector<quarl::CLasSection> sections;  // all of them, in file order
};

ReadResult ReadAll(const std::string& path)
{
    ReadResult result;
    quarl::CLasReader reader;
    result.code = reader.Open(tessel::TxString(path));
    for (const auto& section : reader) result.sections.push_back(*section);
    reader.Close();
    return result;
}

std::vector<const quarl::CLasSection*> DataSections(const ReadResult& read)
{
    std::vector<const quarl::CLasSection*> data;
    for (const quarl::CLasSection& s : read.sections)
        if (s.m_type == quarl::LASSECTION_DATA) data.push_back(&s);
    return data;
}

bool AllNumeric(const ReadResult& read)
{
    for (const quarl::CLasSection* s : DataSections(read))
        for (const quarl::CLasCurve& c : s->m_curves)
            if (!c.m_isNumeric) return false;
    return true;
}

// Compares the data sections of the original and the written file: same
// count, same curves, every value equal to 15 significant digits (a text
// value byte for byte). The writer orders the sections and may rename them,
// so a data section is found again by the name it is written under.
// Returns the first difference, or "".
std::string CompareData(const ReadResult& original, const ReadResult& written,
                        const ex::ConvertOptions& options)
{
    const auto a = DataSections(original);
    const auto b = DataSections(written);
    if (a.size() != b.size())
        return std::to_string(a.size()) + " data section(s) became " + std::to_string(b.size());
    for (size_t s = 0; s < a.size(); ++s) {
        std::string name = a[s]->m_name;
        if (options.mapNames) name = ex::MapSectionName(name, options.toLas3);
        name = ex::StoredName(name, options.toLas3);
        const quarl::CLasSection* match = nullptr;
        for (const quarl::CLasSection* candidate : b)
            if (!match && ex::EqualsNoCase(candidate->m_name, name)) match = candidate;
        if (!match) return "section " + a[s]->m_name + " is not found as " + name;
        const auto& ca = a[s]->m_curves;
        const auto& cb = match->m_curves;
        if (ca.size() != cb.size())
            return "section " + a[s]->m_name + ": " + std::to_string(ca.size()) +
                   " curves became " + std::to_string(cb.size());
        for (size_t c = 0; c < ca.size(); ++c) {
            const std::string where = "section " + a[s]->m_name + ", curve " + std::to_string(c) +
                                      " (" + ca[c].m_definition.m_mnemonic + ")";
            if (!ex::EqualsNoCase(ca[c].m_definition.m_mnemonic, cb[c].m_definition.m_mnemonic))
                return where + ": written as " + cb[c].m_definition.m_mnemonic;
            if (ca[c].m_isNumeric != cb[c].m_isNumeric) return where + ": kind changed";
            if (ca[c].size() != cb[c].size())
                return where + ": " + std::to_string(ca[c].size()) + " values became " +
                       std::to_string(cb[c].size());
            for (int32_t r = 0; r < ca[c].size(); ++r) {
                const size_t i = static_cast<size_t>(r);
                if (ca[c].m_isNumeric) {
                    const std::string x = Digits15(ca[c].m_numbers[i]);
                    const std::string y = Digits15(cb[c].m_numbers[i]);
                    if (x != y)
                        return where + ", row " + std::to_string(r) + ": " + x + " read back as " +
                               y;
                } else if (ca[c].m_strings[i] != cb[c].m_strings[i]) {
                    return where + ", row " + std::to_string(r) + ": '" + ca[c].m_strings[i] +
                           "' read back as '" + cb[c].m_strings[i] + "'";
                }
            }
        }
    }
    return "";
}

// Writer refusals that are a property of the file, not a fault: names LAS 2.0
// does not have, a Well section that disagrees with the data, sections that
// do not fit together, values LAS 2.0 cannot hold.
bool IsReasonedRefusal(const ex::ConvertResult& result)
{
    if (result.stage != "add" && result.stage != "write") return false;
    switch (result.code) {
        case quarl::LASFILE_BAD_NAME:
        case quarl::LASFILE_BAD_FORMAT:
        case quarl::LASFILE_BAD_VALUE:
        case quarl::LASFILE_MISSING_SECTION:
        case quarl::LASFILE_DUPLICATE_SECTION:
        case quarl::LASFILE_NOT_ALLOWED_IN_VERSION:
            return true;
        default:
            return false;
    }
}

// Converts `in` to `out` with `options`, reads both, compares, converts the
// written file onto itself and compares bytes. Fails the test on any fault.
void ExpectRoundTrip(const std::string& in, const std::string& out,
                     const ex::ConvertOptions& options)
{
    const ReadResult original = ReadAll(in);
    ASSERT_EQ(original.code, quarl::LASFILE_OK) << in;
    const ex::ConvertResult first = ex::ConvertFile(in, out, options);
    ASSERT_EQ(first.code, quarl::LASFILE_OK) << in << ": " << first.message;
    const ReadResult written = ReadAll(out);
    ASSERT_EQ(written.code, quarl::LASFILE_OK) << out << " does not read back";
    EXPECT_EQ(CompareData(original, written, options), "") << in;

    const std::string bytes = ReadFileBytes(out);
    const ex::ConvertResult second = ex::ConvertFile(out, out, options);
    ASSERT_EQ(second.code, quarl::LASFILE_OK) << out << ": " << second.message;
    EXPECT_EQ(ReadFileBytes(out), bytes) << in << ": converting the written file again changed it";
}

}  // namespace

TEST(RoundTripCorpus, NumericFilesSurviveLas20WriteAndReadBack)
{
    const std::vector<std::string> files = quarl::test::CorpusFiles();
    if (files.empty()) GTEST_SKIP() << "no corpus at " << quarl::test::CorpusDir();

    TempDir dir;
    // LAS 2.0, space delimiter. Many real files give a STOP or STEP that their
    // depths do not follow, which the writer refuses; quarl-convert's
    // --fix-well-range takes these from the data so that such files make a
    // round trip all the same. The data values are not touched by it.
    ex::ConvertOptions options;
    options.fixWellRange = true;
    int roundTrips = 0, notRead = 0, withText = 0, withoutData = 0, rangeFixed = 0;
    std::map<std::string, std::vector<std::string>> refused;  // reason -> files
    for (const std::string& path : files) {
        const std::string name = path.substr(path.find_last_of('/') + 1);
        SCOPED_TRACE(name);
        const ReadResult original = ReadAll(path);
        if (original.code != quarl::LASFILE_OK) {
            ++notRead;
            continue;
        }
        if (!AllNumeric(original)) {
            ++withText;
            continue;
        }
        if (DataSections(original).empty()) {
            ++withoutData;
            continue;
        }
        const std::string out = dir.File("out.las");
        std::remove(out.c_str());
        const ex::ConvertResult first = ex::ConvertFile(path, out, options);
        if (first.code != quarl::LASFILE_OK) {
            EXPECT_TRUE(IsReasonedRefusal(first)) << first.message;
            refused[std::string(ex::ResultName(first.code)) + " at " + first.stage].push_back(name);
            continue;
        }
        for (const std::string& note : first.notes)
            if (note.find(": written as") != std::string::npos) {
                ++rangeFixed;
                break;
            }
        const ReadResult written = ReadAll(out);
        ASSERT_EQ(written.code, quarl::LASFILE_OK) << "the written file does not read back";
        EXPECT_EQ(CompareData(original, written, options), "");

        const std::string bytes = ReadFileBytes(out);
        const ex::ConvertResult second = ex::ConvertFile(out, out, options);
        ASSERT_EQ(second.code, quarl::LASFILE_OK) << second.message;
        EXPECT_EQ(ReadFileBytes(out), bytes) << "converting the written file again changed it";
        ++roundTrips;
    }

    std::printf(
        "corpus: %zu files, %d round trips (%d with STRT, STOP or STEP taken from the data), "
        "%d not read with LASFILE_OK, %d with text data, %d without data\n",
        files.size(), roundTrips, rangeFixed, notRead, withText, withoutData);
    for (const auto& [reason, names] : refused) {
        std::printf("  refused by the LAS 2.0 writer, %s: %zu:", reason.c_str(), names.size());
        for (const std::string& n : names) std::printf(" %s", n.c_str());
        std::printf("\n");
    }
    EXPECT_GE(roundTrips, kMinimumCorpusRoundTrips);
}

TEST(RoundTripSamples, BundledSamplesSurviveEveryOutputFormat)
{
    TempDir dir;
    ex::ConvertOptions las2;
    ExpectRoundTrip(SampleFile("sample_las20.las"), dir.File("las20.las"), las2);

    // LAS 2.0 to 3.0 renames the log sections; the values stay.
    ex::ConvertOptions las3;
    las3.toLas3 = true;
    for (char delimiter : {' ', '\t', ','}) {
        las3.delimiter = delimiter;
        SCOPED_TRACE(ex::DelimiterName(delimiter));
        ExpectRoundTrip(SampleFile("sample_las20.las"), dir.File("las20to3.las"), las3);
    }

    // The LAS 3.0 sample with its text column keeps it with the comma and
    // the tab; a space would split "Sandstone fine grained" on reading.
    for (char delimiter : {',', '\t'}) {
        las3.delimiter = delimiter;
        SCOPED_TRACE(ex::DelimiterName(delimiter));
        ExpectRoundTrip(SampleFile("sample_las30.las"), dir.File("las30.las"), las3);
    }
}

TEST(RoundTripSamples, WhatLas20CannotHoldIsNamedOrLeftOut)
{
    TempDir dir;
    const std::string las30 = SampleFile("sample_las30.las");
    ex::ConvertOptions options;  // LAS 2.0

    // The Core group has no place in LAS 2.0: the first section of it is named.
    ex::ConvertResult result = ex::ConvertFile(las30, dir.File("a.las"), options);
    EXPECT_EQ(result.code, quarl::LASFILE_BAD_NAME);
    EXPECT_EQ(result.stage, "add");
    EXPECT_NE(result.message.find("Core_Parameter"), std::string::npos) << result.message;

    // Without renaming, the log group is refused as well, first of all.
    options.mapNames = false;
    result = ex::ConvertFile(las30, dir.File("a.las"), options);
    EXPECT_EQ(result.code, quarl::LASFILE_BAD_NAME);
    EXPECT_NE(result.message.find("Log_Parameter"), std::string::npos) << result.message;

    // Leaving out what does not fit writes the log group as a LAS 2.0 file.
    options.mapNames = true;
    options.dropUnsupported = true;
    result = ex::ConvertFile(las30, dir.File("b.las"), options);
    ASSERT_EQ(result.code, quarl::LASFILE_OK) << result.message;
    const ReadResult written = ReadAll(dir.File("b.las"));
    ASSERT_EQ(written.code, quarl::LASFILE_OK);
    const auto data = DataSections(written);
    ASSERT_EQ(data.size(), 1u);
    ASSERT_EQ(data[0]->m_curves.size(), 5u);
    EXPECT_EQ(data[0]->m_curves[4].m_definition.m_mnemonic, "ILD");
    ASSERT_EQ(data[0]->m_curves[4].size(), 50);
    EXPECT_DOUBLE_EQ(data[0]->m_curves[4].m_numbers[3], 10.397);
    size_t dropped = 0;
    for (const std::string& note : result.notes)
        dropped += note.find("left out") != std::string::npos;
    EXPECT_EQ(dropped, 3u);

    // A text curve handed over directly: the writer's record names the column.
    quarl::CLasWriter writer;
    ASSERT_EQ(writer.SetFormat(false, ' '), quarl::LASFILE_OK);
    quarl::CLasSection core;
    core.m_name = "ASCII";
    core.m_type = quarl::LASSECTION_DATA;
    core.m_curves.resize(2);
    core.m_curves[0].m_numbers = {1503.1};
    core.m_curves[1].m_isNumeric = false;
    core.m_curves[1].m_strings = {"Sandstone"};
    EXPECT_EQ(writer.AddSection(core), quarl::LASFILE_BAD_VALUE);
    EXPECT_EQ(ex::DescribeWriterError(writer),
              "LASFILE_BAD_VALUE (a value or column is not allowed), section ASCII, column 1");

    // A delimiter LAS 2.0 does not have is refused before anything is written.
    options = ex::ConvertOptions();
    options.delimiter = ',';
    result = ex::ConvertFile(las30, dir.File("c.las"), options);
    EXPECT_EQ(result.code, quarl::LASFILE_NOT_ALLOWED_IN_VERSION);
    EXPECT_EQ(result.stage, "format");
    EXPECT_FALSE(quarl::test::FileExists(dir.File("c.las")));
}
