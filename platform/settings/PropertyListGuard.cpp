#include "platform/settings/PropertyListGuard.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "platform/settings/PropertyList.h"

namespace zeb::propertyList {
namespace {

constexpr std::string_view space = " \t\r\n";

class XMLScanner {
public:
    explicit XMLScanner(std::string_view text) : m_rest(text) {}

    void scan() {
        if (m_rest.find('\0') != std::string_view::npos) refuse();
        while (skipTo("<")) {
            if (skip("!--")) {
                require(skipTo("-->"));
            } else if (skip("![CDATA[")) {
                require(skipTo("]]>"));
            } else if (skip("?")) {
                skipQuoting("?>");
            } else if (skip("!DOCTYPE")) {
                skipQuoting(">");
            } else {
                scanTag();
            }
        }
        if (m_depth != 0) refuse();
    }

private:
    [[noreturn]] static void refuse() { throw PropertyListError("not a property list in XML"); }
    static void require(bool holds) {
        if (!holds) refuse();
    }

    bool skip(std::string_view start) {
        if (!m_rest.starts_with(start)) return false;
        m_rest.remove_prefix(start.size());
        return true;
    }
    bool skipTo(std::string_view end) {
        const std::size_t place = m_rest.find(end);
        if (place == std::string_view::npos) return false;
        m_rest.remove_prefix(place + end.size());
        return true;
    }

    /// Skips to `end`. Rejects `<` and `>`, which parsers may or may not treat as quoted, and `[`, which
    /// begins entity declarations.
    void skipQuoting(std::string_view end) {
        const std::size_t place = m_rest.find(end);
        require(place != std::string_view::npos);
        std::string_view inside = m_rest.substr(0, place);
        require(inside.find_first_of("<>[") == std::string_view::npos);
        while (true) {
            const std::size_t opening = inside.find_first_of("\"'");
            if (opening == std::string_view::npos) break;
            // Parsers differ on a quote of the other kind inside quotes, so reject it.
            const std::size_t closing = inside.find_first_of("\"'", opening + 1);
            require(closing != std::string_view::npos && inside[closing] == inside[opening]);
            inside.remove_prefix(closing + 1);
        }
        m_rest.remove_prefix(place + end.size());
    }

    void scanTag() {
        const bool isClosing = skip("/");
        const std::string_view name = m_rest.substr(0, m_rest.find_first_of(" \t\r\n/<>"));
        static constexpr std::array<std::string_view, 3> containers = {"plist", "dict", "array"};
        static constexpr std::array<std::string_view, 8> values = {"key",     "string", "data", "date",
                                                                   "integer", "real",   "true", "false"};
        const bool isContainer = std::ranges::find(containers, name) != containers.end();
        require(isContainer || std::ranges::find(values, name) != values.end());
        m_rest.remove_prefix(name.size());
        bool isEmpty = false;
        if (name == "plist" && !isClosing) {
            const std::string_view attributes = m_rest.substr(0, m_rest.find('>'));
            isEmpty = attributes.ends_with('/');
            skipQuoting(">");
        } else {
            m_rest.remove_prefix(std::min(m_rest.find_first_not_of(space), m_rest.size()));
            isEmpty = skip("/");
            require(skip(">") && !(isClosing && isEmpty));
        }
        if (!isClosing && ++m_count > largestCount) throw PropertyListError("too many values");
        if (!isContainer || isEmpty) return;
        m_depth += isClosing ? -1 : 1;
        require(m_depth >= 0);
        if (m_depth > greatestDepth) throw PropertyListError("nested too deeply");
    }

    std::string_view m_rest;
    int m_depth = 0;
    std::size_t m_count = 0;
};

/// Reads a big-endian number of up to 8 bytes.
std::uint64_t number(std::span<const std::uint8_t> bytes) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes)
        value = value << 8 | byte;
    return value;
}

class BinaryScanner {
public:
    explicit BinaryScanner(std::span<const std::uint8_t> bytes) {
        require(bytes.size() >= signatureSize + trailerSize);
        m_objects = bytes.first(bytes.size() - trailerSize);
        const auto trailer = bytes.last(trailerSize);
        m_offsetSize = trailer[6];
        m_referenceSize = trailer[7];
        require(m_offsetSize >= 1 && m_offsetSize <= 8 && m_referenceSize >= 1 && m_referenceSize <= 8);
        m_count = number(trailer.subspan(8, 8));
        m_root = number(trailer.subspan(16, 8));
        const std::uint64_t table = number(trailer.subspan(24, 8));
        require(table >= signatureSize && table <= m_objects.size());
        m_offsets = m_objects.subspan(static_cast<std::size_t>(table));
        require(m_count <= m_offsets.size() / m_offsetSize);
        m_objects = m_objects.first(static_cast<std::size_t>(table));
    }

    void scan() {
        m_extents.resize(static_cast<std::size_t>(m_count));
        extent(m_root, 0);
    }

private:
    static constexpr std::size_t signatureSize = 8;
    static constexpr std::size_t trailerSize = 32;
    /// Limit for shared values: the library builds one copy per reference.
    static constexpr std::uint64_t largestExpansion = 4 * largestSize;

