#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/ViewModels/Sheets/ReportTexts.h"
#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <algorithm>

namespace orvane::views {

using namespace design;

namespace {

constexpr QSize reportSize{640, 480};
constexpr std::size_t mostRows = 5000; // of a list that people read or copy

QString columnNames(const std::vector<std::string>& names) {
    QStringList all;
    for (const std::string& name : names) all << text(name);
    return all.isEmpty() ? QObject::tr("none of them") : all.join(QStringLiteral(", "));
}

/// The result of the loaded report: the rows that match no clip, and which columns are exported.
class ReportSheet : public Sheet {
  public:
    ReportSheet(Desktop& desktop, QWidget* parent) : Sheet(tr("Report"), parent) {
        resize(reportSize);
        const ReportController& reports = desktop.controller().reports();
        add(label(translatedSentence(reports.aleMatchStatus().value_or(""))));
        QStringList rows;
        const std::vector<std::size_t>& all = reports.rowsWithoutClip();
        for (std::size_t i = 0; i < std::min(all.size(), mostRows); ++i)
            rows << text(reportTexts::lineOfRow(*reports.aleFile(), all[i]));
        if (all.size() > mostRows) rows << tr("… and %1 more").arg(all.size() - mostRows);
        if (rows.isEmpty()) {
            add(facts(tr("Each row names a clip.")));
        } else {
            add(label(tr("Rows that name no clip: %1").arg(all.size())));
            addCopyableList(rows, tr("Rows that name no clip"));
        }
        const reportTexts::Columns columns = reportTexts::columnsOf(*reports.aleFile());
        add(facts(tr("In the document: %1.").arg(columnNames(columns.inDocument))));
        add(facts(tr("Shown in the inspector only: %1.").arg(columnNames(columns.shownOnly))));
        QPushButton* matching = button(tr("Match Setting…"), Glyph::gear);
        matching->setToolTip(
            tr("What a row is matched to a clip by. Takes effect when the report is loaded again."));
        connect(matching, &QPushButton::clicked, this, [this, &desktop] {
            SettingsWindow settings(desktop, this);
            settings.showTab(SettingPage::reports);
            settings.exec();
        });
        addAside(matching);
        addClose(tr("Done"))->setDefault(true);
    }
};

} // namespace

void showReport(Desktop& desktop, QWidget* parent) {
    if (desktop.controller().reports().aleFile()) (new ReportSheet(desktop, parent))->present();
}

} // namespace orvane::views
