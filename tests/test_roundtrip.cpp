// What the writer writes, the reader reads back: the same sections, parameter
// lines and values, in LAS 2.0 and in LAS 3.0 with text. Writing twice and
// converting a written file again give the same bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>

#include <quarl/quarl.h>

#include "support/writer_access.h"

namespace quarl::test {
namespace {

std::string G(double v, const char* format = "%.17g")
{
    char text[64];
    std::snprintf(text, sizeof text, format, v);
    return text;
}

// Given parameters as found in `read` by mnemonic, then every curve.
std::string Fields(const CLasSection& given, const CLasSection& read)
{
    std::string text = read.m_name + "|" + read.m_association;
    for (const CLasParam& p : given.m_params) {
        CLasParam got;
        read.FindParameterByMnemonic(p.m_mnemonic.c_str(), &got);
        text += " " + got.m_mnemonic + "." + got.m_unit + " " + got.m_value + ":" + got.m_description + got.m_format +
                "|" + got.m_association;
    }
    for (const CLasCurve& c : read.m_curves) {
        text += c.m_isNumeric ? " N" : " T";
        for (double v : c.m_numbers) text += G(v) + ",";
        for (const std::string& v : c.m_strings) text += v + ",";
    }
    return text;
}

std::string WithoutFilename(std::string bytes)
{
    const size_t start = bytes.find("# Filename: ");
    return bytes.erase(start, bytes.find('\n', start) + 1 - start);
}

// Depth from 1000 by 0.5 and four curves of 15-digit readings of every
// magnitude, the usual null value among them.
std::vector<CLasCurve> Log(int rows, uint32_t seed)
{
    std::mt19937_64 random(seed);
    std::vector<CLasCurve> curves(5);
    for (int r = 0; r < rows; ++r) {
        curves[0].m_numbers.push_back(1000.0 + 0.5 * r);
        for (size_t c = 1; c < 5; ++c) {
            const double v = std::uniform_real_distribution<double>(-10, 10)(random) *
                             std::pow(10.0, static_cast<int>(random() % 25) - 12);
            curves[c].m_numbers.push_back(r % 17 == 3 ? -999.25 : std::atof(G(v, "%.15g").c_str()));
        }
    }
    const char* names[] = {"DEPT", "GR", "RHOB", "NPHI", "ILD"};
    for (size_t c = 0; c < 5; ++c) curves[c].m_definition = Param(names[c], "U", "", names[c]);
    return curves;
}

TEST(RoundTrip, WrittenFilesReadBackWholeAndAreStable)
{
    const std::vector<CLasParam> well = {Param("WELL", "", "Hollis Creek 7-22", "Well name"),
                                         Param("NULL", "", "-999.25", "Null value"),
                                         Param("DATE", "", "2026-03-14 12.30", "Logged at")};
    const std::vector<CLasSection> las2 = {
        Section("Well", LASSECTION_HEADER, well),
        Section("Parameter", LASSECTION_PARAMETER,
                {Param("BHT", "DEGC", "68.5", "Bottom temperature", "{F}"), Param("MUDT", "", "water based", "")}),
        Data("ASCII", Log(1200, 7), "Curve")};
    CLasSection logDefinition = Section("Log_Definition", LASSECTION_DEFINITION);
    for (const CLasCurve& c : Log(0, 0)) logDefinition.m_params.push_back(c.m_definition);
    logDefinition.m_params[1].m_association = "Log_Parameter";
    logDefinition.m_params[1].m_format = "{F}";
    const std::vector<CLasSection> las3 = {
        Section("Well", LASSECTION_HEADER, well),
        Section("Log_Parameter", LASSECTION_PARAMETER, {Param("RUNS", "", "2", "Runs", "{I}")}),
        logDefinition, Data("Log_Data", Log(300, 11), "Log_Definition"),
        Section("Core_Definition", LASSECTION_DEFINITION,
                {Param("CTOP", "M", "", "Core top", "{F}"), Param("LITH", "", "", "Lithology", "{S}")}),
        Data("Core_Data", {Numbers({1000.25, 1003.5, 1010.125}), Texts({"sand", "grey-shale", "lime\"stone"})},
             "Core_Definition")};
    for (const auto& [isLas3, delimiter] : {std::pair{false, ' '}, {true, ' '}, {true, '\t'}, {true, ','}}) {
        SCOPED_TRACE(std::string("delimiter ") + delimiter);
        const std::vector<CLasSection>& given = isLas3 ? las3 : las2;
        TempDir dir;
        CLasWriter writer;
        ASSERT_EQ(writer.SetFormat(isLas3, delimiter), LASFILE_OK);
        for (const CLasSection& s : given) ASSERT_EQ(writer.AddSection(s), LASFILE_OK) << s.m_name;
        const std::string path = dir.File("a.las"), again = dir.File("b.las"), converted = dir.File("c.las");
        ASSERT_EQ(writer.Write(path), LASFILE_OK);

        CLasReader reader;
        ASSERT_EQ(reader.Open(tessel::TxString(path)), LASFILE_OK);
        EXPECT_EQ(reader.CheckDataStepping(), LASFILE_OK);  // the completed Well agrees with the data
        EXPECT_EQ(reader.size(), given.size() + (isLas3 ? 1u : 2u));  // Version, and Curve in LAS 2.0
        for (const CLasSection& s : given) {
            CLasSection read;
            ASSERT_EQ(reader.GetSection(s.m_name.c_str(), read), LASFILE_OK) << s.m_name;
            EXPECT_EQ(Fields(s, read), Fields(s, s));
        }
        ASSERT_EQ(writer.Write(again), LASFILE_OK);
        EXPECT_EQ(WithoutFilename(ReadFileBytes(again)), WithoutFilename(ReadFileBytes(path)));
        CLasWriter second;  // every section but Version handed over again
        ASSERT_EQ(second.SetFormat(isLas3, delimiter), LASFILE_OK);
        for (size_t i = 1; i < reader.size(); ++i) ASSERT_EQ(second.AddSection(reader.GetSection(i)), LASFILE_OK);
        ASSERT_EQ(second.Write(converted), LASFILE_OK);
        EXPECT_EQ(WithoutFilename(ReadFileBytes(converted)), WithoutFilename(ReadFileBytes(path)));
    }
}

}  // namespace
}  // namespace quarl::test
