#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

class QTreeWidget;
class QTreeWidgetItem;

namespace orvane::views {

/// The kept sessions in their folders: opened by a double click or Return, renamed in place, dragged into a
/// folder.
class SessionsPanel : public QWidget {
  public:
    explicit SessionsPanel(Desktop& desktop, QWidget* parent = nullptr);

  private:
    void fill();
    void open(QTreeWidgetItem* item);
    void renamed(QTreeWidgetItem* item);
    void showMenu(const QPoint& position);

    Desktop& desktop_;
    QTreeWidget* tree_;
    QLabel* empty_;
    bool isFilling_ = false;
    platform::Subscription observation_;
};

} // namespace orvane::views
