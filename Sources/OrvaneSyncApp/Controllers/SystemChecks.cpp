#include "OrvaneSyncApp/Controllers/SystemChecks.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/Persistence/ServiceConfiguration.h"
#include "OrvaneSyncCore/Services/Persistence/StandardSettings.h"
#include "OrvaneSyncCore/Services/RenderedAudio/RenderedAudioStore.h"
#include "OrvaneSyncCore/Services/Stems/BanditStemSeparator.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/CredentialStore.h"
#include "Platform/FileSettingsStore.h"
#include "Platform/Files.h"
#include "Platform/InterfaceThread.h"
#include "Platform/MediaInspector.h"
#include "Platform/Playback/AudioOutput.h"
#include "Platform/Text.h"
#include "Platform/TextRecognizer.h"

#include <algorithm>
#include <unistd.h>

namespace orvane {

namespace {

using Check = SystemCheck;
using OpenProbeCache = std::function<std::shared_ptr<ProbeCache>()>;

Check settingsCheck(const platform::SettingsStore& settings) {
    const auto* store = dynamic_cast<const platform::FileSettingsStore*>(&settings);
    const auto problem = store == nullptr ? std::nullopt : store->problem();
    if (problem) return {"settings", "problem", *problem};
    const std::string path = standardSettingsPath();
    return {"settings", "ok",
            path + (platform::files::exists(path) ? "" : " (not written yet: the defaults hold)")};
}

Check rightsCheck() {
    const auto open = AppStorageHelper::keepPrivate();
    if (open.empty()) return {"folder rights", "ok", "only you can read settings, work and caches"};
    return {"folder rights", "problem", platform::text::joined(open, "; ")};
}

Check folderCheck(const char* name, const std::string& path) {
    if (::access(path.c_str(), W_OK | X_OK) == 0) return {name, "ok", path};
    return {name, "problem", "can't write to " + path};
}

Check cacheCheck(const OpenProbeCache& openProbeCache) {
    const std::string folder = AppStorageHelper::probeCacheDirectory();
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        return {"known files", "problem", "can't write to " + folder};
    const std::string file = ProbeCache::sharedPath();
    if (platform::files::exists(file) && ::access(file.c_str(), R_OK) != 0)
        return {"known files", "problem", "can't read " + file};
    const auto cache = openProbeCache();
    const std::string size = " (" + megabytesText(cache->sizeBytes()) + ")";
    return {"known files", "ok", counted(cache->count(), "file", "files") + " probed before" + size};
}

Check renderedCheck(const platform::SettingsStore& settings) {
    const CacheReport report = cacheReport(settings);
    return {"rendered sound", "ok",
            megabytesText(report.renderedBytes) +
                formatted(" of the %g GB that it may take; ", report.limitGB) + megabytesText(report.bytes) +
                " in all caches"};
}

Check stemsCheck(const platform::SettingsStore& store) {
    if (!store.get(settings::smartAudioBanditEnabled))
        return {"stems", "unused", "switched off in the settings"};
    BanditStemSeparator separator;
    separator.prepare();
    if (!separator.isAvailable()) return {"stems", "problem", separator.whyUnavailable()};
    return {"stems", "ok", BanditStemSeparator::installedModelPath() + ", " + separator.runtimeText()};
}

/// Checks the program that loads the media libraries. Which ones it has is known only after it has been
/// started.
Check helperCheck(const platform::MediaHelper& helper) {
    constexpr const char* name = "media helper";
    if (helper.path.empty())
        return {name, "problem",
                "orvane_media_helper is missing beside the program and in 'lib' beside its folder; install "
                "OrvaneSync again with it"};
    if (const std::string why = platform::whyNoSharedMemory(); !why.empty())
        return {name, "problem",
                "the system gives no memory that is shared with " + helper.path + ": " + why +
                    "; lift the limits on the size of files and on memory"};
    if (helper.version.empty())
        return {name, "problem",
                helper.path +
                    " does not start; install the libraries that it needs (on Debian: libavformat59, "
                    "libavcodec59, libswresample4, libsndfile1)"};
    if (!helper.isUsable)
        return {name, "problem",
                helper.path + " is of version " + helper.version + "; install that of this version"};
    return {name, "ok", helper.path + " (version " ORVANE_VERSION ")"};
}

Check libraryCheck(const platform::MediaHelper& helper) {
    if (helper.isUsable) return {"media libraries", "ok", helper.libraries};
    return {
        "media libraries", "problem",
        "without the media helper only the headers of QuickTime, MP4, MXF, WAVE and AIFF files and the sound "
        "of WAVE files can be read"};
}

Check codecCheck() {
    const std::vector<std::string> wanted{"aac",  "alac", "flac",  "mp3",    "opus",  "pcm_s24le",
                                          "h264", "hevc", "mjpeg", "prores", "dnxhd", "mpeg2video"};
    const auto found = platform::decodableCodecs(wanted);
    std::vector<std::string> missing;
    for (const std::string& codec : wanted)
        if (std::ranges::find(found, codec) == found.end()) missing.push_back(codec);
    if (missing.empty()) return {"codecs", "ok", platform::text::joined(found, ", ")};
    return {"codecs", "problem", "can't decode " + platform::text::joined(missing, ", ")};
}

Check audioOutputCheck() {
    const auto report = platform::audioDeviceReport();
    return {"audio output", report.isThere ? "ok" : "problem", report.description};
}

Check recognitionCheck() {
    const platform::TextRecognitionState state = platform::textRecognitionState();
    return {"text recognition", state.isAvailable ? "ok" : "problem", state.description};
}

Check serviceCheck() {
    const auto service = ServiceConfiguration::load();
    if (service.problem) return {"metadata service", "problem", *service.problem};
    if (service.hasLockit()) return {"metadata service", "ok", *service.baseURL};
    return {"metadata service", "unused", "no service is configured in " + ServiceConfiguration::path()};
}

Check keyStoreCheck() {
    const auto kept = platform::CredentialStore::create(AppStorageHelper::credentialFile())->describe();
    if (kept.isEncrypted) return {"key store", "ok", kept.where};
    if (kept.isLocked)
        return {"key store", "problem",
                "the desktop's key store is locked, so that a sign-in in it can't be used; unlock it in the "
                "desktop"};
    return {"key store", "problem",
            "no key store of the desktop is available; secrets are kept in " + kept.where +
                ", which you alone can read and which is not encrypted"};
}

} // namespace

std::vector<SystemCheck> systemChecks(const platform::SettingsStore& settings,
                                      const OpenProbeCache& openProbeCache) {
    platform::assertMayBlock("systemChecks");
    const platform::MediaHelper helper = platform::mediaHelper();
    return {settingsCheck(settings),
            folderCheck("work folder", AppStorageHelper::applicationSupportDirectory()),
            folderCheck("cache folder", AppStorageHelper::cachesDirectory()),
            rightsCheck(),
            cacheCheck(openProbeCache),
            renderedCheck(settings),
            stemsCheck(settings),
            helperCheck(helper),
            libraryCheck(helper),
            codecCheck(),
            audioOutputCheck(),
            recognitionCheck(),
            serviceCheck(),
            keyStoreCheck()};
}

} // namespace orvane
