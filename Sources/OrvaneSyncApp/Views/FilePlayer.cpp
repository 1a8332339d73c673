#include "OrvaneSyncApp/Views/FilePlayer.h"

#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Services/Timeline/TimelineRuler.h"

#include <QObject>

#include <cmath>

namespace orvane::views {

std::shared_ptr<RawFileAudioPlayer> makeFilePlayer(Desktop& desktop) {
    if (const auto& players = desktop.players().players()) {
        const auto& environment = desktop.controller().work().environment;
        return RawFileAudioPlayer::create(
            players, WaveformState::create(environment.mainThread, environment.waveformCache));
    }
    if (desktop.whenRefused)
        desktop.whenRefused(QObject::tr("Nothing can be played: this machine has no player for sound."));
    return nullptr;
}

QString placeText(const RawFileAudioPlayer& player) {
    const auto moment = [](double seconds) { return text(TimelineRuler::labelText(std::floor(seconds))); };
    return player.duration() > 0
               ? QObject::tr("%1 of %2").arg(moment(player.currentTime()), moment(player.duration()))
               : QString();
}

} // namespace orvane::views
