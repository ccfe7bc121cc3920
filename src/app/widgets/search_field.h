#pragma once

#include <QString>

class QAbstractItemView;
class QKeyEvent;
class QLineEdit;

namespace tidwen {

/// A field with a magnifying glass and a way to empty it.
QLineEdit* searchField(const QString& placeholder);
/// Begins or goes on searching with a key that was typed elsewhere on the screen, and ends it with Escape.
/// False when the key means neither.
bool typeInto(QLineEdit& field, const QKeyEvent& event);
/// From the field to the list below it with the arrow. False when the key means something else.
bool leaveDown(const QLineEdit& field, QAbstractItemView& list, const QKeyEvent& event);

} // namespace tidwen
