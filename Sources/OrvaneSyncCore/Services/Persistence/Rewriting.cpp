#include "OrvaneSyncCore/Services/Persistence/Rewriting.h"

#include "OrvaneSyncCore/Models/JSONCoding.h"

namespace orvane {

namespace {

/// Values may be written in another form, as both were understood.
bool says(const JSON& rewritten, const JSON& stored) {
    if (const auto* members = stored.members()) {
        for (const auto& [key, value] : *members) {
            if (value.isNull()) continue;
            const JSON* counterpart = rewritten.find(key);
            if (counterpart == nullptr || !says(*counterpart, value)) return false;
        }
        return rewritten.isObject();
    }
    const auto *elements = stored.elements(), *others = rewritten.elements();
    if (elements == nullptr) return true;
    if (others == nullptr || elements->size() != others->size()) return false;
    for (std::size_t i = 0; i < elements->size(); ++i)
        if (!says((*others)[i], (*elements)[i])) return false;
    return true;
}

} // namespace

bool losesSomething(const std::string& stored, const std::string& rewritten) {
    return stored != rewritten && !says(JSON::parse(rewritten), JSON::parse(stored));
}

} // namespace orvane
