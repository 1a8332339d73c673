#include "OrvaneSyncCLI/Arguments.h"

#include "OrvaneSyncCore/Utilities/NearestWord.h"
#include "Platform/Text.h"

#include <algorithm>

namespace orvane::cli {

namespace {

const Option* find(std::span<const Option> options, std::string_view name) {
    const auto found = std::ranges::find_if(options, [&](const Option& option) {
        return option.name == name || (!option.shortName.empty() && option.shortName == name);
    });
    return found == options.end() ? nullptr : &*found;
}

bool looksLikeOption(std::string_view word) {
    return word.size() > 1 && word.front() == '-' && !numberFrom(word);
}

std::string unknownOption(std::string_view name, std::span<const Option> options) {
    std::vector<std::string_view> names;
    for (const Option& option : options) names.push_back(option.name);
    return "unknown option '" + std::string(name) + "'" + didYouMean(name, names);
}

} // namespace

Arguments Arguments::parse(std::span<const std::string> words, std::span<const Option> options) {
    Arguments result;
    for (const Option& option : options) result.values_[std::string(option.name)];
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word == "--") {
            for (const std::string& rest : words.subspan(i + 1)) result.add({"", rest, {rest}});
            break;
        }
        if (!looksLikeOption(word)) {
            result.add({"", word, {word}});
            continue;
        }
        std::size_t equals = word.starts_with("--") ? word.find('=') : std::string::npos;
        std::string name = word.substr(0, equals);
        const Option* option = find(options, name);
        if (option == nullptr && !word.starts_with("--")) { // "-oFILE"
            constexpr std::size_t shortLength = 2;
            option = find(options, word.substr(0, shortLength));
            if (option != nullptr) {
                name = option->shortName;
                equals = word[shortLength] == '=' ? shortLength : shortLength - 1;
            }
        }
        if (option == nullptr) throw UsageError(unknownOption(name, options));
        Part part{std::string(option->name), "", {word}};
        if (option->value.empty()) {
            if (equals != std::string::npos) throw UsageError("the option " + name + " takes no value");
        } else if (equals != std::string::npos) {
            part.value = word.substr(equals + 1);
        } else {
            if (i + 1 == words.size())
                throw UsageError("the option " + name + " needs a value: " + std::string(option->value));
            part.value = words[++i];
            if (find(options, part.value) != nullptr)
                throw UsageError("the option " + name + " needs a value: " + std::string(option->value) +
                                 ", and '" + part.value + "' is an option");
            part.words.push_back(part.value);
        }
        result.add(std::move(part));
    }
    return result;
}

void Arguments::add(Part part) {
    if (part.option.empty())
        positionals_.push_back(part.value);
    else
        values_[part.option].push_back(part.value);
    parts_.push_back(std::move(part));
}

const std::vector<std::string>& Arguments::valuesOf(std::string_view option) const {
    const auto found = values_.find(option);
    if (found == values_.end()) throw std::logic_error("undeclared option " + std::string(option));
    return found->second;
}

std::optional<std::string> Arguments::value(std::string_view option) const {
    const std::vector<std::string>& all = valuesOf(option);
    return all.empty() ? std::nullopt : std::optional(all.back());
}

std::optional<double> Arguments::number(std::string_view option) const {
    const auto text = value(option);
    if (!text) return std::nullopt;
    if (const auto number = numberFrom(*text)) return number;
    throw UsageError(std::string(option) + " takes a number, not '" + *text + "'");
}

std::optional<long long> Arguments::integer(std::string_view option) const {
    const auto text = value(option);
    if (!text) return std::nullopt;
    if (const auto number = integerFrom(*text)) return number;
    throw UsageError(std::string(option) + " takes a whole number, not '" + *text + "'");
}

std::optional<double> numberFrom(std::string_view text) { return platform::text::decimalNumber(text); }

std::optional<long long> integerFrom(std::string_view text) { return platform::text::decimalInteger(text); }

} // namespace orvane::cli
