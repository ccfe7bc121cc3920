#include "app/screens/settings/settings_sheet.h"

#include "app/screens/settings/about_page.h"
#include "app/screens/settings/general_page.h"
#include "app/screens/settings/protected_page.h"
#include "app/screens/settings/trash_page.h"
#include "app/shell/sidebar_item.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/style.h"
#include "app/widgets/notice.h"
#include "app/widgets/parts.h"
#include "app/widgets/words.h"
#include "base/language.h"
#include "base/texts.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QScrollArea>

namespace tidwen {

namespace {

constexpr int sheetWidth = 640;
constexpr int sheetHeight = 500;
constexpr int railWidth = 164;
constexpr int sheetRadius = 14;

/// The ground of the tabs: the near side of the sheet, with its corners.
class Rail final : public QWidget {
  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        auto wide = QRectF(rect()).adjusted(.5, .5, 0, -.5);
        if (isRightToLeft())
            wide.adjust(-sheetRadius, 0, -.5, 0);
        else
            wide.adjust(0, 0, sheetRadius, 0);
        painter.setPen(colors()[Role::line]);
        painter.setBrush(colors()[Role::sidebar]);
        painter.drawRoundedRect(wide, sheetRadius, sheetRadius);
        const auto edge = isRightToLeft() ? rect().left() : rect().right();
        painter.drawLine(edge, 0, edge, height());
    }
};

} // namespace

SettingsSheet::SettingsSheet(QWidget* window, OwnServices& own, MacFacts mac, const Texts& texts)
    : Sheet(window, words(texts, "settings.title"), sheetWidth),
      own_(own),
      mac_(std::move(mac)),
      texts_(texts) {
    own_.settings().reload(); // what was changed elsewhere in this window
    content().setContentsMargins(0, 0, 0, 0);
    auto* columns = new QWidget;
    columns->setFixedHeight(qMin(scaled(sheetHeight), window->height() - scaled(48)));
    auto* row = parts::row(columns);
    row->addWidget(makeRail());
    row->addWidget(makeMain(), 1);
    content().addWidget(columns);
    following_.push_back(own_.settings().problem.observe([this](const auto&) { showFaults(); }));
    following_.push_back(own_.settings().failure.observe([this](const auto&) { showFaults(); }));
    showFaults();
    go(Tab::general);
}

QWidget* SettingsSheet::makeRail() {
    struct Entry {
        Tab tab;
        const char* icon;
        const char* key;
    };
    constexpr Entry entries[] = {{Tab::general, "gear", "settings.tab.general"},
                                 {Tab::permissions, "shield", "settings.tab.permissions"},
                                 {Tab::trash, "trash", "settings.tab.trash"},
                                 {Tab::protectedApps, "lock", "settings.tab.protected"},
                                 {Tab::about, "info", "settings.tab.about"}};
    auto* rail = new Rail;
    rail->setMinimumWidth(scaled(railWidth));
    rail->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred); // as wide as the longest word
    auto* layout = parts::column(rail, scaled(2));
    layout->setContentsMargins(scaled(10), scaled(18), scaled(10), scaled(10));
    for (const auto& entry : entries) {
        auto* item = new SidebarItem(QString::fromLatin1(entry.icon), words(texts_, entry.key));
        item->setObjectName(QString::fromLatin1(entry.key));
        item->setCheckable(true);
        connect(item, &QAbstractButton::clicked, this, [this, tab = entry.tab] { go(tab); });
        tabs_[entry.tab] = item;
        layout->addWidget(item);
    }
    layout->addStretch(1);
    return rail;
}

QWidget* SettingsSheet::makeMain() {
    auto* main = new QWidget;
    auto* layout = parts::column(main, scaled(12));
    layout->setContentsMargins(scaled(24), scaled(22), scaled(24), scaled(20));
    faults_ = parts::column(nullptr, scaled(6));
    layout->addLayout(faults_);
    page_ = new QScrollArea;
    page_->setFrameShape(QFrame::NoFrame);
    page_->setWidgetResizable(true);
    page_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    page_->setFocusPolicy(Qt::NoFocus);
    page_->viewport()->setAutoFillBackground(false);
    layout->addWidget(page_, 1);
    auto* buttons = parts::row(nullptr);
    buttons->addStretch(1);
    buttons->addWidget(parts::primaryButton(words(texts_, "permissions.doneButton"), [this] { cancel(); }));
    layout->addLayout(buttons);
    return main;
}

void SettingsSheet::go(Tab tab) {
    tab_ = tab;
    for (const auto& [each, item] : tabs_)
        item->setChecked(each == tab);
    page_->setWidget(makePage(tab)); // which deletes the one before
    page_->widget()->setAutoFillBackground(false);
}

QWidget* SettingsSheet::makePage(Tab tab) {
    switch (tab) {
    case Tab::general:
        return new GeneralPage(own_.settings(), texts_);
    case Tab::permissions:
        return new PermissionsPage(mac_.own, own_.notifications(), texts_, mac_.openPane);
    case Tab::trash:
        return new TrashPage(own_.settings(), mac_.own, own_.notifications(), texts_, [this] {
            QMetaObject::invokeMethod(
                this, [this] { go(Tab::permissions); }, Qt::QueuedConnection);
        });
    case Tab::protectedApps:
        return new ProtectedPage(own_.settings(), mac_.installed, texts_);
    case Tab::about:
        break;
    }
    return new AboutPage(own_, texts_);
}

/// Settings that cannot be read are not written either: they may hold what is protected.
void SettingsSheet::showFaults() {
    parts::clear(*faults_);
    const auto& problem = own_.settings().problem.get();
    const auto& fault = problem ? problem : own_.settings().failure.get();
    if (fault) faults_->addWidget(makeNotice(NoticeTone::caution, {shown(texts_.text(*fault))}));
}

} // namespace tidwen
