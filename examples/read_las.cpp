// Reads a LAS file and prints its curves and whether the depths follow STEP.
#include <quarl/quarl.h>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: read_las FILE\n");
        return 2;
    }
    quarl::CLasReader reader;
    const quarl::ELASFILEERROR result = reader.Open(argv[1]);
    if (result != quarl::LASFILE_OK) {  // what was read before the failure stays readable
        std::fprintf(stderr, "%s: %s after %d section(s)\n", argv[1], quarl::ResultName(result),
                     static_cast<int>(reader.size()));
        return 1;
    }
    quarl::CLasSection well;
    quarl::CLasParam step;
    if (reader.GetWellHeaders(well) == quarl::LASFILE_OK &&
        well.FindParameterByMnemonic("STEP", &step) >= 0)
        std::printf("LAS %s, STEP %s\n", reader.IsLas3() ? "3.0" : "2.0", step.m_value.c_str());
    for (const std::shared_ptr<quarl::CLasSection>& section : reader) {
        if (section->m_type != quarl::LASSECTION_DATA) continue;
        for (const quarl::CLasCurve& curve : section->m_curves)
            std::printf("%s %s: %d values\n", section->m_name.c_str(),
                        curve.m_definition.m_mnemonic.c_str(), curve.size());
    }
    const bool regular = reader.CheckDataStepping() == quarl::LASFILE_OK;
    std::printf("depths follow STEP: %s\n", regular ? "yes" : "no");
    reader.Close();
    return 0;
}
