#pragma once

#include "Platform/TextRecognizer.h"

namespace orvane::platform {

/// What the loadable module of text recognition offers.
struct RecognitionModule {
    static constexpr unsigned currentVersion = 1;
    static constexpr const char* entryPoint = "orvaneRecognitionModule";
    static constexpr const char* fileName = "liborvane_recognition.so";

    unsigned version = currentVersion;
    /// Null without data of a language.
    std::unique_ptr<TextRecognizer> (*create)() = nullptr;
    TextRecognitionState (*state)() = nullptr;
};

} // namespace orvane::platform
