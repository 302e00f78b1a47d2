// Helpers shared by the test programs: scratch folders, files read back, the
// shared corpus, a status callback that records its reports, and a line
// store allocator that fails on purpose.
#ifndef QUARL_TESTS_TEST_UTIL_H
#define QUARL_TESTS_TEST_UTIL_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quarl::test {

// A scratch folder that is removed with everything in it.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }
    std::string File(const std::string& name) const { return m_path + "/" + name; }
    // Writes `bytes` to the file `name` in the folder; returns its path.
    std::string Write(const std::string& name, const std::string& bytes) const;

private:
    std::string m_path;
};

std::string ReadFileBytes(const std::string& path);
// The names in a folder, sorted.
std::vector<std::string> FolderEntries(const std::string& path);

// The .las files of the shared corpus, sorted; empty when it is absent.
std::vector<std::string> CorpusFiles();
std::string CorpusDir();
std::string SampleFile(const std::string& name);

// A status callback that keeps every report, and at report `stopAt` (counted
// from 0) answers what `act` returns, or "stop" when there is no `act`; every
// other report is answered with "go on".
struct Reports {
    std::vector<double> percents;
    std::vector<std::string> messages;
    int stopAt = -1;
    std::function<int32_t()> act;

    int calls() const { return static_cast<int>(percents.size()); }
    static int32_t Callback(void* context, double percent, const char* message);
};

// While alive, the line store allocation fails from the `failAt`-th call on
// (counted from 1) for `count` calls.
class FailingLineStore {
public:
    explicit FailingLineStore(int failAt, int count = 1 << 30);
    ~FailingLineStore();
    FailingLineStore(const FailingLineStore&) = delete;
    FailingLineStore& operator=(const FailingLineStore&) = delete;
    int calls() const;
};

}  // namespace quarl::test

#endif
