// CheckDataStepping: do the depths of the log data advance by the Well
// section's STEP?
#include <gtest/gtest.h>

#include <string>

#include "support/reader_access.h"

namespace quarl::test {
namespace {

std::string File(const char* step, const std::string& rows, const char* curves = "DEPT.M : d\n")
{
    return std::string("~V\nVERS. 2.0 : v\n~W\nSTEP.M ") + step + " : s\n~Curve\n" + curves +
           "~A\n" + rows;
}

// A data header that is the last line reads as LASFILE_IO_FAILED.
ELASFILEERROR Check(const std::string& text, ELASFILEERROR opened = LASFILE_OK)
{
    CLasReader reader;
    EXPECT_EQ(OpenText(reader, text), opened) << text;
    return reader.CheckDataStepping();
}

TEST(Stepping, DepthsAgainstTheStep)
{
    EXPECT_EQ(Check(File("0.5", "1.0\n1.5\n2.0\n")), LASFILE_OK);
    EXPECT_EQ(Check(File("0.5", "1.0\n1.5\n2.1\n")), LASFILE_BAD_FORMAT);
    EXPECT_EQ(Check(File("-0.5", "2.0\n1.5\n1.0\n")), LASFILE_OK);
    EXPECT_EQ(Check(File("0.5", "2.0\n1.5\n1.0\n")), LASFILE_BAD_FORMAT);
    EXPECT_EQ(Check(File("0", "3\n3\n3\n")), LASFILE_OK);
    EXPECT_EQ(Check(File("0", "3\n3\n4\n")), LASFILE_BAD_FORMAT);
    EXPECT_EQ(Check(File("abc", "3\n4\n")), LASFILE_BAD_FORMAT);
    EXPECT_EQ(Check(File("1", "5\n")), LASFILE_OK);
    EXPECT_EQ(Check(File("1", ""), LASFILE_IO_FAILED), LASFILE_OK);
    // Within the absolute tolerance of 1e-7.
    EXPECT_EQ(Check(File("1", "0\n1.00000005\n")), LASFILE_OK);
    EXPECT_EQ(Check(File("1", "0\n1.0000002\n")), LASFILE_BAD_FORMAT);
}

TEST(Stepping, ChoosesTheDepthColumn)
{
    const char* curves = "GR.API : g\nDEPTH.M : d\nM__DEPTH.M : m\n";
    EXPECT_EQ(Check(File("1", "7 0 5\n9 0 6\n", curves)), LASFILE_OK);  // M__DEPTH before DEPTH
    EXPECT_EQ(Check(File("1", "7 5\n9 6\n", "GR.API : g\nDepth.M : d\n")), LASFILE_OK);
    EXPECT_EQ(Check(File("1", "1 9\n2 0\n", "GR.API : g\nX.M : x\n")), LASFILE_OK);  // column 0
    EXPECT_EQ(Check(File("1", "a\nb\n", "DEPT.M : d {S}\n")), LASFILE_BAD_FORMAT);
    EXPECT_EQ(Check(File("1", "", "DEPT.M : d {S}\n"), LASFILE_IO_FAILED), LASFILE_BAD_FORMAT);
}

TEST(Stepping, OnlyLogDataSectionsAreTested)
{
    const std::string core = "~Core_Definition\nDEPT.M : d\n~Core_Data\n1\n7\n";
    EXPECT_EQ(Check(File("1", "1\n2\n") + core), LASFILE_OK);
    // A log data section without curves is passed over.
    EXPECT_EQ(Check(File("1", "1 2\n9 9\n", "")), LASFILE_OK);
    // No log data section at all.
    EXPECT_EQ(Check("~V\nVERS. 2.0 : v\n~W\nSTEP.M 1 : s\n"), LASFILE_OK);
}

TEST(Stepping, StateAndMissingPieces)
{
    CLasReader reader;
    EXPECT_EQ(reader.CheckDataStepping(), LASFILE_WRONG_STATE);
    ASSERT_EQ(OpenText(reader, "~V\nVERS. 2.0 : v\n"), LASFILE_OK);
    EXPECT_EQ(reader.CheckDataStepping(), LASFILE_WRONG_STATE);
    ASSERT_EQ(OpenText(reader, "~V\nVERS. 2.0 : v\n~W\nSTRT.M 1 : s\n"), LASFILE_OK);
    EXPECT_EQ(reader.CheckDataStepping(), LASFILE_MISSING_SECTION);
    ASSERT_EQ(OpenText(reader, File("1", "1\n2\n")), LASFILE_OK);
    reader.GetSectionPtr(3)->m_association = "Gone";
    EXPECT_EQ(reader.CheckDataStepping(), LASFILE_BAD_VALUE);
    // After a failed read the reader is open and what was read is tested.
    ASSERT_EQ(OpenText(reader, File("1", "1\n3\n") + "~P\nbad\n"), LASFILE_BAD_FORMAT);
    EXPECT_EQ(reader.CheckDataStepping(), LASFILE_BAD_FORMAT);
    reader.Close();
    EXPECT_EQ(reader.CheckDataStepping(), LASFILE_WRONG_STATE);
}

}  // namespace
}  // namespace quarl::test
