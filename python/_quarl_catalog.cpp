// The catalog of quarl-catalog in the native module: a file's record read,
// records stored, folder trees scanned and the questions built, all by the
// program's own code. quarl.catalog puts pandas on top; quarl.dask reads the
// records on workers and stores them through Catalog.store.
#include "_quarl_catalog.h"

#include <pybind11/stl.h>

#include <atomic>
#include <cctype>
#include <chrono>
#include <future>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "catalog/catalog_db.h"
#include "catalog/catalog_query.h"
#include "catalog/catalog_scan.h"

namespace py = pybind11;
using namespace quarl::catalog;

namespace {

struct CatalogError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The fields of a record in the order of its state, its constructor's
// arguments and its properties.
const char* const kFields[] = {
    "path",    "size", "mtime_ns",           "version", "wrap",   "result",
    "reading", "hash", "changed_while_read", "well",    "curves", "params",
    "notes"};
// What each field holds, for help(): in the order of kFields.
const char* const kFieldDocs[] = {
    "The path of the file.",
    "Its size in bytes.",
    "Its time of last change, in nanoseconds.",
    "The VERS value of its Version section.",
    "Whether it is wrapped (WRAP YES).",
    "The name of the read's result code (\"LASFILE_OK\").",
    "How it was read: \"lenient\" or \"strict\".",
    "The SHA-256 of the whole file in hex when asked for, else \"\".",
    "Whether the file changed while it was read.",
    "The Well lines kept: (mnemonic, unit, value, description).",
    "The curves: (section, mnemonic, unit, value, description, first depth, last depth, "
    "format); the depths None when the section has no rows.",
    "The lines of the parameter sections: (section, mnemonic, unit, value, description).",
    "The notes of the read: (kind name, line, text).",
};
constexpr size_t kFieldCount = sizeof(kFields) / sizeof(kFields[0]);

py::bytes B(const std::string& text)
{
    return py::bytes(text);
}

py::object Depth(bool has, double depth)
{
    return has ? py::object(py::float_(depth)) : py::none();
}

// A record as plain values: texts as bytes, so that what a file held comes
// back exactly after pickling (to a dask worker and back); depths None when
// the section has no rows.
py::tuple StateOf(const FileRecord& r)
{
    py::list well, curves, params, notes;
    for (const WellLine& w : r.well)
        well.append(py::make_tuple(B(w.mnemonic), B(w.unit), B(w.value), B(w.description)));
    for (const CurveRow& c : r.curves)
        curves.append(py::make_tuple(B(c.section), B(c.mnemonic), B(c.unit), B(c.description),
                                     B(c.apiCode), Depth(c.hasDepths, c.firstDepth),
                                     Depth(c.hasDepths, c.lastDepth), B(c.depthUnit)));
    for (const ParamRow& p : r.params)
        params.append(
            py::make_tuple(B(p.section), B(p.mnemonic), B(p.unit), B(p.value), B(p.description)));
    for (const NoteRow& n : r.notes) notes.append(py::make_tuple(B(n.kind), n.line, B(n.text)));
    return py::make_tuple(B(r.path), r.size, r.mtimeNs, B(r.version), r.wrap, B(r.result),
                          B(r.reading), B(r.hash), r.changedWhileRead, well, curves, params, notes);
}

// The items of a row given as a sequence of `count` values.
py::sequence Row(const py::handle& row, size_t count, const char* what)
{
    if (!py::isinstance<py::sequence>(row) || py::isinstance<py::str>(row) || py::len(row) != count)
        throw py::value_error(std::string("a row of ") + what + " has " + std::to_string(count) +
                              " values: " + py::repr(row).cast<std::string>());
    return py::reinterpret_borrow<py::sequence>(row);
}

std::string S(const py::sequence& row, size_t at)
{
    return row[at].cast<std::string>();
}

CurveRow CurveFrom(const py::handle& item)
{
    const py::sequence row = Row(item, 8, "curves");
    const bool hasDepths = !row[5].is_none() && !row[6].is_none();
    return {S(row, 0),
            S(row, 1),
            S(row, 2),
            S(row, 3),
            S(row, 4),
            hasDepths,
            hasDepths ? row[5].cast<double>() : 0.0,
            hasDepths ? row[6].cast<double>() : 0.0,
            S(row, 7)};
}

FileRecord RecordFromState(const py::tuple& state)
{
    if (state.size() != kFieldCount)
        throw py::value_error("a FileRecord's state has " + std::to_string(kFieldCount) +
                              " values");
    FileRecord r;
    r.path = state[0].cast<std::string>();
    r.size = state[1].cast<int64_t>();
    r.mtimeNs = state[2].cast<int64_t>();
    r.version = state[3].cast<std::string>();
    r.wrap = state[4].cast<bool>();
    r.result = state[5].cast<std::string>();
    r.reading = state[6].cast<std::string>();
    r.hash = state[7].cast<std::string>();
    r.changedWhileRead = state[8].cast<bool>();
    for (const py::handle item : state[9]) {
        const py::sequence w = Row(item, 4, "well");
        r.well.push_back({S(w, 0), S(w, 1), S(w, 2), S(w, 3)});
    }
    for (const py::handle item : state[10]) r.curves.push_back(CurveFrom(item));
    for (const py::handle item : state[11]) {
        const py::sequence p = Row(item, 5, "params");
        r.params.push_back({S(p, 0), S(p, 1), S(p, 2), S(p, 3), S(p, 4)});
    }
    for (const py::handle item : state[12]) {
        const py::sequence n = Row(item, 3, "notes");
        r.notes.push_back({S(n, 0), n[1].cast<int64_t>(), S(n, 2)});
    }
    return r;
}

// Bytes as str (invalid UTF-8 as U+FFFD), inside tuples and lists too.
py::object Decoded(const py::handle& value)
{
    if (py::isinstance<py::bytes>(value)) {
        const std::string text = value.cast<std::string>();
        PyObject* decoded =
            PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace");
        if (!decoded) throw py::error_already_set();
        return py::reinterpret_steal<py::str>(decoded);
    }
    if (py::isinstance<py::tuple>(value) || py::isinstance<py::list>(value)) {
        py::list out;
        for (const py::handle item : value) out.append(Decoded(item));
        return py::isinstance<py::tuple>(value) ? py::object(py::tuple(out)) : py::object(out);
    }
    return py::reinterpret_borrow<py::object>(value);
}

void BindRecord(py::module_& m)
{
    py::class_<FileRecord> record(m, "FileRecord",
                                  "What the catalog keeps of one file: its stamp, how it read, "
                                  "its Well lines, curves, parameters and notes.");
    record.def(py::init([](const py::args& args, const py::kwargs& kwargs) {
                   // The defaults of a record: a file read leniently, with nothing in it.
                   py::list state = py::cast(std::vector<py::object>{
                       py::str(""), py::int_(0), py::int_(0), py::str(""), py::bool_(false),
                       py::str("LASFILE_OK"), py::str("lenient"), py::str(""), py::bool_(false),
                       py::list(), py::list(), py::list(), py::list()});
                   if (args.size() > kFieldCount)
                       throw py::type_error("too many arguments for FileRecord");
                   for (size_t i = 0; i < args.size(); ++i) state[i] = args[i];
                   for (const auto& [key, value] : kwargs) {
                       const std::string name = py::str(key);
                       size_t at = 0;
                       while (at < kFieldCount && name != kFields[at]) ++at;
                       if (at == kFieldCount)
                           throw py::type_error("FileRecord has no field " + name);
                       state[at] = value;
                   }
                   return RecordFromState(py::tuple(state));
               }),
               "A record of the fields given by position or by name; the rest as a file read "
               "leniently with nothing in it.");
    for (size_t i = 0; i < kFieldCount; ++i)
        record.def_property_readonly(
            kFields[i], [i](const FileRecord& r) { return Decoded(StateOf(r)[i]); }, kFieldDocs[i]);
    record.def(py::pickle(&StateOf, &RecordFromState));
    record.def("__eq__", [](const FileRecord& a, const FileRecord& b) {
        return StateOf(a).equal(StateOf(b));
    });
    record.def("__repr__", [](const FileRecord& r) {
        return "<FileRecord " + py::str(Decoded(B(r.path))).cast<std::string>() + ": " + r.result +
               ", " + std::to_string(r.curves.size()) + " curves>";
    });
}

void Open(CatalogDb& db, const std::string& path, bool create)
{
    std::string error;
    bool ok = false;
    {
        py::gil_scoped_release release;
        ok = db.Open(path, create, &error);
    }
    if (!ok)
        throw CatalogError(error.find(path) == std::string::npos ? path + ": " + error : error);
}

CatalogDb& Opened(CatalogDb& db)
{
    if (!db.Handle()) throw CatalogError("the catalog is closed");
    return db;
}

// Stores every record in one transaction: all of them or, on a failure,
// none. Returns how many were stored.
size_t Store(CatalogDb& db, const py::iterable& records)
{
    const py::list items(records);  // keeps the records alive while the GIL is released
    std::vector<const FileRecord*> all;
    for (const py::handle item : items) all.push_back(&item.cast<const FileRecord&>());
    Opened(db);
    std::string error;
    {
        py::gil_scoped_release release;
        bool ok = db.Begin();
        for (size_t i = 0; ok && i < all.size(); ++i) ok = db.StoreFile(*all[i]);
        ok = ok && db.Commit();
        if (!ok) {
            error = db.Error();
            db.Rollback();
        }
    }
    if (!error.empty()) throw CatalogError(error);
    return all.size();
}

void Remove(CatalogDb& db, const std::string& path)
{
    if (!(Opened(db).Begin() && db.RemoveFile(path) && db.Commit())) {
        const std::string error = db.Error();
        db.Rollback();
        throw CatalogError(error);
    }
}

py::dict StoredFiles(CatalogDb& db)
{
    std::map<std::string, StoredStamp> stored;
    if (!Opened(db).StoredFiles(&stored)) throw CatalogError(db.Error());
    py::dict out;
    for (const auto& [path, stamp] : stored)
        out[Decoded(B(path))] = py::make_tuple(stamp.size, stamp.mtimeNs);
    return out;
}

void BindCatalog(py::module_& m)
{
    py::class_<CatalogDb>(m, "Catalog", "An SQLite catalog of the headers of LAS files.")
        .def(py::init([](const std::string& path, bool create) {
                 auto db = std::make_unique<CatalogDb>();
                 Open(*db, path, create);
                 return db;
             }),
             py::arg("path"), py::arg("create") = true,
             "Opens the catalog at `path`, made when it is not there and `create` is true; "
             "raises CatalogError for a file that is no catalog or of a newer schema.")
        .def("store", &Store, py::arg("records"),
             "Stores the records (FileRecord) in one transaction, each in place of the file's "
             "earlier one: all of them or, on a failure, none. Returns how many were stored.")
        .def("remove", &Remove, py::arg("path"), "Removes the record of the file at `path`.")
        .def("stored_files", &StoredFiles,
             "The files stored: {path: (size, mtime_ns)}, the stamp a scan compares against.")
        .def("close", &CatalogDb::Close, "Closes the catalog; a closed one can do nothing more.")
        .def_property_readonly(
            "closed", [](const CatalogDb& db) { return !db.Handle(); }, "Whether it is closed.")
        .def(
            "__enter__", [](CatalogDb& db) -> CatalogDb& { return Opened(db); },
            py::return_value_policy::reference)
        .def("__exit__", [](CatalogDb& db, const py::args&) { db.Close(); });
}

py::dict SummaryDict(const ScanSummary& s)
{
    py::dict out;
    out["seen"] = s.seen;
    out["read"] = s.read;
    out["unchanged"] = s.unchanged;
    out["failed"] = s.failed;
    out["changed"] = s.changed;
    out["removed"] = s.removed;
    out["not_las"] = s.notLas;
    out["unreadable"] = s.unreadable;
    out["links"] = s.links;
    out["seconds"] = s.seconds;
    return out;
}

// Scans the trees on a thread of its own while this one looks for Ctrl-C
// every 100 ms: an interrupt stops the scan after the files stored so far
// and is raised here.
py::dict Scan(const std::vector<std::string>& roots, const std::string& dbPath, bool hash,
              unsigned threads)
{
    CatalogDb db;
    Open(db, dbPath, true);
    std::atomic<bool> stop{false};
    ScanOptions options;
    options.hash = hash;
    options.threads = threads;
    options.stop = &stop;
    ScanSummary summary;
    std::string error;
    bool ok = false;
    {
        py::gil_scoped_release release;
        auto scan = std::async(std::launch::async,
                               [&] { return ScanTrees(db, roots, options, &summary, &error); });
        while (scan.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready) {
            py::gil_scoped_acquire gil;
            if (!stop && PyErr_CheckSignals() != 0) stop = true;
        }
        ok = scan.get();
    }
    if (stop) throw py::error_already_set();
    if (!ok) throw CatalogError(error);
    return SummaryDict(summary);
}

py::tuple Pair(const SqlQuery& query)
{
    return py::make_tuple(query.sql, query.params);
}

py::tuple Query(const std::vector<std::string>& curves, const py::object& depth,
                const std::string& unit, const py::object& well)
{
    QueryOptions options;
    options.curves = curves;
    if (!depth.is_none()) {
        const py::sequence range = Row(depth, 2, "depth (FROM, TO)");
        options.hasDepth = true;
        options.from = range[0].cast<double>();
        options.to = range[1].cast<double>();
    }
    // The program names its units in upper case (M, FT).
    options.unit.clear();
    for (const char c : unit)
        options.unit += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (!well.is_none()) options.wellPattern = well.cast<std::string>();
    SqlQuery query;
    std::string error;
    if (!BuildQuery(options, &query, &error)) throw py::value_error(error);
    return Pair(query);
}

FileRecord ReadPath(const std::string& path, bool hash)
{
    py::gil_scoped_release release;
    ScanOptions options;
    options.hash = hash;
    return ReadFileRecord(path, options);
}

// The bytes of any object with the buffer interface, read in place.
FileRecord ReadBytes(const std::string& path, const py::buffer& data, int64_t mtimeNs)
{
    const py::buffer_info bytes = data.request();
    py::gil_scoped_release release;
    return ReadFileRecordFromBuffer(path, static_cast<const char*>(bytes.ptr),
                                    static_cast<size_t>(bytes.size * bytes.itemsize), mtimeNs);
}

}  // namespace

