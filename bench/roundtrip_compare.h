// The round trip of a document through the writer's repair mode: a file
// read leniently, written as LAS 2.0 or 3.0 with repair on, read back
// strictly and compared with what was read, except where a repair record
// names the section or line. Shared by tests/test_roundtrip.cpp and
// bench/bench_roundtrip_counts.cpp. Header only: it needs nothing but the
// public interface.
#ifndef QUARL_BENCH_ROUNDTRIP_COMPARE_H
#define QUARL_BENCH_ROUNDTRIP_COMPARE_H

#include <quarl/quarl.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace quarl::roundtrip {

// What happened to one file in one version. `difference` says the first
// thing that differs, or why a step failed; empty when all went through.
struct Trip {
    ELASFILEERROR written = LASFILE_WRONG_STATE;
    ELASFILEERROR readBack = LASFILE_WRONG_STATE;
    size_t readBackNotes = 0;
    bool same = false;
    std::vector<CLasRepair> repairs;
    std::string difference;
};

inline std::string Trimmed(const std::string& text)
{
    const size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string::npos) return "";
    return text.substr(begin, text.find_last_not_of(" \t") + 1 - begin);
}

// A number as "%.15g" keeps it; NaN as "nan".
inline std::string Number15(double value)
{
    if (std::isnan(value)) return "nan";
    char text[40];
    std::snprintf(text, sizeof text, "%.15g", value);
    return text;
}

// Whether a repair left the section out.
inline bool LeftOut(const std::vector<CLasRepair>& repairs, const std::string& section)
{
    for (const CLasRepair& r : repairs)
        if ((r.kind == LASREPAIR_SECTION_LEFT_OUT || r.kind == LASREPAIR_SECTION_NOT_WRITTEN) &&
            r.section == section)
            return true;
    return false;
}

// Whether a repair changed the line or curve of the section, under its old
// or new name; a curve left out takes its definition line with it.
inline bool LineRepaired(const std::vector<CLasRepair>& repairs, const std::string& section,
                         const std::string& mnemonic)
{
    if (LeftOut(repairs, section)) return true;
    for (const CLasRepair& r : repairs) {
        if (r.mnemonic.empty() && r.kind != LASREPAIR_MNEMONIC) continue;
        if (r.section != section && r.kind != LASREPAIR_CURVE_LEFT_OUT) continue;
        if (r.mnemonic == mnemonic || r.from == mnemonic) return true;
    }
    return false;
}

inline const CLasSection* FindSection(const std::vector<CLasSection>& sections,
                                      const std::string& name)
{
    for (const CLasSection& section : sections)
        if (section.m_name == name) return &section;
    return nullptr;
}

// Two mnemonics alike but for the case of ASCII letters.
inline bool SameName(const std::string& a, const std::string& b)
{
    if (a.size() != b.size()) return false;
    std::map<const CLasSection*, std::vector<bool>> usedLines;
    for (size_t i = 0; i < a.size(); ++i) {
        const auto lower = [](char c) {
            return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        };
        if (lower(a[i]) != lower(b[i])) return false;
    }
    return true;
}

// The lines of `a` against those of `b`, found by mnemonic (the n-th line
// of a mnemonic against the n-th of `b` not `used` yet: a second section
// merged into `b` goes on where the first ended): unit, value and
// description, trimmed.
inline std::string CompareLines(const CLasSection& a, const CLasSection& b,
                                const std::vector<CLasRepair>& repairs, std::vector<bool>& used)
{
    used.resize(b.m_params.size(), false);
    for (const CLasParam& line : a.m_params) {
        if (LineRepaired(repairs, b.m_name, line.m_mnemonic)) continue;
        size_t found = 0;
        while (found < b.m_params.size() &&
               (used[found] || !SameName(b.m_params[found].m_mnemonic, line.m_mnemonic)))
            ++found;
        if (found == b.m_params.size())
            return b.m_name + ": line " + line.m_mnemonic + " is missing";
        used[found] = true;
        const CLasParam& other = b.m_params[found];
        if (Trimmed(line.m_unit) != Trimmed(other.m_unit) ||
            Trimmed(line.m_value) != Trimmed(other.m_value) ||
            Trimmed(line.m_description) != Trimmed(other.m_description))
            return b.m_name + ": line " + line.m_mnemonic + " differs";
    }
    return "";
}

inline std::string CompareCurve(const CLasCurve& a, const CLasCurve& b)
{
    if (a.m_isNumeric != b.m_isNumeric || a.size() != b.size()) return "differs in kind or length";
    for (size_t row = 0; row < a.m_numbers.size(); ++row)
        if (Number15(a.m_numbers[row]) != Number15(b.m_numbers[row]))
            return "differs at row " + std::to_string(row);
    for (size_t row = 0; row < a.m_strings.size(); ++row)
        if (Trimmed(a.m_strings[row]) != Trimmed(b.m_strings[row]))
            return "differs at row " + std::to_string(row);
    return "";
}

