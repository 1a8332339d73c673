#include "OrvaneSyncCore/Services/Shortcuts/LinuxKeys.h"

#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

namespace orvane {

namespace {

using Code = Shortcut::KeyCode;

struct Mapping {
    std::uint32_t from;
    std::uint16_t keyCode;
};

/// Keys that are recognised by the layout. The keypad arrows are those without Num Lock; the last two are
/// non-breaking spaces.
constexpr auto specialKeysyms = std::to_array<Mapping>({{0xff0d, Code::returnMain},
                                                        {0xff8d, Code::returnNumpad},
                                                        {0xff1b, Code::escape},
                                                        {0xff51, Code::arrowLeft},
                                                        {0xff52, Code::arrowUp},
                                                        {0xff53, Code::arrowRight},
                                                        {0xff54, Code::arrowDown},
                                                        {0xff96, Code::arrowLeft},
                                                        {0xff97, Code::arrowUp},
                                                        {0xff98, Code::arrowRight},
                                                        {0xff99, Code::arrowDown},
                                                        {0x20, Code::space},
                                                        {0xff80, Code::space},
                                                        {0xa0, Code::space},
                                                        {0x100202f, Code::space}});

/// Keys that are recognised by their position if it is known.
constexpr auto evdevPlaces = std::to_array<Mapping>(
    {{36, Code::j}, {37, Code::k}, {38, Code::l}, {51, Code::comma}, {52, Code::period}});
constexpr auto keysymsOfPlaces = std::to_array<Mapping>({{'j', Code::j},
                                                         {'J', Code::j},
                                                         {'k', Code::k},
                                                         {'K', Code::k},
                                                         {'l', Code::l},
                                                         {'L', Code::l},
                                                         {',', Code::comma},
                                                         {'<', Code::comma},
                                                         {'.', Code::period},
                                                         {'>', Code::period}});
/// Positions of the special keys, used if the symbol is unknown.
constexpr auto evdevSpecialKeys = std::to_array<Mapping>({{1, Code::escape},
                                                          {28, Code::returnMain},
                                                          {57, Code::space},
                                                          {96, Code::returnNumpad},
                                                          {103, Code::arrowUp},
                                                          {105, Code::arrowLeft},
                                                          {106, Code::arrowRight},
                                                          {108, Code::arrowDown}});

/// Shift, Control, Alt and other modifiers, used if the symbol is unknown.
constexpr auto evdevModifiers = std::to_array<std::uint32_t>({29, 42, 54, 56, 58, 69, 97, 100, 125, 126});

bool isModifier(std::uint32_t evdev, std::uint32_t keysym) {
    constexpr std::uint32_t shiftLeft = 0xffe1, hyperRight = 0xffee, modeSwitch = 0xff7e, numLock = 0xff7f,
                            firstOfLevels = 0xfe01, lastOfLevels = 0xfe13;
    if (keysym == 0) return std::ranges::find(evdevModifiers, evdev) != evdevModifiers.end();
    return (keysym >= shiftLeft && keysym <= hyperRight) || keysym == modeSwitch || keysym == numLock ||
           (keysym >= firstOfLevels && keysym <= lastOfLevels);
}

template <std::size_t count>
std::optional<std::uint16_t> mapped(const std::array<Mapping, count>& table, std::uint32_t from) {
    const auto* found = std::ranges::find(table, from, &Mapping::from);
    return found == table.end() ? std::nullopt : std::optional(found->keyCode);
}

/// Editing, function, modifier and media keys, which type no text.
bool isFunction(std::uint32_t keysym) {
    return (keysym >= 0xff00 && keysym <= 0xffff) || (keysym >= 0x10080000 && keysym <= 0x1008ffff);
}

/// The text that a key symbol types; absent for symbols without text and for old symbols of other scripts.
std::optional<std::string> typed(std::uint32_t keysym) {
    constexpr std::uint32_t unicode = 0x01000000, keypadStar = 0xffaa, keypadNine = 0xffb9,
                            keypadEqual = 0xffbd;
    if ((keysym >= 0x20 && keysym <= 0x7e) || (keysym >= 0xa0 && keysym <= 0xff))
        return platform::text::utf8(keysym);
    if (keysym >= unicode + 0x100 && keysym <= unicode + 0x10ffff)
        return platform::text::utf8(keysym - unicode);
    // The keypad symbols are in the order of ASCII.
    if ((keysym >= keypadStar && keysym <= keypadNine) || keysym == keypadEqual)
        return platform::text::utf8(keysym - keypadStar + '*');
    return std::nullopt;
}

std::uint16_t keyCode(std::uint32_t evdev, std::uint32_t keysym) {
    if (const auto special = mapped(specialKeysyms, keysym)) return *special;
    if (keysym == 0)
        if (const auto special = mapped(evdevSpecialKeys, evdev)) return *special;
    if (isFunction(keysym)) return Code::other;
    const auto place = evdev != 0 ? mapped(evdevPlaces, evdev) : mapped(keysymsOfPlaces, keysym);
    return place.value_or(Code::other);
}

ModifierSet modifiers(const LinuxKeyEvent& event) {
    const auto when = [](bool isHeld, ModifierSet modifier) { return isHeld ? modifier : ModifierSet::none; };
    return when(event.isShiftHeld, ModifierSet::shift) | when(event.isControlHeld, ModifierSet::command) |
           when(event.isAltHeld, ModifierSet::option) | when(event.isSuperHeld, ModifierSet::control);
}

bool isControlCharacter(const std::string& text) {
    constexpr unsigned char firstPrintable = 0x20, deletion = 0x7f;
    const auto first = static_cast<unsigned char>(text.front());
    return first < firstPrintable || first == deletion;
}

} // namespace

std::optional<KeyEvent> keyEvent(const LinuxKeyEvent& event) {
    constexpr std::uint32_t firstScanCode = scanCodeOfEvdev(0);
    const std::uint32_t evdev = event.scanCode > firstScanCode ? event.scanCode - firstScanCode : 0;
    if (isModifier(evdev, event.keysym)) return std::nullopt;
    KeyEvent result{.isDown = event.isDown, .isRepeat = event.isRepeat, .modifiers = modifiers(event)};
    result.keyCode = keyCode(evdev, event.keysym);
    constexpr std::uint32_t bySymbol = 0x80000000; // above all position numbers
    result.physicalKey = evdev != 0 ? evdev : bySymbol | event.keysym;
    result.characters = typed(event.keysym);
    // With Control held the text is a control character.
    if (!result.characters && !event.text.empty() && !isControlCharacter(event.text))
        result.characters = event.text;
    result.charactersIgnoringModifiers = result.characters;
    return result;
}

} // namespace orvane
