// The reader: the frame, progress and cancellation, section headers and
// dispatch, parameter and Version lines, data sections, what a host takes
// out, and the data stepping check.
#include <gtest/gtest.h>

#include <cstring>
#include <iterator>

#include "foundation/number_parse.h"
#include "foundation/platform.h"
#include "foundation/section_names.h"
#include "support/reader_access.h"

namespace quarl::test {
namespace {

using Numbers = std::vector<double>;

const std::string kSmall = "~Version\nVERS. 2.0 : v\nWRAP. NO : w\n~Well\nSTEP.M 1 : s\n";

TEST(ReaderFrame, WhatOpenKeepsOfEachFile)
{
    const struct {
        std::string text;
        ELASFILEERROR result;
        std::string sections;
    } cases[] = {
        // The first line that counts begins with "~V" in either case.
        {"~VERSION INFORMATION\nVERS. 2.0 : v\n", LASFILE_OK, "VERSION:3(1)"},
        {"~v\n", LASFILE_IO_FAILED, "v:3(0)"},
        {"~Vxyz\nVERS. 2.0 : v\n", LASFILE_OK, ""},  // passes the test, but no row reads "Vxyz"
        {"# comment\n\n  # more\n\\ \\\n~Version\nVERS. 2.0 : v\n", LASFILE_OK, "Version:3(1)"},
        {"\n~Version\n", LASFILE_BAD_FORMAT, ""},
        {" ~Version\n", LASFILE_BAD_FORMAT, ""},
        {" # comment\n~Version\n", LASFILE_BAD_FORMAT, ""},
        {"~Well\n", LASFILE_BAD_FORMAT, ""},
        {"", LASFILE_IO_FAILED, ""},
        {"# only\n\n# comments\n", LASFILE_IO_FAILED, ""},
        // Blank and comment lines never reach a section.
        {"~Version\n  \\  \\\nVERS. 2.0 : v\n\\ #x\n   #y\n\n~Well\nA.M 1 : a\n", LASFILE_OK, "Version:3(1) Well:3(1)"},
        // A line of tabs counts, and so does a tab in front of "#"; a header
        // behind blanks is an ordinary line.
        {kSmall + "\t\t\n", LASFILE_BAD_FORMAT, "Version:3(2) Well:3(1)"},
        {kSmall + "\t# x\n", LASFILE_BAD_FORMAT, "Version:3(2) Well:3(1)"},
        {kSmall + "  ~Other\n", LASFILE_BAD_FORMAT, "Version:3(2) Well:3(1)"},
        // A parameter header at the very end is stored; a skipped one isn't.
        {kSmall + "~Parameter", LASFILE_IO_FAILED, "Version:3(2) Well:3(1) Parameter:0(0)"},
        {kSmall + "~Other\n", LASFILE_IO_FAILED, "Version:3(2) Well:3(1)"},
        // The file ends without a line feed, inside a section: fine.
        {kSmall + "A.M 1 : a", LASFILE_OK, "Version:3(2) Well:3(2)"},
        // A malformed line: its section stays, without the bad line.
        {kSmall + "B.M 2 : b\nbad\nC.M 3 : c\n~Parameter\n", LASFILE_BAD_FORMAT, "Version:3(2) Well:3(2)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        CLasReader reader;
        EXPECT_EQ(OpenText(reader, c.text), c.result);
        EXPECT_TRUE(reader.IsOpen());
        EXPECT_EQ(Dump(reader), c.sections);
    }
    // A bad path after a good read leaves the reader closed and empty, at
    // line 0, with one note there.
    TempDir dir;
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, kSmall), LASFILE_OK);
    EXPECT_EQ(reader.Open(tessel::TxString(dir.File("missing.las"))), LASFILE_IO_FAILED);
    EXPECT_FALSE(reader.IsOpen());
    EXPECT_TRUE(reader.empty());
    EXPECT_EQ(reader.GetLineNumber(), 0u);
    ASSERT_EQ(reader.GetNotes().size(), 1u);
    EXPECT_EQ(reader.GetNotes()[0].line, 0u);
}

// A Version section of `count` lines, one of them replaced by `line`.
std::string Lines(int count, int at = 0, const std::string& line = "")
{
    std::string text = "~Version\n";
    for (int i = 2; i <= count; ++i) text += i == at ? line : "A" + std::to_string(i) + ". 1 : x\n";
    return text;
}

TEST(ReaderProgress, ReportsAtEveryTenthPhysicalLineAndStops)
{
    TempDir dir;
    const std::string path = dir.Write("p.las", Lines(25));
    CLasReader reader;
    Reports all;
    reader.SetStatusCallback(&all, &Reports::Callback);
    ASSERT_EQ(reader.Open(tessel::TxString(path)), LASFILE_OK);
    ASSERT_EQ(all.percents.size(), 3u);  // lines 10 and 20, and the end
    EXPECT_LT(all.percents[0], all.percents[1]);
    EXPECT_EQ(all.percents[2], 100.0);
    for (const std::string& message : all.messages) EXPECT_EQ(message, "Reading " + path);

    const struct {
        std::string text;
        int stopAt;
        ELASFILEERROR result;
        size_t reports;
        std::string sections;
    } cases[] = {
        {Lines(25, 10, "# comment\n"), -1, LASFILE_OK, 2u, "Version:3(23)"},  // no report on a comment
        {Lines(25), 0, LASFILE_CANCELLED, 2u, "Version:3(8)"},                // the final report all the same
        {Lines(25), 2, LASFILE_CANCELLED, 3u, "Version:3(24)"},
        {"~Version\nbad line\n", 0, LASFILE_CANCELLED, 1u, "Version:3(0)"},  // it replaces a failure
        {"~Well\n", 0, LASFILE_BAD_FORMAT, 0u, ""},                          // no report before the section loop
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        Reports recorder;
        recorder.stopAt = c.stopAt;
        reader.SetStatusCallback(&recorder, &Reports::Callback);
        EXPECT_EQ(OpenText(reader, c.text), c.result);
        EXPECT_EQ(recorder.percents.size(), c.reports);
        EXPECT_EQ(Dump(reader), c.sections);
    }
    reader.SetStatusCallback(nullptr, nullptr);
    EXPECT_EQ(OpenText(reader, Lines(25)), LASFILE_OK);
}

const std::string kLas3WrappedComma = "~V\nVERS. 3.0 : v\nWRAP. YES : w\nDLM. COMMA : d\n~W\nSTEP.M 1 : s\n";

// IsValidFile looks at the first line that counts of another file; it
// closes the reader, whose sections stay until the next Open or Close.
TEST(ReaderFrame, IsValidFileClosesAndKeepsTheSections)
{
    TempDir dir;
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, kLas3WrappedComma), LASFILE_OK);
    EXPECT_TRUE(reader.IsValidFile(tessel::TxString(dir.Write("g.las", "#c\n~VERSION\n"))));
    EXPECT_FALSE(reader.IsOpen());
    EXPECT_EQ(reader.size(), 2u);
    CLasSection copy;
    EXPECT_EQ(reader.GetSection(0u, copy), LASFILE_WRONG_STATE);
    for (const std::string& bad : {dir.File("missing.las"), dir.Write("e.las", ""), dir.Write("w.las", "~Well\n"),
                                   dir.Write("c.las", "#c\n#d\n")})
        EXPECT_FALSE(reader.IsValidFile(tessel::TxString(bad))) << bad;
}

