#include "Platform/Recognition/RecognitionModule.h"
#include "Platform/Recognition/TesseractRecognizer.h"

extern "C" __attribute__((visibility("default"))) const void* orvaneRecognitionModule() {
    using orvane::platform::RecognitionModule;
    static const RecognitionModule module{orvane::platform::interfaceVersion,
                                          orvane::platform::tesseractRecognizer,
                                          orvane::platform::tesseractState};
    return &module;
}
