// quarl-info FILE... [--json]: reads each LAS file and prints what it holds:
// format, sections, the key Well parameters, a table of the curves of each
// data section, the stepping check, and how fast the file was read.
#include <quarl/quarl.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#if defined(_WIN32)
#include <io.h>
#define QUARL_ISATTY(fd) _isatty(fd)
#define QUARL_FILENO(f) _fileno(f)
#else
#include <unistd.h>
#define QUARL_ISATTY(fd) isatty(fd)
#define QUARL_FILENO(f) fileno(f)
#endif

#include "common/log_facts.h"
#include "common/text.h"
#include "support/command_line.h"
#include "support/program.h"
#include "support/read_notes.h"

namespace ex = quarl::apps;
namespace common = quarl::common;

namespace {

// Files at least this large get a progress bar on a terminal.
constexpr long long kProgressBytes = 4LL * 1024 * 1024;

// How much of a file the text output shows, so that a file of many sections
// or curves still gives a page to read; --all lifts the bounds.
struct Bounds {
    size_t rows = 40;          // sections, or curves of one data section
    size_t dataSections = 10;  // data sections shown with their curves
    size_t text = 60;          // bytes of one table cell
};

void Usage(std::FILE* to)
{
    std::fprintf(
        to,
        "usage: quarl-info FILE... [--json] [--all] [--strict] [--progress|--no-progress]\n"
        "  --json         print the facts as JSON (an object, or an array for several files)\n"
        "  --all          list every section and curve (default: the first 40 of each list,\n"
        "                 the first 10 data sections, texts cut to 60 bytes)\n"
        "  --strict       read exactly by the format's rules; by default the files are read\n"
        "                 leniently and the notes of the read go to stderr\n"
        "  --progress     always show a progress bar on stderr\n"
        "  --no-progress  never show one (default: on a terminal, for files of 4 MB or more)\n"
        "  -h, --help     print this help and exit\n"
        "  --version      print the version and exit\n");
}

struct Progress {
    int lastWidth = -1;
    bool done = false;
};

int32_t DrawProgress(void* context, double percent, const char* message)
{
    auto* progress = static_cast<Progress*>(context);
    if (progress->done) return 0;
    const int width = 40;
    int filled = static_cast<int>(percent / 100.0 * width + 0.5);
    if (filled < 0) filled = 0;
    if (filled > width) filled = width;
    if (filled == progress->lastWidth && percent < 100.0) return 0;
    progress->lastWidth = filled;
    std::string bar(static_cast<size_t>(filled), '#');
    bar.append(static_cast<size_t>(width - filled), '.');
    std::fprintf(stderr, "\r[%s] %3.0f%%  %s", bar.c_str(), percent, message ? message : "");
    if (percent >= 100.0) {
        std::fprintf(stderr, "\n");
        progress->done = true;
    }
    std::fflush(stderr);
    return 0;
}

long long FileSize(const std::string& path)
{
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    if (!in) return -1;
    return static_cast<long long>(in.tellg());
}

int32_t SectionLines(const quarl::CLasSection& section)
{
    if (section.m_type == quarl::LASSECTION_DATA) {
        int32_t rows = 0;
        for (const quarl::CLasCurve& curve : section.m_curves) rows = std::max(rows, curve.size());
        return rows;
    }
    return static_cast<int32_t>(section.m_params.size());
}

// The format of a file: the VERS text, and what the reader made of it.
struct Format {
    std::string version = "?";
    bool isLas3 = false;
    bool isWrapped = false;
    char delimiter = ' ';
};

// Everything printed about one file.
struct Facts {
    std::string path;
    quarl::ELASFILEERROR result = quarl::LASFILE_OK;
    bool opened = false;
    long long bytes = -1;
    double seconds = 0.0;
    Format format;
    bool hasNull = false;
    double nullValue = 0.0;
    quarl::ELASFILEERROR stepping = quarl::LASFILE_WRONG_STATE;
    bool hasLogData = false;  // a log data section holds at least one row
    std::string step;
    std::vector<std::shared_ptr<quarl::CLasSection>> sections;
    bool strict = false;
    std::vector<quarl::CLasNote> notes;
};

double MegabytesPerSecond(const Facts& f)
{
    if (f.bytes <= 0 || f.seconds <= 0) return 0.0;
    return static_cast<double>(f.bytes) / (1024.0 * 1024.0) / f.seconds;
}

const char* const kWellKeys[] = {"STRT", "STOP", "STEP", "NULL", "WELL", "COMP", "UWI", "API"};

// ------------------------------------------------------------------ text

// Left-aligned columns; a column whose header starts with '>' is right-aligned.
// Cells longer than `cell` bytes are cut.
void PrintTable(const std::vector<std::string>& header, std::vector<std::vector<std::string>> rows,
                const char* indent, size_t cell)
{
    for (auto& row : rows)
        for (std::string& text : row) text = common::Shorten(text, cell);
    std::vector<size_t> widths(header.size(), 0);
    std::vector<bool> right(header.size(), false);
    std::vector<std::string> head = header;
    for (size_t c = 0; c < head.size(); ++c) {
        if (!head[c].empty() && head[c][0] == '>') {
            right[c] = true;
            head[c].erase(0, 1);
        }
        widths[c] = head[c].size();
    }
    for (const auto& row : rows)
        for (size_t c = 0; c < row.size() && c < widths.size(); ++c)
            widths[c] = std::max(widths[c], row[c].size());
    auto line = [&](const std::vector<std::string>& cells) {
        std::string text = indent;
        for (size_t c = 0; c < cells.size(); ++c) {
            const std::string pad(widths[c] - std::min(widths[c], cells[c].size()), ' ');
            const bool last = c + 1 == cells.size();
            text += right[c] ? pad + cells[c] : cells[c] + (last ? "" : pad);
            if (!last) text += "  ";
        }
        while (!text.empty() && text.back() == ' ') text.pop_back();
        std::printf("%s\n", text.c_str());
    };
    line(head);
    for (const auto& row : rows) line(row);
}

// The line that stands for the items a bounded list leaves out.
void PrintMore(size_t shown, size_t total, const char* what)
{
    if (total > shown)
        std::printf("  ... and %zu more %s (--all lists them)\n", total - shown, what);
}

void PrintText(const Facts& f, const Bounds& bounds)
{
    std::printf("%s\n", f.path.c_str());
    if (!f.opened) {
        std::printf("  cannot be opened: %s (%s)\n", quarl::ResultName(f.result),
                    quarl::ResultDescription(f.result));
        return;
    }
    if (f.result != quarl::LASFILE_OK) {
        std::printf("  READ FAILED: %s (%s)\n", quarl::ResultName(f.result),
                    quarl::ResultDescription(f.result));
        if (f.sections.empty()) {
            std::printf("  nothing was read%s\n", f.result == quarl::LASFILE_BAD_FORMAT
                                                      ? ": the file does not start like a LAS file"
                                                      : "");
            return;
        }
        std::string names;
        const size_t named = std::min(f.sections.size(), bounds.dataSections);
        for (size_t i = 0; i < named; ++i)
            names +=
                (names.empty() ? "" : ", ") + common::Shorten(f.sections[i]->m_name, bounds.text);
        if (named < f.sections.size())
            names += " and " + std::to_string(f.sections.size() - named) + " more";
        std::printf("  read before the failure: %zu section(s): %s; the last may be incomplete\n",
                    f.sections.size(), names.c_str());
    }
    std::printf("  LAS %s, %s, delimiter %s\n", f.format.version.c_str(),
                f.format.isWrapped ? "wrapped" : "not wrapped",
                ex::DelimiterName(f.format.delimiter).c_str());
    char timing[160];
    std::snprintf(timing, sizeof timing, "  read %lld bytes in %.2f ms (%.1f MB/s)\n", f.bytes,
                  f.seconds * 1000.0, MegabytesPerSecond(f));
    std::printf("%s", timing);

    std::printf("\nSections (%zu)\n", f.sections.size());
    std::vector<std::vector<std::string>> rows;
    const size_t listed = std::min(f.sections.size(), bounds.rows);
    for (size_t i = 0; i < listed; ++i) {
        const quarl::CLasSection& s = *f.sections[i];
        const int32_t count = SectionLines(s);
        std::string lines = std::to_string(count) +
                            (s.m_type == quarl::LASSECTION_DATA ? " row" : " line") +
                            (count == 1 ? "" : "s");
        rows.push_back({std::to_string(i), s.m_name, quarl::SectionTypeName(s.m_type), lines,
                        s.m_association.empty() ? "" : "-> " + s.m_association});
    }
    PrintTable({">#", "Name", "Type", ">Lines", ""}, rows, "  ", bounds.text);
    PrintMore(listed, f.sections.size(), "sections");

    if (f.sections.size() > 1) {
        const quarl::CLasSection& well = *f.sections[1];
        std::printf("\nKey parameters of the Well section (%s)\n", well.m_name.c_str());
        rows.clear();
        for (const char* key : kWellKeys) {
            quarl::CLasParam p;
            if (well.FindParameterByMnemonic(key, &p) < 0) continue;
            rows.push_back({p.m_mnemonic, p.m_value, p.m_unit, p.m_description});
        }
        if (rows.empty())
            std::printf("  (none of STRT, STOP, STEP, NULL, WELL, COMP, UWI, API)\n");
        else
            PrintTable({"Mnem", "Value", "Unit", "Description"}, rows, "  ", bounds.text);
    }

    size_t dataSections = 0;
    for (const auto& sp : f.sections) {
        const quarl::CLasSection& s = *sp;
        if (s.m_type != quarl::LASSECTION_DATA) continue;
        if (++dataSections > bounds.dataSections) continue;
        std::printf("\nData section %s (definition %s): %zu curve(s), %d row(s)\n",
                    s.m_name.c_str(), s.m_association.c_str(), s.m_curves.size(), SectionLines(s));
        rows.clear();
        const size_t curves = std::min(s.m_curves.size(), bounds.rows);
        for (size_t i = 0; i < curves; ++i) {
            const quarl::CLasCurve& c = s.m_curves[i];
            const common::CurveStats st = common::StatsOf(c, f.hasNull, f.nullValue);
            rows.push_back({c.m_definition.m_mnemonic, c.m_definition.m_unit,
                            c.m_isNumeric ? "numeric" : "text", std::to_string(st.count),
                            c.m_isNumeric ? std::to_string(st.nulls) : "",
                            c.m_isNumeric ? common::FormatNumber(st.min, 8) : "",
                            c.m_isNumeric ? common::FormatNumber(st.max, 8) : "",
                            common::Trim(c.m_definition.m_description)});
        }
        PrintTable({"Mnem", "Unit", "Kind", ">Values", ">Nulls", ">Min", ">Max", "Description"},
                   rows, "  ", bounds.text);
        PrintMore(curves, s.m_curves.size(), "curves");
    }
    if (dataSections > bounds.dataSections) {
        std::printf("\n");
        PrintMore(bounds.dataSections, dataSections, "data sections");
    }
    if (f.hasNull)
        std::printf("\n  (min and max leave out the NULL value %s)\n",
                    common::FormatNumber(f.nullValue, 15).c_str());

    // With no rows of log data there is nothing whose stepping could be told.
    if (!f.hasLogData) {
        std::printf("\nStepping: not checked: no log data\n");
        return;
    }
    std::printf("\nStepping: %s: %s%s\n", quarl::ResultName(f.stepping),
                quarl::SteppingDescription(f.stepping),
                f.step.empty() || f.stepping == quarl::LASFILE_MISSING_SECTION
                    ? ""
                    : (" (STEP " + f.step + ")").c_str());
}

// ------------------------------------------------------------------ JSON

std::string Json(const Facts& f)
{
    std::string j = "{\n";
    j += "  \"file\": " + common::JsonString(f.path) + ",\n";
    j += "  \"result\": " + common::JsonString(quarl::ResultName(f.result)) + ",\n";
    j += "  \"ok\": " + std::string(f.result == quarl::LASFILE_OK ? "true" : "false") + ",\n";
    j += "  \"bytes\": " + std::to_string(f.bytes) + ",\n";
    j += "  \"read_seconds\": " + common::JsonNumber(f.seconds) + ",\n";
    j += "  \"mb_per_second\": " + common::JsonNumber(MegabytesPerSecond(f)) + ",\n";
    j += "  \"version\": " + common::JsonString(f.format.version) + ",\n";
    j += "  \"las3\": " + std::string(f.format.isLas3 ? "true" : "false") + ",\n";
    j += "  \"wrapped\": " + std::string(f.format.isWrapped ? "true" : "false") + ",\n";
    j += "  \"delimiter\": " + common::JsonString(ex::DelimiterName(f.format.delimiter)) + ",\n";
    j +=
        "  \"null_value\": " + (f.hasNull ? common::JsonNumber(f.nullValue) : std::string("null")) +
        ",\n";
    j += "  \"sections\": [";
    for (size_t i = 0; i < f.sections.size(); ++i) {
        const quarl::CLasSection& s = *f.sections[i];
        j += std::string(i ? "," : "") + "\n    {\"name\": " + common::JsonString(s.m_name) +
             ", \"type\": " + common::JsonString(quarl::SectionTypeName(s.m_type)) +
             ", \"lines\": " + std::to_string(SectionLines(s)) +
             ", \"association\": " + common::JsonString(s.m_association) + "}";
    }
    j += f.sections.empty() ? "],\n" : "\n  ],\n";
    j += "  \"well\": {";
    bool first = true;
    if (f.sections.size() > 1) {
        for (const char* key : kWellKeys) {
            quarl::CLasParam p;
            if (f.sections[1]->FindParameterByMnemonic(key, &p) < 0) continue;
            j += std::string(first ? "" : ",") + "\n    " + common::JsonString(key) +
                 ": {\"value\": " + common::JsonString(p.m_value) +
                 ", \"unit\": " + common::JsonString(p.m_unit) +
                 ", \"description\": " + common::JsonString(p.m_description) + "}";
            first = false;
        }
    }
    j += first ? "},\n" : "\n  },\n";
    j += "  \"data\": [";
    first = true;
    for (const auto& sp : f.sections) {
        const quarl::CLasSection& s = *sp;
        if (s.m_type != quarl::LASSECTION_DATA) continue;
        j += std::string(first ? "" : ",") + "\n    {\"name\": " + common::JsonString(s.m_name) +
             ", \"definition\": " + common::JsonString(s.m_association) +
             ", \"rows\": " + std::to_string(SectionLines(s)) + ", \"curves\": [";
        for (size_t c = 0; c < s.m_curves.size(); ++c) {
            const quarl::CLasCurve& curve = s.m_curves[c];
            const common::CurveStats st = common::StatsOf(curve, f.hasNull, f.nullValue);
            j += std::string(c ? "," : "") +
                 "\n      {\"mnemonic\": " + common::JsonString(curve.m_definition.m_mnemonic) +
                 ", \"unit\": " + common::JsonString(curve.m_definition.m_unit) +
                 ", \"description\": " +
                 common::JsonString(common::Trim(curve.m_definition.m_description)) +
                 ", \"numeric\": " + (curve.m_isNumeric ? "true" : "false") +
                 ", \"values\": " + std::to_string(st.count);
            if (curve.m_isNumeric)
                j += ", \"nulls\": " + std::to_string(st.nulls) +
                     ", \"min\": " + common::JsonNumber(st.min) +
                     ", \"max\": " + common::JsonNumber(st.max);
            j += "}";
        }
        j += s.m_curves.empty() ? "]}" : "\n    ]}";
        first = false;
    }
    j += first ? "],\n" : "\n  ],\n";
    j += "  \"reading\": " + common::JsonString(f.strict ? "strict" : "lenient") + ",\n";
    j += "  \"notes\": [";
    for (size_t i = 0; i < f.notes.size(); ++i)
        j += std::string(i ? ",\n    " : "\n    ") + ex::NoteJson(f.notes[i]);
    j += f.notes.empty() ? "],\n" : "\n  ],\n";
    j += "  \"stepping\": " +
         (f.hasLogData ? common::JsonString(quarl::ResultName(f.stepping)) : std::string("null")) +
         "\n}";
    return j;
}

int Run(int argc, char** argv)
{
    std::vector<std::string> files;
    bool json = false;
    bool strict = false;
    Bounds bounds;
    int progressMode = 0;  // 0 automatic, 1 always, -1 never
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--json")
            json = true;
        else if (arg == "--strict")
            strict = true;
        else if (arg == "--all")
            bounds = Bounds{SIZE_MAX, SIZE_MAX, SIZE_MAX};
        else if (arg == "--progress")
            progressMode = 1;
        else if (arg == "--no-progress")
            progressMode = -1;
        else if (arg == "-h" || arg == "--help") {
            Usage(stdout);
            return 0;
        } else if (arg == "--version") {
            ex::PrintVersion("quarl-info");
            return 0;
        } else if (!ex::TakeOperand("quarl-info", arg, files)) {
            Usage(stderr);
            return 2;
        }
    }
    if (files.empty()) {
        Usage(stderr);
        return 2;
    }

