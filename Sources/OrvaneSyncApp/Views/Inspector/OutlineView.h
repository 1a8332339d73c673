#pragma once

#include "OrvaneSyncApp/ViewModels/Inspector/OutlineModel.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>
#include <optional>
#include <vector>

class QLabel;
class QLineEdit;
class QListView;

namespace orvane::views {

class OutlineListModel;

/// The clips of the work, the cameras of a take under one parent, and the way back to the results.
class OutlineView : public QWidget {
  public:
    using Choose = std::function<void(const UUID& groupID)>;
    /// `choose`: the user wants to see that clip.
    OutlineView(Desktop& desktop, Choose choose, std::function<void()> leave, QWidget* parent = nullptr);
    ~OutlineView() override;

    /// Lists those clips alone and in that order, under a title with a button that lists all again; absent:
    /// all.
    void showOnly(const std::optional<std::vector<UUID>>& clips, const QString& title);
    /// The user wants all of them listed again.
    std::function<void()> whenAllWanted;
    /// Marks the clip without `choose`.
    void select(const UUID& groupID);
    /// Marks the take of a clip without `openTake`, and gives its name; empty for a clip that stands alone.
    QString selectTake(const UUID& groupID);
    /// As `OutlineModel::neighbour`: for the keys that go from clip to clip.
    std::optional<UUID> neighbour(const UUID& of, int step) const { return rows_.neighbour(of, step); }
    std::optional<OutlineModel::PlaceInList> placeInList(const UUID& groupID) const {
        return rows_.placeInList(groupID);
    }
    /// Called when other clips are listed, or in another order.
    std::function<void()> whenListChanged;
    /// The user wants to see all cameras of a take.
    std::function<void(std::vector<UUID>)> openTake;

    QLineEdit* search() const { return search_; }
    QListView* list() const { return list_; }

  protected:
    bool event(QEvent* event) override;

  private:
    QWidget* makeOnly();
    void showCounts();
    void markRow(const std::optional<std::size_t>& row);
    void open(int row);

    OutlineModel rows_;
    const Choose choose_;
    OutlineListModel* model_;
    QLineEdit* search_;
    QWidget* only_;
    QLabel* onlyTitle_;
    QLabel* counts_;
    QListView* list_;
    std::optional<UUID> selected_;
    bool isTakeSelected_ = false; ///< rather than the clip
    platform::Subscription observation_;
};

} // namespace orvane::views
