#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/SystemChecksView.h"

#include <QScrollArea>

namespace orvane::views {

using namespace design;

namespace {

constexpr QSize diagnosticsSize{760, 620};

class DiagnosticsSheet : public Sheet {
  public:
    DiagnosticsSheet(Desktop& desktop, QWidget* parent) : Sheet(tr("Diagnostics"), parent) {
        resize(diagnosticsSize);
        auto* checks = new SystemChecksView(desktop);
        auto* scroll = new QScrollArea;
        scroll->setWidget(checks);
        scroll->setWidgetResizable(true);
        scroll->setFrameShape(QFrame::NoFrame);
        scroll->setAccessibleName(tr("State of each subsystem"));
        add(facts(tr("Which libraries and devices are available, and where the program keeps its files.")));
        add(scroll, 1);
        addAside(checks->copyButton());
        addAside(checks->againButton());
        addClose(tr("Done"))->setDefault(true);
        checks->look();
    }
};

} // namespace

void showDiagnostics(Desktop& desktop, QWidget* parent) {
    (new DiagnosticsSheet(desktop, parent))->present();
}

} // namespace orvane::views
