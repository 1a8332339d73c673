#include "OrvaneSyncCore/Services/Shortcuts/KeyboardMonitor.h"
#include "OrvaneSyncCore/Services/Shortcuts/LinuxKeys.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutBindings.h"
#include "Support/Test.h"

namespace orvane {
namespace {

std::string textOf(const std::optional<Shortcut>& shortcut) { return shortcut ? shortcut->text() : "-"; }

TEST(Shortcut, decodesAKeyPress) {
    constexpr std::uint16_t other = Shortcut::KeyCode::other;
    struct Case {
        const char* name;
        std::uint16_t code;
        std::optional<std::string> text, plain;
        ModifierSet modifiers;
        const char* expected;
    };
    const Case cases[] = {
        {"either return", 76, "\r", "\r", {}, "return"},
        {"a code goes before what is typed", 49, "[", "[", ModifierSet::shift, "shift+space"},
        {"shift and =", other, "+", "+", ModifierSet::shift, "shift+plus"},
        {"= alone", other, "=", "=", {}, "plus"},
        {"both braces", other, "}", "}", ModifierSet::shift, "shift+]"},
        {"shift and comma", 43, "<", "<", ModifierSet::shift, "shift+,"},
        {"period that types nothing", 47, std::nullopt, std::nullopt, {}, "."},
        {"what is typed goes before the place of the comma", 43, "-", "-", {}, "minus"},
        {"option changes what is typed", 37, "¬", "L", ModifierSet::option, "option+l"},
        {"a letter of another script", other, "Ж", "Ж", {}, "ж"},
        {"the first letter counts", other, "", "Ab", {}, "a"},
        {"a text must match as a whole", other, "--", "--", {}, "-"},
        {"a digit but 0", other, "5", "5", {}, "-"},
        {"other punctuation", other, ";", ";", {}, "-"},
        {"a letter that only `characters` has", other, "c", std::nullopt, {}, "-"},
    };
    for (const auto& [name, code, text, plain, modifiers, expected] : cases)
        EXPECT_EQ(textOf(Shortcut::decode(code, text, plain, modifiers)), expected) << name;
}

TEST(Shortcut, isShownTypedAndPutIntoMenus) {
    struct Case {
        Shortcut shortcut;
        const char* shown;
        const char* typed;
        const char* inMenu; ///< null: none
    };
    constexpr auto all =
        ModifierSet::command | ModifierSet::shift | ModifierSet::option | ModifierSet::control;
    const Case cases[] = {{{"l", ModifierSet::command | ModifierSet::shift}, "⇧⌘L", "shift+command+l", "l"},
                          {{"arrowRight", ModifierSet::shift}, "⇧→", "shift+arrowRight", "arrowRight"},
                          {{"plus", all}, "⌃⌥⇧⌘+", "control+option+shift+command+plus", "+"},
                          {{"minus", {}}, "−", "minus", "-"},
                          {{"kHeldJ", {}}, "K + J", "kHeldJ", nullptr},
                          {Shortcut::unbound, "—", "none", nullptr}};
    for (const auto& [shortcut, shown, typed, inMenu] : cases) {
        EXPECT_EQ(shortcut.displayString(), shown);
        EXPECT_EQ(shortcut.text(), typed);
        EXPECT_EQ(Shortcut::fromText(typed), shortcut) << typed;
        const auto equivalent = shortcut.menuEquivalent();
        EXPECT_EQ(equivalent ? equivalent->key : "", inMenu == nullptr ? "" : inMenu) << typed;
    }
    EXPECT_EQ(Shortcut::fromText("Shift++"), (Shortcut{"plus", ModifierSet::shift}));
    EXPECT_EQ(Shortcut::fromText("{"), (Shortcut{"[", {}}));
    for (const char* bad : {"5", "f5", "shift+", "hyper+c", "cc", ";", "+c", "shift+none"})
        EXPECT_THROW(Shortcut::fromText(bad), ShortcutTextError) << bad;
}

/// The result of each event: the action, "." if it is used without an action, "~" if it is passed on. Events:
/// "+c" is a press, "=c" a press that the system marks as a repeat, "-c" a release, "_c" a release marked as
/// a repeat; a leading "t": while a text is edited; "lost": another window has the keyboard.
std::string played(const std::string& events, const ShortcutBindings& bindings) {
    std::string action;
    KeyboardMonitor monitor(
        [&](std::string_view key, ModifierSet modifiers) { return actionFor(bindings, key, modifiers); },
        [&](KeyAction delivered) { action += rawValue(delivered); });
    std::istringstream words(events);
    std::string result;
    for (std::string word; words >> word;) {
        if (word == "lost") {
            monitor.keyboardLost();
            continue;
        }
        const bool isTextEdited = word.front() == 't';
        if (isTextEdited) word.erase(0, 1);
        const char how = word.front();
        const auto event =
            keyEventNamed(word.substr(1), {}, how == '+' || how == '=', how == '=' || how == '_');
        if (!event) return "no key " + word;
        action.clear();
        const bool isUsed = monitor.handle(*event, isTextEdited);
        result += (result.empty() ? "" : " ") + (!action.empty() ? action : isUsed ? "." : "~");
    }
    return result;
}

TEST(KeyboardMonitor, turnsKeysIntoActions) {
    struct Case {
        const char* name;
        const char* events;
        const char* expected;
    };
    const Case cases[] = {
        {"K acts when released", "+k =k +k -k", ". . . shuttleStop"},
        {"K and a tap on L step once", "+k +l -l -k +k -k", ". stepForward ~ . . shuttleStop"},
        {"K and J held", "+k +j =j +j -j -k", ". stepBackward slowMoReverse slowMoReverse ~ ."},
        {"another key under K leaves K its action", "+k +c -c -k", ". clapCheck ~ shuttleStop"},
        {"L without K shuttles once a press", "+l =l -l", "shuttleForward . ~"},
        {"arrows repeat", "+arrowRight =arrowRight -arrowRight", "stepForward stepForward ~"},
        {"an unmarked repeat is one", "+f +f -f +f", "toggleFullscreen . ~ toggleFullscreen"},
        {"modifiers count", "+shift+c +shift+arrowLeft", "updateClapPoint stepBackward5"},
        {"a plus is typed with Shift", "+shift+plus", "zoomIn"},
        {"menus have their own keys", "+command+z +command+s", "~ ~"},
        {"a key without an action", "+q -q", "~ ~"},
        {"a text takes all keys", "t+k t-k t+c +c t-c +c", "~ ~ ~ . ~ clapCheck"},
        {"K released into a text is not held", "+k t-k +l", ". ~ shuttleForward"},
        {"releases that belong to repeats", "+k _k =k _k -k", ". . . . shuttleStop"},
        {"a release that was not seen", "+k +f lost +l +f -k",
         ". toggleFullscreen shuttleForward "
         "toggleFullscreen ."},
    };
    for (const auto& [name, events, expected] : cases)
        EXPECT_EQ(played(events, defaultBindings()), expected) << name;
    // The three shuttle keys stay the same keys, whatever is bound to them.
    ShortcutBindings rebound = defaultBindings();
    rebound[ShortcutAction::shuttleStop] = {"s", {}};
    rebound[ShortcutAction::slowMoForward] = Shortcut::unbound;
    EXPECT_EQ(played("+k -k +s +k +l =l", rebound), ". . shuttleStop . stepForward .");
    rebound[ShortcutAction::lockCurrent] = {"k", {}};
    EXPECT_EQ(played("+k -k", rebound), ". lockCurrent");
}

TEST(LinuxKeys, haveTheirMeaningByPlaceAndLayout) {
    constexpr std::uint32_t escape = 0xff1b, keypadLeft = 0xff96, keypadAdd = 0xffab, keypadFour = 0xffb4,
                            capsLock = 0xffe5, cyrillicKa = 0x6cb, keypadEnter = 0xff8d;
    const auto evdev = scanCodeOfEvdev;
    struct Case {
        const char* name;
        LinuxKeyEvent event;
        const char* expected;
    };
    const Case cases[] = {
        {"shift and comma", {evdev(51), '<', "<", true}, "shift+,"},
        {"shift and comma on a German keyboard", {evdev(51), ';', ";", true}, "shift+,"},
        {"the < key of a German keyboard", {evdev(86), '<', "<"}, "-"},
        {"control", {evdev(38), 'l', "\x0c", false, true}, "command+l"},
        {"alt and super", {evdev(30), 'a', "a", false, false, true, true}, "control+option+a"},
        {"caps lock", {evdev(46), 'C', "C"}, "c"},
        {"escape on caps lock", {evdev(58), escape, "\x1b"}, "escape"},
        {"caps lock on escape", {evdev(1), capsLock, ""}, "-"},
        {"a keypad without num lock", {evdev(75), keypadLeft, ""}, "arrowLeft"},
        {"a keypad with it", {evdev(75), keypadFour, "4"}, "-"},
        {"keypad plus", {evdev(78), keypadAdd, "+"}, "plus"},
        {"keypad enter", {evdev(96), keypadEnter, "\r"}, "return"},
        {"an older symbol of another script", {evdev(19), cyrillicKa, "к"}, "к"},
        {"a Unicode symbol", {evdev(40), 0x1000000 + 0x119, ""}, "ę"},
        {"a keyboard on the screen", {0, '>', ">", true}, "shift+."},
        {"no layout", {evdev(105), 0, ""}, "arrowLeft"},
        {"no layout, a place that types", {evdev(30), 0, ""}, "-"},
    };
    for (const auto& [name, event, expected] : cases)
        EXPECT_EQ(textOf(shortcutFor(keyEvent(event).value_or(KeyEvent{}))), expected) << name;
    for (const LinuxKeyEvent& shift : {LinuxKeyEvent{evdev(42), 0xffe1}, LinuxKeyEvent{evdev(42)}})
        EXPECT_FALSE(keyEvent(shift)) << "a recording waits for the key behind it";
    // K is recognised by its place on a US keyboard, and is the same key whatever it types.
    EXPECT_EQ(keyEvent({evdev(37), 't', "t"})->keyCode, Shortcut::KeyCode::k);
    EXPECT_EQ(keyEvent({evdev(37), 'K', "K", true})->physicalKey,
              keyEvent({evdev(37), 'k', "k"})->physicalKey);
}

} // namespace
} // namespace orvane
