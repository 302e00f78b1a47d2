// CTextFile: a forward-only reader of the lines of a file.
#ifndef QUARL_TEXT_FILE_H
#define QUARL_TEXT_FILE_H

#include <cstdint>
#include <cstddef>
#include <cstdio>

#include <quarl/export.h>
#include <quarl/types.h>
#include <tessel/tessel.h>

namespace quarl {

// Reads a file in blocks of 1024 bytes and delivers it line by line. A line
// feed ends a line; carriage returns are dropped wherever they stand. The
// current line stays valid until the next ReadLine, Close or Open.
class QUARL_API CTextFile {
public:
    static constexpr uint32_t kBufferSize = 1024;
    static constexpr uint32_t kLineStep = 40;

    CTextFile();
    ~CTextFile();

    // Opens the file and reads its first line. An empty file is
    // LASFILE_IO_FAILED.
    ELASFILEERROR Open(const tessel::TxString& path);
    void Close();
    bool IsOpen() const { return m_file != nullptr; }

    // Reads the next line. LASFILE_IO_FAILED when no byte is left (the line
    // is then empty) or the object is closed.
    ELASFILEERROR ReadLine();

    // The current line, NUL-terminated; null when no file is open.
    const char* GetLine() const { return m_file ? m_line : nullptr; }
    // Length of the current line in bytes (a NUL byte in it is counted).
    size_t GetLineLength() const { return m_file ? m_lineLength : 0; }

    // How far through the file the bytes taken so far reach, 0 to 100.
    double GetPercentRead() const;
    tessel::TxString GetFilename() const { return m_filename; }
    // Lines ended by a line feed since Open.
    uint32_t GetLineCount() const { return m_lineCount; }

    // Never leaves two owners of one stream: the target's file is closed
    // first, and the copy of an open source is a closed object.
    CTextFile& operator=(const CTextFile& other);

private:
    CTextFile(CTextFile& other);  // not offered
    int32_t PrimeIO();
    bool GrowLineStore(size_t needed);

    std::FILE* m_file;
    tessel::TxString m_filename;
    uint64_t m_fileSize;
    uint64_t m_bufferStart;
    char m_buffer[kBufferSize];
    uint32_t m_bufferLength;
    uint32_t m_bufferPos;
    char* m_line;
    size_t m_lineCapacity;
    uint32_t m_lineCount;
    size_t m_lineLength;
};

}  // namespace quarl

#endif
