#pragma once

#include "base/texts.h"
#include "settings/app_tags.h"

#include <QString>
#include <string>
#include <vector>

class QWidget;

namespace tidwen {

class Sheet;

/// The tags of some applications, to be set and taken away; each change takes effect at once. `subject` names
/// the applications. `tags` and `texts` outlive the sheet.
Sheet* openTagsSheet(QWidget* window, AppTags& tags, const std::vector<std::string>& bundleIDs,
                     const QString& subject, const Texts& texts);

} // namespace tidwen
