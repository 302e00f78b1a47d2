// What a host takes out of the reader: counts, names, copies with result
// codes, and references and shared pointers that throw.
#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

#include "support/reader_access.h"

namespace quarl::test {
namespace {

const std::string kFile = Las20Head("D.M : d\n") + "~Parameter\nP.M 1 : p\n~A\n1\n2\n";

// The caught exception as "module:file:code:message", or "" when nothing
// was thrown.
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

TEST(ReaderAccess, CountsNamesCopiesAndIteration)
{
    CLasReader reader;
    std::vector<CLasString> names{"stale"};
    EXPECT_EQ(reader.GetSectionNames(LASSECTION_ANY, names), LASFILE_OK);
    EXPECT_TRUE(names.empty());
    CLasSection section;
    std::vector<CLasSection> all(1);
    EXPECT_EQ(reader.GetVersionHeaders(section), LASFILE_WRONG_STATE);  // not open
    EXPECT_EQ(reader.GetSection(0u, section), LASFILE_WRONG_STATE);
    EXPECT_EQ(reader.GetSection("Well", section), LASFILE_WRONG_STATE);
    EXPECT_EQ(reader.GetSections(all, true), LASFILE_WRONG_STATE);
    EXPECT_EQ(all.size(), 1u);

    ASSERT_EQ(OpenText(reader, kFile), LASFILE_OK);
    EXPECT_EQ(reader.GetSectionCount(), 5u);
    EXPECT_EQ(reader.CountSectionsByType(LASSECTION_HEADER), 2);
    EXPECT_EQ(reader.CountSectionsByType(LASSECTION_ANY), 5);
    ASSERT_EQ(reader.GetSectionNames(LASSECTION_DATA, names), LASFILE_OK);
    EXPECT_EQ(names, std::vector<CLasString>{"A"});
    ASSERT_EQ(reader.GetSectionNames(LASSECTION_ANY, names), LASFILE_OK);
    EXPECT_EQ(names, (std::vector<CLasString>{"Version", "Well", "Curve", "Parameter", "A"}));
    EXPECT_EQ(std::distance(reader.begin(), reader.end()), 5);
    EXPECT_EQ((*reader.rbegin())->m_name + (*std::prev(reader.rend()))->m_name, "AVersion");

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
    section.m_curves[0].m_numbers.push_back(3);  // the copy is deep
    EXPECT_EQ(Dump(reader.GetSection(4ull)), "A:2/16|Curve{1,2}");
    ASSERT_EQ(reader.GetSections(all, false), LASFILE_OK);  // without Version and Well
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0].m_name, "Curve");
    ASSERT_EQ(reader.GetSections(all, true), LASFILE_OK);
    EXPECT_EQ(all.size(), 5u);

    ASSERT_EQ(OpenText(reader, "~V\nVERS. 2.0 : v\n"), LASFILE_OK);
    EXPECT_EQ(reader.GetWellHeaders(section), LASFILE_WRONG_STATE);
    ASSERT_EQ(reader.GetSections(all, false), LASFILE_OK);
    EXPECT_TRUE(all.empty());
    // The header getters go by place, not by name.
    ASSERT_EQ(OpenText(reader, "~V\nVERS. 2.0 : v\n~Parameter\nP.M 1 : p\n~Well\nA.M 1 : a\n"), LASFILE_OK);
    EXPECT_EQ(reader.GetWellHeaders().m_name, "Parameter");
    EXPECT_EQ(reader.GetWellHeadersPtr()->m_name, "Parameter");
}

TEST(ReaderAccess, ReferencesAndPointersThrowWhenThereIsNothing)
{
    const std::string internal = "Quarl:las_clasfile_public:2:Internal Error!";
    const std::string range = internal + "  Section index out of range.";
    CLasReader reader;
    EXPECT_EQ(Thrown([&] { reader.GetVersionHeaders(); }), internal);
    EXPECT_EQ(Thrown([&] { reader.GetVersionHeadersPtr(); }), internal);
    EXPECT_EQ(Thrown([&] { reader.GetSectionPtr(0); }), range);
    ASSERT_EQ(OpenText(reader, "~V\nVERS. 2.0 : v\n"), LASFILE_OK);
    EXPECT_EQ(Thrown([&] { reader.GetWellHeaders(); }), internal);
    EXPECT_EQ(Thrown([&] { reader.GetWellHeadersPtr(); }), internal);
    EXPECT_EQ(Thrown([&] { reader.GetSection(1ull); }), range);
    EXPECT_EQ(Thrown([&] { reader.GetVersionHeaders(); }), "");
}

TEST(ReaderAccess, SharedPointersOutliveTheReader)
{
    std::shared_ptr<CLasSection> kept;
    {
        CLasReader reader;
        ASSERT_EQ(OpenText(reader, kFile), LASFILE_OK);
        kept = reader.GetSectionPtr(4);
        kept->m_name = "Changed";
        EXPECT_EQ(reader.GetSection(4ull).m_name, "Changed");
        reader.Close();
        EXPECT_TRUE(reader.empty());
    }
    EXPECT_EQ(Dump(*kept), "Changed:2/16|Curve{1,2}");
}

}  // namespace
}  // namespace quarl::test
