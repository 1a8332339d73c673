#pragma once

#include "Platform/Playback/Picture.h"

#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane::platform {

struct TextLine {
    std::string text;      ///< words with one blank between them, in their original case
    double confidence = 0; ///< 0 to 1, the mean of its words
};

enum class RecognitionLevel {
    fast,    ///< whether there is text and which; small type is missed
    accurate ///< the exact text, in English and German where these are installed
};

/// Reads the text in a picture. One thread at a time, never the interface thread.
class TextRecognizer {
  public:
    virtual ~TextRecognizer() = default;

    /// Lines from top to bottom, and within a row from left to right. The words within a cell of a ruled form
    /// are one line. Uncertain readings are left out, so that texture and noise give nothing. Throws Stopped.
    virtual std::vector<TextLine> lines(const Picture& picture, RecognitionLevel level,
                                        const std::stop_token& stop = {}) = 0;

    /// Null where `textRecognitionState` says that nothing can be read. Any thread but the interface thread,
    /// as it reads the language data.
    static std::unique_ptr<TextRecognizer> create();
};

/// What this installation can read; any thread but the interface thread.
struct TextRecognitionState {
    bool isAvailable = false;
    std::string description; ///< library and languages; or what is missing, and what to install
};
TextRecognitionState textRecognitionState();

} // namespace orvane::platform
