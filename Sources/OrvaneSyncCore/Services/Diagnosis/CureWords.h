#pragma once

#include "OrvaneSyncCore/Models/DoubtCure.h"

#include <string>

/// Decisions of the editor, which a terminal's user makes in a table and a window's in a menu.
namespace orvane::cureWords {

inline DoubtCure choose() {
    return DoubtCure::Words{"choose in the table of 'scan --review'",
                            "choose the recording in the clip's menu"};
}
inline DoubtCure choose(const std::string& recording) {
    return DoubtCure::Words{"choose " + recording + " in the table of 'scan --review'",
                            "choose " + recording + " in the clip's menu"};
}
/// What the microphones heard is known clip by clip.
inline DoubtCure asHeard(const std::string& what, const std::string& columns) {
    return DoubtCure::Words{
        what + ": 'diagnose --review FILE' fills in " + columns + ", and 'sync --apply FILE' takes it", what};
}
/// Where only some of the clips with a card's sound have it elsewhere, a table moves these in one document.
inline DoubtCure moveAsHeard() { return asHeard("move their sound by that", "'offset_frames'"); }
/// Which columns of the table say it, behind what is to be done; a window has its fields before one's eyes.
inline DoubtCure inTable(const std::string& columns) {
    return DoubtCure::Words{" (" + columns + " in the table of 'scan --review')", ""};
}
inline DoubtCure skip() {
    return DoubtCure::Words{"an x under 'skip' in the table of 'scan --review'",
                            "“Toggle Excluded” in the clip's menu"};
}
inline DoubtCure skipToLeaveOut() {
    return DoubtCure::Words{"an x under 'skip' in the table of 'scan --review' to leave the clip out",
                            "“Toggle Excluded” to leave the clip out"};
}

/// Of an odd offset that microphones can tell more of than timecode.
inline constexpr const char* listenFirst =
    "listen before anything is moved ('diagnose' does): room tone and wild tracks that were made after the "
    "takes are right where they are";

} // namespace orvane::cureWords
