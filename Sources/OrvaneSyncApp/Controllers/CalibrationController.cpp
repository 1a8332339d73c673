#include "OrvaneSyncApp/Controllers/CalibrationController.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"
#include "Platform/Files.h"
#include "Platform/OnQueue.h"
#include "Platform/Random.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <exception>
#include <tuple>
#include <utility>

namespace orvane {

namespace {

namespace calibration = SmartAudioCalibration;
using calibration::SourceInfo;

constexpr const char* eventName = "OrvaneSync Calibration";

std::uint64_t randomSeed() {
    std::array<std::byte, sizeof(std::uint64_t)> bytes{};
    platform::secureRandom(bytes);
    return std::bit_cast<std::uint64_t>(bytes);
}

CalibrationRow::Difference difference(double decibels) {
    constexpr double moderateFrom = 1, largeFrom = 6;
    const double size = std::abs(decibels);
    using enum CalibrationRow::Band;
    return {platform::text::formatted("%+0.2f", decibels), size < moderateFrom ? small
                                                           : size < largeFrom  ? moderate
                                                                               : large};
}

/// What is stored about the calibration.
struct CalibrationOnDisk {
    bool hasMatrix = false;
    std::optional<CalibrationResult> saved;
    std::optional<SourceInfo> source;
    std::string problem;
};

struct Measured {
    CalibrationResult result;
    std::vector<std::string> unreadFiles{};
};

CalibrationOnDisk lookedAt(bool measuresSource, const std::stop_token& stop) {
    CalibrationOnDisk found;
    found.hasMatrix = platform::files::exists(calibration::sourceFile().path) &&
                      platform::files::exists(calibration::documentFile().path);
    found.saved = calibration::loadSaved();
    if (!found.hasMatrix || !measuresSource) return found;
    try {
        found.source = calibration::sourceInfoOf(calibration::sourceFile(), stop);
    } catch (const ReadFailed& error) {
        found.problem = std::string("Couldn't measure the source: ") + error.what();
    }
    return found;
}

SourceInfo built(const std::string& recording, CalibrationMatrix matrix, std::uint64_t seed,
                 const std::stop_token& stop) {
    std::optional<FileURL> from;
    if (!recording.empty() && platform::files::exists(recording)) from = FileURL{recording};
    SourceInfo source = calibration::generateSource(calibration::sourceFile(), from, seed, stop);
    platform::files::writeAtomically(calibration::documentFile().path,
                                     calibration::buildFCPXML(source.url, source.videoURL,
                                                              source.durationSeconds, source.sampleRate,
                                                              permsOf(matrix), eventName));
    return source;
}

} // namespace

std::vector<CalibrationRow> calibrationRows(const CalibrationResult& result) {
    std::vector<CalibrationRow> rows;
    for (const CalibrationMeasurement& one : result.measurements)
        rows.push_back(
            {one.perm, difference(one.peakDeltaDB), difference(one.rmsDeltaDB), difference(one.lufsDeltaDB)});
    std::ranges::stable_sort(rows, {}, [](const CalibrationRow& row) {
        return std::tuple(row.perm.voiceIsoAmount, row.perm.loudnessAmount, row.perm.uniformity);
    });
    return rows;
}

CalibrationController::CalibrationController(OpenWork& work)
    : work_(work), queue_(platform::SerialQueue::create("calibration")) {}

platform::Task CalibrationController::refreshState() { return work_.running.add(refresh(work_.weak(this))); }

platform::Task CalibrationController::refresh(Weak weak) {
    auto self = weak.lock();
    auto looking =
        platform::onQueue(*self->queue_, self->work_.environment.mainThread,
                          [measuresSource = !self->state_.sourceInfo](const std::stop_token& stop) {
                              return lookedAt(measuresSource, stop);
                          });
    self.reset();
    CalibrationOnDisk found = co_await looking;
    self = weak.lock();
    if (!self) co_return;
    self->state_.hasMatrixOnDisk = found.hasMatrix;
    self->state_.savedCalibration = std::move(found.saved);
    if (found.source) self->state_.sourceInfo = std::move(found.source);
    if (!found.problem.empty()) self->state_.problem = std::move(found.problem);
    self->changed();
}

platform::Task CalibrationController::buildMatrix(CalibrationMatrix matrix) {
    work_.notices.assertOnMainThread();
    return work_.running.add(build(work_.weak(this), matrix));
}

platform::Task CalibrationController::build(Weak weak, CalibrationMatrix matrix) {
    auto self = weak.lock();
    self->state_.isBuildingMatrix = true;
    self->state_.problem.clear();
    self->changed();
    auto building = platform::onQueue(
        *self->queue_, self->work_.environment.mainThread,
        [matrix, recording = self->work_.environment.settings->get(settings::calibInputAudio),
         seed = randomSeed()](const std::stop_token& stop) { return built(recording, matrix, seed, stop); });
    self.reset();
    std::optional<SourceInfo> source;
    std::exception_ptr stopped;
    std::string problem;
    try {
        source = co_await building;
    } catch (const platform::Stopped&) {
        stopped = std::current_exception();
    } catch (const std::exception& error) {
        problem = std::string("Couldn't build matrix: ") + error.what();
    }
    if (self = weak.lock(); self) {
        self->state_.isBuildingMatrix = false;
        self->state_.problem = problem;
        if (source) {
            self->state_.sourceInfo = std::move(source);
            self->state_.hasMatrixOnDisk = true;
        }
        self->changed();
    }
    if (stopped) std::rethrow_exception(stopped);
}

platform::Task CalibrationController::measure(FileURL folder) {
    work_.notices.assertOnMainThread();
    return work_.running.add(measureFolder(work_.weak(this), std::move(folder)));
}

platform::Task CalibrationController::measureFolder(Weak weak, FileURL folder) {
    auto self = weak.lock();
    self->state_.problem.clear();
    if (!self->state_.sourceInfo) {
        self->state_.problem =
            "Build the matrix in step 1 first — measurement needs the source levels as baseline.";
        self->changed();
        co_return;
    }
    self->state_.isMeasuring = true;
    self->changed();
    const SourceInfo& source = *self->state_.sourceInfo;
    auto measuring = platform::onQueue(
        *self->queue_, self->work_.environment.mainThread,
        [folder = std::move(folder),
         levels = calibration::SourceLevels{source.peakDBFS, source.rmsDBFS, source.integratedLUFS},
         now = self->work_.environment.clock->date()](const std::stop_token& stop) {
            Measured all{calibration::measure(folder, levels, now, stop)};
            all.unreadFiles = calibration::unreadFiles(folder, all.result);
            return all;
        });
    self.reset();
    std::optional<Measured> all;
    std::exception_ptr stopped;
    std::string problem;
    try {
        all = co_await measuring;
    } catch (const platform::Stopped&) {
        stopped = std::current_exception();
    } catch (const std::exception& error) {
        problem = std::string("Couldn't measure: ") + error.what();
    }
    if (self = weak.lock(); self) {
        self->state_.isMeasuring = false;
        self->state_.problem = problem;
        if (all) self->state_.unreadFiles = std::move(all->unreadFiles);
        if (all && all->result.measurements.empty())
            self->state_.problem = "No files in this folder matched the VI/L/U naming pattern. Make sure FCP "
                                   "exported with role-suffixes preserved.";
        else if (all)
            self->state_.measurement = std::move(all->result);
        self->changed();
    }
    if (stopped) std::rethrow_exception(stopped);
}

platform::Task CalibrationController::save() {
    work_.notices.assertOnMainThread();
    return work_.running.add(store(work_.weak(this)));
}

platform::Task CalibrationController::store(Weak weak) {
    auto self = weak.lock();
    if (!self->state_.measurement) co_return;
    const CalibrationResult result = *self->state_.measurement;
    auto storing =
        platform::onQueue(*self->queue_, self->work_.environment.mainThread, [result]() -> std::string {
            try {
                calibration::save(result);
                return "";
            } catch (const std::exception& error) {
                return std::string("Save failed: ") + error.what();
            }
        });
    self.reset();
    const std::string problem = co_await storing;
    self = weak.lock();
    if (!self) co_return;
    self->state_.problem = problem;
    if (problem.empty()) self->state_.savedCalibration = result;
    self->changed();
}

} // namespace orvane
