#include "Tacla/MainWindow/SyncBadge.h"

#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/PageContents.h"
#include "Tacla/MainWindow/QtValues.h"
#include "Tacla/MainWindow/RefreshWhileVisible.h"

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
