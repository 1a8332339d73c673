#pragma once

#include "OrvaneSyncApp/Controllers/UndoStep.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <utility>

namespace orvane {

/// The states of a value before each of its changes, and after each change that was undone. A snapshot is a
/// copy of the value, so copies of the value should share their contents. Times are those of one monotonic
/// clock. One thread.
template <class Value>
class UndoStack {
  public:
    /// If there are more, the oldest step is dropped.
    static constexpr std::size_t levelsOfUndo = 50;

    /// To be called after a change that made a difference: keeps the value before it, unless the change
    /// continues the last step. A new step clears the redo steps. Returns whether there is a new step.
    bool add(const UndoStep& step, Value before, std::chrono::nanoseconds now) {
        const bool isNew = !continuesLastStep(step, now);
        if (isNew) {
            toRedo_.clear();
            toUndo_.push_back({std::string(step.actionName), std::move(before), ++captures_});
            if (toUndo_.size() > levelsOfUndo) toUndo_.pop_front();
            lastActionName_ = step.actionName;
        }
        lastRegistrationTime_ = now;
        return isNew;
    }

    /// The change that made the last step continues: the next change of that name belongs to it, however long
    /// ago it began. Does nothing if another step was added since, or if it was undone.
    void continueLastStep(const UndoStep& step, std::chrono::nanoseconds now) {
        if (lastRegistrationTime_ && lastActionName_ == step.actionName) lastRegistrationTime_ = now;
    }

    /// The next change begins a step, however soon it comes.
    void endLastStep() { lastRegistrationTime_.reset(); }

    /// Exchanges the value for the one before the last change, or after the last change that was undone.
    /// False if there is none.
    bool undo(Value& present) { return move(toUndo_, toRedo_, present); }
    bool redo(Value& present) { return move(toRedo_, toUndo_, present); }

    /// Clears all steps; earlier marks stay valid as earlier.
    void removeAllActions() {
        const std::uint64_t captures = captures_;
        *this = {};
        captures_ = clearedAt_ = captures + 1;
    }

    /// For `forEachSince`: values kept after this call come after this mark.
    std::uint64_t mark() const { return captures_; }
    bool isClearedSince(std::uint64_t mark) const { return clearedAt_ > mark; }
    /// The values that were kept since then and that undo can restore, oldest step first.
    template <class Visit>
    void forEachSince(std::uint64_t mark, Visit&& visit) {
        for (Snapshot& snapshot : toUndo_)
            if (snapshot.capture > mark) visit(snapshot.value);
    }

    /// All values that undo or redo can restore.
    template <class Visit>
    void forEach(Visit&& visit) {
        for (auto* snapshots : {&toUndo_, &toRedo_})
            for (Snapshot& snapshot : *snapshots) visit(snapshot.value);
    }

    /// The value that `undo` (`isBack`) or `redo` would restore; null: none.
    const Value* ahead(bool isBack) const {
        const auto& snapshots = isBack ? toUndo_ : toRedo_;
        return snapshots.empty() ? nullptr : &snapshots.back().value;
    }

    UndoState state() const {
        const auto name = [](const std::deque<Snapshot>& snapshots) {
            return snapshots.empty() ? std::nullopt : std::optional(snapshots.back().actionName);
        };
        return {!toUndo_.empty(), !toRedo_.empty(), name(toUndo_), name(toRedo_)};
    }

  private:
    struct Snapshot {
        std::string actionName;
        Value value;
        std::uint64_t capture = 0; ///< ascending in the order in which values were kept
    };

    bool continuesLastStep(const UndoStep& step, std::chrono::nanoseconds now) const {
        if (step.coalescingWindow <= 0 || lastActionName_ != step.actionName || !lastRegistrationTime_)
            return false;
        return std::chrono::duration<double>(now - *lastRegistrationTime_).count() < step.coalescingWindow;
    }

    /// An undo adds a redo step, and a redo an undo step. The next change begins a step, so that it can be
    /// undone alone.
    bool move(std::deque<Snapshot>& from, std::deque<Snapshot>& to, Value& present) {
        if (from.empty()) return false;
        endLastStep();
        to.push_back(std::move(from.back()));
        from.pop_back();
        std::swap(to.back().value, present);
        to.back().capture = ++captures_;
        return true;
    }

    std::deque<Snapshot> toUndo_;
    std::deque<Snapshot> toRedo_;
    std::uint64_t captures_ = 0;
    std::uint64_t clearedAt_ = 0;
    std::optional<std::string> lastActionName_;
    std::optional<std::chrono::nanoseconds> lastRegistrationTime_; ///< absent: no step is continued
};

} // namespace orvane
