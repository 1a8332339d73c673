#pragma once

#include <cstddef>
#include <string>

namespace orvane {

/// "Listening to the cards: 3 of 18 clips".
std::string listeningText(std::size_t done, std::size_t total);
/// What came of it. `heard`: of how many of the `total` clips it was heard where their sound lies;
/// `isInDoubt`: whether anything of the work is.
std::string heardText(std::size_t heard, std::size_t total, bool isInDoubt);

} // namespace orvane
