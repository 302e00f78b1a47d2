// A host built against an installed quarl: reads a file's lines.
#include <quarl/quarl.h>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc < 2) return 2;
    quarl::CTextFile file;
    if (file.Open(tessel::TxString(argv[1])) != quarl::LASFILE_OK) return 1;
    unsigned lines = 1;
    while (file.ReadLine() == quarl::LASFILE_OK) ++lines;
    std::printf("consumer ok: %u lines\n", lines);
    return 0;
}
