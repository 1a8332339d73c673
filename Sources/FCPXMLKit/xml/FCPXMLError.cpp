#include "FCPXMLKit/xml/FCPXMLError.h"

namespace orvane::fcpxml {

FCPXMLError FCPXMLError::invalidAttribute(std::string_view name, const std::optional<std::string>& value,
                                          std::string_view reason) {
    std::string text =
        "invalid attribute named " + std::string(name) + " with value of " + value.value_or("<nil>");
    if (!reason.empty()) text.append(" because ").append(reason);
    return {Kind::invalidAttribute, text};
}

FCPXMLError FCPXMLError::uninitializedAttribute(std::string_view type, std::string_view name) {
    return {Kind::uninitializedAttribute,
            "unitialized " + std::string(type) + " attribute named " + std::string(name)};
}

} // namespace orvane::fcpxml
