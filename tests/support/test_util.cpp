#include "support/test_util.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "foundation/line_store.h"

namespace fs = std::filesystem;

namespace quarl::test {

namespace {

int g_failAt = 0, g_failCount = 0, g_calls = 0;

void* FailingAlloc(size_t bytes)
{
    ++g_calls;
    return g_calls >= g_failAt && g_calls < g_failAt + g_failCount ? nullptr : std::malloc(bytes);
}

}  // namespace

TempDir::TempDir()
{
    std::string pattern = (fs::temp_directory_path() / "quarl-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
    m_path = pattern;
}

TempDir::~TempDir()
{
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

std::string TempDir::Write(const std::string& name, const std::string& bytes) const
{
    std::ofstream(File(name), std::ios::binary) << bytes;
    return File(name);
}

std::string ReadFileBytes(const std::string& path)
{
    std::ostringstream all;
    all << std::ifstream(path, std::ios::binary).rdbuf();
    return all.str();
}

std::vector<std::string> FolderEntries(const std::string& path)
{
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(path, error)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

std::string CorpusDir()
{
    return QUARL_CORPUS_DIR;
}

std::vector<std::string> CorpusFiles()
{
    std::vector<std::string> files;
    for (const std::string& name : FolderEntries(CorpusDir()))
        if (name.size() > 4 &&
            (name.compare(name.size() - 4, 4, ".las") == 0 || name.compare(name.size() - 4, 4, ".LAS") == 0))
            files.push_back(CorpusDir() + "/" + name);
    return files;
}

std::string SampleFile(const std::string& name)
{
    return std::string(QUARL_SAMPLE_DIR) + "/" + name;
}

int32_t Reports::Callback(void* context, double percent, const char* message)
{
    auto* self = static_cast<Reports*>(context);
    EXPECT_TRUE(percent >= 0.0 && percent <= 100.0) << percent;
    self->percents.push_back(percent);
    self->messages.push_back(message);
    if (self->calls() - 1 != self->stopAt) return 0;
    return self->act ? self->act() : 1;
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