// The curves of `a` against those of `b`: each found by its mnemonic, or by
// the new name a repair gave it, each curve of `b` used once.
inline std::string CompareCurves(const CLasSection& a, const CLasSection& b,
                                 const std::vector<CLasRepair>& repairs)
{
    std::vector<bool> used(b.m_curves.size(), false);
    for (const CLasCurve& curve : a.m_curves) {
        const std::string mnemonic = curve.m_definition.m_mnemonic;
        if (LineRepaired(repairs, b.m_name, mnemonic)) continue;
        size_t found = b.m_curves.size();
        for (size_t i = 0; i < b.m_curves.size() && found == b.m_curves.size(); ++i) {
            const std::string name = b.m_curves[i].m_definition.m_mnemonic;
            bool renamed = false;
            for (const CLasRepair& r : repairs)
                renamed |= r.kind == LASREPAIR_MNEMONIC && r.from == mnemonic && r.to == name;
            if (!used[i] && (name == mnemonic || renamed)) found = i;
        }
        if (found == b.m_curves.size()) return b.m_name + ": curve " + mnemonic + " is missing";
        used[found] = true;
        const std::string difference = CompareCurve(curve, b.m_curves[found]);
        if (!difference.empty()) return b.m_name + ": curve " + mnemonic + " " + difference;
    }
    return "";
}

// Document `a` (as read) against `b` (read back from what the writer made of
// `a` in the version), given the writer's repairs; "" when they agree.
inline std::string Compare(const std::vector<CLasSection>& a, const std::vector<CLasSection>& b,
                           const std::vector<CLasRepair>& repairs, bool las3)
{
    std::map<const CLasSection*, std::vector<bool>> usedLines;
    for (size_t i = 0; i < a.size(); ++i) {
        if (i == 0 && (a[i].m_name == "Version" || a[i].m_name == "V" || a[i].m_name == "VERSION"))
            continue;
        const std::string name = LasSectionNameIn(a[i].m_name.c_str(), las3);
        if (LeftOut(repairs, name)) continue;
        const CLasSection* other = FindSection(b, name);
        if (!other) return "section " + name + " is missing";
        const std::string difference = a[i].m_type == LASSECTION_DATA
                                           ? CompareCurves(a[i], *other, repairs)
                                           : CompareLines(a[i], *other, repairs, usedLines[other]);
        if (!difference.empty()) return difference;
    }
    return "";
}

inline ELASFILEERROR ReadSections(CLasReader& reader, std::vector<CLasSection>& sections)
{
    sections.clear();
    if (!reader.IsOpen()) return LASFILE_WRONG_STATE;
    return reader.GetSections(sections, true);
}

// Writes `document` (sections as read, Version first) with repair on (or
// off) in the version, reads it back strictly and compares.
inline Trip WriteAndCompare(const std::vector<CLasSection>& document, bool las3, bool repair = true)
{
    Trip trip;
    CLasWriter writer;
    writer.SetFormat(las3, ' ');
    writer.SetRepair(repair);
    for (const CLasSection& section : document) {
        // Without repair the writer takes no Version section: it makes its own.
        if (!repair && &section == &document.front() && section.m_name.size() >= 1 &&
            (section.m_name[0] == 'V' || section.m_name[0] == 'v'))
            continue;
        trip.written = writer.AddSection(section);
        if (trip.written != LASFILE_OK) break;
    }
    std::string text;
    if (trip.written == LASFILE_OK) trip.written = writer.WriteToString(text, "roundtrip.las");
    trip.repairs = writer.GetRepairs();
    if (trip.written != LASFILE_OK) {
        const char* section = writer.GetLastErrorSection();
        const char* mnemonic = writer.GetLastErrorParam();
        trip.difference = std::string("writing failed with ") + ResultName(trip.written) +
                          ", section " + (section ? section : "-") + ", mnemonic " +
                          (mnemonic ? mnemonic : "-") + ", column " +
                          std::to_string(writer.GetLastErrorColumn()) + ", row " +
                          std::to_string(writer.GetLastErrorRow());
        return trip;
    }
    CLasReader reader;
    trip.readBack = reader.OpenBuffer(text.data(), text.size(), "roundtrip.las");
    trip.readBackNotes = reader.GetNotes().size();
    if (trip.readBack != LASFILE_OK || trip.readBackNotes != 0) {
        trip.difference = std::string("the strict read back gave ") + ResultName(trip.readBack) +
                          " with " + std::to_string(trip.readBackNotes) + " note(s)";
        return trip;
    }
    std::vector<CLasSection> back;
    ReadSections(reader, back);
    trip.difference = Compare(document, back, trip.repairs, las3);
    trip.same = trip.difference.empty();
    return trip;
}

// Whether a document holds anything past its Version section: headers or
// log data.
inline bool HasContent(const std::vector<CLasSection>& document)
{
    for (size_t i = 1; i < document.size(); ++i)
        if (!document[i].m_params.empty() || !document[i].m_curves.empty()) return true;
    return false;
}

// Whether the log data (ASCII, LOG, Log_Data) hold rows.
inline bool HasLogRows(const std::vector<CLasSection>& document)
{
    for (const CLasSection& section : document)
        if ((section.m_flags & CLasSection::kFlagLogData) && !section.m_curves.empty() &&
            section.m_curves[0].size() > 0)
            return true;
    return false;
}

}  // namespace quarl::roundtrip

#endif
