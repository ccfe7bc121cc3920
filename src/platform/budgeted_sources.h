#pragma once

#include "base/path.h"
#include "platform/code_signatures.h"
#include "platform/read_budget.h"
#include "platform/receipts.h"

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// Code signatures for one run of a reader, read within its budget. Once that is exhausted all code appears
/// unsigned; the budget counts what was left out.
class BudgetedSignatures : public CodeSignatures {
  public:
    BudgetedSignatures(const CodeSignatures& signatures, const ReadBudget& budget)
        : signatures_(signatures), budget_(budget) {}

    CodeSignature read(const Path& bundle, const Path& executable) const override {
        if (budget_.isExhausted()) return budget_.leaveOut(), CodeSignature{};
        const ReadBudget::Work work(budget_);
        return signatures_.read(bundle, executable);
    }

  private:
    const CodeSignatures& signatures_;
    ReadBudget budget_;
};

/// The same for receipts: once the budget is exhausted none can be read.
class BudgetedReceipts : public Receipts {
  public:
    BudgetedReceipts(const Receipts& receipts, const ReadBudget& budget)
        : receipts_(receipts), budget_(budget) {}

    std::vector<std::string> packageIDs() const override { return receipts_.packageIDs(); }

    std::optional<Receipt> read(const std::string& packageID) const override {
        if (budget_.isExhausted()) return budget_.leaveOut(), std::nullopt;
        const ReadBudget::Work work(budget_);
        return receipts_.read(packageID);
    }

  private:
    const Receipts& receipts_;
    ReadBudget budget_;
};

} // namespace tidwen
