#include "system/startup_item.h"

namespace tidwen {

std::string StartupItem::id() const {
    if (const auto* embedded = std::get_if<Embedded>(&source)) return embedded->bundle.string() + "#" + label;
    return std::get<Plist>(source).url.string();
}

const Path* StartupItem::plist() const {
    const auto* own = std::get_if<Plist>(&source);
    return own ? &own->url : nullptr;
}

std::string_view name(StartupItem::Owner::Kind kind) {
    using Kind = StartupItem::Owner::Kind;
    switch (kind) {
    case Kind::installed:
        return "installed";
    case Kind::related:
        return "related";
    case Kind::registered:
        return "registered";
    case Kind::program:
        return "program";
    case Kind::apple:
        return "apple";
    case Kind::missing:
        return "missing";
    case Kind::unknown:
        return "unknown";
    }
    return "unknown";
}

StartupSection section(const StartupItem& item) {
    using Kind = StartupItem::Owner::Kind;
    switch (item.owner.kind) {
    case Kind::installed:
    case Kind::related:
    case Kind::registered:
    case Kind::apple:
        return StartupSection::owned;
    case Kind::program:
    case Kind::unknown:
        return StartupSection::unattributed;
    case Kind::missing:
        return StartupSection::orphans;
    }
    return StartupSection::unattributed;
}

bool hasLostProgram(const StartupItem& item) {
    return item.owner.kind == StartupItem::Owner::Kind::missing && !item.programPath.value_or("").empty();
}

} // namespace tidwen
