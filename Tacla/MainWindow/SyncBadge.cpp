#include "Tacla/MainWindow/SyncBadge.h"

#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/QtText.h"
#include "Tacla/MainWindow/RefreshWhileVisible.h"
#include "Tacla/MainWindow/SyncBadgeContent.h"
#include "Tacla/MainWindow/TimeTexts.h"

namespace tacla {

dravel::SidebarBadge* makeSyncBadge(AppModel& model, QWidget* parent) {
    auto* badge = new dravel::SidebarBadge(parent);
    badge->setObjectName(QStringLiteral("syncBadge"));
    const auto refresh = [badge, &model] {
        const auto content = syncBadge(model.state(), shortTime);
        badge->setContent({.symbol = content.symbol,
                           .title = toQt(content.title),
                           .subtitle = toQt(content.subtitle),
                           .trouble = content.trouble,
                           .busy = content.syncing});
    };
    new RefreshWhileVisible(*badge, model.changed, refresh);
    refresh();
    return badge;
}

}
