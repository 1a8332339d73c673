#include "OrvaneSyncApp/Views/Review/SiblingBanner.h"

#include "OrvaneSyncApp/ViewModels/Inspector/KeyOverview.h"
#include "OrvaneSyncApp/ViewModels/Review/ReviewViewModel.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QHBoxLayout>
#include <QKeySequence>
#include <QShortcut>

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
    for (const auto& [id, glyph] : {std::pair("applySiblingSuggestion", Glyph::check),
                                    std::pair("dismissSiblingSuggestion", Glyph::cross)}) {
        const commands::Command& command = desktop.command(id);
        const bool isApply = glyph == Glyph::check;
        QPushButton* one =
            isApply ? button(tr("%1   %2").arg(translated(command.title),
                                               QKeySequence(QLatin1String(reviewKeys::applySuggestion))
                                                   .toString(QKeySequence::NativeText)))
                    : button({}, glyph, Weight::quiet);
        one->setAccessibleName(translated(command.title));
        one->setToolTip(isApply ? QStringLiteral("%1 (%2)").arg(translated(command.help),
                                                                QLatin1String(reviewKeys::applySuggestion))
                                : translated(command.title));
        connect(one, &QPushButton::clicked, this, [this, own = std::string_view(id)] { run(own); });
        row->addWidget(one);
    }
    auto* key = new QShortcut(QKeySequence(QLatin1String(reviewKeys::applySuggestion)), this);
    connect(key, &QShortcut::activated, this, [this] { run("applySiblingSuggestion"); });
    observations_.push_back(desktop.controller().onChange([this](ImportField field) {
        if (field == ImportField::syncGroups) later_.schedule();
    }));
    observations_.push_back(review_->onChange([this] { later_.schedule(); }));
    refresh();
}

void SiblingBanner::refresh() {
    const auto& id = review_->groupID();
    const SyncGroup* clip = id ? desktop_.controller().work().syncGroups().find(*id) : nullptr;
    const auto suggestion =
        clip == nullptr ? std::nullopt : desktop_.controller().timeline().siblingSuggestion(*id);
    if (suggestion)
        text_->setText(translatedSentence(suggestion->text(TimelineController::timelineFrameRate(*clip))));
    setAccessibleName(suggestion ? text_->text() : QString());
    setVisible(suggestion.has_value());
}

void SiblingBanner::run(std::string_view id) {
    if (!review_->groupID()) return;
    JSON arguments = JSON::object();
    arguments.set("groupID", review_->groupID()->text());
    desktop_.run(id, std::move(arguments));
    refresh(); // to dismiss changes no clip
}

} // namespace orvane::views
