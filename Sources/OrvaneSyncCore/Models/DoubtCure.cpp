#include "OrvaneSyncCore/Models/DoubtCure.h"

#include <algorithm>
#include <utility>

namespace orvane {

namespace {

std::string cureText(const std::vector<CureOption>& options) {
    std::string text;
    for (const CureOption& option : options) {
        if (!text.empty()) text += option.kind == CureOption::Kind::withoutFolder ? ", " : " ";
        text += option.text();
    }
    return text;
}

std::string cureText(const CureWay& way) {
    std::string text = cureText(way.options);
    if (way.scan)
        text += " in a scan of " + way.scan->files + " alone (" + cureText(way.scan->options) +
                way.scan->rest + ")";
    return text;
}

bool areOptionsKnown(const std::vector<CureOption>& options) {
    return std::ranges::none_of(options, [](const CureOption& option) { return option.value.empty(); });
}

} // namespace

std::string shellQuoted(std::string_view text) {
    std::string result = "'";
    for (const char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

std::string CureOption::text() const {
    const CureOptionRow& row = rowOf(kind);
    const std::string said = value.empty() ? std::string(row.unknown)
                             : row.isPath  ? shellQuoted(value)
                                           : value;
    return std::string(row.name) + " " + said;
}

DoubtCure::DoubtCure(const std::string& words) {
    if (!words.empty()) parts_.emplace_back(Words{words, words});
}

DoubtCure::DoubtCure(Words words) { parts_.emplace_back(std::move(words)); }

DoubtCure& DoubtCure::operator+=(const DoubtCure& other) {
    const std::vector<Part> added = other.parts_; // a copy, as `other` may be this object
    for (const Part& part : added) {
        auto* last = parts_.empty() ? nullptr : std::get_if<Words>(&parts_.back());
        const auto* words = std::get_if<Words>(&part);
        if (last != nullptr && words != nullptr) {
            last->terminal += words->terminal;
            last->window += words->window;
        } else {
            parts_.push_back(part);
        }
    }
    return *this;
}

DoubtCure DoubtCure::in(std::optional<CureScan> scan) && {
    for (auto part = parts_.rbegin(); part != parts_.rend(); ++part)
        if (auto* way = std::get_if<CureWay>(&*part)) {
            way->scan = std::move(scan);
            break;
        }
    return std::move(*this);
}

std::string DoubtCure::text() const {
    std::string text;
    for (const Part& part : parts_) {
        const auto* words = std::get_if<Words>(&part);
        text += words != nullptr ? words->terminal : cureText(std::get<CureWay>(part));
    }
    return text;
}

const CureWay* DoubtCure::firstWay() const {
    for (const Part& part : parts_) {
        const auto* way = std::get_if<CureWay>(&part);
        if (way == nullptr || !areOptionsKnown(way->options)) continue;
        const bool isDone = !way->scan || (way->scan->rest.empty() && areOptionsKnown(way->scan->options));
        return isDone ? way : nullptr;
    }
    return nullptr;
}

} // namespace orvane
