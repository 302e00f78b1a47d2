// The writer's repair mode: each rule changes what the version cannot hold,
// records the change, and the result reads back strictly; with repair off
// the writer refuses exactly as before.
#include <gtest/gtest.h>
#include <quarl/quarl.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "writer/curve_limit.h"

namespace quarl::test {
namespace {

CLasParam Line(const std::string& mnemonic, const std::string& unit = "", const std::string& value = "",
               const std::string& format = "", const std::string& association = "")
{
    CLasParam param;
    param.m_mnemonic = mnemonic;
    param.m_unit = unit;
    param.m_value = value;
    param.m_format = format;
    param.m_association = association;
    return param;
}

CLasSection Section(const std::string& name, ELASSECTIONTYPE type, std::vector<CLasParam> params = {})
{
    CLasSection section;
    section.m_name = name;
    section.m_type = type;
    section.m_params = std::move(params);
    return section;
}

CLasCurve Numbers(const std::string& mnemonic, std::vector<double> values)
{
    CLasCurve curve;
    curve.m_definition.m_mnemonic = mnemonic;
    curve.m_numbers = std::move(values);
    return curve;
}

CLasCurve Texts(const std::string& mnemonic, std::vector<CLasString> values)
{
    CLasCurve curve;
    curve.m_isNumeric = false;
    curve.m_definition.m_mnemonic = mnemonic;
    curve.m_definition.m_format = "{S}";
    curve.m_strings = std::move(values);
    return curve;
}

CLasSection Data(const std::string& name, const std::string& link, std::vector<CLasCurve> curves)
{
    CLasSection data = Section(name, LASSECTION_DATA);
    data.m_association = link;
    data.m_curves = std::move(curves);
    return data;
}

CLasSection Well(const std::string& name = "Well")
{
    return Section(
        name, LASSECTION_HEADER,
        {Line("STRT", "M", "100"), Line("STOP", "M", "102"), Line("STEP", "M", "1"), Line("NULL", "", "-999.25")});
}

// The repairs as "KIND section/mnemonic from>to", one per entry.
std::vector<std::string> Records(const CLasWriter& writer)
{
    std::vector<std::string> records;
    for (const CLasRepair& r : writer.GetRepairs()) {
        std::string kind = LasRepairKindName(r.kind);
        kind.erase(0, std::string("LASREPAIR_").size());
        records.push_back(kind + " " + r.section + "/" + r.mnemonic + " " + r.from + ">" + r.to);
        EXPECT_FALSE(r.text.empty()) << records.back();
        EXPECT_EQ(r.text.find('\n'), std::string::npos);
    }
    return records;
}

bool Has(const std::vector<std::string>& records, const std::string& record)
{
    for (const std::string& r : records)
        if (r == record) return true;
    ADD_FAILURE() << "no record " << record;
    return false;
}

// A writer in repair mode of the version, with every section added.
ELASFILEERROR AddAll(CLasWriter& writer, bool las3, const std::vector<CLasSection>& sections, bool repair = true)
{
    EXPECT_EQ(writer.SetFormat(las3, ' '), LASFILE_OK);
    writer.SetRepair(repair);
    for (const CLasSection& section : sections) {
        const ELASFILEERROR code = writer.AddSection(section);
        if (code != LASFILE_OK) return code;
    }
    return LASFILE_OK;
}

// Writes the writer's document and reads it back strictly into `reader`;
// the text goes to `text` when asked for.
ELASFILEERROR WriteAndReadBack(CLasWriter& writer, CLasReader& reader, std::string* text = nullptr)
{
    std::string written;
    const ELASFILEERROR code = writer.WriteToString(written, "repaired.las");
    if (code != LASFILE_OK) return code;
    if (text) *text = written;
    const ELASFILEERROR read = reader.OpenBuffer(written.data(), written.size(), "repaired.las");
    if (read == LASFILE_OK && !reader.GetOptions().lenient) {
        EXPECT_TRUE(reader.GetNotes().empty());
    }
    return read;
}

TEST(RepairKinds, NamesAndTheUnknown)
{
    EXPECT_STREQ(LasRepairKindName(LASREPAIR_SECTION_RENAMED), "LASREPAIR_SECTION_RENAMED");
    EXPECT_STREQ(LasRepairKindName(LASREPAIR_CURVE_PADDED), "LASREPAIR_CURVE_PADDED");
    EXPECT_STREQ(LasRepairKindName(LASREPAIR_WELL_RANGE), "LASREPAIR_WELL_RANGE");
    EXPECT_STREQ(LasRepairKindName(static_cast<ELASREPAIRKIND>(17)), "LASREPAIR_UNKNOWN");
    EXPECT_STREQ(LasRepairKindName(static_cast<ELASREPAIRKIND>(-1)), "LASREPAIR_UNKNOWN");
}

TEST(RepairMode, OffByDefaultClearedByResetAndSetFormatCopiedByAssignment)
{
    CLasWriter writer;
    EXPECT_FALSE(writer.IsRepairing());
    ASSERT_EQ(AddAll(writer, false, {Section("W", LASSECTION_HEADER, {Line("A.B")})}), LASFILE_OK);
    EXPECT_TRUE(writer.IsRepairing());
    // The LAS 2.0 writer writes "W" out in any mode: no change to record.
    ASSERT_EQ(Records(writer), (std::vector<std::string>{"MNEMONIC Well/A_B A.B>A_B"}));
    CLasWriter copy;
    copy = writer;
    EXPECT_TRUE(copy.IsRepairing());
    EXPECT_EQ(Records(copy), Records(writer));
    EXPECT_EQ(writer.SetFormat(true, ' '), LASFILE_WRONG_STATE);  // sections held
    EXPECT_TRUE(writer.GetRepairs().empty());
    EXPECT_TRUE(writer.IsRepairing());
    copy.Reset();
    EXPECT_FALSE(copy.IsRepairing());
    EXPECT_TRUE(copy.GetRepairs().empty());
}

// The log sections of LAS 3.0 written as LAS 2.0: renamed, links following,
// associations removed, what cannot map left out; and back again.
TEST(RepairSections, NamesFollowTheVersionAndWhatCannotMapIsLeftOut)
{
    const std::vector<CLasSection> las3 = {
        Well(),
        Section("Log_Parameter", LASSECTION_PARAMETER, {Line("BHT", "DEGC", "35", "", "Run1")}),
        Section("Log_Definition", LASSECTION_DEFINITION, {Line("DEPT", "M"), Line("GR", "GAPI")}),
        Data("Log_Data", "Log_Definition", {Numbers("DEPT", {100, 101, 102}), Numbers("GR", {1, 2, 3})}),
        Section("Core_Parameter", LASSECTION_PARAMETER, {Line("C1", "", "x")}),
    };
    CLasWriter strict;
    EXPECT_EQ(AddAll(strict, false, las3, false), LASFILE_BAD_NAME);
    EXPECT_STREQ(strict.GetLastErrorSection(), "Log_Parameter");
    EXPECT_TRUE(strict.GetRepairs().empty());

    CLasWriter writer;
    ASSERT_EQ(AddAll(writer, false, las3), LASFILE_OK);
    CLasReader reader;
    ASSERT_EQ(WriteAndReadBack(writer, reader), LASFILE_OK);
    const std::vector<std::string> records = Records(writer);
    Has(records, "SECTION_RENAMED Parameter/ Log_Parameter>Parameter");
    Has(records, "ASSOCIATION Parameter/BHT Run1>");
    Has(records, "SECTION_RENAMED Curve/ Log_Definition>Curve");
    Has(records, "SECTION_RENAMED ASCII/ Log_Data>ASCII");
    Has(records, "SECTION_LEFT_OUT Core_Parameter/ Core_Parameter>");
    EXPECT_EQ(records.size(), 5u);  // a LAS 2.0 file holds no link: that of ASCII is no record
    CLasSection back;
    ASSERT_EQ(reader.GetSection("Parameter", back), LASFILE_OK);
    EXPECT_EQ(back.m_params.at(0).m_value, "35");
    ASSERT_EQ(reader.GetSection("ASCII", back), LASFILE_OK);
    EXPECT_EQ(back.m_curves.at(1).m_numbers, (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(reader.GetSection("Core_Parameter", back), LASFILE_BAD_VALUE);

    // LAS 2.0 one-letter names, written as LAS 3.0.
    CLasWriter up;
    ASSERT_EQ(AddAll(up, true,
                     {Well("W"), Section("C", LASSECTION_DEFINITION, {Line("DEPT", "M")}),
                      Data("A", "C", {Numbers("DEPT", {100, 101, 102})})}),
              LASFILE_OK);
    CLasReader reader3;
    ASSERT_EQ(WriteAndReadBack(up, reader3), LASFILE_OK);
    EXPECT_TRUE(reader3.IsLas3());
    const std::vector<std::string> up3 = Records(up);
    Has(up3, "SECTION_RENAMED Well/ W>Well");
    Has(up3, "SECTION_RENAMED Log_Definition/ C>Log_Definition");
    Has(up3, "SECTION_RENAMED Log_Data/ A>Log_Data");
    Has(up3, "ASSOCIATION Log_Data/ C>Log_Definition");
    ASSERT_EQ(reader3.GetSection("Log_Data", back), LASFILE_OK);
    EXPECT_EQ(back.m_association, "Log_Definition");
}

// Mnemonics, units, values, formats: the smallest change that passes.
TEST(RepairLines, NamesValuesAndFormatsMadeLegal)
{
    const CLasSection params =
        Section("Parameter", LASSECTION_PARAMETER,
                {Line("Cond.", "MS/M", "1"), Line("Cond:", "", "2"), Line("R W", "OHM M", "a{b}|c:d"),
                 Line("FMT", "", "3", "F10.4"), Line("", "", "4")});
    const std::vector<CLasSection> document = {Well(), params,
                                               Section("Curve", LASSECTION_DEFINITION, {Line("DEPT", "M")}),
                                               Data("ASCII", "Curve", {Numbers("DEPT", {100, 101, 102})})};
    CLasWriter strict;
    EXPECT_EQ(AddAll(strict, false, document, false), LASFILE_BAD_NAME);
    EXPECT_STREQ(strict.GetLastErrorParam(), "Cond.");

    CLasWriter writer;
    ASSERT_EQ(AddAll(writer, false, document), LASFILE_OK);
    CLasReader reader;
    ASSERT_EQ(WriteAndReadBack(writer, reader), LASFILE_OK);
    const std::vector<std::string> records = Records(writer);
    Has(records, "MNEMONIC Parameter/Cond_ Cond.>Cond_");
    Has(records, "MNEMONIC Parameter/Cond_ Cond:>Cond_");  // a repeated mnemonic stays
    Has(records, "MNEMONIC Parameter/R_W R W>R_W");
    Has(records, "UNIT Parameter/R_W OHM M>OHM_M");
    Has(records, "VALUE Parameter/R_W a{b}|c:d>a(b)/c_d");
    Has(records, "FORMAT Parameter/FMT F10.4>{F10.4}");
    EXPECT_EQ(records.size(), 6u);  // an empty mnemonic is written as it is
    CLasSection back;
    ASSERT_EQ(reader.GetSection("Parameter", back), LASFILE_OK);
    ASSERT_EQ(back.m_params.size(), 5u);
    EXPECT_EQ(back.m_params[2].m_unit, "OHM_M");
    EXPECT_EQ(back.m_params[2].m_value, "a(b)/c_d");
    EXPECT_EQ(back.m_params[3].m_format, "{F10.4}");
    EXPECT_EQ(back.m_params[4].m_mnemonic, "");
    EXPECT_EQ(back.m_params[4].m_value, "4");

    // A format that holds one brace gets the other.
    CLasWriter half;
    ASSERT_EQ(AddAll(half, true, {Section("Log_Parameter", LASSECTION_PARAMETER, {Line("X", "", "1", "{F")})}),
              LASFILE_OK);
    Has(Records(half), "FORMAT Log_Parameter/X {F>{F}");
}

// A second section of a name joins the first; the Version section is left
// out, recorded only when it held lines the writer does not make.
TEST(RepairSections, SecondSectionsMergeAndVersionSectionsAreLeftOut)
{
    CLasSection version = Section("Version", LASSECTION_HEADER, {Line("VERS", "", "2.0"), Line("WRAP", "", "NO")});
    CLasSection versionMore = Section("V", LASSECTION_HEADER, {Line("VERS", "", "2.0"), Line("CREA", "", "today")});
    CLasSection secondWell = Section("W", LASSECTION_HEADER, {Line("STRT", "M", "7"), Line("COMP", "", "Acme")});
    const std::vector<CLasSection> document = {version,
                                               versionMore,
                                               Well(),
                                               secondWell,
                                               Section("Curve", LASSECTION_DEFINITION, {Line("DEPT", "M")}),
                                               Data("ASCII", "Curve", {Numbers("DEPT", {100, 101, 102})}),
                                               Data("A", "Curve", {Numbers("DEPT", {1})})};
    CLasWriter strict;
    EXPECT_EQ(AddAll(strict, false, document, false), LASFILE_DUPLICATE_SECTION);

    CLasWriter writer;
    ASSERT_EQ(AddAll(writer, false, document), LASFILE_OK);
    CLasReader reader;
    ASSERT_EQ(WriteAndReadBack(writer, reader), LASFILE_OK);
    const std::vector<std::string> records = Records(writer);
    Has(records, "SECTION_LEFT_OUT V/ V>");
    Has(records, "SECTION_MERGED Well/ W>Well");
    Has(records, "SECTION_LEFT_OUT ASCII/ A>");
    EXPECT_EQ(records.size(), 3u);
    CLasSection well;
    ASSERT_EQ(reader.GetWellHeaders(well), LASFILE_OK);
    CLasParam comp;
    ASSERT_GE(well.FindParameterByMnemonic("COMP", &comp), 0);
    EXPECT_EQ(comp.m_value, "Acme");
    // The second STRT stays as it was given, behind the first.
    CLasParam strt;
    ASSERT_EQ(well.FindParameterByMnemonic("STRT", &strt), 0);
    EXPECT_EQ(std::count_if(well.m_params.begin(), well.m_params.end(),
                            [](const CLasParam& p) { return p.m_mnemonic == "STRT" && p.m_value == "7"; }),
              1);
    CLasSection data;
    ASSERT_EQ(reader.GetSection("ASCII", data), LASFILE_OK);
    EXPECT_EQ(data.m_curves.at(0).m_numbers.size(), 3u);
}

// The data: LAS 2.0 text curves left out, a LAS 3.0 index moved first,
// formats that say what the values are, tabs for text with blanks.
TEST(RepairData, TextCurvesIndexFormatsAndDelimiter)
{
    CLasCurve code = Texts("CODE", {"a b", "c", "d"});
    CLasCurve array = Numbers("ARR", {1, 2, 3});
    array.m_definition.m_format = "{AF10.4}";
    const std::vector<CLasSection> document = {
        Well(),
        Section("Curve", LASSECTION_DEFINITION,
                {Line("CODE", "", "", "{S}"), Line("DEPT", "M"), Line("ARR", "", "", "{AF10.4}")}),
        Data("ASCII", "Curve", {code, Numbers("DEPT", {100, 101, 102}), array})};
    CLasWriter strict2;
    EXPECT_EQ(AddAll(strict2, false, document, false), LASFILE_BAD_VALUE);
    EXPECT_EQ(strict2.GetLastErrorColumn(), 0);

    CLasWriter writer2;
    ASSERT_EQ(AddAll(writer2, false, document), LASFILE_OK);
    CLasReader reader2;
    ASSERT_EQ(WriteAndReadBack(writer2, reader2), LASFILE_OK);
    const std::vector<std::string> records2 = Records(writer2);
    Has(records2, "CURVE_LEFT_OUT ASCII/CODE CODE>");
    Has(records2, "FORMAT Curve/ARR {AF10.4}>{F10.4}");
    CLasSection data;
    ASSERT_EQ(reader2.GetSection("ASCII", data), LASFILE_OK);
    ASSERT_EQ(data.m_curves.size(), 2u);
    EXPECT_EQ(data.m_curves[0].m_definition.m_mnemonic, "DEPT");
    EXPECT_EQ(data.m_curves[1].m_numbers, (std::vector<double>{1, 2, 3}));

    CLasWriter strict3;
    EXPECT_EQ(AddAll(strict3, true, document, false), LASFILE_BAD_VALUE);
    CLasWriter writer3;
    ASSERT_EQ(AddAll(writer3, true, document), LASFILE_OK);
    CLasReader reader3;
    std::string text;
    ASSERT_EQ(WriteAndReadBack(writer3, reader3, &text), LASFILE_OK);
    const std::vector<std::string> records3 = Records(writer3);
    Has(records3, "CURVE_MOVED Log_Data/DEPT 1>0");
    Has(records3, "DELIMITER Log_Data/CODE  >\t");
    EXPECT_NE(text.find("TAB : DELIMITING"), std::string::npos) << text;
    ASSERT_EQ(reader3.GetSection("Log_Data", data), LASFILE_OK);
    ASSERT_EQ(data.m_curves.size(), 3u);
    EXPECT_EQ(data.m_curves[0].m_definition.m_mnemonic, "DEPT");
    EXPECT_EQ(data.m_curves[1].m_strings.at(0), "a b");
}

// Curves past the definition lines get lines of their own; short curves
// are padded with NULL.
TEST(RepairData, MissingDefinitionLinesAndShortCurves)
{
    CLasCurve extra = Numbers("UNKNOWN:1", {7, 8, 9});
    const std::vector<CLasSection> document = {
        Well(), Section("Curve", LASSECTION_DEFINITION, {Line("DEPT", "M"), Line("GR")}),
        Data("ASCII", "Curve", {Numbers("DEPT", {100, 101, 102}), Numbers("GR", {1, 2}), extra})};
    CLasWriter strict;
    EXPECT_EQ(AddAll(strict, false, document, false), LASFILE_BAD_VALUE);
    EXPECT_EQ(strict.GetLastErrorColumn(), 1);

    CLasWriter writer;
    ASSERT_EQ(AddAll(writer, false, document), LASFILE_OK);
    CLasReader reader;
    ASSERT_EQ(WriteAndReadBack(writer, reader), LASFILE_OK);
    const std::vector<std::string> records = Records(writer);
    Has(records, "CURVE_PADDED ASCII/GR 2>3");
    Has(records, "DEFINITION_ADDED Curve/UNKNOWN_1 >UNKNOWN_1");
    CLasSection data;
    ASSERT_EQ(reader.GetSection("ASCII", data), LASFILE_OK);
    ASSERT_EQ(data.m_curves.size(), 3u);
    EXPECT_EQ(data.m_curves[1].m_numbers.at(2), -999.25);  // the NULL of the Well section
    EXPECT_EQ(data.m_curves[2].m_definition.m_mnemonic, "UNKNOWN_1");
    EXPECT_EQ(data.m_curves[2].m_numbers, (std::vector<double>{7, 8, 9}));

    // More lines than curves: the lines without a column go.
    CLasWriter lines;
    ASSERT_EQ(AddAll(lines, false,
                     {Well(), Section("Curve", LASSECTION_DEFINITION, {Line("DEPT", "M"), Line("GR")}),
                      Data("ASCII", "Curve", {Numbers("DEPT", {100, 101, 102})})}),
              LASFILE_OK);
    CLasReader back;
    ASSERT_EQ(WriteAndReadBack(lines, back), LASFILE_OK);
    Has(Records(lines), "LINE_LEFT_OUT Curve/GR GR>");
}

TEST(RepairWellRange, RangeTakenFromTheData)
{
    const auto range = [](std::vector<double> depths, const char* stop, const char* step) {
        CLasSection well = Section("Well", LASSECTION_HEADER,
                                   {Line("STRT", "M", "100"), Line("STOP", "M", stop), Line("STEP", "M", step)});
        CLasWriter writer;
        EXPECT_EQ(AddAll(writer, false,
                         {well, Section("Curve", LASSECTION_DEFINITION, {Line("DEPT", "M")}),
                          Data("ASCII", "Curve", {Numbers("DEPT", depths)})}),
                  LASFILE_OK);
        CLasReader reader;
        EXPECT_EQ(WriteAndReadBack(writer, reader), LASFILE_OK);
        std::string text;
        for (const std::string& record : Records(writer)) text += record + ";";
        return text;
    };
    EXPECT_EQ(range({100, 100.5, 101}, "200", "1"), "WELL_RANGE Well/STOP 200>101;WELL_RANGE Well/STEP 1>0.5;");
    EXPECT_EQ(range({100, 101, 103}, "103", "1"), "WELL_RANGE Well/STEP 1>0;");
    EXPECT_EQ(range({100, 100.25, 100.5}, "100.50000", "0.2500"), "");
    EXPECT_EQ(range({99, 2707.10009766}, "200", "0"),
              "WELL_RANGE Well/STRT 100>99;WELL_RANGE Well/STOP 200>2707.10009766;");
    // Repair off: the same document is refused at STOP.
    CLasWriter strict;
    ASSERT_EQ(AddAll(strict, false,
                     {Well(), Section("Curve", LASSECTION_DEFINITION, {Line("DEPT", "M")}),
                      Data("ASCII", "Curve", {Numbers("DEPT", {100, 101})})},
                     false),
              LASFILE_OK);
    EXPECT_EQ(strict.Validate(), LASFILE_BAD_FORMAT);
    EXPECT_STREQ(strict.GetLastErrorParam(), "STOP");
}

// Headers without rows: the empty data section at the end is not written,
// so the file ends in the definition section and reads back strictly with
// the same curves, without rows. Written twice, it is recorded once.
TEST(RepairNoRows, HeaderOnlyDocumentsWriteWithTheirCurves)
{
    CLasSection well = Section("Well", LASSECTION_HEADER, {Line("NULL", "", "-999.25")});
    const std::vector<CLasSection> headers = {
        well, Section("Curve", LASSECTION_DEFINITION, {Line("DEPT", "M"), Line("GR", "GAPI")})};
    CLasWriter strict;
    ASSERT_EQ(AddAll(strict, false, headers, false), LASFILE_OK);
    EXPECT_EQ(strict.Validate(), LASFILE_MISSING_SECTION);
    EXPECT_STREQ(strict.GetLastErrorSection(), "ASCII");

    for (bool las3 : {false, true}) {
        SCOPED_TRACE(las3 ? "LAS 3.0" : "LAS 2.0");
        CLasWriter writer;
        ASSERT_EQ(AddAll(writer, las3, headers), LASFILE_OK);
        const std::string data = las3 ? "Log_Data" : "ASCII";
        const std::string definition = las3 ? "Log_Definition" : "Curve";
        CLasReader back;
        ASSERT_EQ(WriteAndReadBack(writer, back), LASFILE_OK);
        ASSERT_EQ(WriteAndReadBack(writer, back), LASFILE_OK);
        const std::vector<std::string> records = Records(writer);
        EXPECT_EQ(std::count(records.begin(), records.end(), "SECTION_NOT_WRITTEN " + data + "/ " + data + ">"), 1);
        EXPECT_EQ(records.size(), las3 ? 2u : 1u);  // in LAS 3.0 the Curve section is renamed too
        EXPECT_TRUE(back.GetNotes().empty());
        CLasSection none;
        EXPECT_NE(back.GetSection(data.c_str(), none), LASFILE_OK);
        CLasSection curves;
        ASSERT_EQ(back.GetSection(definition.c_str(), curves), LASFILE_OK);
        ASSERT_EQ(curves.m_params.size(), 2u);
        EXPECT_EQ(curves.m_params[1].m_mnemonic, "GR");
        EXPECT_EQ(curves.m_params[1].m_unit, "GAPI");
    }
    // No curves at all: neither the empty definition section nor the data
    // section is written, and the sections given are.
    CLasWriter bare;
    ASSERT_EQ(AddAll(bare, true, {well, Section("Core_Parameter", LASSECTION_PARAMETER, {Line("C", "", "1")})}),
              LASFILE_OK);
    CLasReader reader;
    ASSERT_EQ(WriteAndReadBack(bare, reader), LASFILE_OK);
    const std::vector<std::string> records = Records(bare);
    Has(records, "SECTION_NOT_WRITTEN Log_Definition/ Log_Definition>");
    Has(records, "SECTION_NOT_WRITTEN Log_Data/ Log_Data>");
    CLasSection core;
    ASSERT_EQ(reader.GetSection("Core_Parameter", core), LASFILE_OK);
    EXPECT_EQ(core.m_params.at(0).m_value, "1");
}

// Files that repeat ~Parameter, ~Curve and ~Ascii for each logging run: in
// LAS 3.0 each run after the first is a group of its own (Log2_...), its
// data linked to its own definition; LAS 2.0 holds one log, and the later
// runs' Curve and ASCII are left out, recorded.
TEST(RepairSections, RepeatedLoggingRunsBecomeGroupsOfTheirOwn)
{
    const std::vector<CLasSection> runs = {
        Well(),
        Section("Parameter", LASSECTION_PARAMETER, {Line("RUN", "", "1")}),
        Section("Curve", LASSECTION_DEFINITION, {Line("DEPT", "M"), Line("GR", "GAPI")}),
        Data("ASCII", "Curve", {Numbers("DEPT", {100, 101, 102}), Numbers("GR", {1, 2, 3})}),
        Section("Parameter", LASSECTION_PARAMETER, {Line("RUN", "", "2")}),
        Section("Curve", LASSECTION_DEFINITION, {Line("DEPT", "M"), Line("RT", "OHMM"), Line("SP", "MV")}),
        Data("ASCII", "Curve", {Numbers("DEPT", {200, 201}), Numbers("RT", {5, 6}), Numbers("SP", {7, 8})})};
    CLasWriter las3;
    ASSERT_EQ(AddAll(las3, true, runs), LASFILE_OK);
    CLasReader reader;
    ASSERT_EQ(WriteAndReadBack(las3, reader), LASFILE_OK);
    const std::vector<std::string> records = Records(las3);
    Has(records, "SECTION_NEXT_RUN Log2_Parameter/ Log_Parameter>Log2_Parameter");
    Has(records, "SECTION_NEXT_RUN Log2_Definition/ Log_Definition>Log2_Definition");
    Has(records, "SECTION_NEXT_RUN Log2_Data/ Log_Data>Log2_Data");
    Has(records, "ASSOCIATION Log2_Data/ Log_Definition>Log2_Definition");
    CLasSection second;
    ASSERT_EQ(reader.GetSection("Log2_Data", second), LASFILE_OK);
    ASSERT_EQ(second.m_curves.size(), 3u);
    EXPECT_EQ(second.m_curves[1].m_definition.m_mnemonic, "RT");
    EXPECT_EQ(second.m_curves[2].m_numbers, (std::vector<double>{7, 8}));
    ASSERT_EQ(reader.GetSection("Log2_Parameter", second), LASFILE_OK);
    EXPECT_EQ(second.m_params.at(0).m_value, "2");
    ASSERT_EQ(reader.GetSection("Log_Data", second), LASFILE_OK);
    EXPECT_EQ(second.m_curves.at(1).m_numbers, (std::vector<double>{1, 2, 3}));

    CLasWriter las2;
    ASSERT_EQ(AddAll(las2, false, runs), LASFILE_OK);
    CLasReader back;
    ASSERT_EQ(WriteAndReadBack(las2, back), LASFILE_OK);
    const std::vector<std::string> left = Records(las2);
    Has(left, "SECTION_MERGED Parameter/ Parameter>Parameter");
    Has(left, "SECTION_LEFT_OUT Curve/ Curve>");
    Has(left, "SECTION_LEFT_OUT ASCII/ ASCII>");
    ASSERT_EQ(back.GetSection("ASCII", second), LASFILE_OK);
    EXPECT_EQ(second.m_curves.size(), 2u);
}

// Sections no repair can keep are left out, and what no repair avoids is
// still refused.
TEST(RepairSections, WhatCannotBeKeptIsLeftOutAndLimitsStay)
{
    CLasSection untyped = Section("Notes", LASSECTION_ANY);
    CLasSection wellAsParameters = Section("Well", LASSECTION_PARAMETER, {Line("X", "", "1")});
    CLasSection texts = Data("Core_Data", "Core_Definition", {Texts("DESC", {"a", "b"})});
    CLasWriter writer;
    ASSERT_EQ(AddAll(writer, true,
                     {Well(), Section("O", LASSECTION_PARAMETER), Section("Other", LASSECTION_PARAMETER), untyped,
                      wellAsParameters, Section("Core_Definition", LASSECTION_DEFINITION, {Line("DESC")}), texts,
                      Section("Log_Definition", LASSECTION_DEFINITION, {Line("DEPT", "M")}),
                      Data("Log_Data", "Log_Definition", {Numbers("DEPT", {100, 101, 102})})}),
              LASFILE_OK);
    CLasReader reader;
    ASSERT_EQ(WriteAndReadBack(writer, reader), LASFILE_OK);
    const std::vector<std::string> records = Records(writer);
    Has(records, "SECTION_LEFT_OUT O/ O>");
    Has(records, "SECTION_LEFT_OUT Other/ Other>");
    Has(records, "SECTION_LEFT_OUT Notes/ Notes>");
    Has(records, "SECTION_LEFT_OUT Well/ Well>");
    Has(records, "SECTION_LEFT_OUT Core_Data/ Core_Data>");
    Has(records, "FORMAT Core_Definition/DESC >{S}");  // before its data went
    EXPECT_EQ(records.size(), 6u);
    CLasSection back;
    EXPECT_EQ(reader.GetSection("Core_Data", back), LASFILE_BAD_VALUE);
    // After a section went and others came, the names are those stored: a
    // second Log_Definition is the next run of its group, a data section of
    // the name that went is stored.
    CLasWriter changed;
    ASSERT_EQ(AddAll(changed, true,
                     {Well(), Section("Core_Definition", LASSECTION_DEFINITION, {Line("DESC", "", "", "{S}")}), texts}),
              LASFILE_OK);
    ASSERT_EQ(changed.Validate(), LASFILE_OK);
    ASSERT_EQ(changed.AddSection(Section("Log_Definition", LASSECTION_DEFINITION, {Line("X")})), LASFILE_OK);
    ASSERT_EQ(changed.AddSection(Data("Core_Data", "Core_Definition", {Numbers("C", {1, 2})})), LASFILE_OK);
    const std::vector<std::string> after = Records(changed);
    EXPECT_EQ(after.back(), "SECTION_NEXT_RUN Log2_Definition/ Log_Definition>Log2_Definition");
    EXPECT_EQ(LasSectionNameIn(nullptr, true), "");
    EXPECT_EQ(LasSectionNameIn("log", true), "Log_Data");
    EXPECT_EQ(LasSectionNameIn("l", false), "ASCII");
    EXPECT_EQ(LasSectionNameIn("Core_Data", false), "Core_Data");

    const size_t bound = detail::g_maxCurveValues;
    detail::g_maxCurveValues = 2;
    CLasWriter limited;
    EXPECT_EQ(AddAll(limited, false, {Data("ASCII", "Curve", {Numbers("DEPT", {1}), Numbers("GR", {1, 2, 3})})}),
              LASFILE_BAD_VALUE);
    detail::g_maxCurveValues = bound;
    EXPECT_EQ(limited.GetLastErrorColumn(), 1);
    EXPECT_TRUE(limited.GetRepairs().empty());
}

// A value that is no number (NaN, as a lenient read gives "ERR") is written
// as the NULL value, recorded once per curve; without a NULL value it stays
// NaN, which reads back as NaN.
TEST(RepairData, NotANumberWrittenAsTheNullValue)
{
    const double nan = std::nan("");
    const CLasSection data = Data("ASCII", "", {Numbers("DEPT", {100, 101, 102}), Numbers("GR", {nan, 2, nan})});
    CLasWriter writer;
    ASSERT_EQ(AddAll(writer, false, {Well(), data}), LASFILE_OK);
    CLasReader reader;
    ASSERT_EQ(WriteAndReadBack(writer, reader), LASFILE_OK);
    EXPECT_EQ(Records(writer), (std::vector<std::string>{"VALUE ASCII/GR nan>-999.25"}));
    CLasSection back;
    ASSERT_EQ(reader.GetSection("ASCII", back), LASFILE_OK);
    EXPECT_EQ(back.m_curves.at(1).m_numbers, (std::vector<double>{-999.25, 2, -999.25}));

    CLasWriter noNull;
    ASSERT_EQ(AddAll(noNull, false, {Section("Well", LASSECTION_HEADER), data}), LASFILE_OK);
    ASSERT_EQ(WriteAndReadBack(noNull, reader), LASFILE_OK);
    ASSERT_EQ(reader.GetSection("ASCII", back), LASFILE_OK);
    EXPECT_TRUE(std::isnan(back.m_curves.at(1).m_numbers.at(2)));
    for (const std::string& record : Records(noNull)) EXPECT_EQ(record.rfind("VALUE", 0), std::string::npos);
}

// Data without a definition section of one line per curve, text padded,
// nameless curves, and a delimiter that already keeps blanks.
TEST(RepairData, UnpairedDefinitionsNamelessCurvesAndTextPadding)
{
    CLasCurve nameless = Numbers("", {5, 6});
    const std::vector<CLasSection> document = {
        Section("Well", LASSECTION_HEADER),
        Section("Log_Definition", LASSECTION_DEFINITION, {Line("CODE", "", "", "{S}"), Line("DEPT", "M")}),
        Data("Log_Data", "Log_Definition", {Texts("CODE", {"a b", ""}), Numbers("DEPT", {100, 101, 102}), nameless})};
    CLasWriter writer;
    ASSERT_EQ(writer.SetFormat(true, ','), LASFILE_OK);
    writer.SetRepair(true);
    for (const CLasSection& section : document) ASSERT_EQ(writer.AddSection(section), LASFILE_OK);
    CLasReader reader;
    ASSERT_EQ(WriteAndReadBack(writer, reader), LASFILE_OK);
    const std::vector<std::string> records = Records(writer);
    Has(records, "CURVE_MOVED Log_Data/DEPT 1>0");
    Has(records, "CURVE_PADDED Log_Data/CODE 2>3");
    Has(records, "VALUE Log_Data/CODE >nan");
    Has(records, "CURVE_PADDED Log_Data/ 2>3");
    Has(records, "DEFINITION_ADDED Log_Definition/ >");
    EXPECT_EQ(records.size(), 5u);
    CLasSection data;
    ASSERT_EQ(reader.GetSection("Log_Data", data), LASFILE_OK);
    ASSERT_EQ(data.m_curves.size(), 3u);
    EXPECT_EQ(data.m_curves[1].m_strings.at(1), "nan");  // no NULL in the Well section
    EXPECT_EQ(data.m_curves[1].m_strings.at(2), "nan");
    EXPECT_EQ(data.m_curves[2].m_definition.m_mnemonic, "");
    EXPECT_TRUE(std::isnan(data.m_curves[2].m_numbers.at(2)));  // written as "nan", read back

    // LAS 2.0: the lines past the curves go, then the text curve with the
    // line of its place.
    CLasWriter las2;
    ASSERT_EQ(
        AddAll(las2, false,
               {Well(), Section("Curve", LASSECTION_DEFINITION, {Line("DEPT", "M"), Line("A"), Line("B"), Line("C")}),
                Data("ASCII", "Curve", {Numbers("DEPT", {100, 101, 102}), Texts("T", {"x", "y", "z"})})}),
        LASFILE_OK);
    CLasReader back;
    ASSERT_EQ(WriteAndReadBack(las2, back), LASFILE_OK);
    const std::vector<std::string> records2 = Records(las2);
    Has(records2, "CURVE_LEFT_OUT ASCII/T T>");
    Has(records2, "LINE_LEFT_OUT Curve/B B>");
    Has(records2, "LINE_LEFT_OUT Curve/C C>");
    EXPECT_EQ(records2.size(), 3u);
}

// Text that holds the delimiter would split when read back: tabs, or commas
// or blanks when text holds tabs as well; nothing when no delimiter is free.
TEST(RepairData, TextThatHoldsTheDelimiter)
{
    const auto written = [](char delimiter, std::vector<CLasString> texts, std::string* record) {
        CLasWriter writer;
        EXPECT_EQ(writer.SetFormat(true, delimiter), LASFILE_OK);
        writer.SetRepair(true);
        EXPECT_EQ(writer.AddSection(Data("Log_Data", "", {Numbers("DEPT", {1, 2}), Texts("T", texts)})), LASFILE_OK);
        CLasReader reader;
        const ELASFILEERROR read = WriteAndReadBack(writer, reader);
        const std::vector<std::string> records = Records(writer);
        *record = records.empty() ? "" : records.back();
        CLasSection data;
        if (read != LASFILE_OK || reader.GetSection("Log_Data", data) != LASFILE_OK) return std::string("-");
        return std::string(data.m_curves.at(1).m_strings.at(0));
    };
    std::string record;
    EXPECT_EQ(written(',', {"a,b", "c"}, &record), "a,b");
    EXPECT_EQ(record, "DELIMITER Log_Data/T ,>\t");
    EXPECT_EQ(written(' ', {"a b", "c\td"}, &record), "a b");
    EXPECT_EQ(record, "DELIMITER Log_Data/T  >,");
    EXPECT_EQ(written('\t', {"a b", "c"}, &record), "a b");
    EXPECT_EQ(record, "");
    EXPECT_EQ(written(',', {"a,b", "c\td"}, &record), "a,b");
    EXPECT_EQ(record, "DELIMITER Log_Data/T ,> ");
    CLasWriter crowded;
    ASSERT_EQ(crowded.SetFormat(true, ','), LASFILE_OK);
    crowded.SetRepair(true);
    ASSERT_EQ(crowded.AddSection(Data("Log_Data", "", {Numbers("DEPT", {1}), Texts("T", {"a,\tb c"})})), LASFILE_OK);
    ASSERT_EQ(crowded.Validate(), LASFILE_OK);
    EXPECT_TRUE(crowded.GetRepairs().empty());
}

// A data section without rows whose definition has more lines than it has
// curves gets an empty curve per line; the definition section is written,
// the data section without rows is not.
TEST(RepairNoRows, EmptyCurvesForDefinitionLines)
{
    CLasSection data = Data("Log_Data", "Log_Definition", {});
    CLasWriter writer;
    ASSERT_EQ(
        AddAll(
            writer, true,
            {Well(), Section("Log_Definition", LASSECTION_DEFINITION, {Line("DEPT", "M"), Line("NAME", "", "", "{S}")}),
             data}),
        LASFILE_OK);
    ASSERT_EQ(writer.Validate(), LASFILE_OK);
    EXPECT_TRUE(writer.GetRepairs().empty());
    CLasReader reader;
    ASSERT_EQ(WriteAndReadBack(writer, reader), LASFILE_OK);
    CLasSection back;
    ASSERT_EQ(reader.GetSection("Log_Definition", back), LASFILE_OK);
    ASSERT_EQ(back.m_params.size(), 2u);
    EXPECT_EQ(back.m_params[1].m_format, "{S}");
    CLasParam strt;
    ASSERT_EQ(reader.GetWellHeaders().FindParameterByMnemonic("STRT", &strt), 0);
    EXPECT_EQ(strt.m_value, "100");  // kept: there are no depths to test it against

    // A range without STOP: the missing one is added, the rest kept.
    CLasWriter partial;
    ASSERT_EQ(AddAll(partial, false,
                     {Section("Well", LASSECTION_HEADER, {Line("STRT", "M", "100"), Line("STEP", "M", "0.5")}),
                      Section("Curve", LASSECTION_DEFINITION, {Line("DEPT", "M")})}),
              LASFILE_OK);
    ASSERT_EQ(partial.Validate(), LASFILE_OK);
    CLasWriter strict;
    ASSERT_EQ(AddAll(strict, false,
                     {Section("Well", LASSECTION_HEADER, {Line("STRT", "M", "100")}),
                      Section("Curve", LASSECTION_DEFINITION, {Line("DEPT", "M")}),
                      Data("ASCII", "Curve", {Numbers("DEPT", {})})},
                     false),
              LASFILE_OK);
    EXPECT_EQ(strict.Validate(), LASFILE_BAD_FORMAT);  // STRT against depth 0
}

}  // namespace
}  // namespace quarl::test
