#include "OrvaneSyncCLI/ChannelStrip.h"

#include "OrvaneSyncCLI/Table.h"
#include "Platform/Text.h"

#include <algorithm>
#include <utility>

namespace orvane::cli {

namespace {

constexpr int narrowestStrip = 10;
constexpr int mostLabelShare = 3;                 ///< a label takes a third of the width at most
constexpr const char* heard = "\xE2\x96\x88";     // full block
constexpr const char* silent = "\xE2\x96\x91";    // light shade
constexpr const char* secondary = "\xE2\x96\x92"; // medium shade
constexpr const char* notHeard = "\xC2\xB7";      // middle dot

const BlockDecision* blockAt(const std::vector<BlockDecision>& blocks, double seconds) {
    const auto found = std::ranges::find_if(blocks, [&](const BlockDecision& block) {
        return block.startSeconds <= seconds && seconds < block.endSeconds;
    });
    return found == blocks.end() ? nullptr : &*found;
}

const char* mark(const BlockDecision* block, int track) {
    if (block == nullptr) return notHeard;
    if (block->activeTrack == track) return block->kind == BlockKind::silence ? silent : heard;
    return block->secondaryTrack == track ? secondary : notHeard;
}

} // namespace

std::string channelStrip(const std::vector<BlockDecision>& blocks, const std::vector<std::string>& names,
                         int columns) {
    if (blocks.empty()) return "";
    int labelWidth = 0;
    std::vector<std::string> labels;
    labels.reserve(names.size());
    for (const std::string& name : names) {
        labels.push_back(fitted(platform::text::printable(name), columns / mostLabelShare));
        labelWidth = std::max(labelWidth, platform::text::displayWidth(labels.back()));
    }
    const int width = std::max(columns - labelWidth - 2, narrowestStrip);
    const double seconds = blocks.back().endSeconds;

    std::vector<const BlockDecision*> moments;
    moments.reserve(static_cast<std::size_t>(width));
    for (int column = 0; column < width; ++column)
        moments.push_back(blockAt(blocks, seconds * (column + 0.5) / width));
    std::string text;
    for (std::size_t i = 0; i < labels.size(); ++i) {
        std::string label = std::move(labels[i]);
        label.append(static_cast<std::size_t>(labelWidth - platform::text::displayWidth(label)) + 1, ' ');
        text += label;
        for (const BlockDecision* moment : moments) text += mark(moment, static_cast<int>(i) + 1);
        text += "\n";
    }
    const std::string end = clockText(seconds);
    std::string axis(static_cast<std::size_t>(labelWidth) + 1, ' ');
    axis += "0:00";
    axis.resize(std::max(axis.size() + 1, static_cast<std::size_t>(labelWidth + 1 + width) - end.size()),
                ' ');
    return text + axis + end + "\n";
}

} // namespace orvane::cli
