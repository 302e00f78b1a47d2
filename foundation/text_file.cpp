#include <quarl/text_file.h>

#include <cstdlib>
#include <cstring>

#include "foundation/line_store.h"
#include "foundation/platform.h"

namespace quarl {

namespace detail {
LineStoreAllocFn g_lineStoreAlloc = &std::malloc;
}

namespace {

// The stream's own buffer; the 1024-byte blocks are taken from it.
constexpr size_t kStreamBufferSize = 1 << 16;

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
    std::FILE* file = OpenStream(path.c_str(), "rb");
    if (!file) return LASFILE_IO_FAILED;
    m_file = file;
    std::setvbuf(m_file, nullptr, _IOFBF, kStreamBufferSize);
    m_filename = path;

    if (SeekStream(m_file, 0, SEEK_END) != 0) return LASFILE_IO_FAILED;
    const int64_t size = TellStream(m_file);
    m_fileSize = size < 0 ? 0 : static_cast<uint64_t>(size);
    if (SeekStream(m_file, 0, SEEK_SET) != 0) return LASFILE_IO_FAILED;

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

    m_lineCount = 0;
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
}

int32_t CTextFile::PrimeIO()
{
    if (m_bufferPos < m_bufferLength) return -1;
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
// of 40 bytes (by half of itself once it is large); the bytes it holds and
// their terminator are kept.
bool CTextFile::GrowLineStore(size_t needed)
{
    size_t capacity = m_lineCapacity;
    while (capacity < needed + 1) {
        size_t step = kLineStep;
        if (capacity >= kLinearGrowthLimit) step = (capacity / 2 / kLineStep) * kLineStep;
        capacity += step;
    }
    char* grown = static_cast<char*>(detail::g_lineStoreAlloc(capacity));
    if (!grown) return false;
    std::memcpy(grown, m_line, m_lineLength + 1);
    std::free(m_line);
    m_line = grown;
    m_lineCapacity = capacity;
    return true;
}

ELASFILEERROR CTextFile::ReadLine()
{
    if (!m_file || !m_line) return LASFILE_IO_FAILED;
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
            if (length > 0) {
                if (m_lineLength + length + 1 > m_lineCapacity &&
                    !GrowLineStore(m_lineLength + length)) {
                    // Keep what fits, lose the byte that did not, go on behind it.
                    const uint32_t fits = static_cast<uint32_t>(m_lineCapacity - 1 - m_lineLength);
                    std::memcpy(m_line + m_lineLength, piece, fits);
                    m_lineLength += fits;
                    m_line[m_lineLength] = '\0';
                    m_bufferPos += done + fits + 1;
                    return LASFILE_OUT_OF_MEMORY;
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

double CTextFile::GetPercentRead() const
{
    if (m_fileSize == 0) return 100.0;
    return static_cast<double>(m_bufferStart + m_bufferPos) * 100.0 /
           static_cast<double>(m_fileSize);
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
    return *this;
}

}  // namespace quarl
