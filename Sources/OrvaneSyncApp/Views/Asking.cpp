#include "OrvaneSyncApp/Views/Asking.h"

#include <QMessageBox>
#include <QPushButton>

namespace orvane::views {

bool isAgreed(QWidget* parent, const QString& title, const QString& text, const QString& yes,
              const QString& no) {
    QMessageBox box(QMessageBox::NoIcon, title, title, QMessageBox::NoButton, parent);
    box.setInformativeText(text);
    const QPushButton* agrees = box.addButton(yes, QMessageBox::AcceptRole);
    QPushButton* leaves = box.addButton(no, QMessageBox::RejectRole);
    box.setDefaultButton(leaves);
    box.setEscapeButton(leaves);
    box.exec();
    return box.clickedButton() == agrees;
}

void tell(QWidget* parent, const QString& title, const QString& text) {
    auto* box = new QMessageBox(QMessageBox::NoIcon, title, title, QMessageBox::Ok, parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setInformativeText(text);
    box->open();
}

} // namespace orvane::views