    /// Size of an object including its children.
    struct Extent {
        std::uint64_t count = 1;
        std::uint64_t bytes = 0;
        int height = 1;
    };
    struct Known {
        bool isOpen = false;  ///< on the path from the root to the current object
        std::optional<Extent> extent;
    };

    static void require(bool holds) {
        if (!holds) throw PropertyListError("not a binary property list");
    }

    Extent extent(std::uint64_t object, int depth) {
        require(object < m_count);
        Known& known = m_extents[static_cast<std::size_t>(object)];
        if (known.isOpen) throw PropertyListError("a value that contains itself");
        const int height = known.extent ? known.extent->height : 1;
        if (depth + height > greatestDepth) throw PropertyListError("nested too deeply");
        if (known.extent) return *known.extent;
        known.isOpen = true;
        const Extent found = extentAt(offsetOf(object), depth);
        known.isOpen = false;
        known.extent = found;
        return found;
    }

    std::size_t offsetOf(std::uint64_t object) const {
        const auto entry = m_offsets.subspan(static_cast<std::size_t>(object) * m_offsetSize, m_offsetSize);
        const std::uint64_t offset = number(entry);
        require(offset >= signatureSize && offset < m_objects.size());
        return static_cast<std::size_t>(offset);
    }

    Extent extentAt(std::size_t offset, int depth) {
        const std::uint8_t kind = m_objects[offset] >> 4;
        std::uint64_t size = m_objects[offset] & 0xF;
        auto rest = m_objects.subspan(offset + 1);
        const bool isContainer = kind == 0xA || kind == 0xC || kind == 0xD;
        if (kind == 0x4 || kind == 0x5 || kind == 0x6 || kind == 0x7 || isContainer) {
            if (size == 0xF) size = longSize(rest);
        } else if (kind == 0x0) {
            size = 0;
        } else if (kind >= 0x1 && kind <= 0x3) {
            require(size <= 4);
            size = std::uint64_t{1} << size;
        } else {
            require(kind == 0x8);
            ++size;
        }
        if (isContainer) return extentOfReferences(rest, kind == 0xD ? Pairs::yes : Pairs::no, size, depth);
        const std::uint64_t unit = kind == 0x6 ? 2 : 1;
        require(size <= rest.size() / unit);
        // The library would change such texts, and keys with them, each time it writes the list.
        if (kind == 0x5) requireASCII(rest.first(static_cast<std::size_t>(size)));
        if (kind == 0x6) requireUTF16(rest.first(static_cast<std::size_t>(2 * size)));
        return {1, size * unit, 1};
    }

    static void requireASCII(std::span<const std::uint8_t> text) {
        require(std::ranges::all_of(text, [](std::uint8_t byte) { return byte != 0 && byte < 0x80; }));
    }
    static void requireUTF16(std::span<const std::uint8_t> text) {
        bool isInPair = false;
        for (std::size_t i = 0; i < text.size(); i += 2) {
            const std::uint64_t unit = number(text.subspan(i, 2));
            require(unit != 0 && isInPair == (unit >= 0xDC00 && unit < 0xE000));
            isInPair = unit >= 0xD800 && unit < 0xDC00;
        }
        require(!isInPair);
    }

    /// Reads a size that is stored as a whole number after its object's first byte.
    static std::uint64_t longSize(std::span<const std::uint8_t>& rest) {
        require(!rest.empty() && rest[0] >> 4 == 0x1 && (rest[0] & 0xF) <= 3);
        const std::size_t bytes = std::size_t{1} << (rest[0] & 0xF);
        require(rest.size() > bytes);
        const std::uint64_t size = number(rest.subspan(1, bytes));
        rest = rest.subspan(1 + bytes);
        return size;
    }

    enum class Pairs { no, yes };
    Extent extentOfReferences(std::span<const std::uint8_t> rest, Pairs pairs, std::uint64_t size,
                              int depth) {
        const std::uint64_t perEntry = pairs == Pairs::yes ? 2 : 1;
        require(size <= rest.size() / perEntry / m_referenceSize);
        Extent sum;
        for (std::size_t i = 0; i < size * perEntry; ++i) {
            const Extent part = extent(number(rest.subspan(i * m_referenceSize, m_referenceSize)), depth + 1);
            sum.count += part.count;
            sum.bytes += part.bytes;
            sum.height = std::max(sum.height, part.height + 1);
            // Check after each element, so that many objects on the same bytes cost little time.
            if (sum.count > largestCount || sum.bytes > largestExpansion)
                throw PropertyListError("too many values");
        }
        return sum;
    }

    std::span<const std::uint8_t> m_objects;
    std::span<const std::uint8_t> m_offsets;
    std::size_t m_offsetSize = 0;
    std::size_t m_referenceSize = 0;
    std::uint64_t m_count = 0;
    std::uint64_t m_root = 0;
    std::vector<Known> m_extents;
};

void checkSize(std::size_t size) {
    if (size > largestSize) throw PropertyListError("too large");
}

}  // namespace

void checkXML(std::string_view text) {
    checkSize(text.size());
    XMLScanner(text).scan();
}

void checkBinary(std::span<const std::uint8_t> bytes) {
    checkSize(bytes.size());
    BinaryScanner(bytes).scan();
}

}  // namespace zeb::propertyList
