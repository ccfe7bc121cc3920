#include "base/byte_sum.h"

#include "base/byte_count.h"

namespace tidwen {

std::string sizeText(std::int64_t bytes, bool isPartial, const Texts& texts) {
    auto text = formatByteCount(bytes, texts.language());
    return isPartial ? texts.text("size.over %@", {text}) : text;
}

std::string sizeText(const ByteSum& sum, const Texts& texts) {
    return sizeText(sum.bytes, sum.isPartial, texts);
}

} // namespace tidwen
