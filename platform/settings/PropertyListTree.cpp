#include "platform/settings/PropertyListTree.h"

#include <plist/plist.h>

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <limits>
#include <new>
#include <string_view>
#include <utility>

#include "platform/settings/OldPropertyList.h"
#include "platform/settings/PropertyList.h"
#include "platform/settings/PropertyListGuard.h"
#include "platform/text/UTF8.h"

namespace zeb {
namespace {

struct Free {
    void operator()(void* memory) const noexcept { std::free(memory); }
};
template <typename T>
using Allocated = std::unique_ptr<T, Free>;

/// Repairs a text. The library ends a text at its first zero byte and writes control characters unchanged.
std::string asXMLText(const std::string& text) {
    std::string clean;
    for (const char32_t character : decodeUTF8(text)) {
        const bool isForbidden =
            (character < 0x20 && character != '\t' && character != '\n' && character != '\r') ||
            character == 0xFFFE || character == 0xFFFF;
        appendUTF8(clean, isForbidden ? replacementCharacter : character);
    }
    return clean;
}

plist_t checked(plist_t node) {
    if (node == nullptr) throw std::bad_alloc();
    return node;
}

plist_t makeNode(const PropertyValue& value);

struct NodeMaker {
    plist_t operator()(std::int64_t number) const {
        return plist_new_uint(static_cast<std::uint64_t>(number));
    }
    plist_t operator()(double number) const { return plist_new_real(number); }
    plist_t operator()(bool truth) const { return plist_new_bool(truth ? 1 : 0); }
    plist_t operator()(const std::string& text) const { return plist_new_string(asXMLText(text).c_str()); }
    plist_t operator()(const PropertyData& bytes) const {
        static constexpr std::uint8_t nothing = 0;  // the library copies from a pointer that must not be null
        const std::uint8_t* begin = bytes.empty() ? &nothing : bytes.data();
        return plist_new_data(reinterpret_cast<const char*>(begin), bytes.size());
    }
    plist_t operator()(const PropertyArray& array) const {
        plist_t node = checked(plist_new_array());
        for (const PropertyValue& element : array)
            plist_array_append_item(node, makeNode(element));
        return node;
    }
    plist_t operator()(const PropertyDictionary& dictionary) const {
        plist_t node = checked(plist_new_dict());
        for (const auto& [key, element] : dictionary)
            plist_dict_set_item(node, asXMLText(key).c_str(), makeNode(element));
        return node;
    }
};

plist_t makeNode(const PropertyValue& value) {
    return checked(std::visit(NodeMaker{}, value.value()));
}

/// The library has no function for the sign of a number; only its written form shows it.
PropertyValue numberOf(plist_t node) {
    std::uint64_t bits = 0;
    plist_get_uint_val(node, &bits);
    if (bits > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) {
        char* written = nullptr;
        std::uint32_t size = 0;
        plist_to_xml(node, &written, &size);
        const Allocated<char> owner(written);
        const std::string_view text(written, written == nullptr ? 0 : size);
        if (text.find("<integer>-") == std::string_view::npos) return static_cast<double>(bits);
    }
    return static_cast<std::int64_t>(bits);
}

std::optional<PropertyValue> valueOf(plist_t node, int depth);

PropertyValue arrayOf(plist_t node, int depth) {
    PropertyArray array;
    plist_array_iter position = nullptr;
    plist_array_new_iter(node, &position);
    const Allocated<void> owner(position);
    plist_t element = nullptr;
    while (plist_array_next_item(node, position, &element), element != nullptr) {
        if (auto value = valueOf(element, depth)) array.push_back(*std::move(value));
    }
    return array;
}

PropertyValue dictionaryOf(plist_t node, int depth) {
    PropertyDictionary dictionary;
    plist_dict_iter position = nullptr;
    plist_dict_new_iter(node, &position);
    const Allocated<void> owner(position);
    while (true) {
        char* key = nullptr;
        plist_t element = nullptr;
        plist_dict_next_item(node, position, &key, &element);
        const Allocated<char> keyOwner(key);
        if (element == nullptr) break;
        auto value = valueOf(element, depth);
        if (value && key != nullptr) dictionary.insert_or_assign(key, *std::move(value));
    }
    return dictionary;
}

std::optional<PropertyValue> valueOf(plist_t node, int depth) {
    assert(depth <= propertyList::greatestDepth + 1);  // guaranteed by the checks before parsing
    switch (plist_get_node_type(node)) {
        case PLIST_BOOLEAN: {
            std::uint8_t truth = 0;
            plist_get_bool_val(node, &truth);
            return truth != 0;
        }
        case PLIST_UINT:
            return numberOf(node);
        case PLIST_REAL: {
            double number = 0;
            plist_get_real_val(node, &number);
            return number;
        }
        case PLIST_STRING: {
            std::uint64_t size = 0;
            const char* text = plist_get_string_ptr(node, &size);
            return repairedUTF8(text == nullptr ? std::string() : std::string(text, size));
        }
        case PLIST_DATA: {
            std::uint64_t size = 0;
            const char* bytes = plist_get_data_ptr(node, &size);
            return bytes == nullptr ? PropertyData() : PropertyData(bytes, bytes + size);
        }
        case PLIST_ARRAY:
            return arrayOf(node, depth + 1);
        case PLIST_DICT:
            return dictionaryOf(node, depth + 1);
        default:
            return std::nullopt;
    }
}

std::string_view asText(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

void PropertyListTree::Deleter::operator()(void* node) const noexcept {
    plist_free(node);
}

PropertyListTree::PropertyListTree(Node root, Form form) : m_root(std::move(root)), m_form(form) {}
PropertyListTree::PropertyListTree() : m_root(checked(plist_new_dict())) {}
PropertyListTree::PropertyListTree(const PropertyValue& value) : m_root(makeNode(value)) {}
PropertyListTree::PropertyListTree(const PropertyListTree& other)
    : m_root(checked(plist_copy(other.m_root.get()))), m_form(other.m_form) {}
PropertyListTree::PropertyListTree(PropertyListTree&&) noexcept = default;
PropertyListTree& PropertyListTree::operator=(PropertyListTree other) noexcept {
    std::swap(m_root, other.m_root);
    m_form = other.m_form;
    return *this;
}
PropertyListTree::~PropertyListTree() = default;

PropertyListTree PropertyListTree::parse(std::span<const std::uint8_t> bytes) {
    const std::string_view text = asText(bytes);
    if (text.size() > propertyList::largestSize) throw PropertyListError("too large");
    if (text.starts_with("bplist")) {
        propertyList::checkBinary(bytes);
        return parseStructured(bytes, Form::binary);
    }
    const std::size_t byteOrderMark = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
    const std::size_t first = text.find_first_not_of(" \t\r\n", byteOrderMark);
    const bool beginsElement = first < text.size() && text[first] == '<' && first + 1 < text.size() &&
                               (text[first + 1] == '?' || text[first + 1] == '!' || text[first + 1] == 'p');
    if (beginsElement) {
        propertyList::checkXML(text.substr(first));
        return parseStructured(bytes.subspan(first), Form::xml);
    }
    return PropertyListTree(propertyList::parseOld(bytes));
}

PropertyListTree PropertyListTree::parseStructured(std::span<const std::uint8_t> bytes, Form form) {
    plist_t root = nullptr;
    plist_from_memory(asText(bytes).data(), static_cast<std::uint32_t>(bytes.size()), &root);
    if (root == nullptr) throw PropertyListError("not a property list");
    return {Node(root), form};
}

bool PropertyListTree::isDictionary() const {
    return plist_get_node_type(m_root.get()) == PLIST_DICT;
}

std::optional<PropertyValue> PropertyListTree::value() const {
    return valueOf(m_root.get(), 0);
}

bool PropertyListTree::contains(const std::string& key) const {
    return plist_dict_get_item(m_root.get(), key.c_str()) != nullptr;
}

void PropertyListTree::set(const std::string& key, const PropertyValue& value) {
    plist_dict_set_item(m_root.get(), asXMLText(key).c_str(), makeNode(value));
}

void PropertyListTree::remove(const std::string& key) {
    if (contains(key)) plist_dict_remove_item(m_root.get(), key.c_str());
}

PropertyData PropertyListTree::bytes() const {
    char* written = nullptr;
    std::uint32_t size = 0;
    const auto write = m_form == Form::binary ? plist_to_bin : plist_to_xml;
    write(m_root.get(), &written, &size);
    const Allocated<char> owner(written);
    if (written == nullptr) throw PropertyListError("cannot be written");
    PropertyData bytes(written, written + size);
    // Parse the result: bytes that cannot be read again would be lost.
    parse(bytes);
    return bytes;
}

}  // namespace zeb
