#include "media/demuxing/StreamFacts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>

#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {
namespace {

Ratio ratio(AVRational value) {
    return {value.num, value.den};
}

bool isMovingPicture(const AVStream& stream) {
    constexpr int still = AV_DISPOSITION_ATTACHED_PIC | AV_DISPOSITION_TIMED_THUMBNAILS;
    return stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && (stream.disposition & still) == 0;
}

/// Returns the orientation nearest to a display matrix. A negative determinant means mirroring; the angle is
/// the rotation.
Orientation orientationOf(const AVStream& stream) {
    std::size_t size = 0;
    const auto* matrix = reinterpret_cast<const std::int32_t*>(
        av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size));
    if (matrix == nullptr || size < 9 * sizeof(std::int32_t)) return {};
    // The matrix maps (x, y) to (a x + c y, b x + d y), y downwards.
    const double a = matrix[0], b = matrix[1], c = matrix[3], d = matrix[4];
    if ((a == 0 && b == 0) || (c == 0 && d == 0)) return {};
    Orientation orientation;
    orientation.mirrored = a * d - b * c < 0;
    // With the mirror image of x taken first, the first column is negated.
    const double sign = orientation.mirrored ? -1 : 1;
    const double quarters = std::atan2(sign * b, sign * a) / (std::acos(-1.0) / 2);
    orientation.quarterTurns = (static_cast<int>(std::lround(quarters)) % 4 + 4) % 4;
    return orientation;
}

/// Returns the frame rate that the container states. Returns 0 for a rate that is probably a clock's tick
/// rate; the frame rate is then measured.
double frameRateOf(const AVStream& stream) {
    constexpr double likely = 480;
    for (const AVRational stated : {stream.avg_frame_rate, stream.r_frame_rate}) {
        const double rate = stated.den == 0 ? 0 : av_q2d(stated);
        if (rate > 0 && rate <= likely) return rate;
    }
    return 0;
}

/// Packs the first four characters into a number, padded with spaces.
std::uint32_t code(std::string_view characters) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = value << 8 | static_cast<unsigned char>(i < characters.size() ? characters[i] : ' ');
    return value;
}

/// Returns the four-character code by which a sound coding is commonly known.
std::uint32_t soundFormatCode(const AVCodecParameters& parameters) {
    const AVCodecID id = parameters.codec_id;
    switch (id) {
        case AV_CODEC_ID_AAC:
            return code("aac ");
        case AV_CODEC_ID_AC3:
            return code("ac-3");
        case AV_CODEC_ID_EAC3:
            return code("ec-3");
        case AV_CODEC_ID_ALAC:
            return code("alac");
        case AV_CODEC_ID_AMR_NB:
            return code("samr");
        case AV_CODEC_ID_AMR_WB:
            return code("sawb");
        case AV_CODEC_ID_FLAC:
            return code("flac");
        case AV_CODEC_ID_MP1:
            return code(".mp1");
        case AV_CODEC_ID_MP2:
            return code(".mp2");
        case AV_CODEC_ID_MP3:
            return code(".mp3");
        case AV_CODEC_ID_OPUS:
            return code("opus");
        case AV_CODEC_ID_PCM_ALAW:
            return code("alaw");
        case AV_CODEC_ID_PCM_MULAW:
            return code("ulaw");
        default:
            break;
    }
    if (id >= AV_CODEC_ID_FIRST_AUDIO && id < AV_CODEC_ID_ADPCM_IMA_QT) return code("lpcm");
    // A tag is stored with its first character lowest.
    if (parameters.codec_tag != 0) return av_bswap32(parameters.codec_tag);
    // Some containers have no tag: use the start of the coding's name, such as "vorb".
    return code(avcodec_get_name(id));
}

SoundTrack soundTrack(const AVCodecParameters& parameters) {
    SoundTrack track;
    if (parameters.sample_rate > 0) track.sampleRate = parameters.sample_rate;
    if (parameters.ch_layout.nb_channels > 0) track.channelsPerFrame = parameters.ch_layout.nb_channels;
    track.formatCode = soundFormatCode(parameters);
    return track;
}

