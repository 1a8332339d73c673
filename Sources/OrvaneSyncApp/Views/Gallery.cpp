#include "OrvaneSyncApp/Views/Gallery.h"

#include "OrvaneDesignKit/AppIcon.h"
#include "OrvaneDesignKit/Sheet.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QPainter>
#include <QProgressBar>
#include <QScrollArea>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace orvane::views {

using namespace design;

namespace {

constexpr QSize gallerySize{1040, 900};
constexpr int glyphCell = 40, glyphsARow = 14;
constexpr int swatchWidth = 110, swatchHeight = 40;

QHBoxLayout* row(std::initializer_list<QWidget*> controls) {
    auto* made = new QHBoxLayout;
    made->setSpacing(space::small);
    for (QWidget* one : controls) made->addWidget(one);
    made->addStretch(1);
    return made;
}

/// A row of painted things for which there is no control.
class Painted : public QWidget {
  public:
    Painted(QSize size, const QString& name, std::function<void(QPainter&)> paint)
        : paint_(std::move(paint)) {
        setFixedSize(size);
        setAccessibleName(name);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        paint_(painter);
    }

  private:
    const std::function<void(QPainter&)> paint_;
};

QWidget* glyphs() {
    constexpr int count = static_cast<int>(Glyph::session) + 1;
    const int rows = (count + glyphsARow - 1) / glyphsARow;
    return new Painted(
        {glyphsARow * glyphCell, rows * glyphCell}, QObject::tr("Icons"), [](QPainter& painter) {
            for (int i = 0; i < count; ++i) {
                const int left = i % glyphsARow * glyphCell + 8, top = i / glyphsARow * glyphCell + 8;
                draw(painter, static_cast<Glyph>(i), QRectF(left, top, 24, 24), colours().text);
            }
        });
}

QWidget* palette() {
    return new Painted({8 * swatchWidth, 2 * swatchHeight}, QObject::tr("Colours"), [](QPainter& painter) {
        const Colours& all = colours();
        const std::pair<const char*, QColor> swatches[] = {
            {"window", all.window},     {"panel", all.panel},       {"raised", all.raised},
            {"hovered", all.hovered},   {"line", all.line},         {"selected", all.selected},
            {"matched", all.matched},   {"doubtful", all.doubtful}, {"missing", all.missing},
            {"disabled", all.disabled}, {"facts", all.facts},       {"text", all.text}};
        painter.setFont(factsFont());
        int i = 0;
        for (const auto& [name, colour] : swatches) {
            const QRect place(i % 8 * swatchWidth, i / 8 * swatchHeight, swatchWidth - 4, swatchHeight - 4);
            painter.fillRect(place, colour);
            painter.setPen(contrast(colour, all.text) > contrast(colour, all.window) ? all.text : all.window);
            painter.drawText(place, Qt::AlignCenter, QLatin1String(name));
            ++i;
        }
    });
}

QWidget* table() {
    auto* made = new QTreeWidget;
    made->setAccessibleName(QObject::tr("Table"));
    made->setHeaderLabels({QObject::tr("Clip"), QObject::tr("Starts")});
    made->setRootIsDecorated(false);
    made->setFixedHeight(110);
    for (const char* name : {"12A-1 Cam A", "12A-1 Cam B"})
        (new QTreeWidgetItem(made, {QLatin1String(name), QStringLiteral("10:00:02:00")}))
            ->setFont(1, timecodeFont());
    made->setCurrentItem(made->topLevelItem(0));
    return made;
}

} // namespace

QWidget* makeGallery() {
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setSpacing(space::medium);
    const auto section = [column](const QString& title) {
        auto* made = new Section(title);
        column->addWidget(made);
        return made;
    };
    auto* texts = section(QObject::tr("Texts"));
    texts->add(title(QObject::tr("Title")));
    texts->add(label(QObject::tr("Text")));
    texts->add(facts(QObject::tr("Facts of less weight")));
    auto* timecode = label(QStringLiteral("10:00:02:00"));
    timecode->setFont(timecodeFont());
    texts->add(timecode);

    auto* buttons = section(QObject::tr("Buttons"));
    auto* off = button(QObject::tr("Not now"));
    off->setEnabled(false);
    buttons->add(row({button(QObject::tr("Normal")), button(QObject::tr("Main"), Weight::primary),
                      button(QObject::tr("Quiet"), Weight::quiet),
                      button(QObject::tr("With icon"), Glyph::folder), off}));
    buttons->add(new SegmentedChoice(QObject::tr("One of a few"),
                                     {QObject::tr("All"), QObject::tr("Matched"), QObject::tr("Issues")},
                                     [](int) {}));

    auto* fields = section(QObject::tr("Fields"));
    auto* choice = new Choice;
    choice->setAccessibleName(QObject::tr("One of a list"));
    choice->addItems({QObject::tr("First"), QObject::tr("Second")});
    auto* tick = new QCheckBox(QObject::tr("A switch"));
    tick->setChecked(true);
    fields->add(row({field(QObject::tr("Name"), QObject::tr("Name")),
                     searchField(QObject::tr("Search"), QObject::tr("Search")), choice, tick}));
    fields->add(new SliderField(QObject::tr("A number"), {0, 300, 5}, QObject::tr("s"), [](int) {}));
    auto* bar = new QProgressBar;
    bar->setValue(40);
    bar->setTextVisible(false);
    bar->setAccessibleName(QObject::tr("Progress"));
    fields->add(bar);

    auto* signals_ = section(QObject::tr("Signals"));
    signals_->add(row({new Badge(Signal::matched, QObject::tr("Matched")),
                       new Badge(Signal::doubtful, QObject::tr("Doubtful")),
                       new Badge(Signal::missing, QObject::tr("Missing"))}));
    auto* banner = new Banner;
    banner->show(Signal::doubtful, QObject::tr("What happened, and what to do."), QObject::tr("Do It"),
                 [] {});
    signals_->add(banner);
    auto* toast = button(QObject::tr("Show a toast"));
    QObject::connect(toast, &QPushButton::clicked, content,
                     [content] { showToast(content->window(), QObject::tr("Copied")); });
    signals_->add(row({toast}));

    section(QObject::tr("Table"))->add(table());
    section(QObject::tr("Empty place"))
        ->add(new EmptyState(Glyph::film, QObject::tr("No clips"), QObject::tr("What to do next.")));
    section(QObject::tr("Icons"))->add(glyphs());
    section(QObject::tr("Colours"))->add(palette());

    auto* scroll = new QScrollArea;
    scroll->setWindowTitle(QObject::tr("Controls of OrvaneSync"));
    scroll->setWindowIcon(appIcon());
    scroll->setAccessibleName(scroll->windowTitle());
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->resize(gallerySize);
    return scroll;
}

} // namespace orvane::views
