#include "app/widgets/workbench_keys_table.h"

#include <QHeaderView>

#include "editors/mapgrid/workbench_keys.h"

namespace vela {

namespace {

QString KeyText(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QTableWidget* BuildWorkbenchKeysTable(QWidget* parent) {
  auto* table = new QTableWidget(static_cast<int>(kWorkbenchKeyRows.size()), 2, parent);
  table->setObjectName("WorkbenchKeys");
  table->setAccessibleName("Workbench keys");
  table->verticalHeader()->hide();
  table->horizontalHeader()->setStretchLastSection(true);
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table->setFocusPolicy(Qt::NoFocus);
  table->verticalHeader()->setDefaultSectionSize(22);
  table->setHorizontalHeaderLabels(
      {KeyText(kWorkbenchKeyHeadings.keys), KeyText(kWorkbenchKeyHeadings.function)});
  for (int i = 0; i < static_cast<int>(kWorkbenchKeyRows.size()); ++i) {
    table->setItem(i, 0, new QTableWidgetItem(KeyText(kWorkbenchKeyRows[i].keys)));
    table->setItem(i, 1, new QTableWidgetItem(KeyText(kWorkbenchKeyRows[i].function)));
  }
  table->resizeColumnToContents(0);
  return table;
}

}  // namespace vela
