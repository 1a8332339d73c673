#pragma once

#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"
#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"

#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

// Warnings about the open work for people, a line each.

/// What the last scan could not find or read or has left out, parts of an opened project that apply to no
/// clip, a report that does not fit the clips, and rates that are most likely wrong.
std::vector<std::string> scanWarnings(const WorkSnapshot& work);
/// How many files of the document are missing, with the name of the first; absent if none is. Looks at the
/// disk.
std::optional<std::string> missingMediaWarning(const WorkSnapshot& work, const std::stop_token& stop = {});
/// Each clip that is not in the document, and why, except those that the editor excluded.
std::vector<std::string> leftOutWarnings(const WorkSnapshot& work);
/// Recordings that Smart Audio could not read (each one if they are few), or not to their end, or of which it
/// leaves only timecode switched on; clips that it passed over; and measured clips that are silent or get a
/// large gain.
std::vector<std::string> smartAudioWarnings(const WorkSnapshot& work);
/// Which recordings Smart Audio could not read at all, and how many, as one line; absent if there are none.
std::optional<std::string> unheardWarning(const WorkSnapshot& work);
/// Whether the front end can match the clips in another way.
enum class Matching : bool { isDone, canChange };
/// One line for each doubt, with its cure, for a front end that has no list of doubts. If the matching is
/// done, all doubts that another matching cures become one line, which says where to look.
std::vector<std::string> doubtWarnings(const WorkSnapshot& work, Matching matching = Matching::canChange);
/// Adds the warnings that are not the exporter's; missing media come first. Looks for every file on the disk,
/// so not on the interface thread.
void addOwnWarnings(const WorkSnapshot& work, ExportResult& result, Matching matching = Matching::canChange,
                    const std::stop_token& stop = {});
/// Why a result is empty, if the reason is that the recording was only partly read.
std::optional<ReadFailed> readFailureOf(const SmartAudioResult& result);
/// Says that a recording ends before the length that its header states.
std::string earlyEndWarning(const std::string& filename, double heardSeconds, double promisedSeconds);

/// A card full of files of one kind becomes one line, not hundreds: the first name, and how many more.
/// `names` has at least one.
std::string firstAndMore(const std::vector<std::string>& names);

} // namespace orvane
