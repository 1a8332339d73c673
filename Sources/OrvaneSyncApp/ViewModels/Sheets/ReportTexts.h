#pragma once

#include "OrvaneSyncApp/Controllers/ReportController.h"

#include <cstddef>
#include <string>
#include <vector>

namespace orvane {

/// What is said of a report that is loaded. All texts are for people; pure.
namespace reportTexts {

/// What a row stands for: the file that it names, or its scene and take, or else its number from 1.
std::string nameOfRow(const ALEFile& report, std::size_t row);
/// The same with the tape and the start that the row gives, by which it is found on a card.
std::string lineOfRow(const ALEFile& report, std::size_t row);
/// The columns that have text, by whether the document has what stands in them.
struct Columns {
    std::vector<std::string> inDocument;
    std::vector<std::string> shownOnly;
};
Columns columnsOf(const ALEFile& report);
/// How many rows name no clip, and the first of them; empty where each names one.
std::string rowsWithoutClip(const ReportController& reports);

} // namespace reportTexts
} // namespace orvane