// A copy shares the sections, never the stream; Close keeps the format of
// the last file, and the next Open starts from the defaults.
TEST(ReaderFrame, AssignmentSharesTheSectionsNeverTheStreamAndCloseKeepsTheFormat)
{
    CLasReader reader, target;
    ASSERT_EQ(OpenText(target, kSmall + "~P\nX.M 1 : x\n"), LASFILE_OK);
    ASSERT_EQ(OpenText(reader, kLas3WrappedComma), LASFILE_OK);
    target = reader;
    EXPECT_TRUE(!target.IsOpen() && reader.IsOpen());
    EXPECT_EQ(target.GetSectionPtr(1), reader.GetSectionPtr(1));
    EXPECT_EQ(Access::Format(target), "3 W ,");
    target = target;
    EXPECT_EQ(target.size(), 2u);
    reader.Close();
    reader.Close();
    EXPECT_TRUE(reader.empty() && !reader.IsOpen());
    EXPECT_EQ(Access::Format(reader), "3 W ,");
    EXPECT_EQ(target.GetSection(1ull).m_params.size(), 1u);
    ASSERT_EQ(OpenText(reader, kSmall), LASFILE_OK);
    EXPECT_EQ(Access::Format(reader), "2 -  ");
}

TEST(SectionHeader, NameAssociationAndSplit)
{
    std::string name = "old", association = "old";
    EXPECT_FALSE(ParseSectionHeader("", &name, &association));
    EXPECT_FALSE(ParseSectionHeader(nullptr, &name, &association));
    EXPECT_FALSE(ParseSectionHeader("~A", nullptr, &association));
    EXPECT_EQ(name, "old");
    const struct {
        const char* line;
        const char* parsed;
    } cases[] = {
        // "name|association"
        {"~Well Information | x", "Well|"},
        {"~Log_Data|Log_Definition extra", "Log_Data|Log_Definition"},
        {"~ \tLog_Data", "Log_Data|"},
        {"~", "|"},
        {"  Core_Data[2]  |\t Core_Definition[2]|x", "Core_Data[2]|Core_Definition[2]"},
    };
    for (const auto& c : cases) {
        ASSERT_TRUE(ParseSectionHeader(c.line, &name, &association)) << c.line;
        EXPECT_EQ(name + "|" + association, c.parsed);
    }
    std::string base, suffix, index;
    ASSERT_TRUE(SplitSectionName("~Log_Data[2] x", true, &base, &suffix, &index));
    EXPECT_EQ(base + " " + suffix + " " + index, "Log _Data [2]");
    ASSERT_TRUE(SplitSectionName("Core_Run[2]", true, &base, &suffix, &index));
    EXPECT_EQ(base + " " + suffix, "Core_Run _Run");
    ASSERT_TRUE(SplitSectionName("A_B_data", false, &base, &suffix, nullptr));
    EXPECT_EQ(base + " " + suffix, "A_B_data _data");
    EXPECT_FALSE(SplitSectionName("", true, &base, nullptr, nullptr));
    base = suffix = index = "stale";  // each part is replaced, even by nothing
    ASSERT_TRUE(SplitSectionName("Curve", true, &base, &suffix, &index));
    EXPECT_EQ(base + "|" + suffix + "|" + index, "Curve||");
    for (const char* log : {"Log_Data[2]", "a[1]", "ASCII"}) EXPECT_TRUE(IsLogDataName(log)) << log;
    for (const char* other : {"Core_Data", ""}) EXPECT_FALSE(IsLogDataName(other)) << other;
    EXPECT_TRUE(IsLogDefinitionName("~Curve Information"));
    EXPECT_TRUE(IsLogDefinitionName("log_definition"));
    EXPECT_FALSE(IsLogDefinitionName("Log_Parameter"));
}

