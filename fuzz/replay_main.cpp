// Runs a fuzz target without libFuzzer over the files named on the command
// line, or over every file in a folder named there, so that any compiler
// builds the targets and the test suite replays their regression inputs. A
// check that fails aborts, as under the fuzzer.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

// The path itself, or the files of a folder in name order.
std::vector<std::string> InputsOf(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::is_directory(path, error)) return {path};
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(path, error))
        if (entry.is_regular_file()) files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    return files;
}

bool Replay(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    return true;
}

}  // namespace

int main(int argc, char** argv)
{
    size_t replayed = 0;
    for (int i = 1; i < argc; ++i) {
        for (const std::string& path : InputsOf(argv[i])) {
            if (!Replay(path)) {
                std::fprintf(stderr, "replay: cannot read %s\n", path.c_str());
                return 1;
            }
            ++replayed;
        }
    }
    std::printf("%zu inputs replayed\n", replayed);
    // Nothing to replay means a wrong path, not a pass.
    return replayed > 0 ? 0 : 1;
}
