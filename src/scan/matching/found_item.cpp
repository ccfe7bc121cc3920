#include "scan/matching/found_item.h"

namespace tidwen {

FoundItem::FoundItem(const FileInfo& found, Part part)
    : part_(part),
      kind_(found.kind),
      device_(found.device),
      inode_(found.inode),
      created_(found.createdNanoseconds),
      size_(found.size),
      modified_(found.modifiedNanoseconds) {}

bool FoundItem::isStill(const FileInfo& now) const {
    if (now.kind != kind_) return false;
    if (part_ == Part::kind) return true;
    if (now.device != device_ || now.inode != inode_ || now.createdNanoseconds != created_) return false;
    return part_ == Part::item || (now.size == size_ && now.modifiedNanoseconds == modified_);
}

} // namespace tidwen
