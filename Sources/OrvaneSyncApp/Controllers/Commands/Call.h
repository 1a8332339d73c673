#pragma once

#include "OrvaneSyncCore/Models/UUID.h"
#include "Platform/JSON.h"

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::commands {

using platform::JSON;

/// Why a command did not run.
enum class Refusal : std::uint8_t {
    invalidArguments, ///< missing, of another kind, or no known value
    failed            ///< the request could not be carried out
};

/// Thrown when a command does not run. The text is for people.
class Error : public std::runtime_error {
  public:
    Error(Refusal refusal, const std::string& message) : std::runtime_error(message), refusal_(refusal) {}
    Refusal refusal() const { return refusal_; }

  private:
    Refusal refusal_;
};

struct Parameter {
    /// A path is a text that can name a file.
    enum class Kind : std::uint8_t { id, text, path, number, integer, boolean, any, texts, paths };
    std::string_view name;
    Kind kind = Kind::text;
    bool isOptional = false;
    std::optional<double> lowest = {}; ///< of a number; both limits are allowed
    std::optional<double> highest = {};
    std::span<const std::string_view> choices = {}; ///< of a text: the only values allowed
};
std::string_view name(Parameter::Kind kind);
/// The clip that a command works on.
inline const Parameter groupID{"groupID", Parameter::Kind::id};

struct Command;

/// The arguments of one call, each of the kind that the command takes. A null counts as absent. The command
/// outlives the call.
class Call {
  public:
    /// Throws Error if arguments are missing, of another kind, or unknown.
    Call(const Command& command, const JSON* params);

    bool has(std::string_view name) const { return find(name) != nullptr; }
    /// True also if its value is null.
    bool mentions(std::string_view name) const { return memberNamed(name) != nullptr; }
    /// Whether it is a parameter of the kind `id` and is present.
    bool names(std::string_view name) const;
    // Each takes the name of a parameter of that kind, which must be present.
    UUID id(std::string_view name) const;
    const std::string& text(std::string_view name) const;
    std::vector<std::string> texts(std::string_view name) const;
    /// From a list of texts, without repetitions; throws Error for a text that is no identifier.
    std::vector<UUID> ids(std::string_view name) const;
    double number(std::string_view name) const;
    int integer(std::string_view name) const;
    bool boolean(std::string_view name) const;
    // The same for a parameter that may be absent.
    std::optional<std::string> textIfPresent(std::string_view name) const;
    std::optional<double> numberIfPresent(std::string_view name) const;
    /// Null if absent.
    JSON any(std::string_view name) const;

  private:
    const JSON* find(std::string_view name) const;
    /// Throws std::logic_error for a name that the command's row does not have.
    const JSON* memberNamed(std::string_view name) const;

    const Command* command_;
    JSON params_;
};

} // namespace orvane::commands
