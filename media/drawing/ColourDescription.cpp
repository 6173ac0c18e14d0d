#include "media/drawing/ColourDescription.h"

#include <algorithm>

#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {
namespace {

bool isHighDefinition(const AVFrame& frame) {
    return frame.width >= 1280 || frame.height > 576;
}

int matrixOf(const AVFrame& frame, bool isRGB) {
    if (isRGB) return AVCOL_SPC_RGB;
    switch (frame.colorspace) {
        case AVCOL_SPC_BT709:
        case AVCOL_SPC_FCC:
        case AVCOL_SPC_BT470BG:
        case AVCOL_SPC_SMPTE170M:
        case AVCOL_SPC_SMPTE240M:
        case AVCOL_SPC_YCGCO:
        case AVCOL_SPC_BT2020_NCL:
            return frame.colorspace;
        case AVCOL_SPC_BT2020_CL:
        case AVCOL_SPC_ICTCP:
            return AVCOL_SPC_BT2020_NCL;
        default:
            return isHighDefinition(frame) ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    }
}

bool isFullRange(const AVFrame& frame, const AVPixFmtDescriptor& format, bool isRGB) {
    if (isRGB || frame.color_range == AVCOL_RANGE_JPEG) return true;
    switch (frame.format) {
        case AV_PIX_FMT_YUVJ411P:
        case AV_PIX_FMT_YUVJ420P:
        case AV_PIX_FMT_YUVJ422P:
        case AV_PIX_FMT_YUVJ440P:
        case AV_PIX_FMT_YUVJ444P:
            return true;
        default:
            break;
    }
    // Grey pictures without a stated range come from still-picture codings, not from video signals.
    return format.nb_components <= 2 && frame.color_range == AVCOL_RANGE_UNSPECIFIED;
}

Transfer transferOf(const AVFrame& frame, bool isRGB) {
    switch (frame.color_trc) {
        case AVCOL_TRC_BT709:
        case AVCOL_TRC_SMPTE170M:
        case AVCOL_TRC_BT1361_ECG:
        case AVCOL_TRC_IEC61966_2_4:
        case AVCOL_TRC_BT2020_10:
        case AVCOL_TRC_BT2020_12:
            return Transfer::video;
        case AVCOL_TRC_IEC61966_2_1:
            return Transfer::sRGB;
        case AVCOL_TRC_GAMMA22:
            return Transfer::gamma22;
        case AVCOL_TRC_GAMMA28:
            return Transfer::gamma28;
        case AVCOL_TRC_SMPTE240M:
            return Transfer::smpte240m;
        case AVCOL_TRC_LINEAR:
            return Transfer::linear;
        case AVCOL_TRC_SMPTE2084:
            return Transfer::pq;
        case AVCOL_TRC_SMPTE428:
            return Transfer::gamma26;
        case AVCOL_TRC_ARIB_STD_B67:
            return Transfer::hlg;
        default:
            return isRGB ? Transfer::sRGB : Transfer::video;
    }
}

Primaries primariesOf(const AVFrame& frame, int matrix, Transfer transfer) {
    switch (frame.color_primaries) {
        case AVCOL_PRI_BT709:
            return Primaries::bt709;
        case AVCOL_PRI_BT470M:
            return Primaries::bt470m;
        case AVCOL_PRI_BT470BG:
        case AVCOL_PRI_EBU3213:
            return Primaries::bt601with625lines;
        case AVCOL_PRI_SMPTE170M:
        case AVCOL_PRI_SMPTE240M:
            return Primaries::bt601with525lines;
        case AVCOL_PRI_FILM:
            return Primaries::film;
        case AVCOL_PRI_BT2020:
            return Primaries::bt2020;
        case AVCOL_PRI_SMPTE431:
            return Primaries::dciP3;
        case AVCOL_PRI_SMPTE432:
            return Primaries::displayP3;
        default:
            break;
    }
    const bool isWide =
        matrix == AVCOL_SPC_BT2020_NCL || transfer == Transfer::pq || transfer == Transfer::hlg;
    return isWide ? Primaries::bt2020 : Primaries::bt709;
}

int chromaLocationOf(const AVFrame& frame, bool fullRange) {
    switch (frame.chroma_location) {
        case AVCHROMA_LOC_CENTER:
            return 1;
        case AVCHROMA_LOC_TOPLEFT:
            return 2;
        case AVCHROMA_LOC_TOP:
            return 3;
        case AVCHROMA_LOC_BOTTOMLEFT:
            return 4;
        case AVCHROMA_LOC_BOTTOM:
            return 5;
        case AVCHROMA_LOC_LEFT:
            return 0;
        default:
            return fullRange ? 1 : 0;  // centre as in JPEG, left as in MPEG-2
    }
}

float peakNitsOf(const AVFrame& frame) {
    constexpr float unknown = 1000;
    constexpr float least = 203, most = 10000;
    if (const AVFrameSideData* data = av_frame_get_side_data(&frame, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL)) {
        const auto* light = reinterpret_cast<const AVContentLightMetadata*>(data->data);
        if (light->MaxCLL > 0) return std::clamp(static_cast<float>(light->MaxCLL), least, most);
    }
    if (const AVFrameSideData* data =
            av_frame_get_side_data(&frame, AV_FRAME_DATA_MASTERING_DISPLAY_METADATA)) {
        const auto* display = reinterpret_cast<const AVMasteringDisplayMetadata*>(data->data);
        const auto nits = static_cast<float>(av_q2d(display->max_luminance));
        if (display->has_luminance != 0 && nits > 0) return std::clamp(nits, least, most);
    }
    return unknown;
}

}  // namespace

ColourDescription colourDescription(const AVFrame& frame) {
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    const bool isRGB = (format.flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
    ColourDescription colour;
    colour.matrix = matrixOf(frame, isRGB);
    colour.fullRange = isFullRange(frame, format, isRGB);
    colour.transfer = transferOf(frame, isRGB);
    colour.primaries = primariesOf(frame, colour.matrix, colour.transfer);
    colour.chromaLocation = chromaLocationOf(frame, colour.fullRange);
    if (colour.transfer == Transfer::pq) colour.peakNits = peakNitsOf(frame);
    return colour;
}

}  // namespace zeb::ffmpeg
