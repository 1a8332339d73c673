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

/// The clips of the work, with the cameras of a take under one parent, and a button back to the results.
class OutlineView : public QWidget {
  public:
    using Choose = std::function<void(const UUID& groupID)>;
    /// `choose` is called when the user opens a clip, `leave` when the user returns to the results.
    OutlineView(Desktop& desktop, Choose choose, std::function<void()> leave, QWidget* parent = nullptr);
    ~OutlineView() override;

    /// Lists only these clips, in this order, under `title` and a button that lists all again; absent: all.
    void showOnly(const std::optional<std::vector<UUID>>& clips, const QString& title);
    /// Called when the user wants all clips to be listed again.
    std::function<void()> whenAllWanted;
    /// Marks the clip without calling `choose`.
    void select(const UUID& groupID);
    /// Marks the take of a clip without calling `openTake`, and returns its name; empty for a clip without a
    /// take.
    QString selectTake(const UUID& groupID);
    /// As `OutlineModel::neighbour`; for the keys that go to the next or previous clip. A decision may move
    /// the marked clip to another place of the list: the keys still go on from the place where it was marked.
    std::optional<UUID> neighbour(const UUID& of, int step) const;
    std::optional<OutlineModel::PlaceInList> placeInList(const UUID& groupID) const {
        return rows_.placeInList(groupID);
    }
    /// Whether clips of the work are left out of the list, by `showOnly` or the search.
    bool isPart() const;
    /// Lists all clips, in the order of the shoot.
    void showAll();
    /// Called when the listed clips or their order change.
    std::function<void()> whenListChanged;
    /// Gives the keyboard to the clip or the cameras in view.
    std::function<void()> takeKeyboard;
    /// Called when the user wants to see all cameras of a take.
    std::function<void(std::vector<UUID>)> openTake;

    QLineEdit* search() const { return search_; }
    QListView* list() const { return list_; }

  protected:
    bool event(QEvent* event) override;

  private:
    QWidget* makeOnly();
    void showCounts();
    void markRow(const std::optional<std::size_t>& row);
    /// Keeps the clips before and after the marked one.
    void noteNeighbours();
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
    bool isTakeSelected_ = false;        ///< the take of `selected_` is marked, not the clip
    std::optional<UUID> before_, after_; ///< the neighbours of `selected_` when it was marked
    platform::Subscription observation_;
};

} // namespace orvane::views
