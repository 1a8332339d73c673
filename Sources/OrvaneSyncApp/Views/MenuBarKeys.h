#pragma once

#include <QObject>

#include <functional>

class QAction;
class QMainWindow;

namespace orvane::views {

/// Keys that Qt handles otherwise while a menu or a sheet is open: returns the keyboard to the screen when a
/// menu is left, and quits over a sheet.
class MenuBarKeys : public QObject {
  public:
    /// To be made when the menus are there; all arguments outlive this object. `quit`: the entry that closes
    /// the window, with its key.
    MenuBarKeys(QMainWindow& window, QAction& quit, std::function<void()> takeKeyboard);

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void leaveMenuBar();
    /// For a menu bar that has the keyboard and shows no menu: Qt leaves it so after a second menu.
    void returnKeyboard();
    bool isQuittingOverSheet(const QObject& watched, const QEvent& event) const;
    void closeWindow();

    QMainWindow& window_;
    QAction& quit_;
    const std::function<void()> takeKeyboard_;
};

} // namespace orvane::views
