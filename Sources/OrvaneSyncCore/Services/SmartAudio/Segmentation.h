#pragma once

#include <cstddef>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

/// The cost of each choice in each window, and of a switch before each window.
class SegmentCosts {
  public:
    SegmentCosts(std::size_t windows, std::size_t choices)
        : choices_(choices), costs_(windows * choices), switches_(windows) {}

    std::size_t windows() const { return switches_.size(); }
    std::size_t choices() const { return choices_; }
    double& at(std::size_t window, std::size_t choice) { return costs_[window * choices_ + choice]; }
    double at(std::size_t window, std::size_t choice) const { return costs_[window * choices_ + choice]; }
    double switchCost(std::size_t window) const { return switches_[window]; }
    void setSwitchCost(std::size_t window, double cost) { switches_[window] = cost; }

  private:
    std::size_t choices_;
    std::vector<double> costs_;
    std::vector<double> switches_;
};

/// Windows from `first` up to, but not including, `end`, with the same choice.
struct Segment {
    std::size_t first = 0;
    std::size_t end = 0;
    std::size_t choice = 0;

    bool operator==(const Segment&) const = default;
};

/// The segments of at least `shortest` windows with the lowest total cost; neighbours have different choices.
/// Of choices with equal cost the first is taken. If there are fewer than `shortest` windows, they form one
/// segment. Time and memory are proportional to windows times choices.
std::vector<Segment> cheapestSegments(const SegmentCosts& costs, std::size_t shortest);

} // namespace orvane::SmartAudioBlockRouter
