#include "OrvaneSyncApp/Views/ResultsModel.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QImage>
#include <QPainter>
#include <QRegularExpression>

#include <algorithm>

namespace orvane::views {

using namespace design;

namespace {

using Column = ResultsViewModel::Column;
using Certainty = ClipCertainty;

constexpr int pictureWidth = 64, pictureHeight = 36;
constexpr int markSide = 16;
constexpr int foldWidth = 18;

bool isRightAligned(int column) {
    return column == static_cast<int>(Column::length) || column == static_cast<int>(Column::begins) ||
           column == static_cast<int>(Column::loudness);
}

QString elided(const QFontMetrics& metrics, int column, const QString& shown, int width) {
    // A clip without a name is named after its file.
    const bool isFile = column == static_cast<int>(Column::cameraFile) ||
                        (column == static_cast<int>(Column::name) && !shown.contains(QLatin1Char(' ')));
    if (isFile) return elidedFile(metrics, shown, width);
    QString rest = shown;
    if (column == static_cast<int>(Column::sound) && metrics.horizontalAdvance(shown) > width) {
        static const QRegularExpression kind(QStringLiteral("\\.\\w{2,4}(?= |$)"));
        rest.remove(kind); // the extension says least
    }
    return metrics.elidedText(rest, Qt::ElideMiddle, width);
}

void drawPicture(QPainter& painter, const QRect& within, const platform::Picture* picture) {
    painter.fillRect(within, colours().panel);
    if (picture == nullptr || !picture->pixels)
        return draw(painter, Glyph::film, QRectF(within).adjusted(0, 8, 0, -8), colours().line);
    const QImage image(picture->pixels.get(), picture->size.width, picture->size.height,
                       4 * picture->size.width, QImage::Format_ARGB32_Premultiplied);
    QSizeF size = image.size();
    size.scale(within.size(), Qt::KeepAspectRatio);
    QRectF place(QPointF(0, 0), size);
    place.moveCenter(QRectF(within).center());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, image);
}

QString marksText(const ResultsViewModel::Row& row) {
    QStringList words;
    if (row.isApproved) words << QObject::tr("approved");
    if (row.isAnalysed) words << QObject::tr("analyzed");
    const bool hasSound = row.certainty != Certainty::missing && row.certainty != Certainty::silent;
    if (row.isLocked)
        words << (row.isMovedSinceLock ? QObject::tr("moved since locked")
                  : hasSound           ? QObject::tr("locked")
                                       : QObject::tr("locked without sound"));
    if (row.isExcluded) words << QObject::tr("not exported");
    return words.join(QStringLiteral(", "));
}

} // namespace

Signal signal(Certainty certainty) {
    switch (certainty) {
    case Certainty::settled:
        return Signal::matched;
    case Certainty::doubtful:
        return Signal::doubtful;
    case Certainty::missing:
        return Signal::missing;
    case Certainty::silent:
        break;
    }
    return Signal::none;
}

QString elidedFile(const QFontMetrics& metrics, const QString& name, int width) {
    if (metrics.horizontalAdvance(name) <= width) return name;
    constexpr int number = 8; // characters, such as "A001C001"
    constexpr int leastTail = 3;
    const qsizetype point = name.lastIndexOf(QLatin1Char('.'));
    const QString stem = name.left(point > 0 ? point : name.size());
    const QString head = stem.left(number) + QChar(0x2026);
    for (qsizetype tail = stem.size() - number - 1; tail >= leastTail; --tail)
        if (const QString cut = head + stem.right(tail); metrics.horizontalAdvance(cut) <= width) return cut;
    return metrics.elidedText(name, Qt::ElideRight, width);
}

QString inPartOrder(const QString& name) {
    const auto isRightToLeft = [](QChar one) {
        return one.direction() == QChar::DirR || one.direction() == QChar::DirAL ||
               one.direction() == QChar::DirAN;
    };
    if (std::ranges::none_of(name, isRightToLeft)) return name;
    constexpr QChar leftToRightMark(0x200E);
    QString marked;
    for (const QChar one : name) {
        const bool isSeparator = QStringLiteral("_-. ").contains(one);
        if (isSeparator) marked += leftToRightMark;
        marked += one;
        if (isSeparator) marked += leftToRightMark;
    }
    return marked;
}

