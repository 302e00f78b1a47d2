// The WebAssembly face of quarl: a read document that JavaScript holds by
// handle, its header and notes as plain objects, its curves as views of the
// module's memory, the LAS text the writer makes of it in repair mode, and
// the log plot that quarl-plot draws. quarl.mjs wraps it.
#include <emscripten/bind.h>
#include <emscripten/val.h>
#include <quarl/quarl.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

#if defined(__EMSCRIPTEN_PTHREADS__)
#include <emscripten/threading.h>

#include <atomic>
#include <climits>
#include <thread>
#endif

#include "common/log_facts.h"
#include "common/text.h"
#include "support/plot_request.h"
#include "support/read_notes.h"
#include "support/svg_plot.h"

using emscripten::val;

namespace quarl::web {

namespace {

// Mnemonics made unique as the Python package makes them: duplicates
// numbered from 1 ("SFLU:1", "SFLU:2"), empty ones "UNKNOWN", "UNKNOWN:2".
std::vector<std::string> UniqueNames(const std::vector<std::string>& mnemonics)
{
    std::map<std::string, int> counts, seen;
    std::vector<std::string> keys;
    for (const std::string& name : mnemonics) {
        std::string key = common::Trim(name);
        for (char& c : key)
            if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        keys.push_back(key);
        ++counts[key];
    }
    std::vector<std::string> names;
    for (size_t i = 0; i < mnemonics.size(); ++i) {
        const std::string name = common::Trim(mnemonics[i]);
        const int n = ++seen[keys[i]];
        if (name.empty())
            names.push_back(n == 1 ? "UNKNOWN" : "UNKNOWN:" + std::to_string(n));
        else if (counts[keys[i]] > 1)
            names.push_back(name + ":" + std::to_string(n));
        else
            names.push_back(name);
    }
    return names;
}

std::vector<std::string> ParamNames(const std::vector<CLasParam>& params)
{
    std::vector<std::string> mnemonics;
    for (const CLasParam& p : params) mnemonics.push_back(p.m_mnemonic);
    return UniqueNames(mnemonics);
}

std::vector<std::string> CurveNames(const CLasSection& data)
{
    std::vector<std::string> mnemonics;
    for (const CLasCurve& c : data.m_curves) mnemonics.push_back(c.m_definition.m_mnemonic);
    return UniqueNames(mnemonics);
}

val ParamObject(const CLasParam& p)
{
    val item = val::object();
    item.set("value", common::Trim(p.m_value));
    item.set("unit", std::string(p.m_unit));
    item.set("description", common::Trim(p.m_description));
    return item;
}

// mnemonic -> {value, unit, description}
val ParamsObject(const std::vector<CLasParam>& params)
{
    val out = val::object();
    const std::vector<std::string> names = ParamNames(params);
    for (size_t i = 0; i < params.size(); ++i) out.set(names[i], ParamObject(params[i]));
    return out;
}

bool IsParameterSection(const CLasSection& s)
{
    return s.m_type == LASSECTION_PARAMETER &&
           (common::EqualsNoCase(s.m_name, "Parameter") || common::EqualsNoCase(s.m_name, "P") ||
            common::EqualsNoCase(s.m_name, "Log_Parameter"));
}

}  // namespace

#if defined(__EMSCRIPTEN_PTHREADS__)
// Bytes that come into the module's memory while a read runs on a thread of
// its own: a stream over them whose reads wait until the bytes they ask for
// have come, or fail once the bytes are given up.
class ArrivingBytes {
public:
    ArrivingBytes(const char* data, size_t size) : m_data(data), m_size(size) {}