    const bool terminal = QUARL_ISATTY(QUARL_FILENO(stderr)) != 0;
    int status = 0;
    if (json && files.size() > 1) std::printf("[\n");
    for (size_t n = 0; n < files.size(); ++n) {
        Facts f;
        f.path = files[n];
        f.bytes = FileSize(f.path);
        f.strict = strict;

        quarl::CLasReader reader;
        reader.SetOptions(ex::ProgramReadOptions(strict, f.path));
        Progress progress;
        if (progressMode == 1 || (progressMode == 0 && terminal && f.bytes >= kProgressBytes))
            reader.SetStatusCallback(&progress, &DrawProgress);
        const auto start = std::chrono::steady_clock::now();
        f.result = reader.Open(tessel::TxString(f.path));
        f.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (progress.lastWidth >= 0 && !progress.done) std::fprintf(stderr, "\n");
        f.opened = reader.IsOpen();
        f.notes = reader.GetNotes();
        if (!json) ex::PrintNotesSummary("quarl-info", f.path, f.notes);
        f.sections.assign(reader.begin(), reader.end());
        if (!f.sections.empty()) {
            f.format.version = common::VersionText(f.sections[0].get());
            f.format.isLas3 = reader.IsLas3();
            f.format.isWrapped = reader.IsWrapped();
            f.format.delimiter = reader.GetDelimiter();
        }
        if (f.sections.size() > 1) {
            f.hasNull = common::NullValueOf(f.sections[1].get(), &f.nullValue);
            quarl::CLasParam step;
            if (f.sections[1]->FindParameterByMnemonic("STEP", &step) >= 0)
                f.step = common::Trim(step.m_value);
        }
        f.stepping = reader.CheckDataStepping();
        for (const auto& s : f.sections)
            if ((s->m_flags & quarl::CLasSection::kFlagLogData) && SectionLines(*s) > 0)
                f.hasLogData = true;
        reader.Close();

        if (f.result != quarl::LASFILE_OK) {
            status = 1;
            std::fprintf(stderr, "quarl-info: %s: %s (%s)%s\n", f.path.c_str(),
                         quarl::ResultName(f.result), quarl::ResultDescription(f.result),
                         !f.opened ? "; the file cannot be opened"
                         : f.sections.empty() && f.result == quarl::LASFILE_BAD_FORMAT
                             ? "; not a LAS file"
                             : "");
        }
        if (json) {
            std::printf("%s%s", Json(f).c_str(), n + 1 < files.size() ? ",\n" : "\n");
        } else {
            if (n > 0) std::printf("\n");
            PrintText(f, bounds);
        }
    }
    if (json && files.size() > 1) std::printf("]\n");
    return status;
}

}  // namespace

int main(int argc, char** argv)
{
    return ex::RunGuarded("quarl-info", Run, argc, argv);
}
