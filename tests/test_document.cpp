// The document classes: CLasString, CLasCurve::size, the section defaults
// and CLasSection::FindParameterByMnemonic.
#include <string>

#include <gtest/gtest.h>
#include <quarl/document.h>

namespace quarl {
namespace {

CLasParam Param(const char* mnemonic, const char* value)
{
    CLasParam p;
    p.m_mnemonic = mnemonic;
    p.m_value = value;
    return p;
}

TEST(Document, StringsCurvesAndNewSections)
{
    const std::string bytes("a\0\xE9\xFF\r\n z", 8);
    CLasString s(bytes), copy(s), assigned;
    assigned = s;
    copy[0] = 'X';
    EXPECT_EQ(s, bytes);  // every byte kept, copies independent
    EXPECT_EQ(assigned, bytes);
    static_assert(sizeof(CLasString) == sizeof(std::string), "nothing added to the byte string");

    CLasCurve curve;  // size counts the array in use
    curve.m_numbers = {1, 2, 3, 4, 5};
    curve.m_strings = {CLasString("a"), CLasString("b"), CLasString("c")};
    curve.m_isNumeric = true;
    EXPECT_EQ(curve.size(), 5);
    curve.m_isNumeric = false;
    EXPECT_EQ(curve.size(), 3);

    const CLasSection section;
    EXPECT_EQ(section.m_type, LASSECTION_ANY);
    EXPECT_EQ(section.m_flags, 0u);
}

TEST(Document, FindParameterByMnemonic)
{
    CLasSection well;
    well.m_params = {Param("", "empty"), Param("STRT", "1"), Param("DEPT", "first"),
                     Param("dept", "second"), Param("W\xC9LL", "latin")};
    const struct {
        const char* mnemonic;
        int32_t index;
    } cases[] = {{nullptr, -1}, {"", -1}, {"dept", 2}, {"DePt", 2}, {"strt", 1}, {"w\xC9ll", 4},
                 {"DEP", -1},   {"DEPTH", -1}, {" DEPT", -1}, {"DEPT ", -1}, {"W\xE9LL", -1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mnemonic ? c.mnemonic : "null");
        CLasParam out = Param("KEEP", "me");
        EXPECT_EQ(well.FindParameterByMnemonic(c.mnemonic, &out), c.index);
        EXPECT_EQ(out.m_value, c.index < 0 ? "me" : well.m_params[c.index].m_value);
        EXPECT_EQ(well.FindParameterByMnemonic(c.mnemonic, nullptr), c.index);
    }
}

}  // namespace
}  // namespace quarl
