// CLasWriter: takes sections, checks, completes and orders them, and writes
// a LAS 2.0 or 3.0 file.
#ifndef QUARL_WRITER_H
#define QUARL_WRITER_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <quarl/document.h>
#include <quarl/export.h>
#include <quarl/types.h>
#include <tessel/tessel.h>

namespace quarl {

namespace detail {
struct WriterAccess;  // the test suite's window on the private operations
class OutputBuffer;
class SectionNameIndex;
}

class QUARL_API CLasWriter {
public:
    CLasWriter();
    ~CLasWriter();

    // Never shares or leaks an open output: the target's own output is
    // closed and removed first, and the copy has no open output.
    CLasWriter& operator=(const CLasWriter& other);

    void Reset();
    // Chooses LAS 3.0 (true) or 2.0 and the data delimiter (space, tab or
    // comma; LAS 2.0 allows the space only). Only on an empty writer.
    ELASFILEERROR SetFormat(bool isLas3, char delimiter);
    void SetStatusCallback(void* context, LasStatusCallback callback);
    // Stores a copy of the section if it passes the rules of the version.
    ELASFILEERROR AddSection(const CLasSection& section);
    ELASFILEERROR Validate();
    // Writes the file. Where the target is replaced and where it is written
    // in place:
    // - A regular file with no other hard link, owned by this process's
    //   user, in a folder where we may create a file, and a path where
    //   nothing is yet: the file is written under a temporary name in the
    //   same folder and renamed onto the target when it is complete, with
    //   the target's group and permission bits. A write that fails or is
    //   cancelled leaves the old file as it was. A symbolic link is resolved
    //   once, when the output is opened, and stays a link. Should the disk
    //   have no room for the second copy, the temporary file takes the
    //   target's place at that moment and the write goes on in place.
    // - Everything else is written in place, opened with "w" (emptied at
    //   once), so that it stays the same file with the same owner, links
    //   and name: a file of another user, a file with hard links, a file in
    //   a folder we may not write, a symbolic link that leads nowhere (the
    //   file it names is created), a device or a pipe. A write that fails
    //   there leaves what was written so far.
    // The results and their order are the same either way.
    ELASFILEERROR Write(const tessel::TxString& path);

    // The last-error record. The texts are null when empty and stay valid
    // until the record next changes.
    ELASFILEERROR GetLastError() const { return m_lastError; }
    const char* GetLastErrorSection() const;
    const char* GetLastErrorParam() const;
    int32_t GetLastErrorColumn() const { return m_errorColumn; }
    int32_t GetLastErrorRow() const { return m_errorRow; }
    void ClearLastError();

private:
    friend struct detail::WriterAccess;
    CLasWriter(const CLasWriter& other);  // not offered

    ELASFILEERROR SetLastError(ELASFILEERROR code, const char* section, const char* param,
                               int32_t column, int32_t row);
    int32_t FindSectionIndexByName(const char* name) const;
    int32_t FindMainDataSection() const;
    bool HasSectionNamed(const char* name);
    int32_t CountSectionsByType(ELASSECTIONTYPE type) const;
    ELASFILEERROR ValidateSectionName(const CLasSection& section);
    ELASFILEERROR ValidateDataSection(const CLasSection& section);
    ELASFILEERROR ValidateParameterSection(const CLasSection& section);
    void GetLAS2FullSectionName(std::string& name) const;
    ELASFILEERROR FillWellSection();
    ELASFILEERROR SortSections();

    // Helpers of the operations above.
    ELASFILEERROR CheckDepths(const CLasSection& data, CLasSection& well);
    void CreateMissingSections();
    ELASFILEERROR CheckRequiredSections();
    ELASFILEERROR CheckColumnLengths();
    ELASFILEERROR FillDefinitionSections();
    void CloseOutput();
    bool Report(double percent, const tessel::TxString& message) const;
    ELASFILEERROR WriteDocument(detail::OutputBuffer& out, const tessel::TxString& message);
    ELASFILEERROR WriteHead(detail::OutputBuffer& out);
    ELASFILEERROR WriteSectionHead(detail::OutputBuffer& out, const CLasSection& section);
    ELASFILEERROR WriteParams(detail::OutputBuffer& out, const CLasSection& section, double base,
                              double step, const tessel::TxString& message);
    ELASFILEERROR WriteRows(detail::OutputBuffer& out, const CLasSection& section, double base,
                            double step, const tessel::TxString& message);
    ELASFILEERROR FinishWrite(detail::OutputBuffer& out);
    ELASFILEERROR RowsRefused(const CLasSection& section, uint64_t offset);
    size_t CellLength(const CLasCurve& curve, size_t row) const;

    LasStatusCallback m_statusCallback;
    void* m_statusContext;
    std::vector<CLasSection> m_sections;
    bool m_isLas3;
    char m_delimiter;
    ELASFILEERROR m_lastError;
    std::string m_errorSection;
    std::string m_errorParam;
    int32_t m_errorColumn;
    int32_t m_errorRow;
    std::FILE* m_file;
    tessel::TxString m_filename;
    // The temporary file that becomes the target once it is complete; empty
    // when no output is open or when the target is written in place.
    std::string m_tempPath;
    // The file that the temporary file replaces: the target, with a symbolic
    // link resolved once when the output was opened.
    std::string m_replacedPath;
    // The names in m_sections, for the duplicate test of AddSection, and how
    // many sections they were taken from.
    std::unique_ptr<detail::SectionNameIndex> m_names;
    size_t m_namesCounted;
    // Write is emitting sections: the status callback may not change them.
    bool m_writing;
};

}  // namespace quarl

#endif
