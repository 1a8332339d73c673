#pragma once

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace orvane {

/// What was asked for needs an outside service, and none is configured. The description says how to do that.
class ServiceNotConfigured : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The outside services of this installation: `service.json` in the configuration folder, else the file that
/// the program was built with (ORVANE_SERVICE_FILE). Addresses are https, or http to this machine, without a
/// slash at the end. Everything may be absent.
struct ServiceConfiguration {
    std::optional<std::string> baseURL; ///< of LockitNetwork, also for signing in
    std::optional<std::string> clientID;
    std::optional<std::string> clientSecret;
    std::optional<std::string> modelHost;           ///< models are downloaded from there
    std::map<std::string, std::string> modelSHA256; ///< by id of the model, in hexadecimal digits
    std::optional<std::string> feedbackURL;
    std::optional<std::string> updatesURL;
    /// What is wrong with the file, for people; then nothing is configured, unless it is only about who can
    /// read it.
    std::optional<std::string> problem;

    /// Reads the file: not on the interface thread.
    static ServiceConfiguration load();
    static std::string path();
    /// `name`: what messages call the text.
    static ServiceConfiguration parse(std::string_view text, const std::string& name);

    /// Whether there is a LockitNetwork to sign in to.
    bool hasLockit() const { return baseURL && clientID; }
    /// Throws ServiceNotConfigured.
    void requireLockit() const;
};

} // namespace orvane
