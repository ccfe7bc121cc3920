#pragma once

#include "app/style/palette.h"
#include "base/path.h"
#include "base/texts.h"
#include "quarantine/undo_service.h"
#include "removal/removal_flow_model.h"
#include "removal/removal_report.h"
#include "removal/removal_texts.h"
#include "removal/stay_reason.h"

#include <QWidget>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

class QBoxLayout;
class QLabel;
class QPushButton;

namespace tidwen {

/// What a removal came to, and the way back.
class ReportScreen final : public QWidget {
  public:
    ReportScreen(RemovalFlowModel& flow, const Texts& texts, std::function<void(const Path&)> reveal,
                 std::function<void()> openPrivacy);

    void update();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    struct Line {
        const char* icon;
        Role color;
        QString title;
        QString body;
    };
    QWidget* makeFooter();
    void showMark(const char* icon, Role color, Role ground);
    void addLine(QBoxLayout& card, const Line& line, QPushButton* button = nullptr);
    void addLines(QBoxLayout& card, Line line, const std::vector<std::string>& bodies);
    void addFailures(QBoxLayout& card, const RemovalReport& report, const ReportTexts& said);
    void addStaying(QBoxLayout& card, const stage::Report& report);
    void showReport(const stage::Report& report);
    void showCard(const stage::Report& report);
    void showUndo(const UndoReport& undo);
    QString more(std::size_t count) const; ///< that the screen does not name
    QString whyItStays(const StayingTrace& item) const;
    QString text(const char* key, const std::vector<std::string>& arguments = {}) const;

    RemovalFlowModel& flow_;
    const Texts& texts_;
    std::function<void(const Path&)> reveal_;
    std::function<void()>
        openPrivacy_; ///< none on a volume: no settings to open, and jobs start with its Mac
    QLabel* mark_ = nullptr;
    QLabel* title_ = nullptr;
    QLabel* counts_ = nullptr;
    QBoxLayout* cards_ = nullptr;
    QPushButton* undo_ = nullptr;
    QPushButton* done_ = nullptr;
};

} // namespace tidwen