    // The first `bytes` bytes are there (called on the page's thread).
    void Arrived(size_t bytes)
    {
        m_arrived.store(static_cast<uint32_t>(bytes));
        emscripten_futex_wake(&m_arrived, INT_MAX);
    }
    // No more bytes will come: waiting reads fail.
    void GiveUp()
    {
        m_givenUp.store(true);
        emscripten_futex_wake(&m_arrived, INT_MAX);
    }
    std::FILE* Open()
    {
        cookie_io_functions_t io{};
        io.read = &ArrivingBytes::ReadSome;
        io.seek = &ArrivingBytes::SeekTo;
        return fopencookie(this, "rb", io);
    }

private:
    static ssize_t ReadSome(void* self, char* out, size_t n)
    {
        ArrivingBytes& s = *static_cast<ArrivingBytes*>(self);
        n = std::min(n, s.m_size - s.m_at);
        for (;;) {
            const uint32_t arrived = s.m_arrived.load();
            if (arrived >= s.m_at + n) break;
            if (s.m_givenUp.load()) return -1;
            // A give-up wakes the wait; the bound only keeps it from
            // depending on that.
            emscripten_futex_wait(&s.m_arrived, arrived, 50.0);
        }
        std::memcpy(out, s.m_data + s.m_at, n);
        s.m_at += n;
        return static_cast<ssize_t>(n);
    }
    static int SeekTo(void* self, off_t* offset, int whence)
    {
        ArrivingBytes& s = *static_cast<ArrivingBytes*>(self);
        const off_t base = whence == SEEK_SET   ? 0
                           : whence == SEEK_CUR ? off_t(s.m_at)
                                                : off_t(s.m_size);
        if (base + *offset < 0 || base + *offset > off_t(s.m_size)) return -1;
        s.m_at = size_t(base + *offset);
        *offset = off_t(s.m_at);
        return 0;
    }

    const char* m_data;
    size_t m_size;
    size_t m_at = 0;
    std::atomic<uint32_t> m_arrived{0};
    std::atomic<bool> m_givenUp{false};
};
#endif

class Document {
public:
    Document() = default;
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
#if defined(__EMSCRIPTEN_PTHREADS__)
    // A document deleted while its read runs ends the read first.
    ~Document()
    {
        if (!m_readThread.joinable()) return;
        m_arriving->GiveUp();
        m_readThread.join();
    }
#endif

    // Reads `size` bytes at `data` (module memory the caller owns); returns
    // the result code. Lenient unless `strict`, bounded as the programs are.
    // `onProgress`, a function or undefined, hears the share read (0 to 100)
    // each time it has grown by a whole percent, and stops the read by
    // returning true.
    // `threads`: for the rows, as CLasReadOptions::threads (1: this thread
    // alone; 0: a thread per core, where the module has threads).
    int Read(uintptr_t data, size_t size, bool strict, const std::string& name, val onProgress,
             int threads)
    {
        Progress progress{onProgress, -1.0};
        const bool report = onProgress.typeOf().as<std::string>() == "function";
        m_reader.SetStatusCallback(&progress, report ? &Progress::Report : nullptr);
        m_reader.SetOptions(Options(strict, size, threads));
        m_name = name;
        m_result =
            m_reader.OpenBuffer(reinterpret_cast<const void*>(data), size, tessel::TxString(name));
        m_reader.SetStatusCallback(nullptr, nullptr);
        return AfterRead();
    }

#if defined(__EMSCRIPTEN_PTHREADS__)
    // Read as Read does, on a thread of its own, while the bytes at `data`
    // come in: `arrived` tells of each piece, `giveUp` of a file that will
    // not come whole. The page waits on the 32-bit word at `doneFlag` (0
    // until the read ends), then calls finishRead for the result code.
    void StartRead(uintptr_t data, size_t size, bool strict, const std::string& name, int threads)
    {
        m_reader.SetOptions(Options(strict, size, threads));
        m_name = name;
        m_arriving.reset(new ArrivingBytes(reinterpret_cast<const char*>(data), size));
        m_done.store(0);
        m_readThread = std::thread([this] {
            int result = LASFILE_OUT_OF_MEMORY;
            try {
                result = m_reader.OpenStream(m_arriving->Open(), tessel::TxString(m_name));
            } catch (...) {
                // Out of memory on the way: the read stops there.
            }
            m_result = result;
            m_done.store(1);
            emscripten_futex_wake(&m_done, INT_MAX);
        });
    }
    void Arrived(size_t bytes)
    {
        m_arriving->Arrived(bytes);
    }
    void GiveUp()
    {
        m_arriving->GiveUp();
    }
    uintptr_t DoneFlag() const
    {
        return reinterpret_cast<uintptr_t>(&m_done);
    }
    int FinishRead()
    {
        m_readThread.join();
        m_arriving.reset();
        return AfterRead();
    }
#endif

private:
    static CLasReadOptions Options(bool strict, size_t size, int threads)
    {
        CLasReadOptions options;
#if defined(__EMSCRIPTEN_PTHREADS__)
        options.threads = static_cast<unsigned>(threads < 0 ? 1 : threads);
#else
        (void)threads;  // a module without threads reads on this one
#endif
        if (!strict) {
            options.lenient = true;
            options.maxBytes = 64ull * 1024 * 1024 + 64ull * size;
        }
        return options;
    }

