// Result codes, section types, the status callback type, and the tessel
// classes TxString and Exception.
#include <cstdint>
#include <exception>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>
#include <quarl/quarl.h>

namespace quarl {
namespace {

TEST(FoundationTypes, ResultCodesAndSectionTypes)
{
    static_assert(sizeof(ELASFILEERROR) == 4 && sizeof(ELASSECTIONTYPE) == 4, "32 bits wide");
    static_assert(std::is_same<std::underlying_type_t<ELASFILEERROR>, int32_t>::value, "");
    static_assert(std::is_same<std::underlying_type_t<ELASSECTIONTYPE>, int32_t>::value, "");
    const ELASFILEERROR codes[] = {
        LASFILE_OK,           LASFILE_IO_FAILED,         LASFILE_OUT_OF_MEMORY,
        LASFILE_BAD_FORMAT,   LASFILE_NOT_ALLOWED_IN_VERSION, LASFILE_MISSING_SECTION,
        LASFILE_WRONG_STATE,  LASFILE_BAD_VALUE,         LASFILE_CANCELLED,
        LASFILE_DUPLICATE_SECTION, LASFILE_BAD_NAME};
    for (int32_t i = 0; i < 11; ++i) EXPECT_EQ(codes[i], i);
    EXPECT_EQ(LASSECTION_PARAMETER, 0);
    EXPECT_EQ(LASSECTION_DEFINITION, 1);
    EXPECT_EQ(LASSECTION_DATA, 2);
    EXPECT_EQ(LASSECTION_HEADER, 3);
    EXPECT_EQ(LASSECTION_ANY, 99);
    static_assert(
        std::is_same<LasStatusCallback, int32_t (*)(void*, double, const char*)>::value,
        "the status callback takes context, percent and message");
}

TEST(FoundationTypes, ExceptionIsCaughtOnlyAsItself)
{
    static_assert(!std::is_base_of<std::exception, tessel::Exception>::value, "no named base");
    static_assert(!std::is_polymorphic<tessel::Exception>::value, "nothing to derive from");
    bool seenAsStd = false;
    bool seenAsItself = false;
    try {
        try {
            throw tessel::Exception("Quarl", "las_clasfile_public", 123, 2,
                                    "Internal Error!  Section index out of range.");
        } catch (const std::exception&) {
            seenAsStd = true;
        }
    } catch (const tessel::Exception& e) {
        seenAsItself = true;
        const tessel::Exception copy(e);  // the copy holds the same
        EXPECT_EQ(copy.Module(), "Quarl");
        EXPECT_EQ(copy.File(), "las_clasfile_public");
        EXPECT_EQ(copy.Line(), 123);
        EXPECT_EQ(copy.Code(), 2);
        EXPECT_EQ(copy.Message(), "Internal Error!  Section index out of range.");
    }
    EXPECT_FALSE(seenAsStd);
    EXPECT_TRUE(seenAsItself);
}

TEST(FoundationTypes, TxStringIsAByteString)
{
    const tessel::TxString literal("Reading ");
    const tessel::TxString none(static_cast<const char*>(nullptr));
    EXPECT_STREQ(literal.c_str(), "Reading ");
    EXPECT_STREQ(none.c_str(), "");
    EXPECT_STREQ(tessel::TxString().c_str(), "");

    tessel::TxString path(std::string("/tmp/\xE9t\xE9\0x", 9));
    EXPECT_EQ(path.size(), 9u);  // bytes pass unchanged
    tessel::TxString message = literal;
    message += path.c_str();  // the append of the byte string
    EXPECT_EQ(message, "Reading /tmp/\xE9t\xE9");
    EXPECT_EQ(literal, "Reading ");

    tessel::TxString stored;
    stored = path;
    EXPECT_EQ(stored, path);
    stored = "";
    EXPECT_TRUE(stored.empty());
    EXPECT_EQ(path.size(), 9u);
    stored = static_cast<const char*>(nullptr);
    EXPECT_TRUE(stored.empty());
}

}  // namespace
}  // namespace quarl
