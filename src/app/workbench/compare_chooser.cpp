#include "app/workbench/compare_chooser.h"

#include <QLabel>
#include <QVBoxLayout>

namespace vela {

namespace {

void AddChoice(QListWidget* list, const QString& text, bool enabled) {
  auto* item = new QListWidgetItem(text, list);
  if (!enabled) item->setFlags(item->flags() & ~Qt::ItemIsEnabled);
}

}  // namespace

CompareChooser::CompareChooser(bool ecu_read, bool comparing, QWidget* parent)
    : QDialog(parent), list_(new QListWidget(this)) {
  setObjectName("CompareChooser");
  setWindowTitle("Compare With");
  auto* layout = new QVBoxLayout(this);
  auto* label = new QLabel("Compare the editors' values with:", this);
  label->setBuddy(list_);
  layout->addWidget(label);
  list_->setObjectName("CompareChoices");
  list_->setAccessibleName("Compare the editors' values with");
  AddChoice(list_, "ECU as last read", ecu_read);
  AddChoice(list_, "Map file...", true);
  AddChoice(list_, "Stop comparing", comparing);
  list_->setCurrentRow(ecu_read ? 0 : 1);
  list_->setMinimumWidth(280);
  list_->setMaximumHeight(list_->sizeHintForRow(0) * 3 + 2 * list_->frameWidth() + 4);
  layout->addWidget(list_);
  layout->addWidget(new QLabel("Enter takes the choice, Escape leaves.", this));
  connect(list_, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
    if (item->flags().testFlag(Qt::ItemIsEnabled) && isVisible()) accept();
  });
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
