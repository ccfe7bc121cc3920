#include "app/shell/opened_files.h"

#include <QCoreApplication>
#include <QFileOpenEvent>

namespace tidwen {

OpenedFiles::OpenedFiles(std::function<void(std::vector<std::string> paths)> take) : take_(std::move(take)) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool OpenedFiles::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::FileOpen) return QObject::eventFilter(watched, event);
    const auto file = static_cast<QFileOpenEvent*>(event)->file();
    if (!file.isEmpty()) take_({file.toStdString()});
    return true;
}

} // namespace tidwen
