#pragma once

#include "Platform/InterfaceVersion.h"
#include "Platform/TextRecognizer.h"

#include <cstdint>

namespace orvane::platform {

/// What the loadable module of text recognition offers.
struct RecognitionModule {
    static constexpr const char* entryPoint = "orvaneRecognitionModule";
    static constexpr const char* fileName = "liborvane_recognition.so";

    std::uint64_t version = interfaceVersion;
    /// Null without data of a language.
    std::unique_ptr<TextRecognizer> (*create)() = nullptr;
    TextRecognitionState (*state)() = nullptr;
};

} // namespace orvane::platform