TEST(Dispatch, SectionsAreReadAsTheirNameSays)
{
    const std::string v2 = "~VeRsIoN\nVERS. 2.0 : v\n~W\nSTEP.M 1 : s\n";
    const std::string v3 = "~Version\nVERS. 3.0 : v\n~Well\nSTEP.M 1 : s\n";
    const struct {
        std::string text;
        ELASFILEERROR result;
        std::string sections;
    } cases[] = {
        // behind Version and Well
        {v2 + "~PARAMETER\nA.M 1 : a\n~p\n~cUrVe\nDEPT.M : d\n~a\n1\n", LASFILE_OK,
         "PARAMETER:0(1) p:0(0) cUrVe:1/32(1) a:2/16|cUrVe{1}"},
        {v2 + "~Log_Parameter\n~Log_Definition\nD.M : d\n~Log_Data\n5\n", LASFILE_OK,
         "Log_Parameter:0(0) Log_Definition:1/32(1) Log_Data:2/16|Log_Definition{5}"},
        {v2 + "~C\nD.M : d\n~A_B_Data | C\n1\n~Log\n2\n~L\n3\n~ASCII\n4\n", LASFILE_OK,
         "C:1/32(1) A_B_Data:2|C{1} Log:2/16|C{2} L:2/16|C{3} ASCII:2/16|C{4}"},
        // Unknown names are skipped whole; a known suffix is read without asking for a definition.
        {v2 + "~Other\nfree text : { | }\n~Tops\nA.M 1 : a\n~\nx\n~Drilling\n1 2\n~P\nA.M 1 : a\n", LASFILE_OK,
         "P:0(1)"},
        {v2 + "~Drilling_Data\n1 2\n", LASFILE_BAD_FORMAT, ""},
        // "Other" is data in version 3 only, and only with a definition.
        {v3 + "~Other_Definition\nX.M : x\n~Other\n7\n", LASFILE_OK,
         "Other_Definition:1(1) Other:2|Other_Definition{7}"},
        {v3 + "~Other\n7\n~P\nA.M 1 : a\n", LASFILE_OK, "P:0(1)"},
        {v2 + "~Other_Definition\nX.M : x\n~Other\n7\n", LASFILE_OK, "Other_Definition:1(1)"},
        // Indexed sections are read as their suffix says; Curve[1] finds no definition and is skipped.
        {v2 + "~Core_Definition\nA.M : a\n~Core_Parameter[2]\nP.M 1 : p\n~Core_Definition[2]\nB.M : b\nC.M : c\n"
              "~Core_Data[2]\n1 2\n~Core_Data\n3\n~Curve[1]\n4\n",
         LASFILE_OK,
         "Core_Definition:1(1) Core_Parameter[2]:0(1) Core_Definition[2]:1(2) Core_Data[2]:2|Core_Definition[2]{1;2} "
         "Core_Data:2|Core_Definition{3}"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        CLasReader reader;
        EXPECT_EQ(OpenText(reader, c.text), c.result);
        EXPECT_EQ(reader.CountSectionsByType(LASSECTION_HEADER), 2);
        EXPECT_EQ(Dump(reader, 2), c.sections);
    }
    // "~Vers" passes the first-line test but is skipped: the next section is first.
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, "~Vers\nVERS. 2.0 : v\n~Well\nA.M 1 : a\n"), LASFILE_OK);
    EXPECT_EQ(Dump(reader), "Well:3(1)");
}

TEST(Lookup, SectionByNameAndDefinitionOfDataSection)
{
    CLasReader reader;
    for (const char* name :
         {"", "Well", "WELL", "Log_Definition", "Curve", "CORE_DEFINITION", "Core_Run_Definition[2]"})
        Access::AddSection(reader, name);
    EXPECT_EQ(Access::FindSectionIndexByName(reader, nullptr), -1);
    EXPECT_EQ(Access::FindSectionIndexByName(reader, ""), -1);
    EXPECT_EQ(Access::FindSectionIndexByName(reader, "well"), 1);  // the first in any case
    EXPECT_EQ(Access::FindSectionIndexByName(reader, "Wel"), -1);
    const struct {
        const char* data;
        int32_t index;
    } cases[] = {{"Log_Data[2]", 4}, {"", -1},           {"core_data", 5}, {"Core_Data[3]", 5},
                 {"Core", 5},        {"Core_Run[2]", 6}, {"Core_Run", -1}, {"Other_Data", -1}};
    for (const auto& c : cases) {
        std::string found = "untouched";
        EXPECT_EQ(Access::FindDefinition(reader, c.data, &found), c.index) << c.data;
        EXPECT_EQ(found, c.index < 0 ? "untouched" : reader.GetSection(static_cast<uint64_t>(c.index)).m_name);
        EXPECT_EQ(Access::FindDefinition(reader, c.data, nullptr), c.index) << c.data;
    }
    // A read file's lookups: the first of two names that differ in case only
    // is the definition, and a name a host changed counts as it stands.
    ASSERT_EQ(OpenText(reader, Las30Head("A.M : a\n~log_DEFINITION\nB.M : b\n") + "~Log_Data\n1\n"), LASFILE_OK);
    ASSERT_EQ(reader.GetSection(4ull).m_curves.at(0).m_definition.m_mnemonic, "A");
    reader.GetSectionPtr(2)->m_name = "Renamed";
    CLasSection found;
    ASSERT_EQ(reader.GetSection("renamed", found), LASFILE_OK);
    EXPECT_EQ(found.m_params.at(0).m_mnemonic, "A");
    ASSERT_EQ(reader.GetSection("Log_Definition", found), LASFILE_OK);
    EXPECT_EQ(found.m_params.at(0).m_mnemonic, "B");

    // Renamed by the host from its callback while Open reads: the later data
    // sections find the definition by its new name, and not by the old one.
    // A lookup in the same callback finds it as it stands too.
    struct Renamer {
        CLasReader* reader;
        std::string lookups;
        static int32_t Rename(void* self, double, const char*)
        {
            Renamer& r = *static_cast<Renamer*>(self);
            CLasSection found;
            r.lookups += std::to_string(r.reader->GetSection("Core_Definition", found)) + ",";
            for (const std::shared_ptr<CLasSection>& section : *r.reader)
                if (section->m_name == "Core_Definition") section->m_name = "Drill_Definition";
            r.lookups += std::to_string(r.reader->GetSection("Drill_Definition", found)) +
                         std::to_string(r.reader->GetSection("Core_Definition", found)) + ";";
            return 0;
        }
    } renamer{&reader, ""};
    reader.SetStatusCallback(&renamer, &Renamer::Rename);
    std::string text = Las30Head("A.M : a\n") + "~Core_Definition\nX.M : x\n~Other_Parameter\n";
    for (int i = 0; i < 12; ++i) text += "P.M 1 : p\n";  // a report comes among them
    text += "~Drill_Data\n1\n~Core_Data\n2\n";
    EXPECT_EQ(OpenText(reader, text), LASFILE_BAD_FORMAT);  // Core_Data has no definition now
    const CLasSection& drill = reader.GetSection(reader.size() - 1);
    EXPECT_EQ(drill.m_name + "|" + drill.m_association, "Drill_Data|Drill_Definition");
    EXPECT_EQ(drill.m_curves.size(), 1u);
    const std::string ok = std::to_string(LASFILE_OK), bad = std::to_string(LASFILE_BAD_VALUE);
    EXPECT_EQ(renamer.lookups.substr(0, 2 * ok.size() + bad.size() + 2), ok + "," + ok + bad + ";");
    reader.SetStatusCallback(nullptr, nullptr);
}

