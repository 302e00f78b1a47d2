// The commands query, problems and stats of quarl-catalog: their command
// lines, and their answers printed as text, CSV or JSON.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "catalog/catalog_query.h"
#include "catalog_commands/catalog_commands.h"
#include "catalog_commands/catalog_output.h"
#include "common/text.h"
#include "support/command_line.h"

namespace quarl::catalog {

namespace {

enum class Format { kText, kCsv, kJson };

const char* const kQueryUsage =
    "usage: quarl-catalog query CATALOG [--curve MNEMONIC]... [--depth FROM:TO [--cover]]\n"
    "                          [--unit M|FT|.1IN] [--well PATTERN] [--json|--csv]\n"
    "  --curve M       files that hold curve M or one of its family (repeat it, or\n"
    "                  give M1,M2: every curve is needed)\n"
    "  --depth FROM:TO curves whose depths overlap FROM:TO; with --cover, that span it\n"
    "  --unit U        the unit of FROM:TO and of the depths shown (M by default)\n"
    "  --well PATTERN  files whose WELL or UWI matches PATTERN (* and ?, no case)\n";
const char* const kProblemsUsage = "usage: quarl-catalog problems CATALOG [--json|--csv]\n";
const char* const kStatsUsage = "usage: quarl-catalog stats CATALOG [--json]\n";

// A wrong command line: the message, if any, and the command's usage.
int Wrong(const char* usage, const std::string& message = "")
{
    if (!message.empty()) std::fprintf(stderr, "quarl-catalog: %s\n", message.c_str());
    std::fputs(usage, stderr);
    return 2;
}

int Failed(const std::string& message)
{
    std::fprintf(stderr, "quarl-catalog: %s\n", message.c_str());
    return 1;
}

// "FROM:TO" as two numbers; FROM may be negative (above the datum).
bool ParseDepthRange(const std::string& text, double* from, double* to)
{
    const size_t colon = text.find(':', 1);
    if (colon == std::string::npos) return false;
    const std::string first = text.substr(0, colon), second = text.substr(colon + 1);
    return apps::ParseNumberIn(first.c_str(), -1e9, 1e9, from) &&
           apps::ParseNumberIn(second.c_str(), -1e9, 1e9, to);
}

// The option word at argv[i] and, for options that take one, its value in
// `value` (argv[i + 1], i moved past it). False when the value is missing.
bool TakeValue(int argc, char** argv, int& i, std::string* value)
{
    if (i + 1 >= argc) return false;
    *value = argv[++i];
    return true;
}

// Runs `query` on the catalog opened as `reader`; false after saying why.
bool AskOrSay(CatalogReader& reader, const SqlQuery& query, ResultTable* out)
{
    std::string error;
    if (Ask(reader.Handle(), query, out, &error)) return true;
    std::fprintf(stderr, "quarl-catalog: the catalog cannot answer: %s\n", error.c_str());
    return false;
}

void Print(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

}  // namespace

int RunQuery(int argc, char** argv)
{
    QueryOptions options;
    Format format = Format::kText;
    std::vector<std::string> operands;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        std::string value;
        if (arg == "-h" || arg == "--help") {
            std::fputs(kQueryUsage, stdout);
            return 0;
        } else if (arg == "--curve") {
            if (!TakeValue(argc, argv, i, &value))
                return Wrong(kQueryUsage, "--curve needs a mnemonic");
            const std::vector<std::string> names = apps::SplitList(value);
            if (names.empty()) return Wrong(kQueryUsage, "--curve needs a mnemonic");
            options.curves.insert(options.curves.end(), names.begin(), names.end());
        } else if (arg == "--depth") {
            if (!TakeValue(argc, argv, i, &value) ||
                !ParseDepthRange(value, &options.from, &options.to))
                return Wrong(kQueryUsage, "--depth wants FROM:TO, two numbers");
            options.hasDepth = true;
        } else if (arg == "--unit") {
            if (!TakeValue(argc, argv, i, &options.unit))
                return Wrong(kQueryUsage, "--unit needs a unit");
        } else if (arg == "--well") {
            if (!TakeValue(argc, argv, i, &options.wellPattern))
                return Wrong(kQueryUsage, "--well needs a pattern");
        } else if (arg == "--cover") {
            options.cover = true;
        } else if (arg == "--json" || arg == "--csv") {
            format = arg == "--json" ? Format::kJson : Format::kCsv;
        } else if (!apps::TakeOperand("quarl-catalog", arg, operands)) {
            return Wrong(kQueryUsage);
        }
    }
    if (operands.size() != 1) return Wrong(kQueryUsage, "query asks one CATALOG");
    if (options.cover && !options.hasDepth) return Wrong(kQueryUsage, "--cover goes with --depth");
    SqlQuery query;
    std::string error;
    if (!BuildQuery(options, &query, &error)) return Wrong(kQueryUsage, error);
    CatalogReader reader;
    if (!reader.Open(operands[0], &error)) return Failed(error);
    ResultTable table;
    if (!AskOrSay(reader, query, &table)) return 1;
    if (format == Format::kJson) {
        Print(FormatJson(table) + "\n");
    } else if (format == Format::kCsv) {
        Print(FormatCsv(table));
    } else {
        Print(table.rows.empty() ? std::string() : FormatText(table));
        std::printf("%zu file%s\n", table.rows.size(), table.rows.size() == 1 ? "" : "s");
    }
    return 0;
}

namespace {

// The catalog operand and the format of problems and stats.
int ParseCatalogAndFormat(int argc, char** argv, const char* usage, bool csv, std::string* catalog,
                          Format* format)
{
    std::vector<std::string> operands;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "-h" || arg == "--help") {
            std::fputs(usage, stdout);
            return 0;
        } else if (arg == "--json") {
            *format = Format::kJson;
        } else if (csv && arg == "--csv") {
            *format = Format::kCsv;
        } else if (!apps::TakeOperand("quarl-catalog", arg, operands)) {
            return Wrong(usage);
        }
    }
    if (operands.size() != 1) return Wrong(usage, std::string(argv[0]) + " asks one CATALOG");
    *catalog = operands[0];
    return -1;
}

