#include "OrvaneSyncCore/Services/RenderedAudio/RenderKey.h"

#include "OrvaneSyncCore/Utilities/PackedBytes.h"
#include "Platform/Files.h"
#include "Platform/ReferenceDate.h"

#include <string>

namespace orvane {

RenderKey& RenderKey::add(std::string_view text) {
    std::string packed;
    appendText(packed, text);
    hash_.add(packed);
    return *this;
}

RenderKey& RenderKey::add(double number) {
    std::string packed;
    appendPlain(packed, number);
    hash_.add(packed);
    return *this;
}

RenderKey& RenderKey::add(const TakeSound& sound) {
    add(static_cast<int>(sound.files.size()));
    for (const TakeSound::File& file : sound.files) {
        add(file.url.path);
        if (const auto there = platform::files::attributes(file.url.path))
            add(there->modificationSinceReference + platform::referenceDateUnixSeconds)
                .add(static_cast<double>(there->size));
        // A single file is read as it is, so its stated positions do not matter.
        if (sound.files.size() > 1)
            add(file.firstChannel).add(file.channelCount).add(file.startSeconds).add(file.durationSeconds);
    }
    return *this;
}

std::uint64_t RenderKey::value() {
    constexpr unsigned byteBits = 8;
    const auto digest = hash_.digest();
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof value; ++i) value = value << byteBits | digest.at(i);
    return value;
}

} // namespace orvane
