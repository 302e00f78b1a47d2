// The document classes: CLasString, CLasParam, CLasCurve, CLasSection.
#include <string>

#include <gtest/gtest.h>
#include <quarl/document.h>

namespace quarl {
namespace {

CLasParam Param(const char* mnemonic, const char* value = "", const char* unit = "")
{
    CLasParam p;
    p.m_mnemonic = mnemonic;
    p.m_unit = unit;
    p.m_value = value;
    p.m_description = std::string("about ") + mnemonic;
    p.m_format = "{F}";
    p.m_association = "assoc";
    return p;
}

void ExpectSameParam(const CLasParam& a, const CLasParam& b)
{
    EXPECT_EQ(a.m_mnemonic, b.m_mnemonic);
    EXPECT_EQ(a.m_unit, b.m_unit);
    EXPECT_EQ(a.m_value, b.m_value);
    EXPECT_EQ(a.m_description, b.m_description);
    EXPECT_EQ(a.m_format, b.m_format);
    EXPECT_EQ(a.m_association, b.m_association);
}

TEST(Document, LasStringKeepsEveryByte)
{
    const std::string bytes("a\0\xE9\xFF\r\n z", 8);
    const CLasString s(bytes);
    EXPECT_EQ(s.size(), 8u);
    EXPECT_EQ(static_cast<const std::string&>(s), bytes);

    CLasString copy(s);
    CLasString assigned;
    assigned = s;
    CLasString fromBytes;
    fromBytes = bytes;
    EXPECT_EQ(copy, bytes);
    EXPECT_EQ(assigned, bytes);
    EXPECT_EQ(fromBytes, bytes);
    copy[0] = 'X';
    assigned += "more";
    EXPECT_EQ(s, bytes);  // copies are independent
    EXPECT_TRUE(CLasString().empty());
    static_assert(sizeof(CLasString) == sizeof(std::string), "nothing added to the byte string");
}

TEST(Document, CurveSizeCountsTheArrayInUse)
{
    CLasCurve curve;
    curve.m_numbers = {1, 2, 3, 4, 5};
    curve.m_strings = {CLasString("a"), CLasString("b"), CLasString("c")};
    curve.m_isNumeric = true;
    EXPECT_EQ(curve.size(), 5);
    curve.m_isNumeric = false;
    EXPECT_EQ(curve.size(), 3);
    curve.m_strings.clear();
    EXPECT_EQ(curve.size(), 0);
}

TEST(Document, NewSectionAndParam)
{
    const CLasSection section;
    EXPECT_EQ(section.m_type, LASSECTION_ANY);
    EXPECT_EQ(section.m_type, 99);
    EXPECT_EQ(section.m_flags, 0u);
    EXPECT_TRUE(section.m_name.empty());
    EXPECT_TRUE(section.m_association.empty());
    EXPECT_TRUE(section.m_params.empty());
    EXPECT_TRUE(section.m_curves.empty());

    const CLasParam param;
    for (const CLasString* field : {&param.m_mnemonic, &param.m_unit, &param.m_value,
                                    &param.m_description, &param.m_format, &param.m_association})
        EXPECT_TRUE(field->empty());

    const CLasCurve curve;
    EXPECT_TRUE(curve.m_numbers.empty());
    EXPECT_TRUE(curve.m_strings.empty());
    EXPECT_TRUE(curve.m_definition.m_mnemonic.empty());
}

CLasSection DataSection()
{
    CLasSection s;
    s.m_name = "Log_Data";
    s.m_type = LASSECTION_DATA;
    s.m_flags = CLasSection::kFlagLogData;
    s.m_association = "Log_Definition";
    CLasCurve depth;
    depth.m_isNumeric = true;
    depth.m_numbers = {100.0, 100.5, 101.0};
    depth.m_definition = Param("DEPT", "", "M");
    CLasCurve text;
    text.m_isNumeric = false;
    text.m_strings = {CLasString("x"), CLasString("y"), CLasString("z")};
    text.m_definition = Param("NOTE");
    s.m_curves = {depth, text};
    return s;
}

TEST(Document, SectionCopiesAreDeep)
{
    const CLasSection source = DataSection();
    CLasSection copy(source);
    CLasSection assigned;
    assigned = source;
    for (CLasSection* changed : {&copy, &assigned}) {
        changed->m_curves[0].m_numbers[1] = -1.0;
        changed->m_curves[0].m_definition.m_unit = "FT";
        changed->m_curves[1].m_strings[2] = "changed";
        changed->m_curves.pop_back();
        changed->m_name += "X";
        changed->m_params.push_back(Param("NEW"));
    }
    ASSERT_EQ(source.m_curves.size(), 2u);
    EXPECT_EQ(source.m_curves[0].m_numbers[1], 100.5);
    EXPECT_EQ(source.m_curves[0].m_definition.m_unit, "M");
    EXPECT_EQ(source.m_curves[1].m_strings[2], "z");
    EXPECT_EQ(source.m_name, "Log_Data");
    EXPECT_TRUE(source.m_params.empty());

    // Assignment replaces every field of the target, flags included.
    CLasSection target;
    target.m_type = LASSECTION_HEADER;
    target.m_flags = CLasSection::kFlagLogDefinition;
    target.m_association = "old";
    target.m_params.push_back(Param("VERS"));
    target = source;
    EXPECT_EQ(target.m_type, LASSECTION_DATA);
    EXPECT_EQ(target.m_flags, CLasSection::kFlagLogData);
    EXPECT_EQ(target.m_association, "Log_Definition");
    EXPECT_TRUE(target.m_params.empty());
    EXPECT_EQ(target.m_curves.size(), 2u);
}

TEST(Document, FindParameterByMnemonic)
{
    CLasSection well;
    well.m_type = LASSECTION_HEADER;
    well.m_params = {Param("", "empty"), Param("STRT", "1"), Param("DEPT", "first"),
                     Param("dept", "second"), Param("W\xC9LL", "latin")};
    const CLasParam untouched = Param("KEEP", "me");

    CLasParam out = untouched;
    EXPECT_EQ(well.FindParameterByMnemonic(nullptr, &out), -1);
    EXPECT_EQ(well.FindParameterByMnemonic("", &out), -1);  // not the empty mnemonic
    ExpectSameParam(out, untouched);

    EXPECT_EQ(well.FindParameterByMnemonic("dept", &out), 2);  // the first of two
    ExpectSameParam(out, well.m_params[2]);
    EXPECT_EQ(well.FindParameterByMnemonic("DePt", nullptr), 2);
    EXPECT_EQ(well.FindParameterByMnemonic("strt", nullptr), 1);
    EXPECT_EQ(well.FindParameterByMnemonic("W\xC9LL", nullptr), 4);
    EXPECT_EQ(well.FindParameterByMnemonic("w\xC9ll", nullptr), 4);

    out = untouched;
    for (const char* miss : {"DEP", "DEPTH", " DEPT", "DEPT ", "W\xE9LL", "STRT\t"})
        EXPECT_EQ(well.FindParameterByMnemonic(miss, &out), -1) << miss;
    ExpectSameParam(out, untouched);

    // Curve definitions are not searched.
    const CLasSection data = DataSection();
    EXPECT_EQ(data.FindParameterByMnemonic("DEPT", &out), -1);
    ExpectSameParam(out, untouched);
}

}  // namespace
}  // namespace quarl
