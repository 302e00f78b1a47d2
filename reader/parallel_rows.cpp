// The rows of a data section on several threads: the file is taken in
// blocks, each block is shared out in runs of whole lines, every thread
// converts the rows of its run, and the calling thread joins the runs in file
// order. A run stops at the first line that needs the sequential reader; that
// line and the rest are left to it, so the result is the one of one thread.
#include <quarl/reader.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "foundation/number_parse.h"
#include "reader/reader_rules.h"
#include "reader/row_bytes.h"

namespace quarl {

namespace {

// Bytes of the file each thread gets in one block.
constexpr size_t kBytesPerThread = size_t(8) << 20;
// A line longer than this is left to the sequential reader.
constexpr size_t kLongestLine = size_t(1) << 20;
// The most threads a read takes.
constexpr unsigned kMostThreads = 64;

// What one thread made of its run of lines.
struct RunResult {
    std::vector<std::vector<double>> values;  // by curve
    size_t rows = 0;
    size_t bytes = 0;      // the lines taken, from the run's start
    uint32_t lines = 0;    // physical lines taken
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

// Converts the whole lines [begin, end) as ReadLine and ReadDataRow would,
// up to the first line that is neither a plain row nor passed over.
void ReadRun(const detail::RowBytes& bytes, size_t count, const char* begin, const char* end,
             RunResult& run)
{
    run.values.assign(count, std::vector<double>());
    std::string line;
    std::vector<double> row(count);
    for (const char* at = begin; at < end;) {
        const char* feed = static_cast<const char*>(std::memchr(at, '\n', size_t(end - at)));
        if (!feed || size_t(feed - at) > kLongestLine) break;
        line.clear();
        for (const char* c = at; c < feed; ++c)  // ReadLine drops carriage returns
            if (*c != '\r') line.push_back(*c);
        const char* text = line.c_str();
        if (LineCounts(text)) {
            if (text[0] == '~' || !ReadPlainRow(bytes, text, count, row.data())) break;
            for (size_t i = 0; i < count; ++i) run.values[i].push_back(row[i]);
            ++run.rows;
        }
        ++run.lines;
        at = feed + 1;
        run.bytes = size_t(at - begin);
    }
    run.stopped = begin + run.bytes < end;
}

// The ends of `parts` runs of whole lines in [begin, end), which ends in a
// line feed.
std::vector<const char*> CutIntoRuns(const char* begin, const char* end, size_t parts)
{
    std::vector<const char*> cuts;
    const char* from = begin;
    for (size_t i = 1; i < parts; ++i) {
        const char* aim = std::max(from, begin + (end - begin) * static_cast<ptrdiff_t>(i) /
                                                     static_cast<ptrdiff_t>(parts));
        const char* feed = static_cast<const char*>(std::memchr(aim, '\n', size_t(end - aim)));
        from = feed ? feed + 1 : end;
        cuts.push_back(from);
    }
    cuts.push_back(end);
    return cuts;
}

// The first `rows` rows of a run: how many bytes and lines they take.
void KeepRows(const char* begin, const char* end, size_t rows, RunResult& run)
{
    run.bytes = 0;
    run.lines = 0;
    std::string line;
    for (size_t seen = 0; seen < rows;) {
        const char* at = begin + run.bytes;
        const char* feed = static_cast<const char*>(std::memchr(at, '\n', size_t(end - at)));
        line.clear();
        for (const char* c = at; c < feed; ++c)
            if (*c != '\r') line.push_back(*c);
        seen += LineCounts(line.c_str());
        ++run.lines;
        run.bytes = size_t(feed + 1 - begin);
    }
    for (auto& values : run.values) values.resize(rows);
    run.rows = rows;
    run.stopped = true;
}

unsigned ThreadCount(unsigned asked)
{
    if (asked == 0) asked = std::max(1u, std::thread::hardware_concurrency());
    return std::min(asked, kMostThreads);
}

}  // namespace

// Whether the rows of `section` may be shared out among threads.
bool CLasReader::RowsMaySplit(const CLasSection& section, const detail::RowBytes& bytes) const
{
    if (ThreadCount(m_options.threads) < 2 || m_options.lenient || m_statusCallback ||
        m_isWrapped || m_file.GetTextForm() != CTextFile::kFormBytes || !bytes.plainNumbers() ||
        section.m_curves.empty())
        return false;
    for (const CLasCurve& curve : section.m_curves)
        if (!curve.m_isNumeric) return false;
    return true;
}

// From the line behind the current one on: the plain rows, block by block,
// appended to the curves. The file goes on at the first line not taken, and
// the line number and the bytes kept count the lines taken. Returns the rows
// taken.
uint64_t CLasReader::ReadRowsInParallel(CLasSection& section, const detail::RowBytes& bytes,
                                        uint64_t rowBytes)
{
    const size_t count = section.m_curves.size();
    const unsigned threads = ThreadCount(m_options.threads);
    uint64_t taken = 0;
    std::string block;
    for (;;) {
        const uint64_t start = m_file.GetOffset();
        if (!m_file.ReadBytesAt(start, kBytesPerThread * threads, block)) return taken;
        const size_t lastFeed = block.rfind('\n');
        if (lastFeed == std::string::npos) return taken;
        const char* begin = block.data();
        const std::vector<const char*> cuts = CutIntoRuns(begin, begin + lastFeed + 1, threads);
        std::vector<RunResult> runs(cuts.size());
        std::vector<std::thread> workers;
        for (size_t i = 1; i < cuts.size(); ++i)
            workers.emplace_back(ReadRun, std::cref(bytes), count, cuts[i - 1], cuts[i],
                                 std::ref(runs[i]));
        ReadRun(bytes, count, begin, cuts[0], runs[0]);
        for (std::thread& worker : workers) worker.join();

        // The rows the budget has room for, as Spend would count them.
        uint64_t room = UINT64_MAX;
        if (m_options.maxBytes != 0)
            room = m_bytesKept > m_options.maxBytes
                       ? 0
                       : (m_options.maxBytes - m_bytesKept) / std::max<uint64_t>(rowBytes, 1);
        size_t bytesTaken = 0;
        uint32_t lines = 0;
        bool stopped = false;
        for (size_t i = 0; i < runs.size() && !stopped; ++i) {
            RunResult& run = runs[i];
            const char* runBegin = i == 0 ? begin : cuts[i - 1];
            if (run.rows > room) KeepRows(runBegin, cuts[i], static_cast<size_t>(room), run);
            room -= run.rows;
            for (size_t c = 0; c < count; ++c) {
                std::vector<double>& numbers = section.m_curves[c].m_numbers;
                numbers.insert(numbers.end(), run.values[c].begin(), run.values[c].end());
            }
            taken += run.rows;
            m_rowsByThreads += run.rows;
            m_bytesKept += run.rows * rowBytes;
            bytesTaken += run.bytes;
            lines += run.lines;
            stopped = run.stopped;
        }
        m_lineNumber += lines;
        if (!m_file.MoveTo(start + bytesTaken, lines) || stopped) return taken;
    }
}

}  // namespace quarl
