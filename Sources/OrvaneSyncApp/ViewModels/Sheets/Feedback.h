#pragma once

#include "OrvaneSyncApp/Controllers/SystemChecks.h"
#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"
#include "Platform/HTTPClient.h"

#include <memory>
#include <string>
#include <vector>

namespace orvane {

/// The state of each subsystem as text to copy: a line each.
std::string systemText(const std::vector<SystemCheck>& checks);

/// What goes along with a message: version, machine, the settings that differ from their defaults, and how
/// the clips of the open work stand. No file's name is in it, and of paths below the home folder not its
/// name.
std::string feedbackReport(const WorkSnapshot& work, const std::vector<SystemCheck>& checks);

struct Feedback {
    std::string message;
    std::string report;
    std::string screenshotPNG; ///< bytes; empty without a picture
};

/// As a multipart form (RFC 7578): the fields "message", "report" and "screenshot".
platform::HTTPRequest feedbackRequest(const std::string& url, const Feedback& feedback);
/// The same as a mail without an address (RFC 2046), which mail programs open.
std::string feedbackMail(const Feedback& feedback);

/// Sends feedback. Interface thread; the work is done on a queue of its own.
class FeedbackDelivery {
  public:
    FeedbackDelivery(std::shared_ptr<platform::MainThread> mainThread,
                     std::shared_ptr<platform::HTTPClient> client);
    /// Throws HTTPError, and std::runtime_error for an answer that is none of success.
    platform::Task send(std::string url, Feedback feedback);
    /// As `feedbackMail`, to a place that a person chose. `mayReplace`: whether they were asked about the
    /// file that is there. Throws FileError, OutputRefused among them.
    platform::Task save(std::string path, Feedback feedback, const ImportController& work, bool mayReplace);

  private:
    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::shared_ptr<platform::HTTPClient> client_;
    const std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
