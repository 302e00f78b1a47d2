// The writer on a document decoded from the input: SetFormat, AddSection,
// Validate and Write, then a read of what was written; and the same
// sections through a writer in repair mode.
//
// An input is "well-formed" when SetFormat succeeds, every section has a
// name of its version with the type that name has, and every text is
// printable without "#" (which would turn a line into a comment). For those
// a written file must read back, with the same number of rows in the main
// data section. Anything else may legitimately read back differently (a
// line feed in a description, a data section named "Well"), so there only
// the absence of crashes, leaks and undefined behaviour and a valid result
// code are checked.
//
// With QUARL_FUZZ_SAVE_DIR set, the first files written are kept there as
// seeds for the reader's targets.
#include <quarl/quarl.h>
#include <strings.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "byte_source.h"
#include "foundation/section_names.h"
#include "fuzz_common.h"

namespace {

using quarl::CLasCurve;
using quarl::CLasParam;
using quarl::CLasSection;
using quarl::ELASFILEERROR;
using quarl::ELASSECTIONTYPE;

// Aborts with the line of the failed condition.
#define Check(condition) CheckAt((condition), __LINE__)
void CheckAt(bool condition, int line)
{
    if (condition) return;
    std::fprintf(stderr, "fuzz_writer.cpp:%d: check failed\n", line);
    std::abort();
}

bool ValidCode(ELASFILEERROR code)
{
    return code >= quarl::LASFILE_OK && code <= quarl::LASFILE_BAD_NAME;
}

struct NaturalName {
    const char* name;
    ELASSECTIONTYPE type;
};

constexpr NaturalName kLas2Names[] = {
    {"Well", quarl::LASSECTION_HEADER},
    {"W", quarl::LASSECTION_HEADER},
    {"Parameter", quarl::LASSECTION_PARAMETER},
    {"P", quarl::LASSECTION_PARAMETER},
    {"Curve", quarl::LASSECTION_DEFINITION},
    {"C", quarl::LASSECTION_DEFINITION},
    {"ASCII", quarl::LASSECTION_DATA},
    {"A", quarl::LASSECTION_DATA},
    {"LOG", quarl::LASSECTION_DATA},
    {"Other", quarl::LASSECTION_PARAMETER},
};

constexpr NaturalName kLas3Names[] = {
    {"Well", quarl::LASSECTION_HEADER},
    {"Parameter", quarl::LASSECTION_PARAMETER},
    {"Curve", quarl::LASSECTION_DEFINITION},
    {"ASCII", quarl::LASSECTION_DATA},
    {"Log_Parameter", quarl::LASSECTION_PARAMETER},
    {"Log_Definition", quarl::LASSECTION_DEFINITION},
    {"Log_Data", quarl::LASSECTION_DATA},
    {"Core_Parameter", quarl::LASSECTION_PARAMETER},
    {"Core_Definition", quarl::LASSECTION_DEFINITION},
    {"Core_Data", quarl::LASSECTION_DATA},
    {"Tops_Definition[2]", quarl::LASSECTION_DEFINITION},
    {"Tops_Data[2]", quarl::LASSECTION_DATA},
};

class Decoder {
public:
    Decoder(const uint8_t* data, size_t size) : m_in(data, size) {}

    quarl::fuzz::ByteSource& in() { return m_in; }

    // Any bytes, or printable ones without "#" when well-formed.
    std::string Text(bool wellFormed, size_t maxLength = 24)
    {
        std::string text = m_in.ConsumeString(maxLength);
        if (!wellFormed) return text;
        for (char& c : text) {
            const unsigned char u = static_cast<unsigned char>(c);
            c = static_cast<char>(0x20 + u % 95);
            if (c == '#') c = '_';
        }
        return text;
    }

    CLasParam Param(bool wellFormed)
    {
        CLasParam param;
        param.m_mnemonic = Text(wellFormed, 8);
        param.m_unit = Text(wellFormed, 6);
        param.m_value = Text(wellFormed);
        param.m_description = Text(wellFormed);
        static const char* const kFormats[] = {"", "{F}", "{S}", "{I}", "{E}", "{F10.2}"};
        if (!wellFormed && m_in.ConsumeBool()) {
            param.m_format = Text(false, 8);
            param.m_association = Text(false, 8);
        } else {
            param.m_format = m_in.PickValueInArray(kFormats);
        }
        return param;
    }

