#pragma once

#include <QIcon>

namespace tacla {

// The application's icon, drawn at whatever size is asked for.
QIcon applicationIcon();

}
