#include "OrvaneSyncCore/Services/ModelStorage/ModelCatalogue.h"
#include "OrvaneSyncCore/Services/ModelStorage/ModelDownloader.h"
#include "OrvaneSyncCore/Services/ModelStorage/ModelStorage.h"
#include "OrvaneSyncCore/Utilities/Base64.h"
#include "Platform/Files.h"
#include "Platform/Stop.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using Kind = ModelDownloadError::Kind;

/// "Manifest.json", deflated, and "Data/weights.bin", stored.
constexpr const char* package =
    "UEsDBBQAAAAIAPGteV2lzzruFAAAABgBAAANAAAATWFuaWZlc3QuanNvbqtWKkstKs7Mz1OyUjCsrR7lQXkAUEsDBBQA"
    "AAAAAAAAIQBPtEDdCQAAAAkAAAAQAAAARGF0YS93ZWlnaHRzLmJpbgABAgABAgABAlBLAQIUAxQAAAAIAPGteV2lzzru"
    "FAAAABgBAAANAAAAAAAAAAAAAACAAQAAAABNYW5pZmVzdC5qc29uUEsBAhQDFAAAAAAAAAAhAE+0QN0JAAAACQAAABAA"
    "AAAAAAAAAAAAAIABPwAAAERhdGEvd2VpZ2h0cy5iaW5QSwUGAAAAAAIAAgB5AAAAdgAAAAAA";
/// One entry, "../outside".
constexpr const char* leavingPackage =
    "UEsDBBQAAAAAAPGteV2DFtyMAQAAAAEAAAAKAAAALi4vb3V0c2lkZXhQSwECFAMUAAAAAADxrXldgxbcjAEAAAABAAAA"
    "CgAAAAAAAAAAAAAAgAEAAAAALi4vb3V0c2lkZVBLBQYAAAAAAQABADgAAAApAAAAAAA=";

/// Answers with one body, after the given redirects.
class FakeClient : public platform::HTTPClient {
  public:
    int status = 200;
    std::string body;
    std::uint64_t length = 0; ///< that it states for the body; 0: the true one
    std::stop_source* stopsAtHalf = nullptr;
    std::vector<std::string> redirects;
    std::vector<std::string> asked;

    platform::HTTPResponse send(const platform::HTTPRequest& /*request*/, std::stop_token /*stop*/) override {
        return {};
    }
    platform::HTTPResponse download(const platform::HTTPRequest& request, const std::string& path,
                                    const Progress& progress, std::stop_token stop) override {
        asked.push_back(request.url);
        if (asked.size() <= redirects.size()) return {302, {{"Location", redirects[asked.size() - 1]}}, ""};
        if (status != 200) return {status, {}, ""};
        progress(body.size() / 2, length == 0 ? body.size() : length);
        if (stopsAtHalf != nullptr) stopsAtHalf->request_stop();
        if (stop.stop_requested())
            throw platform::HTTPError(platform::HTTPError::Kind::cancelled, "cancelled");
        platform::files::writeAtomically(path, body);
        return {200, {}, ""};
    }
};

class ModelStorageTest : public testing::Test {
  protected:
    std::optional<Kind> download(const std::string& hash = {}, const std::stop_token& stop = {}) {
        try {
            client_->asked.clear();
            ModelDownloader(client_).download(
                {"demucs", "https://host/demucs", hash}, [&](double share) { share_ = share; }, stop);
            return std::nullopt;
        } catch (const ModelDownloadError& error) {
            message_ = error.what();
            return error.kind();
        }
    }
    std::string models(const std::string& below) const {
        return folder_.path("Orvane Tandrel/Models/" + below);
    }

    test::TemporaryDirectory folder_;
    test::ScopedEnvironment dataHome_{"XDG_DATA_HOME", folder_.path().c_str()};
    test::ScopedEnvironment configHome_{"XDG_CONFIG_HOME", folder_.path().c_str()};
    std::shared_ptr<FakeClient> client_ = std::make_shared<FakeClient>();
    double share_ = 0;
    std::string message_;
};

