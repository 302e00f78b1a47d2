// The names and one-line descriptions of the result codes, and the names
// of the section types.
#include <quarl/types.h>

namespace quarl {

namespace {

struct ResultText {
    const char* name;
    const char* description;
};

// Indexed by the code: the codes run from 0 without a gap.
constexpr ResultText kResults[] = {
    {"LASFILE_OK", "success"},
    {"LASFILE_IO_FAILED", "the file could not be opened, read or written, or ended too early"},
    {"LASFILE_OUT_OF_MEMORY", "out of memory"},
    {"LASFILE_BAD_FORMAT", "text or data without the form LAS requires"},
    {"LASFILE_NOT_ALLOWED_IN_VERSION", "not allowed in this LAS version"},
    {"LASFILE_MISSING_SECTION", "a required section is missing or does not fit its data"},
    {"LASFILE_WRONG_STATE", "operation not possible in this state"},
    {"LASFILE_BAD_VALUE", "a value or column is not allowed"},
    {"LASFILE_CANCELLED", "cancelled"},
    {"LASFILE_DUPLICATE_SECTION", "the section is already present"},
    {"LASFILE_BAD_NAME", "a name breaks the rules of the LAS version"},
};
constexpr ResultText kUnknown = {"LASFILE_UNKNOWN", "unknown result"};

const ResultText& Lookup(ELASFILEERROR code)
{
    const auto index = static_cast<int64_t>(code);
    const auto count = static_cast<int64_t>(sizeof(kResults) / sizeof(kResults[0]));
    return index >= 0 && index < count ? kResults[index] : kUnknown;
}

}  // namespace

const char* ResultName(ELASFILEERROR code)
{
    return Lookup(code).name;
}

const char* ResultDescription(ELASFILEERROR code)
{
    return Lookup(code).description;
}

const char* SectionTypeName(ELASSECTIONTYPE type)
{
    switch (type) {
        case LASSECTION_PARAMETER:
            return "parameter";
        case LASSECTION_DEFINITION:
            return "definition";
        case LASSECTION_DATA:
            return "data";
        case LASSECTION_HEADER:
            return "header";
        case LASSECTION_ANY:
            return "untyped";
    }
    return "unknown";
}

}  // namespace quarl
