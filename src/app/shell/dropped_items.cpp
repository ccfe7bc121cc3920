#include "app/shell/dropped_items.h"

#include "base/path.h"

#include <QMimeData>
#include <QUrl>

namespace tidwen {

std::vector<std::string> droppedPaths(const QMimeData& data) {
    std::vector<std::string> paths;
    const auto urls = data.urls();
    paths.reserve(static_cast<std::size_t>(urls.size()));
    for (const auto& url : urls)
        if (url.isLocalFile()) paths.push_back(url.toLocalFile().toStdString());
    return paths;
}

bool looksLikeApplication(const std::string& path) {
    return Path(path).lowercasedExtension() == "app";
}

} // namespace tidwen