void PrintProblems(const ResultTable& failed, const ResultTable& kinds, Format format)
{
    if (format == Format::kJson) {
        Print("{\n  \"failed_files\": " + FormatJson(failed, "  ") +
              ",\n  \"note_kinds\": " + FormatJson(kinds, "  ") + "\n}\n");
    } else if (format == Format::kCsv) {
        // Two tables, each with its header, a blank line between them.
        Print(FormatCsv(failed) + "\r\n" + FormatCsv(kinds));
    } else {
        std::printf("%zu file%s did not read:\n", failed.rows.size(),
                    failed.rows.size() == 1 ? "" : "s");
        if (!failed.rows.empty()) Print(FormatText(failed, 80));
        std::printf("\n%zu kind%s of notes:\n", kinds.rows.size(),
                    kinds.rows.size() == 1 ? "" : "s");
        if (!kinds.rows.empty()) Print(FormatText(kinds));
    }
}

}  // namespace

int RunProblems(int argc, char** argv)
{
    std::string catalog, error;
    Format format = Format::kText;
    const int code = ParseCatalogAndFormat(argc, argv, kProblemsUsage, true, &catalog, &format);
    if (code >= 0) return code;
    CatalogReader reader;
    if (!reader.Open(catalog, &error)) return Failed(error);
    ResultTable failed, kinds;
    if (!AskOrSay(reader, ProblemFilesQuery(), &failed) ||
        !AskOrSay(reader, NoteKindsQuery(), &kinds))
        return 1;
    PrintProblems(failed, kinds, format);
    return 0;
}

int RunStats(int argc, char** argv)
{
    std::string catalog, error;
    Format format = Format::kText;
    const int code = ParseCatalogAndFormat(argc, argv, kStatsUsage, false, &catalog, &format);
    if (code >= 0) return code;
    CatalogReader reader;
    if (!reader.Open(catalog, &error)) return Failed(error);
    std::vector<std::string> names;
    std::vector<ResultTable> tables;
    for (const NamedQuery& q : StatsQueries()) {
        tables.emplace_back();
        names.push_back(q.name);
        if (!AskOrSay(reader, q.query, &tables.back())) return 1;
    }
    // The totals are one row: its columns become fields (JSON) or lines (text).
    const ResultTable& totals = tables[0];
    std::string out = format == Format::kJson ? "{\n" : "";
    for (size_t c = 0; c < totals.columns.size(); ++c) {
        const Cell& cell = totals.rows.at(0)[c];
        if (format == Format::kJson)
            out += "  " + common::JsonString(totals.columns[c]) + ": " + CellJson(cell) + ",\n";
        else
            out += totals.columns[c] +
                   std::string(std::max<size_t>(20, totals.columns[c].size() + 2) -
                                   totals.columns[c].size(),
                               ' ') +
                   CellText(cell) + "\n";
    }
    for (size_t t = 1; t < tables.size(); ++t) {
        if (format == Format::kJson)
            out += "  " + common::JsonString(names[t]) + ": " + FormatJson(tables[t], "  ") +
                   (t + 1 < tables.size() ? ",\n" : "\n");
        else
            out += std::string(names[t] == "versions" ? "\nVersions:\n"
                                                      : "\nMost common mnemonics:\n") +
                   FormatText(tables[t]);
    }
    Print(out + (format == Format::kJson ? "}\n" : ""));
    return 0;
}

}  // namespace quarl::catalog
