#include "conversion/export/MovieInput.h"

#include <utility>

#include "conversion/export/ExportError.h"
#include "format/ZEBErrors.h"

namespace zeb {
namespace {

template <typename Action>
auto reading(const Action& action) {
    try {
        return action();
    } catch (const FileError& error) {
        throw ExportError::cannotRead(error);
    }
}

}  // namespace

MovieInput::MovieInput(const std::string& path, IsCancelled isCancelled)
    : m_file(reading([&] { return openForReading(path); })), m_isCancelled(std::move(isCancelled)) {}

std::size_t MovieInput::readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) {
    if (m_isCancelled && m_isCancelled()) throw ZEBConverterError::cancelled();
    return reading([&] { return m_file->readAt(offset, buffer); });
}

std::uint64_t MovieInput::size() {
    return reading([&] { return m_file->size(); });
}

}  // namespace zeb
