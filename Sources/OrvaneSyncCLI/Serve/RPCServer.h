#pragma once

#include "OrvaneSyncCLI/Serve/RPCMethod.h"

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::cli::rpc {

/// JSON-RPC 2.0, one message a line. Messages are served one at a time, in the order in which they came; a
/// long operation holds up those behind it. Interface thread. Must outlive what it serves.
class Server {
  public:
    /// Takes one message without its line end.
    using Write = std::function<void(const std::string& line)>;

    Server(Desk& desk, std::vector<Method> methods, Write write);

    /// One message: a request, a notification or a batch of them. Calls back once it has been served.
    void receive(std::string line, std::function<void()> whenServed = nullptr);
    /// Answers a message that could not be taken in.
    void refuse(const std::string& why);
    /// Says something that nobody asked for.
    void notify(std::string_view method, JSON params);
    /// A long operation runs that a caller waits for.
    bool isWaitedFor() const { return isWaitedFor_; }
    /// Calls back as soon as all that was received has been answered.
    void whenIdle(std::function<void()> callback);

  private:
    platform::Task serveAll();
    platform::Task serve(std::string line);
    platform::Task finished(const Method& method, Call call, std::shared_ptr<JSON> result);
    /// Leaves the response in `response`; nothing for a notification.
    platform::Task answer(JSON request, std::shared_ptr<std::optional<JSON>> response);
    void write(const JSON& message) const { write_(message.dump()); }

    Desk& desk_;
    const std::map<std::string_view, Method> methods_;
    const Write write_;
    struct Waiting {
        std::string line;
        std::function<void()> whenServed;
    };
    std::deque<Waiting> waiting_;
    bool isServing_ = false;
    bool isWaitedFor_ = false;
    std::function<void()> whenIdle_;
};

} // namespace orvane::cli::rpc
