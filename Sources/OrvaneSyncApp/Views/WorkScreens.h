#pragma once

#include "OrvaneSyncApp/Views/ResultsView.h"
#include "OrvaneSyncApp/Views/WorkScreen.h"

#include <QStackedWidget>

#include <functional>
#include <optional>
#include <vector>

namespace orvane::views {

/// The screens of the open work: which one is in front, which clips they pass to each other, and where
/// Escape leads. A screen is made at the first request, so that the window appears sooner. A further screen
/// is a class of its own and a call of `open` with that class.
class WorkScreens {
  public:
    /// The screens are added to `pages`. All arguments outlive this object.
    WorkScreens(Desktop& desktop, QStackedWidget& pages, ReviewActions& actions);

    /// Called when another screen is in front; shows its page.
    std::function<void()> whenFrontChanged;
    /// Called when the clips that menus and keys act on may be others.
    std::function<void()> whenClipsChanged;
    /// Called with the reason if something can't be opened.
    std::function<void(const QString& why)> whenRefused;

    /// Null if the screen was not made yet.
    template <class Screen>
    Screen* made() const {
        for (WorkScreen* one : screens_)
            if (auto* found = dynamic_cast<Screen*>(one)) return found;
        return nullptr;
    }
    template <class Screen>
    Screen& get() {
        if (Screen* one = made<Screen>()) return *one;
        auto* one = new Screen(desktop_, host_);
        add(*one);
        return *one;
    }
    /// Brings the screen to the front with these clips.
    template <class Screen>
    void open(const std::vector<UUID>& clips) {
        open(get<Screen>(), clips);
    }
    ResultsView& list() { return get<ResultsView>(); }
    /// At first the list.
    WorkScreen& front();
    bool isPlaying() const { return front_ != nullptr && front_->isPlaying(); }
    /// Those that menus and keys act on; none while another page is shown.
    std::vector<UUID> clips() const;

    /// Opens a clip at its clap. Does nothing for a clip that does not exist.
    void openReview(const UUID& clip);
    /// Opens the cameras beside each other. Refused if there is only one.
    void openMulticam(const std::vector<UUID>& cameras);
    void openReviewOfSelected();
    void openMulticamOfSelected();
    /// Back to the list, at the clips that were in view.
    void showList();
    /// Escape: to the clip from which this screen was opened, otherwise to the list.
    void goBack();
    /// Stops and releases what all screens play. For the end of the window: nothing is called back after it.
    void close();
    void savePlaces() const;

  private:
    ScreenHost host(ReviewActions& actions);
    void add(WorkScreen& screen);
    void open(WorkScreen& screen, const std::vector<UUID>& clips);
    void bringToFront(WorkScreen& screen);
    void showListed(OutlineView& outline, const std::vector<UUID>& clips);
    void clipsChanged();
    /// Its clips were removed from the work, or another player has closed it.
    bool isFrontGone() const { return isPlaying() && !front_->isOpen(); }

    Desktop& desktop_;
    QStackedWidget& pages_;
    const ScreenHost host_;
    std::vector<WorkScreen*> screens_;           ///< in the order in which they were made
    WorkScreen* front_ = nullptr;                ///< null: nothing was shown yet
    bool isOpening_ = false;                     ///< one screen is being replaced by another
    std::optional<UUID> from_;                   ///< the clip that Escape opens from the screen in front
    std::vector<UUID> ofSelection_;              ///< the clips that were last opened from the list
    std::optional<ResultsView::Listing> listed_; ///< shown beside the screens that play
};

} // namespace orvane::views
