#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Review/AfterPicture.h"

#include <QWidget>

#include <memory>
#include <vector>

class QPushButton;
class QScrollArea;
class QStackedLayout;

namespace orvane::views {

class InspectorSection;

/// Shows what is known about the clip in view, and changes it: foldable sections, each about one subject. The
/// controls of the sync are at the same place for every clip: what has a different height for each clip is
/// below them.
/// Updated at most once in each turn of the event loop, and only while it is visible.
class InspectorView : public QWidget {
  public:
    InspectorView(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent = nullptr);

  protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

  private:
    void scheduleRefresh();
    void refresh();
    void showTitle();
    /// The most important reason to look at the clip, in one line.
    void showReason(const SyncGroup& clip);
    void showReasonText();
    QWidget* lookedAt() const;
    QPoint topOf(const QWidget& inside) const; ///< in the coordinates of `content_`

    Desktop& desktop_;
    const std::shared_ptr<ReviewViewModel> review_;
    QStackedLayout* pages_;
    QScrollArea* scroll_;
    QWidget* content_; ///< the widget that is scrolled
    UUID clipID_;      ///< the clip that is shown
    QLabel* title_;
    QString name_; ///< the name in the export
    design::Badge* status_;
    QPushButton* reason_;
    QString reasonText_; ///< not shortened
    InspectorSection* doubts_;
    std::vector<InspectorSection*> sections_;
    AfterPicture later_;
    std::vector<platform::Subscription> observations_;
};

} // namespace orvane::views
