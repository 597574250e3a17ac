// Replays saved inputs through a fuzz target without the fuzzing engine, so
// that the regression inputs run in every build: each argument is a file or
// a directory of files (read in name order). Exit 0 when every input ran.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> InputsOf(const fs::path& arg) {
    std::vector<fs::path> inputs;
    if (fs::is_directory(arg)) {
        for (const auto& entry : fs::recursive_directory_iterator(arg))
            if (entry.is_regular_file()) inputs.push_back(entry.path());
        std::sort(inputs.begin(), inputs.end());
    } else {
        inputs.push_back(arg);
    }
    return inputs;
}

}  // namespace

int main(int argc, char** argv) {
    size_t count = 0;
    for (int i = 1; i < argc; ++i)
        for (const fs::path& input : InputsOf(argv[i])) {
            std::ifstream in(input, std::ios::binary);
            if (!in) {
                std::fprintf(stderr, "cannot read %s\n", input.c_str());
                return 2;
            }
            std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
            std::printf("replay %s\n", input.c_str());
            std::fflush(stdout);
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++count;
        }
    std::printf("%zu inputs replayed\n", count);
    return 0;
}
