#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "cli/manual/Manual.h"

namespace {

void write(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) throw std::runtime_error(path.string() + ": cannot be written");
}

void writeAll(const std::filesystem::path& folder) {
    using namespace zeb::cli;
    const manual::ProgramDescription program = manual::describeProgram();
    write(folder / "zeb.1", manual::manPage(program));
    write(folder / "zeb.bash", manual::bashCompletion(program));
    write(folder / "_zeb", manual::zshCompletion(program));
    write(folder / "zeb.fish", manual::fishCompletion(program));
}

}  // namespace

// zeb_manual FOLDER: writes the manual page and the completions into FOLDER.
int main(int argc, char** argv) {
    try {
        if (argc != 2) throw std::runtime_error("zeb_manual: one folder is needed");
        writeAll(argv[1]);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