TEST_F(ModelStorageTest, aModelIsInItsPlaceOnceItIsWholeAndTested) {
    client_->body = "abc";
    const std::string hash = "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD";
    EXPECT_EQ(download(hash), std::nullopt) << message_;
    EXPECT_EQ(folder_.read("Orvane Tandrel/Models/demucs.bin"), "abc");
    EXPECT_EQ(ModelStorage::sizeOnDisk("demucs"), 3);
    EXPECT_EQ(share_, 1.0 / 3);

    client_->body = *base64::decoded(package);
    EXPECT_EQ(download(), std::nullopt) << message_;
    EXPECT_FALSE(fs::exists(models("demucs.bin"))) << "the other form goes";
    EXPECT_EQ(folder_.read("Orvane Tandrel/Models/demucs.mlpackage/Data/weights.bin").size(), 9U);
    EXPECT_EQ(folder_.read("Orvane Tandrel/Models/demucs.mlpackage/Manifest.json").size(), 280U);
    EXPECT_TRUE(ModelStorage::isInstalled("demucs"));
    EXPECT_EQ(ModelStorage::totalSizeMB(), 0);
    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_THROW(ModelStorage::totalSizeMB(stopped.get_token()), platform::Stopped);
    folder_.write("Orvane Tandrel/Models/demucs.bin", "both");
    ModelStorage::remove("demucs");
    EXPECT_TRUE(fs::is_empty(models("")));
}

TEST_F(ModelStorageTest, aFailureLeavesNothingAndIsReported) {
    client_->body = "abc";
    EXPECT_EQ(download("00"), Kind::checksumMismatch);
    EXPECT_EQ(message_, "Downloaded file failed integrity check");
    client_->status = 404;
    EXPECT_EQ(download(), Kind::invalidResponse);
    EXPECT_EQ(message_, "Server returned status 404");
    client_->status = 200;
    client_->length = std::uint64_t{1} << 62U;
    EXPECT_EQ(download(), Kind::writeFailed);
    EXPECT_NE(message_.find("too little space"), std::string::npos) << message_;
    client_->length = 0;
    client_->body = *base64::decoded(leavingPackage);
    EXPECT_EQ(download(), Kind::writeFailed);
    client_->body = *base64::decoded(package);
    client_->body[client_->body.find("PK\x01\x02") + 8] = 1;
    EXPECT_EQ(download(), Kind::writeFailed) << "an encrypted entry";
    client_->body = base64::decoded(package)->substr(0, 120) + std::string(200, 'x');
    EXPECT_EQ(download(), Kind::writeFailed) << "a damaged archive";
    std::stop_source stop;
    client_->stopsAtHalf = &stop;
    EXPECT_EQ(download({}, stop.get_token()), Kind::cancelled);
    EXPECT_EQ(message_, "Download cancelled");
    EXPECT_TRUE(fs::is_empty(models("")));
    EXPECT_FALSE(fs::exists(folder_.path("Orvane Tandrel/outside")));
}

TEST_F(ModelStorageTest, redirectsAreFollowedToSecureAddresses) {
    client_->body = "abc";
    client_->redirects = {"/there", "https://other/model?key=1"};
    EXPECT_EQ(download(), std::nullopt) << message_;
    EXPECT_EQ(client_->asked, (std::vector<std::string>{"https://host/demucs", "https://host/there",
                                                        "https://other/model?key=1"}));
    for (const char* refused : {"http://127.0.0.1/model", "file:///etc/passwd", ""}) {
        client_->redirects = {refused};
        EXPECT_EQ(download(), Kind::invalidResponse) << refused;
    }
    client_->redirects.assign(20, "/again");
    EXPECT_EQ(download(), Kind::invalidResponse) << "for ever";
}

TEST_F(ModelStorageTest, theCatalogueSaysWhatThereIs) {
    auto rows = modelCatalogue(ServiceConfiguration::load());
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].status.kind, ModelStatus::Kind::error) << "no host is configured";
    folder_.write("Orvane Tandrel/service.json",
                  R"({"modelHost": "https://models.example/", "modelSHA256": {"demucs": "AA"}})");
    folder_.write("Orvane Tandrel/Models/cinemaCLIP.bin", "x");
    rows = modelCatalogue(ServiceConfiguration::load());
    EXPECT_EQ(rows[0].status.kind, ModelStatus::Kind::ready);
    EXPECT_EQ(rows[1].status.kind, ModelStatus::Kind::notDownloaded);
    EXPECT_EQ(rows[1].downloadURL,
              "https://models.example/facebook/demucs/resolve/main/demucs.mlpackage.zip");
    EXPECT_EQ(rows[1].expectedSHA256, "aa");
}

} // namespace
} // namespace orvane
