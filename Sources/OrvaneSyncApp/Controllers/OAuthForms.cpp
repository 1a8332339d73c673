#include "OrvaneSyncApp/Controllers/OAuthForms.h"

#include "OrvaneSyncApp/Controllers/OAuthError.h"
#include "OrvaneSyncCore/Models/JSONCoding.h"
#include "OrvaneSyncCore/Utilities/Base64.h"
#include "Platform/Random.h"
#include "Platform/SHA256.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace orvane {

std::string OAuthError::text(Kind kind) {
    switch (kind) {
    case Kind::notSignedIn:
        return "Not signed in to LockitNetwork. Open Settings → LockitNetwork to sign in.";
    case Kind::userCancelled:
        return "Sign-in was cancelled.";
    case Kind::stateMismatch:
        return "Authorization state mismatch — possible interception. Try again.";
    case Kind::missingAuthCode:
        return "Lockit didn't return an authorization code. Try signing in again.";
    case Kind::keychainWriteFailed:
        return "Signed in with LockitNetwork, but the access token couldn't be saved to the key store. "
               "Please try again.";
    case Kind::keyStoreLocked:
        return "The key store, which keeps the sign-in to LockitNetwork, is locked. Unlock it in the desktop "
               "and try again.";
    case Kind::tokenRequestFailed:
    case Kind::unknown:
        break;
    }
    return "Unknown OAuth error.";
}

namespace oauth {

namespace {

std::string_view characters(std::span<const std::byte> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool isOf(std::string_view set, char c) { return set.find(c) != std::string_view::npos; }

bool isLetterOrDigit(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

std::string percentEncoded(std::string_view text) {
    // Besides letters and digits: what is allowed in a query, except signs with a meaning in a form.
    constexpr std::string_view alsoPlain = "-._~!$'()*,/:?@", digits = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (isLetterOrDigit(c) || isOf(alsoPlain, c))
            encoded += c;
        else
            ((encoded += '%') += digits[byte >> 4U]) += digits[byte & 15U];
    }
    return encoded;
}

std::optional<int> hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return std::nullopt;
}

std::string percentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto high = text[i] == '%' && i + 2 < text.size() ? hexDigit(text[i + 1]) : std::nullopt;
        const auto low = high ? hexDigit(text[i + 2]) : std::nullopt;
        if (low) {
            decoded += static_cast<char>(*high * 16 + *low);
            i += 2;
        } else {
            decoded += text[i];
        }
    }
    return decoded;
}

constexpr std::string_view hidden = "[hidden]", delimiters = "\"'&,;<>}\r\n\t ";

void hide(std::string& text, std::string_view secret) {
    if (secret.empty()) return;
    for (std::size_t at = 0; (at = text.find(secret, at)) != std::string::npos; at += hidden.size())
        text.replace(at, secret.size(), hidden);
}

/// After one of these names, everything up to the next delimiter may be secret.
void hideNamedValues(std::string& text) {
    constexpr std::array<std::string_view, 5> names{"token", "secret", "code", "verifier", "password"};
    constexpr std::string_view between = "\"'=: \t\r\n";
    std::string lowered = platform::text::lowercased(text);
    if (lowered.size() != text.size()) lowered = text;
    for (const std::string_view name : names) {
        for (std::size_t at = 0; (at = lowered.find(name, at)) != std::string::npos;) {
            at += name.size();
            std::size_t start = at;
            while (start < text.size() && (isLetterOrDigit(text[start]) || text[start] == '_')) ++start;
            bool isAssigned = false;
            while (start < text.size() && isOf(between, text[start])) isAssigned |= isOf("=:", text[start++]);
            if (!isAssigned) continue;
            const std::size_t end = std::min(text.find_first_of(delimiters, start), text.size());
            text.replace(start, end - start, hidden);
            lowered.replace(start, end - start, hidden);
            at = start + hidden.size();
        }
    }
}

