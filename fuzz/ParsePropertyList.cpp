// Property lists of all forms: nothing but the documented error, and what was read can be written and read
// again.

#include "fuzz/FuzzInput.h"
#include "platform/PropertyList.h"
#include "platform/PropertyListTree.h"

using namespace zeb;

namespace {

/// Apart from numbers that are none, which differ from themselves.
bool isSame(const PropertyValue& one, const PropertyValue& other) {
    if (const auto* number = one.as<double>(); number != nullptr && *number != *number) {
        const auto* second = other.as<double>();
        return second != nullptr && *second != *second;
    }
    if (const auto* array = one.as<PropertyArray>()) {
        const auto* second = other.as<PropertyArray>();
        return second != nullptr && std::ranges::equal(*array, *second, isSame);
    }
    if (const auto* dictionary = one.as<PropertyDictionary>()) {
        const auto* second = other.as<PropertyDictionary>();
        return second != nullptr &&
               std::ranges::equal(*dictionary, *second, [](const auto& left, const auto& right) {
                   return left.first == right.first && isSame(left.second, right.second);
               });
    }
    return one == other;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::Bytes bytes(data, data + size);
    try {
        PropertyListTree tree = PropertyListTree::parse(bytes);
        const auto value = tree.value();
        if (tree.isDictionary()) {
            tree.set("zeb", 1);
            fuzz::require(tree.contains("zeb"), "a key that was set is there");
            tree.remove("zeb");
        }
        const fuzz::Bytes written = tree.bytes();
        if (!value) return 0;
        const auto again = PropertyListTree::parse(written).value();
        const auto* dictionary = value->as<PropertyDictionary>();
        if (dictionary == nullptr || !dictionary->contains("zeb"))
            fuzz::require(again && isSame(*again, *value), "what was written is what was read");
        propertyList::parse(propertyList::writeXML(*value));
    } catch (const PropertyListError&) {
    }
    return 0;
}
