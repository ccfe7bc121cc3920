#include "removal/removal_subject.h"

namespace tidwen {

std::string RemovalSubject::text(const Texts& texts) const {
    const auto count = std::to_string(items);
    switch (kind) {
    case Kind::leftovers:
        return texts.text("confirm.subject.leftovers %lld", {count});
    case Kind::installers:
        return texts.text("confirm.subject.installers %lld", {count});
    case Kind::startupItems:
        return texts.text("confirm.subject.startup %lld", {count});
    case Kind::applications:
        break;
    }
    if (mode == RemovalMode::reset || goesWhole)
        return groups == 1 ? name : texts.text("report.subject.apps %lld", {std::to_string(groups)});
    const auto some = texts.text("report.subject.items %lld", {count});
    return groups == 1 ? texts.text("report.subject.of %@ %@", {some, name}) : some;
}

std::string_view RemovalSubject::kindName() const {
    switch (kind) {
    case Kind::leftovers:
        return "orphans";
    case Kind::installers:
        return "installers";
    case Kind::startupItems:
        return "startupItems";
    case Kind::applications:
        break;
    }
    return mode == RemovalMode::uninstall && !goesWhole ? "items" : tidwen::name(mode);
}

} // namespace tidwen
