#pragma once

#include "OrvaneSyncCore/Models/DoubtCure.h"

#include <algorithm>
#include <string>
#include <variant>

/// Texts for decisions of the editor: a user of the terminal makes them in a table, a user of the window in a
/// menu.
namespace orvane::cureWords {

inline DoubtCure choose() {
    return DoubtCure::Words{"choose in the table of 'scan --review'",
                            "choose the recording in the clip's menu"};
}
inline DoubtCure choose(const std::string& recording) {
    return DoubtCure::Words{"choose " + recording + " in the table of 'scan --review'",
                            "choose " + recording + " in the clip's menu"};
}
/// For a clip with several recordings: the one that its camera heard.
inline DoubtCure chooseHeard(const std::string& recording) {
    return DoubtCure::Words{"choose " + recording + " in the table of 'diagnose --review', which fills it in",
                            "choose " + recording + " in the clip's menu"};
}
/// For clips whose offsets were measured one by one.
inline DoubtCure asHeard(const std::string& what, const std::string& columns) {
    return DoubtCure::Words{
        what + ": 'diagnose --review FILE' fills in " + columns + ", and 'sync --apply FILE' takes it", what};
}
/// Whether options of the cure are for some of the files only: the other clips then need another document,
/// and a table can serve all clips in one.
inline bool isForSome(const DoubtCure& cure) {
    return std::ranges::any_of(cure.parts(), [](const DoubtCure::Part& part) {
        const auto* way = std::get_if<CureWay>(&part);
        return way != nullptr && !way->isForAll();
    });
}
/// If only some of the clips with a card's sound have it elsewhere, a table moves the sound of these clips in
/// one document.
inline DoubtCure moveAsHeard() { return asHeard("move their sound by that", "'offset_frames'"); }
/// For clocks that run apart.
inline DoubtCure attachEachAsHeard() {
    return asHeard("attach the recordings and move each by its own distance", "'choice' and 'offset_frames'");
}
/// Text after an instruction: the columns of the table to edit. A window shows its fields, so it needs no
/// such text.
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

/// For clips whose sound may be right: after that they raise no doubt. `what`: "lock ...".
inline DoubtCure lock(const std::string& what) {
    return DoubtCure::Words{what + " (an x under 'lock' in the table of 'scan --review')", what};
}

/// For a gap between the parts of a recording.
inline DoubtCure lookForPart() {
    return DoubtCure("copy the card again, or look for a part of the recording that is missing") +
           lock("; if it is lost, lock the clips");
}

/// For a card whose clips were measured with different offsets.
inline DoubtCure byNoOneOffset(const std::string& spread) {
    const std::string why = "what was heard differs by " + spread +
                            " between these clips, so no one offset is right: check a clap of each, and ";
    return DoubtCure::Words{why + "move them one by one ('choice' and 'offset_frames' in the table of 'scan "
                                  "--review')",
                            why + "attach and move their sound by hand"};
}

/// For an odd offset, about which microphones can say more than timecode.
inline DoubtCure listenFirst() {
    const std::string why =
        ": room tone and wild tracks that were made after the takes are right where they are";
    return DoubtCure::Words{"listen before anything is moved ('diagnose' does)" + why,
                            "before anything is moved, “Listen to the Cards” in the menu Audio" + why};
}

/// For clips that would match at another rate, and by one offset as well.
inline constexpr const char* oneOffsetFitsToo =
    "; with the recordings moved by one offset they would as well";
inline DoubtCure listenForTheRate() {
    return DoubtCure::Words{
        "run 'diagnose' with the same folders and options: it compares both with what the cameras heard",
        "“Listen to the Cards” in the menu Audio compares both with what the cameras heard"};
}

} // namespace orvane::cureWords
