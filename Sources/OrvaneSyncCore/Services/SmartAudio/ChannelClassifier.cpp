#include "OrvaneSyncCore/Services/SmartAudio/ChannelClassifier.h"

#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <span>

namespace orvane {

namespace {

using platform::text::lowercased;
using platform::text::trimmed;

constexpr float namedConfidence = 0.95F;
constexpr float namedWithoutRoleConfidence = 0.4F;
constexpr float demotion = 0.2F;
constexpr float demotedConfidence = 0.5F; ///< at least

constexpr int multitrackChannels = 4; ///< from here on channels 1 and 2 are the recorder's mix
constexpr int lastMixChannel = 2;
constexpr int fewestRoleChannels = 3;
constexpr float silentRMS = 0.0001F; ///< linear, -80 dBFS
constexpr std::string_view guessed = "Heuristic: ";
constexpr std::string_view wideReason = "wide spectrum → Boom", narrowReason = "narrow spectrum → Lav";
constexpr float wideSpectrum = 0.18F; ///< crossings per sample; open microphones have background noise

struct KeywordRule {
    std::span<const std::string_view> needles;
    ChannelKind kind;
};

// Blanks keep "iso" and "lr" from matching inside words.
constexpr std::array<std::string_view, 5> boomNeedles{"boom", "shotgun", "overhead", "ovh", "schoeps"};
constexpr std::array<std::string_view, 8> lavNeedles{"lav",      "lavalier", "wireless", "wlav",
                                                     "bodypack", "iso ",     " iso",     "isolated"};
constexpr std::array<std::string_view, 8> mixNeedles{"mix", "stereo", " lr ",    "l+r",
                                                     "l/r", "main",   "program", "master"};
/// Tried in this order: a "Boom Mix" is a boom.
constexpr std::array<KeywordRule, 3> keywordRules{
    {{boomNeedles, ChannelKind::boom}, {lavNeedles, ChannelKind::lav}, {mixNeedles, ChannelKind::mix}}};

/// Words that are never a speaker's name.
constexpr std::array<std::string_view, 18> roleKeywords{
    "boom",  "shotgun", "overhead",   "ovh", "schoeps", "lav",  "lavalier", "wireless", "wlav",
    "radio", "rf",      "sennheiser", "mix", "stereo",  "main", "program",  "master",   "lr"};

bool contains(std::string_view text, std::string_view needle) {
    return text.find(needle) != std::string_view::npos;
}

bool containsRoleKeyword(std::string_view lowered) {
    return std::any_of(roleKeywords.begin(), roleKeywords.end(),
                       [&](std::string_view word) { return contains(lowered, word); });
}

bool isRoleKeyword(std::string_view lowered) {
    return std::find(roleKeywords.begin(), roleKeywords.end(), lowered) != roleKeywords.end();
}

std::optional<ChannelKind> kindOfName(std::string_view lowered) {
    for (const KeywordRule& rule : keywordRules)
        for (const std::string_view needle : rule.needles)
            if (contains(lowered, needle)) return rule.kind;
    return std::nullopt;
}

/// The text between the first "(" and the last ")" after it.
std::optional<std::string> speakerInParentheses(std::string_view name) {
    const std::size_t open = name.find('(');
    const std::size_t close = name.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open)
        return std::nullopt;
    std::string inner = lowercased(trimmed(name.substr(open + 1, close - open - 1)));
    if (inner.empty() || isRoleKeyword(inner)) return std::nullopt;
    return inner;
}

/// The parts between dashes and colons, trimmed; empty ones are left out.
std::vector<std::string_view> pieces(std::string_view name) {
    constexpr std::array<std::string_view, 4> separators{"-", "—", "–", ":"};
    std::vector<std::string_view> found;
    const auto keep = [&](std::string_view piece) {
        piece = trimmed(piece);
        if (!piece.empty()) found.push_back(piece);
    };
    std::size_t begin = 0;
    for (std::size_t at = 0; at < name.size();) {
        const auto separator = std::find_if(separators.begin(), separators.end(), [&](std::string_view one) {
            return name.substr(at).starts_with(one);
        });
        if (separator == separators.end()) {
            ++at;
            continue;
        }
        keep(name.substr(begin, at - begin));
        at += separator->size();
        begin = at;
    }
    keep(name.substr(begin));
    return found;
}

std::string withSingleBlanks(std::string_view text) {
    std::string result;
    for (const char character : text)
        if (character != ' ' || result.empty() || result.back() != ' ') result += character;
    return result;
}

ChannelClassification classifyByName(int track, const std::string& name) {
    const std::string lowered = lowercased(name);
    ChannelClassification result;
    result.trackIndex = track;
    result.speakerName = ChannelClassifier::extractSpeakerName(name);
    result.source = "iXML: " + name;
    if (const auto kind = kindOfName(lowered)) {
        result.kind = *kind;
        result.confidence = namedConfidence;
        result.isPreMixed = contains(lowered, "mix") || contains(lowered, "stereo");
        return result;
    }
    result.confidence = namedWithoutRoleConfidence;
    result.source += " (no role keyword — treated as unknown)";
    if (!result.speakerName) result.speakerName = lowercased(trimmed(name));
    return result;
}

ChannelClassification classifyBySignal(int track, int channelCount, bool othersAreNamed,
                                       const ChannelStats& stats) {
    const auto classified = [track](ChannelKind kind, float confidence, std::string_view why) {
        return ChannelClassification{track,        kind, confidence, std::string(guessed).append(why),
                                     std::nullopt, false};
    };
    if (channelCount >= multitrackChannels && track <= lastMixChannel) {
        const std::string channel = "ch " + std::to_string(track);
        if (stats.averageRMS < silentRMS)
            return classified(ChannelKind::lav, 0.4F, "very low level on " + channel);
        return classified(ChannelKind::mix, 0.6F, channel + " of multitrack → Mix (recorder convention)");
    }
    if (channelCount < fewestRoleChannels)
        return classified(ChannelKind::unknown, 0.3F,
                          std::to_string(channelCount) + "-ch file — no role to assign");
    if (stats.spectralWidth > wideSpectrum) return classified(ChannelKind::boom, 0.55F, wideReason);
    if (othersAreNamed) return classified(ChannelKind::lav, 0.55F, "no iXML on this ch — defaulting to Lav");
    return classified(ChannelKind::lav, 0.55F, narrowReason);
}

/// A recording has one mix; another track that looks like one is most likely a personal microphone.
void keepFirstMixOnly(std::vector<ChannelClassification>& classifications) {
    bool isFirst = true;
    for (ChannelClassification& one : classifications) {
        if (one.kind != ChannelKind::mix) continue;
        if (isFirst) {
            isFirst = false;
            continue;
        }
        one.kind = ChannelKind::lav;
        one.confidence = std::max(one.confidence - demotion, demotedConfidence);
        one.source += " (demoted: another track is Mix)";
        one.speakerName.reset();
        one.isPreMixed = false;
    }
}

} // namespace

