#include "OrvaneSyncApp/Views/Review/ReviewActions.h"

#include "OrvaneDesignKit/Icons.h"
#include "OrvaneSyncApp/ViewModels/Inspector/KeyOverview.h"
#include "OrvaneSyncApp/ViewModels/Review/PictureTexts.h"
#include "OrvaneSyncApp/Views/Review/KeyEvents.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Services/Shortcuts/ReviewKeys.h"

#include <QAction>
#include <QKeySequence>
#include <QMenu>

#include <array>
#include <utility>
#include <vector>

namespace orvane::views {

using namespace design;

namespace {

struct Drawn {
    KeyAction action;
    Glyph glyph;
};
constexpr std::array<Drawn, 9> glyphs{{{KeyAction::playPause, Glyph::play},
                                       {KeyAction::stepBackward, Glyph::frameBack},
                                       {KeyAction::stepForward, Glyph::frameForward},
                                       {KeyAction::slowMoForward, Glyph::slow},
                                       {KeyAction::clapCheck, Glyph::clap},
                                       {KeyAction::toggleFullscreen, Glyph::fullscreen},
                                       {KeyAction::toggleApproved, Glyph::approve},
                                       {KeyAction::lockCurrent, Glyph::lock},
                                       {KeyAction::toggleAudioExpand, Glyph::waveform}}};

bool isOfSync(KeyAction action) {
    const ShortcutCategory category = shownCategory(action);
    return category == ShortcutCategory::audioOffset || category == ShortcutCategory::sync;
}

/// The menus have an entry of its command.
bool isInOtherMenu(KeyAction action) {
    const commands::Command* row = commands::commandOf(action);
    return row != nullptr && row->entry;
}

bool hasUsualKey(KeyAction action) {
    static const ShortcutBindings usual = defaultBindings();
    const auto found = usual.find(action);
    return found != usual.end() && !found->second.isUnbound();
}

/// Actions that apply to all cameras of a take together, or to the camera that is heard.
bool isForCameras(KeyAction action) {
    return action == KeyAction::lockCurrent || action == KeyAction::toggleApproved ||
           action == KeyAction::toggleFullscreen || action == KeyAction::nextGroup ||
           action == KeyAction::prevGroup ||
           (category(action) == ShortcutCategory::playback && action != KeyAction::jumpNextEdit &&
            action != KeyAction::jumpPrevEdit);
}

} // namespace

ReviewActions::ReviewActions(Desktop& desktop, QObject* parent) : QObject(parent), desktop_(desktop) {
    for (const ShortcutAction each : allShortcutActions()) {
        const auto key = keyAction(each);
        if (!key) continue;
        auto* action = new QAction(translated(label(*key)), this);
        action->setIconText(translated(label(*key)));
        action->setStatusTip(translated(helpText(*key)));
        connect(action, &QAction::triggered, this, [this, key = *key] {
            try {
                desktop_.players().handleKeyAction(key);
            } catch (const std::exception& why) {
                desktop_.sayWhyNot(translatedSentence(why.what()));
            }
        });
        actions_.emplace(*key, action);
    }
    for (const auto& [key, glyph] : glyphs) actions_.at(key)->setIcon(icon(glyph));
    makeFixed();
    bindings_ = desktop_.players().shortcuts()->onChange([this](ShortcutField field) {
        if (field == ShortcutField::bindings) showKeys();
    });
    showLockTitle();
    const auto& review = desktop_.players().review();
    ofReview_ = review->onChange([this] {
        showEnabled();
        showLockTitle();
    });
    ofEngine_ = review->engine()->onChange([this](VideoEngineField field) {
        if (field == VideoEngineField::transport || field == VideoEngineField::loop) showEnabled();
    });
    ofWork_ = desktop_.controller().onChange([this](ImportField field) {
        if (field != ImportField::syncGroups) return;
        showEnabled(); // the position of the clap may have changed
        showLockTitle();
    });
}

QAction* ReviewActions::fixed(const char* key, const QString& name, const QString& help) {
    auto* action = new QAction(name, this);
    action->setShortcut(QKeySequence(QLatin1String(key)));
    action->setToolTip(tr("%1 (%2)").arg(name, translatedKey(key)));
    action->setStatusTip(help);
    return action;
}

void ReviewActions::makeFixed() {
    lens_ = fixed(reviewKeys::lens, tr("Sync Lens"),
                  tr("Shows the frames before, at and after the clap beside the sound of that moment."));
    lens_->setIcon(icon(Glyph::lens));
    lens_->setCheckable(true);
    lens_->setToolTip(tr("Sync Lens (S): the frames around the clap beside the sound"));
    putOnFrame_ =
        fixed(reviewKeys::putOnFrame, tr("Put on the Frame Shown"),
              tr("Moves the sound by whole frames, so that its clap falls into the frame that is shown"));
    connect(putOnFrame_, &QAction::triggered, this, [this] {
        try {
            desktop_.players().review()->putClapOnFrame();
        } catch (const std::exception& why) {
            desktop_.sayWhyNot(translatedSentence(why.what()));
        }
    });
    toStart_ = fixed(reviewKeys::firstFrame, tr("To the First Frame"), {});
    toStart_->setIcon(icon(Glyph::toStart));
    connect(toStart_, &QAction::triggered, this, [this] { goTo(0); });
    toEnd_ = fixed(reviewKeys::lastFrame, tr("To the Last Frame"), {});
    connect(toEnd_, &QAction::triggered, this, [this] {
        PlayheadState end = desktop_.players().review()->engine()->playhead();
        end.time = platform::MediaTime::fromSeconds(end.clipDuration);
        goTo((end.frameLength() * shownFrame(end)).seconds());
    });
}

void ReviewActions::goTo(double seconds) {
    JSON arguments = JSON::object();
    arguments.set("seconds", seconds);
    desktop_.run("playerSeek", std::move(arguments));
}

void ReviewActions::showKeys() {
    const ShortcutBindings& bindings = desktop_.players().shortcuts()->bindings();
    setKeysInTexts(bindings);
    for (const auto& [key, action] : actions_) {
        const QString name = key == KeyAction::lockCurrent ? lockTitle_ : translated(label(key));
        const auto found = bindings.find(key);
        const QString keys = found == bindings.end() ? QString() : shownKey(found->second);
        action->setText(keys.isEmpty() ? name : name + QLatin1Char('\t') + keys);
        action->setToolTip(keys.isEmpty() ? name : tr("%1 (%2)").arg(name, keys));
    }
}

void ReviewActions::showLockTitle() {
    std::vector<UUID> shown;
    if (const auto& clip = desktop_.players().review()->groupID()) shown.push_back(*clip);
    QString title = desktop_.title("toggleLocked", shown);
    if (std::exchange(lockTitle_, std::move(title)) != lockTitle_) showKeys();
}

void ReviewActions::fillPlayback(QMenu& menu) const {
    std::optional<ShortcutCategory> last;
    for (const auto& [key, action] : actions_) {
        if (isOfSync(key)) continue;
        if (last && *last != category(key)) menu.addSeparator();
        last = category(key);
        menu.addAction(action);
    }
    menu.addSeparator();
    for (QAction* action : {toStart_, toEnd_}) menu.addAction(action);
}

void ReviewActions::fillSync(QMenu& menu) const {
    for (const auto& [key, action] : actions_)
        if (isOfSync(key) && category(key) != ShortcutCategory::audioOffset && !isInOtherMenu(key))
            menu.addAction(action);
    for (QAction* action : {putOnFrame_, lens_}) menu.addAction(action);
    menu.addSeparator();
    for (const bool hasKey : {true, false}) // actions with a key first
        for (const auto& [key, action] : actions_)
            if (category(key) == ShortcutCategory::audioOffset && hasUsualKey(key) == hasKey)
                menu.addAction(action);
}

void ReviewActions::setInFront(bool isInFront, bool isReview) {
    isInFront_ = isInFront;
    isReview_ = isReview;
    showEnabled();
}

void ReviewActions::showEnabled() {
    const auto acts = [this](KeyAction key) {
        if (!isReview_) return isForCameras(key);
        const ReviewViewModel& review = *desktop_.players().review();
        if (category(key) == ShortcutCategory::audioOffset) {
            const SyncGroup* clip = review.groupID()
                                        ? desktop_.controller().work().syncGroups().find(*review.groupID())
                                        : nullptr;
            return clip != nullptr && desktop_.isEnabled("nudgeByFrames", clip);
        }
        return key != KeyAction::clapCheck || review.canCheckClap();
    };
    for (const auto& [key, action] : actions_) action->setEnabled(isInFront_ && acts(key));
    for (QAction* action : {lens_, putOnFrame_, toStart_, toEnd_})
        action->setEnabled(isInFront_ && isReview_);
}

} // namespace orvane::views
