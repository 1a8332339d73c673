#pragma once

#include "OrvaneSyncApp/ViewModels/Results/ResultsViewModel.h"

#include <QAbstractItemModel>

#include <cstddef>
#include <unordered_map>

namespace orvane::views {

/// Base of the models of long lists: a row is made when it is first painted, and kept until it changes. No
/// row is made during the notice of a change, because several changes may belong together. `Base` is a model
/// class of Qt.
template <class Base, class Row>
class RowsModel : public Base {
  public:
    using Base::Base;

    const Row& row(int index) const {
        const auto found = shown_.find(index);
        if (found != shown_.end()) return found->second;
        return shown_.emplace(index, makeRow(static_cast<std::size_t>(index))).first->second;
    }

  protected:
    virtual Row makeRow(std::size_t index) const = 0;

    void follow(const ResultsViewModel::Change& change) {
        if (change.isLayoutChanged) {
            this->beginResetModel();
            shown_.clear();
            this->endResetModel();
            return;
        }
        // If many rows have changed, the view itself asks for those in view.
        constexpr std::size_t few = 64;
        if (change.rows.size() > few) return forget();
        for (const std::size_t changed : change.rows) {
            const int at = static_cast<int>(changed);
            if (shown_.erase(at) > 0) notifyViews(at, at); // a row that was not made was not shown
        }
    }
    void forget() {
        shown_.clear();
        if (this->rowCount() > 0) notifyViews(0, this->rowCount() - 1);
    }
    const std::unordered_map<int, Row>& shown() const { return shown_; }

  private:
    void notifyViews(int first, int last) {
        const QAbstractItemModel& all = *this; // the list model hides its number of columns
        Q_EMIT this->dataChanged(this->index(first, 0), this->index(last, all.columnCount({}) - 1));
    }

    mutable std::unordered_map<int, Row> shown_;
};

} // namespace orvane::views
