// Writes a small LAS 2.0 document into a string, reads it back from there, and
// writes it to standard output: the writer and the reader without files, as a
// host that keeps logs in a database or sends them over a network does.
#include <quarl/quarl.h>

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

int main()
{
    quarl::CLasCurve depth, gamma;
    depth.m_definition.m_mnemonic = "DEPT";
    depth.m_numbers = {1000.0, 1000.5, 1001.0};
    gamma.m_definition.m_mnemonic = "GR";
    gamma.m_numbers = {45.2, 51.7, 48.9};
    quarl::CLasSection data;
    data.m_name = "ASCII";
    data.m_type = quarl::LASSECTION_DATA;
    data.m_curves = {depth, gamma};
    quarl::CLasWriter writer;
    writer.AddSection(data);

    // Into memory: `text` gets the bytes Write would put in a file.
    std::string text;
    if (writer.WriteToString(text, "memory.las") != quarl::LASFILE_OK) {
        std::fprintf(stderr, "memory.las: %s\n", quarl::ResultName(writer.GetLastError()));
        return 1;
    }

    // From memory: the bytes are read in place, as Open reads a file.
    quarl::CLasReader reader;
    const quarl::ELASFILEERROR result = reader.OpenBuffer(text.data(), text.size(), "memory.las");
    if (result != quarl::LASFILE_OK) {
        std::fprintf(stderr, "memory.las: %s\n", quarl::ResultName(result));
        return 1;
    }
    std::fprintf(stderr, "memory.las: %zu bytes read back\n", text.size());
    for (const std::shared_ptr<quarl::CLasSection>& section : reader)
        for (const quarl::CLasCurve& curve : section->m_curves)
            std::fprintf(stderr, "%s: %d values\n", curve.m_definition.m_mnemonic.c_str(),
                         curve.size());

    // To a stream, handed over in large pieces as the write goes on.
    return writer.WriteToStream(std::cout, "stdout") == quarl::LASFILE_OK ? 0 : 1;
}
