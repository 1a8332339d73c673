#include "OrvaneSyncCore/Services/Ingest/StartSources.h"

#include "OrvaneSyncCore/Services/Ingest/TimecodeDocument.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Platform/EmbeddedXML.h"
#include "Platform/Text.h"
#include "Timecode/ExactRate.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <utility>

namespace orvane::StartSources {

namespace {

void take(MediaAsset& asset, StartTimecode start) {
    asset.startTimecodeString = std::move(start.text);
    asset.timecodeFrameRate = start.rate;
}

} // namespace

std::optional<Date> headerDate(const platform::MediaInspection& inspection) {
    constexpr std::int64_t year1990 = 631'152'000, year10000 = 253'402'300'800;
    const auto time = inspection.headerTime;
    if (!time || *time < year1990 || *time >= year10000) return std::nullopt;
    return Date(std::chrono::seconds(*time));
}

bool takeCounted(MediaAsset& asset, const platform::CountedTimecode& counted) {
    if (counted.rateDenominator == 0) return false;
    const Fraction exact(counted.rateNumerator, counted.rateDenominator);
    auto rate = timecodeRate::from(exact, counted.isDrop);
    if (!rate) rate = timecodeRate::from(exact, false);
    if (!rate) return false;
    asset.startTimecodeString = TimecodeUtils::framesToTC(counted.frames, *rate);
    asset.timecodeFrameRate = rate;
    asset.projectFrameRate = exact.doubleValue();
    return true;
}

void countPictures(MediaAsset& asset, bool isConfirmed) {
    // Relative. 24 and 23.976 differ by half of the first. Below the second a clip does not count as
    // offspeed, and without a rate from the camera there is nothing that says otherwise.
    const double sameSpeed = isConfirmed ? 0.002 : 0.05;
    const auto &stated = asset.projectFrameRate, &picture = asset.frameRate;
    if (!stated || !picture || !(*stated > 0)) return;
    // A picture rate that is not a timecode rate is an average of frames at irregular times.
    const bool countsEach =
        std::abs(*picture / *stated - 1) <= sameSpeed && timecodeRate::nearest(*picture, false);
    const bool countsEachSecond = !isConfirmed && OffspeedDetector::isHalfRate(stated, picture);
    if (countsEach || countsEachSecond) asset.projectFrameRate = exactRateValue(*picture);
}

void readEmbedded(MediaAsset& asset, platform::RandomAccessFile& file) {
    for (const std::string& document : platform::readEmbeddedXML(file))
        if (auto start = startTimecodeFromXML(document, asset.frameRate))
            return take(asset, std::move(*start));
}

void readSideFile(MediaAsset& asset, SideFiles& sideFiles) {
    auto stated = sideFiles.startTimecode(asset.url.path, asset.frameRate);
    if (!stated) return;
    take(asset, std::move(stated->start));
    asset.timecodeSideFile = platform::text::validUTF8(stated->name);
}

} // namespace orvane::StartSources
