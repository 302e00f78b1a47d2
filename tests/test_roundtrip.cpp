// What the writer writes, the reader reads back: the same sections, the same
// parameter lines and the same values, in LAS 2.0 and in LAS 3.0.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include <quarl/quarl.h>

#include "support/test_util.h"

namespace quarl {
namespace {

CLasParam Param(const char* mnemonic, const char* unit, const char* value, const char* description,
                const char* format = "")
{
    CLasParam p;
    p.m_mnemonic = mnemonic;
    p.m_unit = unit;
    p.m_value = value;
    p.m_description = description;
    p.m_format = format;
    return p;
}

CLasSection Section(const char* name, ELASSECTIONTYPE type, std::vector<CLasParam> params = {})
{
    CLasSection s;
    s.m_name = name;
    s.m_type = type;
    s.m_params = std::move(params);
    return s;
}

// A value that "%.15g" writes exactly: what atof gives for 15 digits.
double FifteenDigits(double x)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.15g", x);
    return std::atof(text);
}

CLasCurve NumericCurve(const char* mnemonic, const char* unit, std::vector<double> values)
{
    CLasCurve c;
    c.m_isNumeric = true;
    c.m_numbers = std::move(values);
    c.m_definition = Param(mnemonic, unit, "", mnemonic);
    return c;
}

// Log data of `rows` rows: depth from 1000 by 0.5, and readings of every
// magnitude, negative ones and the usual null value among them.
CLasSection LogData(const char* name, int rows, uint32_t seed)
{
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> mantissa(-10.0, 10.0);
    std::uniform_int_distribution<int> exponent(-12, 12);
    CLasSection data = Section(name, LASSECTION_DATA);
    std::vector<double> depth;
    for (int r = 0; r < rows; ++r) depth.push_back(1000.0 + 0.5 * r);
    data.m_curves.push_back(NumericCurve("DEPT", "M", depth));
    for (const char* mnemonic : {"GR", "RHOB", "NPHI", "ILD"}) {
        std::vector<double> values;
        for (int r = 0; r < rows; ++r) {
            const double v = mantissa(random) * std::pow(10.0, exponent(random));
            values.push_back(r % 17 == 3 ? -999.25 : FifteenDigits(v));
        }
        data.m_curves.push_back(NumericCurve(mnemonic, "U", values));
    }
    return data;
}

// Every parameter line the host gave stands in the section read back.
void ExpectParamsRead(const CLasSection& given, const CLasSection& read)
{
    for (const CLasParam& p : given.m_params) {
        SCOPED_TRACE(given.m_name + "." + p.m_mnemonic);
        CLasParam got;
        ASSERT_GE(read.FindParameterByMnemonic(p.m_mnemonic.c_str(), &got), 0);
        EXPECT_EQ(got.m_unit, p.m_unit);
        EXPECT_EQ(got.m_value, p.m_value);
        EXPECT_EQ(got.m_description, p.m_description);
        EXPECT_EQ(got.m_format, p.m_format);
        EXPECT_EQ(got.m_association, p.m_association);
    }
}

void ExpectCurvesRead(const CLasSection& given, const CLasSection& read)
{
    ASSERT_EQ(read.m_curves.size(), given.m_curves.size()) << given.m_name;
    for (size_t c = 0; c < given.m_curves.size(); ++c) {
        const CLasCurve& want = given.m_curves[c];
        const CLasCurve& got = read.m_curves[c];
        SCOPED_TRACE(given.m_name + " column " + std::to_string(c));
        ASSERT_EQ(got.m_isNumeric, want.m_isNumeric);
        EXPECT_EQ(got.m_numbers, want.m_numbers);
        EXPECT_EQ(got.m_strings, want.m_strings);
    }
}

// Reads `path`, hands every section but the Version section to a new
// writer of the same format, and writes it to `target`.
ELASFILEERROR Convert(const std::string& path, const std::string& target, bool isLas3, char delimiter)
{
    CLasReader reader;
    if (reader.Open(path) != LASFILE_OK) return LASFILE_BAD_FORMAT;
    CLasWriter writer;
    EXPECT_EQ(writer.SetFormat(isLas3, delimiter), LASFILE_OK);
    for (size_t i = 1; i < reader.size(); ++i) {
        const ELASFILEERROR added = writer.AddSection(reader.GetSection(i));
        if (added != LASFILE_OK) return added;
    }
    return writer.Write(target);
}

// Whether two files hold the same bytes but for their "# Filename" lines,
// which name the paths.
bool SameButFilename(const std::string& a, const std::string& b)
{
    const auto strip = [](std::string bytes) {
        const size_t start = bytes.find("# Filename: ");
        if (start != std::string::npos) bytes.erase(start, bytes.find('\n', start) + 1 - start);
        return bytes;
    };
    return strip(test::ReadFileBytes(a)) == strip(test::ReadFileBytes(b));
}

TEST(RoundTrip, Las2DocumentReadsBackWhole)
{
    test::TempDir dir;
    const std::vector<CLasSection> given = {
        Section("Well", LASSECTION_HEADER,
                {Param("WELL", "", "Hollis Creek 7-22", "Well name"),
                 Param("NULL", "", "-999.25", "Null value"),
                 Param("DATE", "", "2026-03-14 12.30", "Logged at")}),
        Section("Parameter", LASSECTION_PARAMETER,
                {Param("BHT", "DEGC", "68.5", "Bottom hole temperature", "{F}"),
                 Param("MUDT", "", "water based", "")}),
        LogData("ASCII", 1200, 7),
    };
    CLasWriter writer;
    for (const CLasSection& s : given) ASSERT_EQ(writer.AddSection(s), LASFILE_OK) << s.m_name;
    const std::string path = dir.File("a.las");
    ASSERT_EQ(writer.Write(path), LASFILE_OK);

    CLasReader reader;
    ASSERT_EQ(reader.Open(path), LASFILE_OK);
    std::vector<CLasString> names;
    reader.GetSectionNames(LASSECTION_ANY, names);
    EXPECT_EQ(names, (std::vector<CLasString>{"Version", "Well", "Parameter", "Curve", "ASCII"}));
    for (const CLasSection& s : given) {
        CLasSection read;
        ASSERT_EQ(reader.GetSection(s.m_name.c_str(), read), LASFILE_OK) << s.m_name;
        ExpectParamsRead(s, read);
        ExpectCurvesRead(s, read);
    }
    // The Well section the writer completed agrees with the data.
    EXPECT_EQ(reader.CheckDataStepping(), LASFILE_OK);

    // Writing the same writer again, and converting the file, give its bytes.
    const std::string again = dir.File("again.las");
    ASSERT_EQ(writer.Write(again), LASFILE_OK);
    EXPECT_TRUE(SameButFilename(again, path));
    const std::string converted = dir.File("converted.las");
    ASSERT_EQ(Convert(path, converted, false, ' '), LASFILE_OK);
    EXPECT_TRUE(SameButFilename(converted, path));
}

TEST(RoundTrip, Las3GroupsWithTextReadBackInEveryDelimiter)
{
    for (const char delimiter : {' ', '\t', ','}) {
        SCOPED_TRACE(std::string("delimiter ") + delimiter);
        test::TempDir dir;
        CLasSection coreData = Section("Core_Data", LASSECTION_DATA);
        coreData.m_association = "Core_Definition";
        coreData.m_curves.push_back(NumericCurve("CTOP", "M", {1000.25, 1003.5, 1010.125}));
        CLasCurve lith;
        lith.m_isNumeric = false;
        lith.m_strings = {"sand", "shale,grey", "lime\"stone"};
        lith.m_definition = Param("LITH", "", "", "Lithology", "{S}");
        coreData.m_curves.push_back(lith);
        CLasSection logDefinition = Section("Log_Definition", LASSECTION_DEFINITION);
        for (const char* m : {"DEPT", "GR", "RHOB", "NPHI", "ILD"})
            logDefinition.m_params.push_back(Param(m, "U", "", m, "{F}"));
        logDefinition.m_params[1].m_association = "Log_Parameter";
        CLasSection logData = LogData("Log_Data", 300, 11);
        logData.m_association = "Log_Definition";

        const std::vector<CLasSection> given = {
            Section("Well", LASSECTION_HEADER, {Param("UWI", "", "100/07-22-041-03W5", "Id")}),
            Section("Log_Parameter", LASSECTION_PARAMETER, {Param("RUNS", "", "2", "Runs", "{I}")}),
            logDefinition,
            logData,
            Section("Core_Definition", LASSECTION_DEFINITION,
                    {Param("CTOP", "M", "", "Core top", "{F}"), Param("LITH", "", "", "Lithology", "{S}")}),
            coreData,
        };
        CLasWriter writer;
        ASSERT_EQ(writer.SetFormat(true, delimiter), LASFILE_OK);
        for (const CLasSection& s : given) ASSERT_EQ(writer.AddSection(s), LASFILE_OK) << s.m_name;
        const std::string path = dir.File("b.las");
        ASSERT_EQ(writer.Write(path), LASFILE_OK);

        CLasReader reader;
        ASSERT_EQ(reader.Open(path), LASFILE_OK);
        for (const CLasSection& s : given) {
            CLasSection read;
            ASSERT_EQ(reader.GetSection(s.m_name.c_str(), read), LASFILE_OK) << s.m_name;
            ExpectParamsRead(s, read);
            EXPECT_EQ(read.m_association, s.m_association);
            // A text holding the delimiter can't come back whole: that
            // value and the ones behind it in its row shift.
            if (s.m_name == "Core_Data" && delimiter == ',') continue;
            ExpectCurvesRead(s, read);
        }
        const std::string converted = dir.File("converted.las");
        ASSERT_EQ(Convert(path, converted, true, delimiter), LASFILE_OK);
        EXPECT_TRUE(delimiter == ',' || SameButFilename(converted, path));
    }
}

}  // namespace
}  // namespace quarl
