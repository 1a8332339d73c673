#pragma once

#include "FCPXMLKit/model/FCPXMLVersion.h"
#include "FCPXMLKit/model/Values.h"
#include "FCPXMLKit/xml/FCPXMLError.h"
#include "FCPXMLKit/xml/XMLElement.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace orvane::fcpxml {

/// Writes the slots of one record into its element. A record lists its slots in order, each with its
/// name, its default and the versions that have it:
///
///     struct Keyword {
///         static constexpr std::string_view elementName = "keyword";
///         std::optional<std::string> value;
///         template <class Writer> void slots(Writer& writer) const { writer.attribute("value", value); }
///     };
///
/// A slot that the document's version does not have is left out silently.
class SlotWriter {
  public:
    /// What the writers of all elements of a document share.
    class Shared {
      public:
        explicit Shared(XMLArena& arena) {
            times_.fill({Time::zero(), arena.copy(attributeText(Time::zero()))});
        }

      private:
        friend SlotWriter;
        struct KnownTime {
            Time time;
            std::string_view text;
        };
        std::vector<XMLAttribute> pending_; ///< of unfinished elements; an element's come after its parent's
        std::array<KnownTime, 4> times_;    ///< the times that were written last
        std::size_t oldestTime_ = 0;
    };

    /// Writes the whole record into an element that is still empty.
    template <class R>
    static void write(R& record, XMLElement& element, FCPXMLVersion version, Shared& shared) {
        SlotWriter writer(element, version, shared);
        record.slots(writer);
        writer.finish();
    }

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
    void child(R& record, FCPXMLVersionRange versions = {}) {
        if (versions.contains(version_)) append(record);
    }
    template <class R>
    void children(const std::vector<R>& records, FCPXMLVersionRange versions = {}) {
        if (!versions.contains(version_)) return;
        for (const R& record : records) append(record);
    }
    /// The same, but each record is released as soon as its element is made, so that the records and the
    /// elements of a large document are never in memory together.
    template <class R>
    void consumed(std::vector<R>& records) {
        for (R& record : records) {
            append(record);
            record = R();
        }
        records = {};
    }
    /// Elements that an `ElementMaker` of this document made.
    void made(const std::vector<XMLElement*>& elements) {
        for (XMLElement* element : elements) element_.adoptChild(*element);
    }
    /// Writes the slots of a group record at this place into this element.
    template <class R>
    void embedded(const R& record) {
        record.slots(*this);
    }

  private:
    SlotWriter(XMLElement& element, FCPXMLVersion version, Shared& shared)
        : element_(element), version_(version), shared_(shared), firstPending_(shared.pending_.size()) {}

    void finish() {
        element_.setAttributes(std::span(shared_.pending_).subspan(firstPending_));
        shared_.pending_.resize(firstPending_);
    }
    void add(std::string_view name, std::string_view text) {
        shared_.pending_.push_back({name, element_.arena().copy(text)});
    }
    template <class T>
    void add(std::string_view name, const T& value) {
        add(name, std::string_view(attributeText(value)));
    }
    /// The elements of a clip repeat the same few times.
    void add(std::string_view name, const Time& value) {
        auto known = std::ranges::find(shared_.times_, value, &Shared::KnownTime::time);
        if (known == shared_.times_.end()) {
            known = shared_.times_.begin() + static_cast<std::ptrdiff_t>(shared_.oldestTime_);
            shared_.oldestTime_ = (shared_.oldestTime_ + 1) % shared_.times_.size();
            *known = {value, element_.arena().copy(attributeText(value))};
        }
        shared_.pending_.push_back({name, known->text});
    }
    template <class T>
    void add(std::string_view name, const std::vector<T>& values) {
        if (values.empty()) return;
        std::string text;
        for (const T& value : values) {
            if (!text.empty()) text += ", ";
            text += attributeText(value);
        }
        add(name, std::string_view(text));
    }
    template <class... R>
    void append(const std::variant<R...>& item) {
        std::visit([this](const auto& record) { this->append(record); }, item);
    }
    template <class R>
    requires requires { R::elementName; }
    void append(R& record) { write(record, element_.appendChild(R::elementName), version_, shared_); }

    XMLElement& element_;
    FCPXMLVersion version_;
    Shared& shared_;
    std::size_t firstPending_; ///< in the shared list: this element's attributes begin here
};

/// Makes the elements of a document's parts one by one, so that the records of a large document are never in
/// memory together.
class ElementMaker {
  public:
    ElementMaker(XMLDocument& document, FCPXMLVersion version)
        : document_(document), version_(version), shared_(document.arena()) {}

    /// The record's element, for the `made` of the record that contains it.
    template <class R>
    XMLElement* make(const R& record) {
        XMLElement& element = document_.makeElement(R::elementName);
        SlotWriter::write(record, element, version_, shared_);
        return &element;
    }
    template <class... R>
    XMLElement* make(const std::variant<R...>& record) {
        return std::visit([this](const auto& one) { return make(one); }, record);
    }

  private:
    XMLDocument& document_;
    const FCPXMLVersion version_;
    SlotWriter::Shared shared_;
};

} // namespace orvane::fcpxml
