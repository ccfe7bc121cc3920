#pragma once

#include "base/message.h"
#include "operations/removal_operation.h"

#include <optional>
#include <vector>

namespace tidwen {

/// How one operation of a removal went.
struct OperationResult {
    int operationID = 0;
    bool succeeded = false;
    std::optional<Message> failureReason; ///< absent on success

    friend bool operator==(const OperationResult&, const OperationResult&) = default;

    static OperationResult success(int id) { return {id, true, std::nullopt}; }
    static OperationResult failure(int id, Message reason) { return {id, false, std::move(reason)}; }
};

/// Carries out operations. Never fails as a whole: every problem, a dismissed authorisation prompt included,
/// is the result of the operations it concerns. Blocks; call it off the main thread.
class PrivilegedRunner {
  public:
    virtual ~PrivilegedRunner() = default;
    /// Exactly one result per operation, in their order.
    virtual std::vector<OperationResult> run(const std::vector<RemovalOperation>& operations) = 0;
    /// Each call may ask for a password, so all operations belong into one.
    virtual bool asksPerRun() const { return false; }
};

} // namespace tidwen
