#pragma once

#include "base/message.h"
#include "operations/removal_operation.h"

#include <optional>
#include <vector>

namespace tidwen {

/// The result of one operation of a removal.
struct OperationResult {
    int operationID = 0;
    bool succeeded = false;
    std::optional<Message> failureReason; ///< absent on success

    friend bool operator==(const OperationResult&, const OperationResult&) = default;

    static OperationResult success(int id) { return {id, true, std::nullopt}; }
    static OperationResult failure(int id, Message reason) { return {id, false, std::move(reason)}; }
};

/// Runs operations. Never fails as a whole: every problem, including a dismissed authorization prompt, is a
/// result of the operations concerned. Blocks; not for the main thread.
class PrivilegedRunner {
  public:
    virtual ~PrivilegedRunner() = default;
    /// Returns exactly one result per operation, in order.
    virtual std::vector<OperationResult> run(const std::vector<RemovalOperation>& operations) = 0;
    /// Each call may ask for a password, so pass all operations in one call.
    virtual bool asksPerRun() const { return false; }
};

} // namespace tidwen