TEST(ParameterLine, SplitsEveryFieldByTheByteRules)
{
    // "mnemonic#unit#value#description#format#association", or null: refused.
    const struct {
        const char* line;
        bool isLas3;
        const char* fields;
    } cases[] = {
        {"DEPT.M 100.5 : Depth", false, "DEPT#M#100.5#Depth##"},
        {"  STRT .M   1.0   :  start  ", false, "STRT#M#1.0#start##"},
        {"DATE.   12:30:00 : taken", false, "DATE##12#30:00 : taken##"},
        {"GAMMA RAY.GAPI 1 : x", false, "GAMMA RAY#GAPI#1#x##"},
        {"A . B : d", false, "A##B#d##"},
        {"A.X.Y D : d", false, "A#X.Y#D#d##"},
        {".M 5 : x", false, "#M#5#x##"},
        {"A.M:d", false, "A#M##d##"},
        {"A.M 1   ", false, "A#M#1   ###"},
        {"A.M 1 |x", false, "A#M#1 |x###"},
        {"A.M 1|2 : x", false, "A#M#1|2#x##"},
        {"A.M 1 : x | y | z", true, "A#M#1#x | y##z"},
        {"A.M 1 : d {a} {b}", false, "A#M#1#d {a}#{b}#"},
        {"A.M 1 : d | a {F}", true, "A#M#1#d#{F}#a {F}"},
        {"A.M 1 : d {F} tail", false, "A#M#1#d#{F}#"},
        {"A.M 1 : d {F", false, "A#M#1#d##"},
        {"A.M 1 : d } x", false, "A#M#1#d } x##"},
        {"A.M 1 \t: d\t", false, "A#M#1#d##"},
        {"A\t.M 1 : d", false, "A#M#1#d##"},
        {"A.M 1 : : {x} | {y}", false, "A#M#1#: {x}#{y}#{y}"},
        {"vers", false, "vers#####"},
        {"VERS\t3.0 : x", false, "VERS##3.0#x##"},
        {"VERS 3.0 : x", false, "VERS 3#0##x##"},
        {"VERS.2.0 : x", false, "VERS#2.0##x##"},
        {"VERS.X|Y 5 : x", false, "VERS#X#.X|Y 5#x##"},
        {"~A.B c : d", false, "~A#B#c#d##"},
        {"A:B.M 1", false, nullptr},
        {"A{.M 1", false, nullptr},
        {"A|.M 1", false, nullptr},
        {"A}.M 1", false, nullptr},
        {"   ", false, nullptr},
        {"", false, nullptr},
        {"no period here", false, nullptr},
        {"A\tB.M 1", false, nullptr},
        {"VERS   ", false, nullptr},
        {"A.M{ 1 : x", false, nullptr},
        {"A.M| 1 : x", false, nullptr},
        {"A.M 1{2} : x", false, nullptr},
        {"A.M 1} : x", false, nullptr},
        {"A.M 1 |x", true, nullptr},
        {"A.M 1|2 : x", true, nullptr},
        {" ~Well", false, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string("'") + c.line + "' las3=" + std::to_string(c.isLas3));
        CLasReader reader;
        Access::SetLas3(reader, c.isLas3);
        CLasParam p;
        p.m_unit = p.m_value = p.m_description = p.m_format = p.m_association =
            "stale";  // every scanner empties its field
        EXPECT_EQ(Access::ParseParameterLine(reader, c.line, p), c.fields ? LASFILE_OK : LASFILE_BAD_FORMAT);
        if (c.fields) {
            EXPECT_EQ(p.m_mnemonic + "#" + p.m_unit + "#" + p.m_value + "#" + p.m_description + "#" + p.m_format + "#" +
                          p.m_association,
                      c.fields);
        }
    }
    CLasReader reader;  // what was gathered before the refusal stays
    CLasParam p;
    ASSERT_EQ(Access::ParseParameterLine(reader, "A.XY{Z 1 : d", p), LASFILE_BAD_FORMAT);
    EXPECT_EQ(p.m_mnemonic + "." + p.m_unit, "A.XY");
}

