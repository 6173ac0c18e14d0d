#include "media/demuxing/PacketKind.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace zeb::ffmpeg {
namespace {

/// Returns the type of the first NAL unit with a picture; -1 if there is none. `typeOf` returns the type for
/// the unit's first byte, `isPicture` is true for types with a picture.
template <typename TypeOf, typename IsPicture>
int firstPictureUnit(std::span<const std::uint8_t> packet, int lengthSize, TypeOf typeOf,
                     IsPicture isPicture) {
    std::size_t position = 0;
    while (position < packet.size()) {
        std::size_t unit = 0, following = 0;
        if (lengthSize > 0) {
            if (packet.size() - position < static_cast<std::size_t>(lengthSize)) return -1;
            std::size_t length = 0;
            for (int i = 0; i < lengthSize; ++i)
                length = length << 8 | packet[position++];
            unit = position;
            following = length > packet.size() - position ? packet.size() : position + length;
        } else {
            while (position + 3 < packet.size() &&
                   !(packet[position] == 0 && packet[position + 1] == 0 && packet[position + 2] == 1)) {
                ++position;
            }
            unit = position + 3;
            following = unit;
        }
        if (unit >= packet.size()) return -1;
        const int type = typeOf(packet[unit]);
        if (isPicture(type)) return type;
        position = following;
    }
    return -1;
}

}  // namespace

bool isIntraOnly(AVCodecID id) {
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(id);
    return descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_INTRA_ONLY) != 0;
}

bool startsGroup(const AVPacket& packet, const AVCodecContext& decoder) {
    if ((packet.flags & AV_PKT_FLAG_KEY) == 0) return false;
    if (isIntraOnly(decoder.codec_id)) return true;
    const std::span<const std::uint8_t> extra(decoder.extradata,
                                              static_cast<std::size_t>(std::max(decoder.extradata_size, 0)));
    const std::span<const std::uint8_t> data(packet.data, static_cast<std::size_t>(std::max(packet.size, 0)));
    // With a configuration record, a length precedes each unit, else a start code.
    const bool hasRecord = extra.size() > 22 && extra[0] == 1;
    const bool hasShortRecord = extra.size() > 6 && extra[0] == 1;
    if (decoder.codec_id == AV_CODEC_ID_H264) {
        const auto typeOf = [](std::uint8_t first) { return first & 0x1F; };
        const auto isPicture = [](int type) { return type >= 1 && type <= 5; };
        return firstPictureUnit(data, hasShortRecord ? (extra[4] & 3) + 1 : 0, typeOf, isPicture) == 5;
    }
    if (decoder.codec_id == AV_CODEC_ID_HEVC) {
        const auto typeOf = [](std::uint8_t first) { return first >> 1 & 0x3F; };
        const auto isPicture = [](int type) { return type < 32; };
        const int type = firstPictureUnit(data, hasRecord ? (extra[21] & 3) + 1 : 0, typeOf, isPicture);
        return type == 19 || type == 20;
    }
    return false;
}

bool isShown(const AVPacket& packet, AVCodecID id) {
    if ((packet.flags & AV_PKT_FLAG_DISCARD) != 0) return false;
    // VP8 has pictures that are used for prediction only, marked by a bit of the frame tag (RFC 6386,
    // section 9.1).
    return id != AV_CODEC_ID_VP8 || packet.size == 0 || (packet.data[0] & 0x10) != 0;
}

}  // namespace zeb::ffmpeg
