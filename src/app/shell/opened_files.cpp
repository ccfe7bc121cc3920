#include "app/shell/opened_files.h"

#include <QCoreApplication>
#include <QFileOpenEvent>
#include <utility>

namespace tidwen {

OpenedFiles::OpenedFiles(std::function<void(std::vector<std::string> paths)> take) : take_(std::move(take)) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool OpenedFiles::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::FileOpen) return QObject::eventFilter(watched, event);
    const auto file = static_cast<QFileOpenEvent*>(event)->file();
    if (file.isEmpty()) return true;
    if (gathered_.empty())
        QMetaObject::invokeMethod(
            this, [this] { deliver(); }, Qt::QueuedConnection);
    gathered_.push_back(file.toStdString());
    return true;
}

void OpenedFiles::deliver() {
    take_(std::exchange(gathered_, {}));
}

} // namespace tidwen
