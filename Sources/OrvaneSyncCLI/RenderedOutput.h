#pragma once

#include "OrvaneSyncCLI/Arguments.h"
#include "OrvaneSyncCLI/Context.h"
#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"
#include "Platform/AudioFileWriter.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::cli {

/// `-o OUT.wav` and `--force`.
const std::vector<Option>& renderedOutputOptions();

/// The sound file that a command renders.
class RenderedOutput {
  public:
    /// Throws UsageError, and OutputRefused for a place that cannot take it.
    RenderedOutput(Context& context, const Arguments& arguments, RunInputs inputs);

    const std::string& path() const { return path_; }
    /// Adds to the files that are read. Throws OutputRefused if the output would overwrite one.
    void addInputs(RunInputs inputs);
    /// Writes the file, whole or not at all, and prints what was written. Throws FileError.
    void render(platform::AudioFileWriter::Format format,
                const std::function<void(platform::AudioFileWriter& out)>& fill,
                std::string_view description = {}) const;
    /// The same with the bytes of another file.
    void copy(const std::string& from, double seconds, double sampleRate) const;

  private:
    void tell(double seconds, double sampleRate) const;

    Context& context_;
    std::string path_;
    RunInputs inputs_;
    OutputPermission permission_;
    OutputGuard guard_;
    bool asJSON_;
};

} // namespace orvane::cli
