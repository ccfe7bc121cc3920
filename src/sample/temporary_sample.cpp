#include "sample/temporary_sample.h"

#include "base/message.h"
#include "base/uuid.h"
#include "platform/file_system.h"
#include "posix/file_faults.h"
#include "posix/file_lock.h"
#include "posix/item_description.h"
#include "posix/tree_removal.h"

#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tidwen {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view prefix = "tidwen-sample-";

Descriptor openFolder(const fs::path& folder) {
    return Descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

void removeFolder(const fs::path& folder) {
    const auto above = openFolder(folder.parent_path());
    if (above.isOpen()) (void)removeTree(above.get(), folder.filename().c_str());
}

/// Of processes that were killed: nobody holds their lock any more.
void removeAbandoned(const fs::path& temporary) {
    std::error_code failure;
    for (auto entry = fs::directory_iterator(temporary, failure);
         !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
        const auto& place = entry->path();
        if (!place.filename().string().starts_with(prefix)) continue;
        const auto folder = openFolder(place);
        const auto item = statOpen(folder.get());
        if (item && item->st_uid == ::geteuid() && tryLock(folder.get()) == 0) removeFolder(place);
    }
}

} // namespace

TemporarySample::TemporarySample(const fs::path& folder)
    : folder_(folder), root_(folder / "Sample"), lock_(openFolder(folder)) {
    (void)tryLock(lock_.get());
}

TemporarySample::~TemporarySample() {
    removeFolder(folder_);
}

tl::expected<std::unique_ptr<TemporarySample>, SampleError> TemporarySample::write() {
    std::error_code failure;
    const auto temporary = fs::canonical(fs::temp_directory_path(failure), failure);
    if (failure)
        return tl::unexpected(
            SampleError{true,
                        {"cli.sample.failed %@ %@",
                         {temporary.string(), Message{std::string(failureKey(faultOf(failure.value())))}}}});
    removeAbandoned(temporary);
    const auto folder = temporary / (std::string(prefix) + Uuid::random().string());
    (void)::mkdir(folder.c_str(), S_IRWXU); // where it cannot be made, nothing can be written
    std::unique_ptr<TemporarySample> sample(new TemporarySample(folder));
    if (const auto written = writeSampleVolume(sample->root()); !written)
        return tl::unexpected(written.error());
    return sample;
}

} // namespace tidwen
