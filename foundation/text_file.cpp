#include <quarl/text_file.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "foundation/line_store.h"
#include "foundation/platform.h"

namespace quarl {

namespace detail {
LineStoreAllocFn g_lineStoreAlloc = &std::malloc;
}

namespace {

// The stream's own buffer; the 1024-byte blocks are taken from it.
constexpr size_t kStreamBufferSize = 1 << 16;

// A UTF-16 block of this many bytes decodes to at most 3 bytes of UTF-8 per
// two bytes, so it fits the buffer; a UTF-32 block of the buffer's size
// decodes to at most as many bytes.
constexpr size_t kUtf16Block = CTextFile::kBufferSize / 3 * 2;

uint32_t ReadUnit(const unsigned char* p, size_t size, bool little)
{
    uint32_t value = 0;
    for (size_t i = 0; i < size; ++i) {
        const size_t k = little ? size - 1 - i : i;
        value = value << 8 | p[k];
    }
    return value;
}

// Writes code point `c` as UTF-8 and gives the number of bytes.
uint32_t EncodeUtf8(uint32_t c, char* out)
{
    if (c < 0x80) {
        out[0] = static_cast<char>(c);
        return 1;
    }
    if (c < 0x800) {
        out[0] = static_cast<char>(0xC0 | c >> 6);
        out[1] = static_cast<char>(0x80 | (c & 0x3F));
        return 2;
    }
    if (c < 0x10000) {
        out[0] = static_cast<char>(0xE0 | c >> 12);
        out[1] = static_cast<char>(0x80 | (c >> 6 & 0x3F));
        out[2] = static_cast<char>(0x80 | (c & 0x3F));
        return 3;
    }
    out[0] = static_cast<char>(0xF0 | c >> 18);
    out[1] = static_cast<char>(0x80 | (c >> 12 & 0x3F));
    out[2] = static_cast<char>(0x80 | (c >> 6 & 0x3F));
    out[3] = static_cast<char>(0x80 | (c & 0x3F));
    return 4;
}

// Past this size the line store grows by half of itself per step instead of
// 40 bytes, so that a huge line costs linear time.
constexpr size_t kLinearGrowthLimit = 1 << 16;

}  // namespace

CTextFile::CTextFile()
    : m_file(nullptr),
      m_fileSize(0),
      m_bufferStart(0),
      m_buffer{},
      m_bufferLength(0),
      m_bufferPos(0),
      m_line(nullptr),
      m_lineCapacity(0),
      m_lineCount(0),
      m_lineLength(0)
{
}

CTextFile::~CTextFile()
{
    Close();
}

ELASFILEERROR CTextFile::Open(const tessel::TxString& path)
{
    // Callers close first; a host that doesn't must not lose the stream and
    // the line store it still holds.
    Close();
    std::FILE* file = quarl::OpenStream(path.c_str(), "rb");  // the platform function
    if (!file) return LASFILE_IO_FAILED;
    std::setvbuf(file, nullptr, _IOFBF, kStreamBufferSize);
    return Start(file, path);
}

ELASFILEERROR CTextFile::OpenBuffer(const void* data, size_t size, const tessel::TxString& name)
{
    Close();
    if (!data && size > 0) return LASFILE_IO_FAILED;
    // A stream over the caller's bytes: the same reads, seeks and blocks as
    // a file gives, without a copy. An empty buffer is an empty file.
    static const char kNothing[1] = {0};
    std::FILE* file = OpenMemoryStream(size > 0 ? data : kNothing, size);
    if (!file) return LASFILE_IO_FAILED;
    return Start(file, name);
}

ELASFILEERROR CTextFile::OpenStream(std::FILE* stream, const tessel::TxString& name)
{
    Close();
    if (!stream) return LASFILE_IO_FAILED;
    return Start(stream, name);
}

// Takes `file` as the stream of this object and reads its first line.
ELASFILEERROR CTextFile::Start(std::FILE* file, const tessel::TxString& name)
{
    m_file = file;
    m_filename = name;
    m_refusal = kNotRefused;

    if (SeekStream(m_file, 0, SEEK_END) != 0) return LASFILE_IO_FAILED;
    const int64_t size = TellStream(m_file);
    m_fileSize = size < 0 ? 0 : static_cast<uint64_t>(size);
    if (SeekStream(m_file, 0, SEEK_SET) != 0) return LASFILE_IO_FAILED;
    m_form = kFormBytes;
    m_crLines = false;
    m_afterCarriageReturn = false;
    m_loneReturnLine = 0;
    if (m_decode) DetectTextForm();

    std::free(m_line);
    m_line = static_cast<char*>(detail::g_lineStoreAlloc(kLineStep));
    m_lineCapacity = m_line ? kLineStep : 0;
    m_lineLength = 0;
    if (!m_line) return LASFILE_OUT_OF_MEMORY;
    std::memset(m_line, 0, kLineStep);

    std::memset(m_buffer, 0, sizeof m_buffer);
    m_bufferLength = 0;
    m_bufferPos = 0;
    if (PrimeIO() < 1) return LASFILE_IO_FAILED;
    m_crLines = m_decode && !std::memchr(m_buffer, '\n', m_bufferLength) &&
                std::memchr(m_buffer, '\r', m_bufferLength);

    m_lineCount = 0;
    // A NUL byte is no text: a binary file or a device of zeros is refused
    // here rather than read as one endless line.
    if (m_refuseNul && std::memchr(m_buffer, '\0', m_bufferLength)) {
        m_refusal = kRefusedNul;
        return LASFILE_BAD_FORMAT;
    }
    return ReadLine();
}

void CTextFile::Close()
{
    if (m_file) std::fclose(m_file);
    m_file = nullptr;
    m_filename = "";
    std::free(m_line);
    m_line = nullptr;
    m_lineLength = 0;
    m_lineCount = 0;
    m_refusal = kNotRefused;
}

// Passes over a byte-order mark and notes the text form it names. UTF-16
// without one is recognised by ASCII bytes with a zero beside each.
void CTextFile::DetectTextForm()
{
    unsigned char h[4] = {};
    const size_t n = std::fread(h, 1, sizeof h, m_file);
    long skip = 0;
    if (n == 4 && h[0] == 0xFF && h[1] == 0xFE && h[2] == 0 && h[3] == 0) {
        m_form = kFormUtf32Le;
        skip = 4;
    } else if (n == 4 && h[0] == 0 && h[1] == 0 && h[2] == 0xFE && h[3] == 0xFF) {
        m_form = kFormUtf32Be;
        skip = 4;
    } else if (n >= 3 && h[0] == 0xEF && h[1] == 0xBB && h[2] == 0xBF) {
        m_form = kFormUtf8Bom;
        skip = 3;
    } else if (n >= 2 && h[0] == 0xFF && h[1] == 0xFE) {
        m_form = kFormUtf16Le;
        skip = 2;
    } else if (n >= 2 && h[0] == 0xFE && h[1] == 0xFF) {
        m_form = kFormUtf16Be;
        skip = 2;
    } else if (n == 4 && h[0] && h[0] < 0x80 && !h[1] && h[2] && h[2] < 0x80 && !h[3]) {
        m_form = kFormUtf16Le;
    } else if (n == 4 && !h[0] && h[1] && h[1] < 0x80 && !h[2] && h[3] && h[3] < 0x80) {
        m_form = kFormUtf16Be;
    }
    SeekStream(m_file, skip, SEEK_SET);
}

// One block of UTF-16 or UTF-32 into the buffer as UTF-8. A pair of
// surrogates cut by the block's end is left for the next block; units that
// are no character, and a cut unit at the end of the file, become U+FFFD.
int32_t CTextFile::PrimeDecoded()
{
    m_bufferLength = 0;
    m_bufferPos = 0;
    const int64_t start = TellStream(m_file);
    m_bufferStart = start < 0 ? m_bufferStart : static_cast<uint64_t>(start);
    const bool wide = m_form == kFormUtf32Le || m_form == kFormUtf32Be;
    const bool little = m_form == kFormUtf16Le || m_form == kFormUtf32Le;
    const size_t unit = wide ? 4 : 2;
    const size_t want = wide ? kBufferSize : kUtf16Block;
    unsigned char raw[kBufferSize];
    const size_t got = std::fread(raw, 1, want, m_file);
    const size_t units = got / unit;
    uint32_t out = 0;
    for (size_t i = 0; i < units; ++i) {
        uint32_t c = ReadUnit(raw + i * unit, unit, little);
        if (!wide && c >= 0xD800 && c <= 0xDBFF) {
            if (i + 1 == units && got == want) {
                SeekStream(m_file, -2, SEEK_CUR);
                break;
            }
            const uint32_t low = i + 1 < units ? ReadUnit(raw + (i + 1) * unit, unit, little) : 0;
            if (low >= 0xDC00 && low <= 0xDFFF) {
                c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                ++i;
            } else {
                c = 0xFFFD;
            }
        } else if ((c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF) {
            c = 0xFFFD;
        }
        out += EncodeUtf8(c, m_buffer + out);
    }
    if (got % unit != 0) out += EncodeUtf8(0xFFFD, m_buffer + out);
    m_bufferLength = out;
    return static_cast<int32_t>(out);
}

int32_t CTextFile::PrimeIO()
{
    if (m_bufferPos < m_bufferLength) return -1;
    if (m_form >= kFormUtf16Le) return PrimeDecoded();
    m_bufferLength = 0;
    m_bufferPos = 0;
    const int64_t start = TellStream(m_file);
    m_bufferStart = start < 0 ? m_bufferStart : static_cast<uint64_t>(start);
    const size_t count = std::fread(m_buffer, 1, kBufferSize, m_file);
    if (count < 1) return 0;
    m_bufferLength = static_cast<uint32_t>(count);
    return static_cast<int32_t>(count);
}

// Makes room for `needed` bytes plus the terminator. The store grows in steps
// of 40 bytes (by half of itself once it is large), never past the longest
// line plus its terminator; the bytes it holds and their terminator are kept.
// A line longer than the longest refuses the file.
bool CTextFile::GrowLineStore(size_t needed)
{
    if (m_maxLineLength != 0 && needed > m_maxLineLength) {
        m_refusal = kRefusedLongLine;
        return false;
    }
    size_t capacity = m_lineCapacity;
    while (capacity < needed + 1) {
        size_t step = kLineStep;
        if (capacity >= kLinearGrowthLimit) step = (capacity / 2 / kLineStep) * kLineStep;
        capacity += step;
    }
    if (m_maxLineLength != 0) capacity = std::min(capacity, m_maxLineLength + 1);
    char* grown = static_cast<char*>(detail::g_lineStoreAlloc(capacity));
    if (!grown) return false;
    std::memcpy(grown, m_line, m_lineLength + 1);
    std::free(m_line);
    m_line = grown;
    m_lineCapacity = capacity;
    return true;
}

// Whether the carriage return at `cr` is followed by no line feed. One that
// ends the buffer is looked behind: the next block is read, and a line feed
// at its start is passed over as the second byte of the line end.
bool CTextFile::IsLoneReturn(const char* cr, const char* feed)
{
    if (cr + 1 < m_buffer + m_bufferLength) return cr + 1 != feed;
    if (m_form >= kFormUtf16Le) return false;  // decoded: no byte of the file to look at
    const int64_t position = TellStream(m_file);
    char next = 0;
    const bool more = position >= 0 && std::fread(&next, 1, 1, m_file) == 1;
    if (more) SeekStream(m_file, position, SEEK_SET);
    return more && next != '\n';
}

// Room for a line of `needed` bytes: the store as it is when the line fits
// it and is not too long, else grown.
bool CTextFile::MakeRoom(size_t needed)
{
    const bool tooLong = m_maxLineLength != 0 && needed > m_maxLineLength;
    return (needed + 1 <= m_lineCapacity && !tooLong) || GrowLineStore(needed);
}

// What a line store that did not grow gives: a refused line, or no memory.
ELASFILEERROR CTextFile::StoreFailure() const
{
    return m_refusal == kRefusedLongLine ? LASFILE_BAD_FORMAT : LASFILE_OUT_OF_MEMORY;
}

bool CTextFile::AppendBytes(const char* bytes, size_t length)
{
    if (length == 0) return true;
    if (!MakeRoom(m_lineLength + length)) return false;
    std::memcpy(m_line + m_lineLength, bytes, length);
    m_lineLength += length;
    m_line[m_lineLength] = '\0';
    return true;
}

bool CTextFile::AppendByte(char c)
{
    if (!MakeRoom(m_lineLength + 1)) return false;
    m_line[m_lineLength++] = c;
    m_line[m_lineLength] = '\0';
    return true;
}

// A carriage return ends a line; so does a line feed, except directly
// behind a carriage return, where the two are one line end.
ELASFILEERROR CTextFile::ReadCarriageReturnLine()
{
    m_line[0] = '\0';
    m_lineLength = 0;
    bool seen = false;
    for (;;) {
        if (m_bufferPos >= m_bufferLength) {
            m_bufferPos = m_bufferLength;
            if (PrimeIO() < 1) return seen ? LASFILE_OK : LASFILE_IO_FAILED;
        }
        const char c = m_buffer[m_bufferPos++];
        const bool pairsWithReturn = c == '\n' && m_afterCarriageReturn;
        m_afterCarriageReturn = c == '\r';
        if (pairsWithReturn) continue;
        seen = true;
        if (c == '\r' || c == '\n') {
            ++m_lineCount;
            return LASFILE_OK;
        }
        if (!AppendByte(c)) return StoreFailure();
    }
}

// Bytes are taken from the file in blocks of this size while lines are
// passed over: no line is copied, only its line feed is counted.
constexpr size_t kSkipBlock = 1 << 18;

namespace {

// Bytes are looked at in groups of this size while line feeds are counted.
constexpr size_t kGroup = 64;

// Counts the line feeds in [p + from, p + n) and stops at the first group
// of kGroup bytes that holds `first`: gives where that group starts, or n.
// One pass, 64 bytes a step where SSE2 is there; the byte counters of the
// lanes are emptied before they can overflow.
size_t CountFeedsUpTo(const char* p, size_t from, size_t n, char first, size_t& feeds)
{
    size_t i = from;
#if defined(__SSE2__)
    const __m128i feed = _mm_set1_epi8('\n');
    const __m128i mark = _mm_set1_epi8(first);
    while (n - i >= kGroup) {
        const size_t steps = std::min<size_t>((n - i) / kGroup, 63);
        __m128i lanes = _mm_setzero_si128();
        size_t k = 0;
        for (; k < steps; ++k, i += kGroup) {
            const __m128i* q = reinterpret_cast<const __m128i*>(p + i);
            const __m128i b0 = _mm_loadu_si128(q), b1 = _mm_loadu_si128(q + 1);
            const __m128i b2 = _mm_loadu_si128(q + 2), b3 = _mm_loadu_si128(q + 3);
            const __m128i marks =
                _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(b0, mark), _mm_cmpeq_epi8(b1, mark)),
                             _mm_or_si128(_mm_cmpeq_epi8(b2, mark), _mm_cmpeq_epi8(b3, mark)));
            if (_mm_movemask_epi8(marks) != 0) break;
            lanes = _mm_sub_epi8(
                lanes,
                _mm_add_epi8(_mm_add_epi8(_mm_cmpeq_epi8(b0, feed), _mm_cmpeq_epi8(b1, feed)),
                             _mm_add_epi8(_mm_cmpeq_epi8(b2, feed), _mm_cmpeq_epi8(b3, feed))));
        }
        const __m128i sums = _mm_sad_epu8(lanes, _mm_setzero_si128());
        feeds += static_cast<size_t>(_mm_cvtsi128_si32(sums)) +
                 static_cast<size_t>(_mm_extract_epi16(sums, 4));
        if (k < steps) return i;
    }
#endif
    for (; i < n; ++i) {
        if (p[i] == first) return i;
        feeds += p[i] == '\n';
    }
    return n;
}

// The first byte `first` in [from, end) that starts a line, counting the
// carriage returns in front of it as no bytes: behind a line feed, or at
// `begin` when the bytes before the block since the last line feed were all
// carriage returns. Gives the start of that line, or null.
// A carriage return that a byte other than a line feed follows, within
// [begin, begin + size).
bool HasLoneReturn(const char* begin, size_t size)
{
    for (const char* p = begin;
         (p = static_cast<const char*>(std::memchr(p, '\r', size - (p - begin))));) {
        if (p + 1 == begin + size) return false;
        if (p[1] != '\n') return true;
        ++p;
    }
    return false;
}

const char* FindLineStartingWith(const char* begin, const char* from, const char* end, char first,
                                 bool onlyCr)
{
    while (from < end) {
        const char* mark =
            static_cast<const char*>(std::memchr(from, first, static_cast<size_t>(end - from)));
        if (!mark) return nullptr;
        const char* start = mark;
        while (start > begin && start[-1] == '\r') --start;
        if (start > begin ? start[-1] == '\n' : onlyCr) return start;
        from = mark + 1;
    }
    return nullptr;
}

}  // namespace

