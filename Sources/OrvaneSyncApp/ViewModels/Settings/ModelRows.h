#pragma once

#include "Platform/JSON.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

/// One optional model, as the tab shows it. All texts are shown to the user.
struct ModelRow {
    /// `notSetUp`: no address to download it from is configured. For an optional model this is not an error.
    enum class State : std::uint8_t { notDownloaded, downloading, ready, notSetUp, error };
    std::string id;
    std::string name;
    std::string description;
    std::string facts; ///< its size, and whether it is used
    State state = State::notDownloaded;
    std::string status;   ///< shown beside the dot; for `notSetUp` and `error` a sentence
    double progress = 0;  ///< 0 to 1, while it is downloaded
    std::string download; ///< the text of the download button; empty: no button
};

struct ModelList {
    std::vector<ModelRow> rows;
    std::vector<std::pair<std::string, std::string>>
        features; ///< what works without a model: name and description
    std::string diskUsage;
    std::string stems; ///< whether the model for stems is installed
    bool areStemsReady = false;
    std::string stemsProblem; ///< what to do about the stems; empty: nothing
    bool isDownloading = false;
};
/// Reads the answer of the command `models`. What is missing in the answer is empty.
ModelList modelList(const platform::JSON& answer);

} // namespace orvane
