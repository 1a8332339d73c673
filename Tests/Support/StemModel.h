#pragma once

#include <cstdlib>
#include <string>

namespace orvane::test {

/// In base64, a model of the separator's shape that passes the spectrogram on as speech, half of it as music
/// and none of it as effects.
inline constexpr const char* passThroughModel =
    "CAc6qQIKHwoLc3BlY3Ryb2dyYW0SBnNwZWVjaCIISWRlbnRpdHkKHwoLc3BlY3Ryb2dyYW0KBGhhbGYSBW11c2ljIgNN"
    "dWwKHQoLc3BlY3Ryb2dyYW0KBHplcm8SA3NmeCIDTXVsEgFnKhAIARABIgQAAAA/QgRoYWxmKhAIARABIgQAAAAAQgR6"
    "ZXJvWisKC3NwZWN0cm9ncmFtEhwKGggBEhYKAggBCgIIAQoDCIEICgMSAXQKAggCYiYKBnNwZWVjaBIcChoIARIWCgII"
    "AQoCCAEKAwiBCAoDEgF0CgIIAmIlCgVtdXNpYxIcChoIARIWCgIIAQoCCAEKAwiBCAoDEgF0CgIIAmIjCgNzZngSHAoa"
    "CAESFgoCCAEKAggBCgMIgQgKAxIBdAoCCAJCBAoAEA0=";

/// Where ONNX Runtime is looked for before the system's libraries: the folder that ORVANE_ONNXRUNTIME names.
inline std::string runtimeFolder(const std::string& otherwise) {
    const char* const named = std::getenv("ORVANE_ONNXRUNTIME");
    return named != nullptr ? named : otherwise;
}

} // namespace orvane::test
