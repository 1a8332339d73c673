#include "OrvaneSyncCLI/RenderedOutput.h"

#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/RenderedAudio/RenderedAudioStore.h"
#include "Platform/Files.h"
#include "Platform/NewFile.h"
#include "Platform/RandomAccessFile.h"
#include "Platform/Text.h"

#include <utility>

namespace orvane::cli {

namespace {

std::string outputOf(const Arguments& arguments) {
    const std::string path = arguments.value("--output").value_or("");
    if (path.empty() || path == "-") throw UsageError("-o needs the name of a file");
    if (FileURL{path}.lowercasedExtension() == "mov")
        throw UsageError("-o: the sound is a WAVE file; give it a name that ends in .wav");
    return path;
}

} // namespace

const std::vector<Option>& renderedOutputOptions() {
    static const std::vector<Option> options{
        {"--output", "OUT.wav", "the sound file to write", "-o"},
        {"--force", "",
         "replace a file that is no rendering of OrvaneSync; never media, never what is read"}};
    return options;
}

RenderedOutput::RenderedOutput(Context& context, const Arguments& arguments, RunInputs inputs)
    : context_(context), path_(outputOf(arguments)),
      inputs_(std::move(inputs)), permission_{.replacesOthers = arguments.has("--force")},
      guard_(OutputKind::rendering, inputs_, permission_), asJSON_(arguments.has("--json")) {
    guard_.check(path_);
}

void RenderedOutput::addInputs(RunInputs inputs) {
    inputs_.add(std::move(inputs));
    guard_ = OutputGuard(OutputKind::rendering, inputs_, permission_);
    guard_.check(path_);
}

void RenderedOutput::render(platform::AudioFileWriter::Format format,
                            const std::function<void(platform::AudioFileWriter& out)>& fill,
                            std::string_view description) const {
    platform::AudioFileWriter writer(path_, format, renderingBroadcast(description));
    fill(writer);
    writer.finish([&] { return guard_.decide(path_); });
    tell(static_cast<double>(writer.frames()) / format.sampleRate, format.sampleRate);
}

void RenderedOutput::copy(const std::string& from, double seconds, double sampleRate) const {
    constexpr std::uint64_t step = std::uint64_t{1} << 20U;
    auto source = platform::RandomAccessFile::open(from);
    if (!source) throw CommandError("can't read '" + from + "'");
    platform::NewFile file(path_);
    for (std::uint64_t at = 0; at < source->size();) {
        const auto piece = source->read(at, step);
        if (piece.empty()) throw CommandError("can't read '" + from + "': it has become shorter");
        file.append({reinterpret_cast<const char*>(piece.data()), piece.size()});
        at += piece.size();
    }
    file.takePlace([&] { return guard_.decide(path_); });
    tell(seconds, sampleRate);
}

void RenderedOutput::tell(double seconds, double sampleRate) const {
    if (asJSON_) {
        const RenderResult result{{platform::files::standardized(path_)}, seconds, sampleRate};
        context_.out << toJSON(result).dump(platform::JSON::Layout::pretty) << "\n";
        return;
    }
    context_.out << "Wrote " << platform::text::printable(path_) << ": " << clockText(seconds)
                 << formatted(", %.0f Hz\n", sampleRate);
}

} // namespace orvane::cli
