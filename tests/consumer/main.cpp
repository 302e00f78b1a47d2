// A host built against an installed quarl: reads a file's lines, and checks
// that the library it loaded is the version of the headers it was built with.
#include <quarl/quarl.h>

#include <cstdio>
#include <cstring>

int main(int argc, char** argv)
{
    if (argc < 2) return 2;
    if (std::strcmp(quarl::VersionString(), QUARL_VERSION_STRING) != 0) {
        std::printf("headers of quarl %s, library %s\n", QUARL_VERSION_STRING, quarl::VersionString());
        return 3;
    }
    quarl::CTextFile file;
    if (file.Open(tessel::TxString(argv[1])) != quarl::LASFILE_OK) return 1;
    unsigned lines = 1;
    while (file.ReadLine() == quarl::LASFILE_OK) ++lines;
    std::printf("consumer ok: %u lines, quarl %s\n", lines, quarl::VersionString());
    return 0;
}
