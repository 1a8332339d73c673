#include "OrvaneSyncApp/Views/Review/ReviewView.h"

#include "OrvaneSyncApp/Views/Inspector/InspectorView.h"
#include "OrvaneSyncApp/Views/Inspector/OutlineView.h"
#include "OrvaneSyncApp/Views/Review/PictureView.h"
#include "OrvaneSyncApp/Views/Timeline/TimelineView.h"

#include <QHBoxLayout>
#include <QSplitter>

#include <utility>

namespace orvane::views {

ReviewView::ReviewView(Desktop& desktop, std::function<void()> leave, QWidget* parent)
    : QWidget(parent), desktop_(desktop) {
    const auto& review = desktop.players().review();
    columns_ = new QSplitter;
    rows_ = new QSplitter(Qt::Vertical);
    columns_->addWidget(outline_ = new OutlineView(
                            desktop, [this](const UUID& clip) { open(clip); }, std::move(leave)));
    rows_->addWidget(picture_ = new PictureView(desktop, review));
    rows_->addWidget(timeline_ = new TimelineView(desktop, review));
    columns_->addWidget(rows_);
    columns_->addWidget(inspector_ = new InspectorView(desktop, review));
    columns_->setStretchFactor(1, 1);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(columns_);
}

void ReviewView::open(const UUID& groupID) {
    if (desktop_.controller().work().syncGroups().find(groupID) == nullptr) return;
    outline_->select(groupID);
    desktop_.players().loadGroup(groupID);
}

} // namespace orvane::views
