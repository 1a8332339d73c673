#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace orvane::platform {

/// A text that is not JSON. The description says what is wrong.
class JSONError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// One JSON value. A plain value type: copies are deep. Numbers keep their kind (a number without point or
/// exponent is an integer), so that every number is written back exactly as it was read.
class JSON {
  public:
    using Array = std::vector<JSON>;
    /// Members in the order of insertion; a key occurs once. Writing sorts them by key.
    using Object = std::vector<std::pair<std::string, JSON>>;

    enum class Layout { compact, pretty };

    JSON() = default;
    JSON(std::nullptr_t) {}
    JSON(bool value) : value_(value) {}
    JSON(int value) : value_(static_cast<std::int64_t>(value)) {}
    JSON(unsigned value) : value_(static_cast<std::int64_t>(value)) {}
    JSON(std::int64_t value) : value_(value) {}
    JSON(std::uint64_t value) : value_(value) {}
    /// NaN and infinities have no JSON form and are written as null.
    JSON(double value) : value_(value) {}
    JSON(const char* value) : JSON(std::string(value)) {}
    JSON(std::string_view value) : JSON(std::string(value)) {}
    JSON(std::string value) : value_(Box(std::move(value))) {}
    JSON(Array value) : value_(Box(std::move(value))) {}
    JSON(Object value) : value_(Box(std::move(value))) {}

    static JSON object() { return JSON(Object{}); }
    static JSON array() { return JSON(Array{}); }

    /// The whole text must be one value. A key that occurs twice keeps its last value. Throws JSONError, also
    /// for nesting deeper than 512, text that is not UTF-8, numbers beyond 64-bit integers and doubles, and a
    /// long text that consists of tiny values, which would take many times its size in memory
    /// (`densestText`).
    static JSON parse(std::string_view text);
    /// Least average number of bytes for each value, in a text of more than `fewValues`. Our own records have
    /// 30, and 21 without blanks.
    static constexpr std::size_t densestText = 16;
    static constexpr std::size_t fewValues = 100'000;

    /// UTF-8, keys sorted by bytes; bytes that are not UTF-8 become U+FFFD. Doubles print in their shortest
    /// form that reads back equal, with ".0" where they are whole, so that they are read as doubles again.
    /// `depth` is the nesting depth at which the value will be placed in a longer pretty text.
    std::string dump(Layout layout = Layout::compact, std::size_t depth = 0) const;

    bool isNull() const { return std::holds_alternative<std::monostate>(value_); }
    bool isObject() const { return std::holds_alternative<Box<Object>>(value_); }
    bool isArray() const { return std::holds_alternative<Box<Array>>(value_); }

    /// Each returns nothing when the value is of another kind.
    std::optional<bool> boolean() const;
    /// Integers, and doubles with a whole value that fits.
    std::optional<std::int64_t> integer() const;
    std::optional<std::uint64_t> unsignedInteger() const;
    /// Any number.
    std::optional<double> number() const;
    const std::string* string() const { return boxed<std::string>(*this); }
    const Array* elements() const { return boxed<Array>(*this); }
    Array* elements() { return boxed<Array>(*this); }
    const Object* members() const { return boxed<Object>(*this); }
    Object* members() { return boxed<Object>(*this); }

    /// The member of an object, or nothing.
    const JSON* find(std::string_view key) const;
    /// Sets a member; a null value becomes an empty object first. Any other kind is a bug of the caller.
    void set(std::string_view key, JSON value);
    /// Sets a member only if there is a value: an absent optional is left out.
    template <class T>
    void setIfPresent(std::string_view key, const std::optional<T>& value) {
        if (value) set(key, JSON(*value));
    }
    void remove(std::string_view key);
    /// Appends to an array; a null value becomes an empty array first.
    void append(JSON value);

    /// Numbers are equal by value whatever their kind; members of objects in any order.
    bool operator==(const JSON& other) const;

  private:
    /// A value larger than a number is stored separately, so that every JSON takes 16 bytes.
    template <class T>
    class Box {
      public:
        explicit Box(T value) : value_(std::make_unique<T>(std::move(value))) {}
        Box(const Box& other) : value_(other.value_ ? std::make_unique<T>(*other.value_) : nullptr) {}
        Box(Box&&) noexcept = default;
        Box& operator=(Box other) noexcept {
            value_ = std::move(other.value_);
            return *this;
        }
        ~Box() = default;

        T* get() const { return value_.get(); }
        bool operator==(const Box& other) const { return *value_ == *other.value_; }

      private:
        std::unique_ptr<T> value_; ///< null after it was moved from
    };
    template <class T>
    static T* boxed(const JSON& json) {
        const auto* box = std::get_if<Box<T>>(&json.value_);
        return box == nullptr ? nullptr : box->get();
    }
    void write(std::string& out, Layout layout, std::size_t depth) const;

    std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, Box<std::string>, Box<Array>,
                 Box<Object>>
        value_;
};

} // namespace orvane::platform
