#include "OrvaneSyncApp/Controllers/Commands/PlayerJSON.h"
#include "OrvaneSyncApp/Controllers/WorkInputs.h"

#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"
#include "Platform/OnQueue.h"
#include "Platform/Playback/PicturePNG.h"

namespace orvane::commands {

namespace {

/// The frame number of the shown picture, from 0.
void setShownFrame(JSON& json, const VideoEngine& engine) {
    const platform::Player* player = engine.player();
    const auto picture = player == nullptr ? std::nullopt : player->picture();
    if (picture) json.set("shownFrame", picture->number);
}

JSON levelsJSON(const AudioLevels& shown) {
    JSON::Array levels;
    for (const ChannelLevel& channel : shown.channels) {
        JSON level;
        level.set("channel", channel.channel);
        level.set("peak", static_cast<double>(channel.peak));
        level.set("rms", static_cast<double>(channel.rms));
        level.set("peakDB", static_cast<double>(channel.peakDB));
        level.set("rmsDB", static_cast<double>(channel.rmsDB));
        levels.push_back(std::move(level));
    }
    return levels;
}

} // namespace

JSON playerStateJSON(const VideoEngine& engine) {
    const PlayheadState& playhead = engine.playhead();
    const platform::Player* player = engine.player();
    JSON json;
    json.set("isLoaded", engine.transport().isLoaded);
    json.set("isPlaying", engine.transport().isPlaying);
    json.set("seconds", playhead.seconds());
    json.set("timecode", playhead.timecodeString());
    json.set("clipDuration", playhead.clipDuration);
    json.set("frameRate", playhead.frameRate);
    json.set("rate", engine.rate());
    json.set("label", engine.loop().jklLabel);
    json.set("isLooping", engine.loop().isLooping);
    json.set("loopStartSeconds", engine.loop().loopStart.seconds());
    json.set("loopEndSeconds", engine.loop().loopEnd.seconds());
    json.set("syncOffsetSeconds", engine.sound().syncOffsetSeconds);
    json.set("volume", static_cast<double>(engine.sound().volume));
    json.set("isDucking", engine.sound().isDucking);
    setShownFrame(json, engine);
    json.set("droppedFrames", player == nullptr ? 0 : player->droppedPictures());
    json.set("levels", levelsJSON(engine.output().levels()));
    return json;
}

JSON clusterStateJSON(const ClusterEngineBag& bag) {
    JSON::Array members;
    for (const auto& [id, label] : bag.memberLabels()) {
        const VideoEngine& engine = *bag.engines().at(id);
        JSON member;
        member.set("groupID", id.text());
        member.set("label", label);
        member.set("seconds", engine.playhead().seconds());
        setShownFrame(member, engine);
        member.set("isPlaying", engine.transport().isPlaying);
        member.set("rate", engine.rate());
        member.set("volume", static_cast<double>(engine.sound().volume));
        member.set("isDucking", engine.sound().isDucking);
        member.set("syncOffsetSeconds", bag.memberSyncOffsets().at(id));
        members.push_back(std::move(member));
    }
    JSON json;
    if (bag.audioSourceMemberID()) json.set("audioSourceMemberID", bag.audioSourceMemberID()->text());
    json.set("isPlaying", bag.isPlaying());
    json.set("members", std::move(members));
    return json;
}

platform::Task writePicture(CommandContext& context, std::shared_ptr<VideoEngine> engine, Call call,
                            std::shared_ptr<JSON> answer) {
    const auto picture = engine->player() == nullptr ? std::nullopt : engine->player()->picture();
    if (!picture) throw Error(Refusal::failed, "no picture is shown");
    const OpenWork& work = context.controller->work();
    const OutputPermission permission{call.has("overwrite") && call.boolean("overwrite"), "overwrite: true"};
    auto writing = platform::onQueue(
        *work.documents, work.environment.mainThread,
        [picture = *picture, permission, output = call.text("output"),
         inputs = inputsOf(*context.controller)] {
            OutputGuard(OutputKind::picture, inputs(), permission)
                .write(output, platform::encodedPNG(platform::colourPicture(picture), renderingMark));
        });
    co_await writing;
    JSON json;
    json.set("seconds", picture->time.seconds());
    *answer = std::move(json);
}

} // namespace orvane::commands
