#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace zeb {

/// Does not initialise new elements. For buffers that are filled completely afterwards.
template <typename Value>
struct UninitialisedAllocator : std::allocator<Value> {
    template <typename Other>
    struct rebind {
        using other = UninitialisedAllocator<Other>;
    };

    template <typename Element>
    void construct(Element* place) noexcept {
        ::new (static_cast<void*>(place)) Element;
    }
    template <typename Element, typename... Arguments>
    void construct(Element* place, Arguments&&... arguments) {
        ::new (static_cast<void*>(place)) Element(std::forward<Arguments>(arguments)...);
    }
};

/// The bytes of a picture. `resize` does not clear them.
using PixelBytes = std::vector<std::uint8_t, UninitialisedAllocator<std::uint8_t>>;

}  // namespace zeb
