#include "OrvaneSyncCLI/ServeTest.h"

#include "OrvaneSyncCLI/RunCommand.h"
#include "Platform/SHA256.h"

#include <httplib.h>

#include <thread>

namespace orvane::cli::rpc {
namespace {

/// A host of models on the loopback interface.
class ModelHostTest : public ServeTest {
  protected:
    ModelHostTest() {
        platform::SHA256 hash;
        hash.add(model_);
        const std::string expected = platform::hexadecimal(hash.digest());
        host_.Get("/facebook/demucs/resolve/main/demucs.mlpackage.zip",
                  [](const auto&, auto& response) { response.set_redirect("/store/demucs"); });
        host_.Get("/store/demucs", [this](const auto&, auto& response) {
            response.set_content(model_, "application/octet-stream");
        });
        const int port = host_.bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { host_.listen_after_bind(); });
        while (!host_.is_running()) std::this_thread::yield();
        work_.write("config/Orvane Tandrel/service.json",
                    R"({"modelHost":"http://127.0.0.1:)" + std::to_string(port) +
                        R"(","modelSHA256":{"demucs":")" + expected + "\"}}");
    }
    ~ModelHostTest() override {
        host_.stop();
        thread_.join();
    }
    std::string stateOf(std::size_t row) {
        return *call("models").find("models")->elements()->at(row).find("status")->find("state")->string();
    }

    test::ScopedEnvironment configHome_{"XDG_CONFIG_HOME", work_.path("config").c_str()};
    std::string model_ = std::string(300'000, 'm');
    httplib::Server host_;
    std::thread thread_;
};

TEST_F(ModelHostTest, aModelComesAndGoes) {
    EXPECT_EQ(stateOf(1), "notDownloaded");
    context_.controller->models().download("demucs");
    context_.controller->models().cancelDownload("demucs"); // while it checks the disk
    EXPECT_EQ(stateOf(1), "notDownloaded");
    std::vector<double> shares;
    const auto watching = context_.controller->onChange([&](ImportField field) {
        const ModelInfo* const model = context_.controller->models().model("demucs");
        if (field == ImportField::models && model != nullptr) shares.push_back(model->status.progress);
    });
    EXPECT_EQ(*call("downloadModel", R"({"id":"demucs"})").find("status")->find("state")->string(), "ready");
    EXPECT_TRUE(std::ranges::is_sorted(shares.begin(), shares.end() - 2)) << "two for the end";
    EXPECT_EQ(work_.read("Orvane Tandrel/Models/demucs.bin"), model_);
    EXPECT_EQ(stateOf(1), "ready");
    call("deleteModel", R"({"id":"demucs"})");
    EXPECT_EQ(stateOf(1), "notDownloaded");

    model_ = "another";
    EXPECT_EQ(failure("downloadModel", R"({"id":"demucs"})"), "1 Downloaded file failed integrity check");
    EXPECT_EQ(failure("downloadModel", R"({"id":"cinemaCLIP"})"), "1 Server returned status 404");
    EXPECT_EQ(failure("deleteModel", R"({"id":"none"})"), "-32602 id: there is no model 'none'");
    EXPECT_EQ(failure("cancelModelDownload", R"({"id":"demucs"})"), "") << "with none under way";
}

} // namespace
} // namespace orvane::cli::rpc

namespace orvane::cli {
namespace {

TEST(ModelsCommand, saysWhatThereIs) {
    const test::TemporaryDirectory folder;
    const test::ScopedEnvironment config("XDG_CONFIG_HOME", folder.path().c_str()),
        data("XDG_DATA_HOME", folder.path().c_str());
    const Outcome list = runWith({"models"});
    EXPECT_NE(list.out.find("No model host is configured"), std::string::npos) << list.out;
    EXPECT_NE(list.out.find("BanditV2.onnx not installed"), std::string::npos);
    EXPECT_EQ(runWith({"models", "download", "demucs"}).status, 1);
    EXPECT_EQ(runWith({"models", "download", "none"}).status, 1);
    EXPECT_EQ(runWith({"models", "download"}).status, 2);
}

} // namespace
} // namespace orvane::cli
