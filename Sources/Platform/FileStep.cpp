#include "Platform/FileStep.h"

#include <mutex>
#include <utility>

namespace orvane::platform {

namespace {

// Never destroyed and made without allocation: files are written until the program ends, and when memory has
// run out.
std::mutex stepsMutex;
FileStep* newestStep = nullptr;
FileStep* oldestStep = nullptr;
std::uint64_t endedSteps = 0;

} // namespace

FileStep::FileStep(const std::string& path) : path_(path) {
    const std::lock_guard lock(stepsMutex);
    older_ = newestStep;
    (older_ == nullptr ? oldestStep : older_->newer_) = this;
    newestStep = this;
}

FileStep::~FileStep() {
    const std::lock_guard lock(stepsMutex);
    (older_ == nullptr ? oldestStep : older_->newer_) = newer_;
    (newer_ == nullptr ? newestStep : newer_->older_) = older_;
    ++endedSteps;
}

std::uint64_t FileStep::ended() {
    const std::lock_guard lock(stepsMutex);
    return endedSteps;
}

std::string FileStep::oldestPath() {
    const std::lock_guard lock(stepsMutex);
    return oldestStep == nullptr ? "" : oldestStep->path_;
}

std::string StalledWrites::look(int looks) {
    const std::uint64_t ended = FileStep::ended();
    std::string path = FileStep::oldestPath();
    idle_ = std::exchange(before_, ended) != ended || path.empty() ? 0 : idle_ + 1;
    return idle_ < looks ? std::string() : path;
}

} // namespace orvane::platform
