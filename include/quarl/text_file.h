/// \file
/// CTextFile: a forward-only reader of the lines of a file.
#ifndef QUARL_TEXT_FILE_H
#define QUARL_TEXT_FILE_H

#include <quarl/export.h>
#include <quarl/types.h>
#include <tessel/tessel.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace quarl {

/// Reads a file in blocks of 1024 bytes and delivers it line by line. A line
/// feed ends a line; carriage returns are dropped wherever they stand; a last
/// line without a line feed is delivered as well. It knows nothing of LAS.
/// The current line stays valid until the next ReadLine, Close or Open.
///
/// Bytes that cannot be text end the reading at once instead of growing the
/// line store without end (a device of zeros, a binary file, an endless line):
/// with SetRefuseNul on, a NUL byte in the first block, after decoding,
/// refuses the file at Open, and a line longer than GetMaxLineLength() bytes
/// refuses it at that line.
/// Both give LASFILE_BAD_FORMAT, GetRefusal says which, and from then on
/// every ReadLine and SkipToLineStartingWith gives LASFILE_BAD_FORMAT as
/// well, until the next Open or Close. LAS text holds no NUL byte, and its
/// lines are far shorter than the default bound.
class QUARL_API CTextFile {
public:
    static constexpr uint32_t kBufferSize = 1024;  ///< the bytes of a block
    static constexpr uint32_t kLineStep = 40;      ///< the growth of a small line store
    /// The longest line read by default: 256 MiB.
    static constexpr size_t kDefaultMaxLineLength = size_t{1} << 28;

    /// Why the bytes of the file were refused.
    enum ERefusal : uint8_t {
        kNotRefused = 0,   ///< read as text
        kRefusedNul,       ///< the first block holds a NUL byte: no text
        kRefusedLongLine,  ///< a line passed GetMaxLineLength()
    };

    CTextFile();
    ~CTextFile();

    /// Closes what was open, opens the file for reading and reads its first
    /// line, which GetLine then gives. Returns LASFILE_IO_FAILED when the path
    /// cannot be opened (the object stays closed), and when a seek fails or
    /// the file has no byte (it is then open, with no line to read);
    /// LASFILE_OUT_OF_MEMORY when the line store cannot be had (open, GetLine
    /// null); LASFILE_BAD_FORMAT when SetRefuseNul is on and the first block
    /// holds a NUL byte (open, the line empty, GetRefusal kRefusedNul), or the
    /// first line is too long; otherwise what ReadLine gives for the first line.
    ELASFILEERROR Open(const tessel::TxString& path);
    /// Like Open, over `size` bytes at `data` instead of a file's: the same
    /// lines, blocks, decoding and results as a file holding those bytes
    /// gives. The bytes are not copied: the caller keeps them unchanged and
    /// alive until Close, the next Open or OpenBuffer, or the object's end.
    /// `name` takes the place of the path (GetFilename). An empty buffer is
    /// an empty file (LASFILE_IO_FAILED, open, no line); null `data` with a
    /// size above 0 gives LASFILE_IO_FAILED and leaves the object closed.
    ELASFILEERROR OpenBuffer(const void* data, size_t size, const tessel::TxString& name);
    /// Like Open, over a stream the caller opened for reading (fmemopen,
    /// fopencookie, ...): the same lines, blocks, decoding and results as a
    /// file of the same bytes gives. The stream must seek, to its end too:
    /// the size is taken first. The object takes the stream and closes it
    /// at Close, the next Open or the object's end, also when this call
    /// fails; `name` takes the place of the path. Null `stream` gives
    /// LASFILE_IO_FAILED and leaves the object closed.
    ELASFILEERROR OpenStream(std::FILE* stream, const tessel::TxString& name);
    /// Closes the stream, forgets the path, releases the line store and sets
    /// the line count to 0. Does nothing on a closed object.
    void Close();
    /// Whether a stream is open: from an Open that opened one until Close.
    bool IsOpen() const { return m_file != nullptr; }

    /// Reads the next line into the line store. Returns LASFILE_IO_FAILED when
    /// no byte is left (the line is then empty, and stays so on every further
    /// call) or the object is closed; LASFILE_OUT_OF_MEMORY when the store
    /// cannot grow: the bytes so far stay as the line, the byte that did not
    /// fit is lost, and the next call goes on behind it. LASFILE_BAD_FORMAT
    /// when the line would be longer than GetMaxLineLength(): the line holds
    /// the bytes read of it, at most that many, and the file is refused (see
    /// the class comment).
    ELASFILEERROR ReadLine();

    /// The current line, NUL-terminated; null when no file is open.
    const char* GetLine() const { return m_file ? m_line : nullptr; }
    /// Length of the current line in bytes (a NUL byte in it is counted).
    size_t GetLineLength() const { return m_file ? m_lineLength : 0; }

    /// Passes over lines up to the next one whose first byte is `first`,
    /// which becomes the current line just as ReadLine gives it; `passed`
    /// grows by the number of lines moved over, that one included. At the
    /// end of the file: LASFILE_IO_FAILED and an empty current line. A line
    /// passed over that is longer than GetMaxLineLength() refuses the file:
    /// LASFILE_BAD_FORMAT, an empty current line, and `passed` counts that
    /// line too.
    ELASFILEERROR SkipToLineStartingWith(char first, uint64_t& passed);

