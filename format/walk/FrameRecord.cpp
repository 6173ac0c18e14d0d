#include "format/walk/FrameRecord.h"

#include <algorithm>
#include <array>

#include "codec/FrameDecoder.h"
#include "codec/SpriteLayout.h"

namespace zeb {

bool readFrameRecord(FileCursor& file, std::uint64_t size, int width, int height,
                     std::vector<std::uint8_t>& record) {
    record.clear();
    if (size > file.remaining()) return false;
    const std::uint64_t place = file.position();
    std::array<std::uint8_t, sprite::headerSize> start{};
    const std::size_t startSize = std::min<std::uint64_t>(size, start.size());
    if (file.read(std::span(start).first(startSize)) < startSize) return false;
    file.seek(place);
    if (!FrameDecoder::canDecode(std::span(start).first(startSize), size, width, height))
        return file.skip(size);
    record.resize(static_cast<std::size_t>(size));
    return file.read(record) == size;
}

}  // namespace zeb
