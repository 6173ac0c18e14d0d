#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "media/Media.h"
#include "platform/files/FileHandle.h"

namespace zeb {

/// A movie file as read by jobs. Errors are `ExportError::cannotRead`, to distinguish them from errors of the
/// output. Each read first checks for cancellation and throws `ZEBConverterError::cancelled()`, so every
/// reader of this file can be cancelled.
class MovieInput final : public ReadableFile {
public:
    /// `isCancelled` may be empty.
    MovieInput(const std::string& path, IsCancelled isCancelled);

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) override;
    std::uint64_t size() override;

private:
    std::unique_ptr<ReadableFile> m_file;
    IsCancelled m_isCancelled;
};

}  // namespace zeb
