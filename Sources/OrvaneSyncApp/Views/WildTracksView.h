#pragma once

#include "OrvaneSyncApp/Controllers/RawFileAudioPlayer.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

namespace orvane::views {

/// The sound that no clip uses: listen to it, name it, approve it for the document. Hidden without any. What
/// plays stops when this goes from the screen.
class WildTracksView : public QWidget {
  public:
    explicit WildTracksView(Desktop& desktop, QWidget* parent = nullptr);
    QTreeWidget* list() const { return list_; }
    /// In points, for all recordings without scrolling.
    int neededHeight() const;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void fill();
    void changed(const QTreeWidgetItem& row, int column);
    void play(const QTreeWidgetItem& row);
    void showPlaying();

    Desktop& desktop_;
    QLabel* title_;
    QTreeWidget* list_;
    bool isFilling_ = false;
    std::shared_ptr<RawFileAudioPlayer> player_; ///< made when something is played first
    platform::Subscription playing_;
    platform::Subscription observation_;
};

} // namespace orvane::views
