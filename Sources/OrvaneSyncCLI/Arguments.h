#pragma once

#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::cli {

/// The command line was wrong: what about it. Ends with status 2 and the usage line.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// One option of a command.
struct Option {
    std::string_view name;  ///< with its dashes, such as "--event"
    std::string_view value; ///< what stands for its value in the help; empty: a switch
    std::string_view help;
    std::string_view shortName = {}; ///< such as "-o"
};

/// A command line taken apart.
class Arguments {
  public:
    /// "--name value" and "--name=value" are the same, "-n value" and "-nvalue" too; "--" ends the options;
    /// "-" and negative numbers are no options. An option may come again: the last value counts, or all of
    /// them where the command asks for all. Throws UsageError.
    static Arguments parse(std::span<const std::string> words, std::span<const Option> options);

    /// What stands in the command line, in its order.
    struct Part {
        std::string option;             ///< its name with the dashes; empty: a positional
        std::string value;              ///< of the option, empty for a switch; the positional
        std::vector<std::string> words; ///< as they were written; the value ends the last one
    };
    const std::vector<Part>& parts() const { return parts_; }
    const std::vector<std::string>& positionals() const { return positionals_; }
    /// Of these and the next: an option that the command does not declare is a std::logic_error.
    bool has(std::string_view option) const { return !valuesOf(option).empty(); }
    std::optional<std::string> value(std::string_view option) const;
    std::vector<std::string> values(std::string_view option) const { return valuesOf(option); }
    /// The value as a number. Throws UsageError for a text that is none.
    std::optional<double> number(std::string_view option) const;
    std::optional<long long> integer(std::string_view option) const;

  private:
    void add(Part part);
    const std::vector<std::string>& valuesOf(std::string_view option) const;

    std::vector<Part> parts_;
    std::vector<std::string> positionals_;
    std::map<std::string, std::vector<std::string>, std::less<>> values_; ///< of each option declared
};

/// The whole text as a finite number; nothing when it is none.
std::optional<double> numberFrom(std::string_view text);
std::optional<long long> integerFrom(std::string_view text);

} // namespace orvane::cli
