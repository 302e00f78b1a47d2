// Writes a small LAS 2.0 file of a depth and a gamma ray curve.
#include <quarl/quarl.h>

#include <cstdio>
#include <utility>
#include <vector>

quarl::CLasCurve Curve(const char* mnemonic, const char* unit, std::vector<double> values)
{
    quarl::CLasCurve curve;
    curve.m_isNumeric = true;
    curve.m_definition.m_mnemonic = mnemonic;
    curve.m_definition.m_unit = unit;
    curve.m_numbers = std::move(values);
    return curve;
}

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: write_las OUT\n");
        return 2;
    }
    quarl::CLasSection data;
    data.m_name = "ASCII";
    data.m_type = quarl::LASSECTION_DATA;
    data.m_curves.push_back(Curve("DEPT", "M", {1000.0, 1000.5, 1001.0}));
    data.m_curves.push_back(Curve("GR", "GAPI", {45.2, 51.7, 48.9}));

    quarl::CLasWriter writer;
    writer.SetFormat(false, ' ');                      // LAS 2.0, space delimited
    writer.AddSection(data);                           // checked at once, and copied
    if (writer.Write(argv[1]) != quarl::LASFILE_OK) {  // the Well and Curve sections are made
        const char* section = writer.GetLastErrorSection();
        std::fprintf(stderr, "%s: %s in section %s, column %d, row %d\n", argv[1],
                     quarl::ResultName(writer.GetLastError()), section ? section : "-",
                     writer.GetLastErrorColumn(), writer.GetLastErrorRow());
        return 1;
    }
    std::printf("wrote %s\n", argv[1]);
    return 0;
}
