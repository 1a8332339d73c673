#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCore/Services/Ingest/MediaProbeService.h"
#include "Platform/Files.h"

#include <utility>

namespace orvane::cli {

namespace {

/// A file whose extension no scan accepts is shown as the kind that its contents suggest.
MediaAsset probe(Context& context, MediaProbeService& service, const FileURL& url, bool isReadable) {
    bool isSaid = !isReadable;
    const auto unread = [&](const FileURL& file) {
        if (!std::exchange(isSaid, true))
            context.warn("can't read all of '" + file.path + "'; what is known of it may not be all");
    };
    if (const auto kind = assetKindFrom(url)) return service.probe(url, *kind, unread);
    if (isReadable) context.warn(url.lastPathComponent() + ": a scan passes over files of this extension");
    MediaAsset asset = service.probe(url, AssetKind::video, unread);
    return asset.width ? asset : service.probe(url, AssetKind::audio, unread);
}

void probeFiles(Context& context, const Arguments& arguments) {
    const auto& paths = arguments.positionals();
    if (paths.empty()) throw UsageError("which file?");
    MediaProbeService service(context.settings,
                              arguments.has("--no-cache") ? nullptr : context.openProbeCache());
    std::size_t unreadable = 0;
    int done = 0;
    std::string text;
    JSON::Array assets;
    ProgressLine progress(context, arguments.has("--quiet"));
    for (const std::string& path : paths) {
        const std::string why = whyUnreadable(path, false);
        if (!why.empty()) {
            progress.clear();
            if (paths.size() == 1) throw CommandError("can't read '" + path + "': " + why);
            context.warn("can't read '" + path + "': " + why);
            ++unreadable;
        }
        const MediaAsset asset = probe(context, service, {platform::files::standardized(path)}, why.empty());
        if (paths.size() > 1) progress.show({"Probing files", ++done, static_cast<int>(paths.size())});
        if (arguments.has("--json"))
            assets.push_back(toJSON(asset));
        else
            text += (text.empty() ? "" : "\n") + assetText(asset, context.mayColour);
    }
    if (unreadable == paths.size()) throw CommandError("none of the files can be read");
    if (arguments.has("--json")) text = JSON(std::move(assets)).dump(JSON::Layout::pretty) + "\n";
    context.out << text;
}

} // namespace

const Command& probeCommand() {
    static const Command command{
        "probe",
        "FILE... [options]",
        "Show what is known of each file.",
        "orvanesync probe demo/shoot/sound/*.WAV",
        {{"--no-cache", "", "read every file again; neither use nor keep earlier results"}},
        probeFiles};
    return command;
}

} // namespace orvane::cli
