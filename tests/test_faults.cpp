// Faults from outside the library: a disk that fills up under the writer, a
// host that cancels at any report, a line store that cannot be allocated at
// any point of a read. Each must end in a result code with valid objects,
// the target of a write as it was, and nothing leaked or left behind.
#include <gtest/gtest.h>

#include <dirent.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "support/reader_access.h"
#include "support/test_util.h"
#include "support/writer_access.h"

namespace quarl::test {
namespace {

std::vector<std::string> FolderEntries(const std::string& path)
{
    std::vector<std::string> names;
    if (DIR* dir = opendir(path.c_str())) {
        while (dirent* entry = readdir(dir)) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..") names.push_back(name);
        }
        closedir(dir);
    }
    std::sort(names.begin(), names.end());
    return names;
}

CLasParam Param(const char* mnemonic, const char* unit, const char* value, const std::string& text,
                const char* format = "")
{
    CLasParam param;
    param.m_mnemonic = mnemonic;
    param.m_unit = unit;
    param.m_value = value;
    param.m_description = text;
    param.m_format = format;
    return param;
}

// A document with header, parameter, definition and data sections of
// `rows` rows, so that a write or read of it brings many reports.
void BuildDocument(CLasWriter& w, bool las3, int rows)
{
    ASSERT_EQ(w.SetFormat(las3, las3 ? ',' : ' '), LASFILE_OK);
    CLasSection well;
    well.m_name = "Well";
    well.m_type = LASSECTION_HEADER;
    well.m_params = {Param("WELL", "", "Fault 1", "Well name"), Param("UWI", "", "A-1", "Unique id")};
    CLasSection params;
    params.m_name = "Parameter";
    params.m_type = LASSECTION_PARAMETER;
    for (int i = 0; i < 30; ++i)
        params.m_params.push_back(Param(("P" + std::to_string(i)).c_str(), "M", "1.5", std::string(i * 3, 'd')));
    CLasSection data;
    data.m_name = las3 ? "Log_Data" : "ASCII";
    data.m_type = LASSECTION_DATA;
    data.m_curves.resize(las3 ? 3 : 2);
    data.m_curves[0].m_definition = Param("DEPT", "M", "", "Depth");
    data.m_curves[1].m_definition = Param("GR", "GAPI", "", "Gamma ray");
    for (int r = 0; r < rows; ++r) {
        data.m_curves[0].m_numbers.push_back(1000.0 + 0.5 * r);
        data.m_curves[1].m_numbers.push_back(40.0 + r % 17);
    }
    if (las3) {
        data.m_curves[2].m_isNumeric = false;
        data.m_curves[2].m_definition = Param("LITH", "", "", "Lithology", "{S}");
        for (int r = 0; r < rows; ++r) data.m_curves[2].m_strings.push_back(r % 3 ? "sand" : "shale");
    }
    for (const CLasSection& s : {well, params, data}) ASSERT_EQ(w.AddSection(s), LASFILE_OK) << s.m_name;
}

std::string WrittenBytes(bool las3, int rows, const std::string& path)
{
    CLasWriter w;
    BuildDocument(w, las3, rows);
    EXPECT_EQ(w.Write(path), LASFILE_OK);
    return ReadFileBytes(path);
}

struct StopAt {
    int stopAt = -1;  // 0-based number of the report that says stop
    int calls = 0;
    static int32_t Callback(void* context, double percent, const char*)
    {
        StopAt* self = static_cast<StopAt*>(context);
        EXPECT_GE(percent, 0.0);
        EXPECT_LE(percent, 100.0);
        return self->calls++ == self->stopAt ? 1 : 0;
    }
};

// While alive, no file of this process may grow past `bytes`: a disk that
// is full from there on. The signal of an exceeded limit is ignored, so
// that the write itself fails.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &m_old);
        m_oldHandler = signal(SIGXFSZ, SIG_IGN);
        rlimit limit = m_old;
        limit.rlim_cur = bytes;
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_old);
        signal(SIGXFSZ, m_oldHandler);
    }

private:
    rlimit m_old{};
    void (*m_oldHandler)(int) = nullptr;
};

