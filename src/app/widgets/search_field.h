#pragma once

#include <QString>

class QLineEdit;

namespace tidwen {

/// A field with a magnifying glass and a way to empty it.
QLineEdit* searchField(const QString& placeholder);

} // namespace tidwen
