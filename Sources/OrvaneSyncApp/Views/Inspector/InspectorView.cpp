#include "OrvaneSyncApp/Views/Inspector/InspectorView.h"

#include "OrvaneSyncApp/ViewModels/Results/ClipInLists.h"
#include "OrvaneSyncApp/ViewModels/Results/ClipTexts.h"
#include "OrvaneSyncApp/ViewModels/Review/ReviewViewModel.h"
#include "OrvaneSyncApp/Views/Inspector/ChannelsSection.h"
#include "OrvaneSyncApp/Views/Inspector/ClipSections.h"
#include "OrvaneSyncApp/Views/Inspector/RecordingsSection.h"
#include "OrvaneSyncApp/Views/Inspector/SyncSection.h"
#include "OrvaneSyncApp/Views/ResultsModel.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"

#include <QApplication>
#include <QEvent>
#include <QLineEdit>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>
#include <QStackedLayout>
#include <QTextLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

constexpr int narrowestInspector = 312;

bool concernsAClip(ImportField field) {
    switch (field) {
    case ImportField::syncGroups:
    case ImportField::wildTracks:
    case ImportField::doubts:
    case ImportField::report:
    case ImportField::smartAudio:
    case ImportField::slates:
    case ImportField::calibration:
        return true;
    default:
        return false;
    }
}

/// Shows the controls that were added to the layout. Qt does this in a later turn of the event loop, and
/// until then their height would not count.
void showAdded(QLayout& layout) {
    for (int i = 0; i < layout.count(); ++i) {
        QLayoutItem& item = *layout.itemAt(i);
        QWidget* const added = item.widget();
        if (added != nullptr && !added->testAttribute(Qt::WA_WState_ExplicitShowHide)) added->show();
        if (item.layout() != nullptr) showAdded(*item.layout());
    }
}

/// If the number of lines of a wrapped text changes, each level of layouts adapts in a turn of the event loop
/// of its own, which would be visible. Activated from the innermost layout outwards, all adapt in one step.
void settleLayouts(const QWidget& widget) {
    if (widget.layout() != nullptr) showAdded(*widget.layout());
    for (const QObject* child : widget.children())
        if (child->isWidgetType()) settleLayouts(*static_cast<const QWidget*>(child));
    if (widget.layout() != nullptr) widget.layout()->activate();
}

} // namespace

InspectorView::InspectorView(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent)
    : QWidget(parent), desktop_(desktop), review_(std::move(review)),
      later_(review_->engine(), [this] { refresh(); }) {
    setObjectName(QStringLiteral("inspector"));
    setMinimumWidth(narrowestInspector);
    pages_ = new QStackedLayout(this);
    content_ = new QWidget;
    auto* column = new QVBoxLayout(content_);
    column->setContentsMargins(0, space::small, 0, space::medium);
    column->setSpacing(space::tight);
    auto* head = new QVBoxLayout;
    head->setContentsMargins(space::medium, 0, space::small, 0);
    head->setSpacing(space::tight);
    head->addWidget(title_ = title({}));
    title_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed); // elided instead of widening the view
    head->addWidget(status_ = new Badge);
    head->addWidget(reason_ = button({}, Weight::quiet));
    reason_->setObjectName(QStringLiteral("reason"));
    reason_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    QSizePolicy policy = reason_->sizePolicy();
    policy.setRetainSizeWhenHidden(true); // the controls below it keep their places
    reason_->setSizePolicy(policy);
    connect(reason_, &QPushButton::clicked, this, [this] {
        if (doubts_->isHidden()) return; // the line says everything
        doubts_->setFolded(false);
        settleLayouts(*content_);
        scroll_->ensureWidgetVisible(doubts_);
    });
    column->addLayout(head);
    sections_ = {new SyncSection(desktop, review_),    new RecordingsSection(desktop),
                 doubts_ = new DoubtsSection(desktop), new ChannelsSection(desktop),
                 new LoudnessSection(desktop),         new NameSection(desktop),
                 new SensorSection(desktop),           new NotesSection(desktop),
                 new MetadataSection(desktop)};
    for (InspectorSection* section : sections_) column->addWidget(section);
    column->addStretch(1);
    auto* scroll = scroll_ = new QScrollArea;
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setVerticalScrollBarPolicy(
        Qt::ScrollBarAlwaysOn); // so that texts do not wrap again when a section folds
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidget(content_);
    pages_->addWidget(scroll);
    pages_->addWidget(
        new EmptyState(Glyph::film, tr("No clip"), tr("Choose a clip from the list at the left.")));

    observations_.push_back(desktop.controller().onChange([this](ImportField field) {
        if (concernsAClip(field)) scheduleRefresh();
    }));
    observations_.push_back(review_->onChange([this] { scheduleRefresh(); }));
    refresh();
}

void InspectorView::scheduleRefresh() {
    if (isVisible()) later_.schedule();
}

