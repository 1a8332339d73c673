#include "OrvaneSyncApp/Views/WorkScreens.h"

#include "OrvaneSyncApp/Views/Inspector/OutlineView.h"
#include "OrvaneSyncApp/Views/Review/MulticamView.h"
#include "OrvaneSyncApp/Views/Review/ReviewView.h"

#include <QLineEdit>

#include <algorithm>
#include <utility>

namespace orvane::views {

WorkScreens::WorkScreens(Desktop& desktop, QStackedWidget& pages, ReviewActions& actions)
    : desktop_(desktop), pages_(pages), host_(host(actions)) {}

ScreenHost WorkScreens::host(ReviewActions& actions) {
    ScreenHost host;
    host.actions = &actions;
    host.showList = [this] { showList(); };
    host.openReview = [this](const UUID& clip) { openReview(clip); };
    host.openMulticam = [this](const std::vector<UUID>& cameras) { openMulticam(cameras); };
    host.clipsChanged = [this](const WorkScreen& screen) {
        if (&screen == front_) clipsChanged();
    };
    return host;
}

void WorkScreens::add(WorkScreen& screen) {
    screens_.push_back(&screen);
    pages_.addWidget(&screen);
    if (OutlineView* outline = screen.outlineBeside()) outline->whenAllWanted = [this] { listed_.reset(); };
}

WorkScreen& WorkScreens::front() {
    if (front_ == nullptr) front_ = &list();
    return *front_;
}

std::vector<UUID> WorkScreens::clips() const {
    return front_ != nullptr && pages_.currentWidget() == front_ ? front_->clips() : std::vector<UUID>();
}

void WorkScreens::openReview(const UUID& clip) {
    if (desktop_.controller().work().syncGroups().find(clip) != nullptr) open<ReviewView>({clip});
}

void WorkScreens::openMulticam(const std::vector<UUID>& cameras) {
    if (cameras.size() < 2)
        return whenRefused(
            QObject::tr("The take has one camera. Select several clips to see them beside each other."));
    open<MulticamView>(cameras);
}

void WorkScreens::openReviewOfSelected() {
    if (const auto selected = clips(); !selected.empty()) openReview(selected.front());
}

void WorkScreens::openMulticamOfSelected() {
    openMulticam(MulticamViewModel::camerasFor(desktop_.controller().work(), clips()));
}

void WorkScreens::open(WorkScreen& screen, const std::vector<UUID>& clips) {
    const bool isInFront = &screen == front_, isFromList = !isPlaying();
    const bool isFromClip = !isFromList && front_->isOfOneClip() && !front_->clips().empty();
    std::optional<UUID> from = screen.isOfOneClip() ? std::nullopt
                               : isFromClip         ? std::optional(front_->clips().front())
                               : isInFront          ? from_
                                                    : std::nullopt;
    // From another take, Escape leads to a clip of that take.
    if (from && isInFront && !clips.empty() && std::ranges::find(clips, *from) == clips.end())
        from = clips.front();
    if (OutlineView* outline = screen.outlineBeside(); outline != nullptr && !isInFront)
        showListed(*outline, clips);
    const std::vector<UUID> before = screen.seen();
    isOpening_ = true;
    screen.open(clips);
    isOpening_ = false;
    if (screen.isOpen()) {
        from_ = from;
        if (isFromList) ofSelection_ = screen.seen();
        bringToFront(screen);
    }
    if (isFrontGone() || screen.seen() != before) clipsChanged();
}

/// Shows, beside a screen that opens with these clips, the clips that the list showed when it was left.
void WorkScreens::showListed(OutlineView& outline, const std::vector<UUID>& clips) {
    if (!isPlaying()) {
        listed_ = list().listing();
        const auto isListed = [this](const UUID& clip) {
            return std::ranges::find(listed_->clips, clip) != listed_->clips.end();
        };
        // A clip that was opened from elsewhere does not belong to the list.
        if (listed_ && !std::ranges::any_of(clips, isListed)) listed_.reset();
    }
    outline.showOnly(listed_ ? std::optional(listed_->clips) : std::nullopt,
                     listed_ ? listed_->title : QString());
    // A search goes from one screen that plays to the next, and ends with the way back to the list.
    const OutlineView* before = isPlaying() ? front_->outlineBeside() : nullptr;
    outline.search()->setText(before != nullptr ? before->search()->text() : QString());
}

void WorkScreens::bringToFront(WorkScreen& screen) {
    WorkScreen& before = front();
    if (&screen == &before) return;
    front_ = &screen;
    whenFrontChanged();
    before.leave();
}

void WorkScreens::showList() {
    if (!isPlaying()) return;
    const std::vector<UUID> seen = front_->seen();
    // If several clips were opened from a selection, the selection is not changed.
    const bool isOfSelection = seen.size() > 1 && !from_ && seen == ofSelection_;
    bringToFront(list());
    if (!isOfSelection) list().select(seen);
}

void WorkScreens::goBack() {
    if (!from_) return showList();
    const UUID clip = *from_;
    desktop_.controller().work().syncGroups().find(clip) != nullptr ? openReview(clip) : showList();
}

void WorkScreens::close() {
    front_ = nullptr;
    for (WorkScreen* screen : screens_) screen->leave();
}

void WorkScreens::savePlaces() const {
    for (WorkScreen* screen : screens_) screen->savePlaces();
}

void WorkScreens::clipsChanged() {
    if (isOpening_) return;
    if (isFrontGone()) return showList();
    if (isPlaying()) {
        const std::vector<UUID> shown = front_->clips();
        // Saved here too, so that it is restored even if the program is ended from outside.
        if (ResultsView* list = made<ResultsView>(); list != nullptr && !shown.empty())
            list->saveListing(shown.front());
    }
    if (whenClipsChanged) whenClipsChanged();
}

} // namespace orvane::views
