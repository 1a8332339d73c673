#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/ViewModels/Inspector/OutlineModel.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>
#include <optional>
#include <string>
#include <vector>

class QLabel;

namespace orvane::views {

class ReviewActions;

/// The position in the list of clips, and the usual steps for each clip with their keys: nudge, lock, next.
class StepsBar : public QWidget {
  public:
    using PlaceOf = std::function<std::optional<OutlineModel::PlaceInList>(const UUID&)>;
    StepsBar(Desktop& desktop, ReviewActions& actions, PlaceOf placeOf, QWidget* parent = nullptr);

    /// To be called when the clip, or its neighbours in the list, have changed.
    void refresh();
    std::function<void()> showKeys;
    /// Whether the list leaves clips out, and what lists all. The bar offers that at the end of the list.
    std::function<bool()> isListPart;
    std::function<void()> showAll;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    QPushButton* add(KeyAction action, const QString& text);
    void showTexts();
    /// `asWords`: comma and period by their names, which are easier to read than the signs, but wider.
    void nameKeys(bool asWords);
    /// Shows the labels, and the offer at the end of a part of the list, for which there is room.
    void fit();

    struct Step {
        KeyAction action;
        QPushButton* button;
        QString text;
        Shortcut key{};
    };

    Desktop& desktop_;
    ReviewActions& actions_;
    const PlaceOf placeOf_;
    QLabel* place_;
    QLabel* nudge_;
    std::vector<Step> steps_;
    QPushButton* lock_ = nullptr;
    QPushButton* next_ = nullptr;
    QPushButton* all_;
    bool isEndOfPart_ = false;
    std::string lockText_ = "Lock"; ///< as the inspector shows it
    platform::Subscription bindings_, ofWork_;
};

} // namespace orvane::views
