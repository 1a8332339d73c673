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

/// The two halves of the proof that the program that redeems a code is the one that asked for it.
struct PKCE {
    platform::Secret verifier; ///< 86 characters
    std::string challenge;     ///< its SHA-256 hash

    /// From 64 random bytes. Throws as SHA256 does.
    static PKCE generate();
};

/// Base64 with the URL's alphabet, unpadded.
std::string base64URL(std::string_view bytes);

using Fields = std::vector<std::pair<std::string, std::string>>;
/// "name=value" with "&" between, as a query or a form takes it: values percent-encoded, so that no value
/// ends early or changes on its way.
std::string form(const Fields& fields);
/// The first value of a name in the query of an address, percent-decoded.
std::optional<std::string> queryItem(std::string_view url, std::string_view name);

/// What the token endpoint gives.
struct TokenResponse {
    platform::Secret accessToken;
    platform::Secret refreshToken; ///< empty: none
    std::optional<std::int64_t> expiresInSeconds;
};
/// Throws DecodingError and platform::JSONError, whose descriptions hold nothing of the text.
TokenResponse decodedTokens(std::string_view body);

/// The beginning of an answer for a message: without these texts, and without anything that looks like a
/// token, for a server may repeat what it was sent, and an answer that came with the wrong status may hold
/// tokens.
std::string withoutSecrets(std::string_view body, const std::vector<std::string_view>& secrets);

} // namespace orvane::oauth