ResultsModel::ResultsModel(ResultsViewModel& rows, std::shared_ptr<Thumbnails> thumbnails, QObject* parent)
    : RowsModel(parent), rows_(rows), thumbnails_(std::move(thumbnails)) {
    decoded_ = thumbnails_->onChange([this](const std::string& path) {
        for (const auto& [row, said] : shown()) {
            if (rows_.videoURL(static_cast<std::size_t>(row)).path != path) continue;
            const QModelIndex cell = index(row, static_cast<int>(Column::name));
            Q_EMIT dataChanged(cell, cell);
        }
    });
    observation_ = rows.onChange([this](const ResultsViewModel::Change& change) { follow(change); });
}

int ResultsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.rowCount());
}

int ResultsModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : marksColumn + 1;
}

QVariant ResultsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) return {};
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>(Qt::AlignVCenter |
                                (isRightAligned(section) ? Qt::AlignRight : Qt::AlignLeft));
    if (role != Qt::DisplayRole) return {};
    return translated(ResultsViewModel::title(static_cast<Column>(section)));
}

QVariant ResultsModel::data(const QModelIndex& index, int role) const {
    const ResultsViewModel::Row& shown = row(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return index.column() == marksColumn ? marksText(shown)
                                             : text(shown.texts[static_cast<std::size_t>(index.column())]);
    case Qt::ToolTipRole: {
        QStringList lines{data(index, Qt::DisplayRole).toString()};
        if (index.column() == static_cast<int>(Column::name)) // the camera file may be cut in the cell
            lines << text(shown.texts[static_cast<std::size_t>(Column::cameraFile)]);
        else if (!shown.doubts.empty())
            lines.clear();
        if (!shown.doubts.empty()) lines << text(shown.doubts);
        return lines.join(QLatin1Char('\n'));
    }
    case Qt::TextAlignmentRole:
        return static_cast<int>(Qt::AlignVCenter |
                                (isRightAligned(index.column()) ? Qt::AlignRight : Qt::AlignLeft));
    default:
        return {};
    }
}

const platform::Picture* ResultsModel::thumbnail(int index) const {
    return thumbnails_->find(rows_.videoURL(static_cast<std::size_t>(index)).path);
}

void ResultsModel::wantThumbnails(int first, int last) {
    std::vector<Thumbnails::Request> inView;
    for (int row = std::max(first, 0); row <= last && row < rowCount(); ++row) {
        // A little after the start, because clips often begin in black or on a slate.
        constexpr double inside = 0.3; // as a fraction of the clip
        const auto at = static_cast<std::size_t>(row);
        inView.push_back({rows_.videoURL(at).path, inside * rows_.videoSeconds(at)});
    }
    thumbnails_->want(std::move(inView));
}

void ResultsModel::sort(int column, Qt::SortOrder order) {
    rows_.setSorting(column < 0 ? std::nullopt : std::optional(static_cast<Column>(column)),
                     order == Qt::AscendingOrder);
}

ResultsViewModel::Row ResultsModel::makeRow(std::size_t index) const {
    ResultsViewModel::Row made = rows_.row(index);
    // Names of clips and files are not translated, as people gave them; our own texts are.
    for (const Column column : {Column::match, Column::sound, Column::begins, Column::loudness}) {
        std::string& cell = made.texts[static_cast<std::size_t>(column)];
        cell = utf8(translatedSentence(cell));
    }
    made.doubts = utf8(translatedSentence(made.doubts));
    made.reason = utf8(translatedSentence(made.reason));
    for (const Column column : {Column::name, Column::cameraFile, Column::sound}) {
        std::string& cell = made.texts[static_cast<std::size_t>(column)];
        cell = utf8(inPartOrder(text(cell)));
    }
    return made;
}

void ResultsDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const {
    const auto* model = static_cast<const ResultsModel*>(index.model());
    const ResultsViewModel::Row& row = model->row(index.row());
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    const Colours& all = colours();
    painter->save();
    painter->fillRect(option.rect, isSelected ? all.selected : all.window);
    const bool isName = index.column() == static_cast<int>(Column::name);
    const bool isTimecode = index.column() == static_cast<int>(Column::starts);
    QColor textColour = isSelected ? all.onSelected : isName ? all.text : all.facts;
    if (row.isExcluded && !isSelected) textColour = all.disabled;
    painter->setFont(isTimecode ? timecodeFont() : isName ? textFont() : factsFont());
    QRect inner = option.rect.adjusted(space::small, 0, -space::small, 0);
    if (isName) {
        if (row.foldable > 0)
            draw(*painter, row.isFolded ? Glyph::folded : Glyph::unfolded,
                 QRectF(inner.left() - 2, inner.center().y() - 7, 14, 14), textColour);
        inner.setLeft(inner.left() + foldWidth + (row.isBelowAnother ? space::small : 0));
        drawPicture(*painter,
                    QRect(inner.left(), inner.center().y() - pictureHeight / 2, pictureWidth, pictureHeight),
                    model->thumbnail(index.row()));
        inner.setLeft(inner.left() + pictureWidth + space::small);
    }
    // The text of the next column is shown below if that column is hidden.
    QString below;
    if (isCompact_ && (isName || isTimecode || index.column() == static_cast<int>(Column::sound)))
        below = model->index(index.row(), index.column() + 1).data().toString();
    if (below == QStringLiteral("-")) below.clear();
    if (index.column() == static_cast<int>(Column::match)) {
        // The reason of a doubt is shown below the status.
        const QString why = text(row.reason);
        const int half = why.isEmpty() ? 0 : inner.height() / 2;
        Badge::paint(*painter, inner.adjusted(0, half > 0 ? space::tight : 0, 0, -half),
                     signal(row.certainty), index.data().toString(), textColour);
        if (half > 0) {
            painter->setPen(isSelected ? all.onSelected : all.facts);
            painter->drawText(inner.adjusted(0, half, 0, -space::tight), Qt::AlignVCenter | Qt::AlignLeft,
                              painter->fontMetrics().elidedText(why, Qt::ElideRight, inner.width()));
        }
    } else if (index.column() == ResultsModel::marksColumn) {
        int x = inner.left();
        for (const auto& [isSet, mark] :
             {std::pair(row.isApproved, Glyph::approve), std::pair(row.isLocked, Glyph::lock),
              std::pair(row.isAnalysed, Glyph::waveform), std::pair(row.isExcluded, Glyph::excluded)}) {
            if (!isSet) continue;
            const bool isWarning = mark == Glyph::lock && row.isMovedSinceLock && !isSelected;
            draw(*painter, mark, QRectF(x, inner.center().y() - markSide / 2.0, markSide, markSide),
                 isWarning ? colour(Signal::doubtful) : textColour);
            x += markSide + space::tight;
        }
    } else {
        QString shown = index.data().toString();
        if (isName && row.isFolded) shown += QObject::tr("  +%1").arg(row.foldable);
        const int alignment = index.data(Qt::TextAlignmentRole).toInt();
        const int half = below.isEmpty() ? 0 : inner.height() / 2;
        painter->setPen(textColour);
        painter->drawText(inner.adjusted(0, below.isEmpty() ? 0 : space::tight, 0, -half), alignment,
                          elided(painter->fontMetrics(), index.column(), shown, inner.width()));
        if (!below.isEmpty()) {
            painter->setFont(factsFont());
            painter->setPen(isSelected ? all.onSelected : all.facts);
            painter->drawText(inner.adjusted(0, half, 0, -space::tight), alignment,
                              elided(painter->fontMetrics(), index.column() + 1, below, inner.width()));
        }
    }
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        painter->setPen(all.focus);
        painter->drawRect(option.rect.adjusted(0, 0, -1, -1));
    }
    painter->restore();
}

QSize ResultsDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const {
    const auto column = static_cast<Column>(index.column());
    if (column == Column::match) {
        Badge status(Signal::matched, index.data().toString());
        status.setFont(factsFont());
        return {status.sizeHint().width() + 2 * space::small, rowHeight};
    }
    const QFontMetrics metrics(column == Column::name     ? textFont()
                               : column == Column::starts ? timecodeFont()
                                                          : factsFont());
    return {metrics.horizontalAdvance(index.data().toString()) + 2 * space::small + 1 +
                (column == Column::name ? foldWidth + pictureWidth + 2 * space::small : 0),
            rowHeight};
}

bool ResultsDelegate::isFold(const QRect& cell, const QPoint& at) {
    return at.x() < cell.left() + space::small + foldWidth;
}

} // namespace orvane::views
