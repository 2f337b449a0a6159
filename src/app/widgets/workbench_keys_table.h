// `WorkbenchKeys`: the Help page's table of the workbench keys (operations on many cells, the
// edit history, the comparison), shown beside the keystroke table.
#pragma once

#include <QTableWidget>

namespace vela {

QTableWidget* BuildWorkbenchKeysTable(QWidget* parent);

}  // namespace vela
