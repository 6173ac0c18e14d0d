#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "platform/base/Error.h"

namespace zeb {

/// An error of the conversion itself, not of a file or of the system.
class ZEBConverterError : public LocalizableError {
public:
    enum class Case { cannotCreateOutput, noVideoTrack, cancelled };

    static ZEBConverterError cannotCreateOutput(const std::string& path) {
        return {Case::cannotCreateOutput,
                "Kann Ausgabedatei nicht erstellen: " + path,
                {"error_cannot_create_output_format", {path}}};
    }
    static ZEBConverterError noVideoTrack() {
        return {Case::noVideoTrack, "Kein Video-Track gefunden.", {"error_no_video_track"}};
    }
    static ZEBConverterError cancelled() {
        return {Case::cancelled, "Vorgang abgebrochen.", {"error_cancelled"}};
    }

    Case errorCase() const noexcept { return m_case; }

private:
    ZEBConverterError(Case errorCase, const std::string& description, KeyedText text)
        : LocalizableError(description, std::move(text)), m_case(errorCase) {}

    Case m_case;
};

/// The file is not a ZEB file or contradicts itself. Domain "ZEB".
class ZEBFormatError : public PlatformError {
public:
    enum Code { wrongMagic = 1, malformed = 999 };

    static ZEBFormatError notAMovie() { return {wrongMagic, "Kein ZEB1-File", {"error_not_a_movie"}}; }
    /// A header field is beyond the header size.
    static ZEBFormatError headerTooShort() {
        return {malformed, "Header zu kurz", {"error_header_too_short"}};
    }
    /// The title is longer than the header size allows.
    static ZEBFormatError titleOutsideHeader() {
        return {malformed, "Titel außerhalb Header", {"error_title_outside_header"}};
    }
    /// The file has fewer bytes than a size field states.
    static ZEBFormatError unexpectedEnd() {
        return {malformed, "Unerwartetes EOF", {"error_unexpected_end"}};
    }
    /// The file ends where the next block should start.
    static ZEBFormatError endOfMovie() { return {malformed, "EOF", {"error_end_of_movie"}}; }
    /// The reader has no open file.
    static ZEBFormatError noFileHandle() { return {malformed, "FileHandle nil", {"error_no_file_handle"}}; }

private:
    ZEBFormatError(Code code, const std::string& description, KeyedText text)
        : PlatformError("ZEB", code, description, std::move(text)) {}
};

/// The soundtrack of a file cannot be read. Domain "ZEBReader".
class ZEBReaderError : public PlatformError {
public:
    /// The file has fewer bytes than a size field states.
    static ZEBReaderError unexpectedEnd() { return {1, "Unexpected EOF", {"error_unexpected_end"}}; }
    /// The file ends within a 32-bit value.
    static ZEBReaderError truncatedWord() { return {2, "Truncated u32", {"error_truncated_word"}}; }
    /// The file ends before a required 32-bit value.
    static ZEBReaderError missingWord() { return {3, "Unexpected EOF", {"error_unexpected_end"}}; }
    static ZEBReaderError notAMovie() { return {4, "Not a ZEB1 file", {"error_not_a_movie"}}; }

private:
    ZEBReaderError(int code, const std::string& description, KeyedText text)
        : PlatformError("ZEBReader", code, description, std::move(text)) {}
};

/// A value that does not fit its field of the container.
class ZEBWriterError : public LocalizableError {
public:
    static ZEBWriterError valueOutOfRange(const std::string& label, std::uint64_t value) {
        return {label, value};
    }

    /// The field: "width", "height", "fps", "qlMode", "totalFrames", "header size" (title and index are too
    /// long), "sound data size", "frame data size", "one-second block length", "one-second block total size",
    /// "one-second block file offset" or "frame index offsets count" (more seconds written than announced).
    const std::string& label() const noexcept { return m_label; }
    /// The rejected value; 0 for a negative one.
    std::uint64_t value() const noexcept { return m_value; }

private:
    ZEBWriterError(std::string label, std::uint64_t value)
        : LocalizableError("ZEBWriter: " + label +
                               " is out of range for ZEB1 (32-bit limit). Value=" + std::to_string(value) +
                               ". The resulting .zeb would exceed format limits (e.g., > 4 GB).",
                           {"error_value_out_of_range_format", {fieldText(label), std::to_string(value)}}),
          m_label(std::move(label)),
          m_value(value) {}

    /// Returns the key of the label's text: "field_" and the label with underscores for spaces and hyphens.
    static KeyedText fieldText(std::string label) {
        for (char& character : label) {
            if (character == ' ' || character == '-') character = '_';
        }
        return {"field_" + label};
    }

    std::string m_label;
    std::uint64_t m_value;
};

/// A movie has whole seconds after damaged ones. It is not cut off, which would lose them.
class MovieDamageError : public LocalizableError {
public:
    MovieDamageError(std::int64_t second, std::uint64_t offset, std::int64_t secondsBehind)
        : LocalizableError(
              "second " + std::to_string(second) + " (at byte " + std::to_string(offset) +
                  ") is damaged; whole seconds behind it: " + std::to_string(secondsBehind),
              {"error_damaged_second_format", {second, static_cast<std::int64_t>(offset), secondsBehind}}),
          m_second(second),
          m_offset(offset),
          m_secondsBehind(secondsBehind) {}

    /// Number of the first damaged second, from 0.
    std::int64_t second() const noexcept { return m_second; }
    /// Bytes from the start of the file to its block.
    std::uint64_t offset() const noexcept { return m_offset; }
    /// Number of whole seconds after it.
    std::int64_t secondsBehind() const noexcept { return m_secondsBehind; }

private:
    std::int64_t m_second;
    std::uint64_t m_offset;
    std::int64_t m_secondsBehind;
};

}  // namespace zeb
