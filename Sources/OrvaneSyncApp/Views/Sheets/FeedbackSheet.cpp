#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/ViewModels/Sheets/Feedback.h"
#include "OrvaneSyncApp/Views/Background.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QBuffer>
#include <QCheckBox>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QPointer>

namespace orvane::views {

using namespace design;

namespace {

constexpr QSize feedbackSize{760, 640};
constexpr int pictureWidth = 260;
constexpr int messageHeight = 120;

std::string png(const QPixmap& picture) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "PNG");
    return bytes.toStdString();
}

class FeedbackSheet : public Sheet {
  public:
    FeedbackSheet(Desktop& desktop, QWidget* parent)
        : Sheet(tr("Send Feedback"), parent), desktop_(desktop),
          delivery_(desktop.mainThread(), platform::HTTPClient::create()) {
        resize(feedbackSize);
        add(label(tr("What happened, or what is missing?")));
        message_ = new QPlainTextEdit;
        message_->setAccessibleName(tr("Your message"));
        message_->setTabChangesFocus(true);
        message_->setFixedHeight(messageHeight);
        add(message_);

        screenshot_ = parent->window()->grab();
        auto* along = new QHBoxLayout;
        along->setSpacing(space::medium);
        auto* left = new QVBoxLayout;
        sendsPicture_ = new QCheckBox(tr("Attach this picture of the window"));
        sendsPicture_->setChecked(true);
        left->addWidget(sendsPicture_);
        auto* picture = new QLabel;
        picture->setPixmap(screenshot_.scaledToWidth(pictureWidth, Qt::SmoothTransformation));
        picture->setAccessibleName(tr("Attached picture"));
        left->addWidget(picture);
        left->addStretch(1);
        along->addLayout(left);
        auto* right = new QVBoxLayout;
        right->addWidget(label(tr("This report is attached. Change or delete what you like.")));
        report_ = new QPlainTextEdit;
        report_->setAccessibleName(tr("Attached report"));
        report_->setTabChangesFocus(true);
        report_->setPlainText(tr("Looking…"));
        report_->setFont(factsFont());
        right->addWidget(report_, 1);
        along->addLayout(right, 1);
        add(along);
        add(where_ = facts({}));
        close_ = addClose(tr("Cancel"));
        send_ = addButton(tr("Save as File…"), Weight::primary);
        send_->setEnabled(false);
        connect(send_, &QPushButton::clicked, this, [this] { url_.empty() ? save() : send(); });
        const auto changed = [this] {
            isDelivered_ = false;
            showState();
        };
        connect(message_, &QPlainTextEdit::textChanged, this, changed);
        connect(report_, &QPlainTextEdit::textChanged, this, changed);
        connect(sendsPicture_, &QCheckBox::toggled, this, changed);
        inBackground(
            this,
            [work = std::make_shared<const WorkSnapshot>(desktop.controller())] {
                return std::pair(feedbackReport(*work, systemChecks(work->settings(),
                                                                    [] { return ProbeCache::shared(); })),
                                 ServiceConfiguration::load().feedbackURL.value_or(""));
            },
            [this](std::pair<std::string, std::string> found) {
                report_->setPlainText(text(found.first));
                url_ = std::move(found.second);
                isReady_ = true;
                showState();
            });
    }

  private:
    void showState() {
        send_->setText(url_.empty() ? tr("Save as File…") : tr("Send"));
        send_->setEnabled(isReady_ && !isUnderWay_ && !isDelivered_ &&
                          !message_->toPlainText().trimmed().isEmpty());
        if (!isReady_) return;
        where_->setText(
            url_.empty()
                ? tr("No address for feedback is configured. It is saved as a file that a mail program "
                     "opens.")
                : tr("It is sent to %1.").arg(text(url_)));
    }
    Feedback feedback() const {
        return {utf8(message_->toPlainText()), utf8(report_->toPlainText()),
                sendsPicture_->isChecked() ? png(screenshot_) : std::string()};
    }
    void send() { follow(delivery_.send(url_, feedback()), tr("Sent. Thank you.")); }
    void save() {
        QString place = QFileDialog::getSaveFileName(
            this, tr("Save feedback"), QDir::home().filePath(QStringLiteral("OrvaneSync Feedback.eml")),
            tr("Mails (*.eml)"));
        if (place.isEmpty()) return;
        const bool wasAsked = place.endsWith(QStringLiteral(".eml")); // about replacing this very file
        if (!wasAsked) place += QStringLiteral(".eml");
        follow(delivery_.save(utf8(place), feedback(), desktop_.controller(), wasAsked),
               tr("Saved: %1").arg(place));
    }
    void follow(const platform::Task& task, const QString& done) {
        isUnderWay_ = true;
        showState();
        task.whenDone([self = QPointer(this), done](const std::exception_ptr& raised) {
            if (!self) return;
            self->isUnderWay_ = false;
            self->isDelivered_ = !raised; // so that pressing again does not send it twice
            self->showState();
            try {
                if (raised) std::rethrow_exception(raised);
                self->close_->setText(tr("Done"));
                self->outcome().show(Signal::matched, done);
            } catch (const std::exception& why) {
                self->outcome().show(Signal::missing, translatedSentence(why.what()), tr("Save as File…"),
                                     [sheet = self.data()] { sheet->save(); });
            } catch (const platform::Stopped&) {
                self->outcome().clear();
            }
        });
    }

    Desktop& desktop_;
    FeedbackDelivery delivery_;
    QPlainTextEdit* message_;
    QPlainTextEdit* report_;
    QCheckBox* sendsPicture_;
    QLabel* where_;
    QPushButton* send_;
    QPixmap screenshot_;
    std::string url_; ///< empty: no address is configured
    bool isReady_ = false;
    bool isUnderWay_ = false;
    bool isDelivered_ = false; ///< exactly what is shown has been sent
    QPushButton* close_;
};

} // namespace

void showFeedback(Desktop& desktop, QWidget* parent) { (new FeedbackSheet(desktop, parent))->present(); }

} // namespace orvane::views
