#pragma once

#include "OrvaneSyncApp/Controllers/ClusterEngineBag.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"

#include <memory>

namespace orvane::commands {

/// What a player stands at and does; "shownFrame" only where there is a picture.
JSON playerStateJSON(const VideoEngine& engine);
JSON clusterStateJSON(const ClusterEngineBag& bag);

/// Writes the picture that the engine shows to the `output` of the call, and answers its second.
platform::Task writePicture(CommandContext& context, std::shared_ptr<VideoEngine> engine, Call call,
                            std::shared_ptr<JSON> answer);

} // namespace orvane::commands
