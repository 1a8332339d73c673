#pragma once

#include "OrvaneSyncApp/ViewModels/Timeline/TimelineLayout.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QAbstractButton>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvane::views {

/// The name of a channel, which is never translated where the recorder gave it.
QString shownName(const TimelineChannel& channel);

/// A switch of a channel: a word in a box. It shows what the clip says, and changes only with it.
class TrackBox : public QAbstractButton {
  public:
    explicit TrackBox(QWidget* parent);
    QSize sizeHint() const override;
    std::function<void()> focused;

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void nextCheckState() override {}
};

/// The header of the rows: names, the result of the analysis for each channel, and its switches.
class TrackHeader : public QWidget {
  public:
    static constexpr int width = 212;

    TrackHeader(Desktop& desktop, std::function<void()> fold, QWidget* parent = nullptr);
    /// `isExpanded`: one row for each channel.
    void show(const TimelineLayout& layout, bool isExpanded);
    std::function<void(double)> scrolledBy; ///< points, vertically

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    enum Box { algorithm, active, solo };
    using Boxes = std::array<TrackBox*, 3>;
    Boxes makeBoxes(int track);
    void placeBoxes();
    void bringIntoView(const QWidget& box);
    void run(int track, Box box, bool isAlone);

    Desktop& desktop_;
    std::optional<TimelineLayout> layout_;
    bool isExpanded_ = false;
    QWidget* area_; ///< below the ruler; rows that are scrolled up are cut at its edge
    QAbstractButton* fold_;
    std::vector<Boxes> boxes_; ///< by channel
};

} // namespace orvane::views