void BindCatalogModule(py::module_& m)
{
    py::register_exception<CatalogError>(m, "CatalogError", PyExc_RuntimeError);
    m.attr("CatalogError").attr("__doc__") =
        "A catalog that cannot be opened, read or written; the message says why.";
    m.attr("CATALOG_SCHEMA_VERSION") = kSchemaVersion;
    BindRecord(m);
    BindCatalog(m);
    m.def("read_file_record", &ReadPath, py::arg("path"), py::arg("hash") = false,
          "Reads the file at `path` into its FileRecord, as a scan does; `hash` adds its "
          "SHA-256. Without the GIL.");
    m.def("read_file_record_from_bytes", &ReadBytes, py::arg("path"), py::arg("data"),
          py::arg("mtime_ns") = 0,
          "Like read_file_record, of the bytes `data` (any buffer, read in place), recorded "
          "under `path` and `mtime_ns`.");
    m.def("scan_trees", &Scan, py::arg("roots"), py::arg("db_path"), py::arg("hash") = false,
          py::arg("threads") = 0);
    m.def("build_query", &Query, py::arg("curves") = std::vector<std::string>(),
          py::arg("depth") = py::none(), py::arg("unit") = "M", py::arg("well") = py::none());
    m.def("problem_files_query", [] { return Pair(ProblemFilesQuery()); });
    m.def("note_kinds_query", [] { return Pair(NoteKindsQuery()); });
}
