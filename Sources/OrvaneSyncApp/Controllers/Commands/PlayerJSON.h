#pragma once

#include "OrvaneSyncApp/Controllers/ClusterEngineBag.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"

#include <memory>

namespace orvane::commands {

/// Position and state of a player; "shownFrame" only if a picture is shown.
JSON playerStateJSON(const VideoEngine& engine);
JSON clusterStateJSON(const ClusterEngineBag& bag);

/// Writes the picture that the engine shows to the file `output` of the call, and answers its position in
/// seconds.
platform::Task writePicture(CommandContext& context, std::shared_ptr<VideoEngine> engine, Call call,
                            std::shared_ptr<JSON> answer);

} // namespace orvane::commands
