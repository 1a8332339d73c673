#include "OrvaneSyncApp/Views/Settings/RolesPage.h"

#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/ViewModels/Settings/PatternDoubts.h"
#include "OrvaneSyncApp/ViewModels/Settings/RoleList.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Models/Settings.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPointer>
#include <QVBoxLayout>

namespace orvane::views {

using namespace design;

namespace {

constexpr int swatchSide = 14;
constexpr int trackWidth = 70;

/// Shows the colour of the channel in the timeline.
class Swatch : public QWidget {
  public:
    explicit Swatch(int channel) : channel_(channel) { setFixedSize(swatchSide, swatchSide); }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(channelColour(channel_));
        painter.drawRoundedRect(rect(), 3, 3);
    }

  private:
    int channel_;
};

/// With an empty sign, the button has the glyph of resetting.
QPushButton* tool(const QString& sign, const QString& name) {
    QPushButton* made = sign.isEmpty() ? button({}, Glyph::undo, Weight::quiet) : button(sign, Weight::quiet);
    made->setToolTip(name);
    made->setAccessibleName(name);
    return made;
}

} // namespace

RolesPage::RolesPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab)
    : SettingsPage(desktop, model, tab) {
    auto* section = new Section(tr("Subroles of the tracks"));
    section->add(
        facts(tr("Of the first eight tracks, in the order of the recorder. A track that the recorder "
                 "has named keeps its name.")));
    QString searched = tr("subrole role track order");
    const std::vector<std::string> roles = RoleList(desktop.settings()).roles();
    for (std::size_t track = 0; track < roles.size(); ++track) {
        section->add(makeLine(track));
        searched += QLatin1Char(' ') + text(roles[track]);
    }
    section->add(shared_ = new Remark);
    add(section, searched);
    RolesPage::refresh();
}

QWidget* RolesPage::makeLine(std::size_t track) {
    const int number = static_cast<int>(track) + 1;
    auto* whole = new QWidget;
    auto* column = new QVBoxLayout(whole);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    auto* row = new QHBoxLayout;
    row->setSpacing(space::small);
    Line line{field(tr("Subrole of track %1").arg(number)),
              tool(QStringLiteral("↑"), tr("Move the role of track %1 up").arg(number)),
              tool(QStringLiteral("↓"), tr("Move the role of track %1 down").arg(number)),
              tool({}, tr("Reset the role of track %1 to default").arg(number)), new Remark};
    line.name->setToolTip(text(settings::defaultSubroles.at(track).key));
    auto* name = label(tr("Track %1").arg(number));
    name->setFixedWidth(trackWidth);
    row->addWidget(new Swatch(static_cast<int>(track)));
    row->addWidget(name);
    row->addWidget(line.name, 1);
    for (QPushButton* one : {line.up, line.down, line.reset}) {
        QSizePolicy keepsPlace = one->sizePolicy();
        keepsPlace.setRetainSizeWhenHidden(true);
        one->setSizePolicy(keepsPlace);
        row->addWidget(one);
    }
    if (track == 0) line.up->hide();
    if (track + 1 == settings::defaultSubroles.size()) line.down->hide();
    column->addLayout(row);
    column->addWidget(line.remark);
    connect(line.name, &QLineEdit::editingFinished, this, [this, track] { rename(track); });
    connect(line.up, &QPushButton::clicked, this, [this, track] { move(track, -1); });
    connect(line.down, &QPushButton::clicked, this, [this, track] { move(track, 1); });
    connect(line.reset, &QPushButton::clicked, this, [this, track] { setRole(track, JSON()); });
    lines_.push_back(line);
    return whole;
}

void RolesPage::refresh() {
    SettingsPage::refresh();
    const RoleList list(desktop().settings());
    for (std::size_t track = 0; track < lines_.size(); ++track) {
        Line& line = lines_[track];
        const std::string& role = list.roles()[track];
        if (!(line.name->hasFocus() && line.name->isModified())) line.name->setText(text(role));
        line.remark->show(Signal::doubtful, translatedSentence(patternDoubts::subrole(role)));
        const auto& setting = settings::defaultSubroles.at(track);
        line.reset->setVisible(role != setting.standard());
    }
    shared_->show(Signal::doubtful, translatedSentence(list.sharedRoles()));
}

void RolesPage::rename(std::size_t track) {
    QLineEdit& name = *lines_[track].name;
    name.setModified(false);
    const std::string role = utf8(name.text().trimmed());
    if (role == desktop().settings().get(settings::defaultSubroles.at(track))) return;
    if (const std::string why = patternDoubts::subrole(role); !why.empty())
        return lines_[track].remark->show(Signal::missing, translatedSentence(why));
    setRole(track, role);
}

void RolesPage::move(std::size_t track, int by) {
    RoleList list(desktop().settings());
    list.move(track, by);
    const auto values = list.values();
    for (std::size_t each = 0; each < settings::defaultSubroles.size(); ++each) {
        const auto& setting = settings::defaultSubroles.at(each);
        const JSON& role = values.at(std::string(setting.key));
        if (role != setting.write(desktop().settings().get(setting))) setRole(each, role);
    }
    // The focus follows the role, so that pressing again moves it further.
    const auto to = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(track) + by);
    QPushButton* again = by < 0 ? lines_[to].up : lines_[to].down;
    (again->isVisible() ? again : by < 0 ? lines_[to].down : lines_[to].up)->setFocus();
}

void RolesPage::setRole(std::size_t track, JSON value) {
    JSON arguments = JSON::object();
    arguments.set("key", settings::defaultSubroles.at(track).key);
    arguments.set("value", std::move(value));
    desktop().run("setSetting", std::move(arguments), {}, [self = QPointer(this), track](const QString& why) {
        if (self) self->lines_[track].remark->show(Signal::missing, why);
    });
}

} // namespace orvane::views
