#include "media/drawing/FramePicture.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "media/drawing/MatrixConversion.h"
#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {
namespace {

/// Positions of a coded frame's pixels in the upright bitmap.
struct Placement {
    std::ptrdiff_t first;  ///< byte offset of the frame's top left pixel in the bitmap
    std::ptrdiff_t perX;   ///< bytes from a pixel to its right neighbour in the frame
    std::ptrdiff_t perY;   ///< bytes from a pixel to the pixel below it in the frame
};

Placement placement(const Orientation& orientation, int bitmapWidth, int bitmapHeight) {
    const std::ptrdiff_t right = 4, down = std::ptrdiff_t{4} * bitmapWidth;
    const std::ptrdiff_t lastColumn = right * (bitmapWidth - 1), lastRow = down * (bitmapHeight - 1);
    Placement result{};
    switch (orientation.quarterTurns) {
        case 0:
            result = {0, right, down};
            break;
        case 1:
            result = {lastColumn, down, -right};
            break;
        case 2:
            result = {lastRow + lastColumn, -right, -down};
            break;
        default:
            result = {lastRow, -down, right};
            break;
    }
    if (orientation.mirrored) {
        const int columns = orientation.exchangesSides() ? bitmapHeight : bitmapWidth;
        result.first += result.perX * (columns - 1);
        result.perX = -result.perX;
    }
    return result;
}

/// Returns the orientation of a bitmap that shows an upright picture turned and mirrored.
Orientation framed(Orientation upright, const Framing& framing) {
    const int turns = upright.quarterTurns + framing.quarterTurns;
    // A mirror in front of a turn is the opposite turn in front of a mirror.
    return {.mirrored = upright.mirrored != framing.mirrored,
            .quarterTurns = (framing.mirrored ? 8 - turns : turns) % 4};
}

/// Sets the scaled part to the framed part of the upright picture, in pixels of the coded frame.
void selectPart(const Framing& framing, const Orientation& upright, ScalingTask& task) {
    // An upright picture is the frame mirrored, then turned clockwise: both are taken back here.
    double left = framing.left, top = framing.top, right = framing.right, bottom = framing.bottom;
    for (int turn = 0; turn < upright.quarterTurns; ++turn) {
        const double oldLeft = left, oldRight = right;
        left = top;
        right = bottom;
        top = 1 - oldRight;
        bottom = 1 - oldLeft;
    }
    if (upright.mirrored) {
        const double oldLeft = left;
        left = 1 - right;
        right = 1 - oldLeft;
    }
    task.left = left * task.width;
    task.right = right * task.width;
    task.top = top * task.height;
    task.bottom = bottom * task.height;
}

/// One row of red, green and blue components.
struct ComponentRow {
    std::vector<std::uint16_t> red, green, blue;

    explicit ComponentRow(int count)
        : red(static_cast<std::size_t>(count)), green(red.size()), blue(red.size()) {}
};

void copyRow(const ComponentRow& row, int count, std::uint8_t* pixel, std::ptrdiff_t step) {
    for (std::size_t x = 0; x < static_cast<std::size_t>(count); ++x, pixel += step) {
        pixel[0] = static_cast<std::uint8_t>(row.red[x]);
        pixel[1] = static_cast<std::uint8_t>(row.green[x]);
        pixel[2] = static_cast<std::uint8_t>(row.blue[x]);
        pixel[3] = 255;
    }
}

/// Premultiplies a row by 16-bit alpha, as drawn over transparent black.
void applyAlpha(const std::uint16_t* alpha, int count, std::uint8_t* pixel, std::ptrdiff_t step) {
    constexpr int opaque = 65535;
    for (int x = 0; x < count; ++x, pixel += step) {
        for (int c = 0; c < 4; ++c) {
            pixel[c] = static_cast<std::uint8_t>((pixel[c] * alpha[x] + opaque / 2) / opaque);
        }
    }
}

}  // namespace

