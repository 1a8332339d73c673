#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Controllers/SystemChecks.h"
#include "OrvaneSyncApp/ViewModels/Sheets/Feedback.h"
#include "OrvaneSyncApp/Views/Background.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QClipboard>
#include <QGridLayout>
#include <QGuiApplication>
#include <QScrollArea>

namespace orvane::views {

using namespace design;

namespace {

constexpr QSize diagnosticsSize{720, 560};

Signal signalOf(const SystemCheck& check) {
    const std::string_view status = check.status;
    return status == "ok" ? Signal::matched : status == "problem" ? Signal::doubtful : Signal::none;
}

class DiagnosticsSheet : public Sheet {
  public:
    DiagnosticsSheet(Desktop& desktop, QWidget* parent) : Sheet(tr("Diagnostics"), parent) {
        resize(diagnosticsSize);
        auto* content = new QWidget;
        rows_ = new QGridLayout(content);
        rows_->setHorizontalSpacing(space::medium);
        rows_->setVerticalSpacing(space::small);
        rows_->setColumnStretch(2, 1);
        rows_->setContentsMargins(space::small, space::small, space::small, space::small);
        rows_->addWidget(facts(tr("Looking…")), 0, 0);
        auto* scroll = new QScrollArea;
        scroll->setWidget(content);
        scroll->setWidgetResizable(true);
        scroll->setFrameShape(QFrame::NoFrame);
        scroll->setAccessibleName(tr("State of each subsystem"));
        add(facts(tr("What this machine has for the program, and where its files lie.")));
        add(scroll, 1);
        copy_ = button(tr("Copy"));
        copy_->setToolTip(tr("Copies this list as text"));
        copy_->setEnabled(false);
        addAside(copy_);
        connect(copy_, &QPushButton::clicked, this, [this] {
            QGuiApplication::clipboard()->setText(text(systemText(checks_)));
            showToast(this, tr("Copied"));
        });
        addClose(tr("Done"))->setDefault(true);
        inBackground(
            this,
            [settings = desktop.context().settings] {
                return systemChecks(*settings, [] { return ProbeCache::shared(); });
            },
            [this](std::vector<SystemCheck> found) { show(std::move(found)); });
    }

  private:
    void show(std::vector<SystemCheck> found) {
        checks_ = std::move(found);
        delete rows_->itemAtPosition(0, 0)->widget();
        for (int i = 0; i < static_cast<int>(checks_.size()); ++i) {
            const SystemCheck& check = checks_[static_cast<std::size_t>(i)];
            QLabel* name = label(translated(check.name));
            QLabel* detail = facts(translatedSentence(check.detail));
            // On the line of the badge, which is higher.
            for (QLabel* one : {name, detail}) one->setContentsMargins(0, space::tight / 2, 0, 0);
            rows_->addWidget(name, i, 0, Qt::AlignTop);
            rows_->addWidget(new Badge(signalOf(check), translated(check.status)), i, 1, Qt::AlignTop);
            detail->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
            detail->setAccessibleName(translated(check.name));
            rows_->addWidget(detail, i, 2);
        }
        rows_->setRowStretch(rows_->rowCount(), 1);
        copy_->setEnabled(true);
    }

    QGridLayout* rows_;
    QPushButton* copy_;
    std::vector<SystemCheck> checks_;
};

} // namespace

void showDiagnostics(Desktop& desktop, QWidget* parent) {
    (new DiagnosticsSheet(desktop, parent))->present();
}

} // namespace orvane::views