TEST(VersionLines, VersWrapAndDlmSetTheFormat)
{
    // The format as "version wrapped delimiter", and the value of the VERS line unless null.
    const struct {
        const char* lines;
        ELASFILEERROR result;
        const char* format;
        const char* vers;
    } cases[] = {
        // VERS decides version 3 by its first byte.
        {"VERS. 1.2 : x\n", LASFILE_OK, "2 -  ", "1.2"},
        {"VERS. 3.0 : x\n", LASFILE_OK, "3 -  ", "3.0"},
        {"VERS. A : x\n", LASFILE_OK, "3 -  ", "A"},
        {"VERS. \xC3\xA9 : x\n", LASFILE_OK, "2 -  ", nullptr},
        {"VERS. : x\n", LASFILE_OK, "2 -  ", ""},
        // A version written against the period is taken from the unit.
        {"VERS.2.0 : x\n", LASFILE_OK, "2 -  ", "2.0"},
        {"VERS.3.0 : x\n", LASFILE_OK, "3 -  ", "3.0"},
        {"VERS.0.5 : x\n", LASFILE_OK, "2 -  ", ""},
        {"VERS.1.2 : x\n", LASFILE_OK, "2 -  ", "1.2"},
        {"VERS.+3 : x\n", LASFILE_OK, "2 -  ", "+3"},
        {"VERS.-2 : x\n", LASFILE_OK, "2 -  ", ""},
        {"VERS.99999999999999999999 : x\n", LASFILE_OK, "3 -  ", "99999999999999999999"},
        {"VERS.2.0 CWLS : x\n", LASFILE_OK, "3 -  ", "CWLS"},
        // Lines before VERS are read as version 2: the bar is ordinary there.
        {"A.M 1|2 : x\nVERS. 3.0 : v\n", LASFILE_OK, "3 -  ", nullptr},
        {"VERS. 3.0 : v\nA.M 1|2 : x\n", LASFILE_BAD_FORMAT, "3 -  ", nullptr},
        // WRAP turns on only for YES, in any case, and stays on.
        {"WRAP. yes : x\n", LASFILE_OK, "2 W  ", nullptr},
        {"WRAP.YES : x\n", LASFILE_OK, "2 W  ", nullptr},
        {"WRAP.yes : x\n", LASFILE_OK, "2 -  ", nullptr},
        {"WRAP. YES : x\nWRAP. NO : x\n", LASFILE_OK, "2 W  ", nullptr},
        // DLM: a word, or the first byte of the value.
        {"DLM. comma : x\n", LASFILE_OK, "2 - ,", nullptr},
        {"DLM. TAB : x\n", LASFILE_OK, "2 - \t", nullptr},
        {"DLM. COMMA : x\nDLM. SPACE : x\n", LASFILE_OK, "2 -  ", nullptr},
        {"DLM. ; : x\n", LASFILE_OK, "2 - ;", nullptr},
        {"DLM. COMMA : x\nDLM. : x\n", LASFILE_OK, "2 - ,", nullptr},
        {"DLM.COMMA : x\n", LASFILE_OK, "2 -  ", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.lines);
        CLasReader reader;
        EXPECT_EQ(OpenText(reader, std::string("~Version\n") + c.lines + "~Well\nSTEP.M 1 : s\n"), c.result);
        EXPECT_EQ(Access::Format(reader), c.format);
        if (c.vers) {
            EXPECT_EQ(reader.GetSection(0ull).m_params[0].m_value, c.vers);
        }
    }
    // A VERS line outside the Version section means nothing.
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, "~V\nVERS. 2.0 : v\n~W\nVERS. 3.0 : x\n"), LASFILE_OK);
    EXPECT_EQ(Access::Format(reader), "2 -  ");
}

// The last section of a file read from text.
CLasSection LastSection(const std::string& text)
{
    CLasReader reader;
    OpenText(reader, text);
    return reader.empty() ? CLasSection() : *reader.GetSectionPtr(reader.size() - 1);
}

const std::string kThree = "D.M : d\nA.M : a\nB.M : b\n";
const std::string kTwoTexts = "T. : t {S}\nU. : u {S}\n";

