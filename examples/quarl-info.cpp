// quarl-info FILE...: prints what a LAS file holds.
#include <quarl/quarl.h>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: quarl-info FILE...\n");
        return 2;
    }
    int status = 0;
    for (int i = 1; i < argc; ++i) {
        quarl::CTextFile file;
        if (file.Open(tessel::TxString(argv[i])) != quarl::LASFILE_OK) {
            std::fprintf(stderr, "%s: cannot be read\n", argv[i]);
            status = 1;
            continue;
        }
        unsigned lines = 1;
        while (file.ReadLine() == quarl::LASFILE_OK) ++lines;
        std::printf("%s: %u lines\n", argv[i], lines);
    }
    return status;
}
