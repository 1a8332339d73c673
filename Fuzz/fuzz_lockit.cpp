#include "OrvaneSyncApp/Controllers/OAuthForms.h"
#include "OrvaneSyncCore/Services/Network/LockitMatches.h"
#include "OrvaneSyncCore/Services/Persistence/ServiceConfiguration.h"
#include "Platform/Text.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace orvane;

void demand(bool holds) {
    if (!holds) std::abort();
}

/// Throws only the documented errors.
template <class Decode>
void decode(const Decode& decode) {
    try {
        decode();
    } catch (const DecodingError&) {       // refused
    } catch (const platform::JSONError&) { // refused
    }
}

void checkMatches(std::string_view body) {
    const auto answer = decodedMatches(body, body.size());
    SyncGroupList groups;
    if (answer.matches)
        for (const auto& [name, fields] : *answer.matches) {
            groups.append(
                SyncGroup(MediaAsset(FileURL{"/" + name}, AssetKind::video), {}, MatchStatus::mos()));
            for (const auto& [field, value] : fields) {
                demand(!value.empty() && platform::text::isValidUTF8(value));
                demand(platform::text::trimmed(value) == value);
            }
        }
    const SyncGroupList before = groups;
    LockitLayer layer(before);
    layer.apply(groups, answer);
    const int known = lockitClipCount(groups);
    layer.reapply(groups);
    demand(lockitClipCount(groups) == known && lockitClipCount(layer.without(groups)) == 0);
}

void checkCallback(std::string_view url) {
    const auto state = oauth::queryItem(url, "state");
    demand(!state || url.find('?') != std::string_view::npos);
    // A form returns the values that were put into it.
    const std::string form = "?" + oauth::form({{"first", "x"}, {"value", std::string(url)}, {"last", "y"}});
    demand(oauth::queryItem(form, "value") == std::string(url) && oauth::queryItem(form, "last") == "y");
}

void checkMessage(std::string_view body) {
    constexpr std::string_view secret = "Zq7-unguessable-tOken+/=9";
    const std::size_t middle = platform::text::beginning(body, body.size() / 2).size();
    std::string repeated(body.substr(0, middle));
    repeated.append(secret).append(body.substr(middle));
    const std::string said = oauth::withoutSecrets(repeated, {secret});
    demand(platform::text::isValidUTF8(said));
    demand(said.find(secret.substr(0, secret.size() / 2)) == std::string::npos ||
           body.find(secret.substr(0, secret.size() / 2)) != std::string_view::npos);
}

} // namespace

// Any answer of a server, address of a callback, or service file. The first byte chooses which.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view body(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (data[0] % 8) {
    case 0:
        decode([&] { decodedAnswer<LockitUser>(body); });
        break;
    case 1:
        decode([&] { decodedList<LockitProject>(body); });
        break;
    case 2:
        decode([&] {
            for (const LockitShootingDay& day : decodedList<LockitShootingDay>(body))
                demand(!day.label().empty());
        });
        break;
    case 3:
        decode([&] { demand(!oauth::decodedTokens(body).accessToken.empty()); });
        break;
    case 4:
        checkCallback(body);
        break;
    case 5:
        checkMessage(body);
        break;
    case 6: {
        const auto service = ServiceConfiguration::parse(body, "service.json");
        demand(!service.baseURL || service.baseURL->starts_with("http"));
        break;
    }
    default:
        decode([&] { checkMatches(body); });
    }
    return 0;
}
