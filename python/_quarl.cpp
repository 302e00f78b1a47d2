// The native part of the Python package: the reader and the writer with the
// GIL released, sections shared with Python through their shared pointers,
// and numeric curves handed out as numpy arrays over the section's own
// values. The package `quarl` builds its friendly interface on top of this.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <quarl/quarl.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#ifdef QUARL_HAS_CATALOG
#include "_quarl_catalog.h"
#endif

namespace py = pybind11;
using namespace quarl;

namespace {

// Text in the file is bytes; once a read is over, every text of it is UTF-8
// (a file in a single-byte code page is transcoded, see Transcode), and
// Python sees proper str. Bytes that are still no UTF-8 (a file said to be
// UTF-8 that is not) become U+FFFD, never a lone surrogate.
py::str Text(const std::string& bytes)
{
    PyObject* text =
        PyUnicode_DecodeUTF8(bytes.data(), static_cast<Py_ssize_t>(bytes.size()), "replace");
    if (!text) throw py::error_already_set();
    return py::reinterpret_steal<py::str>(text);
}

CLasString Bytes(const py::handle& text)
{
    if (py::isinstance<py::bytes>(text)) return CLasString(text.cast<std::string>());
    PyObject* bytes = PyUnicode_AsEncodedString(py::str(text).ptr(), "utf-8", "surrogateescape");
    if (!bytes) throw py::error_already_set();
    return CLasString(py::reinterpret_steal<py::bytes>(bytes).cast<std::string>());
}

// Lets another thread stop a read or a write at its next status report.
struct CancelToken {
    std::atomic<bool> set{false};
};

// The status callback of a read or a write that runs without the GIL. It
// takes the GIL back only now and then: to call the host's progress
// function when the whole percent changes, and every 50 ms to let Python see
// a pending signal (Ctrl-C). A Python error stops the operation and is kept
// until the GIL is held again.
class StatusBridge {
public:
    StatusBridge(py::object progress, CancelToken* token)
        : m_progress(std::move(progress)), m_token(token), m_last(Clock::now())
    {
    }
    ~StatusBridge() { Forget(); }

    // Whether a read must report to the bridge: for progress or a token.
    // Without either, Ctrl-C is seen once the read is over, and a read on
    // several threads may share out its rows (a status callback keeps a
    // read on one thread).
    bool Needed() const { return !m_progress.is_none() || m_token; }

    static int32_t Report(void* context, double percent, const char*)
    {
        return static_cast<StatusBridge*>(context)->OnReport(percent);
    }

    // Raises the Python error that stopped the operation, if there was one.
    // Needs the GIL.
    void Rethrow()
    {
        if (!m_type) return;
        PyErr_Restore(m_type, m_value, m_traceback);
        m_type = m_value = m_traceback = nullptr;
        throw py::error_already_set();
    }

private:
    using Clock = std::chrono::steady_clock;

    int32_t OnReport(double percent)
    {
        if (m_token && m_token->set.load(std::memory_order_relaxed)) return 1;
        const int whole = static_cast<int>(percent);
        const bool progressDue = !m_progress.is_none() && whole != m_lastPercent;
        const Clock::time_point now = Clock::now();
        if (!progressDue && now - m_last < std::chrono::milliseconds(50)) return 0;
        m_last = now;
        m_lastPercent = whole;
        py::gil_scoped_acquire gil;
        if (PyErr_CheckSignals() != 0) return Keep();
        if (!progressDue) return 0;
        PyObject* result = PyObject_CallFunction(m_progress.ptr(), "d", percent);
        if (!result) return Keep();
        Py_DECREF(result);
        return 0;
    }

    int32_t Keep()
    {
        Forget();
        PyErr_Fetch(&m_type, &m_value, &m_traceback);
        return 1;
    }

    void Forget()
    {
        if (!m_type) return;
        py::gil_scoped_acquire gil;
        Py_XDECREF(m_type);
        Py_XDECREF(m_value);
        Py_XDECREF(m_traceback);
        m_type = m_value = m_traceback = nullptr;
    }

