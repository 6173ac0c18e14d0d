#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "conversion/plan/Settings.h"

namespace zeb {

/// Finds black bars at the edges of a film's pictures. A row or column belongs to a bar if it is black in all
/// pictures. A picture that is black as a whole says nothing.
class BlackBars {
public:
    /// Size of all pictures in pixels, at least 1 x 1.
    BlackBars(int width, int height);

    /// Adds a picture: R, G, B, A of 8 bits each, rows from the top.
    void add(std::span<const std::uint8_t> rgba);

    /// Returns the smallest rectangle that contains all that is not black, extended to even positions. Empty
    /// if there is no bar of at least 1 % of a side, if no picture was bright enough, or if less than a
    /// quarter of the area would remain.
    std::optional<PixelRectangle> picture() const;

private:
    int m_width;
    int m_height;
    std::vector<bool> m_rowIsUsed;  ///< not black in some picture
    std::vector<bool> m_columnIsUsed;
};

}  // namespace zeb
