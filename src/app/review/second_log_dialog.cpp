#include "app/review/second_log_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/file_names.h"
#include "datalog/files/log_export.h"

namespace vela {

namespace {

QComboBox* MarkerChoice(const DatalogLog& log, const QString& name, QWidget* parent) {
  auto* box = new QComboBox(parent);
  box->setObjectName(name);
  for (const LogMarker& marker : log.Markers()) {
    box->addItem(QString("%1 s  %2")
                     .arg(QString::fromStdString(FixedText(marker.time, 3)),
                          QString::fromStdString(marker.text)));
  }
  return box;
}

QDoubleSpinBox* TimeChoice(const DatalogLog& log, const QString& name, QWidget* parent) {
  auto* box = new QDoubleSpinBox(parent);
  box->setObjectName(name);
  box->setDecimals(3);
  box->setRange(0.0, std::max(0.0, log.EndTime()));
  box->setSuffix(" s");
  return box;
}

}  // namespace

SecondLogDialog::SecondLogDialog(const DatalogLog& first, const DatalogLog& second,
                                 const std::string& second_path,
                                 const review::LogAlignment& alignment, QWidget* parent)
    : QDialog(parent), first_(first), second_(second) {
  setObjectName("SecondLogAlign");
  setWindowTitle("Align Second Log: " +
                 QString::fromStdString(second_path.substr(NameStart(second_path))));
  way_ = new QComboBox(this);
  way_->setObjectName("SecondLogAlignWay");
  way_->addItems({"At markers", "At times"});
  first_marker_ = MarkerChoice(first, "SecondLogFirstMarker", this);
  second_marker_ = MarkerChoice(second, "SecondLogSecondMarker", this);
  first_time_ = TimeChoice(first, "SecondLogFirstTime", this);
  second_time_ = TimeChoice(second, "SecondLogSecondTime", this);
  // The present alignment, as times: the second's start at its place on the first.
  first_time_->setValue(std::max(0.0, alignment.offset));
  second_time_->setValue(std::max(0.0, -alignment.offset));
  result_ = new QLabel(this);
  result_->setObjectName("SecondLogAlignResult");
  auto* form = new QFormLayout;
  form->addRow("&Align", way_);
  form->addRow("Marker of &this log", first_marker_);
  form->addRow("Marker of the &second log", second_marker_);
  form->addRow("Time of t&his log", first_time_);
  form->addRow("Time of the se&cond log", second_time_);
  form->addRow("Result", result_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  QPushButton* remove = buttons->addButton("&Remove Second Log", QDialogButtonBox::ResetRole);
  remove->setObjectName("SecondLogRemove");
  connect(remove, &QPushButton::clicked, this, [this] { done(kRemoved); });
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(buttons);
  for (QComboBox* box : {way_, first_marker_, second_marker_}) {
    connect(box, &QComboBox::currentIndexChanged, this, &SecondLogDialog::Update);
  }
  for (QDoubleSpinBox* box : {first_time_, second_time_}) {
    connect(box, &QDoubleSpinBox::valueChanged, this, &SecondLogDialog::Update);
  }
  const bool markers = !first.Markers().empty() && !second.Markers().empty();
  way_->setCurrentIndex(markers ? 0 : 1);
  Update();
}

std::optional<review::LogAlignment> SecondLogDialog::Alignment() const {
  if (way_->currentIndex() == 1) {
    return review::AlignAtTimes(first_time_->value(), second_time_->value());
  }
  if (first_marker_->currentIndex() < 0 || second_marker_->currentIndex() < 0) return std::nullopt;
  return review::AlignAtMarkers(
      first_, review::MarkerRef::Index(static_cast<std::size_t>(first_marker_->currentIndex())),
      second_, review::MarkerRef::Index(static_cast<std::size_t>(second_marker_->currentIndex())));
}

void SecondLogDialog::Update() {
  const bool markers = way_->currentIndex() == 0;
  first_marker_->setEnabled(markers);
  second_marker_->setEnabled(markers);
  first_time_->setEnabled(!markers);
  second_time_->setEnabled(!markers);
  const std::optional<review::LogAlignment> alignment = Alignment();
  result_->setText(alignment ? QString("The second log's 0 s is drawn at %1 s of this one")
                                   .arg(QString::fromStdString(FixedText(alignment->offset, 3)))
                             : QString("Choose a marker in each log"));
  if (auto* buttons = findChild<QDialogButtonBox*>()) {
    buttons->button(QDialogButtonBox::Ok)->setEnabled(alignment.has_value());
  }
}

}  // namespace vela

#include "moc_second_log_dialog.cpp"
