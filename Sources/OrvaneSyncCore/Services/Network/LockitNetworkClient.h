#pragma once

#include "OrvaneSyncCore/Services/Network/LockitError.h"
#include "OrvaneSyncCore/Services/Network/LockitFields.h"
#include "Platform/HTTPClient.h"
#include "Platform/Secret.h"
#include "Platform/Task.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

/// The file names of clips, and the body of the request with them. There may be many thousands: construct
/// this off the interface thread, once for all days.
struct LockitFilenames {
    explicit LockitFilenames(std::vector<std::string> filenames);

    std::vector<std::string> filenames;
    std::string body;
};

/// The four requests of LockitNetwork. Created for each use; keeps no state between requests, repeats none
/// and follows no redirect. Requests of one client run one after the other, off the interface thread; several
/// clients may be used at the same time. A stop ends a request at once. Interface thread.
class LockitNetworkClient {
  public:
    /// Writes a valid access token to `token` before it ends, or fails.
    using BearerProvider = std::function<platform::Task(std::shared_ptr<platform::Secret> token)>;
    struct Dependencies {
        std::shared_ptr<platform::MainThread> mainThread;
        std::shared_ptr<platform::HTTPClient> http;
        std::string baseURL; ///< the path of each request is appended
        BearerProvider bearerProvider;
        double idleTimeoutSeconds = 60;
        double resourceTimeoutSeconds = 120; ///< for a whole answer
    };
    explicit LockitNetworkClient(Dependencies dependencies);

    // Each writes its answer to the last argument. They fail with LockitError, DecodingError (see
    // `understand`), platform::HTTPError, or the error of the bearer provider; in the last case nothing is
    // sent.

    platform::Task currentUser(std::shared_ptr<LockitUser> user) const;
    platform::Task listProjects(std::shared_ptr<std::vector<LockitProject>> projects) const;
    platform::Task listShootingDays(const std::string& projectID,
                                    std::shared_ptr<std::vector<LockitShootingDay>> days) const;
    /// Called when an answer has arrived, before it is decoded, with an upper limit for the number of its
    /// matches.
    using Received = std::function<void(std::size_t mostMatches)>;
    /// For one of several requests whose tokens are read in advance.
    struct Steps {
        Steps() : maySend(platform::Task::ended()) {}
        Steps(platform::Task sending, Received whenReceived)
            : maySend(std::move(sending)), received(std::move(whenReceived)) {}
        platform::Task maySend; ///< the request is sent after this task has ended
        Received received;
    };
    /// The answer may be large: process it off the interface thread.
    platform::Task matchClips(const std::string& projectID, const std::string& shootingDayID,
                              const std::shared_ptr<const LockitFilenames>& names,
                              std::shared_ptr<ClipMatchResponse> response, Steps steps = Steps()) const;

  private:
    struct Connection;
    /// Called on the queue.
    using Body = std::function<std::string()>;
    using Decode = std::function<void(const std::string& body, const std::stop_token& stop)>;
    static platform::Task request(std::shared_ptr<const Connection> connection, std::string path, Body body,
                                  Decode decode, Steps steps = Steps());

    std::shared_ptr<const Connection> connection_;
};

} // namespace orvane
