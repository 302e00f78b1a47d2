#include "catalog_commands/catalog_output.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "catalog/catalog_db.h"
#include "common/text.h"

namespace quarl::catalog {

namespace {

// The length of the well-formed UTF-8 sequence at `p` (of `left` bytes),
// 0 when none starts there: no overlong forms, surrogates or codes past
// U+10FFFF.
size_t SequenceLength(const unsigned char* p, size_t left)
{
    const unsigned char c = p[0];
    if (c < 0x80) return 1;
    size_t length = 0;
    unsigned char low = 0x80, high = 0xBF;
    if (c >= 0xC2 && c <= 0xDF) {
        length = 2;
    } else if (c >= 0xE0 && c <= 0xEF) {
        length = 3;
        if (c == 0xE0) low = 0xA0;
        if (c == 0xED) high = 0x9F;
    } else if (c >= 0xF0 && c <= 0xF4) {
        length = 4;
        if (c == 0xF0) low = 0x90;
        if (c == 0xF4) high = 0x8F;
    } else {
        return 0;
    }
    if (left < length || p[1] < low || p[1] > high) return 0;
    for (size_t i = 2; i < length; ++i)
        if ((p[i] & 0xC0) != 0x80) return 0;
    return length;
}

bool IsContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// Characters (not bytes) of valid UTF-8 text.
size_t Characters(const std::string& text)
{
    size_t count = 0;
    for (char c : text) count += IsContinuation(c) ? 0 : 1;
    return count;
}

// Valid UTF-8 text cut to `max` characters, an ellipsis marking the cut.
std::string CutToCharacters(const std::string& text, size_t max)
{
    if (max == 0 || Characters(text) <= max) return text;
    size_t kept = 0, at = 0;
    for (; at < text.size(); ++at) {
        if (!IsContinuation(text[at]) && kept++ == max - 1) break;
    }
    return text.substr(0, at) + "\xE2\x80\xA6";
}

// A cell for one line of a text table: valid UTF-8, control bytes as spaces.
std::string OneLine(const Cell& cell)
{
    std::string text = ValidUtf8(CellText(cell));
    for (char& c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
    return text;
}

bool IsNumber(const Cell& cell)
{
    return cell.kind == Cell::Kind::kInteger || cell.kind == Cell::Kind::kReal;
}

}  // namespace

CatalogReader::~CatalogReader()
{
    sqlite3_close(m_db);
}

bool CatalogReader::Open(const std::string& path, std::string* error)
{
    sqlite3_close(m_db);
    m_db = nullptr;
    std::error_code code;
    if (!std::filesystem::is_regular_file(path, code)) {
        *error =
            "no catalog at " + path + (std::filesystem::exists(path, code) ? " (not a file)" : "");
        return false;
    }
    if (sqlite3_open_v2(path.c_str(), &m_db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        *error =
            "cannot open the catalog " + path + ": " + (m_db ? sqlite3_errmsg(m_db) : "no memory");
        sqlite3_close(m_db);
        m_db = nullptr;
        return false;
    }
    // A scan writing the catalog at the same time is waited for.
    sqlite3_busy_timeout(m_db, 10000);
    ResultTable version;
    std::string why;
    if (!Ask(m_db, {"SELECT value FROM catalog_info WHERE key = 'schema_version'", {}}, &version,
             &why) ||
        version.rows.empty()) {
        *error =
            path + " is not a quarl catalog" + (why.empty() ? std::string() : " (" + why + ")");
    } else if (version.rows[0][0].text != std::to_string(kSchemaVersion)) {
        *error = path + " is a catalog of schema version " + version.rows[0][0].text +
                 "; this program reads version " + std::to_string(kSchemaVersion) +
                 " (a scan migrates an older catalog)";
    } else {
        return true;
    }
    sqlite3_close(m_db);
    m_db = nullptr;
    return false;
}

bool Ask(sqlite3* db, const SqlQuery& query, ResultTable* out, std::string* error)
{
    sqlite3_stmt* s = nullptr;
    if (sqlite3_prepare_v2(db, query.sql.c_str(), -1, &s, nullptr) != SQLITE_OK) {
        *error = sqlite3_errmsg(db);
        sqlite3_finalize(s);
        return false;
    }
    for (size_t i = 0; i < query.params.size(); ++i) {
        const std::string& p = query.params[i];
        sqlite3_bind_text(s, static_cast<int>(i + 1), p.data(), static_cast<int>(p.size()),
                          SQLITE_TRANSIENT);
    }
    *out = ResultTable();
    const int columns = sqlite3_column_count(s);
    for (int c = 0; c < columns; ++c) out->columns.push_back(sqlite3_column_name(s, c));
    int rc;
    while ((rc = sqlite3_step(s)) == SQLITE_ROW) {
        std::vector<Cell> row(static_cast<size_t>(columns));
        for (int c = 0; c < columns; ++c) {
            Cell& cell = row[static_cast<size_t>(c)];
            const int type = sqlite3_column_type(s, c);
            if (type == SQLITE_NULL) continue;
            cell.kind = type == SQLITE_INTEGER ? Cell::Kind::kInteger
                        : type == SQLITE_FLOAT ? Cell::Kind::kReal
                                               : Cell::Kind::kText;
            cell.number = sqlite3_column_double(s, c);
            const unsigned char* text = sqlite3_column_text(s, c);
            if (text)
                cell.text.assign(reinterpret_cast<const char*>(text), sqlite3_column_bytes(s, c));
        }
        out->rows.push_back(std::move(row));
    }
    if (rc != SQLITE_DONE) *error = sqlite3_errmsg(db);
    sqlite3_finalize(s);
    return rc == SQLITE_DONE;
}

std::string ValidUtf8(const std::string& text)
{
    std::string out;
    out.reserve(text.size());
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    for (size_t at = 0; at < text.size();) {
        const size_t length = SequenceLength(bytes + at, text.size() - at);
        if (length > 0) {
            out.append(text, at, length);
            at += length;
        } else {
            out += static_cast<char>(0xC0 | (bytes[at] >> 6));
            out += static_cast<char>(0x80 | (bytes[at] & 0x3F));
            ++at;
        }
    }
    return out;
}

std::string CellText(const Cell& cell)
{
    if (cell.kind == Cell::Kind::kReal) return common::FormatNumber(cell.number, 10);
    return cell.text;
}

std::string CellJson(const Cell& cell)
{
    switch (cell.kind) {
        case Cell::Kind::kNull:
            return "null";
        case Cell::Kind::kInteger:
            return cell.text;
        case Cell::Kind::kReal:
            return common::JsonNumber(cell.number);
        default:
            return common::JsonString(ValidUtf8(cell.text));
    }
}

std::string CsvField(const std::string& text)
{
    const std::string valid = ValidUtf8(text);
    if (valid.find_first_of(",\"\r\n") == std::string::npos) return valid;
    std::string out = "\"";
    for (char c : valid) {
        if (c == '"') out += '"';
        out += c;
    }
    return out + "\"";
}

std::string FormatText(const ResultTable& table, size_t maxWidth)
{
    const size_t columns = table.columns.size();
    std::vector<std::vector<std::string>> lines(1, table.columns);
    std::vector<size_t> widths(columns, 0);
    std::vector<bool> numeric(columns, true);
    for (const auto& row : table.rows) {
        std::vector<std::string> line;
        for (size_t c = 0; c < columns; ++c) {
            line.push_back(c == 0 ? OneLine(row[c]) : CutToCharacters(OneLine(row[c]), maxWidth));
            if (row[c].kind != Cell::Kind::kNull && !IsNumber(row[c])) numeric[c] = false;
        }
        lines.push_back(std::move(line));
    }
    for (const auto& line : lines)
        for (size_t c = 0; c < columns; ++c) widths[c] = std::max(widths[c], Characters(line[c]));
    std::string out;
    for (const auto& line : lines) {
        std::string text;
        for (size_t c = 0; c < columns; ++c) {
            const std::string pad(widths[c] - Characters(line[c]), ' ');
            if (c > 0) text += "  ";
            text += numeric[c] ? pad + line[c] : line[c] + (c + 1 < columns ? pad : "");
        }
        while (!text.empty() && text.back() == ' ') text.pop_back();
        out += text + "\n";
    }
    return out;
}

std::string FormatCsv(const ResultTable& table)
{
    std::string out;
    for (size_t c = 0; c < table.columns.size(); ++c)
        out += (c ? "," : "") + CsvField(table.columns[c]);
    out += "\r\n";
    for (const auto& row : table.rows) {
        for (size_t c = 0; c < row.size(); ++c) out += (c ? "," : "") + CsvField(CellText(row[c]));
        out += "\r\n";
    }
    return out;
}

std::string FormatJsonObject(const ResultTable& table, size_t row)
{
    std::string out = "{";
    for (size_t c = 0; c < table.columns.size(); ++c) {
        out += (c ? ", " : "") + common::JsonString(ValidUtf8(table.columns[c])) + ": " +
               CellJson(table.rows[row][c]);
    }
    return out + "}";
}

std::string FormatJson(const ResultTable& table, const std::string& indent)
{
    if (table.rows.empty()) return "[]";
    std::string out = "[\n";
    for (size_t r = 0; r < table.rows.size(); ++r)
        out +=
            indent + "  " + FormatJsonObject(table, r) + (r + 1 < table.rows.size() ? ",\n" : "\n");
    return out + indent + "]";
}

}  // namespace quarl::catalog