    double Number()
    {
        switch (m_in.ConsumeIntInRange(0, 3)) {
            case 0: {
                static const double kEdgeValues[] = {std::numeric_limits<double>::quiet_NaN(),
                                                     std::numeric_limits<double>::infinity(),
                                                     -std::numeric_limits<double>::infinity(),
                                                     std::numeric_limits<double>::max(),
                                                     std::numeric_limits<double>::lowest(),
                                                     std::numeric_limits<double>::denorm_min(),
                                                     -0.0,
                                                     -999.25};
                return m_in.PickValueInArray(kEdgeValues);
            }
            case 1: {
                const uint64_t bits = m_in.ConsumeUint64();
                double value;
                std::memcpy(&value, &bits, sizeof value);
                return value;
            }
            case 2:
                return m_in.ConsumeFiniteDouble();
            default:
                return 1000.0 + 0.5 * m_in.ConsumeIntInRange(0, 100);
        }
    }

    void Curves(CLasSection& section, bool wellFormed)
    {
        const int count = m_in.ConsumeIntInRange(0, 5);
        const int rows = m_in.ConsumeIntInRange(0, 12);
        for (int c = 0; c < count; ++c) {
            CLasCurve curve;
            curve.m_isNumeric = c == 0 || m_in.ConsumeBool();
            curve.m_definition = Param(wellFormed);
            // The writer takes a curve's definition as it is, unchecked.
            if (!PassesLineRules(curve.m_definition)) m_curveDefinitionsChecked = false;
            const int length = wellFormed ? rows : m_in.ConsumeIntInRange(0, 12);
            for (int r = 0; r < length; ++r) {
                if (curve.m_isNumeric)
                    curve.m_numbers.push_back(Number());
                else
                    curve.m_strings.push_back(Text(wellFormed, 12));
            }
            section.m_curves.push_back(curve);
        }
    }

    CLasSection Section(bool las3, bool wellFormed)
    {
        CLasSection section;
        if (wellFormed || m_in.ConsumeBool()) {
            const NaturalName& natural = las3 ? m_in.PickValueInArray(kLas3Names) : m_in.PickValueInArray(kLas2Names);
            section.m_name = natural.name;
            section.m_type = natural.type;
        } else {
            section.m_name = Text(false, 20);
        }
        if (!wellFormed) {
            static const ELASSECTIONTYPE kTypes[] = {quarl::LASSECTION_PARAMETER, quarl::LASSECTION_DEFINITION,
                                                     quarl::LASSECTION_DATA, quarl::LASSECTION_HEADER,
                                                     quarl::LASSECTION_ANY};
            if (m_in.ConsumeBool()) section.m_type = m_in.PickValueInArray(kTypes);
            if (m_in.ConsumeBool()) section.m_association = Text(false, 20);
        }
        if (section.m_type == quarl::LASSECTION_DATA || (!wellFormed && m_in.ConsumeBool()))
            Curves(section, wellFormed);
        if (section.m_type != quarl::LASSECTION_DATA || !wellFormed) {
            const int count = m_in.ConsumeIntInRange(0, 6);
            for (int i = 0; i < count; ++i) section.m_params.push_back(Param(wellFormed));
        }
        return section;
    }

    // Whether every curve definition obeys the rules that AddSection applies
    // to parameter lines.
    bool CurveDefinitionsChecked() const { return m_curveDefinitionsChecked; }

private:
    static bool PassesLineRules(const CLasParam& param)
    {
        const auto has = [](const std::string& text, const char* bytes) {
            return text.find_first_of(bytes) != std::string::npos;
        };
        return !has(param.m_mnemonic, " \t.:{}|") && !has(param.m_unit, " \t.:{}|") && !has(param.m_value, "{}|") &&
               param.m_association.empty() &&
               (param.m_format.empty() || (has(param.m_format, "{") && has(param.m_format, "}")));
    }

