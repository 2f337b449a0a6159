#include "app/workbench/compare_chooser.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>

namespace vela {

namespace {

void AddChoice(QListWidget* list, const QString& text, bool enabled) {
  auto* item = new QListWidgetItem(text, list);
  if (!enabled) item->setFlags(item->flags() & ~Qt::ItemIsEnabled);
}

void FitRows(QListWidget* list, int rows) {
  list->setMinimumWidth(220);
  list->setMaximumHeight(list->sizeHintForRow(0) * rows + 2 * list->frameWidth() + 4);
}

}  // namespace

CompareChooser::CompareChooser(bool ecu_read, bool comparing, CompareSession::Source base,
                               QWidget* parent)
    : QDialog(parent), bases_(new QListWidget(this)), list_(new QListWidget(this)) {
  setObjectName("CompareChooser");
  setWindowTitle("Compare With");
  auto* layout = new QGridLayout(this);
  auto* first = new QLabel("Compare:", this);
  first->setBuddy(bases_);
  auto* label = new QLabel("with:", this);
  label->setBuddy(list_);
  layout->addWidget(first, 0, 0);
  layout->addWidget(label, 0, 1);
  bases_->setObjectName("CompareBases");
  bases_->setAccessibleName("Compare");
  AddChoice(bases_, "The editors' image", true);
  AddChoice(bases_, "ECU as last read", ecu_read);
  AddChoice(bases_, "Map file...", true);
  bases_->setCurrentRow(static_cast<int>(base));
  FitRows(bases_, 3);
  list_->setObjectName("CompareChoices");
  list_->setAccessibleName("Compare with");
  AddChoice(list_, "ECU as last read", ecu_read);
  AddChoice(list_, "Map file...", true);
  AddChoice(list_, "Stop comparing", comparing);
  list_->setCurrentRow(ecu_read && base != CompareSession::Source::kEcu ? 0 : 1);
  FitRows(list_, 3);
  layout->addWidget(bases_, 1, 0);
  layout->addWidget(list_, 1, 1);
  layout->addWidget(new QLabel("Enter takes the choice, Escape leaves.", this), 2, 0, 1, 2);
  bases_->installEventFilter(this);
  list_->installEventFilter(this);
  connect(bases_, &QListWidget::itemActivated, this, [this] { list_->setFocus(); });
  connect(list_, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
    if (item->flags().testFlag(Qt::ItemIsEnabled) && isVisible()) accept();
  });
}

void CompareChooser::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  list_->setFocus();
}

bool CompareChooser::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (watched == list_ && key == Qt::Key_Left) {
      bases_->setFocus();
      return true;
    }
    if (watched == bases_ && key == Qt::Key_Right) {
      list_->setFocus();
      return true;
    }
  }
  return QDialog::eventFilter(watched, event);
}

CompareSession::Source CompareChooser::Base() const {
  return static_cast<CompareSession::Source>(bases_->currentRow());
}

CompareChooser::Choice CompareChooser::Chosen() const {
  switch (list_->currentRow()) {
    case 0:
      return Choice::kEcu;
    case 1:
      return Choice::kMapFile;
    default:
      break;
  }
  return Choice::kStop;
}

}  // namespace vela

#include "moc_compare_chooser.cpp"
