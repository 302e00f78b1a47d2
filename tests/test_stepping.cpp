// CheckDataStepping: do the depths of the log data advance by the Well
// section's STEP?
#include <gtest/gtest.h>

#include <string>

#include "support/reader_access.h"

namespace quarl::test {
namespace {

std::string File(const char* step, const std::string& rows, const char* curves = "DEPT.M : d\n")
{
    return std::string("~V\nVERS. 2.0 : v\n~W\nSTEP.M ") + step + " : s\n~Curve\n" + curves + "~A\n" + rows;
}

TEST(Stepping, DepthsAgainstTheStep)
{
    const std::string core = "~Core_Definition\nDEPT.M : d\n~Core_Data\n1\n7\n";
    const struct {
        std::string text;
        ELASFILEERROR opened;  // a data header as the last line reads as LASFILE_IO_FAILED
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
        // The depth column: M__DEPTH before DEPTH, any case, else column 0;
        // a text column fails.
        {File("1", "7 0 5\n9 0 6\n", "GR.API : g\nDEPTH.M : d\nM__DEPTH.M : m\n"), LASFILE_OK, LASFILE_OK},
        {File("1", "7 5\n9 6\n", "GR.API : g\nDepth.M : d\n"), LASFILE_OK, LASFILE_OK},
        {File("1", "1 9\n2 0\n", "GR.API : g\nX.M : x\n"), LASFILE_OK, LASFILE_OK},
        {File("1", "a\nb\n", "DEPT.M : d {S}\n"), LASFILE_OK, LASFILE_BAD_FORMAT},
        {File("1", "", "DEPT.M : d {S}\n"), LASFILE_IO_FAILED, LASFILE_BAD_FORMAT},
        // Only log data is tested; a log data section without curves is
        // passed over, and so is a file without log data.
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
    reader.Close();
    EXPECT_EQ(reader.CheckDataStepping(), LASFILE_WRONG_STATE);
}

}  // namespace
}  // namespace quarl::test
