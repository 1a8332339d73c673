#include "OrvaneSyncApp/ViewModels/Sheets/AtmoBuilderModel.h"

#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace orvane {

std::vector<AtmoCandidate> AtmoBuilderModel::Scene::chosen() const {
    std::vector<AtmoCandidate> taken;
    std::ranges::copy_if(candidates, std::back_inserter(taken),
                         [&](const AtmoCandidate& one) { return selection.contains(one.id); });
    return taken;
}

double AtmoBuilderModel::Scene::chosenSeconds() const {
    double sum = 0;
    for (const AtmoCandidate& one : candidates)
        if (selection.contains(one.id)) sum += one.durationSeconds();
    return sum;
}

AtmoBuilderModel::AtmoBuilderModel(const AtmoController::Candidates& found) {
    for (const auto& [key, candidates] : found) {
        if (candidates.empty()) continue;
        Scene scene{.key = key, .candidates = candidates, .selection = {}, .status = {}};
        double sum = 0;
        for (const AtmoCandidate& one : candidates) {
            if (sum >= preselectedSeconds) break;
            scene.selection.insert(one.id);
            sum += one.durationSeconds();
        }
        scenes_.push_back(std::move(scene));
    }
}

void AtmoBuilderModel::selectAll(std::size_t scene) {
    for (const AtmoCandidate& one : scenes_.at(scene).candidates) scenes_[scene].selection.insert(one.id);
}

void AtmoBuilderModel::clear(std::size_t scene) { scenes_.at(scene).selection.clear(); }

void AtmoBuilderModel::setSelected(std::size_t scene, const UUID& candidate, bool isSelected) {
    if (isSelected)
        scenes_.at(scene).selection.insert(candidate);
    else
        scenes_.at(scene).selection.erase(candidate);
}

void AtmoBuilderModel::setTarget(std::size_t scene, double seconds) {
    scenes_.at(scene).targetSeconds =
        std::clamp(std::round(seconds / targetStep) * targetStep, AtmoController::shortestTarget,
                   AtmoController::longestTarget);
}

std::optional<AtmoController::Order> AtmoBuilderModel::begin(std::size_t scene) {
    Scene& one = scenes_.at(scene);
    if (!one.canGenerate()) return std::nullopt;
    one.state = Scene::State::generating;
    one.status.clear();
    AtmoController::Order order;
    order.scene = one.key;
    order.candidates = one.chosen();
    order.targetDuration = one.targetSeconds;
    return order;
}

void AtmoBuilderModel::succeeded(std::size_t scene, const std::string& fileName) {
    scenes_.at(scene).state = Scene::State::done;
    scenes_[scene].status = "✓ Generated: " + fileName;
}

void AtmoBuilderModel::failed(std::size_t scene, const std::string& why) {
    scenes_.at(scene).state = Scene::State::failed;
    scenes_[scene].status = "✗ " + why;
}

std::string AtmoBuilderModel::startText(const AtmoCandidate& candidate) {
    return fineClockText(static_cast<double>(candidate.startSample) / candidate.sampleRate);
}

std::string AtmoBuilderModel::lengthText(const AtmoCandidate& candidate) {
    return formatted("%.1fs", candidate.durationSeconds());
}

std::string AtmoBuilderModel::levelText(const AtmoCandidate& candidate) {
    return formatted("%.1f dBFS", candidate.rmsDBFS());
}

} // namespace orvane
