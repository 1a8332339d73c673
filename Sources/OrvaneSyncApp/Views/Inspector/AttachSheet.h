#pragma once

#include "OrvaneSyncApp/ViewModels/Inspector/SoundParts.h"
#include "OrvaneSyncApp/Views/FilePlayer.h"

#include <QDialog>

#include <functional>
#include <vector>

class QLabel;
class QLayout;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace orvane::views {

/// Recordings to choose one from by name and by ear, or a file.
class AttachSheet : public QDialog {
  public:
    AttachSheet(Desktop& desktop, const std::vector<Attachable>& recordings, QWidget* parent);

    std::function<void(const UUID& audioID)> whenChosen;
    std::function<void()> whenFileWanted;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    static QStringList partsOf(const Attachable& one);
    QLayout* makeListening();
    void filter(const QString& words);
    void selectFirst(); ///< of those that are found
    /// A key in the list that is meant for the field above it: what is typed, and Up from the first row.
    bool goesToSearch(const QKeyEvent& event) const;
    /// Null without a row that is selected.
    const MediaAsset* selected() const;
    void choose();
    /// Plays the selected one, or pauses it.
    void listen();
    void followSelection();
    void showPlaying();

    Desktop& desktop_;
    QLineEdit* search_;
    QListWidget* list_;
    QPushButton *attach_, *listen_;
    QLabel* place_;
    std::vector<MediaAsset> audios_;             ///< by row
    std::shared_ptr<RawFileAudioPlayer> player_; ///< made when something is played first
    bool isAsked_ = false;                       ///< to play what is selected
    platform::Subscription playing_;
};

} // namespace orvane::views
