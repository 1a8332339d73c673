#include "OrvaneSyncCore/Services/Matching/ChannelNames.h"

#include "OrvaneSyncCore/Utilities/FilenameUtils.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace orvane {

namespace {

// A number with three or more digits counts takes and the parts of a recording.
constexpr std::size_t mostDigits = 2;

/// Words before the number of a channel, or instead of one.
constexpr std::array<std::string_view, 34> channelWords{
    "",     "ch",   "chan",  "channel", "tr",  "trk",  "track", "in",    "input", "iso",  "mic", "mix",
    "mixl", "mixr", "mixlr", "boom",    "bm",  "lav",  "lv",    "radio", "rf",    "wl",   "l",   "r",
    "lr",   "left", "right", "ms",      "mid", "side", "trl",   "trr",   "trlr",  "trmic"};

bool isChannelPiece(std::string_view piece) {
    const std::size_t lastOfWord = piece.find_last_not_of("0123456789");
    const std::size_t word = lastOfWord == std::string_view::npos ? 0 : lastOfWord + 1;
    return piece.size() - word <= mostDigits &&
           std::ranges::find(channelWords, piece.substr(0, word)) != channelWords.end();
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isExportedChannel(std::string_view piece) {
    return piece.size() > 1 && piece.size() <= 1 + mostDigits && piece.front() == 'a' &&
           std::ranges::all_of(piece.substr(1), isDigit);
}

/// The position of a channel that directly follows the number of the take, as in "0001s12"; the end if there
/// is none. A number with fewer digits may be a scene, and "12s1" a shot of it.
std::size_t channelBehindNumber(std::string_view piece) {
    constexpr std::size_t digitsOfTake = 4;
    const auto letter = std::ranges::find_if_not(piece, isDigit);
    const auto before = static_cast<std::size_t>(letter - piece.begin());
    const std::string_view rest = piece.substr(before);
    const bool isChannel = rest.size() > 1 && rest.size() <= 1 + mostDigits && rest.front() == 's' &&
                           std::ranges::all_of(rest.substr(1), isDigit);
    return before == digitsOfTake && isChannel ? before : piece.size();
}

} // namespace

std::vector<std::string_view> piecesOfName(std::string_view text) {
    constexpr std::string_view separators = "_- .";
    std::vector<std::string_view> pieces;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(separators), text.size());
        if (end > 0) pieces.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return pieces;
}

ChannelName::ChannelName(const MediaAsset& recording) {
    const std::string whole = recording.normalizedName();
    for (const std::string_view text : piecesOfName(whole)) {
        const std::size_t channel = channelBehindNumber(text);
        const std::string_view name = text.substr(0, channel), behind = text.substr(channel);
        pieces_.push_back({std::string(name), isChannelPiece(name)});
        if (!behind.empty()) pieces_.push_back({std::string(behind), true});
    }
    // Exports of editing systems have the channel after a point: "T03.A1". Elsewhere "A1" may be a shot.
    if (pieces_.size() > 1 && isExportedChannel(pieces_.back().text) &&
        whole.ends_with("." + pieces_.back().text))
        pieces_.back().namesChannel = true;
    if (!recording.ixmlData) return;
    // A recorder may append the name of the track to that of the take.
    for (const IXMLTrack& track : recording.ixmlData->tracks) {
        const std::string trackName = platform::text::lowercased(track.name);
        const auto name = piecesOfName(trackName);
        if (name.empty() || name.size() >= pieces_.size()) continue;
        const auto tail = pieces_.end() - static_cast<std::ptrdiff_t>(name.size());
        if (std::equal(tail, pieces_.end(), name.begin(),
                       [](const Piece& piece, std::string_view text) { return piece.text == text; }))
            std::for_each(tail, pieces_.end(), [](Piece& piece) { piece.namesChannel = true; });
    }
}

bool ChannelName::differsOnlyInChannel(const ChannelName& other) const {
    return differsOnlyIn([](const Piece& piece) { return piece.namesChannel; }, other);
}

bool ChannelName::differsOnlyInChannelWord(const ChannelName& other) const {
    return differsOnlyIn(
        [](const Piece& piece) {
            return piece.namesChannel && piece.text.find_first_not_of("0123456789") != std::string::npos;
        },
        other);
}

bool ChannelName::differsOnlyIn(bool (*isAccepted)(const Piece&), const ChannelName& other) const {
    const auto [own, others] = std::ranges::mismatch(pieces_, other.pieces_);
    if (own == pieces_.begin() || (own == pieces_.end() && others == other.pieces_.end())) return false;
    auto ownEnd = pieces_.end();
    auto otherEnd = other.pieces_.end();
    while (ownEnd != own && otherEnd != others && *(ownEnd - 1) == *(otherEnd - 1)) {
        --ownEnd;
        --otherEnd;
    }
    return std::all_of(own, ownEnd, isAccepted) && std::all_of(others, otherEnd, isAccepted);
}

std::size_t ChannelName::piecesInCommon(const ChannelName& other) const {
    std::size_t common = 0;
    for (std::size_t i = 0; i < std::min(pieces_.size(), other.pieces_.size()); ++i)
        common += pieces_[i] == other.pieces_[i] ? 1U : 0U;
    return common;
}

} // namespace orvane
