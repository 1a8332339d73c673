#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QFileInfo>
#include <QPointer>

namespace orvane::views {

using namespace design;

namespace {

constexpr QSize reviewTableSize{640, 400};

/// Lines and cells of a table of which nothing was used, and why.
class ReviewTableSheet : public Sheet {
  public:
    ReviewTableSheet(const QString& changed, const QStringList& problems, QWidget* parent)
        : Sheet(tr("Review Table"), parent) {
        resize(reviewTableSize);
        add(label(changed));
        add(label(
            tr("Of these lines something could not be used. Correct them in the table and apply it again.")));
        addCopyableList(problems, tr("Lines that could not be used"));
        addClose(tr("Done"))->setDefault(true);
    }
};

} // namespace

void applyReviewTable(Desktop& desktop, const QString& path, QWidget* parent) {
    JSON arguments = JSON::object();
    arguments.set("path", utf8(path));
    desktop.run("applyReview", std::move(arguments),
                [window = QPointer(parent), name = QFileInfo(path).fileName()](const JSON& answer) {
                    if (!window) return;
                    const int clips = static_cast<int>(answer.find("changedClips")->integer().value_or(0));
                    const QString changed = QObject::tr("%1: %n clip(s) changed.", nullptr, clips).arg(name);
                    QStringList problems;
                    for (const JSON& one : *answer.find("warnings")->elements())
                        problems << translatedSentence(*one.string());
                    if (problems.isEmpty())
                        showToast(window, changed);
                    else
                        (new ReviewTableSheet(changed, problems, window))->present();
                });
}

} // namespace orvane::views
