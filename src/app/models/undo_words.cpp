#include "app/models/undo_words.h"

#include "app/widgets/words.h"
#include "base/path.h"

#include <string>

namespace tidwen {

QStringList undoLines(const UndoReport& undo, bool runsJobs, const Texts& texts) {
    QStringList lines;
    for (const auto& failure : undo.failures)
        lines << shown(failure.text(texts));
    for (const auto& item : undo.renamed)
        lines << shown(texts.text("cli.undo.renamed %@", {item.string()}));
    if (runsJobs && undo.relaunchedJobs > 0)
        lines << words(texts, "report.undo.relaunched %lld", {std::to_string(undo.relaunchedJobs)});
    return lines;
}

} // namespace tidwen
