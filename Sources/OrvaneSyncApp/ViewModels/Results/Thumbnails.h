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

/// Small pictures of clips for a list, decoded one at a time in the background: those of the rows in view, in
/// their order. The decoding of a row that is scrolled out of view is stopped. The last few hundred pictures
/// are kept. Interface thread; held by a shared pointer, because work holds a weak one.
class Thumbnails : public std::enable_shared_from_this<Thumbnails> {
  public:
    struct Request {
        std::string path;   ///< in the bytes of the file system
        double seconds = 0; ///< of the clip
    };
    /// Called on a thread that may block. Absent for a file without a picture.
    using Decode = std::function<std::optional<platform::Picture>(
        const Request& request, platform::PictureSize limit, const std::stop_token& stop)>;
    static constexpr std::size_t mostKept = 400;

    static std::shared_ptr<Thumbnails> create(std::shared_ptr<platform::MainThread> mainThread,
                                              platform::PictureSize limit, Decode decode = decodeFile);
    ~Thumbnails();

    /// Replaces the earlier requests.
    void want(std::vector<Request> inView);
    /// Null: not decoded, or the file has none.
    const platform::Picture* find(const std::string& path) const;
    /// Called when a picture was decoded.
    platform::Subscription onChange(std::function<void(const std::string& path)> callback);

    /// Decodes with the media helper.
    static std::optional<platform::Picture> decodeFile(const Request& request, platform::PictureSize limit,
                                                       const std::stop_token& stop);

  private:
    Thumbnails(std::shared_ptr<platform::MainThread> mainThread, platform::PictureSize limit, Decode decode);
    void decodeNext();
    void decoded(const std::string& path, std::optional<platform::Picture> picture);

    struct Kept {
        std::string path;
        std::optional<platform::Picture> picture; ///< absent: the file has none
    };
    const std::shared_ptr<platform::MainThread> mainThread_;
    const platform::PictureSize limit_;
    const Decode decode_;
    std::vector<Request> wanted_; ///< not decoded yet, in order
    std::optional<std::string> underWay_;
    std::stop_source stop_;
    std::list<Kept> kept_; ///< the newest first
    std::unordered_map<std::string, std::list<Kept>::iterator> byPath_;
    platform::Listeners<const std::string&> listeners_;
    const std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
