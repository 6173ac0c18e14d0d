#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace zeb {

/// A value that does not fit its field of the container. `what()` is the text that a person sees.
class ZEBWriterError : public std::runtime_error {
public:
    static ZEBWriterError valueOutOfRange(const std::string& label, std::uint64_t value) {
        return {label, value};
    }

    /// The field: "width", "height", "fps", "qlMode", "totalFrames", "header size" (the title and index are
    /// too long for it), "sound data size", "frame data size", "one-second block length", "one-second block
    /// total size", "one-second block file offset" or "frame index offsets count" (more seconds than
    /// announced).
    const std::string& label() const noexcept { return m_label; }
    /// The offending value; a negative one is carried as 0.
    std::uint64_t value() const noexcept { return m_value; }

private:
    ZEBWriterError(std::string label, std::uint64_t value)
        : std::runtime_error("ZEBWriter: " + label +
                             " is out of range for ZEB1 (32-bit limit). Value=" + std::to_string(value) +
                             ". The resulting .zeb would exceed format limits (e.g., > 4 GB)."),
          m_label(std::move(label)),
          m_value(value) {}

    std::string m_label;
    std::uint64_t m_value;
};

}  // namespace zeb
