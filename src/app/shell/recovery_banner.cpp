#include "app/shell/recovery_banner.h"

#include "app/models/undo_words.h"
#include "app/style/metrics.h"
#include "app/widgets/notice.h"
#include "app/widgets/parts.h"
#include "app/widgets/words.h"
#include "quarantine/manifest_subject.h"
#include "quarantine/not_undone.h"

#include <QBoxLayout>
#include <QStringList>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {

RecoveryBanner::RecoveryBanner(StartupChores& chores, const Texts& texts, bool runsJobs,
                               std::function<void(const Path&)> reveal)
    : chores_(chores),
      texts_(texts),
      runsJobs_(runsJobs),
      reveal_(std::move(reveal)),
      notices_(parts::column(this, scaled(6))),
      following_(chores.changed.connect([this](ChoresChange) { update(); })) {
    notices_->setContentsMargins(scaled(24), scaled(12), scaled(24), 0);
    update();
}

void RecoveryBanner::update() {
    parts::clear(*notices_);
    const auto& undo = chores_.undoReport();
    if (undo && undo->failures.empty()) showUndone(*undo);
    if (const auto notice = chores_.recoveryNotice()) showNotice(*notice);
    if (const auto& purged = chores_.purged())
        notices_->addWidget(makeNotice(NoticeTone::information,
                                       {shown(texts_.text(*purged)), {}, text("window.dismiss")},
                                       [this] { chores_.dismissPurged(); }));
    setVisible(notices_->count() > 0);
}

void RecoveryBanner::showUndone(const UndoReport& undo) {
    auto lines = undoLines(undo, runsJobs_, texts_);
    if (const auto lost = describe(undo.lost)) lines.prepend(QString::fromStdString(texts_.text(*lost)));
    const auto& apps = chores_.undoneApps();
    const bool isSame = isAsBefore(undo) && apps.size() <= mostNamedApps;
    notices_->addWidget(makeNotice(
        isSame ? NoticeTone::information : NoticeTone::caution,
        {isSame ? text("home.recovery.undone %@", {listed(apps, &AppRecord::name, texts_).toStdString()})
                : text("report.undo.complete"),
         firstLines(lines, mostNoticeLines, texts_), text("window.dismiss")},
        [this] { chores_.forgetUndo(); }));
}

void RecoveryBanner::showNotice(const RecoveryNotice& notice) {
    QStringList lines = {text("home.recovery.detail")};
    for (const auto& item : notice.unsettled)
        lines << shown(item) + QStringLiteral(": ") + text("failure.moveUnfinished");
    lines += failures();
    const bool isWhole = lines.size() == 1;
    const bool isUndoing = chores_.isUndoing();
    notices_->addWidget(makeNotice(
        isWhole ? NoticeTone::information : NoticeTone::caution,
        {text("home.recovery.title %@", {shown(subjectText(notice.manifest, texts_)).toStdString()}),
         firstLines(lines, mostNoticeLines, texts_)},
        {{text(isUndoing ? "home.recovery.restoring" : "home.recovery.undo"),
          [this] { chores_.undoRecovered(); }, !isUndoing, QStringLiteral("undo recovered")},
         {text("home.recovery.reveal"), [this, root = notice.manifest.quarantineRoot] { reveal_(root); }},
         {text("window.dismiss"),
          [this] {
              chores_.dismissRecoveryNotice();
              chores_.forgetUndo();
          },
          !isUndoing, QStringLiteral("dismiss recovered")}}));
}

QStringList RecoveryBanner::failures() const {
    QStringList lines;
    if (const auto error = chores_.errorMessage()) lines << shown(*error);
    const auto& undo = chores_.undoReport();
    if (!undo || undo->failures.empty()) return lines;
    lines << text("home.recovery.undoneIncomplete");
    return lines + undoLines(*undo, runsJobs_, texts_);
}

QString RecoveryBanner::text(const char* key, const std::vector<std::string>& arguments) const {
    return words(texts_, key, arguments);
}

} // namespace tidwen