/// What the user is looking at: the control with the focus if it is in view, otherwise the first section in
/// view.
QWidget* InspectorView::lookedAt() const {
    const QRect seen(0, scroll_->verticalScrollBar()->value(), content_->width(),
                     scroll_->viewport()->height());
    QWidget* const used = QApplication::focusWidget();
    if (used != nullptr && content_->isAncestorOf(used) && seen.intersects({topOf(*used), used->size()}))
        return used;
    if (seen.top() == 0) return nullptr; // the view stays at the top
    const auto first = std::ranges::find_if(sections_, [&](const InspectorSection* section) {
        return section->isVisible() && section->geometry().bottom() > seen.top();
    });
    return first == sections_.end() ? nullptr : *first;
}

QPoint InspectorView::topOf(const QWidget& inside) const { return inside.mapTo(content_, QPoint()); }

void InspectorView::refresh() {
    const auto& id = review_->groupID();
    const SyncGroup* clip = id ? desktop_.controller().work().syncGroups().find(*id) : nullptr;
    pages_->setCurrentIndex(clip == nullptr ? 1 : 0);
    if (clip == nullptr) return;
    name_ = text(exportedName(desktop_.controller(), *clip, GroupNaming::manualName(*clip).value_or("")));
    showTitle();
    showReason(*clip);
    const QPointer held(lookedAt());
    const int heldAt = held ? topOf(*held).y() : 0;
    for (InspectorSection* section : sections_) section->showClip(*clip);
    const auto* typed = qobject_cast<const QLineEdit*>(QApplication::focusWidget());
    const bool isFieldInUse = typed != nullptr && content_->isAncestorOf(typed);
    const bool isOther = std::exchange(clipID_, clip->id) != clip->id;
    settleLayouts(*content_);
    // Resized at once, not in a later turn of the event loop: until then all sections would be drawn over
    // each other.
    const int needed = content_->layout()->totalHeightForWidth(content_->width());
    content_->resize(content_->width(), std::max(needed, content_->parentWidget()->height()));
    QScrollBar& scrolled = *scroll_->verticalScrollBar();
    if (isOther && !isFieldInUse)
        scrolled.setValue(0);
    else if (held && held->isVisible()) // it stays at its place on the screen if something above grew
        scrolled.setValue(scrolled.value() + topOf(*held).y() - heldAt);
}

void InspectorView::showReason(const SyncGroup& clip) {
    const DoubtsPart doubts = DoubtsPart::of(desktop_.controller(), clip);
    auto certainty = certaintyOf(clip, !doubts.doubts.empty());
    if (isMovedSinceLock(clip) && certainty != ClipCertainty::missing) certainty = ClipCertainty::doubtful;
    status_->show(signal(certainty), translatedSentence(clip.matchStatus.label()));
    std::vector<std::string> reasons;
    std::string whole; // the first one, with the paths of folders
    const auto add = [&](const std::string& reason, const std::string& message) {
        if (reasons.empty()) whole = message;
        reasons.push_back(reason);
    };
    if (isMovedSinceLock(clip) && !clip.isMOS())
        reasons.push_back(
            whole = movedSinceLockText(clip, desktop_.controller().timeline().timelineFrameRate(clip)));
    // A doubt says what to do; that no sound is there does not.
    for (const DoubtsPart::Doubt& doubt : doubts.doubts) add(doubt.reason, doubt.message);
    if (!doubts.whyUnmatched.empty()) add(doubts.whyUnmatched, doubts.whyUnmatched);
    reasonText_ = reasons.empty() ? QString() : translatedSentence(reasons.front());
    if (reasons.size() > 1) reasonText_ = tr("1 of %1: %2").arg(reasons.size()).arg(reasonText_);
    reason_->setVisible(!reasonText_.isEmpty());
    reason_->setToolTip(translatedSentence(whole));
    reason_->setAccessibleName(reasonText_);
    showReasonText();
}

void InspectorView::showReasonText() {
    // Always two lines, so that the controls below keep their places.
    QTextLayout layout(reasonText_, reason_->font());
    layout.beginLayout();
    QTextLine first = layout.createLine();
    const int room = reason_->width() - 2 * space::medium;
    if (first.isValid()) first.setLineWidth(room);
    layout.endLayout();
    const int end = first.isValid() ? first.textLength() : 0;
    reason_->setText(reasonText_.left(end).trimmed() + QLatin1Char('\n') +
                     reason_->fontMetrics().elidedText(reasonText_.mid(end).trimmed(), Qt::ElideRight, room));
}

void InspectorView::showTitle() {
    const int room = width() - 3 * space::medium;
    title_->setText(title_->fontMetrics().elidedText(name_, Qt::ElideMiddle, room));
    title_->setToolTip(name_);
    title_->setAccessibleName(name_);
}

void InspectorView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    showTitle();
    showReasonText();
}

void InspectorView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    refresh();
}

bool InspectorView::event(QEvent* event) {
    // The settings may have changed in another window.
    if (event->type() == QEvent::WindowActivate) scheduleRefresh();
    return QWidget::event(event);
}

} // namespace orvane::views
