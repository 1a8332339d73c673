#include "Platform/TextRecognizer.h"

#include "Platform/InterfaceThread.h"
#include "Platform/Modules.h"
#include "Platform/Recognition/RecognitionModule.h"

#include <utility>

namespace orvane::platform {

namespace {

/// The module's recognizer, with the check that it is not called on the interface thread: the module does not
/// know that thread.
class CheckedRecognizer final : public TextRecognizer {
  public:
    explicit CheckedRecognizer(std::unique_ptr<TextRecognizer> recognizer)
        : recognizer_(std::move(recognizer)) {}
    std::vector<TextLine> lines(const Picture& picture, RecognitionLevel level,
                                const std::stop_token& stop) override {
        assertMayBlock("reading a picture");
        return recognizer_->lines(picture, level, stop);
    }

  private:
    const std::unique_ptr<TextRecognizer> recognizer_;
};

} // namespace

std::unique_ptr<TextRecognizer> TextRecognizer::create() {
    assertMayBlock("reading the languages of slates");
    const RecognitionModule* module = modules::own<RecognitionModule>().module;
    auto recognizer = module == nullptr ? nullptr : module->create();
    return recognizer ? std::make_unique<CheckedRecognizer>(std::move(recognizer)) : nullptr;
}

TextRecognitionState textRecognitionState() {
    assertMayBlock("reading the languages of slates");
    const auto& [module, problem] = modules::own<RecognitionModule>();
    if (module != nullptr) return module->state();
    return {false, "slates can't be read: the module " + problem};
}

} // namespace orvane::platform
