#pragma once

#include "FCPXMLKit/model/FCPXMLVersion.h"
#include "FCPXMLKit/model/Values.h"
#include "FCPXMLKit/xml/FCPXMLError.h"
#include "FCPXMLKit/xml/XMLElement.h"

#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace orvane::fcpxml {

/// Writes the slots of one record into its element. A record tells its slots in their order, each with its
/// name, its default and the versions that have it:
///
///     struct Keyword {
///         static constexpr std::string_view elementName = "keyword";
///         std::optional<std::string> value;
///         template <class Writer> void slots(Writer& writer) const { writer.attribute("value", value); }
///     };
///
/// A slot that the document's version does not have is passed over silently.
class SlotWriter {
  public:
    SlotWriter(XMLElement& element, FCPXMLVersion version) : element_(element), version_(version) {}

    /// Written when there is a value.
    template <class T>
    void attribute(std::string_view name, const std::optional<T>& value, FCPXMLVersionRange versions = {}) {
        if (value && versions.contains(version_)) add(name, *value);
    }
    /// Written when the value is not the default.
    template <class T>
    void attribute(std::string_view name, const T& value, const std::type_identity_t<T>& defaultValue,
                   FCPXMLVersionRange versions = {}) {
        if (!(value == defaultValue) && versions.contains(version_)) add(name, value);
    }
    /// Written always.
    template <class T>
    void always(std::string_view name, const T& value, FCPXMLVersionRange versions = {}) {
        if (versions.contains(version_)) add(name, value);
    }
    /// Throws FCPXMLError without a value.
    template <class T>
    void required(std::string_view name, std::string_view type, const std::optional<T>& value,
                  FCPXMLVersionRange versions = {}) {
        if (!versions.contains(version_)) return;
        if (!value) throw FCPXMLError::uninitializedAttribute(type, name);
        add(name, *value);
    }

    template <class R>
    void child(const std::optional<R>& record, FCPXMLVersionRange versions = {}) {
        if (record && versions.contains(version_)) append(*record);
    }
    template <class R>
    void child(const R& record, FCPXMLVersionRange versions = {}) {
        if (versions.contains(version_)) append(record);
    }
    template <class R>
    void children(const std::vector<R>& records, FCPXMLVersionRange versions = {}) {
        if (!versions.contains(version_)) return;
        element_.children.reserve(element_.children.size() + records.size());
        for (const R& record : records) append(record);
    }
    /// The slots of a group record, in this place and in this element.
    template <class R>
    void embedded(const R& record) {
        record.slots(*this);
    }

  private:
    template <class T>
    void add(std::string_view name, const T& value) {
        element_.attributes.push_back({name, std::string(attributeText(value))});
    }
    template <class T>
    void add(std::string_view name, const std::vector<T>& values) {
        if (values.empty()) return;
        std::string text;
        for (const T& value : values) {
            if (!text.empty()) text += ", ";
            text += attributeText(value);
        }
        element_.attributes.push_back({name, std::move(text)});
    }
    template <class... R>
    void append(const std::variant<R...>& item) {
        std::visit([this](const auto& record) { append(record); }, item);
    }
    template <class R>
    void append(const R& record) {
        XMLElement& element = element_.appendChild(R::elementName);
        element.attributes.reserve(attributesReserved);
        SlotWriter writer(element, version_);
        record.slots(writer);
    }

    /// What most elements of a clip have; a few more cost one reallocation.
    static constexpr std::size_t attributesReserved = 9;

    XMLElement& element_;
    FCPXMLVersion version_;
};

} // namespace orvane::fcpxml