    // What a read leaves for the accessors: the well section, the log data
    // and NULL values as NaN.
    int AfterRead()
    {
        if (m_result != LASFILE_OK) return m_result;
        m_well = m_reader.size() > 1 ? m_reader.GetWellHeadersPtr() : nullptr;
        m_hasNull = common::NullValueOf(m_well.get(), &m_nullValue);
        for (const auto& section : m_reader) {
            if (section->m_type != LASSECTION_DATA) continue;
            if (!m_logData || ((section->m_flags & CLasSection::kFlagLogData) &&
                               !(m_logData->m_flags & CLasSection::kFlagLogData)))
                m_logData = section;
            NullsToNaN(*section);
        }
        return m_result;
    }

public:
    std::string ResultText() const
    {
        return ResultName(static_cast<ELASFILEERROR>(m_result));
    }
    double Line() const
    {
        return static_cast<double>(m_reader.GetLineNumber());
    }

    val Header() const
    {
        val out = val::object();
        const CLasSection* version = m_reader.empty() ? nullptr : &m_reader.GetVersionHeaders();
        out.set("version", common::VersionText(version));
        out.set("las3", m_reader.IsLas3());
        out.set("wrapped", m_reader.IsWrapped());
        out.set("delimiter", std::string(1, m_reader.GetDelimiter()));
        out.set("well", m_well ? ParamsObject(m_well->m_params) : val::object());
        std::vector<CLasParam> params;
        for (const auto& s : m_reader)
            if (IsParameterSection(*s))
                params.insert(params.end(), s->m_params.begin(), s->m_params.end());
        out.set("params", ParamsObject(params));
        if (m_hasNull) out.set("null", m_nullValue);
        out.set("sections", Sections());
        return out;
    }

    // {line, kind, title, message} for each note of the read, and the one
    // line the programs print.
    val Notes() const
    {
        val list = val::array();
        for (const CLasNote& note : m_reader.GetNotes()) {
            val item = val::object();
            item.set("line", static_cast<double>(note.line));
            item.set("kind", std::string(LasNoteKindName(note.kind)));
            item.set("title", apps::NoteKindTitle(note.kind));
            item.set("message", std::string(note.text));
            list.call<void>("push", item);
        }
        return list;
    }
    std::string NotesSummary() const
    {
        return apps::NotesSummary(m_reader.GetNotes(), m_name);
    }

    // The curves of data section `index` (-1: the log data), as unique names.
    val CurveList(int index) const
    {
        val list = val::array();
        const CLasSection* data = DataSection(index);
        if (!data) return list;
        for (const std::string& name : CurveNames(*data)) list.call<void>("push", name);
        return list;
    }

    // A view of a numeric curve's values in the module's memory, NULL as
    // NaN; null for a text curve or a name not found. It stays valid until
    // the document is freed or the memory grows.
    val Curve(int index, const std::string& name) const
    {
        const CLasCurve* curve = FindCurve(index, name);
        if (!curve || !curve->m_isNumeric) return val::null();
        return val(emscripten::typed_memory_view(curve->m_numbers.size(), curve->m_numbers.data()));
    }