    /// The last `most` bytes of the file (all of it when it is shorter) into
    /// `tail`, and the offset of the first of them into `start`, read without
    /// moving the place of ReadLine. False, with `tail` empty, when the
    /// object is closed, its text is decoded from UTF-16 or UTF-32 or read by
    /// carriage returns (no byte offsets), or the stream fails.
    bool ReadTail(size_t most, std::string& tail, uint64_t& start);
    /// Moves the place of ReadLine to byte `offset` of the file and reads the
    /// line that starts there. The line count does not follow the move.
    /// LASFILE_IO_FAILED as ReadTail's false, and at the end of the file.
    ELASFILEERROR ReadLineAt(uint64_t offset);
    /// Up to `most` bytes from `offset` on into `bytes`, leaving the position
    /// of ReadLine alone. False when the stream cannot be read there.
    bool ReadBytesAt(uint64_t offset, size_t most, std::string& bytes);
    /// Goes on at `offset`, the start of a line, as if ReadLine had passed
    /// `lines` lines to get there. Plain bytes only (no decoding at work).
    bool MoveTo(uint64_t offset, uint32_t lines);
    /// The offset of the byte behind the current line (its line feed).
    uint64_t GetOffset() const { return m_bufferStart + m_bufferPos; }

    /// How far through the file the bytes taken so far reach, 0 to 100, exact
    /// to the byte; 100 once the end is reached. Meaningful while open.
    double GetPercentRead() const;
    /// The bytes of the file (of the text, when it is decoded).
    uint64_t GetSize() const { return m_fileSize; }
    /// The descriptor of the file when its bytes are the text (no decoding
    /// at work) and it has one; -1 for a buffer or decoded text.
    int GetDescriptor() const;
    /// The path given to Open (the name given to OpenBuffer); empty when closed.
    tessel::TxString GetFilename() const { return m_filename; }
    /// Lines ended by a line feed since Open.
    uint32_t GetLineCount() const { return m_lineCount; }

    /// The longest line that ReadLine delivers, in bytes; 0 is no bound. It
    /// applies from the next ReadLine on and stays until it is set again;
    /// kDefaultMaxLineLength in a new object.
    ///@{
    void SetMaxLineLength(size_t most) { m_maxLineLength = most; }
    size_t GetMaxLineLength() const { return m_maxLineLength; }
    ///@}
    /// Whether Open refuses a file whose first block holds a NUL byte. Off
    /// by default, and then a NUL byte is a byte of its line like any other;
    /// it applies from the next Open on and stays until it is set again.
    ///@{
    void SetRefuseNul(bool on) { m_refuseNul = on; }
    bool GetRefuseNul() const { return m_refuseNul; }
    ///@}
    /// Why the file was refused; kNotRefused while it is read as text, and
    /// after Close.
    ERefusal GetRefusal() const { return static_cast<ERefusal>(m_refusal); }

    /// Never leaves two owners of one stream: the target's file is closed
    /// first, and the copy of an open source is a closed object.
    CTextFile& operator=(const CTextFile& other);

    /// The text forms that Open can recognise when decoding is on.
    enum ETextForm : uint8_t {
        kFormBytes = 0,  ///< the bytes as they are
        kFormUtf8Bom,    ///< UTF-8 behind a byte-order mark, which is passed over
        kFormUtf16Le,    ///< UTF-16 (with a byte-order mark, or ASCII text with
                         ///< every other byte zero), delivered as UTF-8
        kFormUtf16Be,    ///< the same, big-endian
        kFormUtf32Le,    ///< UTF-32 with a byte-order mark, delivered as UTF-8
        kFormUtf32Be,    ///< the same, big-endian
    };
    /// Decoding applies from the next Open on and stays until it is set
    /// again; it is off by default, and then every byte is delivered as it
    /// is. On, Open looks at the head of the file: a byte-order mark is passed
    /// over, UTF-16 and UTF-32 text is delivered as UTF-8, and a file whose
    /// first block holds carriage returns but no line feed has its carriage
    /// returns read as line ends (a line feed directly behind one is then
    /// part of that line end).
    ///@{
    void SetDecoding(bool on) { m_decode = on; }
    bool GetDecoding() const { return m_decode; }
    ///@}
    /// What the last Open found; kFormBytes and false while decoding is off.
    ///@{
    ETextForm GetTextForm() const { return static_cast<ETextForm>(m_form); }
    bool HasCarriageReturnLines() const { return m_crLines && m_loneReturnLine == 0; }
    ///@}
    /// Decoding, a carriage return with no line feed behind it ends a line
    /// anywhere in the file (old tools, files put together), and from then on
    /// a carriage return, a line feed or the two together end each line. The
    /// 1-based line that the first such carriage return ended; 0 for none.
    /// Headers-only skipping looks for them only within its blocks.
    uint64_t GetLoneReturnLine() const { return m_loneReturnLine; }

private:
    CTextFile(CTextFile& other);  ///< not offered
    ELASFILEERROR Start(std::FILE* file, const tessel::TxString& name);
    int32_t PrimeIO();
    int32_t PrimeDecoded();
    bool GrowLineStore(size_t needed);
    bool MakeRoom(size_t needed);
    ELASFILEERROR StoreFailure() const;
    void DetectTextForm();
    ELASFILEERROR ReadCarriageReturnLine();
    bool AppendByte(char c);
    bool AppendBytes(const char* bytes, size_t length);
    ELASFILEERROR SkipLineByLine(char first, uint64_t& passed);
    bool IsLoneReturn(const char* cr, const char* feed);

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
    bool m_decode = false;
    uint8_t m_form = kFormBytes;
    bool m_crLines = false;
    bool m_afterCarriageReturn = false;
    uint64_t m_loneReturnLine = 0;
    size_t m_maxLineLength = kDefaultMaxLineLength;
    uint8_t m_refusal = kNotRefused;
    bool m_refuseNul = false;
};

}  // namespace quarl

#endif
