// CLasReader::Open on arbitrary bytes, strictly, leniently, leniently for
// the headers only under a small budget, and for the header and the data's
// ends both ways; then every accessor and the
// stepping check on whatever was read, and the notes against the result.
// OpenBuffer on the same bytes must read what Open reads, and a strict read
// in blocks, on one thread and on two, what a read line by line reads,
// value for value.
#include <quarl/quarl.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_common.h"

namespace {

void Check(bool condition)
{
    if (!condition) std::abort();
}

int32_t Callback(void*, double percent, const char*)
{
    Check(percent >= 0.0 && percent <= 100.0);
    return 0;
}

void VisitAccessors(const quarl::CLasReader& reader, quarl::ELASFILEERROR result)
{
    const uint64_t count = reader.size();
    Check(reader.CountSectionsByType(quarl::LASSECTION_ANY) == static_cast<int32_t>(count));
    std::vector<quarl::CLasString> names;
    Check(reader.GetSectionNames(quarl::LASSECTION_ANY, names) == quarl::LASFILE_OK);
    Check(names.size() == count);

    quarl::CLasSection copy;
    Check((reader.GetVersionHeaders(copy) == quarl::LASFILE_OK) == (count >= 1));
    Check((reader.GetWellHeaders(copy) == quarl::LASFILE_OK) == (count >= 2));
    Check(reader.GetSection(static_cast<uint32_t>(count), copy) == quarl::LASFILE_BAD_VALUE);
    std::vector<quarl::CLasSection> all;
    Check(reader.GetSections(all, true) == quarl::LASFILE_OK && all.size() == count);

    for (uint64_t i = 0; i < count; ++i) {
        const quarl::CLasSection& section = reader.GetSection(i);
        Check(reader.GetSectionPtr(i).get() == &section);
        Check(reader.GetSection(section.m_name.c_str(), copy) == quarl::LASFILE_OK);
        if (section.m_type != quarl::LASSECTION_DATA || result != quarl::LASFILE_OK) continue;
        // A read that ended well leaves every curve of a section one length.
        for (const quarl::CLasCurve& curve : section.m_curves) Check(curve.size() == section.m_curves.front().size());
    }
    try {
        reader.GetSection(count);
        Check(false);
    } catch (const tessel::Exception& e) {
        Check(e.Code() == 2);
    }
    reader.CheckDataStepping();
}

// Every note has a kind with a name; a failed read ends with the note that
// says where it stopped, and only a failed read has one.
void CheckNotes(const quarl::CLasReader& reader, quarl::ELASFILEERROR result)
{
    const std::vector<quarl::CLasNote>& notes = reader.GetNotes();
    size_t stops = 0;
    for (const quarl::CLasNote& note : notes) {
        Check(std::string(quarl::LasNoteKindName(note.kind)) != "LASNOTE_UNKNOWN");
        stops += note.kind == quarl::LASNOTE_READ_STOPPED;
    }
    Check(stops == (result == quarl::LASFILE_OK ? 0u : 1u));
    if (result != quarl::LASFILE_OK) {
        Check(notes.back().kind == quarl::LASNOTE_READ_STOPPED);
        Check(notes.back().line == reader.GetLineNumber());
    }
    // The cap: at most 100 notes of each of the kinds (the reader counts
    // them in 40 slots), one count per kind, and the note of the stop.
    Check(notes.size() <= 40 * 101 + 1);
}

// What two reads must share: result, sections, line and notes.
bool SameRead(const quarl::CLasReader& a, const quarl::CLasReader& b)
{
    if (a.size() != b.size() || a.GetLineNumber() != b.GetLineNumber()) return false;
    if (a.GetNotes().size() != b.GetNotes().size()) return false;
    for (size_t i = 0; i < a.GetNotes().size(); ++i) {
        const quarl::CLasNote& x = a.GetNotes()[i];
        const quarl::CLasNote& y = b.GetNotes()[i];
        if (x.line != y.line || x.kind != y.kind || x.text != y.text) return false;
    }
    for (uint64_t i = 0; i < a.size(); ++i) {
        const quarl::CLasSection& x = a.GetSection(i);
        const quarl::CLasSection& y = b.GetSection(i);
        if (x.m_name != y.m_name || x.m_params.size() != y.m_params.size() || x.m_curves.size() != y.m_curves.size())
            return false;
    }
    return true;
}

void ReadWith(const std::string& path, const uint8_t* data, size_t size, const quarl::CLasReadOptions& options)
{
    quarl::CLasReader reader, fromMemory;
    reader.SetOptions(options);
    reader.SetStatusCallback(nullptr, &Callback);
    const quarl::ELASFILEERROR result = reader.Open(tessel::TxString(path.c_str()));
    Check(result >= quarl::LASFILE_OK && result <= quarl::LASFILE_BAD_NAME);
    VisitAccessors(reader, result);
    CheckNotes(reader, result);
    fromMemory.SetOptions(options);
    Check(fromMemory.OpenBuffer(data, size, tessel::TxString(path.c_str())) == result);
    Check(SameRead(reader, fromMemory));
    reader.Close();
    Check(reader.empty() && !reader.IsOpen());
}

// The values of two reads are the same bit for bit.
bool SameValues(const quarl::CLasReader& a, const quarl::CLasReader& b)
{
    for (uint64_t i = 0; i < a.size() && i < b.size(); ++i) {
        const quarl::CLasSection& x = a.GetSection(i);
        const quarl::CLasSection& y = b.GetSection(i);
        for (size_t c = 0; c < x.m_curves.size() && c < y.m_curves.size(); ++c) {
            const quarl::CLasCurve& p = x.m_curves[c];
            const quarl::CLasCurve& q = y.m_curves[c];
            if (p.m_numbers.size() != q.m_numbers.size() || p.m_strings != q.m_strings) return false;
            if (!p.m_numbers.empty() &&
                std::memcmp(p.m_numbers.data(), q.m_numbers.data(), p.m_numbers.size() * sizeof(double)) != 0)
                return false;
        }
    }
    return true;
}

int32_t GoOn(void*, double, const char*)
{
    return 0;
}

// The bytes read strictly line by line (a status callback keeps a read so)
// and in blocks on one thread and on two, without and with a budget.
void ReadInBlocks(const uint8_t* data, size_t size)
{
    for (uint64_t budget : {uint64_t(0), uint64_t(4096)}) {
        quarl::CLasReadOptions options;
        options.maxBytes = budget;
        quarl::CLasReader lineByLine, one, two;
        lineByLine.SetOptions(options);
        lineByLine.SetStatusCallback(nullptr, GoOn);
        one.SetOptions(options);
        options.threads = 2;
        two.SetOptions(options);
        const quarl::ELASFILEERROR result = lineByLine.OpenBuffer(data, size, "t.las");
        Check(one.OpenBuffer(data, size, "t.las") == result && two.OpenBuffer(data, size, "t.las") == result);
        Check(SameRead(lineByLine, one) && SameValues(lineByLine, one));
        Check(SameRead(lineByLine, two) && SameValues(lineByLine, two));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string& path = quarl::fuzz::WriteInput(data, size);
    quarl::CLasReadOptions options;
    ReadWith(path, data, size, options);
    ReadInBlocks(data, size);
    options.lenient = true;
    ReadWith(path, data, size, options);
    options.headersOnly = true;
    options.maxBytes = 2048;
    ReadWith(path, data, size, options);
    options.dataEnds = true;
    options.maxBytes = 0;
    ReadWith(path, data, size, options);
    options.lenient = false;
    ReadWith(path, data, size, options);
    return 0;
}
