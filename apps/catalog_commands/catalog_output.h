// The answers of quarl-catalog's questions: a catalog opened for reading, a
// question run into a table of cells, and that table written as aligned
// text, CSV (RFC 4180) or JSON. Every text written is valid UTF-8: bytes of
// a file that are not UTF-8 are taken as Latin-1, as old LAS files wrote.
#ifndef QUARL_APPS_CATALOG_OUTPUT_H
#define QUARL_APPS_CATALOG_OUTPUT_H

#include <cstdint>
#include <string>
#include <vector>

#include "catalog/catalog_query.h"

struct sqlite3;

namespace quarl::catalog {

// One value of an answer, as SQLite gave it. `text` holds the text of a
// text cell and the exact digits of an integer; `number` a real.
struct Cell {
    enum class Kind { kNull, kInteger, kReal, kText };
    Kind kind = Kind::kNull;
    std::string text;
    double number = 0.0;
};

struct ResultTable {
    std::vector<std::string> columns;
    std::vector<std::vector<Cell>> rows;
};

// An existing catalog opened read-only: never created, never changed.
// Open() is false, with `error`, for a file that is missing, is not an
// SQLite database, is not a quarl catalog or has another schema version.
class CatalogReader {
public:
    CatalogReader() = default;
    ~CatalogReader();
    CatalogReader(const CatalogReader&) = delete;
    CatalogReader& operator=(const CatalogReader&) = delete;

    bool Open(const std::string& path, std::string* error);
    sqlite3* Handle() const { return m_db; }

private:
    sqlite3* m_db = nullptr;
};

// Runs `query` on `db` into `out`; false with SQLite's message in `error`.
bool Ask(sqlite3* db, const SqlQuery& query, ResultTable* out, std::string* error);

// `text` with every byte that is not part of a UTF-8 sequence taken as the
// Latin-1 character of that code.
std::string ValidUtf8(const std::string& text);
// A cell as text: empty for NULL, reals with up to 10 significant digits.
std::string CellText(const Cell& cell);
// A cell as a JSON value: null, a number or a string.
std::string CellJson(const Cell& cell);
// A CSV field, quoted when it holds a comma, a quote or a line break.
std::string CsvField(const std::string& text);

// The table as aligned columns under their names, numbers to the right.
// Line breaks and other control bytes in cells become spaces; cells past
// the first column are cut to `maxWidth` characters.
std::string FormatText(const ResultTable& table, size_t maxWidth = 60);
// The table as CSV: a header line and one line per row, CRLF line ends.
std::string FormatCsv(const ResultTable& table);
// One row as a JSON object of column names to values.
std::string FormatJsonObject(const ResultTable& table, size_t row);
// The table as a JSON array of objects, one per line; `indent` before each.
std::string FormatJson(const ResultTable& table, const std::string& indent = "");

}  // namespace quarl::catalog

#endif
