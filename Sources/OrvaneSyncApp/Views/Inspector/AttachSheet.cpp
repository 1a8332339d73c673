#include "OrvaneSyncApp/Views/Inspector/AttachSheet.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace orvane::views {

using namespace design;

namespace {

constexpr int partsRole = Qt::UserRole;
const QString betweenParts = QStringLiteral("  ·  "); // separates the parts of a row in its text

/// Paints the parts of each row in columns; each column is as wide as its widest part. If there is not enough
/// room, the widest column is cut.
class ColumnsDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void measure(const QFontMetrics& metrics, const QStringList& parts) {
        widths_.resize(std::max(widths_.size(), parts.size()));
        for (qsizetype i = 0; i < parts.size(); ++i)
            if (!parts[i].isEmpty())
                widths_[i] = std::max(widths_[i], metrics.horizontalAdvance(parts[i]) + space::medium);
    }
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        QStyleOptionViewItem row(option);
        initStyleOption(&row, index);
        row.text.clear();
        row.widget->style()->drawControl(QStyle::CE_ItemViewItem, &row, painter, row.widget);
        painter->save();
        painter->setFont(row.font);
        painter->setPen(row.palette.color(
            row.state.testFlag(QStyle::State_Selected) ? QPalette::HighlightedText : QPalette::Text));
        const QRect inside = row.rect.adjusted(space::tight, 0, -space::tight, 0);
        QList<int> widths = widths_;
        const int missing = std::accumulate(widths.begin(), widths.end(), 0) - inside.width();
        int& widest = *std::ranges::max_element(widths);
        widest -= std::clamp(missing, 0, widest);
        int x = inside.left();
        const QStringList parts = index.data(partsRole).toStringList();
        for (qsizetype i = 0; i < parts.size(); ++i) {
            const QRect place(x, inside.top(), widths[i] - space::small, inside.height());
            painter->drawText(place, Qt::AlignVCenter | Qt::AlignLeft,
                              row.fontMetrics.elidedText(parts[i], Qt::ElideMiddle, place.width()));
            x += widths[i];
        }
        painter->restore();
    }

  private:
    QList<int> widths_{0};
};

} // namespace

AttachSheet::AttachSheet(Desktop& desktop, const std::vector<Attachable>& recordings, QWidget* parent)
    : QDialog(parent), desktop_(desktop) {
    setWindowTitle(tr("Attach a Recording"));
    resize(800, 440);
    auto* column = new QVBoxLayout(this);
    column->addWidget(label(translated(RecordingsPart::choosePrompt)));
    column->addWidget(search_ = searchField(tr("Search recordings"), tr("Name")));
    column->addWidget(list_ = new QListWidget, 1);
    list_->setAccessibleName(tr("Recordings"));
    list_->setUniformItemSizes(true);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // texts of rows are cut instead
    list_->setTextElideMode(Qt::ElideMiddle);
    list_->installEventFilter(this);
    search_->installEventFilter(this);
    auto* columns = new ColumnsDelegate(list_);
    list_->setItemDelegate(columns);
    for (const Attachable& one : recordings) {
        const QStringList parts = partsOf(one);
        QStringList said = parts;
        said.removeAll(QString());
        auto* row = new QListWidgetItem(said.join(betweenParts), list_);
        row->setData(partsRole, parts);
        columns->measure(QFontMetrics(textFont()), parts);
        audios_.push_back(one.audio);
    }
    if (recordings.empty())
        column->addWidget(
            facts(tr("All recordings of this shoot are attached to the clip. Attach a file instead.")));
    column->addLayout(makeListening());
    auto* buttons = new QHBoxLayout;
    QPushButton* file = button(tr("From File…"));
    buttons->addWidget(file);
    buttons->addStretch(1);
    QPushButton* cancel = button(tr("Cancel"));
    buttons->addWidget(cancel);
    buttons->addWidget(attach_ = button(tr("Attach"), Weight::primary));
    attach_->setDefault(true);
    column->addLayout(buttons);
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& words) { filter(words); });
    connect(list_, &QListWidget::itemActivated, this, [this] { choose(); });
    connect(cancel, &QPushButton::clicked, this, [this] { reject(); });
    connect(attach_, &QPushButton::clicked, this, [this] { choose(); });
    connect(file, &QPushButton::clicked, this, [this] {
        reject();
        whenFileWanted();
    });
    connect(list_, &QListWidget::itemSelectionChanged, this, [this] { followSelection(); });
    selectFirst(); // so that Return attaches it
    followSelection();
    search_->setFocus();
}

