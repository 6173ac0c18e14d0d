#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "platform/settings/PropertyValue.h"

namespace zeb {

/// A property list in the representation of libplist. It keeps the kinds of values that PropertyValue cannot
/// hold, so that a list can be edited and written with all other values unchanged.
class PropertyListTree {
public:
    /// Creates an empty dictionary, written as XML.
    PropertyListTree();
    /// Creates the list for `value`, written as XML. Texts are repaired as in `propertyList::writeXML`.
    explicit PropertyListTree(const PropertyValue& value);
    PropertyListTree(const PropertyListTree& other);
    PropertyListTree(PropertyListTree&&) noexcept;
    PropertyListTree& operator=(PropertyListTree) noexcept;
    ~PropertyListTree();

    /// Reads any form within the limits of `PropertyList.h`. Throws `PropertyListError`.
    static PropertyListTree parse(std::span<const std::uint8_t> bytes);

    bool isDictionary() const;
    /// Returns the whole list; nothing if its root is of a kind that PropertyValue cannot hold.
    std::optional<PropertyValue> value() const;

    // For dictionaries only.
    bool contains(const std::string& key) const;
    void set(const std::string& key, const PropertyValue& value);
    void remove(const std::string& key);

    /// Returns the list in binary form if it was read from binary form, else as XML. Throws
    /// `PropertyListError` for a list that `parse` would reject.
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