    // {unit, description, min, max, nulls, count, numeric} for each curve of
    // data section `index`.
    val CurveInfo(int index) const
    {
        val list = val::array();
        const CLasSection* data = DataSection(index);
        if (!data) return list;
        const std::vector<std::string> names = CurveNames(*data);
        for (size_t i = 0; i < names.size(); ++i) {
            const CLasCurve& c = data->m_curves[i];
            const common::CurveStats stats = common::StatsOf(c, false, 0.0);
            val item = ParamObject(c.m_definition);
            item.set("name", names[i]);
            item.set("mnemonic", std::string(c.m_definition.m_mnemonic));
            item.set("numeric", c.m_isNumeric);
            item.set("count", stats.count);
            item.set("nulls", stats.nulls);
            item.set("min", stats.min);
            item.set("max", stats.max);
            list.call<void>("push", item);
        }
        return list;
    }

    // The document as LAS 2.0 or 3.0 text, by the writer in repair mode,
    // named `name` in its comment: {text, repairs} or {error}.
    val ToLas(bool las3, const std::string& name) const
    {
        val out = val::object();
        CLasWriter writer;
        writer.SetFormat(las3, ' ');
        writer.SetRepair(true);
        for (const auto& s : m_reader) {
            CLasSection copy = *s;
            if (copy.m_type == LASSECTION_DATA) NaNToNulls(copy);
            if (writer.AddSection(copy) != LASFILE_OK) {
                out.set("error", "section " + std::string(s->m_name) + ": " + WriterError(writer));
                return out;
            }
        }
        std::string text;
        if (writer.WriteToString(text, tessel::TxString(name)) != LASFILE_OK) {
            out.set("error", WriterError(writer));
            return out;
        }
        val repairs = val::array();
        for (const CLasRepair& r : writer.GetRepairs())
            repairs.call<void>("push", std::string(r.text));
        out.set("text", text);
        out.set("repairs", repairs);
        return out;
    }

    // Data section `index` as CSV: a line of curve names, then one line per
    // row, "%.15g" as the writer writes, NULL as an empty field.
    std::string Csv(int index) const
    {
        const CLasSection* data = DataSection(index);
        if (!data) return std::string();
        std::string out;
        const std::vector<std::string> names = CurveNames(*data);
        for (size_t i = 0; i < names.size(); ++i) out += (i ? "," : "") + CsvField(names[i]);
        out += "\n";
        size_t rows = 0;
        for (const CLasCurve& c : data->m_curves)
            rows = std::max(rows, static_cast<size_t>(c.size()));
        for (size_t r = 0; r < rows; ++r) {
            for (size_t i = 0; i < data->m_curves.size(); ++i) {
                if (i) out += ',';
                out += CsvCell(data->m_curves[i], r);
            }
            out += '\n';
        }
        return out;
    }

    // The SVG log plot of the log data, laid out as quarl-plot lays it out.
    // `options`: tracks (a list of lists of curve names, ":log" behind the
    // last one for logarithmic scales), top and bottom depths, height and
    // trackWidth in pixels. {svg} or {error}, with notes.
    val Plot(const val& options) const
    {
        val out = val::object();
        if (!m_logData) return out.set("error", std::string("no data section")), out;
        apps::PlotRequest request = Request(options);
        CLasSection window = Window(*m_logData, options);
        const int depthIndex = common::DepthCurveIndex(window);
        if (depthIndex < 0) return out.set("error", std::string("no numeric depth curve")), out;
        apps::TrackChoice choice = apps::ChooseTracks(window, depthIndex, request);
        val notes = val::array();
        for (const std::string& note : choice.notes) notes.call<void>("push", note);
        out.set("notes", notes);
        if (!choice.error.empty()) return out.set("error", choice.error), out;
        if (choice.tracks.empty()) return out.set("error", std::string("no curve to draw")), out;
        apps::PlotInput plot;
        plot.hasNull = m_hasNull;
        plot.nullValue = m_nullValue;
        const CLasCurve& depth = window.m_curves[static_cast<size_t>(depthIndex)];
        plot.depths = depth.m_numbers;
        plot.depthMnemonic = depth.m_definition.m_mnemonic;
        plot.depthUnit = depth.m_definition.m_unit;
        plot.dataHeight = Number(options, "height", 0.0);
        plot.trackWidth = request.trackWidth;
        plot.title = WellValue("WELL");
        if (plot.title.empty()) plot.title = m_name;
        plot.subtitle = m_name;
        for (const char* mnemonic : {"COMP", "FLD", "UWI", "API"}) {
            const std::string text = WellValue(mnemonic);
            if (!text.empty()) plot.subtitle += "  \xC2\xB7  " + text;
        }
        plot.tracks = std::move(choice.tracks);
        plot.depthAfter = choice.depthAfter;
        out.set("svg", apps::RenderLogPlot(plot));
        return out;
    }

private:
    struct Progress {
        val function;
        double last;
        static int32_t Report(void* context, double percent, const char*)
        {
            Progress& self = *static_cast<Progress*>(context);
            if (percent < self.last + 1.0 && percent < 100.0) return 0;
            self.last = percent;
            // True from the function stops the read (LASFILE_CANCELLED).
            return self.function(percent).as<bool>() ? 1 : 0;
        }
    };

