#include "app/widgets/motion.h"

#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/style.h"

#include <QGuiApplication>
#include <QLayout>
#include <QPainter>
#include <QPropertyAnimation>
#include <QSettings>
#include <QVariantAnimation>
#include <QWidget>

namespace tidwen {

namespace {

constexpr int usualTime = 150;
constexpr int settlesFrom = 8; ///< pixels below its place

/// The ground, over what appears.
class Ground final : public QWidget {
  public:
    explicit Ground(QWidget& above) : QWidget(&above) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setGeometry(above.rect());
        auto* animation = new QVariantAnimation(this);
        animation->setDuration(motionTime());
        animation->setStartValue(1.0);
        animation->setEndValue(0.0);
        animation->setEasingCurve(QEasingCurve::InQuad); // of what lies below: out
        connect(animation, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
            opacity_ = value.toDouble();
            update();
        });
        connect(animation, &QVariantAnimation::finished, this, &QObject::deleteLater);
        animation->start();
        show();
        raise();
    }

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setOpacity(opacity_);
        painter.fillRect(rect(), colors()[Role::window]);
    }

  private:
    double opacity_ = 1;
};

bool wantsLessMotion() {
#ifdef Q_OS_MACOS
    return QSettings(QStringLiteral("apple.com"), QStringLiteral("universalaccess"))
        .value(QStringLiteral("reduceMotion"))
        .toBool();
#else
    return qEnvironmentVariableIntValue("GTK_ENABLE_ANIMATIONS") == 0
           && qEnvironmentVariableIsSet("GTK_ENABLE_ANIMATIONS");
#endif
}

} // namespace

int motionTime() {
    static const bool isSeen = QGuiApplication::platformName() != QStringLiteral("offscreen");
    return isSeen && !wantsLessMotion() ? usualTime : 0;
}

void fadeIn(QWidget& widget) {
    if (motionTime() > 0 && widget.isVisible()) new Ground(widget); // which deletes itself
}

void settle(QWidget& widget) {
    if (motionTime() == 0) return;
    auto* animation = new QPropertyAnimation(&widget, "pos", &widget);
    animation->setDuration(motionTime());
    animation->setStartValue(widget.pos() + QPoint(0, scaled(settlesFrom)));
    animation->setEndValue(widget.pos());
    animation->setEasingCurve(QEasingCurve::OutQuad);
    // Where it belongs may have changed meanwhile.
    QObject::connect(animation, &QAbstractAnimation::finished, &widget, [&widget] {
        if (auto* layout = widget.parentWidget()->layout()) {
            layout->invalidate();
            layout->activate();
        }
    });
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

} // namespace tidwen
