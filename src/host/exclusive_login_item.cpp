#include "host/exclusive_login_item.h"

namespace tidwen {

namespace {

bool turnOff(LoginItem& item) {
    return !item.isEnabled() || item.setEnabled(false);
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