    py::object m_progress;
    CancelToken* m_token;
    Clock::time_point m_last;
    int m_lastPercent = -1;
    PyObject* m_type = nullptr;
    PyObject* m_value = nullptr;
    PyObject* m_traceback = nullptr;
};

using SectionPtr = std::shared_ptr<CLasSection>;

// The length of the UTF-8 sequence at `p` (at most `left` bytes), or 0 when
// no valid sequence starts there.
size_t Utf8Length(const unsigned char* p, size_t left)
{
    if (p[0] < 0x80) return 1;
    const size_t n = p[0] >= 0xF0 ? 4 : p[0] >= 0xE0 ? 3 : p[0] >= 0xC2 ? 2 : 0;
    if (n == 0 || n > left || p[0] > 0xF4) return 0;
    for (size_t i = 1; i < n; ++i)
        if ((p[i] & 0xC0) != 0x80) return 0;
    if (n == 3 && ((p[0] == 0xE0 && p[1] < 0xA0) || (p[0] == 0xED && p[1] >= 0xA0))) return 0;
    if (n == 4 && ((p[0] == 0xF0 && p[1] < 0x90) || (p[0] == 0xF4 && p[1] >= 0x90))) return 0;
    return n;
}

bool IsUtf8(const std::string& text)
{
    const auto* p = reinterpret_cast<const unsigned char*>(text.data());
    for (size_t i = 0, n = text.size(); i < n;) {
        const size_t length = Utf8Length(p + i, n - i);
        if (length == 0) return false;
        i += length;
    }
    return true;
}

// Calls `visit` on every text of the sections and the notes: names, the six
// fields of parameter lines and curve definitions, text values.
template <typename Visit>
void EveryText(std::vector<SectionPtr>& sections, std::vector<CLasNote>* notes, Visit visit)
{
    auto param = [&](CLasParam& p) {
        for (CLasString* field : {&p.m_mnemonic, &p.m_unit, &p.m_value, &p.m_description,
                                  &p.m_format, &p.m_association})
            visit(*field);
    };
    for (const SectionPtr& section : sections) {
        visit(section->m_name);
        visit(section->m_association);
        for (CLasParam& p : section->m_params) param(p);
        for (CLasCurve& curve : section->m_curves) {
            param(curve.m_definition);
            for (CLasString& value : curve.m_strings) visit(value);
        }
    }
    if (notes)
        for (CLasNote& note : *notes) visit(note.text);
}

// What one read gives: the reader's sections (shared, not copied) and what
// the reader found out about the file.
struct ReadResult {
    std::vector<SectionPtr> sections;
    ELASFILEERROR result = LASFILE_OK;
    bool las3 = false;
    bool wrapped = false;
    char delimiter = ' ';
    std::vector<CLasNote> notes;
    uint64_t line = 0;  // where the read ended: the failure's line, or the last
    // The texts that are no UTF-8, one a line, at most 64 KiB of them: what
    // the package looks at to tell the file's code page. Empty for UTF-8.
    std::string foreign;
    // A headers-only read of a file whose data ends could be read: the first
    // and the last value of the index (one value for a section of one row).
    std::vector<double> indexEnds;
};

void FindForeignText(ReadResult& read)
{
    constexpr size_t kMost = 1 << 16;
    EveryText(read.sections, &read.notes, [&](CLasString& text) {
        if (read.foreign.size() < kMost && !IsUtf8(text)) read.foreign += text + "\n";
    });
}

// Turns every text of a read from a single-byte code page into UTF-8:
// `table` gives the UTF-8 of each of the 256 bytes.
void Transcode(ReadResult& read, const std::vector<std::string>& table)
{
    if (table.size() != 256) throw py::value_error("a code page table has 256 entries");
    EveryText(read.sections, &read.notes, [&](CLasString& text) {
        bool plain = true;
        for (const char c : text) plain = plain && static_cast<unsigned char>(c) < 0x80;
        if (plain) return;
        std::string out;
        out.reserve(text.size() * 2);
        for (const char c : text) out += table[static_cast<unsigned char>(c)];
        text = out;
    });
    read.foreign.clear();
}

// Copies of `sections` with every text turned from UTF-8 into the
// single-byte code page of `table` (the UTF-8 of each byte); a character the
// code page does not have raises ValueError.
std::vector<SectionPtr> Encode(const std::vector<SectionPtr>& sections,
                               const std::vector<std::string>& table, const std::string& name)
{
    if (table.size() != 256) throw py::value_error("a code page table has 256 entries");
    std::unordered_map<std::string, char> bytes;
    for (size_t i = 256; i-- > 0;) bytes[table[i]] = static_cast<char>(i);
    std::vector<SectionPtr> out;
    for (const SectionPtr& section : sections)
        out.push_back(std::make_shared<CLasSection>(*section));
    EveryText(out, nullptr, [&](CLasString& text) {
        std::string encoded;
        const auto* p = reinterpret_cast<const unsigned char*>(text.data());
        for (size_t i = 0, n = text.size(); i < n;) {
            const size_t length = std::max<size_t>(1, Utf8Length(p + i, n - i));
            const auto found = bytes.find(text.substr(i, length));
            if (found == bytes.end())
                throw py::value_error("'" + text.substr(i, length) + "' in '" + text +
                                      "' cannot be written in " + name);
            encoded += found->second;
            i += length;
        }
        text = encoded;
    });
    return out;
}

// Whether a note says that a value was not read as a clean number.
bool NotesNumberTrouble(const std::vector<CLasNote>& notes)
{
    for (const CLasNote& note : notes)
        if (note.kind == LASNOTE_NOT_A_NUMBER || note.kind == LASNOTE_NUMBER_IN_PART) return true;
    return false;
}

// After a headers-only read that took the data's ends: keeps the index's
// first and last value (when they are clean numbers) and drops the values,
// so that the sections look as a headers-only read leaves them.
void TakeDataEnds(ReadResult& read)
{
    const bool clean = !NotesNumberTrouble(read.notes);
    for (const SectionPtr& section : read.sections) {
        if (section->m_type != LASSECTION_DATA || section->m_curves.empty()) continue;
        const CLasCurve& index = section->m_curves[0];
        if (clean && read.indexEnds.empty() && index.m_isNumeric && !index.m_numbers.empty())
            read.indexEnds = {index.m_numbers.front(), index.m_numbers.back()};
        for (CLasCurve& curve : section->m_curves) {
            curve.m_numbers.clear();
            curve.m_strings.clear();
        }
    }
}

// One read of the file at `path`, or of `size` bytes at `bytes` named `path`.
ELASFILEERROR ReadOnce(ReadResult& out, const std::string& path, const CLasReadOptions& options,
                       StatusBridge& bridge, const void* bytes, size_t size)
{
    CLasReader reader;
    reader.SetOptions(options);
    if (options.threads == 1 || bridge.Needed())
        reader.SetStatusCallback(&bridge, &StatusBridge::Report);
    const tessel::TxString name(path);
    out.result = bytes ? reader.OpenBuffer(bytes, size, name) : reader.Open(name);
    out.sections.assign(reader.begin(), reader.end());
    out.las3 = reader.IsLas3();
    out.wrapped = reader.IsWrapped();
    out.delimiter = reader.GetDelimiter();
    out.notes = reader.GetNotes();
    out.line = reader.GetLineNumber();
    reader.Close();
    return out.result;
}

// Reads the file at `path`, or when `data` is not None the bytes it holds
// (anything with the buffer interface: bytes, bytearray, memoryview, mmap),
// named `path`. The bytes are read in place, without a copy. A headers-only
// read takes the data's ends, which costs the header alone where the file
// allows it; when that read fails (the first or the last row is refused),
// the plain headers-only read, which passes the rows unread, is the answer.
std::shared_ptr<ReadResult> Read(const std::string& path, bool lenient, bool headersOnly,
                                 py::object progress, CancelToken* token, const py::object& data,
                                 unsigned threads)
{
    auto out = std::make_shared<ReadResult>();
    StatusBridge bridge(std::move(progress), token);
    py::buffer_info buffer;
    if (!data.is_none()) buffer = py::reinterpret_borrow<py::buffer>(data).request();
    const void* bytes = data.is_none() ? nullptr : buffer.ptr;
    const auto size = static_cast<size_t>(buffer.size * buffer.itemsize);
    {
        py::gil_scoped_release release;
        CLasReadOptions options;
        options.lenient = lenient;
        options.headersOnly = options.dataEnds = headersOnly;
        options.threads = threads;
        const ELASFILEERROR result = ReadOnce(*out, path, options, bridge, bytes, size);
        if (headersOnly && result != LASFILE_OK && result != LASFILE_CANCELLED) {
            options.dataEnds = false;
            *out = ReadResult();
            ReadOnce(*out, path, options, bridge, bytes, size);
        }
        if (headersOnly) TakeDataEnds(*out);
        FindForeignText(*out);
    }
    bridge.Rethrow();
    return out;
}

// Reads a file in C++ alone and drops what was read: the time, in seconds,
// of the library's own read (freeing aside), which the benchmark sets beside the Python
// reads of the same file.
double TimeNativeRead(const std::string& path, bool lenient)
{
    py::gil_scoped_release release;
    const auto start = std::chrono::steady_clock::now();
    CLasReader reader;
    CLasReadOptions options;
    options.lenient = lenient;
    reader.SetOptions(options);
    const ELASFILEERROR result = reader.Open(tessel::TxString(path));
    const auto end = std::chrono::steady_clock::now();
    if (result != LASFILE_OK) throw std::runtime_error(ResultName(result));
    return std::chrono::duration<double>(end - start).count();
}

// The writer's answer: its result and last-error record.
py::dict WriteResult(const CLasWriter& writer)
{
    py::dict record;
    const ELASFILEERROR code = writer.GetLastError();
    record["code"] = static_cast<int>(code);
    const char* section = writer.GetLastErrorSection();
    const char* param = writer.GetLastErrorParam();
    record["section"] = section ? py::object(Text(section)) : py::object(py::none());
    record["mnemonic"] = param ? py::object(Text(param)) : py::object(py::none());
    record["column"] = writer.GetLastErrorColumn();
    record["row"] = writer.GetLastErrorRow();
    return record;
}

// The changes a writer in repair mode made, each as (kind name, section,
// mnemonic, from, to, text); the texts as the bytes written, in the code page
// of the file, which the package decodes.
py::list Repairs(const CLasWriter& writer)
{
    py::list out;
    for (const CLasRepair& repair : writer.GetRepairs())
        out.append(py::make_tuple(LasRepairKindName(repair.kind), py::bytes(repair.section),
                                  py::bytes(repair.mnemonic), py::bytes(repair.from),
                                  py::bytes(repair.to), py::bytes(repair.text)));
    return out;
}

// Writes the sections in the given order; the writer completes and orders
// them, and with `repair` changes what the version cannot hold instead of
// refusing it. Returns the last-error record, whose code is 0 on success,
// with the writer's "repairs". A stop by the status callback gives
// LASFILE_CANCELLED, which the writer does not record.
// With `toText`, the file's bytes go to the record's "text" (as bytes)
// instead of a file, and `path` is the name the file head gives.
py::dict Write(const std::string& path, const std::vector<SectionPtr>& sections, bool las3,
               char delimiter, py::object progress, CancelToken* token, bool toText, bool repair)
{
    CLasWriter writer;
    StatusBridge bridge(std::move(progress), token);
    ELASFILEERROR code = writer.SetFormat(las3, delimiter);
    writer.SetRepair(repair);
    std::string text;
    {
        py::gil_scoped_release release;
        for (size_t i = 0; code == LASFILE_OK && i < sections.size(); ++i)
            code = writer.AddSection(*sections[i]);
        if (code == LASFILE_OK) {
            writer.SetStatusCallback(&bridge, &StatusBridge::Report);
            const tessel::TxString name(path);
            code = toText ? writer.WriteToString(text, name) : writer.Write(name);
        }
    }
    bridge.Rethrow();
    py::dict record = WriteResult(writer);
    record["code"] = static_cast<int>(code);
    record["repairs"] = Repairs(writer);
    if (toText) record["text"] = py::bytes(text);
    return record;
}

CLasCurve& CurveAt(CLasSection& section, py::ssize_t index)
{
    const auto count = static_cast<py::ssize_t>(section.m_curves.size());
    if (index < 0) index += count;
    if (index < 0 || index >= count) throw py::index_error("curve index out of range");
    return section.m_curves[static_cast<size_t>(index)];
}

// A numeric curve as a numpy array over the section's own values; the array
// holds the section, so it stays valid after everything else is gone. The
// library never resizes the values of a curve it has handed out.
py::object CurveValues(const SectionPtr& section, py::ssize_t index)
{
    CLasCurve& curve = CurveAt(*section, index);
    if (!curve.m_isNumeric) {
        py::list values;
        for (const CLasString& value : curve.m_strings) values.append(Text(value));
        return py::module_::import("numpy").attr("array")(values, py::arg("dtype") = "object");
    }
    py::object owner = py::cast(section);
    return py::array_t<double>({curve.m_numbers.size()}, {sizeof(double)}, curve.m_numbers.data(),
                               owner);
}

// Appends a numeric curve with a copy of the values.
void AddNumbers(CLasSection& section, const CLasParam& definition,
                py::array_t<double, py::array::c_style | py::array::forcecast> values)
{
    if (values.ndim() != 1) throw py::value_error("curve values must be one-dimensional");
    CLasCurve curve;
    curve.m_definition = definition;
    curve.m_numbers.assign(values.data(), values.data() + values.size());
    section.m_curves.push_back(std::move(curve));
}

// Appends a text curve; each value is taken as str.
void AddTexts(CLasSection& section, const CLasParam& definition, const py::iterable& values)
{
    CLasCurve curve;
    curve.m_isNumeric = false;
    curve.m_definition = definition;
    for (const py::handle value : values) curve.m_strings.push_back(Bytes(py::str(value)));
    section.m_curves.push_back(std::move(curve));
}

py::list Params(const std::vector<CLasParam>& params)
{
    py::list out;
    for (const CLasParam& param : params) out.append(param);
    return out;
}

void BindParam(py::module_& m)
{
    auto field = [](CLasString CLasParam::*member) {
        return std::make_pair(
            [member](const CLasParam& p) { return Text(p.*member); },
            [member](CLasParam& p, const py::handle& value) { p.*member = Bytes(value); });
    };
    py::class_<CLasParam> param(m, "Param",
                                "One line of a section: MNEM.UNIT VALUE : DESCRIPTION {FORMAT} | "
                                "ASSOCIATION. Every field is text; setting one changes the line.");
    param.def(py::init([](const py::handle& mnemonic, const py::handle& unit,
                          const py::handle& value, const py::handle& description,
                          const py::handle& format, const py::handle& association) {
                  return CLasParam{Bytes(mnemonic),    Bytes(unit),   Bytes(value),
                                   Bytes(description), Bytes(format), Bytes(association)};
              }),
              py::arg("mnemonic"), py::arg("unit") = "", py::arg("value") = "",
              py::arg("description") = "", py::arg("format") = "", py::arg("association") = "",
              "A line of the given fields; those left out are empty.");
    struct Field {
        const char* name;
        CLasString CLasParam::*member;
        const char* doc;
    };
    const Field fields[] = {
        {"mnemonic", &CLasParam::m_mnemonic, "The name in front of the first period."},
        {"unit", &CLasParam::m_unit, "The unit directly behind that period; \"\" for none."},
        {"value", &CLasParam::m_value, "The value in front of the colon."},
        {"description", &CLasParam::m_description, "The description behind the colon."},
        {"descr", &CLasParam::m_description,
         "The description under the short name other LAS readers give it."},
        {"format", &CLasParam::m_format, "The format with its braces (\"{F}\"); \"\" for none."},
        {"association", &CLasParam::m_association, "What stands behind the last \"|\"."},
    };
    for (const Field& f : fields) {
        auto [get, set] = field(f.member);
        param.def_property(f.name, get, set, f.doc);
    }
    param.def("__eq__", [](const CLasParam& a, const CLasParam& b) {
        return a.m_mnemonic == b.m_mnemonic && a.m_unit == b.m_unit && a.m_value == b.m_value &&
               a.m_description == b.m_description && a.m_format == b.m_format &&
               a.m_association == b.m_association;
    });
    param.def("__repr__", [](const CLasParam& p) {
        return "Param(" + py::repr(Text(p.m_mnemonic)).cast<std::string>() +
               ", unit=" + py::repr(Text(p.m_unit)).cast<std::string>() +
               ", value=" + py::repr(Text(p.m_value)).cast<std::string>() +
               ", description=" + py::repr(Text(p.m_description)).cast<std::string>() + ")";
    });
}

void BindSection(py::module_& m)
{
    py::class_<CLasSection, SectionPtr>(m, "Section",
                                        "One section of a LAS file as the library holds it: "
                                        "lines (params) or, for a data section, curves.")
        .def(py::init([](const py::handle& name, int type, const py::handle& association) {
                 auto section = std::make_shared<CLasSection>();
                 section->m_name = Bytes(name);
                 section->m_type = static_cast<ELASSECTIONTYPE>(type);
                 section->m_association = Bytes(association);
                 return section;
             }),
             py::arg("name"), py::arg("type"), py::arg("association") = "",
             "An empty section of the given name, type (PARAMETER, DEFINITION, DATA, HEADER) "
             "and association.")
        .def_property_readonly(
            "name", [](const CLasSection& s) { return Text(s.m_name); },
            "The name behind the \"~\", with its index (\"Log_Data[2]\").")
        .def_property_readonly(
            "type", [](const CLasSection& s) { return int(s.m_type); },
            "PARAMETER, DEFINITION, DATA or HEADER (quarl's constants).")
        .def_property_readonly(
            "flags", [](const CLasSection& s) { return s.m_flags; },
            "Bits the reader sets: 16 for the log data, 32 for the log definition.")
        .def_property(
            "association", [](const CLasSection& s) { return Text(s.m_association); },
            [](CLasSection& s, const py::handle& v) { s.m_association = Bytes(v); },
            "Of a data section: the name of the section that defines its columns.")
        .def_property(
            "params", [](const CLasSection& s) { return Params(s.m_params); },
            [](CLasSection& s, std::vector<CLasParam> params) { s.m_params = std::move(params); },
            "The lines of a section that is not a data section (a list of Param).")
        .def_property_readonly(
            "curve_count", [](const CLasSection& s) { return s.m_curves.size(); },
            "The number of curves (columns) of a data section.")
        .def(
            "curve_definition",
            [](CLasSection& s, py::ssize_t i) { return CurveAt(s, i).m_definition; },
            py::arg("index"),
            "A copy of the definition line of curve `index` (negative counts from the end).")
        .def(
            "set_curve_definition",
            [](CLasSection& s, py::ssize_t i, const CLasParam& p) {
                CurveAt(s, i).m_definition = p;
            },
            py::arg("index"), py::arg("definition"),
            "Replaces the definition line of curve `index`.")
        .def(
            "curve_is_numeric",
            [](CLasSection& s, py::ssize_t i) { return CurveAt(s, i).m_isNumeric; },
            py::arg("index"), "Whether curve `index` holds numbers (else text).")
        .def("curve_values", &CurveValues, py::arg("index"),
             "The values of curve `index`: a numpy array over the library's numbers, or a list of "
             "str.")
        .def("add_numbers", &AddNumbers, py::arg("definition"), py::arg("values"),
             "Appends a numeric curve of the definition line and the values.")
        .def("add_texts", &AddTexts, py::arg("definition"), py::arg("values"),
             "Appends a text curve of the definition line and the values.")
        .def(
            "copy", [](const CLasSection& s) { return std::make_shared<CLasSection>(s); },
            "A deep copy of the section.")
        .def("__repr__", [](const CLasSection& s) {
            std::string text = "<Section ~" + py::str(Text(s.m_name)).cast<std::string>() + " " +
                               SectionTypeName(s.m_type);
            if (s.m_type == LASSECTION_DATA)
                text += ": " + std::to_string(s.m_curves.size()) + " curves, " +
                        std::to_string(s.m_curves.empty() ? 0 : s.m_curves[0].size()) + " rows";
            else
                text += ": " + std::to_string(s.m_params.size()) + " lines";
            return text + ">";
        });
}

}  // namespace

