// make_reachable_map FILE
//
// Runs during the build and writes the source of `reachableCorrections`.

#include <cmath>
#include <fstream>
#include <iostream>

#include "codec/natural/ReachableMap.h"
#include "codec/natural/ReachableSearch.h"

int main(int argc, char** argv) {
    using namespace zeb::natural;
    if (argc != 2) return 2;
    std::ofstream file(argv[1]);
    file << "#include \"codec/natural/ReachableMap.h\"\n\n"
            "namespace zeb::natural {\n\n"
            "const std::array<std::array<std::int32_t, 3>, gridNodes * gridNodes * gridNodes> "
            "reachableCorrections = {{\n";
    const ReachableSearch search;
    std::array<double, gridNodes> light{};
    for (std::size_t i = 0; i < gridNodes; ++i)
        light[i] = linearLight(static_cast<double>(i) / (gridNodes - 1));
    for (const double red : light) {
        for (const double green : light) {
            for (const double blue : light) {
                const Colour colour{red, green, blue};
                const Colour nearest = colourOf(search.nearest(colour));
                file << "{";
                for (std::size_t i = 0; i < 3; ++i)
                    file << static_cast<std::int32_t>(
                                std::floor((nearest[i] - colour[i]) / correctionUnit + 0.5))
                         << ",";
                file << "},\n";
            }
        }
    }
    file << "}};\n\n}  // namespace zeb::natural\n";
    file.close();
    if (!file) {
        std::cerr << "cannot write " << argv[1] << "\n";
        return 1;
    }
    return 0;
}
