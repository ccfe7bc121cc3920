#include "system/uninstall_service.h"

#include "base/path.h"
#include "base/uuid.h"

namespace tidwen {

UninstallService::Outcome UninstallService::handOver(const std::vector<Path>& selection) {
    UninstallRequest request;
    for (const auto& path : selection)
        if (path.lowercasedExtension() == "app") request.paths.push_back(path.string());
    if (request.paths.empty()) {
        log_.write(LogLevel::debug, "Service invoked on a selection with no app bundle in it");
        return Outcome::noApplication;
    }
    if (!inbox_.post(request, Uuid::random().string())) return Outcome::notPosted;
    log_.info("Service handed over {} app(s)", request.paths.size());
    if (drain_) drain_();
    return Outcome::handedOver;
}

} // namespace tidwen