ELASFILEERROR CTextFile::SkipLineByLine(char first, uint64_t& passed)
{
    for (;;) {
        const ELASFILEERROR result = ReadLine();
        if (result == LASFILE_BAD_FORMAT) {
            ++passed;  // the line refused
            m_line[0] = '\0';
            m_lineLength = 0;
        }
        if (result != LASFILE_OK) return result;
        ++passed;
        if (m_line[0] == first) return LASFILE_OK;
    }
}

ELASFILEERROR CTextFile::SkipToLineStartingWith(char first, uint64_t& passed)
{
    if (!m_file || !m_line) return LASFILE_IO_FAILED;
    if (m_refusal != kNotRefused) return LASFILE_BAD_FORMAT;
    // Decoded text has no byte offsets to go back to; a bound below the
    // block could be passed by a line within one block.
    if (m_crLines || m_form >= kFormUtf16Le || first == '\r' || first == '\n' ||
        (m_maxLineLength != 0 && m_maxLineLength < kSkipBlock))
        return SkipLineByLine(first, passed);
    // From the start of the next line on, the stream is read in large blocks.
    uint64_t offset = m_bufferStart + m_bufferPos;
    if (SeekStream(m_file, static_cast<int64_t>(offset), SEEK_SET) != 0) return LASFILE_IO_FAILED;
    m_bufferLength = 0;
    m_bufferPos = 0;
    std::vector<char> block(kSkipBlock);
    bool pending = false;    // bytes since the last line feed
    bool onlyCr = true;      // and all of them carriage returns, which ReadLine drops
    uint64_t lineSoFar = 0;  // bytes since the last line feed
    for (;;) {
        const size_t got = std::fread(block.data(), 1, block.size(), m_file);
        if (got == 0) break;
        const char* begin = block.data();
        if (m_decode && HasLoneReturn(begin, got)) {
            // Lines may end at a carriage return alone from here on: the
            // rest goes line by line, from the start of this block.
            if (SeekStream(m_file, static_cast<int64_t>(offset), SEEK_SET) != 0)
                return LASFILE_IO_FAILED;
            m_bufferStart = offset;
            return SkipLineByLine(first, passed);
        }
        // Line feeds are counted up to the first group of bytes with a
        // `first` in it, which is then looked at byte by byte.
        const char* hit = nullptr;
        size_t feeds = 0;
        for (size_t at = 0; !hit && at < got;) {
            at = CountFeedsUpTo(begin, at, got, first, feeds);
            if (at == got) break;
            const size_t groupEnd = std::min(at + kGroup, got);
            hit = FindLineStartingWith(begin, begin + at, begin + groupEnd, first, onlyCr);
            // Up to the header, whose carriage returns in front may reach
            // back before the group; they hold no line feed.
            const char* counted = hit ? std::max(hit, begin + at) : begin + groupEnd;
            feeds += static_cast<size_t>(std::count(begin + at, counted, '\n'));
            at = groupEnd;
        }
        const char* stop = hit ? hit : begin + got;
        // Only a line that goes on from an earlier block can pass the
        // bound, which is at least a block: its bytes up to the first line
        // feed are added to those before.
        const char* feed =
            static_cast<const char*>(std::memchr(begin, '\n', static_cast<size_t>(stop - begin)));
        lineSoFar += static_cast<uint64_t>((feed ? feed : stop) - begin);
        if (m_maxLineLength != 0 && lineSoFar > m_maxLineLength) {
            m_refusal = kRefusedLongLine;
            ++passed;
            m_line[0] = '\0';
            m_lineLength = 0;
            return LASFILE_BAD_FORMAT;
        }
        passed += feeds;
        m_lineCount += static_cast<uint32_t>(feeds);
        const char* tail = begin;  // the bytes behind the last line feed
        if (feeds > 0) {
            tail = stop;
            while (tail[-1] != '\n') --tail;
            pending = false;
            onlyCr = true;
        }
        for (const char* q = tail; q < stop && onlyCr; ++q) onlyCr = *q == '\r';
        if (tail < stop) pending = true;
        if (feed) lineSoFar = static_cast<uint64_t>(stop - tail);
        if (hit) {
            if (SeekStream(m_file,
                           static_cast<int64_t>(offset + static_cast<uint64_t>(hit - begin)),
                           SEEK_SET) != 0)
                return LASFILE_IO_FAILED;
            const ELASFILEERROR result = ReadLine();
            if (result == LASFILE_OK) ++passed;
            return result;
        }
        offset += got;
    }
    if (pending) ++passed;  // a last line without a line feed
    m_bufferStart = offset;
    m_line[0] = '\0';
    m_lineLength = 0;
    return LASFILE_IO_FAILED;
}