    quarl::fuzz::ByteSource m_in;
    bool m_curveDefinitionsChecked = true;
};

struct Stop {
    int stopAt;  // report number at which to cancel, -1 for never
    int calls;
};

int32_t Callback(void* context, double percent, const char*)
{
    Check(percent >= 0.0 && percent <= 100.0);
    Stop* stop = static_cast<Stop*>(context);
    return stop->calls++ == stop->stopAt ? 1 : 0;
}

int32_t Rows(const CLasSection& section)
{
    return section.m_curves.empty() ? 0 : section.m_curves.front().size();
}

// The rows of the first data section named "ASCII", else "LOG", else "Log_Data".
int32_t MainDataRows(const std::vector<CLasSection>& sections)
{
    for (const char* name : quarl::kMainDataNames)
        for (const CLasSection& section : sections)
            if (section.m_type == quarl::LASSECTION_DATA && strcasecmp(section.m_name.c_str(), name) == 0)
                return Rows(section);
    return 0;
}

void SaveSeed(const std::string& path)
{
    static int saved = 0;
    const char* dir = std::getenv("QUARL_FUZZ_SAVE_DIR");
    if (!dir || saved >= 500) return;
    std::ifstream in(path, std::ios::binary);
    std::ofstream out(std::string(dir) + "/written-" + std::to_string(saved++) + ".las", std::ios::binary);
    out << in.rdbuf();
}

// The same sections through a writer in repair mode: every AddSection is
// taken, every record has a kind with a name, and what is written reads
// back leniently with a valid result.
void CheckRepairMode(const std::vector<CLasSection>& sections, bool las3, char delimiter)
{
    quarl::CLasWriter writer;
    writer.SetFormat(las3, delimiter);
    writer.SetRepair(true);
    for (const CLasSection& section : sections) Check(writer.AddSection(section) == quarl::LASFILE_OK);
    std::string text;
    const ELASFILEERROR written = writer.WriteToString(text, "repaired.las");
    Check(ValidCode(written));
    for (const quarl::CLasRepair& repair : writer.GetRepairs())
        Check(std::strcmp(quarl::LasRepairKindName(repair.kind), "LASREPAIR_UNKNOWN") != 0);
    if (written != quarl::LASFILE_OK) return;
    quarl::CLasReadOptions lenient;
    lenient.lenient = true;
    quarl::CLasReader reader;
    reader.SetOptions(lenient);
    Check(ValidCode(reader.OpenBuffer(text.data(), text.size(), "repaired.las")));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Decoder decoder(data, size);
    quarl::fuzz::ByteSource& in = decoder.in();
    const bool las3 = in.ConsumeBool();
    const char delimiter = in.PickValueInArray({' ', '\t', ',', ';'});
    bool wellFormed = in.ConsumeBool();

    quarl::CLasWriter writer;
    const ELASFILEERROR format = writer.SetFormat(las3, delimiter);
    Check(ValidCode(format));
    wellFormed = wellFormed && format == quarl::LASFILE_OK;

    Stop stop{in.ConsumeBool() ? in.ConsumeIntInRange(0, 30) : -1, 0};
    writer.SetStatusCallback(&stop, &Callback);

    std::vector<CLasSection> accepted;  // the writer's own copies are private
    std::vector<CLasSection> decoded;
    const int count = in.ConsumeIntInRange(0, 8);
    for (int i = 0; i < count; ++i) {
        CLasSection section = decoder.Section(las3, wellFormed);
        decoded.push_back(section);
        const ELASFILEERROR added = writer.AddSection(section);
        Check(ValidCode(added) && writer.GetLastError() == added);
        if (added != quarl::LASFILE_OK) continue;
        if (!las3 && section.m_name == "A") section.m_name = "ASCII";
        accepted.push_back(section);
    }
    if (in.ConsumeBool()) Check(ValidCode(writer.Validate()));
    wellFormed = wellFormed && decoder.CurveDefinitionsChecked();
    CheckRepairMode(decoded, las3, delimiter);

    static const std::string path = quarl::fuzz::ScratchDir() + "/written.las";
    std::remove(path.c_str());
    quarl::CLasWriter twin;
    twin = writer;
    twin.SetStatusCallback(nullptr, nullptr);
    const ELASFILEERROR written = writer.Write(path);
    // A cancel is the host's own doing and leaves the record clear.
    Check(ValidCode(written) &&
          writer.GetLastError() == (written == quarl::LASFILE_CANCELLED ? quarl::LASFILE_OK : written));
    if (written != quarl::LASFILE_OK) return 0;
    SaveSeed(path);
    // Written into memory, the same document gives the file's bytes.
    std::string text;
    Check(twin.WriteToString(text, tessel::TxString(path.c_str())) == quarl::LASFILE_OK);
    std::ifstream file(path, std::ios::binary);
    Check(text == std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()));

    quarl::CLasReader reader;
    const ELASFILEERROR read = reader.Open(tessel::TxString(path.c_str()));
    Check(ValidCode(read));
    if (wellFormed) {
        // A section without lines written last leaves its header as the
        // last line of the file, which reads as the end of the file.
        const bool emptyLast =
            !reader.empty() && reader.rbegin()->get()->m_params.empty() && Rows(**reader.rbegin()) == 0;
        Check(read == quarl::LASFILE_OK || (read == quarl::LASFILE_IO_FAILED && emptyLast));
        std::vector<CLasSection> sections;
        Check(reader.GetSections(sections, true) == quarl::LASFILE_OK || reader.empty());
        Check(MainDataRows(accepted) == MainDataRows(sections));
    }
    return 0;
}
