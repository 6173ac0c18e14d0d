#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/FileHandle.h"

namespace zeb {

/// The bytes that a file stores for a title given as UTF-8: ISO Latin-1 where every character has one, else
/// the UTF-8 itself; none when `title` is not valid UTF-8. Cut after 65535 bytes.
std::vector<std::uint8_t> encodeTitle(std::string_view title);

/// The title, as UTF-8, that a file's bytes stand for: ASCII or else UTF-8; "ZEB" when they are neither.
/// Latin-1 characters above 127 therefore do not come back.
std::string decodeTitle(std::span<const std::uint8_t> bytes);

/// The parsed header of a ZEB file: what its fields say, believed or not (`readMovieFacts` tells what is
/// there).
struct ZEBHeader {
    std::string title;  ///< UTF-8; may hold any character, control characters among them
    int width = 1;      ///< pixels, at least 1
    int height = 1;
    int fps = 1;                  ///< frames per second and per block, at least 1
    int mode = 0;                 ///< 4 or 32; other numbers are not refused
    std::int64_t frameCount = 0;  ///< 0 ... 2^32 - 1, as are block size and offsets
    std::int64_t blockSize = 0;   ///< largest one-second block in bytes, length field too; 0 = not finished
    int sampleRate = 0;           ///< Hz; 20000
    int audioChannels = 0;        ///< 0, 1 or 2; larger numbers are not refused
    int options = 0;              ///< bit 0: loop; the others are 0
    std::vector<std::uint32_t> indexOffsets;  ///< file offsets of the one-second blocks; 0 = not recorded
};

/// Parses a header body: the bytes that the header size counts, from the title length on. All numbers are
/// big-endian (`format/Layout.h`). Throws `ZEBFormatError`.
ZEBHeader parseHeader(std::span<const std::uint8_t> body);

/// Where things stand in a ZEB file, in bytes from its start.
struct HeaderPlaces {
    std::uint64_t totalFrames = 0;
    std::uint64_t maxSecondBlockSize = 0;
    std::uint64_t frameIndex = 0;
    std::uint64_t frameIndexCount = 0;  ///< entries
    std::uint64_t data = 0;             ///< first one-second block
};

struct LocatedHeader {
    ZEBHeader header;  ///< without the index
    HeaderPlaces places;
};

/// Reads the header of a file but for its index, which may be large and stays where it is (`indexOffsets` is
/// empty). Memory stays below 100 KB whatever the file claims. Throws `ZEBFormatError`, `FileError`.
LocatedHeader readHeader(ReadableFile& file);

}  // namespace zeb
