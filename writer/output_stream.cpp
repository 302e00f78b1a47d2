#include "writer/output_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <random>
#include <utility>

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

// The file a symbolic link leads to, resolved once, so that the file it
// points to is replaced and the link stays a link. Empty when it can't be.
std::string ResolveLink(const std::string& path)
{
    char resolved[PATH_MAX];
    if (::realpath(path.c_str(), resolved)) return resolved;
    return "";
}

// A name for a temporary file that no other call, on any thread, gets from
// the same sequence: each call seeds its own generator.
std::string TempName(const std::string& folder)
{
    static std::atomic<uint64_t> calls{0};
    const uint64_t seed =
        static_cast<uint64_t>(::getpid()) * 0x9e3779b97f4a7c15ull ^
        static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()) ^
        (calls.fetch_add(1, std::memory_order_relaxed) << 40);
    std::mt19937_64 random(seed);
    static const char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::string name = folder + "/.quarl-";
    for (int i = 0; i < 8; ++i) name += kLetters[random() % (sizeof kLetters - 1)];
    return name;
}

// Creates a new file with a name nobody uses yet in `folder`, with the mode
// that a fresh file gets from the process's umask.
int CreateTempFile(const std::string& folder, std::string* tempPath)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        const std::string name = TempName(folder);
        const int fd = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0) {
            *tempPath = name;
            return fd;
        }
        if (errno != EEXIST) return -1;
    }
    return -1;
}

// The new file takes the old one's group and permission bits; false when
// it can't, since the replacement would then differ from the target.
bool TakeOver(int fd, const struct stat& target)
{
    struct stat made {};
    if (::fstat(fd, &made) != 0) return false;
    if (made.st_gid != target.st_gid && ::fchown(fd, static_cast<uid_t>(-1), target.st_gid) != 0)
        return false;
    return ::fchmod(fd, target.st_mode & 07777) == 0;
}

// Opens a temporary file beside `real` that is to replace it; `target` is
// what stands at `real` now, or null when nothing does.
bool OpenReplacement(const std::string& real, const struct stat* target, std::FILE** file,
                     std::string* tempPath)
{
    const int fd = CreateTempFile(FolderOf(real), tempPath);
    if (fd < 0) return false;
    if (!target || TakeOver(fd, *target)) *file = ::fdopen(fd, "w");
    if (!*file) {
        ::close(fd);
        DeleteFile(tempPath->c_str());
        tempPath->clear();
        return false;
    }
    return true;
}

bool OpenInPlace(const std::string& path, std::FILE** file)
{
    *file = OpenStream(path.c_str(), "w");
    return *file != nullptr;
}

// Whether a file put in place of `target` is the same file to everyone who
// looks at it: no other name shares the target, and it has our owner.
bool ReplacementKeepsIdentity(const struct stat& target)
{
    return S_ISREG(target.st_mode) && target.st_nlink == 1 && target.st_uid == ::geteuid();
}

bool OpenStreamFor(const std::string& path, std::FILE** file, std::string* tempPath,
                   std::string* replaced)
{
    struct stat entry {};
    if (::lstat(path.c_str(), &entry) != 0) {  // nothing there yet
        if (errno == ENOENT && OpenReplacement(path, nullptr, file, tempPath)) {
            *replaced = path;
            return true;
        }
        return OpenInPlace(path, file);
    }
    struct stat target {};
    if (::stat(path.c_str(), &target) != 0) return OpenInPlace(path, file);  // a link to nowhere
    if (S_ISDIR(target.st_mode)) return false;
    if (!S_ISREG(target.st_mode)) return OpenInPlace(path, file);  // a device, a pipe
    if (::access(path.c_str(), W_OK) != 0) return false;
    const std::string real = S_ISLNK(entry.st_mode) ? ResolveLink(path) : path;
    if (!real.empty() && ReplacementKeepsIdentity(target) &&
        OpenReplacement(real, &target, file, tempPath)) {
        *replaced = real;
        return true;
    }
    return OpenInPlace(path, file);
}

}  // namespace

bool OpenOutput(const std::string& path, std::FILE** file, std::string* tempPath,
                std::string* replaced)
{
    *file = nullptr;
    tempPath->clear();
    replaced->clear();
    if (path.empty() || !OpenStreamFor(path, file, tempPath, replaced)) return false;
    std::setvbuf(*file, nullptr, _IONBF, 0);
    return true;
}

bool ReplaceNow(std::string* tempPath, const std::string& replaced)
{
    if (tempPath->empty() || ::rename(tempPath->c_str(), replaced.c_str()) != 0) return false;
    tempPath->clear();
    return true;
}

bool FinishOutput(std::FILE* file, const std::string& tempPath, const std::string& replaced)
{
    const bool closed = std::fclose(file) == 0;
    if (tempPath.empty()) return closed;
    if (closed && ::rename(tempPath.c_str(), replaced.c_str()) == 0) return true;
    DeleteFile(tempPath.c_str());
    return false;
}

void DiscardOutput(std::FILE* file, const std::string& tempPath)
{
    std::fclose(file);
    if (!tempPath.empty()) DeleteFile(tempPath.c_str());
}

OutputBuffer::OutputBuffer(std::FILE* file, std::function<bool()> makeRoom)
    : m_file(file), m_data(kBufferSize), m_failAt(g_failOutputCall), m_makeRoom(std::move(makeRoom))
{
}

OutputBuffer::OutputBuffer(ByteSink sink)
    : m_file(nullptr), m_sink(std::move(sink)), m_data(kBufferSize), m_failAt(g_failOutputCall)
{
}

bool OutputBuffer::Padded(const char* before, const std::string& text, size_t width, bool alignLeft,
                          const char* after)
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
    if (!m_failed && m_file && std::fflush(m_file) != 0) m_failed = true;
    return !m_failed;
}

void OutputBuffer::PutLarge(const char* bytes, size_t length)
{
    Drain();
    if (length >= m_data.size()) {
        if (!m_failed) WriteOut(bytes, length);
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
    const size_t used = m_used;
    m_used = 0;
    if (used > 0 && !m_failed) WriteOut(m_data.data(), used);
}

// Hands bytes to the stream. A disk without room gets one chance to make
// room (the replacement freeing the target's space); a refusal is kept
// with the offset of the first byte refused.
void OutputBuffer::WriteOut(const char* bytes, size_t length)
{
    size_t done = m_sink ? m_sink(bytes, length) : std::fwrite(bytes, 1, length, m_file);
    if (done < length && m_file && (errno == ENOSPC || errno == EDQUOT) && m_makeRoom &&
        m_makeRoom()) {
        m_makeRoom = nullptr;
        std::clearerr(m_file);
        done += std::fwrite(bytes + done, 1, length - done, m_file);
    }
    if (done < length) {
        m_failed = true;
        m_refusedAt = m_drained + done;
    }
    m_drained += done;
}

}  // namespace quarl::detail