/// Returns the presentation time of a stream's first sound or picture, in seconds of the container's clock.
double presentedStart(const AVFormatContext& format, const AVStream& stream) {
    double start = static_cast<double>(stream.start_time) * av_q2d(stream.time_base);
    // Matroska's times include the encoder delay, which decoders drop; other demuxers subtract it already.
    const bool stampsLeadIn =
        std::string_view(format.iformat->name).find("matroska") != std::string_view::npos;
    const AVCodecParameters& parameters = *stream.codecpar;
    if (stampsLeadIn && parameters.codec_type == AVMEDIA_TYPE_AUDIO && parameters.sample_rate > 0) {
        start += static_cast<double>(parameters.initial_padding) / parameters.sample_rate;
    }
    return start;
}

double originOf(const AVFormatContext& format) {
    constexpr double rounding = 0.0011;  // of containers that count whole milliseconds
    double origin = std::numeric_limits<double>::infinity();
    double firstPicture = std::numeric_limits<double>::infinity();
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        const AVStream& stream = *format.streams[i];
        const bool isSound = stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
        if ((!isSound && !isMovingPicture(stream)) || stream.start_time == AV_NOPTS_VALUE) continue;
        const double start = presentedStart(format, stream);
        origin = std::min(origin, start);
        if (!isSound) firstPicture = std::min(firstPicture, start);
    }
    if (!std::isfinite(origin)) return 0;
    // Sound that starts a rounding error earlier than the pictures must not shift them.
    return firstPicture - origin < rounding ? firstPicture : origin;
}

}  // namespace

ContainerFacts containerFacts(const Demuxer& demuxer) {
    AVFormatContext& format = *demuxer.format();
    ContainerFacts facts;
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        AVStream& stream = *format.streams[i];
        const AVCodecParameters& parameters = *stream.codecpar;
        if (isMovingPicture(stream)) {
            VideoStreamFacts video;
            video.stream = stream.index;
            video.timeBase = ratio(stream.time_base);
            video.hasTimestamps =
                stream.start_time != AV_NOPTS_VALUE && (format.iformat->flags & AVFMT_NOTIMESTAMPS) == 0;
            video.frameRate = frameRateOf(stream);
            video.codedWidth = parameters.width;
            video.codedHeight = parameters.height;
            const AVRational aspect = av_guess_sample_aspect_ratio(&format, &stream, nullptr);
            if (aspect.num > 0 && aspect.den > 0) video.sampleAspect = ratio(aspect);
            video.orientation = orientationOf(stream);
            const bool isDefault = (stream.disposition & AV_DISPOSITION_DEFAULT) != 0;
            const auto firstOther = std::find_if(
                facts.videos.begin(), facts.videos.end(), [&format](const VideoStreamFacts& other) {
                    return (format.streams[other.stream]->disposition & AV_DISPOSITION_DEFAULT) == 0;
                });
            facts.videos.insert(isDefault ? firstOther : facts.videos.end(), video);
        } else if (parameters.codec_type == AVMEDIA_TYPE_AUDIO) {
            facts.sounds.push_back({stream.index, ratio(stream.time_base), soundTrack(parameters)});
        }
    }
    facts.origin = originOf(format);
    return facts;
}

VideoTrack videoTrack(const VideoStreamFacts& facts) {
    VideoTrack track;
    // Keep the height and scale the width, as players do.
    track.naturalSize = {facts.codedWidth * facts.sampleAspect.value(),
                         static_cast<double>(facts.codedHeight)};
    constexpr std::array<AffineTransform, 4> turns = {
        AffineTransform{1, 0, 0, 1}, {0, 1, -1, 0}, {-1, 0, 0, -1}, {0, -1, 1, 0}};
    track.preferredTransform = turns[static_cast<std::size_t>(facts.orientation.quarterTurns)];
    if (facts.orientation.mirrored) {
        track.preferredTransform.a = -track.preferredTransform.a;
        track.preferredTransform.b = -track.preferredTransform.b;
    }
    track.nominalFrameRate = static_cast<float>(facts.frameRate);
    track.end = facts.end;
    return track;
}

}  // namespace zeb::ffmpeg
