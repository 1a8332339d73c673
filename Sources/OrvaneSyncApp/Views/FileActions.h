#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/MenuParts.h"

#include <QObject>

#include <functional>
#include <optional>
#include <string_view>

namespace orvane::views {

/// What menu entries do that ask for a file to be opened or written.
class FileActions : public QObject {
  public:
    /// All arguments outlive this object.
    FileActions(Desktop& desktop, QWidget& window, const MenuParts& parts)
        : desktop_(desktop), window_(window), parts_(parts) {}

    /// Asks for a folder and scans it with those of the work.
    void addCard();
    void openProject();
    void saveProject();
    void loadReport();
    void writeReview();
    void applyReview();
    void exportClip(const UUID& clip);

  private:
    /// An existing file, and a file to be written; absent if the user cancels.
    std::optional<QString> chosenFile(const QString& caption, const QString& filter);
    std::optional<QString> placeFor(const QString& caption, const QString& filter, const QString& name);
    /// `then` is called when the command has succeeded.
    void runWithPath(std::string_view id, const QString& path, std::string_view argument = "path",
                     bool overwrites = false, std::function<void()> then = {});
    void confirmSaved(const QString& path);

    Desktop& desktop_;
    QWidget& window_;
    const MenuParts& parts_;
};

} // namespace orvane::views
