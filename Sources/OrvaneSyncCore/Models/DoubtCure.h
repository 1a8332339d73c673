#pragma once

#include "OrvaneSyncCore/Utilities/EnumTable.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orvane {

/// The text in the quotes that a shell needs.
std::string shellQuoted(std::string_view text);

/// An option of the command line that a cure names. Properties of a kind: `cureOptions`.
struct CureOption {
    enum class Kind : std::uint8_t {
        soundOffset,
        soundDate,
        timecodeRate,
        days,
        setting, ///< the text is "key=value"
        choose,
        exclude, ///< a pattern for paths
        video,   ///< a folder; so is `audio`
        audio,
        withoutFolder, ///< not an option: scan again without this folder
    };
    Kind kind = Kind::soundOffset;
    std::string value; ///< without quotes; empty if only the user knows it

    /// "--exclude 'UNIT2'", "--sound-date YYYY-MM-DD", "without the folder '/media/UNIT2'".
    std::string text() const;
    bool operator==(const CureOption&) const = default;
};
struct CureOptionRow {
    std::string_view name;    ///< with its dashes
    std::string_view unknown; ///< in place of a value that only the user knows
    bool isOfMatching;        ///< it changes which recordings clips get, so `CureTrial` tries it
    bool mayRepeat;           ///< in one call
    bool isPath;              ///< the value is quoted in texts
};
/// One row for each kind, in the order of the kinds.
inline constexpr auto cureOptions = std::to_array<CureOptionRow>({
    {"--sound-offset", "HH:MM:SS:FF", true, false, false},
    {"--sound-date", "YYYY-MM-DD", true, false, false},
    {"--tc-rate", "RATE", true, false, false},
    {"--days", "RULE", true, false, false},
    {"--set", "KEY=VALUE", false, true, false},
    {"--choose", "first", false, false, false},
    {"--exclude", "FOLDER", true, true, true},
    {"--video", "FOLDER", true, true, true},
    {"--audio", "FOLDER", true, true, true},
    {"without the folder", "FOLDER", true, true, true},
});
constexpr const CureOptionRow& rowOf(CureOption::Kind kind) { return rowOf(cureOptions, kind); }

/// A part of the files. The options of a cure may be right only for a scan of that part.
struct CureScan {
    std::string files;               ///< "this card"
    std::vector<CureOption> options; ///< that select the files
    std::string rest = {};           ///< what selects the files beyond options; empty: nothing
    /// All clips in doubt, and no recording is left out: the options can be applied to these clips without a
    /// scan.
    bool isOfClips = false;

    bool operator==(const CureScan&) const = default;
};

/// Options that are given together.
struct CureWay {
    std::vector<CureOption> options;
    std::optional<CureScan> scan = {};
    bool isForSome = false; ///< holds for some of the files only; the words of the cure say which

    bool isForAll() const { return !scan && !isForSome; }
    bool operator==(const CureWay&) const = default;
};

/// What to do about a doubt: a sentence that contains its options as values. When two cures are added, the
/// last part of the first and the first part of the second are joined.
class DoubtCure {
  public:
    /// Text between the ways. The window has neither options nor tables, so its words may differ.
    struct Words {
        std::string terminal, window;
        bool operator==(const Words&) const = default;
    };
    using Part = std::variant<Words, CureWay>;

    DoubtCure() = default;
    DoubtCure(const std::string& words);
    DoubtCure(const char* words) : DoubtCure(std::string(words)) {}
    DoubtCure(Words words);
    DoubtCure(CureWay way) { parts_.emplace_back(std::move(way)); }
    DoubtCure(CureOption::Kind kind, std::string value)
        : DoubtCure(CureWay{.options = {{kind, std::move(value)}}}) {}

    DoubtCure& operator+=(const DoubtCure& other);
    friend DoubtCure operator+(DoubtCure cure, const DoubtCure& other) { return cure += other; }
    /// Restricts the options of the last way to that scan; absent: they hold for any scan.
    DoubtCure in(std::optional<CureScan> scan) &&;

    bool isEmpty() const { return parts_.empty(); }
    const std::vector<Part>& parts() const { return parts_; }
    /// The text for a terminal, with the options as they are typed.
    std::string text() const;
    /// The first way whose options are all known; null if there is none, or if its scan cannot be selected by
    /// options alone.
    const CureWay* firstWay() const;

    bool operator==(const DoubtCure&) const = default;

  private:
    std::vector<Part> parts_;
};

} // namespace orvane
