#include "app/history/history_panel.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QShortcut>
#include <QVBoxLayout>

#include "app/history/history_table_model.h"
#include "app/history/restore_points_tab.h"
#include "app/sessions/editor_session.h"

namespace vela {

namespace {

QPushButton* PanelButton(const QString& text, const char* name, QWidget* parent) {
  auto* button = new QPushButton(text, parent);
  button->setObjectName(name);
  // Enter belongs to the list (return to the chosen row), never to a button by default.
  button->setAutoDefault(false);
  return button;
}

}  // namespace

HistoryPanel::HistoryPanel(EditorSession& session, QWidget* parent)
    : QDialog(parent),
      session_(session),
      model_(new HistoryTableModel(session.history(), this)),
      tabs_(new QTabWidget(this)) {
  setObjectName("EditHistory");
  setWindowTitle("Edit History");
  setModal(false);
  tabs_->setObjectName("HistoryTabs");
  tabs_->addTab(BuildChangesTab(), "&Changes");
  restore_points_ = new RestorePointsTab(session, tabs_);
  tabs_->addTab(restore_points_, "Restore &Points");
  note_ = new QLabel(this);
  note_->setObjectName("HistoryPanelNote");
  note_->setWordWrap(true);
  QPushButton* close = PanelButton("Close", "CloseHistory", this);
  connect(close, &QPushButton::clicked, this, &QDialog::hide);
  auto* bottom = new QHBoxLayout;
  bottom->addWidget(note_, 1);
  bottom->addWidget(close);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(tabs_, 1);
  layout->addLayout(bottom);
  connect(restore_points_, &RestorePointsTab::Note, this, &HistoryPanel::ShowNote);
  connect(restore_points_, &RestorePointsTab::CompareRequested, this,
          &HistoryPanel::CompareRequested);
  connect(&session.history(), &EditHistory::Note, this, &HistoryPanel::ShowNote);
  connect(model_, &QAbstractItemModel::modelReset, this, &HistoryPanel::ShowPosition);
  AddShortcuts();
  resize(760, 460);
  ShowPosition();
}

QWidget* HistoryPanel::BuildChangesTab() {
  auto* page = new QWidget(tabs_);
  changes_ = new QTableView(page);
  changes_->setObjectName("HistoryChanges");
  changes_->setAccessibleName("Changes");
  changes_->setModel(model_);
  changes_->setSelectionBehavior(QAbstractItemView::SelectRows);
  changes_->setSelectionMode(QAbstractItemView::SingleSelection);
  changes_->setTabKeyNavigation(false);
  changes_->setWordWrap(false);
  // Rows of one height: ten thousand entries lay out without measuring any.
  changes_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  changes_->verticalHeader()->setDefaultSectionSize(changes_->fontMetrics().height() + 6);
  changes_->horizontalHeader()->setStretchLastSection(true);
  changes_->setColumnWidth(HistoryTableModel::kTime, 140);
  changes_->setColumnWidth(HistoryTableModel::kWhat, 130);
  changes_->setColumnWidth(HistoryTableModel::kWhere, 100);
  changes_->installEventFilter(this);
  connect(changes_, &QTableView::doubleClicked, this, &HistoryPanel::ReturnToChosen);
  QPushButton* back = PanelButton("&Return to here", "ReturnToHere", page);
  QPushButton* undo = PanelButton("&Undo", "HistoryUndo", page);
  QPushButton* redo = PanelButton("Re&do", "HistoryRedo", page);
  connect(back, &QPushButton::clicked, this, &HistoryPanel::ReturnToChosen);
  connect(undo, &QPushButton::clicked, this, [this] { session_.Undo(); });
  connect(redo, &QPushButton::clicked, this, [this] { session_.Redo(); });
  position_ = new QLabel(page);
  position_->setObjectName("HistoryPosition");
  auto* buttons = new QHBoxLayout;
  for (QWidget* w :
       {static_cast<QWidget*>(back), static_cast<QWidget*>(undo), static_cast<QWidget*>(redo)}) {
    buttons->addWidget(w);
  }
  buttons->addWidget(position_, 1);
  auto* layout = new QVBoxLayout(page);
  layout->addWidget(changes_, 1);
  layout->addLayout(buttons);
  return page;
}

// The edit chords of the main window work here too; Ctrl-J closes the panel again.
void HistoryPanel::AddShortcuts() {
  auto add = [this](const QKeySequence& keys, auto action) {
    connect(new QShortcut(keys, this), &QShortcut::activated, this, action);
  };
  add(QKeySequence(Qt::CTRL | Qt::Key_Z), [this] { session_.Undo(); });
  add(QKeySequence(Qt::CTRL | Qt::Key_Y), [this] { session_.Redo(); });
  add(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), [this] { session_.Redo(); });
  add(QKeySequence(Qt::CTRL | Qt::Key_J), [this] { hide(); });
}

void HistoryPanel::Open() {
  restore_points_->Refresh();
  ShowPosition();
  show();
  raise();
  activateWindow();
  changes_->setFocus(Qt::OtherFocusReason);
}

bool HistoryPanel::eventFilter(QObject* watched, QEvent* event) {
  if (watched == changes_ && event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
      ReturnToChosen();
      return true;
    }
  }
  return QDialog::eventFilter(watched, event);
}

void HistoryPanel::ReturnToChosen() {
  const int row = changes_->currentIndex().row();
  if (row < 0) return;
  if (row == model_->CurrentRow()) {
    ShowNote("The calibration already stands at this change.");
    return;
  }
  const int from = model_->CurrentRow();
  if (session_.ReturnTo(static_cast<std::size_t>(row))) {
    const int steps = std::abs(row - from);
    ShowNote(QString("%1 %2 %3 in one step.")
                 .arg(row < from ? "Undid" : "Redid")
                 .arg(steps)
                 .arg(steps == 1 ? "change" : "changes"));
  }
}

// The chosen row follows the calibration's place after every change of the history.
void HistoryPanel::ShowPosition() {
  const int current = model_->CurrentRow();
  const int total = model_->rowCount() - 1;
  position_->setText(QString("%1 of %2 changes applied").arg(current).arg(total));
  const QModelIndex index = model_->index(current, HistoryTableModel::kWhat);
  changes_->setCurrentIndex(index);
  changes_->scrollTo(index);
}

void HistoryPanel::ShowNote(const QString& text) { note_->setText(text); }

}  // namespace vela

#include "moc_history_panel.cpp"
