#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Review/AfterPicture.h"

#include <memory>
#include <vector>

namespace orvane::views {

/// Offers the clip in view the move that another camera of its take got. Hidden without such an offer: it
/// lies where nothing moves when it comes.
class SiblingBanner : public QFrame {
  public:
    SiblingBanner(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent = nullptr);

    QString text() const { return text_->text(); }

  private:
    /// A button that runs the command; it is given back.
    QPushButton* add(std::string_view id, QPushButton* one);
    void refresh();
    void run(std::string_view id);

    Desktop& desktop_;
    const std::shared_ptr<ReviewViewModel> review_;
    QLabel* text_;
    AfterPicture later_;
    std::vector<platform::Subscription> observations_;
};

} // namespace orvane::views