TEST(Faults, FullDiskGivesIoFailedAndKeepsTheTarget)
{
    TempDir dir;
    for (bool las3 : {false, true}) {
        const std::string full = WrittenBytes(las3, 2000, dir.File("t.las"));
        ASSERT_GT(full.size(), 20000u);
        const std::string target = dir.Write("t.las", "old bytes\n");
        // The disk fills at the first byte, inside the first block, at a
        // block boundary, and with one byte of the file missing.
        for (rlim_t room : {rlim_t{0}, rlim_t{1}, rlim_t{4096}, rlim_t{full.size() / 2},
                            rlim_t{full.size() - 1}}) {
            {
                CLasWriter w;
                BuildDocument(w, las3, 2000);
                ELASFILEERROR result;
                {
                    FileSizeLimit limit(room);
                    result = w.Write(target);
                }
                EXPECT_EQ(result, LASFILE_IO_FAILED) << room;
                EXPECT_EQ(w.GetLastError(), LASFILE_IO_FAILED);
                EXPECT_EQ(ReadFileBytes(target), "old bytes\n") << room;
                // Room again: the same writer writes the whole file.
                ASSERT_EQ(w.Write(target), LASFILE_OK);
                EXPECT_TRUE(ReadFileBytes(target) == full) << room;
            }
            // The unfinished file went with the writer at the latest.
            EXPECT_EQ(FolderEntries(dir.path()), std::vector<std::string>{"t.las"}) << room;
            dir.Write("t.las", "old bytes\n");
        }
        FileSizeLimit exact(full.size());
        CLasWriter w;
        BuildDocument(w, las3, 2000);
        EXPECT_EQ(w.Write(target), LASFILE_OK);
        EXPECT_TRUE(ReadFileBytes(target) == full);
        unlink(target.c_str());
    }
}

TEST(Faults, WriteCancelledAtEveryReportKeepsTheTargetAndWritesLater)
{
    TempDir dir;
    for (bool las3 : {false, true}) {
        const std::string full = WrittenBytes(las3, 60, dir.File("t.las"));
        const std::string target = dir.Write("t.las", "old bytes\n");
        int stopAt = 0;
        for (;; ++stopAt) {
            CLasWriter w;
            BuildDocument(w, las3, 60);
            StopAt stop;
            stop.stopAt = stopAt;
            w.SetStatusCallback(&stop, &StopAt::Callback);
            const ELASFILEERROR result = w.Write(target);
            if (result == LASFILE_OK) break;
            ASSERT_EQ(result, LASFILE_CANCELLED) << stopAt;
            EXPECT_EQ(stop.calls, stopAt + 1);
            EXPECT_EQ(ReadFileBytes(target), "old bytes\n") << stopAt;
            // A second Write validates the document again: it must come out
            // as if the first had never been.
            w.SetStatusCallback(nullptr, nullptr);
            ASSERT_EQ(w.Write(target), LASFILE_OK) << stopAt;
            EXPECT_TRUE(ReadFileBytes(target) == full) << stopAt;
            dir.Write("t.las", "old bytes\n");
        }
        EXPECT_GT(stopAt, 10) << las3;
        EXPECT_TRUE(ReadFileBytes(target) == full);
        EXPECT_EQ(FolderEntries(dir.path()), std::vector<std::string>{"t.las"});
        unlink(target.c_str());
    }
}

