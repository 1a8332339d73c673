#include "OrvaneSyncCore/Services/Takes/SoundKey.h"

#include "OrvaneSyncCore/Utilities/PackedBytes.h"
#include "Platform/Files.h"

namespace orvane {

bool appendSound(std::string& key, const TakeSound& sound) {
    for (const TakeSound::File& file : sound.files) {
        const auto attributes = platform::files::attributes(file.url.path);
        if (!attributes) return false;
        appendText(key, file.url.path);
        appendPlain(key, attributes->size);
        appendPlain(key, attributes->modificationSinceReference);
        appendPlain(key, file.firstChannel);
        appendPlain(key, file.channelCount);
        appendPlain(key, file.startSeconds);
        appendPlain(key, file.durationSeconds);
    }
    return true;
}

} // namespace orvane
