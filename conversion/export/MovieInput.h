#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "media/Media.h"
#include "platform/files/FileHandle.h"

namespace zeb {

/// A movie's file as jobs read it. Its errors are `ExportError::cannotRead`, so that they are not taken for
/// an output's. Each read asks first whether the job shall stop, and then throws
/// `ZEBConverterError::cancelled()`: whatever reads through it can be cancelled.
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
