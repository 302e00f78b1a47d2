// Write: puts the document on disk byte for byte, with progress reports and
// cancellation. The file is written under a temporary name and replaces the
// target only when it is complete, so a write that fails or is cancelled
// leaves whatever stood at the path as it was.
#include <quarl/writer.h>

#include <algorithm>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>

#include "foundation/delimiter_words.h"
#include "writer/output_stream.h"

namespace quarl {

namespace {

using detail::OutputBuffer;

bool IsParameterType(ELASSECTIONTYPE type)
{
    return type == LASSECTION_PARAMETER || type == LASSECTION_DEFINITION ||
           type == LASSECTION_HEADER;
}

// Column widths of one parameter section: at least 4, 2 and 20 bytes, and
// as wide as the longest mnemonic, unit and value of that section.
struct ParamWidths {
    size_t mnemonic = 4;
    size_t unit = 2;
    size_t value = 20;
};

// The number arrays of `curves`, or an empty list when a curve holds text.
std::vector<const double*> NumberColumns(const std::vector<CLasCurve>& curves)
{
    std::vector<const double*> columns;
    for (const CLasCurve& curve : curves) {
        if (!curve.m_isNumeric) return {};
        columns.push_back(curve.m_numbers.data());
    }
    return columns;
}

ParamWidths MeasureParams(const std::vector<CLasParam>& params)
{
    ParamWidths widths;
    for (const CLasParam& param : params) {
        widths.mnemonic = std::max(widths.mnemonic, param.m_mnemonic.size());
        widths.unit = std::max(widths.unit, param.m_unit.size());
        widths.value = std::max(widths.value, param.m_value.size());
    }
    return widths;
}

}  // namespace

ELASFILEERROR CLasWriter::Write(const tessel::TxString& path)
{
    if (m_writing) return LASFILE_WRONG_STATE;  // from the status callback of a Write
    ClearLastError();
    CloseOutput();
    if (!detail::OpenOutput(path, &m_file, &m_tempPath, &m_replacedPath))
        return SetLastError(LASFILE_IO_FAILED, nullptr, nullptr, -1, -1);
    m_filename = path;
    const ELASFILEERROR validated = Validate();
    if (validated != LASFILE_OK) return validated;
    OutputBuffer out(m_file, [this] { return detail::ReplaceNow(&m_tempPath, m_replacedPath); });
    const ELASFILEERROR written = WriteValidated(out);
    if (written != LASFILE_OK) return written;
    return FinishWrite(out);
}

ELASFILEERROR CLasWriter::WriteToString(std::string& text, const tessel::TxString& name)
{
    std::string written;
    const ELASFILEERROR result = WriteToSink(
        [&written](const char* bytes, size_t length) {
            try {
                written.append(bytes, length);
            } catch (const std::bad_alloc&) {
                return size_t{0};
            } catch (const std::length_error&) {
                return size_t{0};
            }
            return length;
        },
        name);
    if (result == LASFILE_OK) text.swap(written);
    return result;
}

ELASFILEERROR CLasWriter::WriteToStream(std::ostream& stream, const tessel::TxString& name)
{
    const ELASFILEERROR result = WriteToSink(
        [&stream](const char* bytes, size_t length) {
            stream.write(bytes, static_cast<std::streamsize>(length));
            return stream ? length : size_t{0};
        },
        name);
    if (result == LASFILE_OK && !stream.flush())
        return SetLastError(LASFILE_IO_FAILED, nullptr, nullptr, -1, -1);
    return result;
}

// What WriteToString and WriteToStream share: the document validated and
// written into `sink`, with `name` in the file head.
ELASFILEERROR CLasWriter::WriteToSink(const OutputBuffer::ByteSink& sink,
                                      const tessel::TxString& name)
{
    if (m_writing) return LASFILE_WRONG_STATE;  // from the status callback of a Write
    ClearLastError();
    CloseOutput();
    m_filename = name;
    ELASFILEERROR result = Validate();
    if (result == LASFILE_OK) {
        OutputBuffer out(sink);
        result = WriteValidated(out);
        if (result == LASFILE_OK && !out.Flush())
            result = SetLastError(LASFILE_IO_FAILED, nullptr, nullptr, -1, -1);
    }
    m_filename.clear();
    return result;
}

// Emits the validated document into `out`, with the status reports and the
// guard that keeps the callback from changing the sections meanwhile.
ELASFILEERROR CLasWriter::WriteValidated(OutputBuffer& out)
{
    const tessel::TxString message(std::string("Writing ") + m_filename);
    struct Writing {
        explicit Writing(bool& flag) : m_flag(flag) { m_flag = true; }
        ~Writing() { m_flag = false; }
        Writing(const Writing&) = delete;
        Writing& operator=(const Writing&) = delete;
        bool& m_flag;
    } writing(m_writing);
    return WriteDocument(out, message);
}

// A null callback means no reports; a non-zero answer means stop.
bool CLasWriter::Report(double percent, const tessel::TxString& message) const
{
    return !m_statusCallback || m_statusCallback(m_statusContext, percent, message.c_str()) == 0;
}

ELASFILEERROR CLasWriter::WriteDocument(OutputBuffer& out, const tessel::TxString& message)
{
    if (!Report(0.0, message)) return LASFILE_CANCELLED;
    ELASFILEERROR result = WriteHead(out);
    if (result != LASFILE_OK) return result;
    const size_t written = WrittenSectionCount();
    const double step = 100.0 / static_cast<double>(m_sections.size());
    for (size_t i = 0; i < written; ++i) {
        const CLasSection& section = m_sections[i];
        const double base = static_cast<double>(i) * step;
        if (!Report(base, message)) return LASFILE_CANCELLED;
        result = WriteSectionHead(out, section);
        if (result != LASFILE_OK) return result;
        if (section.m_type == LASSECTION_DATA) {
            result = WriteRows(out, section, base, step, message);
        } else if (IsParameterType(section.m_type)) {
            result = WriteParams(out, section, base, step, message);
        } else {
            result = SetLastError(LASFILE_BAD_FORMAT, section.m_name.c_str(), nullptr, -1, -1);
        }
        if (result != LASFILE_OK) return result;
    }
    return Report(100.0, message) ? LASFILE_OK : LASFILE_CANCELLED;
}

// The banner, the path and the version block, which the writer makes from
// the format choice alone.
ELASFILEERROR CLasWriter::WriteHead(OutputBuffer& out)
{
    const std::string filename = "# Filename: " + m_filename + "\n";
    if (!out.Text(std::string("# Created by Meridane LAS import/export module QUARL.DLL\n")) ||
        !out.Text(filename) || !out.Text(std::string("~Version Information\n")))
        return LASFILE_IO_FAILED;  // not recorded: the record stays clear here

    const std::string vers = m_isLas3 ? "3" : "2";
    std::string version = " VERS.                          " + vers +
                          ".0 : CWLS LOG ASCII STANDARD -VERSION " + vers + ".0\n";
    bool good =
        out.Text(version) &&
        out.Text(std::string(" WRAP.                           NO : ONE LINE PER DEPTH STEP\n"));
    if (good && m_isLas3)
        good = out.Padded(" DLM .                        ", DelimiterWord(m_delimiter), 5, false,
                          " : DELIMITING CHARACTER BETWEEN DATA COLUMNS\n");
    if (!good) return SetLastError(LASFILE_IO_FAILED, nullptr, nullptr, -1, -1);
    return LASFILE_OK;
}

ELASFILEERROR CLasWriter::WriteSectionHead(OutputBuffer& out, const CLasSection& section)
{
    if (m_isLas3 && !section.m_association.empty()) {
        if (out.Text("~" + section.m_name + " | " + section.m_association + "\n"))
            return LASFILE_OK;
        return SetLastError(LASFILE_IO_FAILED, nullptr, nullptr, -1, -1);
    }
    if (out.Text("~" + section.m_name + "\n")) return LASFILE_OK;
    return SetLastError(LASFILE_IO_FAILED, section.m_name.c_str(), nullptr, -1, -1);
}

// One line per parameter: " MNEM.UNIT VALUE : DESCRIPTION {FORMAT} | ASSOC",
// with the mnemonic, unit and value columns as wide as the section needs.
ELASFILEERROR CLasWriter::WriteParams(OutputBuffer& out, const CLasSection& section, double base,
                                      double step, const tessel::TxString& message)
{
    const ParamWidths widths = MeasureParams(section.m_params);
    const double count = static_cast<double>(section.m_params.size());
    const char* name = section.m_name.c_str();
    for (size_t p = 0; p < section.m_params.size(); ++p) {
        if (p % 10 == 0 && !Report(static_cast<double>(p) * step / count + base, message))
            return LASFILE_CANCELLED;
        const CLasParam& param = section.m_params[p];
        if (!out.Char(' ')) return SetLastError(LASFILE_IO_FAILED, name, nullptr, -1, -1);
        const bool good =
            out.Padded("", param.m_mnemonic, widths.mnemonic, true, ".") &&
            out.Padded("", param.m_unit, widths.unit, true, "") &&
            out.Padded(" ", param.m_value, widths.value, false, "") &&
            out.Padded(" : ", param.m_description, 0, true, "") &&
            (param.m_format.empty() || out.Padded(" ", param.m_format, 0, true, "")) &&
            (param.m_association.empty() || out.Padded(" | ", param.m_association, 0, true, "")) &&
            out.Char('\n');
        if (!good) return SetLastError(LASFILE_IO_FAILED, name, param.m_mnemonic.c_str(), -1, -1);
    }
    return LASFILE_OK;
}

// One line per row: a blank, then the cells with the delimiter between
// them. Numbers as "%.15g"; a text with a blank in it is quoted when the
// blank is the delimiter.
ELASFILEERROR CLasWriter::WriteRows(OutputBuffer& out, const CLasSection& section, double base,
                                    double step, const tessel::TxString& message)
{
    const std::vector<CLasCurve>& curves = section.m_curves;
    if (curves.empty()) return LASFILE_OK;
    const size_t rows = static_cast<size_t>(curves[0].size());
    const size_t last = curves.size() - 1;
    const char* name = section.m_name.c_str();
    // A row of numbers is the blank, one call per cell and per delimiter,
    // and the line end. It goes into the buffer in one piece when it can;
    // otherwise, and for rows with text, call by call.
    const std::vector<const double*> columns = NumberColumns(curves);
    const size_t rowRoom = detail::GeneralRowRoom(curves.size());
    const auto rowCalls = static_cast<int64_t>(2 * curves.size() + 1);
    const uint64_t start = out.Offset();
    // A disk that refuses bytes of these rows is named by the row and
    // column of the first byte refused, wherever the buffer found out.
    const auto failed = [&](int32_t column, int32_t row) {
        if (out.RefusedAt() != UINT64_MAX && out.RefusedAt() >= start)
            return RowsRefused(section, out.RefusedAt() - start);
        return SetLastError(LASFILE_IO_FAILED, name, nullptr, column, row);
    };
    for (size_t r = 0; r < rows; ++r) {
        if (r % 10 == 0 &&
            !Report(static_cast<double>(r) * step / static_cast<double>(rows) + base, message))
            return LASFILE_CANCELLED;
        if (!columns.empty() && out.Reserve(rowRoom, rowCalls)) {
            out.Advance(detail::FormatGeneral15Row(out.Cursor(), columns.data(), columns.size(),
                                                   rows, r, m_delimiter));
            continue;
        }
        const int32_t row = static_cast<int32_t>(r);
        if (!out.Char(' ')) return failed(-1, -1);
        for (size_t c = 0; c <= last; ++c) {
            const CLasCurve& curve = curves[c];
            bool good;
            if (curve.m_isNumeric) {
                good = out.Number(curve.m_numbers[r]);
            } else {
                const std::string& text = curve.m_strings[r];
                const bool quote = m_delimiter == ' ' && text.find(' ') != std::string::npos;
                good = quote ? out.Quoted(text) : out.Text(text);
            }
            if (good && c < last) good = out.Char(m_delimiter);
            if (!good) return failed(static_cast<int32_t>(c), row);
        }
        if (!out.Char('\n')) return failed(static_cast<int32_t>(curves.size()), row);
    }
    // The rows of the last section are still in the buffer: they must reach
    // the disk while it is known whose they are.
    if (&section == &m_sections.back() && !out.Flush()) return failed(-1, -1);
    return LASFILE_OK;
}

// The row and column of byte `offset` of a section's rows: the leading
// blank and a cell with the delimiter behind it count as the cell's column,
// the line end as the column behind the last.
ELASFILEERROR CLasWriter::RowsRefused(const CLasSection& section, uint64_t offset)
{
    const std::vector<CLasCurve>& curves = section.m_curves;
    const size_t rows = static_cast<size_t>(curves[0].size());
    uint64_t at = 0;
    for (size_t r = 0; r < rows; ++r) {
        at += 1;  // the leading blank
        for (size_t c = 0; c < curves.size(); ++c) {
            at += CellLength(curves[c], r) + (c + 1 < curves.size() ? 1 : 0);
            if (offset < at)
                return SetLastError(LASFILE_IO_FAILED, section.m_name.c_str(), nullptr,
                                    static_cast<int32_t>(c), static_cast<int32_t>(r));
        }
        if (offset <= at)
            return SetLastError(LASFILE_IO_FAILED, section.m_name.c_str(), nullptr,
                                static_cast<int32_t>(curves.size()), static_cast<int32_t>(r));
        at += 1;  // the line end
    }
    return SetLastError(LASFILE_IO_FAILED, section.m_name.c_str(), nullptr, -1, -1);
}

// The bytes of one cell as WriteRows writes it.
size_t CLasWriter::CellLength(const CLasCurve& curve, size_t row) const
{
    if (curve.m_isNumeric) {
        char cell[detail::kGeneralNumberMax];
        return static_cast<size_t>(detail::FormatGeneral15(cell, curve.m_numbers[row]) - cell);
    }
    const std::string& text = curve.m_strings[row];
    const bool quote = m_delimiter == ' ' && text.find(' ') != std::string::npos;
    return text.size() + (quote ? 2 : 0);
}

// Flushes, closes and renames; any failure there loses the temporary file
// and leaves the target as it was.
ELASFILEERROR CLasWriter::FinishWrite(OutputBuffer& out)
{
    if (!out.Flush()) return SetLastError(LASFILE_IO_FAILED, nullptr, nullptr, -1, -1);
    const bool finished = detail::FinishOutput(m_file, m_tempPath, m_replacedPath);
    m_file = nullptr;
    m_filename.clear();
    m_tempPath.clear();
    m_replacedPath.clear();
    if (!finished) return SetLastError(LASFILE_IO_FAILED, nullptr, nullptr, -1, -1);
    return LASFILE_OK;
}

}  // namespace quarl
