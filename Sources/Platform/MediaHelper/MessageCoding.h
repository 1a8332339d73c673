#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

/// The bytes of messages. The helper reads files that may be made to attack it, so the program checks every
/// length in an answer.
namespace orvane::platform::helper {

/// The bytes are not a message of the expected form.
class MessageError : public std::runtime_error {
  public:
    MessageError() : std::runtime_error("a message is damaged") {}
};

template <class T>
concept Plain = std::is_arithmetic_v<T> || std::is_enum_v<T>;

class MessageWriter {
  public:
    template <class... Values>
    std::string operator()(Values&&... values) {
        (put(values), ...);
        return bytes_;
    }

  private:
    template <Plain T>
    void put(T value) {
        bytes_.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    void put(const std::string& text) {
        put(text.size());
        bytes_ += text;
    }
    template <class T>
    void put(const std::optional<T>& value) {
        put(value.has_value());
        if (value) put(*value);
    }
    template <class T>
    void put(const std::vector<T>& list) {
        put(list.size());
        for (const T& value : list) put(value);
    }
    template <class Record>
    requires(!Plain<Record>) void put(const Record& record) {
        Members members{*this};
        exchange(members, const_cast<Record&>(record)); // which only reads it
    }
    struct Members {
        MessageWriter& writer;
        template <class... Values>
        void operator()(Values&... values) {
            (writer.put(values), ...);
        }
    };

    std::string bytes_;
};

/// Throws MessageError where the bytes end early or a length is wrong.
class MessageReader {
  public:
    explicit MessageReader(std::string_view bytes) : rest_(bytes) {}

    template <class T>
    T next() {
        T value{};
        get(value);
        return value;
    }

  private:
    std::string_view take(std::size_t count) {
        if (count > rest_.size()) throw MessageError();
        const auto taken = rest_.substr(0, count);
        rest_.remove_prefix(count);
        return taken;
    }
    void get(bool& value) { value = next<std::uint8_t>() != 0; }
    template <Plain T>
    void get(T& value) {
        std::memcpy(&value, take(sizeof value).data(), sizeof value);
    }
    void get(std::string& text) { text = take(next<std::size_t>()); }
    template <class T>
    void get(std::optional<T>& value) {
        if (next<bool>()) value = next<T>();
    }
    template <class T>
    void get(std::vector<T>& list) {
        // Grows with the data that is present, not with the stated count.
        for (auto count = next<std::size_t>(); count > 0; --count) list.push_back(next<T>());
    }
    template <class Record>
    requires(!Plain<Record>) void get(Record& record) {
        Members members{*this};
        exchange(members, record);
    }
    struct Members {
        MessageReader& reader;
        template <class... Values>
        void operator()(Values&... values) {
            (reader.get(values), ...);
        }
    };

    std::string_view rest_;
};

} // namespace orvane::platform::helper
