#pragma once

#include "Platform/Listeners.h"
#include "Platform/MainThread.h"
#include "Platform/Playback/Picture.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvane {

/// Small pictures of clips for a list, one decoded at a time in the background: those that are in view, in
/// the order of the rows. What is scrolled away is no longer wanted, and decoding it ends. The last few
/// hundred stay at hand. Interface thread; held by a shared pointer, as work holds it weakly.
class Thumbnails : public std::enable_shared_from_this<Thumbnails> {
  public:
    struct Request {
        std::string path;   ///< in the bytes of the file system
        double seconds = 0; ///< of the clip
    };
    /// On a thread that may wait. Nothing for a file without a picture.
    using Decode = std::function<std::optional<platform::Picture>(
        const Request& request, platform::PictureSize limit, const std::stop_token& stop)>;
    static constexpr std::size_t mostKept = 400;

    static std::shared_ptr<Thumbnails> create(std::shared_ptr<platform::MainThread> mainThread,
                                              platform::PictureSize limit, Decode decode = decodeFile);
    ~Thumbnails();

    /// In place of what was wanted before.
    void want(std::vector<Request> inView);
    /// Null: not decoded, or the file has none.
    const platform::Picture* find(const std::string& path) const;
    /// One was decoded.
    platform::Subscription onChange(std::function<void(const std::string& path)> callback);

    /// By the media helper.
    static std::optional<platform::Picture> decodeFile(const Request& request, platform::PictureSize limit,
                                                       const std::stop_token& stop);

  private:
    Thumbnails(std::shared_ptr<platform::MainThread> mainThread, platform::PictureSize limit, Decode decode);
    void decodeNext();
    void decoded(const std::string& path, std::optional<platform::Picture> picture);

    struct Kept {
        std::string path;
        std::optional<platform::Picture> picture; ///< nothing: the file has none
    };
    const std::shared_ptr<platform::MainThread> mainThread_;
    const platform::PictureSize limit_;
    const Decode decode_;
    std::vector<Request> wanted_; ///< that are not decoded yet, in order
    std::optional<std::string> underWay_;
    std::stop_source stop_;
    std::list<Kept> kept_; ///< the newest first
    std::unordered_map<std::string, std::list<Kept>::iterator> byPath_;
    platform::Listeners<const std::string&> listeners_;
    const std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
