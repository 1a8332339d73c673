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

/// A value of a parsed text, read in place; for thousands of records, which `JSON` would first build as a
/// tree. It answers as `JSON` does, except that the first of two equal keys counts. The parser states how
/// long it is valid.
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
    /// The value with everything in it, to keep.
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

/// The members of one object as a list, for a caller that reads many of them.
class JSONMembers {
  public:
    /// None for a value of another kind.
    explicit JSONMembers(const JSONView& object);
    bool isObject() const { return isObject_; }
    std::optional<JSONView> find(std::string_view key) const;
    /// In the order of the text; keys are unescaped.
    const std::vector<std::pair<std::string_view, JSONView>>& all() const { return members_; }

  private:
    bool isObject_;
    std::vector<std::pair<std::string_view, JSONView>> members_;
};

/// Parses one text after another into the same memory. One thread at a time.
class JSONParser {
  public:
    JSONParser();
    ~JSONParser();
    JSONParser(const JSONParser&) = delete;
    JSONParser& operator=(const JSONParser&) = delete;

    /// The views are valid until the next call or the end of the parser; the text may be destroyed at once.
    /// Throws JSONError as `JSON::parse` does.
    JSONView parse(std::string_view text);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Visits the records of a big object, such as a cache of thousands of which few are needed: each member's
/// key, unescaped, and the text of its value as it is written, a view into `text`. Adds padding to the end of
/// the text, which may move it before the first visit. Every value must be an object. Only the structure is
/// checked (strings, brackets, UTF-8); errors within a record appear when it is parsed. Throws JSONError,
/// also after some visits.
void forEachRecord(std::string& text,
                   const std::function<void(std::string_view key, std::string_view record)>& visit);

} // namespace orvane::platform
