#include "OrvaneSyncCore/Services/Diagnosis/OffsetWindows.h"

#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orvane {

DeepestOffset deepest(const std::vector<OffsetWindow>& windows, std::size_t clipCount) {
    struct Edge {
        double at;
        bool isEnd;
        std::size_t clip;
    };
    std::vector<Edge> edges;
    edges.reserve(2 * windows.size());
    for (const OffsetWindow& window : windows) {
        edges.push_back({window.first, false, window.clip});
        edges.push_back({window.last, true, window.clip});
    }
    std::ranges::sort(
        edges, [](const Edge& a, const Edge& b) { return a.at != b.at ? a.at < b.at : a.isEnd < b.isEnd; });
    std::vector<int> open(clipCount);
    DeepestOffset best;
    int depth = 0;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        int& count = open[edges[i].clip];
        if (edges[i].isEnd) {
            if (--count == 0) --depth;
            continue;
        }
        if (count++ == 0) ++depth;
        if (depth <= best.depth || i + 1 >= edges.size()) continue;
        const double width = edges[i + 1].at - edges[i].at;
        best = {edges[i].at + width / 2, depth, width};
    }
    return best;
}

OffsetFit fitAt(const std::vector<OffsetWindow>& windows, std::size_t clipCount, double offset) {
    constexpr double none = std::numeric_limits<double>::infinity();
    std::vector<double> apart(clipCount, none);
    for (const OffsetWindow& window : windows)
        if (window.first <= offset && offset <= window.last)
            apart[window.clip] = std::min(apart[window.clip], std::abs(window.start - offset));
    OffsetFit fit;
    for (const double seconds : apart) {
        if (seconds == none) continue;
        ++fit.depth;
        fit.startsApartSeconds += seconds;
    }
    if (fit.depth > 0) fit.startsApartSeconds /= fit.depth;
    return fit;
}

double chanceOf(const std::vector<OffsetWindow>& windows, const DeepestOffset& best) {
    double sum = 0, first = std::numeric_limits<double>::infinity(), last = -first;
    for (const OffsetWindow& window : windows) {
        sum += window.last - window.first;
        first = std::min(first, window.first);
        last = std::max(last, window.last);
    }
    const double mean = last > first ? sum / (last - first) : static_cast<double>(windows.size());
    return static_cast<double>(windows.size()) * chance::atLeast(best.depth - 1, mean);
}

} // namespace orvane
