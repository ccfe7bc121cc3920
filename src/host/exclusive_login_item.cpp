#include "host/exclusive_login_item.h"

namespace tidwen {

namespace {

/// Also what is not on: it may wait for the user's consent, and would be on as soon as that is given.
bool turnOff(LoginItem& item) {
    return item.setEnabled(false);
}

} // namespace

bool ExclusiveLoginItem::isEnabled() const {
    return agent_->isEnabled() || application_->isEnabled();
}

bool ExclusiveLoginItem::startsAnother() const {
    return self_ == Program::application ? agent_->isEnabled() : application_->isEnabled();
}

bool ExclusiveLoginItem::setEnabled(bool enabled) {
    const bool isOfTerminal = self_ == Program::terminal;
    if (enabled && isOfTerminal && !application_->isEnabled()) return agent_->setEnabled(true);
    if (!turnOff(*agent_)) return false;
    if (enabled) return isOfTerminal || application_->setEnabled(true);
    return turnOff(*application_);
}

} // namespace tidwen
