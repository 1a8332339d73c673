#pragma once

#include "OrvaneSyncApp/Controllers/SystemChecks.h"
#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"
#include "Platform/HTTPClient.h"

#include <memory>
#include <string>
#include <vector>

namespace orvane {

/// The state of each subsystem as text to copy, one line each.
std::string systemText(const std::vector<SystemCheck>& checks);

/// The report that is sent with a message: version, machine, settings that differ from their defaults, and
/// the state of the open work's clips. It contains no file names, and "~" in place of the home folder's path.
std::string feedbackReport(const WorkSnapshot& work, const std::vector<SystemCheck>& checks);

struct Feedback {
    std::string message;
    std::string report;
    std::string screenshotPNG; ///< bytes; empty without a picture
};

/// The feedback as a multipart form (RFC 7578) with the fields "message", "report" and "screenshot".
platform::HTTPRequest feedbackRequest(const std::string& url, const Feedback& feedback);
/// The feedback as a mail without an address (RFC 2046), which mail programs can open.
std::string feedbackMail(const Feedback& feedback);

/// Sends feedback. Interface thread; the work is done on a queue of its own.
class FeedbackDelivery {
  public:
    FeedbackDelivery(std::shared_ptr<platform::MainThread> mainThread,
                     std::shared_ptr<platform::HTTPClient> client);
    /// Throws HTTPError, and std::runtime_error for an answer that is not a success.
    platform::Task send(std::string url, Feedback feedback);
    /// Writes `feedbackMail` to a path that the user chose. `mayReplace`: whether the user agreed to replace
    /// a file there. Throws FileError, including OutputRefused.
    platform::Task save(std::string path, Feedback feedback, const ImportController& work, bool mayReplace);

  private:
    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::shared_ptr<platform::HTTPClient> client_;
    const std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
