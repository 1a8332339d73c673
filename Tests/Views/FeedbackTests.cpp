#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncCore/Services/Persistence/ServiceConfiguration.h"
#include "Platform/Files.h"
#include "Views/ShootWindow.h"

#include <QCheckBox>

#include <httplib.h>

#include <atomic>
#include <filesystem>
#include <mutex>
#include <thread>

namespace orvane::views {

namespace {

/// Accepts feedback on the loopback interface, or refuses it.
class FeedbackServer {
  public:
    FeedbackServer() {
        server_.Post("/feedback", [this](const httplib::Request& request, httplib::Response& response) {
            const std::lock_guard lock(mutex_);
            parts_.clear();
            for (const auto& [name, part] : request.files) parts_[name] = part.content;
            response.status = status;
        });
        port_ = server_.bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { server_.listen_after_bind(); });
        while (!server_.is_running()) std::this_thread::yield();
    }
    ~FeedbackServer() {
        server_.stop();
        thread_.join();
    }
    std::string address() const { return "http://127.0.0.1:" + std::to_string(port_) + "/feedback"; }
    /// The last message received, by the names of the form's fields.
    std::map<std::string, std::string> parts() {
        const std::lock_guard lock(mutex_);
        return parts_;
    }
    std::atomic<int> status = 200;

  private:
    httplib::Server server_;
    std::mutex mutex_;
    std::map<std::string, std::string> parts_;
    int port_ = 0;
    std::thread thread_;
};

class FeedbackTest : public testing::Test, protected test::ShootWindow {
  protected:
    /// Opens the sheet and enters a message, once the report is shown.
    QDialog& write(const QString& message) {
        showFeedback(*desktop_, window_.get());
        type(sheet(), "Your message", message);
        EXPECT_TRUE(test::waitUntil([&] {
            const QPushButton* send = button(sheet(), "Send");
            return send != nullptr && send->isEnabled();
        }));
        return sheet();
    }
    static QString outcome(QDialog& sheet) {
        for (auto* one : sheet.findChildren<QFrame*>())
            if (const auto* banner = dynamic_cast<design::Banner*>(one); banner && !banner->isHidden())
                return banner->text();
        return {};
    }

    FeedbackServer server_;
    test::ScopedEnvironment config_{"XDG_CONFIG_HOME", folder_.path("config").c_str()};
};

} // namespace

TEST_F(FeedbackTest, SendsWhatIsShownAndSaysWhenItIsNotTaken) {
    const std::string place = ServiceConfiguration::path();
    std::filesystem::create_directories(std::filesystem::path(place).parent_path());
    platform::files::writeAtomically(place, "{\"feedbackURL\": \"" + server_.address() + "\"}");
    scan();
    QDialog& sheet = write("The sound of 12A-3 lies late.");
    server_.status = 503;
    press(sheet, "Send");
    ASSERT_TRUE(test::waitUntil([&] { return outcome(sheet).contains("503"); }))
        << outcome(sheet).toStdString();
    server_.status = 200;
    press(sheet, "Send");
    ASSERT_TRUE(test::waitUntil([&] { return outcome(sheet).startsWith("Sent"); }));
    auto parts = server_.parts();
    EXPECT_EQ(parts["message"], "The sound of 12A-3 lies late.");
    EXPECT_NE(parts["report"].find("clips: 4"), std::string::npos) << parts["report"];
    EXPECT_EQ(parts["report"].find("A001C001"), std::string::npos) << "no file's name goes along";
    EXPECT_TRUE(QImage::fromData(QByteArray::fromStdString(parts["screenshot"]), "PNG").width() > 1000);

    EXPECT_FALSE(button(sheet, "Send")->isEnabled()) << "it would be sent twice";
    sheet.findChild<QCheckBox*>()->setChecked(false);
    press(sheet, "Send");
    ASSERT_TRUE(test::waitUntil([&] { return !server_.parts().contains("screenshot"); }));
}

} // namespace orvane::views
