#include "OrvaneSyncCore/Models/LockitField.h"

namespace orvane {

std::string_view displayName(LockitField field) {
    static constexpr std::array<std::string_view, 10> names{
        "Scene",         "Take", "Shot Description", "Take Comment", "Int/Ext · Day/Night",
        "Scene Content", "Set",  "Tags (print/PU)",  "Episode",      "Camera Name (Lockit)"};
    return rowOf(names, field);
}

std::string_view displayName(FCPMetaTarget target) {
    static constexpr std::array<std::string_view, 8> names{"— Off —",     "Scene", "Shot/Take", "Camera Name",
                                                           "Description", "Notes", "Keyword",   "Custom…"};
    return rowOf(names, target);
}

std::string_view ownMetadataKey(FCPMetaTarget target) {
    using enum FCPMetaTarget;
    switch (target) {
    case scene:
        return "com.apple.proapps.studio.scene";
    case shotTake:
        return "com.apple.proapps.studio.shot";
    case cameraName:
        return "com.apple.proapps.metadataField.cameraName";
    case description:
        return "com.apple.proapps.metadataField.description";
    case off:
    case notes:
    case keyword:
    case custom:
        break;
    }
    return {};
}

} // namespace orvane
