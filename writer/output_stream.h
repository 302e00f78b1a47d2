// The writer's output: a temporary file beside the target that replaces the
// target once it is complete, where that keeps the target what it was, or
// else the target itself; and a buffer of the writer's own in front of it
// that reaches the file in large writes.
#ifndef QUARL_WRITER_OUTPUT_STREAM_H
#define QUARL_WRITER_OUTPUT_STREAM_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "writer/number_format.h"

namespace quarl::detail {

// For the tests: when positive, the output call with this number (counted
// from 1 within one buffer's life) fails as if the file had refused it.
extern int64_t g_failOutputCall;

// Opens the stream for `path`. A regular file is replaced through a
// temporary file in its folder (its name goes to `tempPath`, the file it
// replaces, symbolic links resolved once, to `replaced`) when the
// replacement is the same file to everyone who looks at it: the target is
// a regular file with one link, owned by this process's user, its folder
// lets us create a file, and the new file can take the target's group and
// permission bits. A path where nothing is yet is created the same way when
// its folder allows. Everything else is written in place, opened with "w"
// as the plain write does: a file of another user or with hard links, a
// folder we may not write, a symbolic link that leads nowhere, a device or
// a pipe; `tempPath` then stays empty. False, with nothing left behind,
// when the target cannot be written at all: a folder as target, a missing
// folder, a target without write permission.
bool OpenOutput(const std::string& path, std::FILE** file, std::string* tempPath,
                std::string* replaced);

// When the disk has no room for a second copy: puts the temporary file in
// place of the target at once, so that the target's own room is freed, and
// the write goes on into the target. False when there is no temporary
// file or the rename fails.
bool ReplaceNow(std::string* tempPath, const std::string& replaced);

// Closes the stream and puts the temporary file in place of `replaced`.
// False when closing or renaming fails; the temporary file is then removed.
bool FinishOutput(std::FILE* file, const std::string& tempPath, const std::string& replaced);

// Closes the stream of an unfinished output and removes its temporary file.
// The target is not touched, unless it was being written in place.
void DiscardOutput(std::FILE* file, const std::string& tempPath);

// Collects output calls and passes them to the stream in large writes. Each
// call is one piece of the file; it returns false when it writes nothing or
// when the stream has refused bytes, then or earlier.
class OutputBuffer {
public:
    // `makeRoom` is asked once, when the stream refuses bytes for want of
    // room, to make room; the bytes are then offered again.
    explicit OutputBuffer(std::FILE* file, std::function<bool()> makeRoom = nullptr);
    // Hands the bytes to `sink` instead of a stream: it takes `length` bytes
    // and gives how many it kept; fewer is a refusal.
    using ByteSink = std::function<size_t(const char* bytes, size_t length)>;
    explicit OutputBuffer(ByteSink sink);
    OutputBuffer(const OutputBuffer&) = delete;
    OutputBuffer& operator=(const OutputBuffer&) = delete;

    // "%s"
    bool Text(const char* text, size_t length)
    {
        if (!Begin() || length == 0) return false;
        Put(text, length);
        return !m_failed;
    }
    bool Text(const std::string& text) { return Text(text.data(), text.size()); }
    // "%c"
    bool Char(char c)
    {
        if (!Begin()) return false;
        if (m_used == m_data.size()) Drain();
        m_data[m_used++] = c;
        return !m_failed;
    }
    // "%.15g"
    bool Number(double value)
    {
        if (!Begin()) return false;
        if (m_data.size() - m_used < kGeneralNumberMax) Drain();
        m_used =
            static_cast<size_t>(FormatGeneral15(m_data.data() + m_used, value) - m_data.data());
        return !m_failed;
    }
    // `before`, then `text` filled with blanks to `width` on the left
    // ("%Ns") or on the right ("%-Ns"), then `after`.
    bool Padded(const char* before, const std::string& text, size_t width, bool alignLeft,
                const char* after);
    // "\"%s\""
    bool Quoted(const std::string& text);

    // Hands everything collected to the stream and flushes it.
    bool Flush();

    // The fast way for a piece made of several output calls: true when the
    // next `calls` calls can all be taken as made, and `bytes` bytes are
    // free at Cursor() to be written directly and closed with Advance().
    // False, with nothing counted, when the stream has failed or fails on
    // draining now, when `bytes` exceeds the buffer, or when one of those
    // calls is the one the tests make fail: the caller then makes the
    // calls one by one, so that a failure lands on the call that meets it.
    bool Reserve(size_t bytes, int64_t calls)
    {
        if (m_failed || bytes > m_data.size()) return false;
        if (m_failAt > m_calls && m_failAt <= m_calls + calls) return false;
        if (m_data.size() - m_used < bytes) {
            Drain();
            if (m_failed) return false;
        }
        m_calls += calls;
        return true;
    }
    char* Cursor() { return m_data.data() + m_used; }
    // Bytes of the file so far, those the stream took and those collected.
    uint64_t Offset() const { return m_drained + m_used; }
    // Where the stream refused its first byte, or UINT64_MAX when it never
    // did (a call failed by the tests' hook is no refusal of the stream).
    uint64_t RefusedAt() const { return m_refusedAt; }
    void Advance(const char* end) { m_used = static_cast<size_t>(end - m_data.data()); }

private:
    bool Begin()
    {
        if (++m_calls == m_failAt) m_failed = true;
        return !m_failed;
    }
    void Put(const char* bytes, size_t length)
    {
        if (length <= m_data.size() - m_used) {
            std::memcpy(m_data.data() + m_used, bytes, length);
            m_used += length;
        } else {
            PutLarge(bytes, length);
        }
    }
    void PutLarge(const char* bytes, size_t length);
    void PutBlanks(size_t count);
    void Drain();
    void WriteOut(const char* bytes, size_t length);

    std::FILE* m_file;
    ByteSink m_sink;
    std::vector<char> m_data;
    size_t m_used = 0;
    bool m_failed = false;
    int64_t m_calls = 0;
    int64_t m_failAt;
    std::function<bool()> m_makeRoom;
    uint64_t m_drained = 0;
    uint64_t m_refusedAt = UINT64_MAX;
};

}  // namespace quarl::detail

#endif
