#pragma once

#include "OrvaneSyncApp/ViewModels/Inspector/KeyOverview.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

namespace orvane::views {

/// Covers a screen and says what each key does there at this moment; keys that do nothing are grey. "?" shows
/// it while the screen is visible and no text is edited; any key and a click close it.
class KeyOverlay : public QWidget {
  public:
    /// `over`: the screen that it covers; `keys`: the keys of the screen at this moment.
    KeyOverlay(QWidget* over, std::function<std::vector<KeyGroup>()> keys);
    ~KeyOverlay() override;

    void open();
    std::vector<KeyGroup> now() const { return keys_(); }
    /// Its contents, for a screen reader.
    QString accessibleText() const;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

  private:
    QWidget* over_;
    const std::function<std::vector<KeyGroup>()> keys_;
    std::vector<KeyGroup> groups_;
};

/// The state of the clip in view on which it depends which keys of the review do something. `neighbour`: the
/// clip at that distance in the list, to check whether there is one; null: there always is.
/// `hasSuggestion` is not set: the banner of the screen knows.
ReviewSituation
situationOf(Desktop& desktop, ReviewViewModel& review,
            const std::function<std::optional<UUID>(const UUID& of, int step)>& neighbour = nullptr);

} // namespace orvane::views
