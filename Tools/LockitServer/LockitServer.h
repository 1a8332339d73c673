#pragma once

#include "Platform/JSON.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane::test {

/// A LockitNetwork service on the loopback interface: the whole protocol with sign-in (the challenge of PKCE
/// is checked), projects, days and clips, and the failures that may happen. Any thread.
class LockitServer {
  public:
    struct Options {
        std::string clientID = "test-client";
        std::string clientSecret = "test-client-secret-0123456789";
        std::int64_t lifetimeSeconds = 3600; ///< the lifetime that it states for its tokens
        int port = 0;                        ///< 0: any free port
        std::string email = "script@example.com";
    };
    LockitServer();
    explicit LockitServer(Options options);
    ~LockitServer();
    LockitServer(const LockitServer&) = delete;
    LockitServer& operator=(const LockitServer&) = delete;

    std::string baseURL() const;
    /// The contents of a service.json for this server.
    platform::JSON serviceFile() const;

    /// What the service knows about clips, by file name, in its own form.
    using Clips = std::map<std::string, platform::JSON>;
    void addProject(const std::string& uuid, platform::JSON project);
    /// `day` is the record; it needs a uuid.
    void addDay(const std::string& project, platform::JSON day, const Clips& clips);

    /// Acts as the user's browser on the sign-in page; returns the address that it is redirected to.
    std::string callbackFor(const std::string& authorizeURL) const;
    /// A token that the service accepts, without a sign-in.
    std::string validToken() const;
    /// From here on the service refuses all tokens that it has issued so far.
    void rejectTokens();

    enum class Fault : std::uint8_t {
        status,    ///< `status`, with an empty body
        cut,       ///< the connection breaks in the middle
        never,     ///< no answer until the server ends
        late,      ///< the right answer, but only after `answerLate` was called
        wrongJSON, ///< an answer of another form
        elsewhere, ///< a redirect to another address of this server
        body       ///< `body`, with `status`
    };
    struct Failure {
        std::string path = {}; ///< the end of the path, such as "/projects"
        Fault fault = Fault::status;
        int status = 500;
        std::string body = {};
        int after = 0; ///< requests that succeed before
        int times = 1 << 30;
    };
    void fail(Failure failure);
    void answerLate();

    struct Seen {
        std::string method, path, body;
        std::multimap<std::string, std::string> headers;
    };
    /// Every request so far.
    std::vector<Seen> seen() const;
    int countOf(std::string_view pathEnd) const;
    /// Waits until a request for that path has arrived.
    void waitUntilAsked(const std::string& pathEnd) const;

  private:
    class Machine;
    std::unique_ptr<Machine> machine_;
};

/// A production for tests and measurements: days of clips with names such as "A001C0001.mov".
LockitServer::Clips numberedClips(int first, int count);

} // namespace orvane::test
