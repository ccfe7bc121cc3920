#include "support/temporary_folder.h"
#include "posix/rooted_file_system.h"

#include "support/trees.h"

#include <cstdlib>
#include <stdexcept>
#include <unistd.h>

namespace tidwen::test {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (fs::temp_directory_path() / "tidwen-test-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
    path_ = fs::canonical(pattern);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    // Otherwise the contents of folders without write permission could not be deleted.
    for (auto it =
             fs::recursive_directory_iterator(path_, fs::directory_options::skip_permission_denied, ignored);
         !ignored && it != fs::recursive_directory_iterator(); it.increment(ignored))
        if (it->is_directory(ignored) && !it->is_symlink(ignored))
            fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(path_, ignored);
}

TemporaryVolume::TemporaryVolume() : files_(RootedFileSystem::open(folder_.path()).value()) {}

fs::path TemporaryVolume::host(std::string_view macPath) const {
    return folder_.path() / fs::path(macPath).relative_path();
}

void TemporaryVolume::write(std::string_view macPath, std::string_view content) const {
    writeFile(host(macPath), content);
}

void TemporaryVolume::makeFolder(std::string_view macPath) const {
    fs::create_directories(host(macPath));
}

void TemporaryVolume::link(std::string_view macPath, std::string_view target) const {
    const auto place = host(macPath);
    fs::create_directories(place.parent_path());
    fs::create_symlink(fs::path(target), place);
}

bool TemporaryVolume::exists(std::string_view macPath) const {
    return fs::symlink_status(host(macPath)).type() != fs::file_type::not_found;
}

std::string TemporaryVolume::read(std::string_view macPath) const {
    return contentOf(host(macPath));
}

} // namespace tidwen::test
