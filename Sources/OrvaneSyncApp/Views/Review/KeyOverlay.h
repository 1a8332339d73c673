#pragma once

#include "OrvaneSyncApp/ViewModels/Inspector/KeyOverview.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

namespace orvane::views {

/// Lies over a screen and says what each key does there and at this moment; greyed what does nothing. "?"
/// shows it while the screen is seen and no text is edited; any key and a click close it.
class KeyOverlay : public QWidget {
  public:
    /// `over`: the screen that it covers; `keys`: those of the screen at this moment.
    KeyOverlay(QWidget* over, std::function<std::vector<KeyGroup>()> keys);
    ~KeyOverlay() override;

    void open();
    std::vector<KeyGroup> now() const { return keys_(); }
    /// What it says, for reading aloud.
    QString spoken() const;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

  private:
    QWidget* over_;
    const std::function<std::vector<KeyGroup>()> keys_;
    std::vector<KeyGroup> groups_;
};

/// What of the clip in view decides which keys of its review do something. `neighbour`: the clip so many
/// places away in the list, to say whether there is one; null: there always is.
ReviewSituation
situationOf(Desktop& desktop, ReviewViewModel& review,
            const std::function<std::optional<UUID>(const UUID& of, int step)>& neighbour = nullptr);

} // namespace orvane::views
