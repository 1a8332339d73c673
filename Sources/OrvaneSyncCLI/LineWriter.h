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

/// Writes lines to a stream, in order, on a thread of its own: the reader may be slow, or never read.
/// After an error of the stream, which keeps it, further lines go nowhere. Any thread, but one at a time
/// makes and destroys it, and nobody else uses the stream meanwhile.
class LineWriter {
  public:
    /// Bytes that wait, from which on whoever can should write no more.
    static constexpr std::size_t fullBytes = std::size_t{16} << 20U;

    explicit LineWriter(std::ostream& out);
    /// Waits until all is written.
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    /// Takes a line without its end. Never waits.
    void write(std::string line);
    bool isFull() const;
    /// Calls back once fewer bytes wait than `fullBytes`, or once none does: at once, or on the own thread.
    void whenWritable(std::function<void()> callback) { whenBelow(fullBytes, std::move(callback)); }
    void whenWritten(std::function<void()> callback) { whenBelow(1, std::move(callback)); }

  private:
    struct Waiting {
        std::size_t bytes; ///< that it waits to be below
        std::function<void()> callback;
    };

    void whenBelow(std::size_t bytes, std::function<void()> callback);
    void writeAll();

    std::ostream& out_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::string> lines_;
    std::size_t bytes_ = 0; ///< of `lines_` with their ends, and of the line that is being written
    std::vector<Waiting> waiting_;
    bool isEnding_ = false;
    std::thread thread_;
};

} // namespace orvane::cli
