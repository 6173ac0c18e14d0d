#include "conversion/look/FrameGeometry.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "conversion/plan/SettingsError.h"
#include "conversion/plan/SourceAnalysis.h"

namespace zeb {
namespace {

/// Sides have 64 bits: the product of a 32-bit request and a 32-bit source side is precise enough and cannot
/// overflow.
int frameSide(std::int64_t side) {
    return proposedSide(
        static_cast<int>(std::clamp<std::int64_t>(side, 0, std::numeric_limits<std::int32_t>::max())));
}

bool exchangesSides(const Shape& shape) {
    return shape.rotation % 180 != 0;
}

/// Returns the part of the source that is kept.
PixelRectangle keptPart(int width, int height, const Shape& shape) {
    if (shape.crop != Shape::Crop::rectangle) return {0, 0, width, height};
    const PixelRectangle& part = shape.part;
    const bool isInside = part.x >= 0 && part.y >= 0 && part.width > 0 && part.height > 0 &&
                          part.width <= width - part.x && part.height <= height - part.y;
    if (!isInside) {
        throw SettingsError({"error_crop_outside_format",
                             {std::int64_t{part.width}, std::int64_t{part.height}, std::int64_t{part.x},
                              std::int64_t{part.y}, std::int64_t{width}, std::int64_t{height}}});
    }
    return part;
}

/// Shortens one side of a part in displayed pixels around its centre, to an aspect ratio.
void trim(double aspect, double width, double height, Framing& framing) {
    const double partWidth = (framing.right - framing.left) * width;
    const double partHeight = (framing.bottom - framing.top) * height;
    if (partWidth > partHeight * aspect) {
        const double surplus = (partWidth - partHeight * aspect) / width / 2;
        framing.left += surplus;
        framing.right -= surplus;
    } else {
        const double surplus = (partHeight - partWidth / aspect) / height / 2;
        framing.top += surplus;
        framing.bottom -= surplus;
    }
}

/// Returns the largest area of an aspect ratio, in frame pixels, in the middle of the frame.
PixelRectangle areaInside(FrameSize frame, double aspect) {
    const double width = std::min<double>(frame.width, frame.height * aspect);
    const auto side = [](double length, int most) {
        return std::clamp(static_cast<int>(std::lround(length)), 1, most);
    };
    PixelRectangle area;
    area.width = side(width, frame.width);
    area.height = side(width / aspect, frame.height);
    area.x = (frame.width - area.width) / 2;
    area.y = (frame.height - area.height) / 2;
    return area;
}

}  // namespace

FrameSize targetSize(int sourceWidth, int sourceHeight, const Settings& settings) {
    const double sourceW = std::max(sourceWidth, 1);
    const double sourceH = std::max(sourceHeight, 1);
    std::int64_t width = settings.width;
    std::int64_t height = settings.height;

    if (settings.preserveAspect) {
        const double sourceAspect = sourceW / sourceH;
        const double requestedAspect = static_cast<double>(width > 0 ? width : 1) /
                                       static_cast<double>(std::max<std::int64_t>(height, 1));
        if (sourceAspect < requestedAspect) {
            width = static_cast<std::int64_t>(sourceAspect * static_cast<double>(height));
        } else {
            height = static_cast<std::int64_t>(static_cast<double>(width) / sourceAspect);
        }
    }

    // Never exceed the source in either direction; scale both sides by the same factor.
    const double scale = std::min(sourceW / static_cast<double>(std::max<std::int64_t>(width, 1)),
                                  sourceH / static_cast<double>(std::max<std::int64_t>(height, 1)));
    if (scale < 1) {
        width = static_cast<std::int64_t>(std::floor(scale * static_cast<double>(width)));
        height = static_cast<std::int64_t>(std::floor(scale * static_cast<double>(height)));
    }
    return {frameSide(width), frameSide(height)};
}

FrameSize sourceOnScreen(int sourceWidth, int sourceHeight, const Settings& settings) {
    const PixelRectangle part = keptPart(sourceWidth, sourceHeight, settings.shape);
    FrameSize size{part.width, part.height};
    if (exchangesSides(settings.shape)) std::swap(size.width, size.height);
    const double pixel = settings.shape.pixelShape.aspect();
    const auto reduced = [](double side) { return std::max(1, static_cast<int>(std::lround(side))); };
    if (pixel > 1) size.width = reduced(size.width / pixel);
    if (pixel < 1) size.height = reduced(size.height * pixel);
    return size;
}

FrameGeometry frameGeometry(int sourceWidth, int sourceHeight, const Settings& settings) {
    const Shape& shape = settings.shape;
    const PixelRectangle part = keptPart(sourceWidth, sourceHeight, shape);
    FrameGeometry geometry;
    Framing& framing = geometry.framing;
    if (shape.crop == Shape::Crop::rectangle) {
        framing.left = static_cast<double>(part.x) / sourceWidth;
        framing.top = static_cast<double>(part.y) / sourceHeight;
        framing.right = static_cast<double>(part.x + part.width) / sourceWidth;
        framing.bottom = static_cast<double>(part.y + part.height) / sourceHeight;
    }
    framing.quarterTurns = shape.rotation / 90;
    framing.mirrored = shape.flip;

    if (shape.fit == Shape::Fit::scale) {
        const FrameSize source = sourceOnScreen(sourceWidth, sourceHeight, settings);
        geometry.size = targetSize(source.width, source.height, settings);
    } else {
        geometry.size = {frameSide(settings.width), frameSide(settings.height)};
    }
    geometry.area = {0, 0, geometry.size.width, geometry.size.height};

    const double pixel = shape.pixelShape.aspect();
    if (shape.fit == Shape::Fit::pad) {
        const double upright = static_cast<double>(part.width) / part.height;
        geometry.area = areaInside(geometry.size, (exchangesSides(shape) ? 1 / upright : upright) / pixel);
    } else if (shape.fit == Shape::Fit::fill) {
        const double frame = geometry.size.width * pixel / geometry.size.height;
        trim(exchangesSides(shape) ? 1 / frame : frame, sourceWidth, sourceHeight, framing);
    }
    return geometry;
}

}  // namespace zeb
