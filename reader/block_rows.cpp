// The rows of a data section in blocks, on one thread or several: the file
// is taken in blocks, each block is shared out in runs of whole lines, every
// thread converts the rows of its run where they stand in the block, and the
// calling thread joins the runs in file order. A run stops at the first line
// that needs the reader line by line; that line and the rest are left to it,
// so the result is the one of the read line by line.
#include <quarl/reader.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "foundation/number_parse.h"
#include "foundation/platform.h"
#include "reader/reader_rules.h"
#include "reader/row_bytes.h"

namespace quarl {

namespace {

// Bytes of the file each thread gets in one block.
constexpr size_t kBytesPerThread = size_t(8) << 20;
// A line longer than this is left to the sequential reader.
constexpr size_t kLongestLine = size_t(1) << 20;
// The smallest block of the file that rows are read from.
constexpr size_t kSmallestBlock = size_t(4) << 10;
// Blocks below this size are copied rather than mapped.
constexpr size_t kSmallestMap = size_t(1) << 20;
// The most threads a read takes.
constexpr unsigned kMostThreads = 64;

// A run of lines and what one thread made of it. Row k of the run goes to
// row `firstRow` + k of every curve, which has room for a row per line.
struct Run {
    const char* begin = nullptr;
    const char* end = nullptr;
    size_t firstRow = 0;
    size_t lineFeeds = 0;
    size_t rows = 0;
    size_t bytes = 0;      // the bytes up to the end of the last row, from the run's start
    uint32_t lines = 0;    // the physical lines up to the last row
    bool stopped = false;  // a line was left for the sequential reader
};

// A row that reads alone: one whole plain number per curve, each behind the
// delimiter, nothing behind the last. The same bytes in ReadDataRow give
// these values and no note.
bool ReadPlainRow(const detail::RowBytes& bytes, const char* p, size_t count, double* values)
{
    const bool checkDelimiter = bytes.delimiter() != ' ';
    for (size_t column = 0; column < count; ++column) {
        p = bytes.SkipBlanks(p);
        if (*p == '\0') return false;
        const char* number = ParsePlainDecimal(p, &values[column]);
        if (!number || bytes.TokenEnd(number) != number) return false;
        p = bytes.SkipBlanks(number);
        if (checkDelimiter && *p != '\0' && column + 1 < count) {
            if (*p != bytes.delimiter()) return false;
            p = bytes.SkipBlanks(p + 1);
            if (*p == '\0') return false;  // an empty value behind the delimiter
        }
    }
    return *p == '\0';
}

// The line from `at` up to the line feed at `feed` as ReadLine gives it:
// without carriage returns, ended by a NUL.
const char* CopyLine(const char* at, const char* feed, std::vector<char>& line)
{
    const size_t length = size_t(feed - at);
    line.resize(length + 1);
    if (!std::memchr(at, '\r', length)) {
        std::memcpy(line.data(), at, length);
        line[length] = '\0';
        return line.data();
    }
    size_t kept = 0;
    for (const char* c = at; c < feed; ++c)
        if (*c != '\r') line[kept++] = *c;
    line[kept] = '\0';
    return line.data();
}

// Whether a carriage return in [at, feed) ends a line of its own: when the
// reader decodes, one that no line feed follows does.
bool HasLoneReturn(const char* at, const char* feed)
{
    const char* cr = static_cast<const char*>(std::memchr(at, '\r', size_t(feed - at)));
    return cr && cr + 1 != feed;
}

// A plain row read where it stands in the block, up to its line feed (a
// carriage return may stand in front of it): its values go to row `row` of
// `columns`, and the byte behind the line feed is returned. Null when the
// line needs the closer look of ReadPlainRow, which takes it as ReadLine
// gives it; a row left half written there is written again or dropped.
const char* ReadRowInPlace(const detail::RowBytes& bytes, const char* p,
                           const std::vector<double*>& columns, size_t row)
{
    const size_t count = columns.size();
    const bool checkDelimiter = bytes.delimiter() != ' ';
    for (size_t column = 0; column < count; ++column) {
        p = bytes.SkipBlanks(p);
        const char* number = ParsePlainDecimal(p, &columns[column][row]);
        if (!number || !bytes.EndsToken(*number)) return nullptr;
        p = bytes.SkipBlanks(number);
        if (checkDelimiter && column + 1 < count && *p == bytes.delimiter())
            p = bytes.SkipBlanks(p + 1);
    }
    if (*p == '\r') ++p;
    return *p == '\n' ? p + 1 : nullptr;
}

// Converts the lines of `run` as ReadLine and ReadDataRow would, up to the
// first line that is neither a plain row nor passed over. The run ends
// behind its last row: the lines passed over behind it are left to the
// sequential reader, which keeps the comment above the line it stops at.
void ReadRun(const detail::RowBytes& bytes, bool decoding, const std::vector<double*>& columns,
             Run& run)
{
    const size_t count = columns.size();
    const detail::RowBytes inPlace = bytes.EndingAtLineBreaks();
    std::vector<char> line;
    std::vector<double> row(count);
    uint32_t lines = 0;
    for (const char* at = run.begin; at < run.end; ++lines) {
        const size_t to = run.firstRow + run.rows;
        const char* next = ReadRowInPlace(inPlace, at, columns, to);
        if (!next || size_t(next - at) > kLongestLine) {
            const char* feed =
                static_cast<const char*>(std::memchr(at, '\n', size_t(run.end - at)));
            if (!feed || size_t(feed - at) > kLongestLine ||
                (decoding && HasLoneReturn(at, feed))) {
                run.stopped = true;
                return;
            }
            const char* text = CopyLine(at, feed, line);
            at = feed + 1;
            if (!LineCounts(text)) continue;
            if (text[0] == '~' || !ReadPlainRow(bytes, text, count, row.data())) {
                run.stopped = true;
                return;
            }
            for (size_t i = 0; i < count; ++i) columns[i][to] = row[i];
        } else {
            at = next;
        }
        ++run.rows;
        run.bytes = size_t(at - run.begin);
        run.lines = lines + 1;
    }
}

// How many line feeds stand in [begin, end).
size_t CountLines(const char* begin, const char* end)
{
    size_t lines = 0;
    for (const char* at = begin; at < end; ++lines) {
        at = static_cast<const char*>(std::memchr(at, '\n', size_t(end - at)));
        if (!at) break;
        ++at;
    }
    return lines;
}

// `work` on every run: on a thread of its own for each run but the first,
// which the calling thread takes.
template <typename Work>
void OnEveryRun(std::vector<Run>& runs, Work work)
{
    std::vector<std::thread> workers;
    for (size_t i = 1; i < runs.size(); ++i) workers.emplace_back(work, std::ref(runs[i]));
    work(runs[0]);
    for (std::thread& worker : workers) worker.join();
}

// `parts` runs of whole lines in [begin, end), which ends in a line feed,
// each with the row its first line goes to when every line is a row.
std::vector<Run> CutIntoRuns(const char* begin, const char* end, size_t parts, size_t firstRow)
{
    std::vector<Run> runs(parts);
    const char* from = begin;
    for (size_t i = 0; i < parts; ++i) {
        const char* aim = std::max(from, begin + (end - begin) * static_cast<ptrdiff_t>(i + 1) /
                                                     static_cast<ptrdiff_t>(parts));
        const char* feed = aim < end
                               ? static_cast<const char*>(std::memchr(aim, '\n', size_t(end - aim)))
                               : nullptr;
        runs[i].begin = from;
        runs[i].end = i + 1 == parts || !feed ? end : feed + 1;
        from = runs[i].end;
    }
    OnEveryRun(runs, [](Run& run) { run.lineFeeds = CountLines(run.begin, run.end); });
    for (Run& run : runs) {
        run.firstRow = firstRow;
        firstRow += run.lineFeeds;
    }
    return runs;
}

// Only the first `rows` rows of a run are taken: the bytes and lines they
// take.
void KeepRows(size_t rows, Run& run)
{
    run.bytes = 0;
    run.lines = 0;
    std::vector<char> line;
    const char* at = run.begin;
    for (uint32_t lines = 1, seen = 0; seen < rows; ++lines) {
        const char* feed = static_cast<const char*>(std::memchr(at, '\n', size_t(run.end - at)));
        const bool counts = LineCounts(CopyLine(at, feed, line));
        at = feed + 1;
        if (!counts) continue;
        ++seen;
        run.bytes = size_t(at - run.begin);
        run.lines = lines;
    }
    run.rows = rows;
    run.stopped = true;
}

// Moves the rows of `run` to row `to` of every curve.
void MoveRows(const Run& run, size_t to, std::vector<CLasCurve>& curves)
{
    if (to == run.firstRow) return;
    for (CLasCurve& curve : curves) {
        double* numbers = curve.m_numbers.data();
        std::memmove(numbers + to, numbers + run.firstRow, run.rows * sizeof(double));
    }
}

// Up to `most` bytes of the file from `offset` on: its pages mapped where
// the file has a descriptor, so that the threads that read them fault them
// in, else a copy.
class FileBlock {
public:
    bool Read(CTextFile& file, uint64_t offset, size_t most)
    {
        const uint64_t size = file.GetSize();
        most = static_cast<size_t>(std::min<uint64_t>(most, offset < size ? size - offset : 0));
        const int fd = file.GetDescriptor();
        if (fd >= 0 && most >= kSmallestMap && m_map.Map(fd, offset, most)) {
            m_data = m_map.data();
            m_size = most;
            return true;
        }
        m_map.Unmap();
        if (!file.ReadBytesAt(offset, most, m_copy)) return false;
        m_data = m_copy.data();
        m_size = m_copy.size();
        return true;
    }
    const char* data() const { return m_data; }
    // The bytes up to the last line feed; 0 when there is none.
    size_t WholeLines() const
    {
        for (size_t i = m_size; i > 0; --i)
            if (m_data[i - 1] == '\n') return i;
        return 0;
    }

private:
    MappedBytes m_map;
    std::string m_copy;
    const char* m_data = nullptr;
    size_t m_size = 0;
};

unsigned ThreadCount(unsigned asked)
{
    if (asked == 0) asked = std::max(1u, std::thread::hardware_concurrency());
    return std::min(asked, kMostThreads);
}

}  // namespace

// Whether the rows of `section` may be read block by block (and shared out
// among threads): plain bytes, numeric curves, no wrapping, and no status
// callback, which hears of every tenth line as it is read.
bool CLasReader::RowsMayGoInBlocks(const CLasSection& section, const detail::RowBytes& bytes) const
{
    if (m_statusCallback || m_isWrapped || m_file.GetTextForm() != CTextFile::kFormBytes ||
        !bytes.plainNumbers() || section.m_curves.empty())
        return false;
    for (const CLasCurve& curve : section.m_curves)
        if (!curve.m_isNumeric) return false;
    return true;
}

// From the line behind the current one on: the plain rows, block by block,
// appended to the curves. The first block is at most `firstBlock` bytes and
// each block that was taken whole makes the next four times larger, up to
// kBytesPerThread for every thread: a section of a few rows costs a small
// block, a long one few. The file goes on at the first line not taken, and
// the line number and the bytes kept count the lines taken. Returns the
// rows taken.
uint64_t CLasReader::ReadRowsInBlocks(CLasSection& section, const detail::RowBytes& bytes,
                                      uint64_t rowBytes, size_t firstBlock)
{
    std::vector<CLasCurve>& curves = section.m_curves;
    const unsigned threads = ThreadCount(m_options.threads);
    const size_t largest = kBytesPerThread * threads;
    size_t blockSize = std::min(std::max(firstBlock, kSmallestBlock), largest);
    uint64_t taken = 0;
    bool lastTakenWhole = false;
    FileBlock block;
    for (;;) {
        const uint64_t start = m_file.GetOffset();
        if (!block.Read(m_file, start, blockSize)) return taken;
        const size_t wholeLines = block.WholeLines();
        if (wholeLines == 0) return taken;
        const char* begin = block.data();
        const size_t before = curves.front().m_numbers.size();
        std::vector<Run> runs = CutIntoRuns(begin, begin + wholeLines, threads, before);
        const size_t lineRows = runs.back().firstRow + runs.back().lineFeeds;
        // Once a block was taken whole, room for the rows of the blocks
        // ahead too, so that the curves are not copied as they grow.
        const uint64_t blocksLeft = (m_file.GetSize() - start) / wholeLines + 1;
        const size_t expected =
            lastTakenWhole ? before + (lineRows - before) * blocksLeft : lineRows;
        std::vector<double*> columns;
        for (CLasCurve& curve : curves) {
            if (curve.m_numbers.capacity() < lineRows) curve.m_numbers.reserve(expected);
            curve.m_numbers.resize(lineRows);
            columns.push_back(curve.m_numbers.data());
        }
        const bool decoding = m_file.GetDecoding();
        OnEveryRun(runs, [&](Run& run) { ReadRun(bytes, decoding, columns, run); });
        // The rows the budget has room for, as Spend would count them.
        uint64_t room = UINT64_MAX;
        if (m_options.maxBytes != 0)
            room = m_bytesKept > m_options.maxBytes
                       ? 0
                       : (m_options.maxBytes - m_bytesKept) / std::max<uint64_t>(rowBytes, 1);
        // The file goes on behind the last row taken.
        size_t rows = before;
        size_t resumeBytes = 0;
        uint32_t resumeLines = 0;
        uint32_t linesBefore = 0;
        bool stopped = false;
        for (size_t i = 0; i < runs.size() && !stopped; ++i) {
            Run& run = runs[i];
            if (run.rows > room) KeepRows(static_cast<size_t>(room), run);
            room -= run.rows;
            MoveRows(run, rows, curves);
            rows += run.rows;
            if (run.rows > 0) {
                resumeBytes = size_t(run.begin - begin) + run.bytes;
                resumeLines = linesBefore + run.lines;
            }
            linesBefore += static_cast<uint32_t>(run.lineFeeds);
            stopped = run.stopped;
        }
        for (CLasCurve& curve : curves) curve.m_numbers.resize(rows);
        if (rows == before) return taken;  // the file stays where it was
        taken += rows - before;
        m_rowsInBlocks += rows - before;
        m_bytesKept += (rows - before) * rowBytes;
        m_lineNumber += resumeLines;
        if (!m_file.MoveTo(start + resumeBytes, resumeLines) || stopped) return taken;
        lastTakenWhole = true;
        blockSize = std::min(blockSize * 4, largest);
    }
}

}  // namespace quarl