ELASFILEERROR CTextFile::ReadLine()
{
    if (!m_file || !m_line) return LASFILE_IO_FAILED;
    if (m_refusal != kNotRefused) return LASFILE_BAD_FORMAT;
    if (m_crLines) return ReadCarriageReturnLine();
    m_line[0] = '\0';
    m_lineLength = 0;
    bool seen = false;
    for (;;) {
        if (m_bufferPos >= m_bufferLength) {
            m_bufferPos = m_bufferLength;  // PrimeIO refills only an exhausted buffer
            if (PrimeIO() < 1) return seen ? LASFILE_OK : LASFILE_IO_FAILED;
        }
        seen = true;
        const char* start = m_buffer + m_bufferPos;
        const uint32_t available = m_bufferLength - m_bufferPos;
        const char* feed = static_cast<const char*>(std::memchr(start, '\n', available));
        const uint32_t run = feed ? static_cast<uint32_t>(feed - start) : available;

        // Copy the run up to the line feed, dropping carriage returns.
        uint32_t done = 0;
        while (done < run) {
            const char* piece = start + done;
            const char* cr = static_cast<const char*>(std::memchr(piece, '\r', run - done));
            const uint32_t length = cr ? static_cast<uint32_t>(cr - piece) : run - done;
            if (cr && m_decode && IsLoneReturn(cr, feed)) {
                // Decoding, a carriage return that no line feed follows ends
                // the line, and from here on either ends one.
                if (!AppendBytes(piece, length)) return StoreFailure();
                m_bufferPos += done + length + 1;
                m_crLines = true;
                m_afterCarriageReturn = false;
                if (m_loneReturnLine == 0) m_loneReturnLine = m_lineCount + 1;
                ++m_lineCount;
                return LASFILE_OK;
            }
            if (length > 0) {
                if (!MakeRoom(m_lineLength + length)) {
                    // Keep what fits, lose the byte that did not, go on behind it.
                    size_t room = m_lineCapacity - 1;
                    if (m_refusal == kRefusedLongLine) room = std::min(room, m_maxLineLength);
                    const uint32_t fits = static_cast<uint32_t>(room - m_lineLength);
                    std::memcpy(m_line + m_lineLength, piece, fits);
                    m_lineLength += fits;
                    m_line[m_lineLength] = '\0';
                    m_bufferPos += done + fits + 1;
                    return StoreFailure();
                }
                std::memcpy(m_line + m_lineLength, piece, length);
                m_lineLength += length;
                m_line[m_lineLength] = '\0';
            }
            done += length + (cr ? 1 : 0);
        }
        m_bufferPos += run;
        if (feed) {
            ++m_bufferPos;
            ++m_lineCount;
            return LASFILE_OK;
        }
    }
}

