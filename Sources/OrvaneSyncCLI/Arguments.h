#pragma once

#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::cli {

/// The command line was wrong; the description says what. Ends with status 2 and the usage line.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// One option of a command.
struct Option {
    std::string_view name;  ///< with its dashes, such as "--event"
    std::string_view value; ///< placeholder of its value in the help; empty: a switch
    std::string_view help;
    std::string_view shortName = {}; ///< such as "-o"
};

/// A parsed command line.
class Arguments {
  public:
    /// "--name value" and "--name=value" are the same, "-n value" and "-nvalue" too; "--" ends the options;
    /// "-" and negative numbers are no options. An option may be repeated: the last value counts, or all
    /// values if the command reads all. Throws UsageError.
    static Arguments parse(std::span<const std::string> words, std::span<const Option> options);

    /// One part of the command line, in its order.
    struct Part {
        std::string option;             ///< its name with the dashes; empty: a positional
        std::string value;              ///< of the option, empty for a switch; the positional
        std::vector<std::string> words; ///< as they were written; the last one ends with the value
    };
    const std::vector<Part>& parts() const { return parts_; }
    const std::vector<std::string>& positionals() const { return positionals_; }
    /// Here and below: an option that the command does not declare throws std::logic_error.
    bool has(std::string_view option) const { return !valuesOf(option).empty(); }
    std::optional<std::string> value(std::string_view option) const;
    std::vector<std::string> values(std::string_view option) const { return valuesOf(option); }
    /// The value as a number. Throws UsageError for a text that is not a number.
    std::optional<double> number(std::string_view option) const;
    std::optional<long long> integer(std::string_view option) const;

  private:
    void add(Part part);
    const std::vector<std::string>& valuesOf(std::string_view option) const;

    std::vector<Part> parts_;
    std::vector<std::string> positionals_;
    std::map<std::string, std::vector<std::string>, std::less<>> values_; ///< of each option declared
};

/// The whole text as a finite number; else nothing.
std::optional<double> numberFrom(std::string_view text);
std::optional<long long> integerFrom(std::string_view text);

} // namespace orvane::cli