PYBIND11_MODULE(_quarl, m)
{
    m.doc() = "Native part of quarl: LAS 2.0 and 3.0 reading and writing.";
    // The version of the library the module loaded, which quarl.__version__ gives.
    m.attr("__version__") = VersionString();
    BindParam(m);
    BindSection(m);

    py::class_<CancelToken>(m, "CancelToken")
        .def(py::init<>())
        .def("set", [](CancelToken& t) { t.set = true; })
        .def_property_readonly("is_set", [](const CancelToken& t) { return t.set.load(); });

    py::class_<CLasNote>(m, "Note",
                         "What a read noticed: its line, its kind and a short text in words.")
        .def_readonly("line", &CLasNote::line,
                      "The 1-based physical line of the file; 0 for the file as a whole.")
        .def_property_readonly(
            "kind", [](const CLasNote& n) { return int(n.kind); },
            "The kind as a number (the values of the library's ELASNOTEKIND).")
        .def_property_readonly(
            "kind_name", [](const CLasNote& n) { return LasNoteKindName(n.kind); },
            "The name of the kind (\"LASNOTE_SHORT_ROW\").")
        .def_property_readonly(
            "text", [](const CLasNote& n) { return Text(n.text); }, "What was noticed, in words.")
        .def("__repr__", [](const CLasNote& n) {
            return "<Note line " + std::to_string(n.line) + " " + LasNoteKindName(n.kind) + ": " +
                   py::str(Text(n.text)).cast<std::string>() + ">";
        });

    py::class_<ReadResult, std::shared_ptr<ReadResult>>(m, "ReadResult")
        .def_readonly("sections", &ReadResult::sections)
        .def_property_readonly("result", [](const ReadResult& r) { return int(r.result); })
        .def_readonly("las3", &ReadResult::las3)
        .def_readonly("wrapped", &ReadResult::wrapped)
        .def_property_readonly("delimiter",
                               [](const ReadResult& r) { return std::string(1, r.delimiter); })
        .def_readonly("notes", &ReadResult::notes)
        .def_readonly("line", &ReadResult::line)
        .def_property_readonly("foreign", [](const ReadResult& r) { return py::bytes(r.foreign); })
        .def_readonly("index_ends", &ReadResult::indexEnds);

    m.def("read", &Read, py::arg("path"), py::arg("lenient"), py::arg("headers_only"),
          py::arg("progress") = py::none(), py::arg("cancel") = nullptr,
          py::arg("data") = py::none(), py::arg("threads") = 1);
    m.def("write", &Write, py::arg("path"), py::arg("sections"), py::arg("las3"),
          py::arg("delimiter"), py::arg("progress") = py::none(), py::arg("cancel") = nullptr,
          py::arg("to_text") = false, py::arg("repair") = false);
    m.def("transcode", &Transcode, py::arg("read"), py::arg("table"));
    m.def("encode", &Encode, py::arg("sections"), py::arg("table"), py::arg("name"));
    m.def("_time_native_read", &TimeNativeRead, py::arg("path"), py::arg("lenient"));
    m.def("result_name", [](int code) { return ResultName(static_cast<ELASFILEERROR>(code)); });
    m.def("result_description",
          [](int code) { return ResultDescription(static_cast<ELASFILEERROR>(code)); });
#ifdef QUARL_HAS_CATALOG
    BindCatalogModule(m);
#endif
}