    val Sections() const
    {
        val list = val::array();
        for (const auto& s : m_reader) {
            val item = val::object();
            item.set("name", std::string(s->m_name));
            item.set("type", std::string(SectionTypeName(s->m_type)));
            item.set("logData", (s->m_flags & CLasSection::kFlagLogData) != 0);
            if (s->m_type == LASSECTION_DATA) {
                item.set("association", std::string(s->m_association));
                item.set("rows", s->m_curves.empty() ? 0 : s->m_curves[0].size());
            } else {
                item.set("params", ParamsObject(s->m_params));
            }
            list.call<void>("push", item);
        }
        return list;
    }

    const CLasSection* DataSection(int index) const
    {
        if (index < 0) return m_logData.get();
        if (static_cast<uint64_t>(index) >= m_reader.size()) return nullptr;
        const CLasSection& s = m_reader.GetSection(static_cast<uint64_t>(index));
        return s.m_type == LASSECTION_DATA ? &s : nullptr;
    }

    const CLasCurve* FindCurve(int index, const std::string& name) const
    {
        const CLasSection* data = DataSection(index);
        if (!data) return nullptr;
        const std::vector<std::string> names = CurveNames(*data);
        for (size_t i = 0; i < names.size(); ++i)
            if (names[i] == name) return &data->m_curves[i];
        return nullptr;
    }

    void NullsToNaN(CLasSection& data) const
    {
        if (!m_hasNull) return;
        // A select on local copies, which the compiler turns into SIMD.
        const double null = m_nullValue;
        const double nan = std::numeric_limits<double>::quiet_NaN();
        for (CLasCurve& c : data.m_curves) {
            double* v = c.m_numbers.data();
            const size_t n = c.m_numbers.size();
            for (size_t i = 0; i < n; ++i) v[i] = v[i] == null ? nan : v[i];
        }
    }

    void NaNToNulls(CLasSection& data) const
    {
        if (!m_hasNull) return;
        for (CLasCurve& c : data.m_curves)
            for (double& v : c.m_numbers)
                if (std::isnan(v)) v = m_nullValue;
    }

    std::string WellValue(const char* mnemonic) const
    {
        CLasParam param;
        if (m_well && m_well->FindParameterByMnemonic(mnemonic, &param) >= 0)
            return common::Trim(param.m_value);
        return std::string();
    }

    static std::string WriterError(const CLasWriter& writer)
    {
        std::string text = ResultName(writer.GetLastError());
        if (const char* section = writer.GetLastErrorSection())
            text += std::string(", section ") + section;
        if (const char* param = writer.GetLastErrorParam())
            text += std::string(", mnemonic ") + param;
        return text;
    }

    static std::string CsvField(const std::string& text)
    {
        if (text.find_first_of(",\"\n") == std::string::npos) return text;
        std::string out = "\"";
        for (char c : text) out += c == '"' ? std::string("\"\"") : std::string(1, c);
        return out + "\"";
    }

    static std::string CsvCell(const CLasCurve& c, size_t row)
    {
        if (!c.m_isNumeric)
            return row < c.m_strings.size() ? CsvField(std::string(c.m_strings[row])) : "";
        if (row >= c.m_numbers.size() || std::isnan(c.m_numbers[row])) return "";
        return common::FormatNumber(c.m_numbers[row], 15);
    }

