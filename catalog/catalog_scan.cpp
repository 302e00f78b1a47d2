// ScanTrees: the walk, the reading threads and the one thread that stores.
#include "catalog/catalog_scan.h"

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <map>
#include <mutex>
#include <thread>

#include "catalog/catalog_walk.h"

namespace quarl::catalog {

namespace {

using Clock = std::chrono::steady_clock;

// A transaction ends after this many files, or this long after it began.
constexpr size_t kBatchFiles = 300;
constexpr double kBatchSeconds = 1.0;
// At most this many records wait for the storing thread.
constexpr size_t kQueueLimit = 1024;

double Since(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

bool Stopping(const ScanOptions& options)
{
    return options.stop && options.stop->load();
}

// The records the reading threads hand to the storing one.
class RecordQueue {
public:
    void Push(FileRecord record)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_room.wait(lock, [&] { return m_records.size() < kQueueLimit || m_closed; });
        if (m_closed) return;
        m_records.push_back(std::move(record));
        m_ready.notify_one();
    }
    // False once nothing more comes; waits at most `wait` for a record.
    bool Pop(FileRecord* record, std::chrono::milliseconds wait, bool* got)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_ready.wait_for(lock, wait, [&] { return !m_records.empty() || m_writers == 0; });
        *got = !m_records.empty();
        if (*got) {
            *record = std::move(m_records.front());
            m_records.pop_front();
            m_room.notify_one();
        }
        return *got || m_writers > 0;
    }
    void AddWriter()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        ++m_writers;
    }
    bool Closed()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_closed;
    }
    void WriterDone()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        --m_writers;
        m_ready.notify_all();
    }
    // The storing thread gives up: readers stop waiting for room.
    void Close()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_closed = true;
        m_room.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_ready, m_room;
    std::deque<FileRecord> m_records;
    size_t m_writers = 0;
    bool m_closed = false;
};

// "1234/5678 files, 950 files/s, 5 s left", redrawn a few times a second.
class ProgressLine {
public:
    ProgressLine(bool on, size_t total) : m_on(on), m_total(total) {}
    void Show(size_t done, bool last = false)
    {
        if (!m_on || (!last && Since(m_drawn) < 0.25)) return;
        m_drawn = Clock::now();
        const double seconds = Since(m_start);
        const double rate = seconds > 0 ? static_cast<double>(done) / seconds : 0.0;
        const double left = rate > 0 ? static_cast<double>(m_total - done) / rate : 0.0;
        std::fprintf(stderr, "\r%zu/%zu files, %.0f files/s, %.0f s left   %s", done, m_total, rate,
                     left, last ? "\n" : "");
        std::fflush(stderr);
    }

private:
    bool m_on;
    size_t m_total;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_drawn = Clock::now() - std::chrono::seconds(1);
};

void ReadFiles(const std::vector<FoundFile>& files, const ScanOptions& options,
               std::atomic<size_t>* next, RecordQueue* queue)
{
    for (;;) {
        const size_t at = next->fetch_add(1);
        if (at >= files.size() || Stopping(options) || queue->Closed()) break;
        queue->Push(ReadFileRecord(files[at].path, options));
    }
    queue->WriterDone();
}

// Stores the records as they come, in transactions of whole files.
class Storer {
public:
    Storer(CatalogDb& db, ScanSummary* summary) : m_db(db), m_summary(summary) {}
    bool Store(const FileRecord& record)
    {
        if (!m_open && !(m_open = m_db.Begin())) return false;
        if (m_files == 0) m_began = Clock::now();
        if (!m_db.StoreFile(record)) return false;
        ++m_files;
        ++m_summary->read;
        m_summary->failed += record.result != "LASFILE_OK";
        m_summary->changed += record.changedWhileRead;
        return m_files < kBatchFiles || Commit();
    }
    bool Remove(const std::string& path)
    {
        if (!m_open && !(m_open = m_db.Begin())) return false;
        if (!m_db.RemoveFile(path)) return false;
        ++m_summary->removed;
        return ++m_files < kBatchFiles || Commit();
    }
    bool CommitWhenDue() { return !m_open || Since(m_began) < kBatchSeconds || Commit(); }
    bool Commit()
    {
        m_files = 0;
        if (!m_open) return true;
        m_open = false;
        return m_db.Commit();
    }
    void Abandon()
    {
        if (m_open) m_db.Rollback();
        m_open = false;
    }

private:
    CatalogDb& m_db;
    ScanSummary* m_summary;
    bool m_open = false;
    size_t m_files = 0;
    Clock::time_point m_began;
};

