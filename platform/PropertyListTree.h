#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "platform/PropertyValue.h"

namespace zeb {

/// A property list as the library holds it, with the kinds of values that PropertyValue does not know, so
/// that a list can be changed and written again with everything else in it as it was.
class PropertyListTree {
public:
    /// An empty dictionary, to be written as XML.
    PropertyListTree();
    /// The list that `value` makes, to be written as XML. Texts are repaired as by `propertyList::writeXML`.
    explicit PropertyListTree(const PropertyValue& value);
    PropertyListTree(const PropertyListTree& other);
    PropertyListTree(PropertyListTree&&) noexcept;
    PropertyListTree& operator=(PropertyListTree) noexcept;
    ~PropertyListTree();

    /// Reads any form within the bounds of `PropertyList.h`. Throws `PropertyListError`.
    static PropertyListTree parse(std::span<const std::uint8_t> bytes);

    bool isDictionary() const;
    /// The whole list; nothing if its top is of a kind that PropertyValue does not know.
    std::optional<PropertyValue> value() const;

    // For dictionaries only.
    bool contains(const std::string& key) const;
    void set(const std::string& key, const PropertyValue& value);
    void remove(const std::string& key);

    /// Binary if that is what the list was read from, else XML. Throws `PropertyListError` for a list that
    /// `parse` would refuse.
    PropertyData bytes() const;

private:
    enum class Form { xml, binary };
    struct Deleter {
        void operator()(void* node) const noexcept;
    };
    using Node = std::unique_ptr<void, Deleter>;

    PropertyListTree(Node root, Form form);
    static PropertyListTree parseStructured(std::span<const std::uint8_t> bytes, Form form);

    Node m_root;
    Form m_form = Form::xml;
};

}  // namespace zeb
