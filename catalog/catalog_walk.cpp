#include "catalog/catalog_walk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

namespace quarl::catalog {

bool HasLasName(const std::string& name)
{
    if (name.size() < 4) return false;
    std::string end = name.substr(name.size() - 4);
    for (char& c : end) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return end == ".las";
}

bool StartsLikeLas(const std::string& head)
{
    size_t at = head.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    while (at < head.size() &&
           (head[at] == ' ' || head[at] == '\t' || head[at] == '\r' || head[at] == '\n'))
        ++at;
    return at + 1 < head.size() && head[at] == '~' && (head[at + 1] == 'V' || head[at + 1] == 'v');
}

std::string AbsolutePath(const std::string& path)
{
    std::error_code error;
    std::filesystem::path absolute = std::filesystem::absolute(path, error);
    if (error) absolute = path;
    std::string text = absolute.lexically_normal().string();
    while (text.size() > 1 && text.back() == '/') text.pop_back();
    return text;
}

namespace {

// How many bytes of a file without a .las name are looked at.
constexpr size_t kHeadBytes = 512;

int64_t MtimeNs(const struct stat& st)
{
    return static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000LL +
           static_cast<int64_t>(st.st_mtim.tv_nsec);
}

// The first bytes of a file; false when it cannot be opened.
bool ReadHead(const std::string& path, std::string* head)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) return false;
    head->resize(kHeadBytes);
    const ssize_t got = ::read(fd, &(*head)[0], kHeadBytes);
    ::close(fd);
    head->resize(got > 0 ? static_cast<size_t>(got) : 0);
    return got >= 0;
}

class Walker {
public:
    explicit Walker(const std::atomic<bool>* stop) : m_stop(stop) {}

    void Root(const std::string& root)
    {
        Visit(AbsolutePath(root));
        while (!m_folders.empty() && !Stopped()) {
            const std::string folder = std::move(m_folders.back());
            m_folders.pop_back();
            Folder(folder);
        }
    }
    WalkResult& Result()
    {
        if (!Stopped()) LinkedFiles();
        return m_result;
    }

private:
    using Key = std::pair<dev_t, ino_t>;

    bool Stopped()
    {
        if (m_stop && m_stop->load()) m_result.stopped = true;
        return m_result.stopped;
    }

    // Its entries in name order; its folders are walked after its files.
    void Folder(const std::string& folder)
    {
        DIR* dir = ::opendir(folder.c_str());
        if (!dir) {
            m_result.unreadable.push_back(folder);
            return;
        }
        std::vector<std::string> names;
        while (const dirent* entry = ::readdir(dir)) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..") names.push_back(name);
        }
        ::closedir(dir);
        std::sort(names.begin(), names.end());
        const size_t before = m_folders.size();
        const std::string prefix = folder == "/" ? folder : folder + "/";
        for (const std::string& name : names) Visit(prefix + name);
        std::reverse(m_folders.begin() + static_cast<std::ptrdiff_t>(before), m_folders.end());
    }

    void Visit(const std::string& path)
    {
        struct stat st;
        if (::lstat(path.c_str(), &st) != 0) {
            m_result.unreadable.push_back(path);
            return;
        }
        const bool linked = S_ISLNK(st.st_mode);
        if (linked && ::stat(path.c_str(), &st) != 0) {
            ++m_result.links;  // dangling, or a loop of links
            return;
        }
        const Key key(st.st_dev, st.st_ino);
        if (S_ISDIR(st.st_mode)) {
            if (!m_walked.insert(key).second) {
                ++m_result.links;  // a folder walked already: a loop or a second way in
                return;
            }
            m_folders.push_back(path);
        } else if (S_ISREG(st.st_mode)) {
            File(path, st, linked);
        } else {
            ++m_result.notLas;
        }
    }

    // The links to files, taken after every root was walked: a link met
    // before the file it leads to must not make that file's path the one
    // stored, nor store it twice.
    void LinkedFiles()
    {
        m_linksLast = false;
        for (const auto& [path, st] : m_linkedFiles) File(path, st, true);
        m_linkedFiles.clear();
    }

    void File(const std::string& path, const struct stat& st, bool linked)
    {
        const Key key(st.st_dev, st.st_ino);
        if (linked && m_linksLast) {
            m_linkedFiles.emplace_back(path, st);
            return;
        }
        if (linked && m_found.count(key)) {
            ++m_result.links;
            return;
        }
        const size_t slash = path.rfind('/');
        if (!HasLasName(path.substr(slash == std::string::npos ? 0 : slash + 1))) {
            std::string head;
            if (!ReadHead(path, &head)) {
                m_result.unreadable.push_back(path);
                return;
            }
            if (!StartsLikeLas(head)) {
                ++m_result.notLas;
                return;
            }
        }
        m_found.insert(key);
        m_result.files.push_back({path, static_cast<int64_t>(st.st_size), MtimeNs(st)});
    }

    const std::atomic<bool>* m_stop;
    WalkResult m_result;
    std::vector<std::string> m_folders;  // to walk, the next one last
    std::set<Key> m_walked;
    std::set<Key> m_found;
    bool m_linksLast = true;
    std::vector<std::pair<std::string, struct stat>> m_linkedFiles;
};

}  // namespace

bool RootsExist(const std::vector<std::string>& roots, std::string* error)
{
    for (const std::string& root : roots) {
        struct stat st;
        if (::stat(root.c_str(), &st) != 0) {
            *error = root + ": " + std::generic_category().message(errno);
            return false;
        }
    }
    return true;
}

WalkResult WalkTrees(const std::vector<std::string>& roots, const std::atomic<bool>* stop)
{
    Walker walker(stop);
    for (const std::string& root : roots) walker.Root(root);
    return std::move(walker.Result());
}

}  // namespace quarl::catalog
