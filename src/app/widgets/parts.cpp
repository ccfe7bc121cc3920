#include "app/widgets/parts.h"

#include "app/style/icons.h"
#include "app/style/style.h"

#include <QApplication>
#include <QBoxLayout>
#include <QEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStackedLayout>
#include <QStyle>
#include <optional>

namespace tidwen::parts {

namespace {

/// Keeps its role when the appearance changes.
class RoleLabel final : public QLabel {
  public:
    explicit RoleLabel(Role role, std::optional<Role> ground = {}) : role_(role), ground_(ground) { dye(); }
    void showIcon(const QString& name, int size) {
        icon_ = name;
        size_ = size;
        dye();
    }

  protected:
    void changeEvent(QEvent* event) override {
        QLabel::changeEvent(event);
        if (event->type() == QEvent::StyleChange) dye();
    }

    void paintEvent(QPaintEvent* event) override {
        if (ground_) {
            QPainter painter(this);
            fillRounded(painter, rect(), colors()[*ground_], scaled(5));
        }
        QLabel::paintEvent(event);
    }

  private:
    void dye() {
        auto own = palette();
        own.setColor(QPalette::WindowText, colors()[role_]);
        setPalette(own);
        if (!icon_.isEmpty())
            setPixmap(iconPixmap(icon_, scaled(size_), colors()[role_], devicePixelRatioF()));
    }

    Role role_;
    std::optional<Role> ground_;
    QString icon_;
    int size_ = 0;
};

} // namespace

QLabel* badge(const QString& text, Role color, Role ground) {
    auto* result = new RoleLabel(color, ground);
    result->setTextFormat(Qt::PlainText);
    result->setText(text);
    result->setFont(textFont(Type::section));
    result->setMargin(scaled(3));
    return result;
}

QLabel* label(const QString& text, Type type, Role color) {
    auto* result = new RoleLabel(color);
    result->setTextFormat(Qt::PlainText);
    result->setText(text);
    // At the edge where one begins to read, also what is written the other way: an identifier, a path.
    result->setAlignment(QStyle::visualAlignment(QGuiApplication::layoutDirection(), Qt::AlignLeft)
                         | Qt::AlignVCenter);
    result->setFont(textFont(type));
    return result;
}

QLabel* paragraph(const QString& text, Type type, Role color) {
    auto* result = label(text, type, color);
    result->setWordWrap(true);
    return result;
}

QPushButton* button(const QString& text, std::function<void()> onClick, const QString& icon) {
    auto* result = new QPushButton(text);
    result->setAutoDefault(true); // Return presses the button that has the focus
    if (!icon.isEmpty()) {
        result->setIcon(controlIcon(icon, Role::text));
        result->setIconSize(QSize(scaled(16), scaled(16)));
    }
    QObject::connect(result, &QPushButton::clicked, result, [onClick = std::move(onClick)] { onClick(); });
    return result;
}

QPushButton* primaryButton(const QString& text, std::function<void()> onClick) {
    auto* result = button(text, std::move(onClick));
    makePrimary(*result);
    result->setFont(textFont(Type::strong));
    return result;
}

QLabel* picture(const QString& icon, Role color, int size) {
    auto* result = new RoleLabel(color);
    result->showIcon(icon, size);
    return result;
}

namespace {

QBoxLayout* bare(QBoxLayout* layout, int spacing) {
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing);
    return layout;
}

} // namespace

QBoxLayout* column(QWidget* parent, int spacing) {
    return bare(new QBoxLayout(QBoxLayout::TopToBottom, parent), spacing);
}

QBoxLayout* row(QWidget* parent, int spacing) {
    return bare(new QBoxLayout(QBoxLayout::LeftToRight, parent), spacing);
}

QBoxLayout* centred(QWidget* widget) {
    auto* line = row();
    line->addStretch(1);
    line->addWidget(widget, 100);
    line->addStretch(1);
    return line;
}

void turnTo(QStackedLayout& pages, QWidget& screen, QWidget* page) {
    const auto* focused = QApplication::focusWidget();
    const auto* before = pages.currentWidget();
    const bool isHere = focused && (focused == &screen || focused == before || before->isAncestorOf(focused));
    pages.setCurrentWidget(page); // which would give the focus to the next widget of the window
    if (isHere) page->setFocus();
}

void clear(QBoxLayout& layout) {
    while (auto* item = layout.takeAt(0)) {
        if (auto* widget = item->widget()) {
            widget->hide(); // at once; what is on its way to it still finds it
            widget->deleteLater();
        } else if (auto* inner = dynamic_cast<QBoxLayout*>(item->layout())) {
            clear(*inner);
        }
        delete item;
    }
}

} // namespace tidwen::parts
