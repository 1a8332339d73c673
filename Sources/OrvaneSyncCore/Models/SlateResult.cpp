#include "OrvaneSyncCore/Models/SlateResult.h"

#include "OrvaneSyncCore/Models/JSONFields.h"

namespace orvane {

template <>
struct JSONFields<SlateResult> {
    static constexpr std::tuple list{JSONField{"clapPointSeconds", &SlateResult::clapPointSeconds},
                                     JSONField{"clapMethod", &SlateResult::clapMethod},
                                     JSONField{"slateFrameTime", &SlateResult::slateFrameTime},
                                     JSONField{"ocrScene", &SlateResult::ocrScene},
                                     JSONField{"ocrTake", &SlateResult::ocrTake},
                                     JSONField{"ocrRoll", &SlateResult::ocrRoll}};
};

JSON toJSON(const SlateResult& result) {
    return result == SlateResult{} ? JSON(JSON::Object{}) : fieldsToJSON(result);
}

} // namespace orvane
