#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Review/AfterPicture.h"

#include <memory>
#include <vector>

namespace orvane::views {

/// Offers to move the sound of the clip in view as that of another camera of its take was moved. Hidden
/// without such an offer; its place is chosen so that nothing moves when it appears.
class SiblingBanner : public QFrame {
  public:
    SiblingBanner(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent = nullptr);

    QString text() const { return text_->text(); }
    /// Applies the offer, if there is one; also while another message is shown in its place.
    void apply();

  private:
    /// Adds a button that runs the command, and returns it.
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
