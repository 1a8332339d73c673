#pragma once

#include "Platform/InterfaceVersion.h"
#include "Platform/TextRecognizer.h"

#include <cstdint>

namespace orvane::platform {

/// The functions of the loadable module of text recognition.
struct RecognitionModule {
    static constexpr const char* fileName = "liborvane_recognition.so";

    std::uint64_t version = interfaceVersion;
    /// Null without the data of a language.
    std::unique_ptr<TextRecognizer> (*create)() = nullptr;
    TextRecognitionState (*state)() = nullptr;
};

} // namespace orvane::platform
