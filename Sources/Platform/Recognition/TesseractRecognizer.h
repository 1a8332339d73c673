#pragma once

#include "Platform/TextRecognizer.h"

#include <memory>

namespace orvane::platform {

/// As TextRecognizer::create and textRecognitionState.
std::unique_ptr<TextRecognizer> tesseractRecognizer();
TextRecognitionState tesseractState();

} // namespace orvane::platform
