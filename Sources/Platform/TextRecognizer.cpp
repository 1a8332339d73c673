#include "Platform/TextRecognizer.h"

#include "Platform/Modules.h"
#include "Platform/Recognition/RecognitionModule.h"

namespace orvane::platform {

std::unique_ptr<TextRecognizer> TextRecognizer::create() {
    const RecognitionModule* module = modules::own<RecognitionModule>();
    return module == nullptr ? nullptr : module->create();
}

TextRecognitionState textRecognitionState() {
    const RecognitionModule* module = modules::own<RecognitionModule>();
    if (module != nullptr) return module->state();
    return {false, std::string("slates can't be read: the module ") + RecognitionModule::fileName +
                       " is missing beside the program"};
}

} // namespace orvane::platform
