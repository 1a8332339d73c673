#include "OrvaneDesignKit/AppIcon.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Views/Background.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"

#include <QHBoxLayout>
#include <QLibraryInfo>

namespace orvane::views {

using namespace design;

namespace {

constexpr int aboutWidth = 460;
constexpr int iconSide = 96;

class AboutSheet : public Sheet {
  public:
    explicit AboutSheet(QWidget* parent) : Sheet(tr("About OrvaneSync"), parent) {
        setMinimumWidth(aboutWidth);
        auto* row = new QHBoxLayout;
        row->setSpacing(space::medium);
        auto* picture = new QLabel;
        picture->setPixmap(appIcon().pixmap(QSize(iconSide, iconSide), devicePixelRatioF()));
        picture->setAccessibleName(tr("The icon of OrvaneSync"));
        row->addWidget(picture, 0, Qt::AlignTop);
        row->addWidget(
            label(tr("Lays the right sound under every clip of a shooting day and writes it for Final "
                     "Cut Pro.")),
            1);
        add(row);
        add(facts(tr("Version %1, with Qt %2")
                      .arg(QCoreApplication::applicationVersion(), QLatin1String(qVersion()))));
        addClose(tr("Done"))->setDefault(true);
    }
};

} // namespace

void showAbout(QWidget* parent) { (new AboutSheet(parent))->present(); }

void findServices(QWidget* context, std::function<void(const ServiceConfiguration&)> found) {
    inBackground(
        context, [] { return ServiceConfiguration::load(); }, std::move(found));
}

} // namespace orvane::views
