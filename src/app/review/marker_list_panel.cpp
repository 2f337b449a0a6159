#include "app/review/marker_list_panel.h"

#include <QHeaderView>
#include <QKeyEvent>

#include "app/widgets/own_keys.h"
#include "datalog/files/log_export.h"

namespace vela {

namespace {

constexpr int kTimeColumn = 0;
constexpr int kKindColumn = 1;
constexpr int kTextColumn = 2;

QString MarkerKindText(review::MarkerKind kind) {
  switch (kind) {
    case review::MarkerKind::kTuner:
      return "Marker";
    case review::MarkerKind::kFault:
      return "Fault";
    case review::MarkerKind::kGap:
      return "Gap";
  }
  return {};
}

QTableWidgetItem* FixedItem(const QString& text) {
  auto* item = new QTableWidgetItem(text);
  item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
  return item;
}

}  // namespace

MarkerListPanel::MarkerListPanel(DatalogLog& log, QWidget* parent)
    : QTableWidget(0, 3, parent), log_(log) {
  setObjectName("DatalogMarkerList");
  KeepOwnKeys(this);  // Enter jumps, F2 edits, Esc leaves
  setAccessibleName("Markers of the log");
  setHorizontalHeaderLabels({"Time s", "Kind", "Text"});
  verticalHeader()->hide();
  verticalHeader()->setDefaultSectionSize(18);
  horizontalHeader()->setStretchLastSection(true);
  // The text column takes what is left; a long text is cut short rather than scrolled to.
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  resizeColumnToContents(kTimeColumn);
  resizeColumnToContents(kKindColumn);
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setSelectionMode(QAbstractItemView::SingleSelection);
  setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
  setToolTip(
      "The log's markers, faults and gaps. Enter: cursor A to the marker. F2: edit a marker's "
      "text. Esc: back to the chart.");
  connect(this, &QTableWidget::itemChanged, this, &MarkerListPanel::ItemChanged);
  connect(this, &QTableWidget::cellDoubleClicked, this, [this](int row, int column) {
    if (column != kTextColumn && row < static_cast<int>(entries_.size())) {
      emit JumpTo(entries_[row].time);
    }
  });
}

void MarkerListPanel::Rebuild() {
  filling_ = true;
  entries_ = review::BuildMarkerList(log_);
  const int keep = currentRow();
  setRowCount(static_cast<int>(entries_.size()));
  for (int row = 0; row < rowCount(); ++row) {
    const review::MarkerEntry& entry = entries_[row];
    setItem(row, kTimeColumn, FixedItem(QString::fromStdString(FixedText(entry.time, 3))));
    setItem(row, kKindColumn, FixedItem(MarkerKindText(entry.kind)));
    auto* text = new QTableWidgetItem(QString::fromStdString(entry.text));
    if (entry.kind != review::MarkerKind::kTuner)
      text->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    setItem(row, kTextColumn, text);
  }
  if (keep >= 0 && keep < rowCount()) setCurrentCell(keep, kTimeColumn);
  resizeColumnToContents(kTimeColumn);
  resizeColumnToContents(kKindColumn);
  filling_ = false;
}

void MarkerListPanel::ItemChanged(QTableWidgetItem* item) {
  if (filling_ || item->column() != kTextColumn) return;
  const int row = item->row();
  if (row < 0 || row >= static_cast<int>(entries_.size())) return;
  review::MarkerEntry& entry = entries_[row];
  if (entry.kind != review::MarkerKind::kTuner) return;
  const std::string text = item->text().toStdString();
  if (text == entry.text || !log_.SetMarkerText(entry.source, text)) return;
  entry.text = text;
  emit TextEdited();
}

void MarkerListPanel::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (enter && state() != QAbstractItemView::EditingState) {
    const int row = currentRow();
    if (row >= 0 && row < static_cast<int>(entries_.size())) emit JumpTo(entries_[row].time);
    event->accept();
    return;
  }
  if (event->key() == Qt::Key_Escape && state() != QAbstractItemView::EditingState) {
    emit Leave();
    event->accept();
    return;
  }
  QTableWidget::keyPressEvent(event);
}

}  // namespace vela

#include "moc_marker_list_panel.cpp"
