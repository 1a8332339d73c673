#pragma once

#include "OrvaneSyncApp/Controllers/ReportController.h"

#include <cstddef>
#include <string>
#include <vector>

namespace orvane {

/// Texts about the loaded report, shown to the user. Pure.
namespace reportTexts {

/// The name of a row: the file that it names, otherwise its scene and take, otherwise its number from 1.
std::string nameOfRow(const ALEFile& report, std::size_t row);
/// The name, and the tape and start of the row, so that the user can find the file on a card.
std::string lineOfRow(const ALEFile& report, std::size_t row);
/// The columns that contain text, divided by whether the document gets their values.
struct Columns {
    std::vector<std::string> inDocument;
    std::vector<std::string> shownOnly;
};
Columns columnsOf(const ALEFile& report);
/// How many rows match no clip, and the first of these rows; empty if each row matches one.
std::string rowsWithoutClip(const ReportController& reports);

} // namespace reportTexts
} // namespace orvane
