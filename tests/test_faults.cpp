// Faults from outside the library: a disk that fills up under the writer, a
// host that cancels or calls back in at any report, a line store that cannot
// be allocated at any point of a read. Each must end in a result code with
// valid objects, the target of a write as it was, and nothing left behind.
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/reader_access.h"
#include "support/writer_access.h"

namespace quarl::test {
namespace {

using Entries = std::vector<std::string>;

// Header, parameter and data sections of `rows` rows, so that a write or
// read of it brings many reports.
void BuildDocument(CLasWriter& w, bool las3, int rows)
{
    ASSERT_EQ(w.SetFormat(las3, las3 ? ',' : ' '), LASFILE_OK);
    CLasSection params = Section("Parameter", LASSECTION_PARAMETER);
    for (int i = 0; i < 30; ++i)
        params.m_params.push_back(Param("P" + std::to_string(i), "M", "1.5", std::string(i * 3, 'd')));
    std::vector<CLasCurve> curves = {Numbers({}, Param("DEPT", "M", "", "Depth")),
                                     Numbers({}, Param("GR", "GAPI", "", "Gamma ray"))};
    for (int r = 0; r < rows; ++r) {
        curves[0].m_numbers.push_back(1000.0 + 0.5 * r);
        curves[1].m_numbers.push_back(40.0 + r % 17);
    }
    if (las3) {
        curves.push_back(Texts({}));
        curves[2].m_definition = Param("LITH", "", "", "Lithology", "{S}");
        for (int r = 0; r < rows; ++r) curves[2].m_strings.push_back(r % 3 ? "sand" : "shale");
    }
    for (const CLasSection& s :
         {Section("Well", LASSECTION_HEADER,
                  {Param("WELL", "", "Fault 1", "Well name"), Param("UWI", "", "A-1", "Unique id")}),
          params, Data(las3 ? "Log_Data" : "ASCII", curves)})
        ASSERT_EQ(w.AddSection(s), LASFILE_OK) << s.m_name;
}

std::string WrittenBytes(bool las3, int rows, const std::string& path)
{
    CLasWriter w;
    BuildDocument(w, las3, rows);
    EXPECT_EQ(w.Write(path), LASFILE_OK);
    return ReadFileBytes(path);
}

// While alive, no file of this process may grow past `bytes`: a disk that
// is full from there on. The signal is ignored, so that the write fails.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_oldHandler(signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_old);
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
    void (*m_oldHandler)(int);
    rlimit m_old{};
};

TEST(Faults, FullDiskGivesIoFailedAndKeepsTheTarget)
{
    TempDir dir;
    for (bool las3 : {false, true}) {
        const std::string full = WrittenBytes(las3, 2000, dir.File("t.las"));
        ASSERT_GT(full.size(), 20000u);
        const std::string target = dir.Write("t.las", "old bytes\n");
        const size_t rowsBegin = full.find('\n', full.find(las3 ? "~Log_Data" : "~ASCII")) + 1;
        // At the first byte, inside the first block, at a block boundary, at
        // the first byte of the rows, one byte short.
        for (rlim_t room : {rlim_t{0}, rlim_t{1}, rlim_t{4096}, rlim_t{rowsBegin}, rlim_t{full.size() / 2},
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
                // Inside the rows, the record names the row of the first
                // byte the disk refused, and its column.
                if (room >= rowsBegin) {
                    const size_t lineBegin = full.rfind('\n', room - 1) + 1;
                    const auto row = std::count(full.begin() + static_cast<long>(rowsBegin),
                                                full.begin() + static_cast<long>(lineBegin), '\n');
                    const auto column = std::count(full.begin() + static_cast<long>(lineBegin),
                                                   full.begin() + static_cast<long>(room), las3 ? ',' : ' ') -
                                        (las3 ? 0 : 1);
                    EXPECT_EQ(w.GetLastErrorRow(), row) << room;
                    const long lineEnd = las3 ? 3 : 2;  // the column behind the last curve
                    EXPECT_EQ(w.GetLastErrorColumn(), full[room] == '\n' ? lineEnd : std::max<long>(column, 0)) << room;
                    EXPECT_STREQ(w.GetLastErrorSection(), las3 ? "Log_Data" : "ASCII");
                }
                EXPECT_EQ(ReadFileBytes(target), "old bytes\n") << room;
                ASSERT_EQ(w.Write(target), LASFILE_OK);  // room again: the same writer writes it all
                EXPECT_TRUE(ReadFileBytes(target) == full) << room;
            }
            EXPECT_EQ(FolderEntries(dir.path()), Entries{"t.las"}) << room;
            dir.Write("t.las", "old bytes\n");
        }
        FileSizeLimit exact(full.size());
        CLasWriter w;
        BuildDocument(w, las3, 2000);
        EXPECT_EQ(w.Write(target), LASFILE_OK);
        EXPECT_TRUE(ReadFileBytes(target) == full);
    }
}

// At every report of a write a host may call the writer from its callback,
// or cancel. Calls back are refused or wait until the write is done, whose
// file comes out as if nothing had been called. A cancelled write records
// no error, keeps the old target and its own unfinished file until the next
// write, which validates the document again and must come out as if the
// first had never been.
TEST(Faults, WriteCalledBackOrCancelledAtEveryReport)
{
    TempDir dir;
    for (bool las3 : {false, true}) {
        const std::string full = WrittenBytes(las3, 60, dir.File("t.las"));
        const std::string target = dir.Write("t.las", "old bytes\n");
        int at = 0;
        for (;; ++at) {
            CLasWriter called;
            BuildDocument(called, las3, 60);
            Reports meddler;
            meddler.stopAt = at;
            meddler.act = [&] {
                EXPECT_EQ(called.AddSection(Section("Parameter", LASSECTION_PARAMETER)), LASFILE_WRONG_STATE);
                EXPECT_EQ(called.Validate(), LASFILE_WRONG_STATE);
                EXPECT_EQ(called.Write(dir.File("other.las")), LASFILE_WRONG_STATE);
                called.Reset();
                called = CLasWriter();
                return 0;
            };
            called.SetStatusCallback(&meddler, &Reports::Callback);
            ASSERT_EQ(called.Write(target), LASFILE_OK) << at;
            EXPECT_TRUE(ReadFileBytes(target) == full) << at;
            dir.Write("t.las", "old bytes\n");

            CLasWriter w;
            BuildDocument(w, las3, 60);
            Reports stop;
            stop.stopAt = at;
            w.SetStatusCallback(&stop, &Reports::Callback);
            const ELASFILEERROR result = w.Write(target);
            if (result == LASFILE_OK) break;
            ASSERT_EQ(result, LASFILE_CANCELLED) << at;
            EXPECT_EQ(stop.calls(), at + 1);
            EXPECT_EQ(LastError(w), ErrorRecord{});
            EXPECT_EQ(std::string(detail::WriterAccess::Filename(w)), target);
            EXPECT_EQ(ReadFileBytes(target), "old bytes\n") << at;
            EXPECT_EQ(FolderEntries(dir.path()).size(), 2u) << at;
            w.SetStatusCallback(nullptr, nullptr);
            ASSERT_EQ(w.Write(target), LASFILE_OK) << at;
            EXPECT_TRUE(ReadFileBytes(target) == full) << at;
            dir.Write("t.las", "old bytes\n");
        }
        EXPECT_GT(at, 10) << las3;
        EXPECT_TRUE(ReadFileBytes(target) == full);
        EXPECT_EQ(FolderEntries(dir.path()), Entries{"t.las"});
    }
}

// Whether `part` is a complete read cut short: the same sections in the
// same order, each curve a prefix of the full one, and the curves of a
// section no more than one value apart.
void ExpectPrefixOf(const CLasReader& part, const CLasReader& whole, const std::string& where)
{
    ASSERT_LE(part.size(), whole.size()) << where;
    for (uint64_t i = 0; i < part.size(); ++i) {
        const CLasSection& a = part.GetSection(i);
        const CLasSection& b = whole.GetSection(i);
        EXPECT_EQ(a.m_name, b.m_name) << where;
        ASSERT_LE(a.m_params.size(), b.m_params.size()) << where;
        for (size_t p = 0; p < a.m_params.size(); ++p) EXPECT_EQ(a.m_params[p].m_value, b.m_params[p].m_value) << where;
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

// Both versions as the samples have them and as the writer makes them, a
// wrapped file with comments, and lines that make the line store grow often.
std::vector<std::string> ReadCases(const TempDir& dir)
{
    WrittenBytes(false, 40, dir.File("w20.las"));
    WrittenBytes(true, 40, dir.File("w30.las"));
    std::string wrapped =
        "# head\n~Version\nVERS. 2.0 : v\nWRAP. YES : w\n~Well\nSTEP.M 1 : s\n~Curve\nDEPT.M : d\nA.M : a\nB.M : "
        "b\n~A\n";
    for (int r = 0; r < 30; ++r)
        wrapped += std::to_string(r) + "\n# between\n  1.5\n2." + std::string(r * 13, '5') + "\n";
    return {SampleFile("sample_las20.las"), SampleFile("sample_las30.las"), dir.File("w20.las"), dir.File("w30.las"),
            dir.Write("wrapped.las", wrapped)};
}

// A read cancelled at any report leaves a valid prefix of the whole; a host
// may also close the reader from its own callback, and the read must end
// with a result code and the reader stay usable.
TEST(Faults, ReadCancelledOrClosedAtEveryReport)
{
    TempDir dir;
    for (const std::string& path : ReadCases(dir)) {
        CLasReader whole;
        ASSERT_EQ(whole.Open(path), LASFILE_OK) << path;
        int at = 0;
        for (;; ++at) {
            const std::string where = path + " report " + std::to_string(at);
            CLasReader reader, closed;
            Reports stop, closer;
            stop.stopAt = closer.stopAt = at;
            closer.act = [&] {
                closed.Close();
                return 0;
            };
            reader.SetStatusCallback(&stop, &Reports::Callback);
            closed.SetStatusCallback(&closer, &Reports::Callback);
            const ELASFILEERROR result = reader.Open(path);
            const ELASFILEERROR closedResult = closed.Open(path);
            if (closer.calls() > at) {
                EXPECT_TRUE(closedResult == LASFILE_CANCELLED && !closed.IsOpen() && closed.empty()) << where;
            }
            closed.SetStatusCallback(nullptr, nullptr);
            EXPECT_EQ(closed.Open(path), LASFILE_OK) << where;
            if (stop.calls() <= at) {  // no report was left to say stop
                EXPECT_EQ(result, LASFILE_OK);
                break;
            }
            ASSERT_EQ(result, LASFILE_CANCELLED) << where;
            EXPECT_TRUE(reader.IsOpen());
            ExpectPrefixOf(reader, whole, where);
            const ELASFILEERROR stepping = reader.CheckDataStepping();
            EXPECT_TRUE(stepping >= LASFILE_OK && stepping <= LASFILE_BAD_NAME);
            reader.Close();
            EXPECT_TRUE(reader.empty());
        }
        EXPECT_GE(at, 1) << path;
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
                FailingLineStore failing(failAt);  // nothing to be had from here on
                EXPECT_EQ(reader.Open(path), LASFILE_OUT_OF_MEMORY) << where;
            }
            EXPECT_TRUE(reader.IsOpen());
            ExpectPrefixOf(reader, whole, where);
            {
                FailingLineStore once(failAt, 1);  // a byte is lost, the read goes on
                const ELASFILEERROR result = reader.Open(path);
                EXPECT_TRUE(result == LASFILE_OUT_OF_MEMORY || result == LASFILE_OK || result == LASFILE_BAD_FORMAT)
                    << where << " " << result;
            }
            for (const auto& section : reader)
                for (const CLasCurve& curve : section->m_curves)
                    EXPECT_LE(curve.size(), section->m_curves.front().size() + 1) << where;
            reader.Close();
            EXPECT_EQ(reader.Open(path), LASFILE_OK) << where;
        }
    }
}

// Runs `body` in a child process, as the user and group `id` when `id` is
// not -1, and gives what the child returned (1 when it ended otherwise).
int InChild(int id, const std::function<int()>& body)
{
    const pid_t child = fork();
    if (child == 0) {
        if (id != -1 && (setgid(static_cast<gid_t>(id)) != 0 || setuid(static_cast<uid_t>(id)) != 0)) _exit(99);
        _exit(body());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

// A written file without its first two lines, which name the path.
std::string Body(const std::string& bytes)
{
    return bytes.substr(std::min(bytes.size(), bytes.find('\n', bytes.find('\n') + 1)));
}

struct stat StatOf(const std::string& path)
{
    struct stat st {};
    EXPECT_EQ(stat(path.c_str(), &st), 0) << path;
    return st;
}

// A write never makes the target another file than it was: a link stays a
// link to the file it named, with the mode that file had, also when it
// leads nowhere; a file with a second hard link and a file of another user
// are written in place; a target given without a folder is found in the
// current one; a folder we may not write, another user's file in a sticky
// folder and a disk without room for a second copy do not make the write
// fail where writing in place succeeds.
TEST(Faults, TargetKeepsItsIdentity)
{
    TempDir dir;
    ASSERT_EQ(chmod(dir.path().c_str(), 0755), 0);
    const std::string full = Body(WrittenBytes(false, 50, dir.File("full.las")));
    const auto write = [](const std::string& path) {
        CLasWriter w;
        BuildDocument(w, false, 50);
        return w.Write(path);
    };
    ASSERT_EQ(mkdir(dir.File("data").c_str(), 0755), 0);
    const std::string real = dir.Write("data/real.las", "old bytes\n");
    ASSERT_EQ(chmod(real.c_str(), 0640), 0);
    ASSERT_EQ(symlink("data/real.las", dir.File("link.las").c_str()), 0);
    ASSERT_EQ(write(dir.File("link.las")), LASFILE_OK);
    struct stat st {};
    EXPECT_TRUE(lstat(dir.File("link.las").c_str(), &st) == 0 && S_ISLNK(st.st_mode));
    EXPECT_EQ(StatOf(real).st_mode & 07777, 0640u);
    EXPECT_TRUE(Body(ReadFileBytes(real)) == full);

    char here[4096];
    ASSERT_NE(getcwd(here, sizeof here), nullptr);
    ASSERT_EQ(chdir(dir.File("data").c_str()), 0);
    const ELASFILEERROR result = write("real.las");
    EXPECT_EQ(chdir(here), 0);
    EXPECT_EQ(result, LASFILE_OK);
    EXPECT_NE(ReadFileBytes(real).find("# Filename: real.las\n"), std::string::npos);
    EXPECT_EQ(FolderEntries(dir.File("data")), Entries{"real.las"});

    const std::string linked = dir.Write("linked.las", "old bytes\n");
    ASSERT_EQ(link(linked.c_str(), dir.File("second.las").c_str()), 0);
    const ino_t inode = StatOf(linked).st_ino;
    EXPECT_EQ(write(linked), LASFILE_OK);
    EXPECT_EQ(StatOf(linked).st_ino, inode);
    EXPECT_TRUE(Body(ReadFileBytes(dir.File("second.las"))) == full);

    ASSERT_EQ(symlink("nowhere.las", dir.File("dangling.las").c_str()), 0);
    EXPECT_EQ(write(dir.File("dangling.las")), LASFILE_OK);
    EXPECT_TRUE(lstat(dir.File("dangling.las").c_str(), &st) == 0 && S_ISLNK(st.st_mode));
    EXPECT_TRUE(Body(ReadFileBytes(dir.File("nowhere.las"))) == full);

    if (geteuid() != 0) GTEST_SKIP() << "the cases of other users need root";
    const int other = 4242, self = 65534;  // two users that are not root
    const std::string owned = dir.Write("owned.las", "old bytes\n");
    ASSERT_EQ(chown(owned.c_str(), other, other), 0);
    EXPECT_EQ(write(owned), LASFILE_OK);
    EXPECT_EQ(StatOf(owned).st_uid, static_cast<uid_t>(other));
    EXPECT_TRUE(Body(ReadFileBytes(owned)) == full);

    // A user's own file in a folder of root's, and another user's file that
    // is open to all in a sticky folder.
    ASSERT_EQ(mkdir(dir.File("closed").c_str(), 0755), 0);
    ASSERT_EQ(mkdir(dir.File("sticky").c_str(), 01777), 0);
    ASSERT_EQ(chmod(dir.File("sticky").c_str(), 01777), 0);
    const std::string mine = dir.Write("closed/mine.las", "old bytes\n");
    const std::string theirs = dir.Write("sticky/theirs.las", "old bytes\n");
    ASSERT_EQ(chown(mine.c_str(), self, self), 0);
    ASSERT_EQ(chown(theirs.c_str(), other, other), 0);
    ASSERT_EQ(chmod(theirs.c_str(), 0666), 0);
    for (const std::string& path : {mine, theirs}) {
        EXPECT_EQ(InChild(self, [&] { return static_cast<int>(write(path)); }), LASFILE_OK) << path;
        EXPECT_TRUE(Body(ReadFileBytes(path)) == full) << path;
    }
    EXPECT_EQ(StatOf(theirs).st_uid, static_cast<uid_t>(other));

    // A disk of 128 KiB that holds a file of 100 KiB: a second copy has no
    // room, the file written in place has. In a mount namespace of the
    // child's own, so that nothing outlives it.
    const std::string small = dir.File("small");
    ASSERT_EQ(mkdir(small.c_str(), 0755), 0);
    const int room = InChild(-1, [&] {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("tmpfs", small.c_str(), "tmpfs", 0, "size=128k") != 0)
            return 77;
        const std::string target = small + "/big.las";
        {
            std::FILE* file = std::fopen(target.c_str(), "w");
            const std::string old(100 * 1024, 'x');
            std::fwrite(old.data(), 1, old.size(), file);
            std::fclose(file);
        }
        CLasWriter w;
        BuildDocument(w, false, 4000);  // about 47 KiB
        const ELASFILEERROR result = w.Write(target);
        const bool whole = result == LASFILE_OK && ReadFileBytes(target).find("\n 2999.5 ") != std::string::npos &&
                           FolderEntries(small) == Entries{"big.las"};
        return whole ? 0 : 10 + static_cast<int>(result);
    });
    if (room == 77) GTEST_SKIP() << "no mount namespace for a small disk here";
    EXPECT_EQ(room, 0);
}

// Every object on a thread of its own: writers and readers side by side
// share nothing. Run under ThreadSanitizer by CI.
TEST(Threads, WritersAndReadersOnTheirOwnThreads)
{
    TempDir dir;
    const std::string expected = WrittenBytes(true, 200, dir.File("t0.las"));
    const auto work = [&](int id) {
        for (int round = 0; round < 20; ++round) {
            const std::string path = dir.File("t" + std::to_string(id) + ".las");
            CLasWriter w;
            BuildDocument(w, true, 200);
            EXPECT_EQ(w.Write(path), LASFILE_OK);
            CLasReader reader;
            EXPECT_EQ(reader.Open(path), LASFILE_OK);
            EXPECT_EQ(reader.GetSection(reader.size() - 1).m_curves.at(0).size(), 200);
        }
    };
    std::thread first(work, 1), second(work, 2);
    first.join();
    second.join();
    EXPECT_EQ(ReadFileBytes(dir.File("t1.las")).size(), expected.size());
    EXPECT_EQ(ReadFileBytes(dir.File("t2.las")).size(), expected.size());
}

}  // namespace
}  // namespace quarl::test