TEST(DataSection, RowsBecomeCurves)
{
    const struct {
        std::string text;
        ELASFILEERROR result;
        std::string last;
    } cases[] = {
        // all behind Curve
        // Numeric or text by the format of the definition; "{}" is no numeric format.
        {Las20Head("DEPT.M : d {F}\nNAME. : n {S}\nN.M : n {i5}\nE. : e {}\nX. : x {E}\n") +
             "~A  ignored words\n1.5 abc 3 4 5e2\n",
         LASFILE_OK, "A:2/16|Curve{1.5;\"abc\";3;\"4\";500}"},
        // Short and long rows; a line of tabs is a row; atof of a bad number is 0.
        {Las20Head(kThree) + "~A\n1.0 2.0\n1 2 3 4\n \t 7\t\t8   9\n#c\nx 1e 0x10\n\t\n", LASFILE_OK,
         "A:2/16|Curve{1,1,7,0,0;2,2,8,1,0;0,3,9,16,0}"},
        {Las20Head("A.M : a\nT. : t {S}\n") + "~A\n1\n-999.25 x\n", LASFILE_OK, "A:2/16|Curve{1,-999.25;\"\",\"x\"}"},
        // Version 3 with the blank: a tab is no delimiter, quotes don't group.
        {Las30Head(kThree) + "~Log_Data\n1\t2 3\n", LASFILE_OK, "Log_Data:2/16|Log_Definition{1;3;0}"},
        {Las30Head(kTwoTexts) + "~Log_Data\n\"a b\" c\n", LASFILE_OK, "Log_Data:2/16|Log_Definition{\"\"a\";\"b\"\"}"},
        // The comma keeps trailing blanks and empty values.
        {Las30Head("A.M : a\nT. : t {S}\nB.M : b\n", "COMMA") + "~Log_Data\n1.0, \"a, b\", 3.0\n1.0,,3.0\n1,2,\n",
         LASFILE_OK, "Log_Data:2/16|Log_Definition{1,1,1;\"\"a\",\"\",\"2\";0,3,0}"},
        {Las30Head(kTwoTexts, "COMMA") + "~Log_Data\nabc  , def\n", LASFILE_OK,
         "Log_Data:2/16|Log_Definition{\"abc  \";\"def\"}"},
        // A tab delimiter before version 3 delimits columns.
        {Las20Head(kThree, "NO", "DLM. TAB : d\n") + "~A\n1\t 2\t3\n4\t\t6\n", LASFILE_OK, "A:2/16|Curve{1,4;2,0;3,6}"},
        // Wrapped rows span lines.
        {Las20Head(kThree, "YES") + "~A\n1.0\n2.0 3.0\n# c\n4.0\n\t\n5.0 6.0 7.0\n", LASFILE_OK,
         "A:2/16|Curve{1,4;2,5;3,6}"},
        {Las30Head("A.M : a\nB.M : b\nC.M : c\nD.M : d\n", "COMMA", "YES") + "~Log_Data\n1,2,\n3,4\n5,6\n7,8\n",
         LASFILE_OK, "Log_Data:2/16|Log_Definition{1,5;2,6;3,7;4,8}"},
        // The end of the file within a wrapped row, and between two rows.
        {Las20Head(kThree, "YES") + "~A\n1 2 3\n4 5\n", LASFILE_IO_FAILED, "A:2/16|Curve{1,4;2,5;3}"},
        {Las20Head(kThree, "YES") + "~A\n1 2\n3\n", LASFILE_OK, "A:2/16|Curve{1;2;3}"},
        // A header within a wrapped row ends the section and fills the row.
        {Las20Head(kThree + "T. : t {S}\n", "YES") + "~A\n1 2 3 x\n4 5\n~Parameter\nP.M 1 : p\n", LASFILE_OK,
         "A:2/16|Curve{1,4;2,5;3,0;\"x\",\"\"} Parameter:0(1)"},
        {Las20Head(kThree, "YES") + "~A\n1 2 3\n4\n~Parameter\n", LASFILE_IO_FAILED,
         "A:2/16|Curve{1,4;2,0;3,0} Parameter:0(0)"},
        // A definition without lines: rows are read and ignored.
        {Las20Head("") + "~A\n1 2 3\nxyz\n", LASFILE_OK, "A:2/16|Curve{}"},
        // A header association binds, even to the Well section.
        {Las20Head(kThree) + "~Drill_Data | Well\n1 2 3 4\n", LASFILE_OK, "Drill_Data:2|Well{1;2;3}"},
        {Las20Head("") + "~Core_Definition\nA.M : a\n~Core_Data | Other_Name\n1\n", LASFILE_BAD_FORMAT,
         "Core_Definition:1(1)"},
        // No definition, or one behind the data: the section is not stored.
        {"~Version\nVERS. 2.0 : v\n~Well\nSTEP.M 1 : s\n~Parameter\n~A\n1\n~Curve\nD.M : d\n", LASFILE_BAD_FORMAT, ""},
        {Las20Head("") + "~Core_Data\n1\n", LASFILE_BAD_FORMAT, ""},
        {Las20Head("") + "~Core_Data\n1\n~Core_Definition\nA.M : a\n", LASFILE_BAD_FORMAT, ""},
        // A data header at the very end: stored with curves, without values.
        {Las20Head(kThree) + "~A\n", LASFILE_IO_FAILED, "A:2/16|Curve{;;}"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        CLasReader reader;
        EXPECT_EQ(OpenText(reader, c.text), c.result);
        EXPECT_EQ(Dump(reader, 3), c.last);
    }
    CLasReader reader;  // the curves of data bound to Well are defined by its lines
    ASSERT_EQ(OpenText(reader, Las20Head(kThree) + "~Drill_Data | Well\n1 2 3 4\n"), LASFILE_OK);
    EXPECT_EQ(reader.GetSection(3ull).m_curves[2].m_definition.m_mnemonic, "STEP");
}

// Numbers are converted while their token is cut. The same rows read into
// text curves and then through atof give the same bits, and a delimiter that
// numbers contain still cuts them.
TEST(DataSection, NumbersCutWhileConvertedEqualAtofOfTheToken)
{
    const std::string rows =
        "1.5 -0 007 1e3 -2.5E-3 1.5e 0x1A 12abc 1.2.3 .5 -. 99999999999999999999 1e400 +4 inf\n"
        "123456789.123456789 -0.000001 5. 4e-22 9007199254740993 1,5 -999.25 2.2250738585072014e-308\n";
    std::string numeric;
    std::string text;
    for (int c = 0; c < 15; ++c) {
        numeric += "C" + std::to_string(c) + ". : c\n";
        text += "C" + std::to_string(c) + ". : c {S}\n";
    }
    const CLasSection numbers = LastSection(Las20Head(numeric) + "~A\n" + rows);
    const CLasSection texts = LastSection(Las20Head(text) + "~A\n" + rows);
    ASSERT_EQ(numbers.m_curves.size(), 15u);
    for (size_t c = 0; c < 15; ++c) {
        ASSERT_FALSE(texts.m_curves[c].m_isNumeric);
        ASSERT_EQ(numbers.m_curves[c].m_numbers.size(), 2u);
        for (size_t r = 0; r < 2; ++r) {
            const std::string& token = texts.m_curves[c].m_strings[r];
            const double want = ParseNumber(token.c_str());
            const double got = numbers.m_curves[c].m_numbers[r];
            EXPECT_EQ(std::memcmp(&want, &got, sizeof got), 0) << token;
        }
    }
    EXPECT_EQ(LastSection(Las30Head(kThree, ".") + "~Log_Data\n1.5.2\n").m_curves[1].m_numbers, Numbers{5});
    EXPECT_EQ(LastSection(Las30Head(kThree, "E") + "~Log_Data\n1E5E2\n").m_curves[0].m_numbers, Numbers{1});
}

const std::string kFile = Las20Head("D.M : d\n") + "~Parameter\nP.M 1 : p\n~A\n1\n2\n";

// The caught exception as "module:file:code:message", or "" when none was thrown.
template <typename Call>
std::string Thrown(Call call)
{
    try {
        call();
    } catch (const tessel::Exception& e) {
        EXPECT_GT(e.Line(), 0);
        return e.Module() + ":" + e.File() + ":" + std::to_string(e.Code()) + ":" + e.Message();
    }
    return "";
}

// What is not there: a never opened reader, and a file of one section.
// Result codes leave the caller's objects as they were; references and
// pointers throw. The header getters go by place, not by name.
TEST(ReaderAccess, WhatIsNotThereIsRefusedOrThrown)
{
    const std::string internal = "Quarl:las_clasfile_public:2:Internal Error!";
    const std::string range = internal + "  Section index out of range.";
    CLasReader reader;
    std::vector<CLasString> names{"stale"};
    EXPECT_EQ(reader.GetSectionNames(LASSECTION_ANY, names), LASFILE_OK);
    EXPECT_TRUE(names.empty());
    CLasSection section;
    std::vector<CLasSection> all(1);
    EXPECT_EQ(reader.GetVersionHeaders(section), LASFILE_WRONG_STATE);
    EXPECT_EQ(reader.GetSection(0u, section), LASFILE_WRONG_STATE);
    EXPECT_EQ(reader.GetSection("Well", section), LASFILE_WRONG_STATE);
    EXPECT_EQ(reader.GetSections(all, true), LASFILE_WRONG_STATE);
    EXPECT_EQ(all.size(), 1u);
    EXPECT_EQ(Thrown([&] { reader.GetVersionHeaders(); }), internal);
    EXPECT_EQ(Thrown([&] { reader.GetVersionHeadersPtr(); }), internal);
    EXPECT_EQ(Thrown([&] { reader.GetSectionPtr(0); }), range);

    ASSERT_EQ(OpenText(reader, "~V\nVERS. 2.0 : v\n"), LASFILE_OK);
    EXPECT_EQ(reader.GetWellHeaders(section), LASFILE_WRONG_STATE);
    ASSERT_EQ(reader.GetSections(all, false), LASFILE_OK);
    EXPECT_TRUE(all.empty());
    EXPECT_EQ(Thrown([&] { reader.GetWellHeaders(); }), internal);
    EXPECT_EQ(Thrown([&] { reader.GetWellHeadersPtr(); }), internal);
    EXPECT_EQ(Thrown([&] { reader.GetSection(1ull); }), range);
    EXPECT_EQ(Thrown([&] { reader.GetVersionHeaders(); }), "");
    ASSERT_EQ(OpenText(reader, "~V\nVERS. 2.0 : v\n~Parameter\nP.M 1 : p\n~Well\nA.M 1 : a\n"), LASFILE_OK);
    EXPECT_EQ(reader.GetWellHeaders().m_name, "Parameter");
    EXPECT_EQ(reader.GetWellHeadersPtr()->m_name, "Parameter");
}

// Counts, names and iteration follow the file order. A failed lookup leaves
// the caller's section as it was; a copy is deep, and a shared pointer
// outlives the reader's hold on its section.
TEST(ReaderAccess, CountsNamesCopiesAndPointersFollowTheFile)
{
    CLasReader reader;
    ASSERT_EQ(OpenText(reader, kFile), LASFILE_OK);
    EXPECT_EQ(reader.GetSectionCount(), 5u);
    EXPECT_EQ(reader.CountSectionsByType(LASSECTION_HEADER), 2);
    EXPECT_EQ(reader.CountSectionsByType(LASSECTION_ANY), 5);
    std::vector<CLasString> names;
    ASSERT_EQ(reader.GetSectionNames(LASSECTION_DATA, names), LASFILE_OK);
    EXPECT_EQ(names, std::vector<CLasString>{"A"});
    ASSERT_EQ(reader.GetSectionNames(LASSECTION_ANY, names), LASFILE_OK);
    EXPECT_EQ(names, (std::vector<CLasString>{"Version", "Well", "Curve", "Parameter", "A"}));
    EXPECT_EQ(std::distance(reader.begin(), reader.end()), 5);
    EXPECT_EQ((*reader.rbegin())->m_name + (*std::prev(reader.rend()))->m_name, "AVersion");

    CLasSection section;
    ASSERT_EQ(reader.GetVersionHeaders(section), LASFILE_OK);
    EXPECT_EQ(section.m_name, "Version");
    ASSERT_EQ(reader.GetWellHeaders(section), LASFILE_OK);
    EXPECT_EQ(Dump(section), "Well:3(3)");
    EXPECT_EQ(reader.GetSection(5u, section), LASFILE_BAD_VALUE);
    EXPECT_EQ(reader.GetSection("nothing", section), LASFILE_BAD_VALUE);
    EXPECT_EQ(reader.GetSection(nullptr, section), LASFILE_BAD_VALUE);
    EXPECT_EQ(section.m_name, "Well");
    ASSERT_EQ(reader.GetSection("PARAMETER", section), LASFILE_OK);
    EXPECT_EQ(Dump(section), "Parameter:0(1)");
    ASSERT_EQ(reader.GetSection(4u, section), LASFILE_OK);
    section.m_curves[0].m_numbers.push_back(3);
    EXPECT_EQ(Dump(reader.GetSection(4ull)), "A:2/16|Curve{1,2}");
    std::vector<CLasSection> all;
    ASSERT_EQ(reader.GetSections(all, false), LASFILE_OK);  // without Version and Well
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0].m_name, "Curve");
    ASSERT_EQ(reader.GetSections(all, true), LASFILE_OK);
    EXPECT_EQ(all.size(), 5u);

    std::shared_ptr<CLasSection> kept = reader.GetSectionPtr(4);
    kept->m_name = "Changed";
    EXPECT_EQ(reader.GetSection(4ull).m_name, "Changed");
    reader.Close();
    EXPECT_EQ(Dump(*kept), "Changed:2/16|Curve{1,2}");
}

