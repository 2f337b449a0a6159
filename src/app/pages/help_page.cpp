#include "app/pages/help_page.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

#include "app/widgets/text_of.h"
#include "datalog/chart/chart_keys.h"
#include "editors/mapgrid/keystroke_table.h"
#include "editors/mapgrid/workbench_keys.h"

namespace vela {

namespace {

// A read-only table of keys and what they do, as every key table of this page is laid out.
QTableWidget* KeyTable(const QString& name, QWidget* parent) {
  auto* table = new QTableWidget(0, 2, parent);
  table->setObjectName(name);
  table->verticalHeader()->hide();
  table->horizontalHeader()->setStretchLastSection(true);
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table->setFocusPolicy(Qt::NoFocus);
  table->verticalHeader()->setDefaultSectionSize(22);
  return table;
}

// Fills `table` with `headings` and `rows` (each a pair of texts: the keys, then the function).
template <class Row, class Rows>
void FillKeyTable(QTableWidget* table, const Row& headings, const Rows& rows,
                  std::string_view Row::*keys, std::string_view Row::*function) {
  table->setRowCount(static_cast<int>(rows.size()));
  table->setHorizontalHeaderLabels({TextOf(headings.*keys), TextOf(headings.*function)});
  for (int i = 0; i < static_cast<int>(rows.size()); ++i) {
    table->setItem(i, 0, new QTableWidgetItem(TextOf(rows[i].*keys)));
    table->setItem(i, 1, new QTableWidgetItem(TextOf(rows[i].*function)));
  }
  table->resizeColumnToContents(0);
}

// `WorkbenchKeys` (operations on many cells, the history, the comparison) and `ChartKeys` (the
// datalog chart's keys), shown beside the keystroke table.
QTableWidget* WorkbenchKeysTable(QWidget* parent) {
  QTableWidget* table = KeyTable("WorkbenchKeys", parent);
  table->setAccessibleName("Workbench keys");
  FillKeyTable(table, kWorkbenchKeyHeadings, kWorkbenchKeyRows, &WorkbenchKeyRow::keys,
               &WorkbenchKeyRow::function);
  return table;
}

QTableWidget* ChartKeysTable(QWidget* parent) {
  QTableWidget* table = KeyTable("ChartKeys", parent);
  table->setAccessibleName("Datalog chart keys");
  FillKeyTable(table, kChartKeyHeadings, kChartKeyRows, &ChartKeyRow::keys, &ChartKeyRow::function);
  return table;
}

}  // namespace

HelpPage::HelpPage(QWidget* options, QWidget* parent)
    : QWidget(parent), notice_(new QLabel(this)), keystrokes_(KeyTable("KeystrokeTable", this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  notice_->setObjectName("NoticeLabel");
  layout->addWidget(notice_);
  layout->addWidget(options);
  ShowKeystrokeTable(true);
  // The keystroke table and, beside it, the workbench keys over the datalog chart's keys.
  auto* tables = new QHBoxLayout;
  tables->addWidget(keystrokes_, 1);
  auto* more_keys = new QVBoxLayout;
  more_keys->addWidget(WorkbenchKeysTable(this), 1);
  more_keys->addWidget(ChartKeysTable(this), 1);
  tables->addLayout(more_keys, 1);
  layout->addLayout(tables, 1);
}

void HelpPage::ShowKeystrokeTable(bool english) {
  const KeystrokeRow& headings = english ? kKeystrokeHeadings : kKeystrokeHeadingsGerman;
  if (english) {
    FillKeyTable(keystrokes_, headings, kKeystrokeRows, &KeystrokeRow::keystroke,
                 &KeystrokeRow::function);
  } else {
    FillKeyTable(keystrokes_, headings, kKeystrokeRowsGerman, &KeystrokeRow::keystroke,
                 &KeystrokeRow::function);
  }
}

}  // namespace vela

#include "moc_help_page.cpp"
