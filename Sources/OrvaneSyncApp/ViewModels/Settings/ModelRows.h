#pragma once

#include "Platform/JSON.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

/// One optional model, as the tab shows it. Texts are for people.
struct ModelRow {
    /// `notSetUp`: nothing names a place to get it from, which is no fault of an optional model.
    enum class State : std::uint8_t { notDownloaded, downloading, ready, notSetUp, error };
    std::string id;
    std::string name;
    std::string description;
    std::string facts; ///< size, and whether anything uses it
    State state = State::notDownloaded;
    std::string status;   ///< beside the dot; of `notSetUp` and `error` a sentence
    double progress = 0;  ///< 0 to 1, while it is downloading
    std::string download; ///< of the button that begins a download; empty: there is none
};

struct ModelList {
    std::vector<ModelRow> rows;
    std::vector<std::pair<std::string, std::string>>
        features; ///< what works without one, name and description
    std::string diskUsage;
    std::string stems; ///< whether the model of the stems is installed
    bool areStemsReady = false;
    std::string stemsProblem; ///< what to do; empty: nothing
    bool isDownloading = false;
};
/// From what the command `models` answers. What an answer lacks is empty.
ModelList modelList(const platform::JSON& answer);

} // namespace orvane
