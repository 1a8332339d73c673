#include "OrvaneSyncApp/Views/Review/SiblingBanner.h"

#include "OrvaneSyncApp/ViewModels/Inspector/KeyOverview.h"
#include "OrvaneSyncApp/ViewModels/Review/ReviewViewModel.h"
#include "OrvaneSyncApp/Views/Translation.h"

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
    const commands::Command& apply = desktop.command("applySiblingSuggestion");
    const QString keyName = translatedKey(reviewKeys::applySuggestion);
    QPushButton* yes =
        add("applySiblingSuggestion", button(tr("%1   %2").arg(translated(apply.title), keyName)));
    yes->setToolTip(QStringLiteral("%1 (%2)").arg(translated(apply.help), keyName));
    row->addWidget(yes);
    row->addWidget(add("dismissSiblingSuggestion", button({}, Glyph::cross, Weight::quiet)), 0, Qt::AlignTop);
    observations_.push_back(desktop.controller().onChange([this](ImportField field) {
        if (field == ImportField::syncGroups) later_.schedule();
    }));
    observations_.push_back(review_->onChange([this] { later_.schedule(); }));
    refresh();
}

QPushButton* SiblingBanner::add(std::string_view id, QPushButton* one) {
    const QString name = translated(desktop_.command(id).title);
    one->setAccessibleName(name);
    one->setToolTip(name);
    connect(one, &QPushButton::clicked, this, [this, id] { run(id); });
    return one;
}

void SiblingBanner::refresh() {
    const auto& id = review_->groupID();
    const SyncGroup* clip = id ? desktop_.controller().work().syncGroups().find(*id) : nullptr;
    const auto suggestion = clip == nullptr || clip->isLocked
                                ? std::nullopt
                                : desktop_.controller().timeline().siblingSuggestion(*id);
    if (suggestion)
        text_->setText(
            translatedSentence(suggestion->text(desktop_.controller().timeline().timelineFrameRate(*clip))));
    setAccessibleName(suggestion ? text_->text() : QString());
    setVisible(suggestion.has_value());
}

void SiblingBanner::apply() {
    if (!isHidden()) run("applySiblingSuggestion");
}

void SiblingBanner::run(std::string_view id) {
    if (!review_->groupID()) return;
    JSON arguments = JSON::object();
    arguments.set("groupID", review_->groupID()->text());
    desktop_.run(id, std::move(arguments), [this, isMove = id == "applySiblingSuggestion"](const JSON&) {
        // As after a nudge, the clap's picture is shown.
        if (isMove && !review_->engine()->transport().isPlaying) review_->seekVideoToAnchor();
    });
    refresh(); // dismissing changes no clip, so no notice comes
}

} // namespace orvane::views
