#pragma once

#include "app/widgets/panel.h"

#include <functional>
#include <vector>

namespace tidwen {

/// A coloured band that says something and may offer one action.
struct NoticeWords {
    QString title;
    QString body = {};
    QString action = {};
    QString icon = {}; ///< that of the tone unless it is said
};
enum class NoticeTone { information, caution };
QWidget* makeNotice(NoticeTone tone, const NoticeWords& words, std::function<void()> onAction = {});

/// One with several ways on, below its words.
struct NoticeAction {
    QString words;
    std::function<void()> act;
    bool isEnabled = true;
    QString name = {}; ///< of the button's object
};
QWidget* makeNotice(NoticeTone tone, const NoticeWords& words, std::vector<NoticeAction> actions);

} // namespace tidwen
