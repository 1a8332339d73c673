#pragma once

#include "OrvaneSyncApp/Controllers/Commands/Command.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncCLI/Serve/LongIdentifiers.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane::cli::rpc {

using commands::Call;
using commands::Command;
using commands::CommandContext;
using platform::JSON;

/// JSON-RPC 2.0, one message a line. Messages are served one at a time, in the order of arrival; a
/// long operation delays those after it. Interface thread. The context outlives it.
///
/// A single call (not in a batch) of a command that is served at once is answered without waiting, such as
/// `cancel {id}`: true when the request of that id runs or waits for its turn. That request is then
/// answered, in its turn, by the error `cancelled`. So is an analysis when the next message is other work.
class Server {
  public:
    /// Takes one message without its line end.
    using Write = std::function<void(const std::string& line)>;

    Server(CommandContext& context, std::vector<Command> commands, Write write);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Takes one message: a request, a notification or a batch of them. Calls back once it has been served.
    void receive(std::string line, std::function<void()> whenServed = nullptr);
    /// Answers a message that could not be accepted.
    void refuse(const std::string& why);
    /// Sends a notification.
    void notify(std::string_view method, JSON params);
    /// Called and waited for before each message is served, because the queue of answers may be full. Null:
    /// no wait.
    void whenWritable(std::function<platform::Task()> writable) { writable_ = std::move(writable); }
    /// A caller waits for a running long operation.
    bool isWaitedFor() const { return isWaitedFor_; }
    /// Calls back as soon as all received messages have been answered.
    void whenIdle(std::function<void()> callback);

  private:
    struct Waiting {
        bool isBatch = false;
        std::optional<JSON> message; ///< absent for a blank line and for invalid JSON
        std::string problem;         ///< why it is invalid
        std::function<void()> whenServed;
        std::vector<JSON> cancelled; ///< identifiers of requests in the message that must not run
    };

    struct Response {
        std::optional<JSON> message; ///< absent for a notification
        bool isOfOperation = false;  ///< made by the command's later part, after its call
    };

    platform::Task serveAll();
    platform::Task serve(std::shared_ptr<Waiting> waiting);
    platform::Task finished(const Command& command, Call call, JSON id, std::shared_ptr<JSON> result);
    /// Of one call; null for a batch, and for a method that there is not.
    const Command* commandOf(const JSON& message) const;
    /// The first message that waits, but for analyses, is a proper call that makes an analysis useless. Any
    /// other message between the two may need what the analysis finds.
    bool isOtherWorkNext() const;
    /// Whether there was such a request.
    bool cancel(const JSON& id);
    platform::Task answer(JSON request, std::shared_ptr<const Waiting> waiting,
                          std::shared_ptr<Response> response);
    platform::Task writeOnQueue(JSON message);
    void write(const JSON& message) const { write_(identifiers_.text(message)); }

    CommandContext& context_;
    const std::map<std::string_view, Command> commands_; ///< by the name of the method
    const Write write_;
    std::function<platform::Task()> writable_;
    const LongIdentifiers identifiers_;
    std::deque<std::shared_ptr<Waiting>> waiting_;
    bool isServing_ = false;
    bool isWaitedFor_ = false;
    std::optional<platform::Task> longOperation_; ///< a caller waits for it
    JSON idUnderWay_;                             ///< of the current request; null for a notification
    bool isEndedByOtherWork_ = false;             ///< of the operation
    std::function<void()> whenIdle_;
};

} // namespace orvane::cli::rpc
