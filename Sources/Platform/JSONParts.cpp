#include "Platform/JSONParts.h"

#include "Platform/SimdJSON.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cstddef>

namespace orvane::platform {

namespace {

constexpr std::string_view blanks = " \t\r\n";

/// Walks through the parts of one list or object.
class PartReader {
  public:
    PartReader(std::string_view text, const std::stop_token& stop) : text_(text), check_(stop) {}

    /// The first character of the next value or separator; 0 at the end.
    char next() {
        at_ = std::min(text_.find_first_not_of(blanks, at_), text_.size());
        return at_ < text_.size() ? text_[at_] : '\0';
    }
    void expect(char separator) {
        if (next() != separator) fail();
        ++at_;
    }
    /// Calls `readPart` for each part between the brackets; after them must be nothing.
    template <class ReadPart>
    void readAll(char open, char close, const ReadPart& readPart) {
        expect(open);
        if (next() != close) {
            readPart();
            while (next() == ',') {
                expect(',');
                readPart();
            }
        }
        expect(close);
        if (next() != '\0' || at_ < text_.size()) throw JSONError("there is text behind the value");
    }
    std::string_view value() {
        const char first = next();
        const std::size_t begin = at_;
        if (first == '{' || first == '[')
            skipBrackets();
        else if (first == '"')
            skipString();
        else
            at_ = std::min(text_.find_first_of(",]} \t\r\n", at_), text_.size());
        if (at_ == begin) fail();
        return text_.substr(begin, at_ - begin);
    }

  private:
    [[noreturn]] static void fail() { throw JSONError(simdjson::error_message(simdjson::TAPE_ERROR)); }

    /// Whether each bracket is closed by its own kind is found when the part is parsed.
    void skipBrackets() {
        for (std::size_t depth = 0; at_ < text_.size(); ++at_) {
            const char sign = text_[at_];
            if (sign == '"') {
                skipString();
                --at_;
            } else if (sign == '{' || sign == '[') {
                check_();
                ++depth;
            } else if ((sign == '}' || sign == ']') && --depth == 0) {
                ++at_;
                return;
            }
        }
        fail();
    }
    void skipString() {
        check_();
        const std::size_t begin = at_;
        for (;;) {
            at_ = text_.find('"', at_ + 1);
            if (at_ == std::string_view::npos) {
                at_ = text_.size();
                fail();
            }
            std::size_t first = at_; // of the backslashes before the quote
            while (first - 1 > begin && text_[first - 1] == '\\') --first;
            if ((at_ - first) % 2 == 0) break;
        }
        ++at_;
    }

    std::string_view text_;
    StopCheck check_;
    std::size_t at_ = 0;
};

/// False for a text of another kind.
bool begins(std::string_view& text, char bracket) {
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos || text[first] != bracket) return false;
    refuseTinyValues(text);
    return true;
}

} // namespace

std::optional<std::vector<std::string_view>> listParts(std::string_view text, const std::stop_token& stop) {
    if (!begins(text, '[')) return std::nullopt;
    std::vector<std::string_view> parts;
    PartReader reader(text, stop);
    reader.readAll('[', ']', [&] { parts.push_back(reader.value()); });
    return parts;
}

std::optional<JSONMemberParts> memberParts(std::string_view text, const std::stop_token& stop) {
    if (!begins(text, '{')) return std::nullopt;
    JSONMemberParts parts;
    PartReader reader(text, stop);
    reader.readAll('{', '}', [&] {
        const JSON key = JSON::parse(reader.value());
        if (key.string() == nullptr) throw JSONError("a key is no text");
        reader.expect(':');
        parts.emplace_back(*key.string(), reader.value());
    });
    return parts;
}

} // namespace orvane::platform