QStringList AttachSheet::partsOf(const Attachable& one) {
    const QString label = translatedSentence(one.label);
    QString apart;
    if (one.fromClip) {
        const QString clock = text(clockText(std::abs(*one.fromClip)));
        apart = *one.fromClip == 0  ? tr("meets the clip")
                : *one.fromClip < 0 ? tr("%1 before the clip").arg(clock)
                                    : tr("%1 after the clip").arg(clock);
    }
    if (one.isSuggested) apart = apart.isEmpty() ? tr("suggested") : tr("%1, suggested").arg(apart);
    return {label.section(betweenParts, 0, 0), label.section(betweenParts, 1), text(one.day), text(one.start),
            apart};
}

QLayout* AttachSheet::makeListening() {
    auto* row = new QHBoxLayout;
    row->addWidget(listen_ = button(tr("Listen"), Glyph::play));
    listen_->setAutoDefault(false);
    listen_->setToolTip(tr("Plays the selected recording, or pauses it (Space in the list)"));
    connect(listen_, &QPushButton::clicked, this, [this] { listen(); });
    row->addWidget(place_ = facts({}), 1);
    return row;
}

bool AttachSheet::eventFilter(QObject* watched, QEvent* event) {
    if (watched == search_ && event->type() == QEvent::KeyPress) {
        // Down moves the keyboard to the list, to the row that Return would attach.
        const int key = static_cast<QKeyEvent*>(event)->key();
        const bool isMove = key == Qt::Key_Up || key == Qt::Key_PageUp || key == Qt::Key_PageDown;
        if (key == Qt::Key_Down) {
            if (selected() == nullptr) selectFirst();
            list_->setFocus();
        }
        if (isMove) QCoreApplication::sendEvent(list_, event);
        return isMove || key == Qt::Key_Down;
    }
    if (watched == list_ && event->type() == QEvent::KeyPress &&
        goesToSearch(*static_cast<QKeyEvent*>(event))) {
        search_->setFocus();
        if (static_cast<QKeyEvent*>(event)->key() != Qt::Key_Up) QCoreApplication::sendEvent(search_, event);
        return true;
    }
    if (watched == list_ && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Space) {
        listen();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

bool AttachSheet::goesToSearch(const QKeyEvent& event) const {
    if (event.key() == Qt::Key_Up) {
        for (int row = list_->currentRow() - 1; row >= 0; --row)
            if (!list_->item(row)->isHidden()) return false;
        return true;
    }
    const QString typed = event.text();
    return event.key() == Qt::Key_Backspace || (!typed.isEmpty() && typed.front().isPrint() && typed != " ");
}

const MediaAsset* AttachSheet::selected() const {
    const auto rows = list_->selectedItems();
    return rows.isEmpty() ? nullptr : &audios_.at(static_cast<std::size_t>(list_->row(rows.front())));
}

void AttachSheet::listen() {
    const MediaAsset* audio = selected();
    if (audio == nullptr) return;
    if (!player_) {
        player_ = makeFilePlayer(desktop_);
        if (!player_)
            return place_->setText(tr("Nothing can be played: this machine has no player for sound."));
        playing_ = player_->onChange([this] { showPlaying(); });
    }
    isAsked_ = true;
    // Only one thing plays at a time.
    desktop_.players().review()->engine()->pause(true);
    player_->togglePlayback(*audio);
}

void AttachSheet::followSelection() {
    const MediaAsset* audio = selected();
    attach_->setEnabled(audio != nullptr);
    listen_->setEnabled(audio != nullptr);
    if (!player_ || player_->currentAssetID() == (audio ? std::optional(audio->id) : std::nullopt)) return;
    // If something plays, the recording of the new current row is played instead.
    if (audio != nullptr && player_->isPlaying())
        player_->togglePlayback(*audio);
    else {
        isAsked_ = false;
        player_->stop();
    }
}

void AttachSheet::showPlaying() {
    const bool plays = player_->isPlaying();
    listen_->setText(plays ? tr("Pause") : tr("Listen"));
    listen_->setIcon(icon(plays ? Glyph::pause : Glyph::play));
    if (isAsked_ && !player_->currentAssetID())
        return place_->setText(tr("This file cannot be read as sound."));
    place_->setText(placeText(*player_));
}

void AttachSheet::filter(const QString& words) {
    const QStringList all = words.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (int row = 0; row < list_->count(); ++row) {
        QListWidgetItem* item = list_->item(row);
        const bool isFound = std::ranges::all_of(
            all, [&](const QString& word) { return item->text().contains(word, Qt::CaseInsensitive); });
        item->setHidden(!isFound);
        if (!isFound) item->setSelected(false);
    }
    if (list_->selectedItems().isEmpty()) selectFirst(); // so that Return attaches it
}

void AttachSheet::selectFirst() {
    for (int row = 0; row < list_->count(); ++row)
        if (!list_->item(row)->isHidden()) return list_->setCurrentRow(row);
}

void AttachSheet::choose() {
    const MediaAsset* audio = selected();
    if (audio == nullptr) return;
    accept();
    whenChosen(audio->id);
}

} // namespace orvane::views
