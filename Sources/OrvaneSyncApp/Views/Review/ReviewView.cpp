#include "OrvaneSyncApp/Views/Review/ReviewView.h"

#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/Views/Inspector/InspectorView.h"
#include "OrvaneSyncApp/Views/Inspector/OutlineView.h"
#include "OrvaneSyncApp/Views/Review/PictureView.h"
#include "OrvaneSyncApp/Views/Timeline/TimelineView.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Naming/SidebarOutline.h"

#include <QHBoxLayout>
#include <QSettings>
#include <QSplitter>

#include <algorithm>
#include <utility>

namespace orvane::views {

namespace {

constexpr int outlineWidth = 220, inspectorWidth = 300, middleWidth = 900;
constexpr int pictureHeight = 460, timelineHeight = 280;

} // namespace

ReviewView::ReviewView(Desktop& desktop, ReviewActions& actions, std::function<void()> leave, QWidget* parent)
    : QWidget(parent), desktop_(desktop) {
    const auto& review = desktop.players().review();
    columns_ = new QSplitter;
    rows_ = new QSplitter(Qt::Vertical);
    columns_->addWidget(outline_ = new OutlineView(
                            desktop, [this](const UUID& clip) { open(clip); }, std::move(leave)));
    rows_->addWidget(picture_ = new PictureView(desktop, review, actions));
    rows_->addWidget(timeline_ = new TimelineView(desktop, review));
    rows_->setStretchFactor(0, 1);
    columns_->addWidget(rows_);
    columns_->addWidget(inspector_ = new InspectorView(desktop, review));
    columns_->setStretchFactor(1, 1);
    for (QSplitter* splitter : {columns_, rows_}) splitter->setChildrenCollapsible(false);
    columns_->setSizes({outlineWidth, middleWidth, inspectorWidth});
    rows_->setSizes({pictureHeight, timelineHeight});
    const QSettings places;
    columns_->restoreState(places.value(QStringLiteral("review/columns")).toByteArray());
    rows_->restoreState(places.value(QStringLiteral("review/rows")).toByteArray());
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(columns_);
    // The screen itself takes the keys: nothing in it has to be clicked first.
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Review"));
    review->moveInList = [this](KeyAction action) { go(action == KeyAction::nextGroup ? 1 : -1); };
}

ReviewView::~ReviewView() { desktop_.players().review()->moveInList = nullptr; }

void ReviewView::open(const UUID& groupID) {
    if (desktop_.controller().work().syncGroups().find(groupID) == nullptr) return;
    outline_->select(groupID);
    desktop_.players().loadGroup(groupID);
    if (whenMoved) whenMoved();
}

void ReviewView::leaveClip() { desktop_.players().review()->close(); }

void ReviewView::go(int step) {
    const auto& shown = clip();
    if (const auto next = shown ? neighbour(*shown, step) : std::nullopt) open(*next);
}

std::optional<UUID> ReviewView::neighbour(const UUID& of, int step) const {
    const OpenWork& work = desktop_.controller().work();
    const platform::SettingsStore& settings = *work.environment.settings;
    std::vector<UUID> clips;
    const auto add = [&](const SidebarNode& node) {
        if (node.group) clips.push_back(node.group->id);
    };
    for (const SidebarNode& node :
         SidebarOutline::build(work.syncGroups(), settings.get(settings::clipNamingSource),
                               settings.get(settings::customNamingPattern))) {
        add(node);
        for (const SidebarNode& camera : node.children) add(camera);
    }
    const auto found = std::ranges::find(clips, of);
    if (found == clips.end()) return std::nullopt;
    const auto next = (found - clips.begin()) + step;
    if (next < 0 || next >= static_cast<std::ptrdiff_t>(clips.size())) return std::nullopt;
    return clips[static_cast<std::size_t>(next)];
}

void ReviewView::savePlaces() const {
    QSettings places;
    places.setValue(QStringLiteral("review/columns"), columns_->saveState());
    places.setValue(QStringLiteral("review/rows"), rows_->saveState());
}

} // namespace orvane::views