/// Hides long words, which may be tokens; words of ordinary text are shorter.
void hideLongWords(std::string& text) {
    constexpr std::size_t longest = 19;
    const auto isOfToken = [](char c) { return isLetterOrDigit(c) || isOf("-._~+/=", c); };
    for (std::size_t start = 0; start < text.size();) {
        std::size_t end = start;
        while (end < text.size() && isOfToken(text[end])) ++end;
        if (end - start > longest) {
            text.replace(start, end - start, hidden);
            end = start + hidden.size();
        }
        start = end + 1;
    }
}

/// A token with a control character, such as a line end, cannot be sent in a header. Throws DecodingError.
platform::Secret sendable(const char* name, std::string token) {
    constexpr char lastControl = 0x1F, deletion = 0x7F;
    const bool isText =
        std::ranges::none_of(token, [](char c) { return (c >= 0 && c <= lastControl) || c == deletion; });
    platform::Secret kept(token);
    platform::Secret::wipe(token);
    if (!isText) throw DecodingError(std::string(name) + ": holds a control character");
    return kept;
}

} // namespace

std::string base64URL(std::string_view bytes) {
    std::string text = base64::encoded(bytes);
    std::ranges::replace(text, '+', '-');
    std::ranges::replace(text, '/', '_');
    std::erase(text, '=');
    return text;
}

PKCE PKCE::generate() {
    constexpr std::size_t length = 64;
    std::array<std::byte, length> bytes{};
    platform::secureRandom(bytes);
    PKCE made{platform::Secret(base64URL(characters(bytes))), {}};
    platform::SHA256 hash;
    hash.add(made.verifier.reveal());
    const auto digest = hash.digest();
    made.challenge = base64URL(characters(std::as_bytes(std::span(digest))));
    return made;
}

std::string form(const Fields& fields) {
    std::string text;
    for (const auto& [name, value] : fields) {
        if (!text.empty()) text += '&';
        text.append(name).append("=").append(percentEncoded(value));
    }
    return text;
}

std::optional<std::string> queryItem(std::string_view url, std::string_view name) {
    url = url.substr(0, url.find('#'));
    const std::size_t mark = url.find('?');
    if (mark == std::string_view::npos) return std::nullopt;
    for (std::string_view rest = url.substr(mark + 1); !rest.empty();) {
        const std::string_view item = rest.substr(0, rest.find('&'));
        rest.remove_prefix(std::min(item.size() + 1, rest.size()));
        const std::size_t equals = item.find('=');
        if (equals != std::string_view::npos && percentDecoded(item.substr(0, equals)) == name)
            return percentDecoded(item.substr(equals + 1));
    }
    return std::nullopt;
}

TokenResponse decodedTokens(std::string_view body) {
    const JSON json = JSON::parse(body);
    TokenResponse response;
    response.accessToken = sendable("access_token", required<std::string>(json, "access_token"));
    if (response.accessToken.empty()) throw DecodingError("access_token: is empty");
    response.refreshToken =
        sendable("refresh_token", optional<std::string>(json, "refresh_token").value_or(""));
    static_cast<void>(optional<std::string>(json, "token_type")); // only checks its type
    response.expiresInSeconds = optional<std::int64_t>(json, "expires_in");
    return response;
}

std::string withoutSecrets(std::string_view body, const std::vector<std::string_view>& secrets) {
    constexpr std::size_t mostRead = 4096, mostShown = 300;
    const std::string_view read = platform::text::beginning(body, mostRead);
    std::string text = platform::text::validUTF8(read);
    for (const std::string_view secret : secrets) {
        hide(text, secret);
        hide(text, percentEncoded(secret));
    }
    // A word that was cut off may be the beginning of a secret.
    if (read.size() < body.size()) text.resize(text.find_last_of(delimiters) + 1);
    hideNamedValues(text);
    hideLongWords(text);
    return std::string(platform::text::beginning(text, mostShown));
}

} // namespace oauth
} // namespace orvane
