#pragma once

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace orvane {

/// The operation needs an outside service, and none is configured. The description says how to configure one.
class ServiceNotConfigured : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The outside services of this installation: from `service.json` in the configuration folder, otherwise from
/// the file that the program was built with (ORVANE_SERVICE_FILE). Addresses are https, or http to this
/// machine, without a slash at the end. Every member may be absent.
struct ServiceConfiguration {
    std::optional<std::string> baseURL; ///< of LockitNetwork; also used for signing in
    std::optional<std::string> clientID;
    std::optional<std::string> clientSecret;
    std::optional<std::string> modelHost;           ///< the host of model downloads
    std::map<std::string, std::string> modelSHA256; ///< key: id of the model; value: hexadecimal digits
    std::optional<std::string> feedbackURL;
    std::optional<std::string> updatesURL;
    /// What is wrong with the file, for display. Then nothing is configured, unless the problem is only that
    /// others can read the file.
    std::optional<std::string> problem;

    /// Reads the file: not on the interface thread.
    static ServiceConfiguration load();
    static std::string path();
    /// `name`: how messages call the text.
    static ServiceConfiguration parse(std::string_view text, const std::string& name);

    /// Whether a LockitNetwork is configured.
    bool hasLockit() const { return baseURL && clientID; }
    /// Throws ServiceNotConfigured.
    void requireLockit() const;
};

} // namespace orvane
