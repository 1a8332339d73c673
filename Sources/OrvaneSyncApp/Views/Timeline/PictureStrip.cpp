#include "OrvaneSyncApp/Views/Timeline/PictureStrip.h"

#include "OrvaneSyncApp/Views/Review/PictureCanvas.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <mutex>
#include <utility>
#include <vector>

namespace orvane::views {

namespace {

constexpr std::size_t mostPictures = 1500; ///< 14 kB each, four times that at double scale

} // namespace

/// One reader for all batches. A batch that was abandoned keeps its reader, and the next batch opens another
/// one.
struct PictureStrip::Reading {
    explicit Reading(std::string file) : path(std::move(file)) {}

    std::unique_ptr<platform::FrameReader> take() {
        {
            const std::lock_guard lock(mutex);
            if (reader) return std::move(reader);
        }
        return platform::FrameReader::open(path);
    }
    void giveBack(std::unique_ptr<platform::FrameReader> used) {
        const std::lock_guard lock(mutex);
        reader = std::move(used);
    }

    const std::string path;
    std::mutex mutex;
    std::unique_ptr<platform::FrameReader> reader;
};

PictureStrip::PictureStrip(std::shared_ptr<platform::MainThread> mainThread, std::function<void()> decoded)
    : mainThread_(std::move(mainThread)), decoded_(std::move(decoded)),
      self_(std::make_shared<PictureStrip*>(this)), queue_(platform::SerialQueue::create("picture strip")) {}

PictureStrip::~PictureStrip() {
    *self_ = nullptr;
    stop_.request_stop();
}

std::int64_t PictureStrip::keyOf(double seconds) {
    constexpr double milliseconds = 1000;
    return std::llround(seconds * milliseconds);
}

void PictureStrip::setVideo(const std::string& path, int height) {
    // A file that was missing may exist again.
    if (path_ == path && height_ == height && !isUnreadable_) return;
    path_ = path;
    height_ = height;
    pictures_.clear();
    aspect_.reset();
    isUnreadable_ = false;
    reading_ = path.empty() ? nullptr : std::make_shared<Reading>(path);
    want({}, 0);
}

const QImage* PictureStrip::near(std::int64_t key) const {
    if (pictures_.empty()) return nullptr;
    auto after = pictures_.lower_bound(key);
    if (after == pictures_.end()) return &std::prev(after)->second;
    if (after->first == key || after == pictures_.begin()) return &after->second;
    const auto before = std::prev(after);
    return key - before->first <= after->first - key ? &before->second : &after->second;
}

void PictureStrip::want(const std::set<double>& missing, double toleranceSeconds) {
    std::set<std::int64_t> keys;
    for (const double seconds : missing) keys.insert(keyOf(seconds));
    if (!keys.empty() && std::ranges::includes(wanted_, keys)) return;
    stop_.request_stop();
    stop_ = {};
    const std::uint64_t batch = ++batch_;
    wanted_ = std::move(keys);
    if (wanted_.empty() || !reading_ || isUnreadable_) return wanted_.clear();
    if (pictures_.size() > mostPictures) pictures_.clear();
    queue_->post(
        [todo = std::vector(wanted_.begin(), wanted_.end()), reading = reading_, height = height_, batch,
         tolerance = platform::MediaTime::fromSeconds(toleranceSeconds), token = stop_.get_token(),
         self = self_, mainThread = std::weak_ptr(mainThread_)] {
            const auto post = [&](auto report) {
                if (const auto thread = mainThread.lock())
                    thread->post([self, report = std::move(report)] {
                        if (*self != nullptr) report(**self);
                    });
            };
            try {
                auto reader = reading->take();
                if (!reader) return post([batch](PictureStrip& strip) { strip.setUnreadable(batch); });
                constexpr int perSecond = 1000;
                for (const std::int64_t key : todo) {
                    if (token.stop_requested()) break;
                    auto picture = reader->pictureAt({key, perSecond}, tolerance, {0, height}, token);
                    post([batch, key, picture = std::move(picture)](PictureStrip& strip) {
                        strip.take(batch, key, picture);
                    });
                }
                reading->giveBack(std::move(reader));
            } catch (const platform::Stopped&) {
                return; // the reader is destroyed with the batch
            }
        },
        stop_.get_token());
}

void PictureStrip::take(std::uint64_t batch, std::int64_t key,
                        const std::optional<platform::Picture>& picture) {
    if (batch != batch_) return;
    wanted_.erase(key);
    if (picture) {
        pictures_.insert_or_assign(key, imageOf(*picture));
        if (picture->size.height > 0)
            aspect_ = static_cast<double>(picture->size.width) / picture->size.height;
    } else {
        // A damaged place is not requested again; a picture near it is shown.
        const QImage* other = near(key);
        pictures_.insert_or_assign(key, other == nullptr ? QImage() : QImage(*other));
    }
    decoded_();
}

void PictureStrip::setUnreadable(std::uint64_t batch) {
    if (batch != batch_) return;
    isUnreadable_ = true;
    wanted_.clear();
    decoded_();
}

} // namespace orvane::views
