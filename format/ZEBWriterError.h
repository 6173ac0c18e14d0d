#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "platform/base/LocalizableError.h"

namespace zeb {

/// A value that does not fit its field of the container.
class ZEBWriterError : public LocalizableError {
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
        : LocalizableError("ZEBWriter: " + label +
                               " is out of range for ZEB1 (32-bit limit). Value=" + std::to_string(value) +
                               ". The resulting .zeb would exceed format limits (e.g., > 4 GB).",
                           {"error_value_out_of_range_format", {fieldText(label), std::to_string(value)}}),
          m_label(std::move(label)),
          m_value(value) {}

    /// The label's key: "field_" and the label with lines in place of spaces and hyphens.
    static KeyedText fieldText(std::string label) {
        for (char& character : label) {
            if (character == ' ' || character == '-') character = '_';
        }
        return {"field_" + label};
    }

    std::string m_label;
    std::uint64_t m_value;
};

}  // namespace zeb
