#pragma once

#include "Platform/Secret.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The texts of the OAuth authorization-code flow (RFC 6749) with PKCE (RFC 7636). Pure functions; any thread.
namespace orvane::oauth {

/// Proves that the program that redeems a code is the program that requested it.
struct PKCE {
    platform::Secret verifier; ///< 86 characters
    std::string challenge;     ///< its SHA-256 hash

    /// From 64 random bytes. Throws as SHA256 does.
    static PKCE generate();
};

/// Base64 with the URL's alphabet, unpadded.
std::string base64URL(std::string_view bytes);

using Fields = std::vector<std::pair<std::string, std::string>>;
/// "name=value" with "&" between, as a query or a form needs it. Values are percent-encoded, so that they
/// arrive unchanged.
std::string form(const Fields& fields);
/// The first value of a name in the query of an address, percent-decoded.
std::optional<std::string> queryItem(std::string_view url, std::string_view name);

/// The answer of the token endpoint.
struct TokenResponse {
    platform::Secret accessToken;
    platform::Secret refreshToken; ///< empty: none
    std::optional<std::int64_t> expiresInSeconds;
};
/// Throws DecodingError and platform::JSONError, whose descriptions contain nothing of `body`.
TokenResponse decodedTokens(std::string_view body);

/// The beginning of an answer for a message, without these texts and without anything that looks like a
/// token: a server may repeat what it was sent, and an answer with an error status may contain tokens.
std::string withoutSecrets(std::string_view body, const std::vector<std::string_view>& secrets);

} // namespace orvane::oauth
