#pragma once

#include "app/widgets/panel.h"

#include <functional>

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

} // namespace tidwen
