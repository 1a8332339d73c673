#include "Platform/TextRecognizer.h"

#include "Platform/Modules.h"
#include "Platform/Recognition/RecognitionModule.h"

namespace orvane::platform {

std::unique_ptr<TextRecognizer> TextRecognizer::create() {
    const RecognitionModule* module = modules::own<RecognitionModule>().module;
    return module == nullptr ? nullptr : module->create();
}

TextRecognitionState textRecognitionState() {
    const auto& [module, problem] = modules::own<RecognitionModule>();
    if (module != nullptr) return module->state();
    return {false, "slates can't be read: the module " + problem};
}

} // namespace orvane::platform
