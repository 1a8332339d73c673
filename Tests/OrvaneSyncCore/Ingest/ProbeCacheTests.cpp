#include "OrvaneSyncCore/Services/Ingest/ProbeCache.h"

#include "ManualQueue.h"
#include "OrvaneSyncCore/Services/Ingest/ProbeCacheFile.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace orvane {
namespace {

using namespace std::chrono_literals;
using test::ManualQueue;

constexpr const char* cacheFile = "cache/probe-cache.bin";

class Cache : public testing::Test {
  protected:
    Cache() { open(); }

    /// Closes the open cache, which writes its records, and opens it again.
    void open(std::uint32_t readerVersion = ProbeCache::currentReaderVersion) {
        cache.reset();
        auto ownedQueue = std::make_unique<ManualQueue>();
        queue = ownedQueue.get();
        cache = std::make_unique<ProbeCache>(folder.path(cacheFile), std::move(ownedQueue), readerVersion);
    }
    MediaAsset media(const std::string& name) const {
        MediaAsset asset(FileURL{folder.write(name, "123")}, AssetKind::audio);
        asset.startTimecodeString = "01:00:00;00";
        asset.timecodeFrameRate = TimecodeFrameRate::fps120d;
        asset.durationSeconds = asset.frameRate = 0.1;
        asset.contentCreatedDate = Date{-1'700'000'000'123ms};
        asset.dateZoneMinutes = -210;
        asset.width = -1;
        asset.height = asset.channelCount = std::numeric_limits<int>::max();
        asset.sampleRate = asset.sensorFrameRate = asset.projectFrameRate = 1e-300;
        asset.videoCodecFourCC = "";
        asset.offspeedConfidence = OffspeedConfidence::confirmed(true, 2.5);
        asset.sourceRateDomainOverride = SourceRateDomain::conformedExternally;
        asset.bextTimeReference = asset.fileSizeBytes = ~0ULL;
        asset.bextOriginator = "Mixer";
        asset.heldShare = 0.25;
        asset.statedStampRate = 48000;
        asset.isUnclosed = true;
        asset.contentMark = (1ULL << 53U) - 1;
        asset.ixmlData.emplace();
        auto& ixml = *asset.ixmlData;
        ixml.scene = ixml.take = ixml.tape = ixml.note = ixml.project = "12A";
        ixml.circled = ixml.wildTrack = ixml.timecodeRate = ixml.timecodeFlag = "TRUE";
        ixml.tracks = {{1, "Boom"}, {-2, "Lav"}};
        return asset;
    }
    std::optional<ProbeCache::Known> known(const MediaAsset& asset) const {
        const auto attributes = platform::files::attributes(asset.url.path);
        return attributes ? cache->snapshot().known(asset.url, *attributes) : std::nullopt;
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

TEST_F(Cache, returnsWhatWasStoredForAnyFileName) {
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
    // The attributes from before the probe are stored, so a file that grew during the probe is probed again.
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
    for (const MediaAsset& asset : {a, b}) EXPECT_NE(both.find(asset.url.path), std::string::npos);
    EXPECT_EQ(cache->sizeBytes(), static_cast<std::int64_t>(both.size()));

    std::filesystem::remove(folder.path(cacheFile));
    queue->advance(10s);
    EXPECT_FALSE(isWritten()) << "nothing changed, nothing is written";
    stored("c.wav");
    queue->advance(1s);
    EXPECT_TRUE(isWritten());
}

TEST_F(Cache, aRecordOfAnotherVersionGivesOnlyTheId) {
    constexpr std::uint32_t next = ProbeCache::currentReaderVersion + 1;
    const MediaAsset a = stored("a.wav"), b = stored("b.wav");
    open(next);
    EXPECT_FALSE(holds(a));
    const auto earlier = known(a);
    ASSERT_TRUE(earlier.has_value());
    EXPECT_EQ(earlier->id, a.id);
    EXPECT_EQ(earlier->kind, a.kind);
    cache->store(a);
    EXPECT_TRUE(holds(a)) << "it is replaced";
    open();
    EXPECT_FALSE(holds(a)) << "an older program does not take what a newer one has read";
    EXPECT_TRUE(holds(b)) << "what nobody asked for stays as it was";
    EXPECT_EQ(cache->count(), 2U);
}

TEST_F(Cache, theEarlierFormIsReadOnceAndReplaced) {
    const MediaAsset a = media("a.wav"), b = media("latin-1 \xE9.wav");
    const auto date = platform::files::attributes(a.url.path)->modificationSinceReference;
    const auto entry = [&](const MediaAsset& asset, double size) {
        JSON json;
        json.set("asset", toJSON(asset));
        json.set("modificationDate", date);
        json.set("fileSize", size);
        return JSON(asset.url.pathText()).dump() + ":" + json.dump();
    };
    const std::string earlier = "cache/probe-cache.json", aEntry = entry(a, 3);
    for (const std::string& text :
         {"{" + aEntry + "," + entry(b, 3) + R"(,"/c.wav":{"asset":{"kind":"smell"}},"/d.wav":{}})",
          std::string("no json"), "{" + aEntry + "}x", "{" + aEntry + ",\"e\":[]}"}) {
        SCOPED_TRACE(text);
        cache->clear();
        folder.write(earlier, text);
        open();
        EXPECT_FALSE(holds(a));
        const bool isGood = text.ends_with("}}");
        for (const MediaAsset& asset : {a, b})
            EXPECT_EQ(known(asset) ? std::optional(known(asset)->id) : std::nullopt,
                      isGood ? std::optional(asset.id) : std::nullopt);
        stored("new.wav");
        open();
        EXPECT_EQ(known(b).has_value(), isGood);
        EXPECT_FALSE(std::filesystem::exists(folder.path(earlier)));
    }
}

TEST_F(Cache, aDamagedFileIsAnEmptyCache) {
    const MediaAsset asset = stored("a.wav");
    open();
    const std::string good = folder.read(cacheFile), whole = toJSON(asset).dump();
    std::vector<std::string> contents{"", "no cache", std::string(1000, '\0'), std::string(1000, '\xFF')};
    for (std::size_t i = 0; i < good.size(); ++i) {
        contents.push_back(good.substr(0, i));
        contents.push_back(good);
        contents.back()[i] = static_cast<char>(contents.back()[i] ^ 0x11);
    }
    std::size_t found = 0;
    for (const std::string& text : contents) {
        folder.write(cacheFile, text);
        open();
        const auto hit = cache->lookup(asset.url);
        found += hit ? 1 : 0;
        ASSERT_TRUE(!hit || toJSON(*hit).dump() == whole) << "nothing is handed back that was not stored";
    }
    EXPECT_EQ(found, 0U);
    cache->store(asset);
    open();
    EXPECT_TRUE(holds(asset)) << "the next save replaces it";
}

TEST(CacheFile, leavesOutOnlyTheDamagedRecord) {
    ProbeRecord record;
    record.path = "/b.wav";
    const auto file = ProbeCacheFile::fromBytes(ProbeCacheFile::bytes({"damaged", record.bytes()}));
    EXPECT_TRUE(file && file->count() == 1 && file->find("/b.wav"));
}

TEST_F(Cache, aPipeInItsPlaceBlocksNothing) {
    folder.write("cache/other", "");
    ASSERT_EQ(::mkfifo(folder.path(cacheFile).c_str(), 0600), 0);
    open();
    const MediaAsset asset = stored("a.wav");
    queue->advance(1s);
    EXPECT_TRUE(holds(asset));
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

TEST_F(Cache, keepsWhatAnotherProcessWroteMeanwhile) {
    const MediaAsset known = stored("known.wav");
    open();
    const MediaAsset ours = stored("ours.wav"), theirs = media("theirs.wav");
    ProbeCache(folder.path(cacheFile)).store(theirs);
    open();
    for (const MediaAsset& asset : {known, ours, theirs}) EXPECT_TRUE(holds(asset));
    stored("last.wav");
    ProbeCache(folder.path(cacheFile)).clear();
    open();
    EXPECT_EQ(cache->count(), 1U) << "the other has cleared the cache";
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

TEST(CacheQueue, aRealQueueWritesTheCacheBeforeItEnds) {
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
