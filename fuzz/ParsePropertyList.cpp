// Parses property lists of all forms: only the documented error is thrown, and a parsed list can be written
// and read again.

#include "fuzz/FuzzInput.h"
#include "platform/settings/PropertyList.h"
#include "platform/settings/PropertyListTree.h"

using namespace zeb;

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
            fuzz::require(again && propertyList::writeXML(*again) == propertyList::writeXML(*value),
                          "what was written is what was read");
        propertyList::parse(propertyList::writeXML(*value));
    } catch (const PropertyListError&) {
    }
    return 0;
}
