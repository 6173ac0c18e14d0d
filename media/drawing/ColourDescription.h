#pragma once

struct AVFrame;

namespace zeb::ffmpeg {

/// Transfer characteristics: the relation between RGB values and light.
enum class Transfer {
    sRGB,   ///< IEC 61966-2-1
    video,  ///< the camera curve of ITU-R BT.601, BT.709 and BT.2020
    gamma22,
    gamma26,  ///< SMPTE ST 428-1
    gamma28,
    smpte240m,
    linear,
    pq,   ///< SMPTE ST 2084
    hlg,  ///< ITU-R BT.2100 hybrid log-gamma
};

/// Chromaticities of a signal's red, green, blue and white.
enum class Primaries { bt709, bt601with625lines, bt601with525lines, bt470m, film, bt2020, dciP3, displayP3 };

/// The complete colour coding of a picture. Values that the stream does not specify are guessed as players
/// do.
struct ColourDescription {
    int matrix = 1;          ///< coefficients from Y'CbCr, code point of ITU-T H.273; 0 = the values are RGB
    bool fullRange = false;  ///< 0 ... maximum instead of the studio range (16 ... 235 with 8 bits)
    Transfer transfer = Transfer::video;
    Primaries primaries = Primaries::bt709;
    int chromaLocation =
        0;                  ///< of 4:2:0 samples, code point of ITU-T H.273: 0 left, 1 centre, 2 top left ...
    float peakNits = 1000;  ///< of the mastering display; only for PQ

    bool operator==(const ColourDescription&) const = default;
};

ColourDescription colourDescription(const AVFrame& frame);

}  // namespace zeb::ffmpeg
