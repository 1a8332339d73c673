#include "Platform/Modules.h"
#include "Platform/Recognition/RecognitionModule.h"
#include "Platform/Recognition/TesseractRecognizer.h"

const void* orvaneModule() {
    using orvane::platform::RecognitionModule;
    static const RecognitionModule module{orvane::platform::interfaceVersion,
                                          orvane::platform::tesseractRecognizer,
                                          orvane::platform::tesseractState};
    return &module;
}
