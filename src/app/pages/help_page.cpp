#include "app/pages/help_page.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

#include "app/widgets/chart_keys_table.h"
#include "app/widgets/text_of.h"
#include "app/widgets/workbench_keys_table.h"
#include "editors/mapgrid/keystroke_table.h"

namespace vela {

HelpPage::HelpPage(QWidget* options, QWidget* parent)
    : QWidget(parent), notice_(new QLabel(this)), keystrokes_(new QTableWidget(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  notice_->setObjectName("NoticeLabel");
  layout->addWidget(notice_);
  layout->addWidget(options);
  keystrokes_->setObjectName("KeystrokeTable");
  keystrokes_->setColumnCount(2);
  keystrokes_->verticalHeader()->hide();
  keystrokes_->horizontalHeader()->setStretchLastSection(true);
  keystrokes_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  keystrokes_->setFocusPolicy(Qt::NoFocus);
  keystrokes_->verticalHeader()->setDefaultSectionSize(22);
  ShowKeystrokeTable(true);
  // The keystroke table and, beside it, the workbench keys over the datalog chart's keys.
  auto* tables = new QHBoxLayout;
  tables->addWidget(keystrokes_, 1);
  auto* more_keys = new QVBoxLayout;
  more_keys->addWidget(BuildWorkbenchKeysTable(this), 1);
  more_keys->addWidget(BuildChartKeysTable(this), 1);
  tables->addLayout(more_keys, 1);
  layout->addLayout(tables, 1);
}

void HelpPage::ShowKeystrokeTable(bool english) {
  const KeystrokeRow& headings = english ? kKeystrokeHeadings : kKeystrokeHeadingsGerman;
  auto show = [this, &headings](const auto& rows) {
    keystrokes_->setRowCount(static_cast<int>(rows.size()));
    keystrokes_->setHorizontalHeaderLabels({TextOf(headings.keystroke), TextOf(headings.function)});
    for (int i = 0; i < static_cast<int>(rows.size()); ++i) {
      keystrokes_->setItem(i, 0, new QTableWidgetItem(TextOf(rows[i].keystroke)));
      keystrokes_->setItem(i, 1, new QTableWidgetItem(TextOf(rows[i].function)));
    }
  };
  if (english) {
    show(kKeystrokeRows);
  } else {
    show(kKeystrokeRowsGerman);
  }
  keystrokes_->resizeColumnToContents(0);
}

}  // namespace vela

#include "moc_help_page.cpp"
