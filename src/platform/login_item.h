#pragma once

namespace tidwen {

/// Whether this program starts when its user logs in.
class LoginItem {
  public:
    virtual ~LoginItem() = default;
    virtual bool isEnabled() const = 0;
    /// False when it could not be changed. What is off can be turned off again.
    virtual bool setEnabled(bool enabled) = 0;
    /// Another program of Tidwen's is started at login, which excludes this one.
    virtual bool startsAnother() const { return false; }
};

} // namespace tidwen
