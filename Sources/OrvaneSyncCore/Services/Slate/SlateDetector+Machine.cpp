#include "OrvaneSyncCore/Services/Slate/SlateDetector.h"

namespace orvane {

std::shared_ptr<SlateDetector> SlateDetector::ofThisMachine() {
    return std::make_shared<SlateDetector>([] {
        return Dependencies{platform::FrameReader::open, platform::TextRecognizer::create()};
    });
}

} // namespace orvane
