#pragma once

#include <QLayout>
#include <QList>

namespace orvane::design {

/// Controls beside each other, in as many lines as the width requires, centred in their line.
class FlowLayout : public QLayout {
  public:
    explicit FlowLayout(QWidget* parent = nullptr);
    ~FlowLayout() override;
    /// The controls of each line share its spare width, so that all lines end at the same place.
    void fillLines() { fillsLines_ = true; }

    void addItem(QLayoutItem* item) override;
    int count() const override;
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    void setGeometry(const QRect& rect) override;

  private:
    /// Returns the height of the lines.
    int place(const QRect& within, bool isMeant) const;

    QList<QLayoutItem*> items_;
    bool fillsLines_ = false;
};

} // namespace orvane::design
