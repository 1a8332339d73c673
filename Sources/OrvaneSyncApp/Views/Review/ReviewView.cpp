#include "OrvaneSyncApp/Views/Review/ReviewView.h"

#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/Views/Inspector/InspectorView.h"
#include "OrvaneSyncApp/Views/Inspector/OutlineView.h"
#include "OrvaneSyncApp/Views/Review/KeyOverlay.h"
#include "OrvaneSyncApp/Views/Review/PictureMessages.h"
#include "OrvaneSyncApp/Views/Review/PictureView.h"
#include "OrvaneSyncApp/Views/Review/SiblingBanner.h"
#include "OrvaneSyncApp/Views/Review/StepsBar.h"
#include "OrvaneSyncApp/Views/Review/SyncLensView.h"
#include "OrvaneSyncApp/Views/Timeline/TimelineView.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QShortcut>
#include <QSplitter>
#include <QVBoxLayout>

#include <utility>

namespace orvane::views {

namespace {

constexpr int outlineWidth = 220, inspectorWidth = 320, middleWidth = 900;
constexpr int pictureHeight = 460, timelineHeight = 280;
const QString rowsAreUnfolded = QStringLiteral("review/channelRows");

} // namespace

ReviewView::ReviewView(Desktop& desktop, ScreenHost host) : WorkScreen(desktop, std::move(host)) {
    const auto& review = desktop.players().review();
    ReviewActions& actions = *host_.actions;
    columns_ = new QSplitter;
    rows_ = new QSplitter(Qt::Vertical);
    columns_->addWidget(outline_ = new OutlineView(desktop, host_.openReview, host_.showList));
    auto* upper = new QWidget;
    auto* pictureColumn = new QVBoxLayout(upper);
    pictureColumn->setContentsMargins(0, 0, 0, 0);
    pictureColumn->setSpacing(0);
    pictureColumn->addWidget(steps_ = new StepsBar(desktop, actions, [this](const UUID& clip) {
                                 return outline_->placeInList(clip);
                             }));
    // Messages are shown over the top of the picture: nothing moves when one comes, and it covers no control.
    auto* place = new QGridLayout;
    place->addWidget(picture_ = new PictureView(desktop, review, actions), 0, 0);
    place->addWidget(messages_ = new PictureMessages(2), 0, 0, Qt::AlignTop);
    messages_->whenHeightChanged = [this](int height) { picture_->lens().setFreeTop(height); };
    auto* sibling = new SiblingBanner(desktop, review);
    messages_->place(1)->addWidget(sibling);
    // A key of the screen: the offer may be behind another message.
    auto* apply = new QShortcut(QKeySequence(QLatin1String(reviewKeys::applySuggestion)), this);
    connect(apply, &QShortcut::activated, sibling, &SiblingBanner::apply);
    pictureColumn->addLayout(place, 1);
    rows_->addWidget(upper);
    rows_->addWidget(timeline_ = new TimelineView(desktop, review));
    rows_->setStretchFactor(0, 1);
    columns_->addWidget(rows_);
    columns_->addWidget(inspector_ = new InspectorView(desktop, review));
    columns_->setStretchFactor(1, 1);
    for (QSplitter* splitter : {columns_, rows_}) splitter->setChildrenCollapsible(false);
    columns_->setSizes({outlineWidth, middleWidth, inspectorWidth});
    rows_->setSizes({pictureHeight, timelineHeight});
    columns_->restoreState(design::keptState::value(QStringLiteral("review/columns")).toByteArray());
    rows_->restoreState(design::keptState::value(QStringLiteral("review/rows")).toByteArray());
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(columns_);
    // The screen itself takes the keys, so the user need not click anything first.
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Review"));
    keys_ = new KeyOverlay(this, [this, sibling] {
        ReviewSituation now =
            situationOf(desktop_, *desktop_.players().review(),
                        [this](const UUID& of, int step) { return outline_->neighbour(of, step); });
        now.hasSuggestion = sibling->hasOffer();
        return keyOverview(desktop_.context().shortcuts()->bindings(), now);
    });
    picture_->keys = [this] { return keys_->now(); };
    steps_->showKeys = [this] { keys_->open(); };
    steps_->isListPart = [this] { return outline_->isPart(); };
    steps_->showAll = [this] {
        outline_->showAll();
        keyboard()->setFocus();
    };
    outline_->whenListChanged = [this] { steps_->refresh(); };
    const auto areRowsFolded = [model = review.get()] { return !model->isAudioExpanded(); };
    if (design::keptState::value(rowsAreUnfolded, false).toBool() && areRowsFolded())
        review->handleKeyAction(KeyAction::toggleAudioExpand);
    ofReview_ = review->onChange([this, areRowsFolded, wereFolded = areRowsFolded()]() mutable {
        if (std::exchange(wereFolded, areRowsFolded()) != wereFolded)
            design::keptState::set(rowsAreUnfolded, !wereFolded);
        steps_->refresh();
        if (!clip()) noteClips();
    });
    outline_->openTake = host_.openMulticam;
    outline_->takeKeyboard = [this] { keyboard()->setFocus(); };
    review->sayWhyNot = [&desktop](std::string_view why) { desktop.sayWhyNot(translatedSentence(why)); };
    review->moveInList = [this](KeyAction action) { go(action == KeyAction::nextGroup ? 1 : -1); };
}

ReviewView::~ReviewView() {
    ReviewViewModel& review = *desktop_.players().review();
    review.moveInList = nullptr;
    review.sayWhyNot = nullptr;
}

void ReviewView::open(const std::vector<UUID>& clips) {
    if (clips.empty() || desktop_.controller().work().syncGroups().find(clips.front()) == nullptr) return;
    outline_->select(clips.front());
    desktop_.players().loadGroup(clips.front());
}

void ReviewView::leave() { desktop_.players().review()->close(); }

std::vector<UUID> ReviewView::clips() const { return clip() ? std::vector{*clip()} : std::vector<UUID>(); }

QBoxLayout* ReviewView::messages() const { return messages_->place(0); }

QLineEdit* ReviewView::search() const { return outline_->search(); }

bool ReviewView::handleFullscreen(const KeyEvent& event) {
    return desktop_.players().review()->fullscreen().handle(event);
}

void ReviewView::go(int step) {
    const auto& shown = clip();
    if (const auto next = shown ? outline_->neighbour(*shown, step) : std::nullopt)
        host_.openReview(*next);
    else if (shown && outline_->isPart())
        desktop_.sayWhyNot(step > 0 ? tr("This is the last clip of the filter or the search.")
                                    : tr("This is the first clip of the filter or the search."));
}

void ReviewView::savePlaces() {
    design::keptState::set(QStringLiteral("review/columns"), columns_->saveState());
    design::keptState::set(QStringLiteral("review/rows"), rows_->saveState());
}

} // namespace orvane::views
