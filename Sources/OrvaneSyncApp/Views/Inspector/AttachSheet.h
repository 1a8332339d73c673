#pragma once

#include "OrvaneSyncApp/ViewModels/Inspector/SoundParts.h"

#include <QDialog>

#include <functional>
#include <vector>

class QLineEdit;
class QListWidget;

namespace orvane::views {

/// Recordings to choose one from by name, or a file.
class AttachSheet : public QDialog {
  public:
    AttachSheet(const std::vector<Attachable>& recordings, QWidget* parent);

    std::function<void(const UUID& audioID)> whenChosen;
    std::function<void()> whenFileWanted;

  private:
    void filter(const QString& words);
    void choose();

    QLineEdit* search_;
    QListWidget* list_;
    std::vector<UUID> ids_; ///< by row
};

} // namespace orvane::views
