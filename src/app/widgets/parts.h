#pragma once

#include "app/style/metrics.h"
#include "app/style/palette.h"

#include <QIcon>
#include <QString>
#include <functional>

class QBoxLayout;
class QLabel;
class QPushButton;
class QStackedLayout;
class QWidget;

/// The small parts that every screen is made of.
namespace tidwen::parts {

/// Plain text, whatever stands in it.
QLabel* label(const QString& text, Type type = Type::body, Role color = Role::text);
/// The same over several lines.
QLabel* paragraph(const QString& text, Type type = Type::body, Role color = Role::text);
/// A word on a coloured ground.
QLabel* badge(const QString& text, Role color, Role ground);
QPushButton* button(const QString& text, std::function<void()> onClick, const QString& icon = {});
/// The one main action of a screen.
QPushButton* primaryButton(const QString& text, std::function<void()> onClick);
/// A label that shows one of our icons.
QLabel* picture(const QString& icon, Role color, int size = 18);
/// Without margins of its own.
QBoxLayout* column(QWidget* parent = nullptr, int spacing = 0);
QBoxLayout* row(QWidget* parent = nullptr, int spacing = 0);
/// In the middle of the line. An alignment would do the same, and cut words that need a second line.
QBoxLayout* centred(QWidget* widget);
void clear(QBoxLayout& layout);
/// Shows one of the pages of a screen. The focus, if it is on the screen or the page before, goes there.
void turnTo(QStackedLayout& pages, QWidget& screen, QWidget* page);

} // namespace tidwen::parts
