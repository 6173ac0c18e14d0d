#include "conversion/look/FrameMaker.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "codec/ColourReduction.h"

namespace zeb {
namespace {

bool isNatural(Reduction reduction) {
    return reduction == Reduction::naturalOrdered || reduction == Reduction::naturalFine;
}

/// A film's picture in the shape of the frames, with the adjustments of its colours.
class ShapedPicture final : public Picture {
public:
    /// `adjustment` may be null. `part` is a working buffer.
    ShapedPicture(const Picture& picture, const FrameRecipe& recipe, const ColourAdjustment* adjustment,
                  std::vector<std::uint8_t>& part)
        : m_picture(picture), m_recipe(recipe), m_adjustment(adjustment), m_part(part) {}

    int width() const override { return m_recipe.geometry.size.width; }
    int height() const override { return m_recipe.geometry.size.height; }
    void draw(const BitmapContext& bitmap) const override;

private:
    void drawAdjusted(BitmapContext bitmap) const;

    const Picture& m_picture;
    const FrameRecipe& m_recipe;
    const ColourAdjustment* m_adjustment;
    std::vector<std::uint8_t>& m_part;
};

void ShapedPicture::drawAdjusted(BitmapContext bitmap) const {
    bitmap.framing = m_recipe.geometry.framing;
    m_picture.draw(bitmap);
    if (m_adjustment != nullptr && !m_adjustment->isIdentity()) m_adjustment->apply(bitmap.pixels);
}

void ShapedPicture::draw(const BitmapContext& bitmap) const {
    const PixelRectangle& area = m_recipe.geometry.area;
    if (area == PixelRectangle{0, 0, bitmap.width, bitmap.height}) {
        drawAdjusted(bitmap);
        return;
    }
    constexpr std::size_t pixelBytes = 4;
    m_part.resize(pixelBytes * static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height));
    drawAdjusted({m_part, area.width, area.height, bitmap.colourSpace});
    const auto [red, green, blue] = m_recipe.padColour;
    const std::uint8_t pad[pixelBytes] = {red, green, blue, 255};
    for (std::size_t at = 0; at < bitmap.pixels.size(); at += pixelBytes)
        std::copy_n(pad, pixelBytes, bitmap.pixels.begin() + static_cast<std::ptrdiff_t>(at));
    const auto rowBytes = static_cast<std::ptrdiff_t>(pixelBytes) * area.width;
    for (int y = 0; y < area.height; ++y) {
        const std::ptrdiff_t pixel = std::ptrdiff_t{area.y + y} * bitmap.width + area.x;
        std::copy_n(m_part.begin() + rowBytes * y, rowBytes,
                    bitmap.pixels.begin() + static_cast<std::ptrdiff_t>(pixelBytes) * pixel);
    }
}

}  // namespace

FrameTools::FrameTools(const FrameRecipe& recipe)
    : m_recipe(recipe),
      m_adjustment(recipe.controls),
      m_naturalTable(isNatural(recipe.reduction) ? std::make_shared<const NaturalTable>(recipe.natural)
                                                 : nullptr) {}

FrameMaker::FrameMaker(std::shared_ptr<const FrameTools> tools) : m_tools(std::move(tools)) {
    const FrameRecipe& recipe = m_tools->recipe();
    if (!isNatural(recipe.reduction)) return;
    m_natural.emplace(
        m_tools->naturalTable(),
        recipe.reduction == Reduction::naturalFine ? NaturalDithering::fine : NaturalDithering::ordered,
        recipe.sharpness);
}

void drawInShape(const Picture& picture, const FrameGeometry& geometry, const RGBColour& padColour,
                 std::span<std::uint8_t> rgba) {
    FrameRecipe recipe;
    recipe.geometry = geometry;
    recipe.padColour = padColour;
    std::vector<std::uint8_t> part;
    const auto [width, height] = geometry.size;
    ShapedPicture(picture, recipe, nullptr, part).draw({rgba, width, height, DrawingColourSpace::sRGB});
}

std::vector<std::uint8_t> FrameMaker::record(const Picture& picture) {
    const FrameRecipe& recipe = m_tools->recipe();
    const auto [width, height] = recipe.geometry.size;
    const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const ShapedPicture shaped(picture, recipe, &m_tools->adjustment(), m_part);
    switch (recipe.reduction) {
        case Reduction::levels:
            return m_encoder.encodeMode4Sprite(shaped, width, height, false);
        case Reduction::diffusedLevels:
            return m_encoder.encodeMode4Sprite(shaped, width, height, true);
        case Reduction::nearest:
            break;
        case Reduction::naturalOrdered:
        case Reduction::naturalFine:
            m_pixels.resize(count);
            m_natural->reduce(m_encoder.renderRGBA(shaped, width, height), width, height, m_pixels);
            return m_encoder.packMode4Sprite(m_pixels, width, height);
        case Reduction::rows:
            m_pixels.resize(2 * count);
            packRGB565Rows(m_encoder.renderRGBA(shaped, width, height), width, m_pixels);
            return m_encoder.packMode32Sprite(m_pixels, width, height);
    }
    return m_encoder.encodeMode32Sprite(shaped, width, height);
}

std::span<const std::uint8_t> FrameMaker::original(const Picture& picture) {
    const auto [width, height] = m_tools->recipe().geometry.size;
    return m_encoder.renderRGBA(ShapedPicture(picture, m_tools->recipe(), nullptr, m_part), width, height);
}

}  // namespace zeb
