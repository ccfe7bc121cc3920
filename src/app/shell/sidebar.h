#pragma once

#include "app/shell/place.h"
#include "app/widgets/panel.h"
#include "base/texts.h"

#include <functional>
#include <map>
#include <vector>

class QAbstractButton;
class QBoxLayout;
class QMenu;

namespace tidwen {

class SidebarItem;

/// The places of one Mac, and which Mac it is.
class Sidebar final : public Panel {
  public:
    struct Mac {
        QString name;
        QString second; ///< whose, and of what kind
    };
    /// `systems` offers other Macs to open.
    Sidebar(const Texts& texts, const Mac& mac, QMenu* systems, std::function<void(Place)> go,
            std::function<void()> openSettings);

    void choose(Place place);
    void setCount(Place place, std::size_t count); ///< nothing is shown for 0
    /// Marks the system as one of which not everything can be seen; no words: no mark.
    void warn(const QString& words);
    void setNarrow(bool isNarrow); ///< icons only

  private:
    QWidget* makeSystemTile(const Mac& mac, QMenu* systems);
    void addPlace(Place place, const char* icon, const char* key);

    const Texts& texts_;
    std::function<void(Place)> go_;
    QBoxLayout* places_ = nullptr;
    std::map<Place, SidebarItem*> items_;
    std::vector<QWidget*> wideOnly_;
    SidebarItem* system_ = nullptr;
    bool isNarrow_ = false;
    SidebarItem* settings_ = nullptr;
};

} // namespace tidwen
