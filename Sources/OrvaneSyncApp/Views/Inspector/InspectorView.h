#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Review/AfterPicture.h"

#include <QWidget>

#include <memory>
#include <vector>

class QScrollArea;
class QStackedLayout;

namespace orvane::views {

class InspectorSection;

/// What is known of the clip in view, and where it is changed: sections that fold, each about one thing.
/// Follows the notices once a turn of the loop, and only while it is seen.
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
    QWidget* lookedAt() const;
    QPoint topOf(const QWidget& inside) const; ///< in `content_`

    Desktop& desktop_;
    const std::shared_ptr<ReviewViewModel> review_;
    QStackedLayout* pages_;
    QScrollArea* scroll_;
    QWidget* content_; ///< what scrolls
    UUID clipID_;      ///< that is shown
    QLabel* title_;
    QString name_; ///< as it is exported
    design::Badge* status_;
    QLabel* why_; ///< it has no settled match
    std::vector<InspectorSection*> sections_;
    AfterPicture later_;
    std::vector<platform::Subscription> observations_;
};

} // namespace orvane::views
