#include "OrvaneSyncApp/Views/Review/ReviewActions.h"

#include "OrvaneDesignKit/Icons.h"
#include "OrvaneSyncApp/Views/Review/KeyEvents.h"
#include "OrvaneSyncApp/Views/Translation.h"

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
    const ShortcutCategory category = orvane::category(action);
    return category == ShortcutCategory::audioOffset || category == ShortcutCategory::sync ||
           action == KeyAction::toggleApproved;
}

bool hasUsualKey(KeyAction action) {
    static const ShortcutBindings usual = defaultBindings();
    const auto found = usual.find(action);
    return found != usual.end() && !found->second.isUnbound();
}

/// Actions that apply to all cameras of a take together.
bool isForCameras(KeyAction action) {
    return action == KeyAction::toggleFullscreen || action == KeyAction::nextGroup ||
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
    lens_ = new QAction(icon(Glyph::lens), tr("Sync Lens"), this);
    lens_->setCheckable(true);
    lens_->setShortcut(QKeySequence(Qt::Key_S));
    lens_->setToolTip(tr("Sync Lens (S): the frames around the clap beside the sound"));
    lens_->setStatusTip(
        tr("Shows the frames before, at and after the clap beside the sound of that moment."));
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
}

void ReviewActions::fillSync(QMenu& menu) const {
    for (const auto& [key, action] : actions_)
        if (isOfSync(key) && category(key) != ShortcutCategory::audioOffset) menu.addAction(action);
    menu.addAction(lens_);
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
    lens_->setEnabled(isInFront_ && isReview_);
}

} // namespace orvane::views
