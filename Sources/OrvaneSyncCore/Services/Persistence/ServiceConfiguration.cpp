#include "OrvaneSyncCore/Services/Persistence/ServiceConfiguration.h"

#include "OrvaneSyncCore/Models/JSONCoding.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/Files.h"
#include "Platform/Text.h"
#ifdef ORVANE_SERVICE_FILE
#include <BuiltInService.h>
#endif

#include <algorithm>
#include <sys/stat.h>

namespace orvane {

namespace {

bool isOfThisMachine(std::string_view host) {
    const std::string_view name = host.substr(0, host.starts_with('[') ? host.find(']') + 1 : host.find(':'));
    if (name == "localhost" || name == "[::1]") return true;
    return name.starts_with("127.") && std::ranges::count(name, '.') == 3 &&
           name.find_first_not_of("0123456789.") == std::string_view::npos;
}

/// Throws DecodingError. Absent if the key is absent or empty.
std::optional<std::string> address(const JSON& json, std::string_view key) {
    constexpr std::string_view secure = "https://", plain = "http://";
    auto url = optional<std::string>(json, key);
    if (!url || url->empty()) return std::nullopt;
    while (url->ends_with('/')) url->pop_back();
    const std::string_view text = *url;
    const bool isPlain = text.starts_with(plain);
    const std::string_view rest = isPlain                    ? text.substr(plain.size())
                                  : text.starts_with(secure) ? text.substr(secure.size())
                                                             : "";
    const std::string_view host = rest.substr(0, rest.find_first_of("/?#"));
    if (host.empty() || host.find('@') != std::string_view::npos)
        throw DecodingError(std::string(key) + ": expected an address that begins with https://");
    if (isPlain && !isOfThisMachine(host))
        throw DecodingError(std::string(key) + ": http is allowed to this machine alone; use https");
    return url;
}

std::optional<std::string> presentText(const JSON& json, std::string_view key) {
    auto text = optional<std::string>(json, key);
    return text && text->empty() ? std::nullopt : text;
}

bool canOthersRead(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && (status.st_mode & 0077U) != 0;
}

} // namespace

std::string ServiceConfiguration::path() {
    return platform::files::configHome() + "/" + std::string(AppStorageHelper::appFolderName) +
           "/service.json";
}

ServiceConfiguration ServiceConfiguration::parse(std::string_view text, const std::string& name) {
    ServiceConfiguration found;
    try {
        const JSON json = JSON::parse(text);
        if (!json.isObject()) throw DecodingError("expected an object");
        found.baseURL = address(json, "baseURL");
        found.modelHost = address(json, "modelHost");
        found.feedbackURL = address(json, "feedbackURL");
        found.updatesURL = address(json, "updatesURL");
        found.clientID = presentText(json, "clientID");
        found.clientSecret = presentText(json, "clientSecret");
        if (const JSON* hashes = json.find("modelSHA256"); hashes != nullptr && !hashes->isNull()) {
            if (!hashes->isObject()) throw DecodingError("modelSHA256: expected an object");
            for (const auto& [id, hash] : *hashes->members())
                found.modelSHA256[id] = platform::text::lowercased(fromJSON<std::string>(hash));
        }
        return found;
    } catch (const platform::JSONError& error) {
        found = {};
        found.problem = name + " is no JSON: " + error.what();
    } catch (const DecodingError& error) {
        found = {};
        found.problem = name + ": " + error.what();
    }
    return found;
}

ServiceConfiguration ServiceConfiguration::load() {
    const std::string file = path();
    if (!platform::files::exists(file)) {
#ifdef ORVANE_SERVICE_FILE
        return parse(builtInService, "the built-in service file");
#else
        return {};
#endif
    }
    try {
        ServiceConfiguration found = parse(platform::files::readText(file), file);
        if (found.clientSecret && !found.problem && canOthersRead(file))
            found.problem = file + " holds a secret, and other users may read it; chmod 600 helps";
        return found;
    } catch (const platform::FileError& error) {
        ServiceConfiguration none;
        none.problem = error.what();
        return none;
    }
}

void ServiceConfiguration::requireLockit() const {
    if (hasLockit()) return;
    const char* const missing = baseURL    ? "\"clientID\""
                                : clientID ? "\"baseURL\""
                                           : "\"baseURL\" and \"clientID\"";
    const std::string text =
        "No metadata service is configured: " + problem.value_or(path() + " has to name " + missing + ".");
    throw ServiceNotConfigured(text);
}

} // namespace orvane
