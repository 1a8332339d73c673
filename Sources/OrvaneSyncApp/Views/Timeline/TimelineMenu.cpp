#include "OrvaneSyncApp/Views/Timeline/TimelineCanvas.h"

#include "OrvaneSyncApp/Views/Review/KeyEvents.h"
#include "OrvaneSyncApp/Views/Timeline/TrackHeader.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"

#include <QContextMenuEvent>
#include <QMenu>

#include <utility>

namespace orvane::views {

using Spot = TimelineLayout::Spot;

namespace {

constexpr std::string_view trackCommands[] = {"toggleTrackActive", "soloTrackActive",
                                              "toggleAlgorithmInclusion", "soloAlgorithmInclusion",
                                              "toggleSoloMonitor"};

} // namespace

std::unique_ptr<QMenu> TimelineCanvas::menuAt(const TimelineLayout::Hit& hit) {
    auto menu = std::make_unique<QMenu>();
    menu->setToolTipsVisible(true);
    const TimelineRows& rows = layout_->content();
    const auto add = [&](std::string_view id, JSON arguments, const QString& title = {}) {
        const commands::Command& command = desktop_.command(id);
        auto* action = menu->addAction(title.isEmpty() ? translated(command.title) : title);
        action->setToolTip(translated(command.help));
        action->setEnabled(desktop_.isEnabled(id, clip()));
        connect(action, &QAction::triggered, this,
                [this, id, arguments = std::move(arguments)] { desktop_.run(id, arguments); });
        return action;
    };
    const auto withKey = [&](const QString& title, KeyAction action) {
        const ShortcutBindings& bindings = desktop_.players().shortcuts()->bindings();
        const auto found = bindings.find(action);
        const QString key = found == bindings.end() ? QString() : shownKey(found->second);
        return key.isEmpty() ? title : title + QLatin1Char('\t') + key;
    };
    if (hit.spot == Spot::recording) {
        const TimelineRecording& recording = rows.recordings[*hit.index];
        menu->addSection(views::text(recording.name));
        JSON chosen = ofClip();
        chosen.set("matchID", recording.matchID.text());
        add("chooseRecording", std::move(chosen));
        menu->addSeparator();
    }
    if (rows.hasSound && (hit.spot == Spot::waveform || hit.spot == Spot::anchor)) {
        JSON here = ofClip();
        here.set("secondsInAudio", hit.seconds - rows.soundOffset - rows.primaryStart);
        add("setAnchor", std::move(here), tr("Set Clap Point Here"));
        if (rows.anchorSeconds) add("setAudioAnchor", ofClip(), tr("Clear Clap Point"));
    }
    if (rows.hasSound) {
        if (!rows.anchorSeconds) add("autoDetectAudioAnchor", ofClip());
        if (rows.anchorSeconds)
            connect(menu->addAction(tr("Go to Clap Point")), &QAction::triggered, this,
                    [this] { review_->seekVideoToAnchor(); });
        if (rows.anchorSeconds)
            menu->addAction(tr("Put on the Frame Shown"), this, [this] { review_->putClapOnFrame(); })
                ->setEnabled(!rows.isLocked);
        JSON analysis = ofClip();
        analysis.set("forceOverwriteManualTracks", false);
        add("runSmartAudioForGroup", std::move(analysis));
    }
    QAction* lock =
        add("toggleLocked", ofClip(),
            withKey(translated(desktop_.command("toggleLocked").titleFor(clip())), KeyAction::lockCurrent));
    lock->setCheckable(true);
    lock->setChecked(rows.isLocked && !isMovedSinceLock(*clip()));
    if (hit.track && rows.channel(*hit.track) != nullptr) {
        menu->addSection(QStringLiteral("T%1 %2").arg(*hit.track).arg(shownName(*rows.channel(*hit.track))));
        for (const std::string_view id : trackCommands) {
            JSON arguments = ofClip();
            arguments.set("trackIndex", *hit.track);
            add(id, std::move(arguments));
        }
    }
    if (hit.spot == Spot::range || hit.spot == Spot::rangeStart || hit.spot == Spot::rangeEnd) {
        JSON range = ofClip();
        range.set("overrideID", rows.ranges[*hit.index].id.text());
        add("removeBlockOverride", std::move(range));
    }
    menu->addSeparator();
    const auto key = [&](const QString& title, KeyAction action) {
        connect(menu->addAction(withKey(title, action)), &QAction::triggered, this,
                [this, action] { review_->handleKeyAction(action); });
    };
    key(tr("Zoom In"), KeyAction::zoomIn);
    key(tr("Zoom Out"), KeyAction::zoomOut);
    key(tr("Zoom Fit"), KeyAction::zoomFit);
    return menu;
}

void TimelineCanvas::contextMenuEvent(QContextMenuEvent* event) {
    if (!layout_) return;
    endSkim();
    QPointF at = event->pos();
    const auto* sound = layout_->row(TimelineLayout::RowKind::sound);
    if (event->reason() == QContextMenuEvent::Keyboard && sound != nullptr)
        at = QPointF(layout_->x(playheadSeconds_), sound->y + sound->height / 3);
    const auto menu = menuAt(layout_->hit(at.x(), at.y()));
    menu->exec(event->reason() == QContextMenuEvent::Keyboard ? mapToGlobal(at.toPoint())
                                                              : event->globalPos());
}

} // namespace orvane::views
