#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane::fcpxml {

/// The memory of one document's elements and texts, released all at once. A document of ten thousand clips
/// has a million texts, most of them recent repetitions: a repeated text is stored once.
class XMLArena {
  public:
    /// A requested stop is checked every few kilobytes while a tree is built in it, and at every element that
    /// is printed.
    explicit XMLArena(std::stop_token stop = {}) : stop_(std::move(stop)) {}
    const std::stop_token& stopToken() const { return stop_; }

    /// A copy that is valid as long as the arena.
    std::string_view copy(std::string_view text);
    template <class T>
    T* allocate(std::size_t count) {
        static_assert(std::is_trivially_destructible_v<T>);
        return static_cast<T*>(allocateBytes(count * sizeof(T), alignof(T)));
    }

  private:
    void* allocateBytes(std::size_t size, std::size_t alignment);

    std::stop_token stop_;
    std::vector<std::unique_ptr<std::byte[]>> blocks_;
    std::byte* next_ = nullptr;
    std::size_t left_ = 0;
    std::array<std::string_view, 1024> recent_{};
};

/// Names are string literals of this program and are not copied.
struct XMLAttribute {
    std::string_view name;
    std::string_view value; ///< plain text; it is escaped when the document is printed
};

/// One element of a document that is being written. Allocated in the document's arena; the name is a string
/// literal.
class XMLElement {
  public:
    XMLElement(XMLArena& arena, std::string_view name) : arena_(&arena), name_(name) {}
    XMLElement(const XMLElement&) = delete;
    XMLElement& operator=(const XMLElement&) = delete;

    std::string_view name() const { return name_; }

    std::span<const XMLAttribute> attributes() const { return {attributes_, attributeCount_}; }
    /// The value, or null.
    const std::string_view* attribute(std::string_view attributeName) const;
    /// Copies the value.
    void setAttribute(std::string_view attributeName, std::string_view value);
    /// Sets all of them at once; their values are in the arena.
    void setAttributes(std::span<const XMLAttribute> attributes);

    /// Moves from one child to the next.
    class Iterator {
      public:
        explicit Iterator(XMLElement* at) : at_(at) {}
        XMLElement& operator*() const { return *at_; }
        Iterator& operator++() {
            at_ = at_->nextSibling_;
            return *this;
        }
        bool operator==(const Iterator&) const = default;

      private:
        XMLElement* at_;
    };
    struct Children {
        XMLElement* first;
        Iterator begin() const { return Iterator(first); }
        Iterator end() const { return Iterator(nullptr); }
        bool empty() const { return first == nullptr; }
    };
    Children children() const { return {firstChild_}; }
    XMLElement& appendChild(std::string_view childName);
    /// The same with an element of this document that is nobody's child yet.
    void adoptChild(XMLElement& child);
    /// Replaces the children by the same ones in another order.
    void reorderChildren(std::span<XMLElement* const> order);

    XMLArena& arena() const { return *arena_; }

  private:
    XMLArena* arena_;
    std::string_view name_;
    XMLAttribute* attributes_ = nullptr;
    std::size_t attributeCount_ = 0;
    XMLElement* firstChild_ = nullptr;
    XMLElement* lastChild_ = nullptr;
    XMLElement* nextSibling_ = nullptr;
};

/// All elements of that name, depth first, each before its children, the given one included.
std::vector<XMLElement*> findElements(XMLElement& in, std::string_view named);

/// The value of an attribute after a document was written and read: each byte that XML cannot hold (control
/// characters and invalid UTF-8) becomes U+FFFD. Values that have to differ in a document are compared in
/// this form.
std::string readBack(std::string_view value);

/// A tree of elements with its memory.
class XMLDocument {
  public:
    /// Building and printing the document throws platform::Stopped.
    explicit XMLDocument(std::stop_token stop = {}) : arena_(std::make_unique<XMLArena>(std::move(stop))) {}

    XMLArena& arena() { return *arena_; }
    /// Null if the document is empty.
    XMLElement* root() const { return root_; }
    XMLElement& makeRoot(std::string_view name);
    /// An element that is nobody's child yet.
    XMLElement& makeElement(std::string_view name);

    /// UTF-8 with declaration and document type, one element a line, four spaces for each level. Always
    /// well-formed: attributes hold what `readBack` returns. Empty without a root.
    std::string text() const;

  private:
    std::unique_ptr<XMLArena> arena_;
    XMLElement* root_ = nullptr;
};

} // namespace orvane::fcpxml
