#include "OrvaneSyncCore/Services/Ingest/ProbeCache.h"

#include "ManualQueue.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <sys/stat.h>
#include <unistd.h>

namespace orvane {
namespace {

using namespace std::chrono_literals;
using test::ManualQueue;

constexpr const char* cacheFile = "cache/probe-cache.json";

class Cache : public testing::Test {
  protected:
    Cache() { open(); }

    /// Ends the cache that is open, which writes what it has, and starts anew.
    void open() {
        cache.reset();
        auto ownedQueue = std::make_unique<ManualQueue>();
        queue = ownedQueue.get();
        cache = std::make_unique<ProbeCache>(folder.path(cacheFile), std::move(ownedQueue));
    }
    MediaAsset media(const std::string& name) const {
        MediaAsset asset(FileURL{folder.write(name, "123")}, AssetKind::audio);
        asset.startTimecodeString = "01:00:00:00";
        asset.contentCreatedDate = Date{1'700'000'000'123ms};
        asset.ixmlData.emplace();
        asset.ixmlData->scene = "12A";
        asset.ixmlData->tracks = {{1, "Boom"}};
        return asset;
    }
    MediaAsset stored(const std::string& name) const {
        MediaAsset asset = media(name);
        cache->store(asset);
        return asset;
    }
    bool holds(const MediaAsset& asset) const { return cache->lookup(asset.url).has_value(); }
    bool isWritten() const { return std::filesystem::exists(folder.path(cacheFile)); }

