#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/FileHandle.h"

namespace zeb {

/// Returns the stored bytes of a title given as UTF-8: ISO Latin-1 if it has every character, else the UTF-8
/// itself. Returns no bytes if `title` is not valid UTF-8. Cuts after 65535 bytes.
std::vector<std::uint8_t> encodeTitle(std::string_view title);

/// Returns the title as UTF-8 from its stored bytes: ASCII or UTF-8, or "ZEB" for bytes that are neither.
/// Latin-1 characters above 127 are therefore not restored.
std::string decodeTitle(std::span<const std::uint8_t> bytes);

/// The fields of a ZEB file's header as stored, not checked against the rest of the file (`readMovieFacts`
/// does that).
struct ZEBHeader {
    std::string title;  ///< UTF-8; may contain any character, control characters included
    int width = 1;      ///< pixels, at least 1
    int height = 1;
    int fps = 1;                  ///< frames per second and per block, at least 1
    int mode = 0;                 ///< 4 or 32; other numbers are accepted
    std::int64_t frameCount = 0;  ///< 0 ... 2^32 - 1, as are block size and offsets
    std::int64_t blockSize = 0;   ///< largest block in bytes with its length field; 0 = not finished
    int sampleRate = 0;           ///< Hz; 20000
    int audioChannels = 0;        ///< 0, 1 or 2; larger numbers are accepted
    int options = 0;              ///< bit 0: loop; the others are 0
    std::vector<std::uint32_t> indexOffsets;  ///< file offsets of the one-second blocks; 0 = not recorded
};

/// Parses a header body: the bytes counted by the header size, from the title length on. All numbers are
/// big-endian (`format/Layout.h`). Throws `ZEBFormatError`.
ZEBHeader parseHeader(std::span<const std::uint8_t> body);

/// Offsets of fields and data in a ZEB file, in bytes from its start.
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

/// Reads the header of a file without its index, which may be large (`indexOffsets` is empty). Uses less than
/// 100 KB of memory, whatever the size fields contain. Throws `ZEBFormatError`, `FileError`.
LocatedHeader readHeader(ReadableFile& file);

}  // namespace zeb
