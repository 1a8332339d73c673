#include "OrvaneSyncApp/Views/SystemChecksView.h"

#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/ViewModels/Sheets/Feedback.h"
#include "OrvaneSyncApp/Views/Background.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QClipboard>
#include <QGridLayout>
#include <QGuiApplication>

namespace orvane::views {

using namespace design;

namespace {

Signal signalOf(const SystemCheck& check) {
    const std::string_view status = check.status;
    return status == "ok" ? Signal::matched : status == "problem" ? Signal::doubtful : Signal::none;
}

} // namespace

SystemChecksView::SystemChecksView(Desktop& desktop, QWidget* parent)
    : QWidget(parent), desktop_(desktop), rows_(new QGridLayout(this)), copy_(button(tr("Copy"))),
      again_(button(tr("Look Again"), Glyph::refresh)), looking_(facts(tr("Looking…"))) {
    setObjectName(QStringLiteral("diagnostics"));
    rows_->setHorizontalSpacing(space::medium);
    rows_->setVerticalSpacing(space::small);
    rows_->setColumnStretch(2, 1);
    rows_->setContentsMargins(0, 0, 0, 0);
    rows_->addWidget(looking_, 0, 0, 1, 3);
    copy_->setToolTip(tr("Copies this list as text"));
    copy_->setAccessibleName(tr("Copy the diagnostics"));
    copy_->setEnabled(false);
    again_->setEnabled(false);
    connect(again_, &QPushButton::clicked, this, [this] { look(); });
    connect(copy_, &QPushButton::clicked, this, [this] {
        QGuiApplication::clipboard()->setText(text(systemText(checks_)));
        showToast(window(), tr("Copied"));
    });
}

void SystemChecksView::look() {
    again_->setEnabled(false);
    copy_->setEnabled(false);
    looking_->setVisible(checks_.empty());
    inBackground(
        this,
        [settings = desktop_.context().settings] {
            return systemChecks(*settings, [] { return ProbeCache::shared(); });
        },
        [this](std::vector<SystemCheck> found) { show(std::move(found)); });
}

void SystemChecksView::show(std::vector<SystemCheck> found) {
    checks_ = std::move(found);
    looking_->hide();
    for (QWidget* one : findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        if (one != looking_) delete one; // from the previous check
    for (int i = 0; i < static_cast<int>(checks_.size()); ++i) {
        const SystemCheck& check = checks_[static_cast<std::size_t>(i)];
        const QString caption = translated(check.name);
        QLabel* name = label(caption.left(1).toUpper() + caption.mid(1));
        QLabel* detail = facts(translatedSentence(check.detail));
        // Aligned with the badge, which is higher than the labels.
        for (QLabel* one : {name, detail}) one->setContentsMargins(0, space::tight / 2, 0, 0);
        rows_->addWidget(name, i + 1, 0, Qt::AlignTop);
        rows_->addWidget(new Badge(signalOf(check), translated(check.status)), i + 1, 1, Qt::AlignTop);
        detail->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        detail->setAccessibleName(translated(check.name));
        rows_->addWidget(detail, i + 1, 2);
    }
    rows_->setRowStretch(static_cast<int>(checks_.size()) + 1, 1);
    copy_->setEnabled(true);
    again_->setEnabled(true);
}

} // namespace orvane::views
