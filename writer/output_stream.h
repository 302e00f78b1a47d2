// The writer's output: a temporary file beside the target that replaces the
// target only once it is complete, and a buffer of the writer's own in front
// of it that reaches the file in large writes.
#ifndef QUARL_WRITER_OUTPUT_STREAM_H
#define QUARL_WRITER_OUTPUT_STREAM_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "writer/number_format.h"

namespace quarl::detail {

// For the tests: when positive, the output call with this number (counted
// from 1 within one buffer's life) fails as if the file had refused it.
extern int64_t g_failOutputCall;

// Opens the stream for `path`. A regular file or a path that does not exist
// yet is written under a temporary name in the same folder, which goes to
// `tempPath`; anything else (a device, a pipe) is written in place and
// `tempPath` stays empty. False, with nothing left behind, when the target
// cannot be written: a missing folder, a folder as target, a target without
// write permission.
bool OpenOutput(const std::string& path, std::FILE** file, std::string* tempPath);

// Closes the stream and puts the temporary file in place of `path`, with the
// permission bits that the target had. False when closing or renaming
// fails; the temporary file is then removed.
bool FinishOutput(std::FILE* file, const std::string& tempPath, const std::string& path);

// Closes the stream of an unfinished output and removes its temporary file.
// The target is not touched.
void DiscardOutput(std::FILE* file, const std::string& tempPath);

// Collects output calls and passes them to the stream in large writes. Each
// call is one piece of the file; it returns false when it writes nothing or
// when the stream has refused bytes, then or earlier.
class OutputBuffer {
public:
    explicit OutputBuffer(std::FILE* file);
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
        m_used = static_cast<size_t>(FormatGeneral15(m_data.data() + m_used, value) - m_data.data());
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

    std::FILE* m_file;
    std::vector<char> m_data;
    size_t m_used = 0;
    bool m_failed = false;
    int64_t m_calls = 0;
    int64_t m_failAt;
};

}  // namespace quarl::detail

#endif
