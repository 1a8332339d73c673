#pragma once

#include <cstdlib>
#include <string>

namespace orvane::test {

/// A model in base64 with the separator's shape. It returns the spectrogram as speech, half of it as music,
/// and zeros as effects.
inline constexpr const char* passThroughModel =
    "CAc6qQIKHwoLc3BlY3Ryb2dyYW0SBnNwZWVjaCIISWRlbnRpdHkKHwoLc3BlY3Ryb2dyYW0KBGhhbGYSBW11c2ljIgNN"
    "dWwKHQoLc3BlY3Ryb2dyYW0KBHplcm8SA3NmeCIDTXVsEgFnKhAIARABIgQAAAA/QgRoYWxmKhAIARABIgQAAAAAQgR6"
    "ZXJvWisKC3NwZWN0cm9ncmFtEhwKGggBEhYKAggBCgIIAQoDCIEICgMSAXQKAggCYiYKBnNwZWVjaBIcChoIARIWCgII"
    "AQoCCAEKAwiBCAoDEgF0CgIIAmIlCgVtdXNpYxIcChoIARIWCgIIAQoCCAEKAwiBCAoDEgF0CgIIAmIjCgNzZngSHAoa"
    "CAESFgoCCAEKAggBCgMIgQgKAxIBdAoCCAJCBAoAEA0=";

/// The folder in which ONNX Runtime is searched for before the system's libraries: ORVANE_ONNXRUNTIME, else
/// `otherwise`.
inline std::string runtimeFolder(const std::string& otherwise) {
    const char* const named = std::getenv("ORVANE_ONNXRUNTIME");
    return named != nullptr ? named : otherwise;
}

} // namespace orvane::test
