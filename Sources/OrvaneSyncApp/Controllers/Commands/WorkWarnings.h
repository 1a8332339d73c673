#pragma once

#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"
#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"

#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

// What people should know of the open work, a line each.

/// What the last scan could not find, what of an opened project stands on no clip, and rates that can hardly
/// be right.
std::vector<std::string> scanWarnings(const WorkSnapshot& work);
/// How many files of the document are not there, with the first; nothing where all are. Looks at the disk.
std::optional<std::string> missingMediaWarning(const WorkSnapshot& work, const std::stop_token& stop = {});
/// Each clip that the document does not hold, and why, but those that the editor left out.
std::vector<std::string> leftOutWarnings(const WorkSnapshot& work);
/// Each recording that Smart Audio could not hear, where they are few, or not to its end, or of which it
/// leaves nothing but timecode switched on; clips that it left out; and measured clips that are silent or
/// raised by far.
std::vector<std::string> smartAudioWarnings(const WorkSnapshot& work);
/// Which recordings Smart Audio could not hear at all, and how many, as one line; absent where it heard all.
std::optional<std::string> unheardWarning(const WorkSnapshot& work);
/// Whether the front end can have the clips matched in another way.
enum class Matching : bool { isDone, canChange };
/// One line each doubt, with its cure, for a front end that shows no list of them. Where the matching is
/// done, doubts that another matching cures are one line together, which says where to look.
std::vector<std::string> doubtWarnings(const WorkSnapshot& work, Matching matching = Matching::canChange);
/// What people should know beside the exporter's own warnings; media that are missing come first. Looks for
/// every file on the disk, so not on the interface thread.
void addOwnWarnings(const WorkSnapshot& work, ExportResult& result, Matching matching = Matching::canChange,
                    const std::stop_token& stop = {});
/// Why a result is empty, where it is because the recording was read in part only.
std::optional<ReadFailed> readFailureOf(const SmartAudioResult& result);
/// Says that a recording ends before the length that its header states.
std::string earlyEndWarning(const std::string& filename, double heardSeconds, double promisedSeconds);

/// A card full of files of one kind is one line, not hundreds: the first name, and how many more. At least
/// one.
std::string firstAndMore(const std::vector<std::string>& names);

} // namespace orvane
