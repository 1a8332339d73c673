#include "OrvaneSyncCore/Services/Persistence/SettingsCatalogue.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace orvane {

namespace {

struct Choices {
    std::string_view key;
    std::string_view words; ///< separated by "|"
};

constexpr std::array<Choices, 14> table{{
    {"clipNamingSource", "video|audio|sceneTake|custom"},
    {"videoResolution", "video|alternate"},
    {"container.aspectRatio", "16:9|1.85:1|2:1|2.35:1|2.39:1|4:3|1:1|9:16|custom"},
    {"spatialConform", "fill|fit|none"},
    {"trimMode", "common|video|none"},
    {"notes.source", "video|audio|both|none"},
    {"multicam.codec", "auto|Apple ProRes 422 HQ|Apple ProRes 422|Apple ProRes 422 LT|Apple ProRes 422 Proxy|"
                       "Apple ProRes 4444|H.264"},
    {"smartAudioMode", "off|standard|studio|cinematic|custom"},
    {"bestChannelMode", "off|perClip|perWindow|manual"},
    {"smartAudio.aggressiveness", "conservative|balanced|inclusive"},
    {"smartAudio.blockMode", "adaptive|fine|standard|coarse"},
    {"smartAudio.preset", "Cinematic|Drama|Documentary|None"},
    {"globalAudioOffset.startMode", "all|fromFilename|fromTC"},
    {"ale.matchField", "name|column"},
}};

} // namespace

std::vector<std::string_view> SettingsCatalogue::choices(std::string_view key) {
    std::vector<std::string_view> words;
    const auto found = std::ranges::find(table, key, &Choices::key);
    if (found == table.end()) return words;
    std::string_view rest = found->words;
    for (;;) {
        const std::size_t bar = rest.find('|');
        words.push_back(rest.substr(0, bar));
        if (bar == std::string_view::npos) break;
        rest.remove_prefix(bar + 1);
    }
    return words;
}

} // namespace orvane
