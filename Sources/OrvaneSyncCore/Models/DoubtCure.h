#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orvane {

/// As a shell reads it.
std::string shellQuoted(std::string_view text);

/// An option of the command line that a cure names.
struct CureOption {
    enum class Kind : std::uint8_t {
        soundOffset,
        soundDate,
        timecodeRate,
        days,
        setting, ///< "key=value"
        choose,
        exclude, ///< a pattern of paths
        video,   ///< a folder, as `audio`
        audio,
        withoutFolder, ///< no option: a folder that was named for the scan is named no more
    };
    Kind kind = Kind::soundOffset;
    std::string value; ///< without quotes; empty where nobody but the user knows it

    /// "--exclude 'UNIT2'", "--sound-date YYYY-MM-DD", "without the folder '/media/UNIT2'".
    std::string text() const;
    bool operator==(const CureOption&) const = default;
};
/// With its dashes; empty for `withoutFolder`.
std::string_view nameOf(CureOption::Kind kind);

/// Some of the files, for a scan of which alone options are right.
struct CureScan {
    std::string files;               ///< "this card"
    std::vector<CureOption> options; ///< that make the scan
    std::string rest = {};           ///< what options can't do of it; empty: nothing

    bool operator==(const CureScan&) const = default;
};

/// Options that are given together.
struct CureWay {
    std::vector<CureOption> options;
    std::optional<CureScan> scan = {};
    bool isForSome = false; ///< of the files, and the words beside it say of which

    bool isForAll() const { return !scan && !isForSome; }
    bool operator==(const CureWay&) const = default;
};

/// What to do about a doubt: a sentence whose options are values. The last part of a sum may go on with the
/// first of what is added.
class DoubtCure {
  public:
    /// Words between the ways. A window has no options and no table, and may need others.
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
    /// The options of its last way are for that scan; absent: for any.
    DoubtCure in(std::optional<CureScan> scan) &&;

    bool isEmpty() const { return parts_.empty(); }
    const std::vector<Part>& parts() const { return parts_; }
    /// For a terminal: options as they are typed.
    std::string text() const;
    /// The first way whose options are known; null where there is none, or where its scan needs more than
    /// options.
    const CureWay* firstWay() const;

    bool operator==(const DoubtCure&) const = default;

  private:
    std::vector<Part> parts_;
};

} // namespace orvane