bool StoreRead(const std::vector<FoundFile>& toRead, const ScanOptions& options, Storer& storer)
{
    unsigned threads = options.threads ? options.threads : std::thread::hardware_concurrency();
    if (threads == 0) threads = 1;
    RecordQueue queue;
    std::atomic<size_t> next{0};
    std::vector<std::thread> readers;
    for (unsigned i = 0; i < threads; ++i) {
        queue.AddWriter();
        readers.emplace_back(ReadFiles, std::cref(toRead), std::cref(options), &next, &queue);
    }
    ProgressLine progress(options.progress, toRead.size());
    bool ok = true;
    size_t done = 0;
    FileRecord record;
    bool got = false;
    while (queue.Pop(&record, std::chrono::milliseconds(100), &got)) {
        if (got && ok) {
            ok = storer.Store(record);
            progress.Show(++done);
        }
        if (ok) ok = storer.CommitWhenDue();
        if (!ok) queue.Close();
    }
    for (std::thread& t : readers) t.join();
    progress.Show(done, true);
    return ok;
}

bool Under(const std::string& path, const std::string& folder)
{
    if (folder == "/") return !path.empty() && path[0] == '/';
    return path.compare(0, folder.size(), folder) == 0 &&
           (path.size() == folder.size() || path[folder.size()] == '/');
}

// The stored files under the roots that the walk did not find, except
// those under what could not be read.
std::vector<std::string> Vanished(const std::map<std::string, StoredStamp>& stored,
                                  const std::vector<std::string>& roots, const WalkResult& walk)
{
    std::map<std::string, bool> found;
    for (const FoundFile& f : walk.files) found[f.path] = true;
    std::vector<std::string> absoluteRoots;
    for (const std::string& root : roots) absoluteRoots.push_back(AbsolutePath(root));
    std::vector<std::string> gone;
    for (const auto& entry : stored) {
        const std::string& path = entry.first;
        if (found.count(path)) continue;
        bool under = false, kept = false;
        for (const std::string& root : absoluteRoots) under = under || Under(path, root);
        for (const std::string& bad : walk.unreadable) kept = kept || Under(path, bad);
        if (under && !kept) gone.push_back(path);
    }
    return gone;
}

}  // namespace

bool ScanTrees(CatalogDb& db, const std::vector<std::string>& roots, const ScanOptions& options,
               ScanSummary* summary, std::string* error)
{
    const Clock::time_point start = Clock::now();
    ScanSummary counts;
    std::map<std::string, StoredStamp> stored;
    std::string missing;
    if (!RootsExist(roots, &missing)) {
        if (error) *error = missing;
        return false;
    }
    if (!db.StoredFiles(&stored)) {
        if (error) *error = db.Error();
        return false;
    }
    const WalkResult walk = WalkTrees(roots, options.stop);
    counts.seen = walk.files.size();
    counts.notLas = walk.notLas;
    counts.links = walk.links;
    counts.unreadable = walk.unreadable.size();
    std::vector<FoundFile> toRead;
    for (const FoundFile& f : walk.files) {
        const auto at = stored.find(f.path);
        if (at != stored.end() && at->second.size == f.size && at->second.mtimeNs == f.mtimeNs &&
            (at->second.hashed || !options.hash))
            ++counts.unchanged;
        else
            toRead.push_back(f);
    }
    Storer storer(db, &counts);
    bool ok = StoreRead(toRead, options, storer);
    if (ok && !walk.stopped && !Stopping(options))
        for (const std::string& path : Vanished(stored, roots, walk))
            if (!(ok = storer.Remove(path))) break;
    ok = ok && storer.Commit();
    if (!ok) storer.Abandon();
    counts.seconds = Since(start);
    if (summary) *summary = counts;
    if (!ok) {
        if (error) *error = db.Error();
        return false;
    }
    if (walk.stopped || Stopping(options)) {
        if (error) *error = "interrupted";
        return false;
    }
    return true;
}

}  // namespace quarl::catalog
