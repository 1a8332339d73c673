#include "OrvaneSyncApp/Views/DoubtBar.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QPointer>
#include <QVBoxLayout>

#include <algorithm>

namespace orvane::views {

using namespace design;

namespace {

constexpr int mostLines = 2; ///< so that a low window keeps its height for the list

/// The clips that the step left without sound, by their files.
QString leftWithoutSound(Desktop& desktop, const JSON& answer) {
    const auto* left = answer.find("withoutSound");
    if (left == nullptr || left->elements()->empty()) return {};
    constexpr std::size_t most = 4;
    const WorkState& work = desktop.controller().work();
    QStringList names;
    for (const JSON& id : *left->elements()) {
        const auto clip = UUID::fromText((id.string() != nullptr ? *id.string() : std::string()));
        const SyncGroup* group = clip ? work.syncGroups().find(*clip) : nullptr;
        if (group != nullptr && std::cmp_less(names.size(), most))
            names << text(work.fileNames().of(group->video));
    }
    if (const std::size_t more = left->elements()->size() - names.size(); more > 0)
        return QObject::tr("Still without sound: %1 and %2 more.")
            .arg(names.join(QStringLiteral(", ")))
            .arg(more);
    return QObject::tr("Still without sound: %1.").arg(names.join(QStringLiteral(", ")));
}

} // namespace

QString doneText(Desktop& desktop, const CureStep& step, const SyncGroupList& before, const JSON& answer) {
    const SyncGroupList& now = desktop.controller().work().syncGroups();
    const std::size_t changed = now.changesSince(before).changed.size();
    QString left = leftWithoutSound(desktop, answer);
    if (changed == 0 && !left.isEmpty()) return left;
    const QString clips = translatedSentence(counted(changed > 0 ? changed : now.size(), "clip", "clips"));
    const QString done = (changed > 0 ? QObject::tr("%1: %2 changed. Undo takes it back.")
                                      : QObject::tr("%1: holds for all %2. Undo takes it back."))
                             .arg(translatedSentence(step.button), clips);
    return left.isEmpty() ? done : QStringLiteral("%1 %2").arg(done, left);
}

DoubtBar::DoubtBar(Desktop& desktop, QWidget* parent) : QFrame(parent), desktop_(desktop) {
    setProperty("banner", true);
    setObjectName(QStringLiteral("doubts"));
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(space::medium, space::small, space::small, space::small);
    rows->setSpacing(space::small);
    auto* top = new QHBoxLayout;
    top->addWidget(new Badge(Signal::doubtful, {}), 0, Qt::AlignTop);
    top->addWidget(text_ = new FoldedText(mostLines), 1);
    // At the top beside the text, so that they stay at the same place for any number of lines and cures.
    auto* steps = new QHBoxLayout;
    steps->setSpacing(0);
    steps->addWidget(text_->more());
    steps->addSpacing(space::small);
    steps->addWidget(clips_ = button(tr("Show Clips")));
    clips_->setToolTip(tr("Selects the clips that this is about"));
    steps->addSpacing(space::small);
    steps->addWidget(position_ = facts({}));
    position_->setWordWrap(false);
    steps->addSpacing(space::tight);
    const auto step = [&](const QString& arrow, const QString& name, const QString& tip, bool isBack) {
        QPushButton* made = button(arrow, Weight::quiet);
        made->setAccessibleName(name);
        made->setToolTip(tip);
        made->setFixedWidth(space::large + space::small);
        made->setStyleSheet(QStringLiteral("padding: 4px 0; text-align: center;"));
        steps->addWidget(made);
        connect(made, &QPushButton::clicked, this, [this, isBack] {
            shown_ += isBack ? doubts_.size() - 1 : 1;
            showOne();
        });
        return made;
    };
    previous_ = step(QStringLiteral("‹"), tr("Previous"), tr("Shows the doubt before"), true);
    next_ = step(QStringLiteral("›"), tr("Next"), tr("Shows the next doubt"), false);
    top->addLayout(steps);
    top->setAlignment(steps, Qt::AlignTop);
    rows->addLayout(top);
    buttons_ = new QHBoxLayout;
    buttons_->setSpacing(space::small);
    buttons_->addStretch(1);
    rows->addLayout(buttons_);
    connect(clips_, &QPushButton::clicked, this, [this] {
        if (whenClipsWanted) whenClipsWanted(doubts_[shown_].groupIDs);
    });
    setVisible(false);
}

void DoubtBar::show(std::vector<ResultsViewModel::Doubt> doubts) {
    doubts_ = std::move(doubts);
    // Else Qt gives the focus to the next widget, wherever that is.
    const QWidget* focused = QApplication::focusWidget();
    const bool losesFocus = focused != nullptr && (doubts_.empty() ? isAncestorOf(focused)
                                                                   : std::ranges::count(steps_, focused) > 0);
    if (losesFocus && whenFocusLost) whenFocusLost();
    setVisible(!doubts_.empty());
    if (!doubts_.empty()) showOne();
}

void DoubtBar::showOne() {
    shown_ %= doubts_.size();
    const ResultsViewModel::Doubt& doubt = doubts_[shown_];
    QString message = translatedSentence(doubt.message);
    message = message.left(1).toUpper() + message.mid(1);
    if (!doubt.cure.text.empty()) message += QStringLiteral("\n→ ") + translatedSentence(doubt.cure.text);
    text_->show(message);
    setAccessibleName(message);
    position_->setText(tr("%1 of %2").arg(shown_ + 1).arg(doubts_.size()));
    position_->setVisible(doubts_.size() > 1);
    for (QPushButton* one : {previous_, next_}) one->setVisible(doubts_.size() > 1);
    clips_->setVisible(!doubt.groupIDs.empty()); // hidden if the doubt is about a file that is under no clip
    for (QPushButton* one : steps_) one->deleteLater();
    steps_.clear();
    for (const CureStep& step : doubt.cure.steps) {
        QPushButton* made = button(translatedSentence(step.button));
        made->setToolTip(step.scansAgain ? tr("Corrects this and scans again; can be taken back")
                                         : tr("Corrects this at once; can be taken back"));
        connect(made, &QPushButton::clicked, this, [this, step] { cure(step); });
        buttons_->insertWidget(static_cast<int>(steps_.size()), made);
        steps_.push_back(made);
    }
}

void DoubtBar::cure(const CureStep& step) {
    const SyncGroupList before = desktop_.controller().work().syncGroups();
    desktop_.run(step.command, step.arguments, [self = QPointer(this), step, before](const JSON& answer) {
        if (!self) return;
        if (step.scansAgain) {
            if (self->desktop_.whenScanWanted) self->desktop_.whenScanWanted();
        } else {
            showToast(self->window(), doneText(self->desktop_, step, before, answer));
        }
        if (self->whenCured) self->whenCured();
    });
}

} // namespace orvane::views
