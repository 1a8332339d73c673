#include "OrvaneSyncApp/ViewModels/Results/Thumbnails.h"

#include "Platform/Playback/FrameReader.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <utility>

namespace orvane {

std::shared_ptr<Thumbnails> Thumbnails::create(std::shared_ptr<platform::MainThread> mainThread,
                                               platform::PictureSize limit, Decode decode) {
    return std::shared_ptr<Thumbnails>(new Thumbnails(std::move(mainThread), limit, std::move(decode)));
}

Thumbnails::Thumbnails(std::shared_ptr<platform::MainThread> mainThread, platform::PictureSize limit,
                       Decode decode)
    : mainThread_(std::move(mainThread)), limit_(limit), decode_(std::move(decode)),
      queue_(platform::SerialQueue::create("thumbnails")) {}

Thumbnails::~Thumbnails() { stop_.request_stop(); }

std::optional<platform::Picture> Thumbnails::decodeFile(const Request& request, platform::PictureSize limit,
                                                        const std::stop_token& stop) {
    const auto reader = platform::FrameReader::open(request.path);
    if (!reader) return std::nullopt;
    // Any picture near the position shows what is in the clip; the fastest to decode is used.
    constexpr double nearEnough = 2; // seconds
    return reader->pictureAt(platform::MediaTime::fromSeconds(request.seconds),
                             platform::MediaTime::fromSeconds(nearEnough), limit, stop);
}

void Thumbnails::want(std::vector<Request> inView) {
    if (underWay_ && std::ranges::find(inView, *underWay_, &Request::path) == inView.end())
        stop_.request_stop();
    const bool comes = !stop_.stop_requested();
    std::erase_if(inView, [&](const Request& one) {
        return byPath_.contains(one.path) || (comes && underWay_ == one.path);
    });
    wanted_ = std::move(inView);
    if (!underWay_) decodeNext();
}

const platform::Picture* Thumbnails::find(const std::string& path) const {
    const auto found = byPath_.find(path);
    return found == byPath_.end() || !found->second->picture ? nullptr : &*found->second->picture;
}

platform::Subscription Thumbnails::onChange(std::function<void(const std::string& path)> callback) {
    return listeners_.add(std::move(callback));
}

void Thumbnails::decodeNext() {
    if (wanted_.empty()) return;
    Request request = std::move(wanted_.front());
    wanted_.erase(wanted_.begin());
    underWay_ = request.path;
    stop_ = {};
    queue_->post([weak = weak_from_this(), main = std::weak_ptr(mainThread_), decode = decode_,
                  limit = limit_, request = std::move(request), stop = stop_.get_token()] {
        std::optional<platform::Picture> picture;
        bool isStopped = false;
        try {
            picture = decode(request, limit, stop);
        } catch (const platform::Stopped&) {
            isStopped = true;
        }
        const auto thread = main.lock();
        if (!thread) return;
        thread->post([weak, path = request.path, picture = std::move(picture),
                      isStopped = isStopped || stop.stop_requested()]() mutable {
            const auto self = weak.lock();
            if (!self) return;
            self->underWay_.reset();
            if (!isStopped) self->decoded(path, std::move(picture));
            if (!self->underWay_) self->decodeNext();
        });
    });
}

void Thumbnails::decoded(const std::string& path, std::optional<platform::Picture> picture) {
    kept_.push_front({path, std::move(picture)});
    byPath_[path] = kept_.begin();
    if (kept_.size() > mostKept) {
        byPath_.erase(kept_.back().path);
        kept_.pop_back();
    }
    listeners_.notify(path);
}

} // namespace orvane
