#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <stdlib.h>

namespace zeb::test {

/// A temporary folder for one test. The destructor removes it with its content.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "zeb-test-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
        m_path = pattern;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::string path() const { return m_path.string(); }
    std::string file(const std::string& name) const { return (m_path / name).string(); }
    /// Relative paths of everything in the folder and its subfolders, sorted.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_path))
            names.push_back(entry.path().lexically_relative(m_path));
        std::ranges::sort(names);
        return names;
    }

private:
    std::filesystem::path m_path;
};

/// All bytes of a file. Empty if there is no file.
template <typename Bytes = std::string>
Bytes contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void store(const std::string& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}
inline void store(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    store(path, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

}  // namespace zeb::test
