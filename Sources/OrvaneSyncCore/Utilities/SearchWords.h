#pragma once

#include "Platform/Text.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The text of a search field: words separated by blanks, in any case and order.
class SearchWords {
  public:
    SearchWords() = default;
    explicit SearchWords(std::string_view typed) {
        const std::string text = platform::text::lowercased(typed);
        std::string_view rest = platform::text::trimmed(text);
        for (; !rest.empty(); rest = platform::text::trimmed(rest)) {
            const std::size_t end = std::min(rest.find(' '), rest.size());
            words_.emplace_back(rest.substr(0, end));
            rest.remove_prefix(end);
        }
    }

    bool isEmpty() const { return words_.empty(); }
    /// Whether each of the words is in the text; true if there are no words.
    bool areIn(std::string_view text) const {
        if (words_.empty()) return true;
        const std::string in = platform::text::lowercased(text);
        return std::ranges::all_of(
            words_, [&](const std::string& word) { return in.find(word) != std::string::npos; });
    }

  private:
    std::vector<std::string> words_; ///< lower case
};

} // namespace orvane