bool CTextFile::ReadTail(size_t most, std::string& tail, uint64_t& start)
{
    tail.clear();
    if (!m_file || !m_line || m_form >= kFormUtf16Le || m_crLines) return false;
    const int64_t here = TellStream(m_file);
    start = m_fileSize > most ? m_fileSize - most : 0;
    if (here < 0 || SeekStream(m_file, static_cast<int64_t>(start), SEEK_SET) != 0) return false;
    tail.resize(static_cast<size_t>(m_fileSize - start));
    tail.resize(std::fread(&tail[0], 1, tail.size(), m_file));
    const bool back = SeekStream(m_file, here, SEEK_SET) == 0;
    if (!back || tail.size() != m_fileSize - start) tail.clear();
    return back && !tail.empty();
}

ELASFILEERROR CTextFile::ReadLineAt(uint64_t offset)
{
    if (!m_file || !m_line || m_form >= kFormUtf16Le || m_crLines) return LASFILE_IO_FAILED;
    if (SeekStream(m_file, static_cast<int64_t>(offset), SEEK_SET) != 0) return LASFILE_IO_FAILED;
    m_bufferStart = offset;
    m_bufferLength = 0;
    m_bufferPos = 0;
    return ReadLine();
}

bool CTextFile::ReadBytesAt(uint64_t offset, size_t most, std::string& bytes)
{
    if (!m_file || m_form >= kFormUtf16Le || m_crLines) return false;
    const int64_t back = TellStream(m_file);
    if (back < 0 || SeekStream(m_file, static_cast<int64_t>(offset), SEEK_SET) != 0) return false;
    most = static_cast<size_t>(
        std::min<uint64_t>(most, offset < m_fileSize ? m_fileSize - offset : 0));
    most = static_cast<size_t>(
        std::min<uint64_t>(most, offset < m_fileSize ? m_fileSize - offset : 0));
    bytes.resize(most);
    bytes.resize(std::fread(&bytes[0], 1, most, m_file));
    // The next refill of the line buffer reads on from where it left off.
    return SeekStream(m_file, back, SEEK_SET) == 0;
}

