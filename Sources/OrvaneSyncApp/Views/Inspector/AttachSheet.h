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

/// Chooses a recording from a list, by its name or by listening, or from a file.
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
    void selectFirst(); ///< the first of the rows found by the search
    /// Whether the key, pressed in the list, is for the search field above it: text, and Up in the first row.
    bool goesToSearch(const QKeyEvent& event) const;
    /// Null if no row is selected.
    const MediaAsset* selected() const;
    void choose();
    /// Plays the selected recording, or pauses it.
    void listen();
    void followSelection();
    void showPlaying();

    Desktop& desktop_;
    QLineEdit* search_;
    QListWidget* list_;
    QPushButton *attach_, *listen_;
    QLabel* place_;
    std::vector<MediaAsset> audios_;             ///< one for each row
    std::shared_ptr<RawFileAudioPlayer> player_; ///< made when something is played for the first time
    bool isAsked_ = false;                       ///< the user asked to play the selected recording
    platform::Subscription playing_;
};

} // namespace orvane::views