std::string File(const char* step, const std::string& rows, const char* curves = "DEPT.M : d\n")
{
    return std::string("~V\nVERS. 2.0 : v\n~W\nSTEP.M ") + step + " : s\n~Curve\n" + curves + "~A\n" + rows;
}

TEST(Stepping, DepthsAgainstTheStep)
{
    const std::string core = "~Core_Definition\nDEPT.M : d\n~Core_Data\n1\n7\n";
    // A data header as the last line opens as LASFILE_IO_FAILED.
    const struct {
        std::string text;
        ELASFILEERROR opened;
        ELASFILEERROR result;
    } cases[] = {
        {File("0.5", "1.0\n1.5\n2.0\n"), LASFILE_OK, LASFILE_OK},
        {File("0.5", "1.0\n1.5\n2.1\n"), LASFILE_OK, LASFILE_BAD_FORMAT},
        {File("-0.5", "2.0\n1.5\n1.0\n"), LASFILE_OK, LASFILE_OK},
        {File("0.5", "2.0\n1.5\n1.0\n"), LASFILE_OK, LASFILE_BAD_FORMAT},
        {File("0", "3\n3\n3\n"), LASFILE_OK, LASFILE_OK},
        {File("0", "3\n3\n4\n"), LASFILE_OK, LASFILE_BAD_FORMAT},
        {File("abc", "3\n4\n"), LASFILE_OK, LASFILE_BAD_FORMAT},
        {File("1", "5\n"), LASFILE_OK, LASFILE_OK},
        {File("1", ""), LASFILE_IO_FAILED, LASFILE_OK},
        // Within the absolute tolerance of 1e-7.
        {File("1", "0\n1.00000005\n"), LASFILE_OK, LASFILE_OK},
        {File("1", "0\n1.0000002\n"), LASFILE_OK, LASFILE_BAD_FORMAT},
        // The depth column: M__DEPTH before DEPTH, any case, else column 0; a text column fails.
        {File("1", "7 0 5\n9 0 6\n", "GR.API : g\nDEPTH.M : d\nM__DEPTH.M : m\n"), LASFILE_OK, LASFILE_OK},
        {File("1", "7 5\n9 6\n", "GR.API : g\nDepth.M : d\n"), LASFILE_OK, LASFILE_OK},
        {File("1", "5 7\n6 9\n", "DEPT.M : d\nDEPTH.M : e\n"), LASFILE_OK, LASFILE_OK},  // DEPT first, in column 0
        {File("1", "1 9\n2 0\n", "GR.API : g\nX.M : x\n"), LASFILE_OK, LASFILE_OK},
        {File("1", "a\nb\n", "DEPT.M : d {S}\n"), LASFILE_OK, LASFILE_BAD_FORMAT},
        {File("1", "", "DEPT.M : d {S}\n"), LASFILE_IO_FAILED, LASFILE_BAD_FORMAT},
        // Only log data is tested; one without curves is passed over, and so is a file without it.
        {File("1", "1\n2\n") + core, LASFILE_OK, LASFILE_OK},
        {File("1", "1 2\n9 9\n", ""), LASFILE_OK, LASFILE_OK},
        {"~V\nVERS. 2.0 : v\n~W\nSTEP.M 1 : s\n", LASFILE_OK, LASFILE_OK},
        // Too few sections, no STEP; after a failed read what was read is tested.
        {"~V\nVERS. 2.0 : v\n", LASFILE_OK, LASFILE_WRONG_STATE},
        {"~V\nVERS. 2.0 : v\n~W\nSTRT.M 1 : s\n", LASFILE_OK, LASFILE_MISSING_SECTION},
        {File("1", "1\n3\n") + "~P\nbad\n", LASFILE_BAD_FORMAT, LASFILE_BAD_FORMAT},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        CLasReader reader;
        EXPECT_EQ(OpenText(reader, c.text), c.opened);
        EXPECT_EQ(reader.CheckDataStepping(), c.result);
    }
    CLasReader reader;
    EXPECT_EQ(reader.CheckDataStepping(), LASFILE_WRONG_STATE);
    ASSERT_EQ(OpenText(reader, File("1", "1\n2\n")), LASFILE_OK);
    reader.GetSectionPtr(3)->m_association = "Gone";
    EXPECT_EQ(reader.CheckDataStepping(), LASFILE_BAD_VALUE);
    reader.GetSectionPtr(3)->m_association.clear();  // as a lenient read of "~A DEPT GR" leaves it
    EXPECT_EQ(reader.CheckDataStepping(), LASFILE_BAD_VALUE);
    reader.Close();
    EXPECT_EQ(reader.CheckDataStepping(), LASFILE_WRONG_STATE);
}

}  // namespace
}  // namespace quarl::test
