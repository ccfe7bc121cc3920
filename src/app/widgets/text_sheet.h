#pragma once

#include <QString>
#include <QStringList>

class QWidget;

namespace tidwen {

/// Shows lines to read and to copy, as many as there are.
void openTextSheet(QWidget* window, const QString& title, const QStringList& lines, const QString& done);

} // namespace tidwen
