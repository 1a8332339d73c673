#include "OrvaneSyncCLI/Serve/Desk.h"
#include "OrvaneSyncCLI/Serve/Methods.h"
#include "OrvaneSyncCLI/SettingValues.h"
#include "OrvaneSyncCore/Services/Persistence/PresetManager.h"

namespace orvane::cli::rpc {

namespace {

using enum Parameter::Kind;

/// As its readers would find it: the stored value, else the default.
JSON setting(Desk& desk, const Call& call) {
    const std::string& key = call.text("key");
    if (auto value = desk.settings->value(key)) return std::move(*value);
    const SettingDescription* known = SettingsCatalogue::find(key);
    return known == nullptr ? JSON() : defaultInUse(*known);
}

/// Answers when the value is on the disk, or with why it is not.
platform::Task setSetting(Desk& desk, Call call, std::shared_ptr<JSON> /*result*/) {
    const std::string& key = call.text("key");
    const JSON value = call.any("value");
    const SettingDescription* known = SettingsCatalogue::find(key);
    if (known != nullptr && !value.isNull())
        if (const auto problem = whyUseless(*known, value)) throw Error(ErrorCode::invalidParams, *problem);
    co_await platform::written(desk.settings->set(key, value), *desk.mainThread);
}

platform::Task loadPreset(Desk& desk, Call call, std::shared_ptr<JSON> /*result*/) {
    co_await platform::written(PresetManager().load(call.text("name"), *desk.settings), *desk.mainThread);
}

JSON presets(Desk&, const Call&) {
    JSON::Array names;
    for (std::string& name : PresetManager().list()) names.emplace_back(std::move(name));
    return names;
}

} // namespace

std::vector<Method> settingMethods() {
    return {
        Method("setting", {{"key", text}}, setting),
        Method::later("setSetting", {{"key", text}, {"value", any, true}}, setSetting),
        Method("presets", {}, presets),
        Method("savePreset", {{"name", text}},
               [](Desk& desk, const Call& call) {
                   PresetManager().save(call.text("name"), *desk.settings);
                   return JSON();
               }),
        Method::later("loadPreset", {{"name", text}}, loadPreset),
        Method("deletePreset", {{"name", text}},
               [](Desk&, const Call& call) {
                   PresetManager().deletePreset(call.text("name"));
                   return JSON();
               }),
    };
}

} // namespace orvane::cli::rpc
