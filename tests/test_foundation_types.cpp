// Result codes, section types, and the tessel classes TxString and Exception.
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
    static_assert(std::is_same<std::underlying_type_t<ELASFILEERROR>, int32_t>::value, "");
    static_assert(std::is_same<std::underlying_type_t<ELASSECTIONTYPE>, int32_t>::value, "");
    EXPECT_EQ(LASFILE_BAD_FORMAT, 3);
    EXPECT_EQ(LASFILE_CANCELLED, 8);
    EXPECT_EQ(LASFILE_BAD_NAME, 10);
    EXPECT_EQ(LASSECTION_HEADER, 3);
    EXPECT_EQ(LASSECTION_ANY, 99);
}

TEST(FoundationTypes, ExceptionIsCaughtOnlyAsItself)
{
    static_assert(!std::is_base_of<std::exception, tessel::Exception>::value, "no named base");
    try {
        try {
            throw tessel::Exception("Quarl", "las_clasfile_public", 123, 2, "Out of range.");
        } catch (const std::exception&) {
            ADD_FAILURE() << "caught as std::exception";
        }
    } catch (const tessel::Exception& e) {
        const tessel::Exception copy(e);
        EXPECT_EQ(copy.Module() + copy.File() + copy.Message(), "Quarllas_clasfile_publicOut of range.");
        EXPECT_EQ(copy.Line() * 10 + copy.Code(), 1232);
    }
}

TEST(FoundationTypes, TxStringIsAByteString)
{
    EXPECT_STREQ(tessel::TxString(static_cast<const char*>(nullptr)).c_str(), "");
    tessel::TxString path(std::string("/tmp/\xE9t\xE9\0x", 9));
    EXPECT_EQ(path.size(), 9u);  // bytes pass unchanged
    tessel::TxString message("Reading ");
    message += path.c_str();
    EXPECT_EQ(message, "Reading /tmp/\xE9t\xE9");
    message = static_cast<const char*>(nullptr);
    EXPECT_TRUE(message.empty());
}

}  // namespace
}  // namespace quarl