    test::TemporaryDirectory folder;
    ManualQueue* queue = nullptr;
    std::unique_ptr<ProbeCache> cache;
};

TEST_F(Cache, handsBackWhatWasStoredWhateverTheNameOfTheFile) {
    for (const char* name : {"quoted \"a\".wav", "line\nbreak.wav", "emoji \xF0\x9F\x8E\xAC.wav",
                             "latin-1 \xE9.wav", "latin-1 \xE8.wav", "back\\slash.wav", "percent %41.wav"}) {
        SCOPED_TRACE(name);
        const MediaAsset asset = stored(name);
        for (int run = 0; run < 2; ++run, open()) {
            const auto hit = cache->lookup(asset.url);
            ASSERT_TRUE(hit.has_value()) << "run " << run;
            EXPECT_EQ(toJSON(*hit), toJSON(asset));
            EXPECT_EQ(hit->url, asset.url);
        }
    }
    EXPECT_EQ(cache->count(), 7U);
}

TEST_F(Cache, aChangedFileMisses) {
    const MediaAsset asset = stored("a.wav");
    const auto written = std::filesystem::last_write_time(asset.url.path);
    const auto touched = [&](std::chrono::milliseconds by) {
        std::filesystem::last_write_time(asset.url.path, written + by);
        return holds(asset);
    };
    EXPECT_TRUE(touched(500ms));
    EXPECT_TRUE(touched(-900ms));
    EXPECT_FALSE(touched(1001ms));
    EXPECT_FALSE(touched(-1001ms));
    folder.write("a.wav", "1234");
    EXPECT_FALSE(touched(0ms)) << "another size";
    folder.write("a.wav", "321");
    EXPECT_TRUE(touched(0ms)) << "a stale entry stays until it is replaced";
    std::filesystem::rename(asset.url.path, folder.path("b.wav"));
    EXPECT_FALSE(holds(asset));
    EXPECT_FALSE(cache->lookup(FileURL{folder.path("b.wav")}).has_value());
}

TEST_F(Cache, anAssetWithoutAFileIsNotStored) {
    const MediaAsset asset = media("a.wav");
    const auto before = platform::files::attributes(asset.url.path);
    std::filesystem::remove(asset.url.path);
    cache->store(asset);
    EXPECT_EQ(cache->count(), 0U);
    // What was read before the probe counts, so that a file which grew during it is probed again.
    cache->store(asset, *before);
    folder.write("a.wav", "longer by now");
    EXPECT_FALSE(holds(asset));
}

TEST_F(Cache, oneWriteASecond) {
    const MediaAsset a = stored("a.wav");
    queue->advance(900ms);
    const MediaAsset b = stored("b.wav");
    EXPECT_FALSE(isWritten());
    queue->advance(100ms);
    const std::string both = folder.read(cacheFile);
    for (const MediaAsset& asset : {a, b}) EXPECT_NE(both.find(asset.id.text()), std::string::npos);
    EXPECT_EQ(cache->sizeBytes(), static_cast<std::int64_t>(both.size()));

    std::filesystem::remove(folder.path(cacheFile));
    queue->advance(10s);
    EXPECT_FALSE(isWritten()) << "nothing changed, nothing is written";
    stored("c.wav");
    queue->advance(1s);
    EXPECT_TRUE(isWritten());
}

TEST_F(Cache, whatWasNotAskedForStaysAsItWas) {
    const MediaAsset known = stored("known.wav");
    open();
    std::string text = folder.read(cacheFile);
    const std::string foreign = R"({ "later" : [1e2,"é\u00e9"] , "fileSize":1})";
    text.replace(text.rfind('}'), 1, ",\n\"/gone.wav\": " + foreign + "\n}");
    folder.write(cacheFile, text);
    open();
    EXPECT_TRUE(holds(known));
    stored("new.wav");
    open();
    EXPECT_NE(folder.read(cacheFile).find(foreign), std::string::npos);
    EXPECT_EQ(cache->count(), 3U);
}

TEST_F(Cache, aBrokenFileIsAColdCache) {
    const MediaAsset asset = stored("a.wav");
    open();
    const std::string good = folder.read(cacheFile);
    const std::string key = JSON(asset.url.path).dump();
    std::vector<std::string> contents{good + "{}", good.substr(0, good.size() / 2),
                                      good.substr(0, good.size() - 2), std::string(1000, '\0')};
    for (const char* text :
         {"", "no json", "[]", "null", "{", "{}x", "{\"a\":1}", "{\"a\":{\"b\":[}}", "{\"\xFF\":{}}"})
        contents.emplace_back(text);
    for (const std::string& record :
         {std::string("{}"), std::string(R"({"modificationDate":1,"fileSize":"3"})"),
          std::string(100'000, '{')})
        contents.push_back("{" + key + ":" + record + "}");
    for (const std::string& text : contents) {
        SCOPED_TRACE(text.substr(0, 60));
        folder.write(cacheFile, text);
        open();
        EXPECT_FALSE(holds(asset));
        cache->store(asset);
        EXPECT_TRUE(holds(asset));
        open();
        EXPECT_TRUE(holds(asset)) << "the next save replaces it";
    }
}

TEST_F(Cache, whatWouldNotDecodeIsNotKept) {
    const MediaAsset good = stored("good.wav");
    MediaAsset bad = media("bad.wav");
    bad.offspeedConfidence = OffspeedConfidence::confirmed(true, std::numeric_limits<double>::infinity());
    cache->store(bad);
    EXPECT_FALSE(holds(bad));
    open();
    EXPECT_FALSE(holds(bad));
    EXPECT_TRUE(holds(good));
}

TEST_F(Cache, aPipeInItsPlaceHoldsNobodyUp) {
    folder.write("cache/other", "");
    ASSERT_EQ(::mkfifo(folder.path(cacheFile).c_str(), 0600), 0);
    open();
    const MediaAsset asset = stored("a.wav");
    queue->advance(1s);
    EXPECT_TRUE(holds(asset));
}

TEST_F(Cache, oneRecordOfAnotherBuildEmptiesWhatWasLoaded) {
    const MediaAsset a = stored("a.wav"), b = stored("b.wav");
    open();
    std::string text = folder.read(cacheFile);
    text.replace(text.find("\"audio\""), 7, "\"smell\"");
    folder.write(cacheFile, text);
    open();
    const MediaAsset c = stored("c.wav");
    EXPECT_EQ(cache->count(), 3U);
    EXPECT_FALSE(holds(a));
    EXPECT_FALSE(holds(b));
    EXPECT_TRUE(holds(c)) << "stored in this run";
    EXPECT_EQ(cache->count(), 1U);
    open();
    folder.write(cacheFile, text);
    open();
    EXPECT_FALSE(holds(a) || holds(b));
    queue->advance(1s);
    EXPECT_EQ(folder.read(cacheFile), "{}\n") << "the next run is not emptied again";
}

TEST_F(Cache, aFolderThatCannotBeWrittenIsTriedAgain) {
    folder.write("cache", "a file where the folder should be");
    const MediaAsset asset = stored("a.wav");
    queue->advance(1s);
    EXPECT_TRUE(holds(asset)) << "the entries stay";
    EXPECT_EQ(cache->sizeBytes(), 0);
    std::filesystem::remove(folder.path("cache"));
    stored("b.wav");
    queue->advance(1s);
    open();
    EXPECT_TRUE(holds(asset));
}

TEST_F(Cache, clearForgetsAllAndRemovesTheFile) {
    const MediaAsset asset = stored("a.wav");
    queue->advance(1s);
    EXPECT_TRUE(isWritten());
    stored("b.wav");
    cache->clear();
    EXPECT_EQ(cache->count(), 0U);
    EXPECT_FALSE(holds(asset));
    queue->advance(1s);
    EXPECT_FALSE(isWritten()) << "nothing is left to be saved";
    cache->clear();
    EXPECT_EQ(cache->sizeBytes(), 0);
}

TEST(CacheQueue, aRealQueueLeavesItsCacheBehind) {
    const test::TemporaryDirectory folder;
    const MediaAsset asset(FileURL{folder.write("a.wav", "123")}, AssetKind::audio);
    {
        ProbeCache cache(folder.path(cacheFile));
        cache.store(asset);
    }
    ProbeCache cache(folder.path(cacheFile));
    EXPECT_EQ(cache.lookup(asset.url).value().id, asset.id);
}

} // namespace
} // namespace orvane
