#include "app/history/restore_points_tab.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/history/history_table_model.h"
#include "app/sessions/editor_session.h"
#include "editors/history/history_words.h"
#include "editors/history/restore_writes.h"

namespace vela {

namespace {

struct RestoreButton {
  const char* text;
  const char* name;
  EditPlace place;
};
constexpr RestoreButton kRestoreButtons[] = {
    {"Restore &all", "RestoreAll", EditPlace::kWholeImage},
    {"Restore Fuel Map &1", "RestoreFuelMap1", EditPlace::kFuelMap1},
    {"Restore Fuel Map &2", "RestoreFuelMap2", EditPlace::kFuelMap2},
    {"Restore &Ignition map", "RestoreIgnitionMap", EditPlace::kIgnMap},
};

QString RestoredName(EditPlace place) {
  return place == EditPlace::kWholeImage ? QString("the whole calibration")
                                         : QString::fromUtf8(PlaceText(place));
}

QPushButton* TabButton(const QString& text, const char* name, QWidget* parent) {
  auto* button = new QPushButton(text, parent);
  button->setObjectName(name);
  button->setAutoDefault(false);
  return button;
}

}  // namespace

RestorePointsTab::RestorePointsTab(EditorSession& session, QWidget* parent)
    : QWidget(parent), session_(session), list_(new QTableWidget(0, 2, this)) {
  list_->setObjectName("RestorePointList");
  list_->setAccessibleName("Restore points");
  list_->setHorizontalHeaderLabels({"Time", "Reason"});
  list_->setSelectionBehavior(QAbstractItemView::SelectRows);
  list_->setSelectionMode(QAbstractItemView::SingleSelection);
  list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  list_->setTabKeyNavigation(false);
  list_->verticalHeader()->hide();
  list_->horizontalHeader()->setStretchLastSection(true);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(list_, 1);
  layout->addWidget(BuildButtons());
  connect(&session.history(), &EditHistory::RestorePointsChanged, this, &RestorePointsTab::Refresh);
}

QWidget* RestorePointsTab::BuildButtons() {
  auto* row = new QWidget(this);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  QPushButton* take = TabButton("&Take a restore point", "TakeRestorePoint", row);
  connect(take, &QPushButton::clicked, this, &RestorePointsTab::TakePoint);
  layout->addWidget(take);
  for (const RestoreButton& b : kRestoreButtons) {
    QPushButton* button = TabButton(b.text, b.name, row);
    const EditPlace place = b.place;
    connect(button, &QPushButton::clicked, this, [this, place] { Restore(place); });
    layout->addWidget(button);
  }
  QPushButton* compare = TabButton("Co&mpare", "CompareRestorePoint", row);
  connect(compare, &QPushButton::clicked, this, &RestorePointsTab::Compare);
  layout->addWidget(compare);
  layout->addStretch(1);
  return row;
}

void RestorePointsTab::Refresh() {
  const std::optional<RestorePoint> chosen = Chosen();
  points_ = session_.history().restore_points().List();
  list_->setRowCount(static_cast<int>(points_.size()));
  int row_to_choose = points_.empty() ? -1 : 0;
  for (int row = 0; row < static_cast<int>(points_.size()); ++row) {
    const RestorePoint& point = points_[static_cast<std::size_t>(row)];
    auto* time = new QTableWidgetItem(HistoryTimeText(point.time_ms, false));
    time->setToolTip(QString::fromStdString(point.name));
    list_->setItem(row, 0, time);
    list_->setItem(row, 1, new QTableWidgetItem(QString::fromUtf8(ReasonText(point.reason))));
    if (chosen && chosen->name == point.name) row_to_choose = row;
  }
  list_->resizeColumnToContents(0);
  if (row_to_choose >= 0) list_->setCurrentCell(row_to_choose, 0);
}

std::optional<RestorePoint> RestorePointsTab::Chosen() const {
  const int row = list_->currentRow();
  if (row < 0 || row >= static_cast<int>(points_.size())) return std::nullopt;
  return points_[static_cast<std::size_t>(row)];
}

std::optional<CalibrationImage> RestorePointsTab::ChosenImage() {
  const std::optional<RestorePoint> point = Chosen();
  if (!point) {
    emit Note("Choose a restore point first.");
    return std::nullopt;
  }
  std::optional<CalibrationImage> image = session_.history().restore_points().Read(*point);
  if (!image) {
    emit Note(QString("The restore point %1 can no longer be read: its file is gone or damaged.")
                  .arg(QString::fromStdString(point->name)));
  }
  return image;
}

void RestorePointsTab::TakePoint() {
  // The outcome (thinning included) is said by the history's note.
  static_cast<void>(
      session_.history().TakeRestorePoint(session_.image(), RestoreReason::kOnRequest));
  Refresh();
}

void RestorePointsTab::Restore(EditPlace place) {
  const std::optional<CalibrationImage> image = ChosenImage();
  if (!image) return;
  const RestorePlan plan = PlanRestore(session_.image(), *image, place);
  const QString what = RestoredName(place);
  if (!plan.refusal.empty()) {
    emit Note(QString::fromStdString(plan.refusal));
  } else if (plan.writes.empty()) {
    emit Note(QString("Nothing to restore: %1 already equals the restore point.").arg(what));
  } else {
    const RestorePoint point = *Chosen();
    session_.BytesEdited(plan.writes, EditKind::kRestore, place, point.name);
    const std::size_t bytes = plan.writes.size();
    emit Note(QString("Restored %1 from the restore point of %2 (%3 %4); Ctrl-Z undoes it.")
                  .arg(what, HistoryTimeText(point.time_ms, false))
                  .arg(bytes)
                  .arg(bytes == 1 ? "byte" : "bytes"));
  }
}

void RestorePointsTab::Compare() {
  const std::optional<CalibrationImage> image = ChosenImage();
  if (image) emit CompareRequested(QString::fromStdString(Chosen()->name), *image);
}

}  // namespace vela

#include "moc_restore_points_tab.cpp"
