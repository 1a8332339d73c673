#include "OrvaneSyncCLI/LineWriter.h"

#include <utility>

namespace orvane::cli {

LineWriter::LineWriter(std::ostream& out) : out_(out), thread_([this] { writeAll(); }) {}

LineWriter::~LineWriter() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

void LineWriter::write(std::string line) {
    line += '\n';
    {
        const std::lock_guard lock(mutex_);
        bytes_ += line.size();
        lines_.push_back(std::move(line));
    }
    changed_.notify_one();
}

bool LineWriter::isFull() const {
    const std::lock_guard lock(mutex_);
    return bytes_ >= fullBytes;
}

void LineWriter::whenBelow(std::size_t bytes, std::function<void()> callback) {
    {
        const std::lock_guard lock(mutex_);
        if (bytes_ >= bytes) {
            waiting_.push_back({bytes, std::move(callback)});
            return;
        }
    }
    callback();
}

void LineWriter::writeAll() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isEnding_ || !lines_.empty(); });
        if (lines_.empty()) return;
        std::string line = std::move(lines_.front());
        lines_.pop_front();
        lock.unlock();
        out_ << line << std::flush;
        const std::size_t written = line.size();
        line = std::string();
        lock.lock();
        bytes_ -= written;
        std::vector<std::function<void()>> due;
        std::erase_if(waiting_, [&](Waiting& one) {
            if (bytes_ >= one.bytes) return false;
            due.push_back(std::move(one.callback));
            return true;
        });
        lock.unlock();
        for (const auto& callback : due) callback();
        due.clear();
        lock.lock();
    }
}

} // namespace orvane::cli