std::vector<ChannelClassification>
ChannelClassifier::classify(int channelCount, const std::vector<IXMLTrack>& ixmlTracks,
                            const std::vector<ChannelStats>& perChannelStats) {
    std::map<int, std::string> names;
    for (const IXMLTrack& track : ixmlTracks)
        if (!trimmed(track.name).empty()) names[track.channelIndex] = track.name;
    std::map<int, ChannelStats> statsByTrack;
    for (const ChannelStats& stats : perChannelStats) statsByTrack.emplace(stats.trackIndex, stats);

    std::vector<ChannelClassification> classifications;
    for (int track = 1; track <= channelCount; ++track) {
        if (const auto name = names.find(track); name != names.end()) {
            classifications.push_back(classifyByName(track, name->second));
            continue;
        }
        const auto stats = statsByTrack.find(track);
        classifications.push_back(
            classifyBySignal(track, channelCount, !names.empty(),
                             stats == statsByTrack.end() ? ChannelStats{} : stats->second));
    }
    keepFirstMixOnly(classifications);
    return classifications;
}

bool ChannelClassifier::isGuessed(const ChannelClassification& classification) {
    return classification.source.starts_with(guessed);
}

bool ChannelClassifier::areGuessedBoomsAlone(const std::vector<ChannelClassification>& classifications) {
    const auto reason = [](const ChannelClassification& one) {
        const std::string_view source = one.source;
        return source.starts_with(guessed) ? source.substr(guessed.size()) : std::string_view();
    };
    const auto isOther = [&](const ChannelClassification& one) {
        return reason(one).empty() || reason(one) == narrowReason;
    };
    return std::ranges::none_of(classifications, isOther) &&
           std::ranges::count(classifications, wideReason, reason) > 1;
}

std::optional<std::string> ChannelClassifier::extractSpeakerName(std::string_view trackName) {
    const std::string_view name = trimmed(trackName);
    if (name.empty()) return std::nullopt;
    if (auto speaker = speakerInParentheses(name)) return speaker;

    const std::vector<std::string_view> parts = pieces(name);
    if (parts.size() >= 2) {
        for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
            const std::string lowered = lowercased(*part);
            if (!containsRoleKeyword(lowered)) return withSingleBlanks(lowered);
        }
    }
    std::string lowered = lowercased(name);
    if (containsRoleKeyword(lowered)) return std::nullopt;
    return lowered;
}

} // namespace orvane
