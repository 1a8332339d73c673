#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <ostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace orvane::cli {

/// Writes lines to a stream, in order, on its own thread: the reader may be slow, or never read. After an
/// error of the stream, which keeps it, further lines are discarded. Any thread, but only one at a time makes
/// and destroys it, and no other code uses the stream meanwhile.
class LineWriter {
  public:
    /// From this number of waiting bytes on, callers should write no more if they can wait.
    static constexpr std::size_t fullBytes = std::size_t{16} << 20U;

    explicit LineWriter(std::ostream& out);
    /// Waits until all is written.
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    /// `line` is without its end. Never waits.
    void write(std::string line);
    bool isFull() const;
    /// Calls back when fewer than `fullBytes` bytes wait, or none: at once, or on the writer's thread.
    void whenWritable(std::function<void()> callback) { whenBelow(fullBytes, std::move(callback)); }
    void whenWritten(std::function<void()> callback) { whenBelow(1, std::move(callback)); }

  private:
    struct Waiting {
        std::size_t bytes; ///< the limit that it waits for
        std::function<void()> callback;
    };

    void whenBelow(std::size_t bytes, std::function<void()> callback);
    void writeAll();

    std::ostream& out_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::string> lines_;
    std::size_t bytes_ = 0; ///< of `lines_` with their ends, and of the line being written
    std::vector<Waiting> waiting_;
    bool isEnding_ = false;
    std::thread thread_;
};

} // namespace orvane::cli
