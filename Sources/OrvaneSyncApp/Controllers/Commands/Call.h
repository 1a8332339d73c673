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
    invalidArguments, ///< they are missing, of another kind, or name no known value
    failed            ///< what was asked for could not be done
};

/// A command that did not run. The text is for people.
class Error : public std::runtime_error {
  public:
    Error(Refusal refusal, const std::string& message) : std::runtime_error(message), refusal_(refusal) {}
    Refusal refusal() const { return refusal_; }

  private:
    Refusal refusal_;
};

struct Parameter {
    /// A path is a text that a file may be named by.
    enum class Kind : std::uint8_t { id, text, path, number, integer, boolean, any, texts, paths };
    std::string_view name;
    Kind kind = Kind::text;
    bool isOptional = false;
    std::optional<double> lowest = {}; ///< of a number; both ends are allowed
    std::optional<double> highest = {};
    std::span<const std::string_view> choices = {}; ///< of a text that takes only these
};
std::string_view name(Parameter::Kind kind);
/// The clip that a command is for.
inline const Parameter groupID{"groupID", Parameter::Kind::id};

struct Command;

/// The arguments of one call, all of the kinds that the command takes. A null counts as absent. The command
/// outlives it.
class Call {
  public:
    /// Throws Error for arguments that are missing, of another kind, or unknown.
    Call(const Command& command, const JSON* params);

    bool has(std::string_view name) const { return find(name) != nullptr; }
    /// Also when it is null.
    bool mentions(std::string_view name) const { return params_.find(name) != nullptr; }
    /// It is there, and an identifier by its kind.
    bool names(std::string_view name) const;
    // Each for a parameter of that kind which is there.
    UUID id(std::string_view name) const;
    const std::string& text(std::string_view name) const;
    std::vector<std::string> texts(std::string_view name) const;
    /// Of texts, each of them once; throws Error for one that is no identifier.
    std::vector<UUID> ids(std::string_view name) const;
    double number(std::string_view name) const;
    int integer(std::string_view name) const;
    bool boolean(std::string_view name) const;
    // The same where it may be absent.
    std::optional<std::string> textIfPresent(std::string_view name) const;
    std::optional<double> numberIfPresent(std::string_view name) const;
    /// Null for an absent one.
    JSON any(std::string_view name) const;

  private:
    const JSON* find(std::string_view name) const;

    const Command* command_;
    JSON params_;
};

} // namespace orvane::commands
