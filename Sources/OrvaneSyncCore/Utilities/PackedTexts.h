#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// A list of texts in one block of memory, for tables of millions of cells. Each text costs four bytes
/// besides its characters. All texts together have at most `mostBytes` bytes. A plain value.
class PackedTexts {
  public:
    static constexpr std::size_t mostBytes = 0xFFFFFFFF;

    /// Reserves memory for that many texts and bytes.
    void reserve(std::size_t texts, std::size_t bytes);
    /// Appends to the unfinished text.
    void extend(std::string_view piece) { bytes_ += piece; }
    /// Ends the unfinished text and begins the next one.
    void finish() { ends_.push_back(static_cast<std::uint32_t>(bytes_.size())); }
    void append(std::string_view text);

    std::size_t size() const { return ends_.size(); }
    bool empty() const { return ends_.empty(); }
    /// Valid until the list changes.
    std::string_view operator[](std::size_t index) const;
    /// For a loop over all texts.
    class Iterator {
      public:
        Iterator(const PackedTexts& texts, std::size_t index) : texts_(&texts), index_(index) {}
        std::string_view operator*() const { return (*texts_)[index_]; }
        Iterator& operator++() {
            ++index_;
            return *this;
        }
        bool operator==(const Iterator&) const = default;

      private:
        const PackedTexts* texts_;
        std::size_t index_;
    };
    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, size()}; }

  private:
    std::string bytes_;
    std::vector<std::uint32_t> ends_;
};

} // namespace orvane