std::unique_ptr<FrameScaler> DrawingTools::borrowScaler(const ScalingTask& task) {
    const std::lock_guard lock(m_mutex);
    const auto found = std::find_if(m_scalers.begin(), m_scalers.end(),
                                    [&task](const auto& scaler) { return scaler->task() == task; });
    if (found == m_scalers.end()) return std::make_unique<FrameScaler>(task);
    std::unique_ptr<FrameScaler> scaler = std::move(*found);
    m_scalers.erase(found);
    return scaler;
}

void DrawingTools::giveBack(std::unique_ptr<FrameScaler> scaler) {
    constexpr std::size_t most = 32;  // limits the number of scalers if the pictures' format keeps changing
    const std::lock_guard lock(m_mutex);
    if (m_scalers.size() >= most) m_scalers.erase(m_scalers.begin());
    m_scalers.push_back(std::move(scaler));
}

std::shared_ptr<const ColourConversion> DrawingTools::conversion(const ColourDescription& colour) {
    const std::lock_guard lock(m_mutex);
    if (!m_conversion || !(m_colour == colour)) {
        m_conversion = std::make_shared<const ColourConversion>(colour);
        m_colour = colour;
    }
    return m_conversion;
}

FramePicture::FramePicture(Frame frame, const VideoStreamFacts& facts, std::shared_ptr<DrawingTools> tools)
    : m_frame(std::move(frame)), m_orientation(facts.orientation), m_tools(std::move(tools)) {
    const double stretched = m_frame->width * facts.sampleAspect.value();
    m_width = std::max(1, static_cast<int>(std::lround(std::min(stretched, 1e6))));
    m_height = std::max(1, m_frame->height);
    if (m_orientation.exchangesSides()) std::swap(m_width, m_height);
}

void FramePicture::draw(const BitmapContext& bitmap) const {
    const ColourDescription colour = colourDescription(*m_frame);
    ScalingTask task;
    task.format = m_frame->format;
    task.width = m_frame->width;
    task.height = m_frame->height;
    task.fullRange = colour.fullRange;
    task.chromaLocation = colour.chromaLocation;
    selectPart(bitmap.framing, m_orientation, task);
    const Orientation orientation = framed(m_orientation, bitmap.framing);
    task.targetWidth = orientation.exchangesSides() ? bitmap.height : bitmap.width;
    task.targetHeight = orientation.exchangesSides() ? bitmap.width : bitmap.height;
    std::unique_ptr<FrameScaler> scaler = m_tools->borrowScaler(task);
    scaler->load(*m_frame);

    const bool isSRGB = colour.transfer == Transfer::sRGB && colour.primaries == Primaries::bt709;
    const bool isManaged = bitmap.colourSpace == DrawingColourSpace::sRGB && !isSRGB;
    const auto conversion = isManaged ? m_tools->conversion(colour) : nullptr;
    const MatrixConversion matrix(colour, scaler->family(), isManaged ? ColourConversion::levels - 1 : 255);
    const Placement place = placement(orientation, bitmap.width, bitmap.height);
    ComponentRow rgb(task.targetWidth);
    scaler->scale([&](const ScaledStretch& from) {
        const int count = from.end - from.begin;
        matrix.convertRow({from.components[0], from.components[1], from.components[2]}, count, rgb.red.data(),
                          rgb.green.data(), rgb.blue.data());
        std::uint8_t* pixel =
            bitmap.pixels.data() + place.first + place.perY * from.y + place.perX * from.begin;
        if (conversion) {
            conversion->convertRow(rgb.red.data(), rgb.green.data(), rgb.blue.data(), count, pixel,
                                   place.perX);
        } else {
            copyRow(rgb, count, pixel, place.perX);
        }
        if (scaler->hasAlpha()) applyAlpha(from.components[3], count, pixel, place.perX);
    });
    m_tools->giveBack(std::move(scaler));
}

}  // namespace zeb::ffmpeg
