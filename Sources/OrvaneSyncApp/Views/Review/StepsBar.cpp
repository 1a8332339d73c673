#include "OrvaneSyncApp/Views/Review/StepsBar.h"

#include "OrvaneSyncApp/ViewModels/Inspector/SyncPart.h"
#include "OrvaneSyncApp/Views/Review/KeyEvents.h"
#include "OrvaneSyncApp/Views/Review/ReviewActions.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Services/Shortcuts/KeyText.h"

#include <QAction>
#include <QHBoxLayout>

#include <utility>

namespace orvane::views {

using namespace design;

StepsBar::StepsBar(Desktop& desktop, ReviewActions& actions, PlaceOf placeOf, QWidget* parent)
    : QWidget(parent), desktop_(desktop), actions_(actions), placeOf_(std::move(placeOf)) {
    setObjectName(QStringLiteral("steps"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(space::small, space::tight, space::small, space::tight);
    row->setSpacing(space::tight);
    row->addWidget(place_ = facts({}));
    place_->setWordWrap(false);
    place_->setToolTip(tr("The clip's place in the list at the left"));
    row->addWidget(all_ = button(tr("Show All Clips"), Weight::quiet));
    all_->setFocusPolicy(Qt::TabFocus);
    all_->setToolTip(tr("This is the last clip of the filter or the search. Lists all clips again."));
    all_->hide();
    connect(all_, &QPushButton::clicked, this, [this] { showAll(); });
    row->addStretch(1);
    row->addWidget(nudge_ = facts(tr("Nudge Clip")));
    nudge_->setWordWrap(false);
    for (QLabel* label : {place_, nudge_}) label->setMinimumWidth(1); // shrink before a button is cut
    row->addWidget(add(KeyAction::nudgeCommaMinus, tr("−1 f")));
    row->addWidget(add(KeyAction::nudgePeriodPlus, tr("+1 f")));
    row->addSpacing(space::small);
    row->addWidget(lock_ = add(KeyAction::lockCurrent, tr("Lock")));
    lock_->setIcon(icon(Glyph::lock));
    lock_->setCheckable(true);
    row->addWidget(next_ = add(KeyAction::nextGroup, tr("Next")));
    QPushButton* all = button(QStringLiteral("?"), Weight::quiet);
    all->setAccessibleName(tr("All Keys"));
    all->setToolTip(tr("What each key does here and now."));
    all->setFocusPolicy(Qt::TabFocus);
    connect(all, &QPushButton::clicked, this, [this] { showKeys(); });
    row->addWidget(all);
    bindings_ = desktop_.players().shortcuts()->onChange([this](ShortcutField field) {
        if (field == ShortcutField::bindings) showTexts();
    });
    ofWork_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::syncGroups) refresh();
    });
    showTexts();
    refresh();
}

QPushButton* StepsBar::add(KeyAction action, const QString& text) {
    QPushButton* made = button(text);
    made->setFocusPolicy(Qt::TabFocus);
    made->setAccessibleName(translated(label(action)));
    connect(made, &QPushButton::clicked, this, [this, action] {
        actions_.action(action)->trigger();
        refresh(); // the click has changed the button's state
    });
    steps_.push_back({action, made, text});
    return made;
}

void StepsBar::showTexts() {
    const ShortcutBindings& bindings = desktop_.players().shortcuts()->bindings();
    for (Step& step : steps_) {
        if (step.button == lock_) step.text = translated(lockText_);
        const auto found = bindings.find(step.action);
        step.key = found == bindings.end() ? Shortcut() : found->second;
        step.button->setToolTip(translated(helpText(step.action)));
        step.button->ensurePolished(); // its size depends on the window's style sheet
    }
    fit();
}

void StepsBar::nameKeys(bool asWords) {
    for (const Step& step : steps_) {
        const QString word = shownKey(step.key);
        const QString sign = text(step.key.isUnbound() ? std::string() : keyText(step.key));
        const auto show = [&](const QString& key) {
            step.button->setText(key.isEmpty() ? step.text : tr("%1   %2").arg(step.text, key));
        };
        show(sign.size() > 1 ? word : sign);
        // Also under a word: the bar must not take the room for it from the panels beside it.
        step.button->setMinimumWidth(step.button->sizeHint().width());
        if (asWords) show(word);
    }
}

void StepsBar::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fit();
}

void StepsBar::fit() {
    nameKeys(true);
    for (QLabel* label : {place_, nudge_}) label->setVisible(true);
    all_->setVisible(isEndOfPart_);
    const auto fits = [this] { return layout()->sizeHint().width() <= width(); };
    for (QLabel* label : {nudge_, place_}) label->setVisible(fits());
    if (!fits()) nameKeys(false);
    if (isEndOfPart_) all_->setVisible(fits());
}

void StepsBar::refresh() {
    const auto& id = desktop_.players().review()->groupID();
    const SyncGroup* clip = id ? desktop_.controller().work().syncGroups().find(*id) : nullptr;
    const auto place = clip == nullptr ? std::nullopt : placeOf_(*id);
    place_->setText(place ? tr("%1 of %2").arg(place->number).arg(place->all) : QString());
    isEndOfPart_ = place && place->number == place->all && isListPart && isListPart();
    fit();
    for (const Step& step : steps_)
        step.button->setEnabled(clip != nullptr && (step.button == lock_ || !clip->isMOS()));
    const bool isLocked = clip != nullptr && clip->isLocked;
    lock_->setChecked(isLocked);
    std::string lockText = clip != nullptr ? SyncPart::lockOf(*clip) : "Lock";
    if (std::exchange(lockText_, std::move(lockText)) != lockText_) showTexts();
    next_->setEnabled(clip != nullptr && (!place || place->number < place->all));
}

} // namespace orvane::views
