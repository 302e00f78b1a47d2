#include "support/test_util.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "foundation/line_store.h"

namespace quarl::test {

namespace {

void RemoveTree(const std::string& path)
{
    if (DIR* dir = opendir(path.c_str())) {
        while (dirent* entry = readdir(dir)) {
            const std::string name = entry->d_name;
            if (name == "." || name == "..") continue;
            const std::string child = path + "/" + name;
            struct stat st {};
            if (lstat(child.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
                RemoveTree(child);
            } else {
                unlink(child.c_str());
            }
        }
        closedir(dir);
    }
    rmdir(path.c_str());
}

int g_failAt = 0;
int g_failCount = 0;
int g_calls = 0;

void* FailingAlloc(size_t bytes)
{
    ++g_calls;
    if (g_calls >= g_failAt && g_calls < g_failAt + g_failCount) return nullptr;
    return std::malloc(bytes);
}

}  // namespace

TempDir::TempDir()
{
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/quarl-test-XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (!mkdtemp(buffer.data())) throw std::runtime_error("mkdtemp failed");
    m_path = buffer.data();
}

TempDir::~TempDir()
{
    RemoveTree(m_path);
}

std::string TempDir::Write(const std::string& name, const std::string& bytes) const
{
    const std::string path = File(name);
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return path;
}

std::string ReadFileBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream all;
    all << in.rdbuf();
    return all.str();
}

bool FileExists(const std::string& path)
{
    struct stat st {};
    return stat(path.c_str(), &st) == 0;
}

std::string CorpusDir()
{
    return QUARL_CORPUS_DIR;
}

std::vector<std::string> CorpusFiles()
{
    std::vector<std::string> files;
    if (DIR* dir = opendir(CorpusDir().c_str())) {
        while (dirent* entry = readdir(dir)) {
            const std::string name = entry->d_name;
            if (name.size() > 4 && (name.substr(name.size() - 4) == ".las" ||
                                    name.substr(name.size() - 4) == ".LAS")) {
                files.push_back(CorpusDir() + "/" + name);
            }
        }
        closedir(dir);
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string SampleFile(const std::string& name)
{
    return std::string(QUARL_SAMPLE_DIR) + "/" + name;
}

FailingLineStore::FailingLineStore(int failAt, int count)
{
    g_failAt = failAt;
    g_failCount = count;
    g_calls = 0;
    detail::g_lineStoreAlloc = &FailingAlloc;
}

FailingLineStore::~FailingLineStore()
{
    detail::g_lineStoreAlloc = &std::malloc;
}

int FailingLineStore::calls() const
{
    return g_calls;
}

}  // namespace quarl::test
