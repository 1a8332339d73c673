#pragma once

#include "OrvaneSyncApp/Controllers/RawFileAudioPlayer.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>
#include <vector>

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

namespace orvane::views {

/// The recordings that no clip uses: listen to them, name them, approve them for the document. Hidden if
/// there are none. Playing stops when this view is hidden.
class WildTracksView : public QWidget {
  public:
    explicit WildTracksView(Desktop& desktop, QWidget* parent = nullptr);
    QTreeWidget* list() const { return list_; }
    /// The clips that are selected on the screen: the menu of a recording offers to attach it to a single
    /// one.
    std::function<std::vector<UUID>()> selectedClips;
    /// The height in points that shows that many recordings, or all of them if there are fewer.
    int heightOfRows(int most) const;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void fill();
    void changed(const QTreeWidgetItem& row, int column);
    void toggleApproved(QTreeWidgetItem& row);
    void showMenu(const QPoint& at);
    void attach(const WildTrack& track, const UUID& clip);
    /// Null if it is none any more.
    const WildTrack* trackOf(const QTreeWidgetItem& row) const;
    void play(const QTreeWidgetItem& row);
    void showTitle();
    void showPlaying();

    Desktop& desktop_;
    QLabel* title_;
    QTreeWidget* list_;
    bool isFilling_ = false;
    std::shared_ptr<RawFileAudioPlayer> player_; ///< made when something is played for the first time
    platform::Subscription playing_;
    platform::Subscription observation_;
};

} // namespace orvane::views
