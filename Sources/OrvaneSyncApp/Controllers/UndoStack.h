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

/// The states of a value before each of its changes, and after each change that was taken back. A snapshot is
/// a copy of the value, so the value should share what its copies have in common. Times are those of one
/// monotonic clock. One thread.
template <class Value>
class UndoStack {
  public:
    /// Beyond these the oldest step is forgotten.
    static constexpr std::size_t levelsOfUndo = 50;

    /// After a change that made a difference: keeps the value before it, unless the change continues the last
    /// step. A new step ends what could be redone. Gives whether there is a new step.
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

    /// The change that made the last step goes on: the next one of that name belongs to it, however long ago
    /// it began. Nothing where another step came since, or where it was taken back.
    void continueLastStep(const UndoStep& step, std::chrono::nanoseconds now) {
        if (lastRegistrationTime_ && lastActionName_ == step.actionName) lastRegistrationTime_ = now;
    }

    /// The next change begins a step, however soon it comes.
    void endLastStep() { lastRegistrationTime_.reset(); }

    /// Swaps the value for the one before the last change, or after the last change that was taken back.
    /// False when there is none.
    bool undo(Value& present) { return move(toUndo_, toRedo_, present); }
    bool redo(Value& present) { return move(toRedo_, toUndo_, present); }

    /// Forgets all steps; earlier marks stay earlier.
    void removeAllActions() {
        const std::uint64_t captures = captures_;
        *this = {};
        captures_ = clearedAt_ = captures + 1;
    }

    /// For `forEachSince`: what is kept from here on comes later.
    std::uint64_t mark() const { return captures_; }
    bool isClearedSince(std::uint64_t mark) const { return clearedAt_ > mark; }
    /// The values that were kept since then, and can be gone back to, oldest step first.
    template <class Visit>
    void forEachSince(std::uint64_t mark, Visit&& visit) {
        for (Snapshot& snapshot : toUndo_)
            if (snapshot.capture > mark) visit(snapshot.value);
    }

    /// All values that can be gone back to, either way.
    template <class Visit>
    void forEach(Visit&& visit) {
        for (auto* snapshots : {&toUndo_, &toRedo_})
            for (Snapshot& snapshot : *snapshots) visit(snapshot.value);
    }

    /// What `undo` (`isBack`) or `redo` would lead to; null: nothing.
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
        std::uint64_t capture = 0; ///< ascends in the order in which the values came to be kept
    };

    bool continuesLastStep(const UndoStep& step, std::chrono::nanoseconds now) const {
        if (step.coalescingWindow <= 0 || lastActionName_ != step.actionName || !lastRegistrationTime_)
            return false;
        return std::chrono::duration<double>(now - *lastRegistrationTime_).count() < step.coalescingWindow;
    }

    /// Going back registers the way forward, and the other way round. The next change begins a step of its
    /// own, so that it can be taken back without what came before it.
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