    static double Number(const val& options, const char* key, double fallback)
    {
        if (options.isUndefined() || options.isNull()) return fallback;
        const val v = options[key];
        return v.isNumber() ? v.as<double>() : fallback;
    }

    static apps::PlotRequest Request(const val& options)
    {
        apps::PlotRequest request;
        request.trackWidth = Number(options, "trackWidth", 150.0);
        if (request.trackWidth < 60 || request.trackWidth > 1000) request.trackWidth = 150.0;
        if (options.isUndefined() || options.isNull() || !options["tracks"].isArray())
            return request;
        const std::vector<val> tracks = emscripten::vecFromJSArray<val>(options["tracks"]);
        for (const val& track : tracks) {
            if (!track.isArray()) continue;
            std::string list;
            for (const std::string& name : emscripten::vecFromJSArray<std::string>(track))
                list += (list.empty() ? "" : ",") + name;
            apps::TrackRequest request1;
            if (apps::ParseTrackList(list, &request1)) request.tracks.push_back(request1);
        }
        return request;
    }

    // The rows of `data` whose depth lies from options.top to options.bottom
    // (all of them without both).
    static CLasSection Window(const CLasSection& data, const val& options)
    {
        const double top = Number(options, "top", std::nan(""));
        const double bottom = Number(options, "bottom", std::nan(""));
        const int depthIndex = common::DepthCurveIndex(data);
        if (std::isnan(top) || std::isnan(bottom) || depthIndex < 0) return data;
        const double low = std::min(top, bottom), high = std::max(top, bottom);
        CLasSection window = data;
        const std::vector<double>& depths =
            data.m_curves[static_cast<size_t>(depthIndex)].m_numbers;
        for (size_t i = 0; i < data.m_curves.size(); ++i) {
            const CLasCurve& from = data.m_curves[i];
            CLasCurve& to = window.m_curves[i];
            to.m_numbers.clear();
            to.m_strings.clear();
            for (size_t r = 0; r < depths.size(); ++r) {
                if (!(depths[r] >= low && depths[r] <= high)) continue;
                if (from.m_isNumeric && r < from.m_numbers.size())
                    to.m_numbers.push_back(from.m_numbers[r]);
                if (!from.m_isNumeric && r < from.m_strings.size())
                    to.m_strings.push_back(from.m_strings[r]);
            }
        }
        return window;
    }

    CLasReader m_reader;
    std::string m_name;
    int m_result = LASFILE_WRONG_STATE;
#if defined(__EMSCRIPTEN_PTHREADS__)
    std::unique_ptr<ArrivingBytes> m_arriving;
    std::thread m_readThread;
    std::atomic<uint32_t> m_done{0};
#endif
    std::shared_ptr<CLasSection> m_well;
    std::shared_ptr<CLasSection> m_logData;
    bool m_hasNull = false;
    double m_nullValue = 0.0;
};

}  // namespace quarl::web

EMSCRIPTEN_BINDINGS(quarl)
{
    using quarl::web::Document;
    emscripten::function(
        "version", +[]() { return std::string(quarl::VersionString()); });
    emscripten::class_<Document>("Document")
        .constructor<>()
        .function("read", &Document::Read)
#if defined(__EMSCRIPTEN_PTHREADS__)
        .function("startRead", &Document::StartRead)
        .function("arrived", &Document::Arrived)
        .function("giveUp", &Document::GiveUp)
        .function("doneFlag", &Document::DoneFlag)
        .function("finishRead", &Document::FinishRead)
#endif
        .function("result", &Document::ResultText)
        .function("line", &Document::Line)
        .function("header", &Document::Header)
        .function("notes", &Document::Notes)
        .function("notesSummary", &Document::NotesSummary)
        .function("curveList", &Document::CurveList)
        .function("curve", &Document::Curve)
        .function("curveInfo", &Document::CurveInfo)
        .function("toLas", &Document::ToLas)
        .function("csv", &Document::Csv)
        .function("plot", &Document::Plot);
}
