#pragma once

#include "base/path.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"

namespace tidwen {

/// Reads signatures from the Mach-O file itself; a script's from "Contents/_CodeSignature".
class FileCodeSignatures : public CodeSignatures {
  public:
    explicit FileCodeSignatures(const FileSystem& files) : files_(files) {}
    CodeSignature read(const Path& bundle, const Path& executable) const override;

  private:
    const FileSystem& files_;
};

} // namespace tidwen
