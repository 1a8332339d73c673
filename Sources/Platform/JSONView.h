#pragma once

#include "Platform/JSON.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane::platform {

/// A value of a parsed text, read where it lies; for records by the thousand, which `JSON` would first build
/// as a tree. Asks like `JSON` and gives the same answers, but of a key that occurs twice the first member
/// counts. Valid as long as its parser says.
class JSONView {
  public:
    bool isNull() const;
    bool isObject() const;
    std::optional<std::int64_t> integer() const;
    std::optional<std::uint64_t> unsignedInteger() const;
    std::optional<double> number() const;
    std::optional<std::string_view> string() const;
    std::optional<JSONView> find(std::string_view key) const;
    std::optional<std::vector<JSONView>> elements() const;
    /// The value with all that is in it, to keep.
    JSON value() const;

  private:
    friend class JSONParser;
    friend class JSONMembers;
    template <class Element>
    explicit JSONView(const Element& element);
    template <class Element>
    Element as() const;

    std::array<std::uintptr_t, 2> element_{}; ///< the library's own reference, which is plain data
};

/// The members of one object side by side, for a caller that asks for many of them.
class JSONMembers {
  public:
    /// None for a value of another kind.
    explicit JSONMembers(const JSONView& object);
    bool isObject() const { return isObject_; }
    std::optional<JSONView> find(std::string_view key) const;
    /// In the order of the text; the keys are unescaped.
    const std::vector<std::pair<std::string_view, JSONView>>& all() const { return members_; }

  private:
    bool isObject_;
    std::vector<std::pair<std::string_view, JSONView>> members_;
};

/// Parses one text after the other into the same memory. One thread at a time.
class JSONParser {
  public:
    JSONParser();
    ~JSONParser();
    JSONParser(const JSONParser&) = delete;
    JSONParser& operator=(const JSONParser&) = delete;

    /// The views are valid until the next call and no longer than the parser; the text may go at once.
    /// Throws JSONError as `JSON::parse` does.
    JSONView parse(std::string_view text);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Visits the records of a big object, such as a cache of thousands of which few may be asked for: each
/// member's key, unescaped, and the text of its value as it is written, a view into `text`. The text gets
/// room behind its end, and may move for that before the first visit. Every value must be an object. Only
/// the outline is checked (strings, brackets, UTF-8); what a record holds shows when it is parsed. Throws
/// JSONError, also after some visits.
void forEachRecord(std::string& text,
                   const std::function<void(std::string_view key, std::string_view record)>& visit);

} // namespace orvane::platform
