#include "OrvaneSyncCLI/Serve/RPCServer.h"

#include "Platform/OnQueue.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <utility>

namespace orvane::cli::rpc {

namespace {

/// The error codes of responses; the positive numbers are the program's own.
enum class ErrorCode : int {
    parseError = -32700,
    invalidRequest = -32600,
    methodNotFound = -32601,
    invalidParams = -32602,
    operationFailed = 1,
    cancelled = 2 ///< by `cancel`
};

/// A message that is not a valid request.
class Error : public std::runtime_error {
  public:
    Error(ErrorCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
    ErrorCode code() const { return code_; }

  private:
    ErrorCode code_;
};

ErrorCode codeOf(commands::Refusal refusal) {
    return refusal == commands::Refusal::invalidArguments ? ErrorCode::invalidParams
                                                          : ErrorCode::operationFailed;
}

std::map<std::string_view, Command> byName(std::vector<Command> commands) {
    std::map<std::string_view, Command> table;
    for (Command& command : commands) table.emplace(command.id, std::move(command));
    return table;
}

JSON message() {
    JSON message;
    message.set("jsonrpc", "2.0");
    return message;
}

JSON failure(JSON id, ErrorCode code, const std::string& why) {
    JSON error;
    error.set("code", static_cast<int>(code));
    error.set("message", why);
    JSON response = message();
    response.set("id", std::move(id));
    response.set("error", std::move(error));
    return response;
}

/// Whether a response may have this identifier: a text, a number or null.
bool isIdentifier(const JSON& value) {
    return value.isNull() || value.string() != nullptr || value.number().has_value();
}

struct Request {
    JSON id;
    bool isNotification = false;
    std::string method;
    const JSON* params = nullptr;
};

/// Throws Error for a message that is no request.
Request parsedRequest(const JSON& message) {
    const auto refuse = [](const std::string& why) { throw Error(ErrorCode::invalidRequest, why); };
    if (!message.isObject()) refuse("a request is an object");
    Request request;
    const JSON* id = message.find("id");
    request.isNotification = id == nullptr;
    if (id != nullptr && !isIdentifier(*id)) refuse("id must be a text or a number");
    if (id != nullptr) request.id = *id;
    const JSON* version = message.find("jsonrpc");
    if (version == nullptr || version->string() == nullptr || *version->string() != "2.0")
        refuse("jsonrpc must be \"2.0\"");
    const JSON* method = message.find("method");
    if (method == nullptr || method->string() == nullptr) refuse("method must be a text");
    request.method = *method->string();
    request.params = message.find("params");
    if (request.params != nullptr && !request.params->isObject() && !request.params->isArray())
        refuse("params must be an object");
    return request;
}

/// The identifier of an invalid request, as far as it can be read.
JSON identifierOf(const JSON& message) {
    const JSON* id = message.isObject() ? message.find("id") : nullptr;
    return id != nullptr && isIdentifier(*id) ? *id : JSON();
}

/// Also true for a request within a batch.
bool isRequest(const JSON& message, const JSON& id) {
    if (message.isArray())
        return std::ranges::any_of(*message.elements(), [&](const JSON& one) { return isRequest(one, id); });
    return identifierOf(message) == id;
}

} // namespace

Server::Server(CommandContext& context, std::vector<Command> commands, Write write)
    : context_(context), commands_(byName(std::move(commands))), write_(std::move(write)) {
    context_.cancelRequest = [this](const JSON& id) { return cancel(id); };
}

Server::~Server() { context_.cancelRequest = nullptr; }

const Command* Server::commandOf(const JSON& message) const {
    const JSON* method = message.isObject() ? message.find("method") : nullptr;
    if (method == nullptr || method->string() == nullptr) return nullptr;
    const auto command = commands_.find(*method->string());
    return command == commands_.end() ? nullptr : &command->second;
}

bool Server::isOtherWorkNext() const {
    const auto next = std::ranges::find_if(waiting_, [this](const auto& waiting) {
        const Command* command = waiting->message ? commandOf(*waiting->message) : nullptr;
        return command == nullptr || !command->isEndedByOtherWork;
    });
    if (next == waiting_.end() || !(*next)->message) return false;
    const Command* command = commandOf(*(*next)->message);
    if (command == nullptr || !command->isOtherWork) return false;
    try {
        const Request request = parsedRequest(*(*next)->message);
        if (std::ranges::find((*next)->cancelled, request.id) != (*next)->cancelled.end()) return false;
        const Call call(*command, request.params); // refused where it is wrong
        return command->isEnabled(context_) &&
               (command->replaces == nullptr || command->replaces(context_, call));
    } catch (const Error&) {
        return false;
    } catch (const commands::Error&) {
        return false;
    }
}

bool Server::cancel(const JSON& id) {
    bool isThere = false;
    if (longOperation_ && idUnderWay_ == id) {
        longOperation_->requestStop();
        isThere = true;
    }
    for (const auto& message : waiting_) {
        if (!message->message || !isRequest(*message->message, id)) continue;
        message->cancelled.push_back(id);
        isThere = true;
    }
    return isThere;
}

void Server::receive(std::string line, std::function<void()> whenServed) {
    const auto waiting = std::make_shared<Waiting>();
    waiting->whenServed = std::move(whenServed);
    try {
        if (line.find_first_not_of(" \t\r") != std::string::npos)
            waiting->message = identifiers_.parsed(line);
        waiting->isBatch = waiting->message && waiting->message->isArray();
        line = std::string(); // its parsed form may take several times as much
    } catch (const platform::JSONError& error) {
        waiting->problem = error.what();
    }
    const Command* command = waiting->message ? commandOf(*waiting->message) : nullptr;
    if (isServing_ && command != nullptr && command->isServedAtOnce) {
        serve(waiting); // waits for nothing, so it is done when this returns
        if (waiting->whenServed) waiting->whenServed();
        return;
    }
    waiting_.push_back(waiting);
    if (!isServing_)
        serveAll();
    else if (longOperation_ && isEndedByOtherWork_ && isOtherWorkNext())
        longOperation_->requestStop();
}

void Server::refuse(const std::string& why) { write(failure({}, ErrorCode::parseError, why)); }

void Server::notify(std::string_view method, JSON params) {
    JSON notification = message();
    notification.set("method", method);
    notification.set("params", std::move(params));
    write(notification);
}

void Server::whenIdle(std::function<void()> callback) {
    if (isServing_)
        whenIdle_ = std::move(callback);
    else
        callback();
}

platform::Task Server::serveAll() {
    isServing_ = true;
    while (!waiting_.empty()) {
        if (writable_) co_await writable_();
        const auto next = std::move(waiting_.front());
        waiting_.pop_front();
        co_await serve(next);
        if (next->whenServed) next->whenServed();
    }
    isServing_ = false;
    if (whenIdle_) std::exchange(whenIdle_, nullptr)();
}

platform::Task Server::serve(std::shared_ptr<Waiting> waiting) {
    if (!waiting->problem.empty()) refuse(waiting->problem);
    if (!waiting->message) co_return;
    JSON request = std::move(*waiting->message);
    const auto response = std::make_shared<Response>();
    if (!request.isArray()) {
        co_await answer(std::move(request), waiting, response);
        if (response->message && response->isOfOperation)
            co_await writeOnQueue(std::move(*response->message));
        else if (response->message)
            write(*response->message);
        co_return;
    }
    if (request.elements()->empty()) {
        write(failure({}, ErrorCode::invalidRequest, "the batch is empty"));
        co_return;
    }
    JSON::Array responses;
    for (JSON& element : *request.elements()) {
        *response = {};
        co_await answer(std::move(element), waiting, response);
        if (response->message) responses.push_back(std::move(*response->message));
    }
    if (!responses.empty()) co_await writeOnQueue(JSON(std::move(responses)));
}

/// An answer about all of the work takes as long to write and to release as it took to make.
platform::Task Server::writeOnQueue(JSON message) {
    if (!context_.controller) {
        write(message);
        co_return;
    }
    const OpenWork& work = context_.controller->work();
    auto writing = platform::onQueue(*work.documents, work.environment.mainThread,
                                     [identifiers = identifiers_, message = std::move(message)]() mutable {
                                         const JSON own = std::move(message);
                                         return identifiers.text(own);
                                     });
    write_(co_await writing);
}

platform::Task Server::finished(const Command& command, Call call, JSON id, std::shared_ptr<JSON> result) {
    isWaitedFor_ = true;
    idUnderWay_ = std::move(id);
    std::exception_ptr raised;
    try {
        longOperation_ = command.whenDone(context_, std::move(call), std::move(result));
        const platform::Task operation = *longOperation_;
        co_await operation;
    } catch (...) {
        raised = std::current_exception();
    }
    longOperation_.reset();
    isWaitedFor_ = false;
    if (raised) std::rethrow_exception(raised);
}

platform::Task Server::answer(JSON request, std::shared_ptr<const Waiting> waiting,
                              std::shared_ptr<Response> response) {
    bool isNotification = false;
    ErrorCode code = ErrorCode::operationFailed;
    std::string why;
    const JSON id = identifierOf(request);
    try {
        const Request parsed = parsedRequest(request);
        isNotification = parsed.isNotification;
        if (std::ranges::find(waiting->cancelled, parsed.id) != waiting->cancelled.end())
            throw platform::Stopped();
        const auto found = commands_.find(parsed.method);
        if (found == commands_.end())
            throw Error(ErrorCode::methodNotFound, "there is no method '" + parsed.method + "'");
        const Command& command = found->second;
        const Call call(command, parsed.params);
        request = JSON(); // the call has its own copy
        context_.expectKnown(call);
        const auto result = std::make_shared<JSON>();
        if (command.now)
            *result = command.now(context_, call);
        else {
            isEndedByOtherWork_ = command.isEndedByOtherWork && !waiting->isBatch;
            if (isEndedByOtherWork_ && isOtherWorkNext()) throw platform::Stopped();
            co_await finished(command, call, parsed.id, result);
        }
        if (isNotification) co_return;
        JSON success = message();
        success.set("id", parsed.id);
        success.set("result", std::move(*result));
        response->isOfOperation = !command.now; // a failure is short: it need not wait
        response->message.emplace(std::move(success));
        co_return;
    } catch (const Error& error) {
        code = error.code();
        why = error.what();
    } catch (const commands::Error& error) {
        code = codeOf(error.refusal());
        why = error.what();
    } catch (const platform::Stopped& stopped) {
        code = ErrorCode::cancelled;
        why = stopped.what();
    } catch (const std::exception& error) {
        why = error.what();
    }
    if (!isNotification) response->message.emplace(failure(id, code, why));
}

} // namespace orvane::cli::rpc
