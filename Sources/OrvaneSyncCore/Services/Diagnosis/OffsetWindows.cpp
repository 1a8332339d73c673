#include "OrvaneSyncCore/Services/Diagnosis/OffsetWindows.h"

#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <set>
#include <utility>
#include <vector>

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
    // Counts after each edge; several windows of one clip count once.
    std::vector<int> open(clipCount), depths(edges.size());
    int depth = 0, most = 0;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        int& count = open[edges[i].clip];
        if (edges[i].isEnd)
            depth -= --count == 0 ? 1 : 0;
        else
            depth += count++ == 0 ? 1 : 0;
        depths[i] = depth;
        most = std::max(most, depth);
    }
    const auto first = std::ranges::find(depths, most) - depths.begin();
    // The range around the best edge in which at least `least` clips have a window.
    const auto rangeOf = [&](int least) {
        auto from = first, to = first;
        while (from > 0 && depths[static_cast<std::size_t>(from - 1)] >= least) --from;
        while (depths[static_cast<std::size_t>(to)] >= least) ++to;
        return std::pair(edges[static_cast<std::size_t>(from)].at, edges[static_cast<std::size_t>(to)].at);
    };
    const auto [from, to] = rangeOf(most);
    const double middle = (from + to) / 2;
    const auto [likelyFrom, likelyTo] = rangeOf(static_cast<int>(std::ceil(nearlyAll * most)));
    return {middle, most, to - from, 2 * std::max(middle - likelyFrom, likelyTo - middle)};
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

NicestOffset nicest(const std::vector<OffsetWindow>& windows, std::size_t clipCount,
                    const DeepestOffset& best, TimecodeFrameRate rate) {
    constexpr double anHour = 3600;
    // Distance from the best offset, which a clip that begins early may shift.
    constexpr double nearSeconds = 30;
    constexpr double clearlyNearerSeconds = 60;
    const double hourOfLabels = labelSeconds(anHour, rate);
    std::optional<double> nice;
    OffsetFit most{static_cast<int>(std::ceil(nearlyAll * best.depth)), 0};
    constexpr int days = 2, hours = 24;
    const double first = std::ranges::min(windows, {}, &OffsetWindow::first).first,
                 last = std::ranges::max(windows, {}, &OffsetWindow::last).last;
    std::vector<std::pair<double, int>> steps{{anHour, 1}, {hourOfLabels, 1}, {anHour, 2}, {hourOfLabels, 2}};
    if (hourOfLabels == anHour) steps = {{anHour, 1}, {anHour, 2}};
    for (const auto& [hour, parts] : steps)
        for (int count = -days * hours; count <= days * hours; ++count) {
            const double offset = count * (hour / parts);
            // An even number of half hours was tried as whole hours.
            const bool isKnown = parts == 2 ? count % 2 == 0 : count == 0;
            if (isKnown || offset < first || offset > last) continue;
            const OffsetFit fit = fitAt(windows, clipCount, offset);
            const bool isNear = std::abs(offset - best.seconds) <= best.widthSeconds / 2 + nearSeconds;
            if (fit.depth < most.depth || (fit.depth < best.depth && !isNear)) continue;
            if (nice && fit.depth == most.depth &&
                fit.startsApartSeconds >= most.startsApartSeconds - clearlyNearerSeconds)
                continue;
            most = fit;
            nice = offset;
        }
    if (nice) return {*nice, true};
    const double whole = std::round(best.seconds);
    const bool fits = std::abs(whole - best.seconds) <= best.widthSeconds / 2;
    return {fits ? whole : best.seconds, false};
}

double chanceOf(const std::vector<OffsetWindow>& windows, int depth) {
    double sum = 0, first = std::numeric_limits<double>::infinity(), last = -first;
    for (const OffsetWindow& window : windows) {
        sum += window.last - window.first;
        first = std::min(first, window.first);
        last = std::max(last, window.last);
    }
    const double mean = last > first ? sum / (last - first) : static_cast<double>(windows.size());
    return static_cast<double>(windows.size()) * chance::atLeast(depth - 1, mean);
}

int recordingsAt(const std::vector<OffsetWindow>& windows, double offset) {
    std::set<std::size_t> recordings;
    for (const OffsetWindow& window : windows)
        if (window.first <= offset && offset <= window.last) recordings.insert(window.recording);
    return static_cast<int>(recordings.size());
}

} // namespace orvane
