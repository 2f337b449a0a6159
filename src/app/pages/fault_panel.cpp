#include "app/pages/fault_panel.h"

#include <QDateTime>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

#include "app/sessions/fault_monitor.h"
#include "app/widgets/text_of.h"

namespace vela {

namespace {

QTableWidget* MakeTable(QWidget* parent, const QString& name, int rows, int columns) {
  auto* table = new QTableWidget(rows, columns, parent);
  table->setObjectName(name);
  table->verticalHeader()->hide();
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table->setSelectionBehavior(QAbstractItemView::SelectRows);
  table->setSelectionMode(QAbstractItemView::SingleSelection);
  table->horizontalHeader()->setStretchLastSection(true);
  return table;
}

}  // namespace

FaultPanel::FaultPanel(FaultMonitor& monitor, std::function<bool()> holds_no_codes, QWidget* parent)
    : QGroupBox("ECU Fault Codes", parent),
      monitor_(monitor),
      holds_no_codes_(std::move(holds_no_codes)) {
  setObjectName("FaultCodes");
  auto* columns = new QHBoxLayout(this);
  columns->addWidget(BuildCodes(), 1);
  columns->addWidget(BuildSeen(), 1);
  connect(&monitor_, &FaultMonitor::CodesRequested, this, &FaultPanel::ClearCodes);
  connect(&monitor_, &FaultMonitor::CodesRead, this, &FaultPanel::ShowCodes);
  connect(&monitor_, &FaultMonitor::NoAnswer, this, &FaultPanel::ShowNoAnswer);
  connect(&monitor_, &FaultMonitor::WatchChanged, this, &FaultPanel::ShowSeenFaults);
}

QWidget* FaultPanel::BuildCodes() {
  auto* box = new QWidget(this);
  auto* column = new QVBoxLayout(box);
  column->setContentsMargins(0, 0, 0, 0);
  button_ = new QPushButton("Read Error Codes", box);
  button_->setObjectName("Command9");
  button_->setToolTip("Ask the ECU for the fault codes it holds, the newest first");
  connect(button_, &QPushButton::clicked, this, &FaultPanel::ReadCodes);
  column->addWidget(button_, 0, Qt::AlignLeft);
  grid_ = MakeTable(box, "OBDGrid", kErrorGridRows, 1);
  grid_->horizontalHeader()->hide();
  // The rows line their numbers up with blanks: a fixed-pitch font keeps them in line.
  grid_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  grid_->verticalHeader()->setDefaultSectionSize(grid_->fontMetrics().height() + 6);
  grid_->setFixedHeight(kErrorGridRows * (grid_->fontMetrics().height() + 6) +
                        2 * grid_->frameWidth());
  grid_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  for (int row = 0; row < kErrorGridRows; ++row) grid_->setItem(row, 0, new QTableWidgetItem);
  connect(grid_, &QTableWidget::currentCellChanged, this,
          [this](int row) { ShowExplanation(row); });
  column->addWidget(grid_);
  more_held_ = new QLabel(box);
  more_held_->setObjectName("MoreCodesHeld");
  more_held_->setWordWrap(true);
  more_held_->hide();
  column->addWidget(more_held_);
  explanation_ = new QLabel(box);
  explanation_->setObjectName("ErrorExplanation");
  explanation_->setWordWrap(true);
  explanation_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  explanation_->setMinimumHeight(4 * explanation_->fontMetrics().height());
  explanation_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  column->addWidget(explanation_, 1);
  return box;
}

QWidget* FaultPanel::BuildSeen() {
  auto* box = new QWidget(this);
  auto* column = new QVBoxLayout(box);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(new QLabel("Faults seen since the program started", box));
  seen_ = MakeTable(box, "FaultsSeen", 0, 4);
  seen_->setHorizontalHeaderLabels({"First seen", "Code", "Fault", "Times"});
  seen_->setToolTip(
      "Every fault the ECU reported while this program ran: when it was first seen, and how many "
      "times the ECU reported it anew");
  seen_->setMinimumHeight(5 * (seen_->fontMetrics().height() + 8));
  seen_->setWordWrap(false);
  QHeaderView* header = seen_->horizontalHeader();
  header->setStretchLastSection(false);
  for (int column : {0, 1, 3}) header->setSectionResizeMode(column, QHeaderView::ResizeToContents);
  header->setSectionResizeMode(2, QHeaderView::Stretch);
  column->addWidget(seen_, 1);
  return box;
}

void FaultPanel::SetRow(int row, const QString& text) { grid_->item(row, 0)->setText(text); }

void FaultPanel::ReadCodes() {
  if (holds_no_codes_ && holds_no_codes_()) {
    more_held_->hide();
    for (int row = 0; row < kErrorGridRows; ++row) {
      explanations_.ErrorCodeText(row, 0);
      SetRow(row, TextOf(kNoErrorRow));
    }
    ShowExplanation(grid_->currentRow());
    return;
  }
  monitor_.RequestCodes();
}

// Rows 1 to 4 are cleared whoever asks, the button or the program on a new fault, so that no row
// from an earlier answer stands under an unanswered request.
void FaultPanel::ClearCodes() {
  explanations_.Clear();
  for (int row = 0; row < kErrorGridRows; ++row) SetRow(row, QString());
  explanation_->clear();
  more_held_->hide();
}

void FaultPanel::ShowCodes(int held, const QList<int>& codes) {
  explanations_.Clear();
  for (int row = 0; row < kErrorGridRows; ++row) {
    const int code = row < codes.size() ? codes[row] : 0;
    explanations_.ErrorCodeText(row, static_cast<std::int16_t>(code));
    SetRow(row, QString::fromStdString(ErrorRowText(code)));
  }
  ShowExplanation(grid_->currentRow());
  more_held_->setText(
      QString("The ECU holds %1 codes: only the four newest are listed.").arg(held));
  more_held_->setVisible(held > kErrorGridRows);
}

void FaultPanel::ShowNoAnswer() {
  for (int row = 0; row < kCommsInterruptedRows; ++row) {
    SetRow(row, TextOf(kCommsInterruptedRow));
  }
}

void FaultPanel::ShowExplanation(int row) {
  explanation_->setText(QString::fromStdString(explanations_.Explanation(row)));
}

void FaultPanel::ShowSeenFaults() {
  const std::vector<SeenFault>& seen = monitor_.watch().Seen();
  seen_->setRowCount(static_cast<int>(seen.size()));
  for (int row = 0; row < static_cast<int>(seen.size()); ++row) {
    const SeenFault& fault = seen[static_cast<std::size_t>(row)];
    const QDateTime when = QDateTime::fromMSecsSinceEpoch(fault.first_seen);
    const QString texts[] = {when.toString("HH:mm:ss"), QString::number(fault.code),
                             TextOf(ErrorTitle(fault.code)).trimmed(),
                             QString::number(fault.count)};
    for (int column = 0; column < 4; ++column) {
      auto* item = new QTableWidgetItem(texts[column]);
      if (column == 0) item->setToolTip(when.toString("yyyy-MM-dd HH:mm:ss"));
      if (column == 2) item->setToolTip(QString::fromStdString(ErrorExplanation(fault.code)));
      seen_->setItem(row, column, item);
    }
  }
}

void FaultPanel::ShowSeen() {
  seen_->setFocus();
  if (seen_->rowCount() > 0) seen_->selectRow(seen_->rowCount() - 1);
}

}  // namespace vela

#include "moc_fault_panel.cpp"