int CTextFile::GetDescriptor() const
{
    if (!m_file || m_form >= kFormUtf16Le || m_crLines) return -1;
    return StreamDescriptor(m_file);
}

bool CTextFile::MoveTo(uint64_t offset, uint32_t lines)
{
    if (!m_file || !m_line || m_form >= kFormUtf16Le || m_crLines) return false;
    if (SeekStream(m_file, static_cast<int64_t>(offset), SEEK_SET) != 0) return false;
    m_bufferStart = offset;
    m_bufferLength = 0;
    m_bufferPos = 0;
    m_lineCount += lines;
    return true;
}

double CTextFile::GetPercentRead() const
{
    if (m_fileSize == 0) return 100.0;
    const double percent =
        static_cast<double>(m_bufferStart + m_bufferPos) * 100.0 / static_cast<double>(m_fileSize);
    // Decoded text can hold more bytes than the file.
    return percent > 100.0 ? 100.0 : percent;
}

CTextFile& CTextFile::operator=(const CTextFile& other)
{
    if (this == &other) return *this;
    Close();
    m_fileSize = other.m_fileSize;
    m_bufferStart = other.m_bufferStart;
    std::memcpy(m_buffer, other.m_buffer, sizeof m_buffer);
    m_bufferLength = other.m_bufferLength;
    m_bufferPos = other.m_bufferPos;
    m_lineCapacity = other.m_lineCapacity;
    m_lineCount = other.IsOpen() ? 0 : other.m_lineCount;
    m_decode = other.m_decode;
    m_maxLineLength = other.m_maxLineLength;
    m_refuseNul = other.m_refuseNul;
    return *this;
}

}  // namespace quarl
