#include "platform/settings/PropertyList.h"

#include "platform/settings/PropertyListTree.h"

namespace zeb::propertyList {

PropertyValue parse(std::span<const std::uint8_t> bytes) {
    auto value = PropertyListTree::parse(bytes).value();
    if (!value) throw PropertyListError("a single value of an unknown kind");
    return *std::move(value);
}

PropertyData writeXML(const PropertyValue& value) {
    return PropertyListTree(value).bytes();
}

}  // namespace zeb::propertyList
