#include "OrvaneSyncApp/Views/Review/SiblingBanner.h"

#include "OrvaneSyncApp/ViewModels/Inspector/KeyOverview.h"
#include "OrvaneSyncApp/ViewModels/Review/ReviewViewModel.h"
#include "OrvaneSyncApp/Views/Background.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QHBoxLayout>

#include <utility>

namespace orvane::views {

using namespace design;

SiblingBanner::SiblingBanner(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent)
    : QFrame(parent), desktop_(desktop), review_(std::move(review)), text_(label(QString())),
      later_(review_->engine(), [this] { refresh(); }) {
    setObjectName(QStringLiteral("siblingBanner"));
    setProperty("banner", true);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(space::medium, space::tight, space::tight, space::tight);
    row->setSpacing(space::small);
    row->addWidget(text_, 1);
    row->addLayout(buttons_ = new QBoxLayout(QBoxLayout::LeftToRight));
    buttons_->setSpacing(space::tight);
    const commands::Command& apply = desktop.command("applySiblingSuggestion");
    const QString keyName = translatedKey(reviewKeys::applySuggestion);
    QPushButton* yes =
        add(button(tr("%1   %2").arg(translated(apply.title), keyName)), &SiblingBanner::apply);
    yes->setAccessibleName(translated(apply.title));
    yes->setToolTip(QStringLiteral("%1 (%2)").arg(translated(apply.help), keyName));
    applyToCard_ = add(button(QString()), &SiblingBanner::applyToCard);
    applyToCard_->setToolTip(translated(desktop.command("applyCardSuggestion").help));
    QPushButton* no = add(button({}, Glyph::cross, Weight::quiet), &SiblingBanner::dismiss);
    const QString dismissName = translated(desktop.command("dismissSiblingSuggestion").title);
    no->setAccessibleName(dismissName);
    no->setToolTip(dismissName);
    row->addWidget(no, 0, Qt::AlignTop);
    observations_.push_back(desktop.controller().onChange([this](ImportField field) {
        if (field == ImportField::syncGroups) later_.schedule();
    }));
    observations_.push_back(review_->onChange([this] { later_.schedule(); }));
    refresh();
}

QPushButton* SiblingBanner::add(QPushButton* one, void (SiblingBanner::*pressed)()) {
    buttons_->addWidget(one);
    connect(one, &QPushButton::clicked, this, pressed);
    return one;
}

void SiblingBanner::refresh() {
    ImportController& controller = desktop_.controller();
    const auto& id = review_->groupID();
    const SyncGroup* clip = id ? controller.work().syncGroups().find(*id) : nullptr;
    if (clip != nullptr && clip->isLocked) clip = nullptr;
    isAnswerOutdated_ = true;
    if (clip == nullptr || id != shown_) showOffer({});
    shown_ = id;
    if (clip == nullptr) return;
    if (const auto take = controller.timeline().siblingSuggestion(*id))
        return showOffer(translatedSentence(take->text(controller.timeline().timelineFrameRate(*clip))));
    clip->isMOS() ? askCard(*id) : showOffer({});
}

void SiblingBanner::askCard(const UUID& id) {
    if (isAsking_) return;
    auto question = commands::CardQuestion::of(desktop_.controller(), id);
    if (!question) return showOffer({});
    isAsking_ = true;
    isAnswerOutdated_ = false;
    inBackground(
        this,
        [question = *std::move(question), dismissed = dismissedCards_] { return question.answer(dismissed); },
        [this, id](const std::optional<CardSuggestion>& card) {
            isAsking_ = false;
            if (isAnswerOutdated_) return refresh();
            ImportController& controller = desktop_.controller();
            const SyncGroup* clip = controller.work().syncGroups().find(id);
            if (!card || clip == nullptr) return showOffer({});
            showOffer(translatedSentence(card->text(controller.timeline().timelineFrameRate(*clip),
                                                    controller.work().fileNames())),
                      &*card);
        });
}

void SiblingBanner::showOffer(const QString& offer, const CardSuggestion* card) {
    cardKey_ = card == nullptr ? std::string() : card->dismissKey;
    if (card != nullptr)
        applyToCard_->setText(tr("Apply to %1 of the Card")
                                  .arg(translatedSentence(counted(card->clips.size(), "clip", "clips"))));
    applyToCard_->setVisible(card != nullptr && card->clips.size() > 1);
    text_->setText(offer);
    setAccessibleName(offer);
    setVisible(!offer.isEmpty());
}

void SiblingBanner::resizeEvent(QResizeEvent*) {
    constexpr int leastBeside = 720; // points; narrower, the text would be broken into many lines
    buttons_->setDirection(width() < leastBeside ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
}

void SiblingBanner::apply() {
    if (isHidden()) return;
    if (!cardKey_.empty()) return applyOfCard(false);
    run("applySiblingSuggestion", {}, [this](const JSON&) {
        // As after a nudge, the clap's picture is shown.
        if (!review_->engine()->transport().isPlaying) review_->seekVideoToAnchor();
    });
}

void SiblingBanner::applyOfCard(bool isForAllClips) {
    JSON arguments = JSON::object();
    arguments.set("isForAllClips", isForAllClips);
    run("applyCardSuggestion", std::move(arguments), [this, id = review_->groupID()](const JSON&) {
        if (id) desktop_.runForClips("autoDetectAudioAnchor", {*id});
    });
}

void SiblingBanner::dismiss() {
    if (cardKey_.empty()) return run("dismissSiblingSuggestion", {});
    dismissedCards_.insert(cardKey_);
    showOffer({});
    refresh();
}

void SiblingBanner::run(std::string_view id, JSON arguments, const Desktop::Done& done) {
    if (!review_->groupID()) return;
    if (arguments.isNull()) arguments = JSON::object();
    arguments.set("groupID", review_->groupID()->text());
    desktop_.run(id, std::move(arguments), done);
    refresh(); // dismissing changes no clip, so no notice comes
}

} // namespace orvane::views
