#pragma once

#include "OrvaneSyncCore/Models/UUID.h"
#include "Platform/JSON.h"
#include "Platform/Task.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::cli::rpc {

using platform::JSON;

/// Why a call failed, as JSON-RPC 2.0 numbers it; the positive ones are the program's own.
enum class ErrorCode : int {
    parseError = -32700,
    invalidRequest = -32600,
    methodNotFound = -32601,
    invalidParams = -32602,
    operationFailed = 1,
    cancelled = 2 ///< by `cancel`
};

class Error : public std::runtime_error {
  public:
    Error(ErrorCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
    ErrorCode code() const { return code_; }

  private:
    ErrorCode code_;
};

struct Parameter {
    /// A path is a text that a file may be named by.
    enum class Kind : std::uint8_t { id, text, path, number, integer, boolean, any };
    std::string_view name;
    Kind kind = Kind::text;
    bool isOptional = false;
};

struct Method;

/// The arguments of one call, all of the kinds that the method wants. A null counts as absent.
class Call {
  public:
    /// Throws Error for arguments that are missing, of another kind, or unknown.
    Call(const Method& method, const JSON* params);

    bool has(std::string_view name) const { return find(name) != nullptr; }
    /// Also when it is null.
    bool mentions(std::string_view name) const { return params_.find(name) != nullptr; }
    // Each for a parameter of that kind which is there.
    UUID id(std::string_view name) const;
    const std::string& text(std::string_view name) const;
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

    JSON params_;
};

class Desk;

/// One method of the program's JSON-RPC face. Runs on the interface thread; what it throws is the caller's
/// answer.
struct Method {
    using Now = std::function<JSON(Desk&, const Call&)>;
    /// Leaves what it gives in `result` when it ends.
    using Later = std::function<platform::Task(Desk&, Call, std::shared_ptr<JSON> result)>;

    Method(std::string_view theName, std::vector<Parameter> theParameters, Now run)
        : name(theName), parameters(std::move(theParameters)), now(std::move(run)) {}
    static Method later(std::string_view name, std::vector<Parameter> parameters, Later run) {
        Method method(name, std::move(parameters), nullptr);
        method.whenDone = std::move(run);
        return method;
    }

    std::string_view name;
    std::vector<Parameter> parameters;
    Now now;        ///< answers at once; null for a long one
    Later whenDone; ///< answers when it is done
};

} // namespace orvane::cli::rpc
