// The strict reading of every file of the shared corpus stays what it was:
// the result code, the number of sections and a digest of everything read
// (names, types, flags, every field of every parameter line and curve
// definition, every value's bytes) are recorded in
// tests/data/corpus_results.txt. Any change of the strict reading shows here.
// QUARL_WRITE_CORPUS_RESULTS=1 prints the table instead of comparing. Reading
// the same bytes from memory gives what reading the file gives, in every mode.
// Only the public interface is used, so that the table can be made by any
// version of the library.
#include <gtest/gtest.h>
#include <quarl/quarl.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "support/reader_access.h"
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

// Everything a read leaves, as text: result, line, format, digest, notes and
// status reports.
std::string ReadOutcome(CLasReader& reader, ELASFILEERROR result, const test::Reports& reports)
{
    std::string out = std::to_string(result) + " line " + std::to_string(reader.GetLineNumber()) + " " +
                      std::to_string(reader.IsLas3()) + std::to_string(reader.IsWrapped()) + reader.GetDelimiter() +
                      " " + std::to_string(DigestOf(reader)) + "\n";
    for (const CLasNote& note : reader.GetNotes())
        out += std::to_string(note.line) + " " + LasNoteKindName(note.kind) + " " + note.text + "\n";
    for (int i = 0; i < reports.calls(); ++i)
        out += std::to_string(reports.percents[i]) + " " + reports.messages[i] + "\n";
    return out;
}

// A stream over `bytes` that hands out at most seven bytes a read, as a
// stream of bytes still arriving does.
std::FILE* TrickleStream(const std::string& bytes)
{
    struct Trickle {
        std::string bytes;
        size_t at = 0;
    };
    cookie_io_functions_t io{};
    io.read = [](void* c, char* out, size_t n) -> ssize_t {
        Trickle& t = *static_cast<Trickle*>(c);
        n = std::min({n, size_t(7), t.bytes.size() - t.at});
        std::memcpy(out, t.bytes.data() + t.at, n);
        t.at += n;
        return static_cast<ssize_t>(n);
    };
    io.seek = [](void* c, off64_t* offset, int whence) {
        Trickle& t = *static_cast<Trickle*>(c);
        const off64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? off64_t(t.at) : off64_t(t.bytes.size());
        if (base + *offset < 0 || base + *offset > off64_t(t.bytes.size())) return -1;
        t.at = size_t(base + *offset);
        *offset = off64_t(t.at);
        return 0;
    };
    io.close = [](void* c) {
        delete static_cast<Trickle*>(c);
        return 0;
    };
    return fopencookie(new Trickle{bytes}, "rb", io);
}

TEST(ReaderCorpus, ReadingTheBytesFromMemoryGivesWhatReadingTheFileGives)
{
    test::TempDir dir;
    std::vector<std::string> files = test::CorpusFiles();
    files.push_back(test::SampleFile("sample_las20.las"));
    files.push_back(test::SampleFile("sample_las30.las"));
    // Bytes no corpus file has: none, a lone NUL, no line feed at the end,
    // NUL bytes inside values, carriage returns alone.
    const char* made[] = {"", "\0", "~V\nVERS. 2.0:\n~A\n1 2", "~V\nVERS. 2.0:\n~W\nSTRT.M 1\0 2:\n",
                          "~V\rVERS. 2.0:\r~C\rD.M:\r~A\r1\r2\r"};
    for (size_t i = 0; i < sizeof made / sizeof made[0]; ++i)
        files.push_back(dir.Write("made" + std::to_string(i), std::string(made[i], i == 1 ? 1 : std::strlen(made[i]))));
    CLasReadOptions modes[3];
    modes[1].lenient = true;
    modes[2].headersOnly = true;
    for (const std::string& path : files) {
        const std::string bytes = test::ReadFileBytes(path);
        for (const CLasReadOptions& mode : modes) {
            CLasReader fromFile, fromMemory;
            test::Reports fileReports, memoryReports;
            fromFile.SetOptions(mode);
            fromMemory.SetOptions(mode);
            fromFile.SetStatusCallback(&fileReports, test::Reports::Callback);
            fromMemory.SetStatusCallback(&memoryReports, test::Reports::Callback);
            const ELASFILEERROR fileResult = fromFile.Open(tessel::TxString(path.c_str()));
            const ELASFILEERROR memoryResult =
                fromMemory.OpenBuffer(bytes.data(), bytes.size(), tessel::TxString(path.c_str()));
            const std::string fromTheFile = ReadOutcome(fromFile, fileResult, fileReports);
            EXPECT_EQ(ReadOutcome(fromMemory, memoryResult, memoryReports), fromTheFile)
                << path << (mode.lenient ? " lenient" : "") << (mode.headersOnly ? " headers only" : "");
            // And from a stream that gives a few bytes at a time.
            CLasReader fromStream;
            test::Reports streamReports;
            fromStream.SetOptions(mode);
            fromStream.SetStatusCallback(&streamReports, test::Reports::Callback);
            const ELASFILEERROR streamResult =
                fromStream.OpenStream(TrickleStream(bytes), tessel::TxString(path.c_str()));
            EXPECT_EQ(ReadOutcome(fromStream, streamResult, streamReports), fromTheFile) << path << " as a stream";
        }
    }
}

TEST(ReaderCorpus, NullBytesOfSomeLengthAreAPathThatCannotBeOpened)
{
    CLasReader reader;
    EXPECT_EQ(reader.OpenBuffer(nullptr, 10, "null"), LASFILE_IO_FAILED);
    EXPECT_FALSE(reader.IsOpen());
    ASSERT_EQ(reader.GetNotes().size(), 1u);
    EXPECT_EQ(reader.GetNotes()[0].line, 0u);
    EXPECT_EQ(reader.OpenBuffer(nullptr, 0, "empty"), LASFILE_IO_FAILED);
    EXPECT_TRUE(reader.IsOpen());  // an empty file is open with nothing to read
    EXPECT_EQ(reader.OpenStream(nullptr, "none"), LASFILE_IO_FAILED);
    EXPECT_FALSE(reader.IsOpen());
}

// A stream read without a status callback takes its rows in blocks, which
// read from the stream at offsets: the values are those of the buffer.
TEST(ReaderCorpus, AStreamReadInBlocksGivesTheValuesOfTheBuffer)
{
    std::string text = "~V\nVERS. 2.0:\nWRAP. NO:\n~C\nD.M:\nA.M:\n~A\n";
    for (int i = 0; i < 5000; ++i) text += std::to_string(i) + ".5 " + std::to_string(i * 3) + "\n";
    CLasReader fromStream, fromMemory;
    ASSERT_EQ(fromStream.OpenStream(TrickleStream(text), "s"), LASFILE_OK);
    ASSERT_EQ(fromMemory.OpenBuffer(text.data(), text.size(), "s"), LASFILE_OK);
    EXPECT_GT(test::Access::RowsInBlocks(fromStream), 4000u);
    EXPECT_EQ(fromStream.GetSection(fromStream.size() - 1).m_curves[1].m_numbers,
              fromMemory.GetSection(fromMemory.size() - 1).m_curves[1].m_numbers);
    EXPECT_EQ(fromStream.GetLineNumber(), fromMemory.GetLineNumber());
}

}  // namespace
}  // namespace quarl
