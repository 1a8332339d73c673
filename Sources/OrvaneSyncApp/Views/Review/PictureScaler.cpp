#include "OrvaneSyncApp/Views/Review/PictureScaler.h"

#include "OrvaneSyncApp/Views/QtMainThread.h"

namespace orvane::views {

PictureScaler::PictureScaler(std::function<void(QImage)> done)
    : done_(std::move(done)), mainThread_(qtMainThread()),
      queue_(platform::SerialQueue::create("picture scaler")) {}

void PictureScaler::scale(QImage picture, QSize size) {
    if (isScaling_)
        next_.emplace(std::move(picture), size);
    else
        begin(std::move(picture), size);
}

void PictureScaler::begin(QImage picture, QSize size) {
    isScaling_ = true;
    queue_->post([this, picture = std::move(picture), size] {
        mainThread_->post(
            [this, scaled = picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)] {
                isScaling_ = false;
                if (auto next = std::exchange(next_, std::nullopt))
                    begin(std::move(next->first), next->second);
                done_(scaled);
            });
    });
}

} // namespace orvane::views
