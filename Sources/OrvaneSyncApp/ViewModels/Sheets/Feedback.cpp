#include "OrvaneSyncApp/ViewModels/Sheets/Feedback.h"

#include "OrvaneSyncApp/Controllers/WorkInputs.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"
#include "OrvaneSyncCore/Utilities/Base64.h"
#include "Platform/OnQueue.h"
#include "Platform/Random.h"

#include <array>
#include <cstdlib>
#include <map>
#include <span>
#include <stdexcept>
#include <utility>

namespace orvane {

namespace {

std::string boundary() {
    std::array<std::byte, 16> bytes{};
    platform::secureRandom(bytes);
    std::string text = "orvane-";
    constexpr const char* digits = "0123456789abcdef";
    for (const std::byte one : bytes) {
        text += digits[std::to_integer<unsigned>(one) >> 4U];
        text += digits[std::to_integer<unsigned>(one) & 15U];
    }
    return text;
}

/// Replaces the path of the home folder with "~".
std::string withoutHome(std::string text) {
    const char* home = std::getenv("HOME");
    const std::string folder = home == nullptr ? "" : home;
    if (folder.size() < 2) return text;
    for (std::size_t at = text.find(folder); at != std::string::npos; at = text.find(folder, at + 1))
        text.replace(at, folder.size(), "~");
    return text;
}

std::string kindText(const std::map<std::string, int>& counts) {
    std::string text;
    for (const auto& [kind, count] : counts)
        text += (text.empty() ? "" : ", ") + kind + " " + std::to_string(count);
    return text.empty() ? "none" : text;
}

std::string lines76(const std::string& base64) {
    constexpr std::size_t longest = 76;
    std::string text;
    for (std::size_t at = 0; at < base64.size(); at += longest) text += base64.substr(at, longest) + "\r\n";
    return text;
}

} // namespace

std::string systemText(const std::vector<SystemCheck>& checks) {
    std::string text = "OrvaneSync " ORVANE_VERSION "\n";
    for (const SystemCheck& check : checks)
        text += std::string(check.name) + ": " + check.status + ", " + check.detail + "\n";
    return text;
}

std::string feedbackReport(const WorkSnapshot& work, const std::vector<SystemCheck>& checks) {
    std::string text = systemText(checks) + "\nSettings that differ from their defaults\n";
    for (const SettingDescription& setting : SettingsCatalogue::all()) {
        const auto stored = work.settings().storedValue(setting);
        if (!stored || *stored == setting.defaultValue()) continue;
        text += "  " + std::string(setting.key) + " = " + stored->dump() + "\n";
    }
    std::map<std::string, int> statuses, doubts;
    int locked = 0, moved = 0;
    for (const SyncGroup& group : work.groups()) {
        ++statuses[std::string(group.matchStatus.name())];
        if (group.isLocked) ++locked;
        if (group.manualAudioOffsetSeconds != 0) ++moved;
    }
    for (const auto& [id, list] : work.doubts().byGroup)
        for (const SyncDoubt& doubt : list) ++doubts[std::string(rowOf(doubt.kind).name)];
    text += "\nOpen work\n  clips: " + std::to_string(work.groups().size()) + " (" + kindText(statuses) +
            ")\n  recordings without picture: " + std::to_string(work.wildTracks().size()) +
            "\n  locked: " + std::to_string(locked) + ", moved by hand: " + std::to_string(moved) +
            "\n  doubts: " + kindText(doubts) + "\n";
    return withoutHome(std::move(text));
}

platform::HTTPRequest feedbackRequest(const std::string& url, const Feedback& feedback) {
    const std::string mark = boundary();
    std::string body;
    const auto add = [&](const std::string& disposition, const std::string& type,
                         const std::string& content) {
        body += "--" + mark + "\r\nContent-Disposition: form-data; " + disposition +
                "\r\nContent-Type: " + type + "\r\n\r\n" + content + "\r\n";
    };
    add("name=\"message\"", "text/plain; charset=utf-8", feedback.message);
    add("name=\"report\"; filename=\"report.txt\"", "text/plain; charset=utf-8", feedback.report);
    if (!feedback.screenshotPNG.empty())
        add("name=\"screenshot\"; filename=\"screenshot.png\"", "image/png", feedback.screenshotPNG);
    body += "--" + mark + "--\r\n";
    platform::HTTPRequest request;
    request.method = "POST";
    request.url = url;
    request.headers = {{"Content-Type", "multipart/form-data; boundary=" + mark}};
    request.body = std::move(body);
    return request;
}

std::string feedbackMail(const Feedback& feedback) {
    const std::string mark = boundary();
    std::string mail(mailHead);
    mail += "Content-Type: multipart/mixed; boundary=" + mark + "\r\n";
    const auto add = [&](const std::string& headers, const std::string& content) {
        mail += "\r\n--" + mark + "\r\n" + headers + "Content-Transfer-Encoding: base64\r\n\r\n" +
                lines76(base64::encoded(content));
    };
    add("Content-Type: text/plain; charset=utf-8\r\n", feedback.message);
    add("Content-Type: text/plain; charset=utf-8\r\nContent-Disposition: attachment; "
        "filename=\"report.txt\"\r\n",
        feedback.report);
    if (!feedback.screenshotPNG.empty())
        add("Content-Type: image/png\r\nContent-Disposition: attachment; filename=\"screenshot.png\"\r\n",
            feedback.screenshotPNG);
    return mail + "\r\n--" + mark + "--\r\n";
}

FeedbackDelivery::FeedbackDelivery(std::shared_ptr<platform::MainThread> mainThread,
                                   std::shared_ptr<platform::HTTPClient> client)
    : mainThread_(std::move(mainThread)), client_(std::move(client)),
      queue_(platform::SerialQueue::create("feedback")) {}

platform::Task FeedbackDelivery::send(std::string url, Feedback feedback) {
    // Copies, because this object may be destroyed before the answer arrives.
    auto sending =
        platform::onQueue(*queue_, mainThread_,
                          [client = client_, url = std::move(url),
                           feedback = std::move(feedback)](const std::stop_token& stop) {
                              const auto answer = client->send(feedbackRequest(url, feedback), stop);
                              constexpr int firstOfSuccess = 200, firstBehind = 300;
                              if (answer.status < firstOfSuccess || answer.status >= firstBehind)
                                  throw std::runtime_error("The service rejected the message with status " +
                                                           std::to_string(answer.status));
                          });
    co_await sending;
}

platform::Task FeedbackDelivery::save(std::string path, Feedback feedback, const ImportController& work,
                                      bool mayReplace) {
    auto saving = platform::onQueue(
        *queue_, mainThread_,
        [path = std::move(path), feedback = std::move(feedback), inputs = inputsOf(work), mayReplace] {
            const OutputPermission permission{mayReplace, "choose that file itself"};
            OutputGuard(OutputKind::mail, inputs(), permission).write(path, feedbackMail(feedback));
        });
    co_await saving;
}

} // namespace orvane
