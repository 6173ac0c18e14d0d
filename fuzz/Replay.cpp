// Replaces the fuzzing engine: runs the target over every file of the folders on the command line.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/FuzzInput.h"

int main(int argc, char** argv) {
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            if (entry.is_regular_file()) files.push_back(entry.path());
        }
    }
    std::ranges::sort(files);
    for (const std::filesystem::path& path : files) {
        std::fprintf(stderr, "%s\n", path.c_str());  // the last path printed is the failing input
        std::ifstream file(path, std::ios::binary);
        const zeb::fuzz::Bytes bytes{std::istreambuf_iterator<char>(file), {}};
        if (!file) {
            std::fprintf(stderr, "cannot be read\n");
            return 1;
        }
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::fprintf(stderr, "%zu inputs\n", files.size());
    return files.empty() ? 1 : 0;  // an empty corpus is an error
}