// The file is replaced only through a complete temporary file beside it:
// also when the target is reached through a symbolic link, which must stay
// a link to the file it named, or given without a folder.
TEST(Faults, ReplacementKeepsLinksAndModes)
{
    TempDir dir;
    ASSERT_EQ(mkdir(dir.File("data").c_str(), 0755), 0);
    const std::string real = dir.Write("data/real.las", "old bytes\n");
    ASSERT_EQ(chmod(real.c_str(), 0640), 0);
    ASSERT_EQ(symlink("data/real.las", dir.File("link.las").c_str()), 0);
    CLasWriter w;
    BuildDocument(w, true, 5);
    ASSERT_EQ(w.Write(dir.File("link.las")), LASFILE_OK);
    struct stat st {};
    ASSERT_EQ(lstat(dir.File("link.las").c_str(), &st), 0);
    EXPECT_TRUE(S_ISLNK(st.st_mode));
    ASSERT_EQ(stat(real.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0640u);
    EXPECT_NE(ReadFileBytes(real).find("~Log_Data"), std::string::npos);
    EXPECT_EQ(FolderEntries(dir.File("data")), std::vector<std::string>{"real.las"});

    char here[4096];
    ASSERT_NE(getcwd(here, sizeof here), nullptr);
    ASSERT_EQ(chdir(dir.File("data").c_str()), 0);
    const ELASFILEERROR result = w.Write("real.las");
    EXPECT_EQ(chdir(here), 0);
    EXPECT_EQ(result, LASFILE_OK);
    EXPECT_NE(ReadFileBytes(real).find("# Filename: real.las\n"), std::string::npos);
    EXPECT_EQ(FolderEntries(dir.File("data")), std::vector<std::string>{"real.las"});
}

// A host may call the writer from the status callback of its own Write: the
// document and output in use must stay as they are, and the file come out
// as if nothing had been called.
TEST(Faults, WriterCalledFromItsCallbackAtEveryReport)
{
    TempDir dir;
    const std::string target = dir.File("t.las");
    const std::string full = WrittenBytes(true, 30, target);
    struct Meddler {
        CLasWriter* writer;
        std::string other;
        int at;
        int calls;
        static int32_t Callback(void* context, double, const char*)
        {
            Meddler* self = static_cast<Meddler*>(context);
            if (self->calls++ != self->at) return 0;
            CLasSection extra;
            extra.m_name = "Extra_Parameter";
            extra.m_type = LASSECTION_PARAMETER;
            EXPECT_EQ(self->writer->AddSection(extra), LASFILE_WRONG_STATE);
            EXPECT_EQ(self->writer->Validate(), LASFILE_WRONG_STATE);
            EXPECT_EQ(self->writer->Write(self->other), LASFILE_WRONG_STATE);
            self->writer->Reset();
            CLasWriter empty;
            *self->writer = empty;
            return 0;
        }
    };
    for (int at = 0;; ++at) {
        CLasWriter w;
        BuildDocument(w, true, 30);
        Meddler meddler{&w, dir.File("other.las"), at, 0};
        w.SetStatusCallback(&meddler, &Meddler::Callback);
        ASSERT_EQ(w.Write(target), LASFILE_OK) << at;
        EXPECT_TRUE(ReadFileBytes(target) == full) << at;
        if (meddler.calls <= at) break;
    }
    EXPECT_EQ(FolderEntries(dir.path()), std::vector<std::string>{"t.las"});
}

// Whether what `part` holds is what a complete read holds, cut short: the
// same sections in the same order, each curve a prefix of the full one,
// and curves of a section no more than one value apart.
void ExpectPrefixOf(const CLasReader& part, const CLasReader& whole, const std::string& where)
{
    ASSERT_LE(part.size(), whole.size()) << where;
    for (uint64_t i = 0; i < part.size(); ++i) {
        const CLasSection& a = part.GetSection(i);
        const CLasSection& b = whole.GetSection(i);
        EXPECT_EQ(a.m_name, b.m_name) << where;
        ASSERT_LE(a.m_params.size(), b.m_params.size()) << where;
        for (size_t p = 0; p < a.m_params.size(); ++p)
            EXPECT_EQ(a.m_params[p].m_value, b.m_params[p].m_value) << where << " " << a.m_name;
        ASSERT_EQ(a.m_curves.size(), b.m_curves.size()) << where;
        int32_t shortest = 0, longest = 0;
        for (size_t c = 0; c < a.m_curves.size(); ++c) {
            const CLasCurve& x = a.m_curves[c];
            const CLasCurve& y = b.m_curves[c];
            ASSERT_LE(x.size(), y.size()) << where;
            EXPECT_TRUE(std::equal(x.m_numbers.begin(), x.m_numbers.end(), y.m_numbers.begin()));
            EXPECT_TRUE(std::equal(x.m_strings.begin(), x.m_strings.end(), y.m_strings.begin()));
            shortest = c == 0 ? x.size() : std::min(shortest, x.size());
            longest = std::max(longest, x.size());
        }
        EXPECT_LE(longest - shortest, 1) << where << " " << a.m_name;
    }
}

// Files to read: both versions as the writer makes them, a wrapped file
// with comments, and lines that make the line store grow many times.
std::vector<std::string> ReadCases(const TempDir& dir)
{
    std::vector<std::string> paths = {SampleFile("sample_las20.las"), SampleFile("sample_las30.las")};
    WrittenBytes(false, 40, dir.File("w20.las"));
    WrittenBytes(true, 40, dir.File("w30.las"));
    paths.push_back(dir.File("w20.las"));
    paths.push_back(dir.File("w30.las"));
    std::string wrapped = "# head\n~Version\nVERS. 2.0 : v\nWRAP. YES : w\n~Well\nSTEP.M 1 : s\n"
                          "~Curve\nDEPT.M : d\nA.M : a\nB.M : b\n~A\n";
    for (int r = 0; r < 30; ++r)
        wrapped += std::to_string(r) + "\n# between\n  1.5\n2." + std::string(r * 13, '5') + "\n";
    paths.push_back(dir.Write("wrapped.las", wrapped));
    return paths;
}

TEST(Faults, ReadCancelledAtEveryReportLeavesAValidPrefix)
{
    TempDir dir;
    for (const std::string& path : ReadCases(dir)) {
        CLasReader whole;
        ASSERT_EQ(whole.Open(path), LASFILE_OK) << path;
        int stopAt = 0;
        for (;; ++stopAt) {
            CLasReader reader;
            StopAt stop;
            stop.stopAt = stopAt;
            reader.SetStatusCallback(&stop, &StopAt::Callback);
            const ELASFILEERROR result = reader.Open(path);
            if (stop.calls <= stopAt) {  // no report was left to say stop
                EXPECT_EQ(result, LASFILE_OK);
                break;
            }
            ASSERT_EQ(result, LASFILE_CANCELLED) << path << " " << stopAt;
            EXPECT_TRUE(reader.IsOpen());
            ExpectPrefixOf(reader, whole, path + " report " + std::to_string(stopAt));
            const ELASFILEERROR stepping = reader.CheckDataStepping();
            EXPECT_TRUE(stepping >= LASFILE_OK && stepping <= LASFILE_BAD_NAME);
            reader.Close();
            EXPECT_TRUE(reader.empty());
        }
        EXPECT_GE(stopAt, 1) << path;
    }
}

// A host may close the reader from its own callback, at any report: the
// read must end with a result code and the reader stay usable.
TEST(Faults, ReaderClosedFromItsCallbackAtEveryReport)
{
    TempDir dir;
    struct Closer {
        CLasReader* reader;
        int closeAt;
        int calls;
        static int32_t Callback(void* context, double, const char*)
        {
            Closer* self = static_cast<Closer*>(context);
            if (self->calls++ == self->closeAt) self->reader->Close();
            return 0;
        }
    };
    for (const std::string& path : ReadCases(dir)) {
        for (int closeAt = 0;; ++closeAt) {
            CLasReader reader;
            Closer closer{&reader, closeAt, 0};
            reader.SetStatusCallback(&closer, &Closer::Callback);
            const ELASFILEERROR result = reader.Open(path);
            if (closer.calls > closeAt) {
                EXPECT_EQ(result, LASFILE_CANCELLED) << path << " " << closeAt;
                EXPECT_FALSE(reader.IsOpen());
                EXPECT_TRUE(reader.empty());
            }
            reader.SetStatusCallback(nullptr, nullptr);
            EXPECT_EQ(reader.Open(path), LASFILE_OK);
            if (closer.calls <= closeAt) break;
        }
    }
}

TEST(Faults, LineStoreFailingAtEveryAllocationOfARead)
{
    TempDir dir;
    for (const std::string& path : ReadCases(dir)) {
        CLasReader whole;
        int allocations = 0;
        {
            FailingLineStore counting(1 << 30);
            ASSERT_EQ(whole.Open(path), LASFILE_OK) << path;
            allocations = counting.calls();
        }
        ASSERT_GE(allocations, 2) << path;
        for (int failAt = 1; failAt <= allocations; ++failAt) {
            const std::string where = path + " allocation " + std::to_string(failAt);
            CLasReader reader;
            {
                // From here on nothing can be had: the read must say so.
                FailingLineStore failing(failAt);
                EXPECT_EQ(reader.Open(path), LASFILE_OUT_OF_MEMORY) << where;
            }
            EXPECT_TRUE(reader.IsOpen());
            ExpectPrefixOf(reader, whole, where);
            {
                // Only this allocation fails: a byte is lost, the read goes on.
                FailingLineStore once(failAt, 1);
                const ELASFILEERROR result = reader.Open(path);
                EXPECT_TRUE(result == LASFILE_OUT_OF_MEMORY || result == LASFILE_OK ||
                            result == LASFILE_BAD_FORMAT)
                    << where << " " << result;
            }
            for (const auto& section : reader) {
                if (section->m_type != LASSECTION_DATA) continue;
                for (const CLasCurve& curve : section->m_curves)
                    EXPECT_LE(curve.size(), section->m_curves.front().size() + 1) << where;
            }
            reader.Close();
            EXPECT_EQ(reader.Open(path), LASFILE_OK) << where;
        }
    }
}

}  // namespace
}  // namespace quarl::test
