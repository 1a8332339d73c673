#pragma once

#include "OrvaneSyncCore/Models/RawValues.h"
#include "Platform/SettingsStore.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The store seen through the catalogue: a key that is absent reads as the catalogue's default, so that a
/// default is stated in one place. For keys of the catalogue that have one; anything else is a programmer's
/// error. Any thread; the store must outlive it.
class SettingsReader {
  public:
    explicit SettingsReader(const platform::SettingsStore& store) : store_(store) {}

    bool boolean(std::string_view key) const;
    /// Cut to the range of the type.
    int integer(std::string_view key) const;
    double number(std::string_view key) const;
    std::string text(std::string_view key) const;
    std::optional<std::string> textIfPresent(std::string_view key) const { return store_.textIfPresent(key); }
    /// The case whose stored text the key holds, else that of the default.
    template <RawValued E>
    E rawValued(std::string_view key) const {
        return fromRawValue<E>(text(key)).value_or(*fromRawValue<E>(defaultText(key)));
    }

  private:
    static std::string defaultText(std::string_view key);

    const platform::SettingsStore& store_;
};

} // namespace orvane
