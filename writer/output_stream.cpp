#include "writer/output_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <random>

#include "foundation/platform.h"

namespace quarl::detail {

int64_t g_failOutputCall = 0;

namespace {

constexpr size_t kBufferSize = 1 << 18;

std::string FolderOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return path.substr(0, slash);
}

// A symbolic link is followed, so that the file it points to is replaced
// and the link stays a link.
std::string ResolveLink(const std::string& path)
{
    char resolved[PATH_MAX];
    if (::realpath(path.c_str(), resolved)) return resolved;
    return path;
}

// Creates a new file with a name nobody uses yet in `folder`, with the mode
// that a fresh file gets from the process's umask.
int CreateTempFile(const std::string& folder, std::string* tempPath)
{
    static std::minstd_rand random(static_cast<unsigned>(::getpid()) ^
                                   static_cast<unsigned>(reinterpret_cast<uintptr_t>(&folder)));
    static const char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    for (int attempt = 0; attempt < 100; ++attempt) {
        std::string name = folder + "/.quarl-";
        for (int i = 0; i < 8; ++i) name += kLetters[random() % (sizeof kLetters - 1)];
        const int fd = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0) {
            *tempPath = name;
            return fd;
        }
        if (errno != EEXIST) return -1;
    }
    return -1;
}

}  // namespace

bool OpenOutput(const std::string& path, std::FILE** file, std::string* tempPath)
{
    *file = nullptr;
    tempPath->clear();
    if (path.empty()) return false;
    struct stat target {};
    const bool exists = ::stat(path.c_str(), &target) == 0;
    if (exists && S_ISDIR(target.st_mode)) return false;
    if (exists && !S_ISREG(target.st_mode)) {
        *file = OpenStream(path.c_str(), "w");
        if (*file) std::setvbuf(*file, nullptr, _IONBF, 0);
        return *file != nullptr;
    }
    if (exists && ::access(path.c_str(), W_OK) != 0) return false;

    const std::string real = exists ? ResolveLink(path) : path;
    const int fd = CreateTempFile(FolderOf(real), tempPath);
    if (fd < 0) return false;
    if (exists) ::fchmod(fd, target.st_mode & 07777);
    *file = ::fdopen(fd, "w");
    if (!*file) {
        ::close(fd);
        DeleteFile(tempPath->c_str());
        tempPath->clear();
        return false;
    }
    std::setvbuf(*file, nullptr, _IONBF, 0);
    return true;
}

bool FinishOutput(std::FILE* file, const std::string& tempPath, const std::string& path)
{
    const bool closed = std::fclose(file) == 0;
    if (tempPath.empty()) return closed;
    struct stat target {};
    const std::string real = ::stat(path.c_str(), &target) == 0 ? ResolveLink(path) : path;
    if (closed && ::rename(tempPath.c_str(), real.c_str()) == 0) return true;
    DeleteFile(tempPath.c_str());
    return false;
}

void DiscardOutput(std::FILE* file, const std::string& tempPath)
{
    std::fclose(file);
    if (!tempPath.empty()) DeleteFile(tempPath.c_str());
}

OutputBuffer::OutputBuffer(std::FILE* file)
    : m_file(file), m_data(kBufferSize), m_failAt(g_failOutputCall)
{
}

bool OutputBuffer::Padded(const char* before, const std::string& text, size_t width,
                          bool alignLeft, const char* after)
{
    if (!Begin()) return false;
    const size_t fill = text.size() < width ? width - text.size() : 0;
    Put(before, std::strlen(before));
    if (!alignLeft) PutBlanks(fill);
    Put(text.data(), text.size());
    if (alignLeft) PutBlanks(fill);
    Put(after, std::strlen(after));
    return !m_failed;
}

bool OutputBuffer::Quoted(const std::string& text)
{
    if (!Begin()) return false;
    Put("\"", 1);
    Put(text.data(), text.size());
    Put("\"", 1);
    return !m_failed;
}

bool OutputBuffer::Flush()
{
    Drain();
    if (!m_failed && std::fflush(m_file) != 0) m_failed = true;
    return !m_failed;
}

void OutputBuffer::PutLarge(const char* bytes, size_t length)
{
    Drain();
    if (length >= m_data.size()) {
        if (!m_failed && std::fwrite(bytes, 1, length, m_file) != length) m_failed = true;
        return;
    }
    std::memcpy(m_data.data() + m_used, bytes, length);
    m_used += length;
}

void OutputBuffer::PutBlanks(size_t count)
{
    while (count > 0) {
        if (m_used == m_data.size()) Drain();
        const size_t chunk = std::min(count, m_data.size() - m_used);
        std::memset(m_data.data() + m_used, ' ', chunk);
        m_used += chunk;
        count -= chunk;
    }
}

// Empties the buffer into the stream. After a refusal the bytes are dropped
// and every later call fails.
void OutputBuffer::Drain()
{
    if (m_used > 0 && !m_failed && std::fwrite(m_data.data(), 1, m_used, m_file) != m_used)
        m_failed = true;
    m_used = 0;
}

}  // namespace quarl::detail
