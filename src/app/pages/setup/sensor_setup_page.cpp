#include "app/pages/setup/sensor_setup_page.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <cmath>

#include "app/pages/setup/setup_widgets.h"
#include "app/sessions/editor_session.h"
#include "app/widgets/live_texts.h"
#include "base/qt/qt_platform.h"
#include "calibration/conversions.h"
#include "calibration/decimal_text.h"
#include "editors/apply_calibration.h"

namespace vela {

namespace {

constexpr int kActualTempRow = kSensorPoints;
constexpr const char* kTableNames[] = {"Water", "Air"};
constexpr const char* kListNames[] = {"Combop4", "Combop3"};
constexpr const char* kSensorTitles[] = {"Water Temperature Sensor", "Air Temperature Sensor"};
constexpr std::array<double, 3> kCustomDefaultCelsius = {0.0, 40.0, 100.0};

QString Ohms(double ohms) { return QString::number(std::lround(ohms)); }

}  // namespace

SensorSetupPage::SensorSetupPage(SetupPageParts parts, QWidget* parent)
    : QWidget(parent), parts_(parts), fields_(new RawFieldPanel(parts.editors, this)) {
  setObjectName("SensorSetupPage");
  FlowColumns* columns = MakePageColumns(this, "SensorSetupColumns");
  auto* left_column = new QWidget(this);
  auto* left = new QVBoxLayout(left_column);
  left->setContentsMargins(0, 0, 0, 0);
  left->addWidget(BuildMapOptions());
  QGroupBox* tps = MakeBox(this, "ThrottleCal", "Throttle Position Sensor");
  tps->setToolTip(
      "The throttle position sensor's set-up byte and its calibration bytes, shown and sent as "
      "stored.");
  fields_->Add(AddRawGroup(tps, TpsGroups().front(), [](QWidget* owner, const RawField& f, int) {
    return new QLabel(QString::fromStdString(f.label), owner);
  }));
  left->addWidget(tps);
  left->addStretch(1);
  columns->AddColumn(left_column);
  columns->AddColumn(BuildSensorTable(SensorTable::kWater));
  columns->AddColumn(BuildSensorTable(SensorTable::kAir));
  columns->AddColumn(BuildCustomSensor());
  // The panel shows its own fields again after an edit.
  connect(fields_, &RawFieldPanel::Edited, this, &SensorSetupPage::ShowControls);
  ShowEditors();
}

QWidget* SensorSetupPage::BuildMapOptions() {
  QGroupBox* box = MakeBox(this, "MapSensorOptions", "MAP Sensor Options");
  auto* layout = new QVBoxLayout(box);
  box->setToolTip(
      "Altitude Compensation corrects the fuel for the air pressure of the place the car is "
      "driven, measured by the MAP sensor before the engine starts.");
  for (const SetupChoice choice : {SetupChoice::kAltitudeComp, SetupChoice::kThrottlePumpBasis}) {
    const SetupChoiceDescription& d = Describe(choice);
    if (d.shape != ChoiceShape::kTickBox) {
      layout->addWidget(new QLabel(QString::fromUtf8(d.caption.data(), d.caption.size()), box));
    }
    const BuiltChoice built =
        MakeChoiceControl(box, choice, [this, choice](int entry) { Choose(choice, entry); });
    layout->addWidget(built.widget);
    QLabel* mark = MakeNote(box, built.widget->objectName() + "Mark");
    layout->addWidget(mark);
    choices_.push_back({choice, built.control, mark});
  }
  return box;
}

void SensorSetupPage::Choose(SetupChoice choice, int value) {
  if (parts_.editors.suppress_change_events()) return;
  parts_.editors.setup_editor().Choose(choice, value);
  ShowEditors();
}

// Room either side of a header text, as the style draws it.
constexpr int kHeaderTextPadding = 5;

QWidget* SensorSetupPage::BuildSensorTable(SensorTable which) {
  const auto index = static_cast<std::size_t>(which);
  QGroupBox* box = MakeBox(this, QString(kTableNames[index]) + "Box", kSensorTitles[index]);
  auto* layout = new QVBoxLayout(box);
  QComboBox* list = MakeList(box, kListNames[index], SensorListTexts(which, false));
  list->setAccessibleName(kSensorTitles[index]);
  list->setToolTip("Choosing a known sensor fills the table and sends it to the ECU.");
  connect(list, &QComboBox::activated, this,
          [this, which](int choice) { ChooseSensor(which, choice); });
  layout->addWidget(list);
  auto* table = new NoSearchTable(kSensorPoints + 1, 2, box);
  table->setObjectName(kTableNames[index]);
  table->setAccessibleName(QString(kSensorTitles[index]) + " Table");
  table->setHorizontalHeaderLabels({"Temperature", "Ohms at Temperature"});
  table->verticalHeader()->hide();
  // The temperatures take what they need, so that "Ohms at Temperature" stays whole on a
  // netbook's screen.
  table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
  table->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
  table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 6);
  table->setToolTip(
      "Resistance of the sensor at each temperature. Editing a cell sends that point; the ECU "
      "keeps each point as the divider ratio with its 560 ohm pull-up. The temperatures and the "
      "actual temperature are read-only.");
  for (int row = 0; row <= kSensorPoints; ++row) {
    const QString temperature = row == kActualTempRow
                                    ? QString("Actual Temp")
                                    : QString::number(kSensorPointTemperatures[row]);
    auto* label = new QTableWidgetItem(temperature);
    label->setFlags(Qt::ItemIsEnabled);
    label->setBackground(QColor(214, 218, 224));
    table->setItem(row, 0, label);
    auto* value = new QTableWidgetItem;
    value->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    // The live row is read-only: it can be neither selected for typing nor edited.
    if (row == kActualTempRow) value->setFlags(Qt::ItemIsEnabled);
    table->setItem(row, 1, value);
  }
  table->setMinimumHeight(table->verticalHeader()->defaultSectionSize() * (kSensorPoints + 2) + 4);
  const QFontMetrics header_metrics(table->horizontalHeader()->font());
  table->setMinimumWidth(header_metrics.horizontalAdvance("Temperature  Ohms at Temperature") +
                         4 * kHeaderTextPadding + 2 * table->frameWidth());
  connect(table, &QTableWidget::itemChanged, this, [this, which](QTableWidgetItem* item) {
    if (!filling_ && item->column() == 1 && item->row() < kSensorPoints) {
      CellEdited(which, item->row());
    }
  });
  layout->addWidget(table);
  layout->addStretch(1);
  tables_[index] = table;
  lists_[index] = list;
  return box;
}

QWidget* SensorSetupPage::BuildCustomSensor() {
  QGroupBox* box = MakeBox(this, "CustomSensor", "Custom Sensor from Three Points");
  box->setToolTip(
      "Measure the sensor's resistance at three temperatures (cold, warm, hot). The program fits "
      "a Steinhart-Hart curve through them and fills all eight rows of the chosen table.");
  auto* layout = new QVBoxLayout(box);
  custom_target_ = new QComboBox(box);
  custom_target_->setObjectName("CustomSensorTarget");
  custom_target_->addItems({"Fill the Water table", "Fill the Air table"});
  auto* target_caption = new QLabel("Table to Fill", box);
  target_caption->setBuddy(custom_target_);
  custom_target_->setAccessibleName(target_caption->text());
  auto* target_row = new QHBoxLayout;
  target_row->addWidget(target_caption);
  target_row->addWidget(custom_target_, 1);
  layout->addLayout(target_row);
  auto* points = new QGridLayout;
  points->addWidget(new QLabel("\u00B0C", box), 0, 0);
  points->addWidget(new QLabel("Ohms", box), 0, 1);
  for (int i = 0; i < 3; ++i) {
    custom_celsius_[i] = new QDoubleSpinBox(box);
    custom_celsius_[i]->setObjectName(QString("CustomCelsius%1").arg(i));
    custom_celsius_[i]->setRange(-40.0, 150.0);
    custom_celsius_[i]->setDecimals(1);
    custom_celsius_[i]->setValue(kCustomDefaultCelsius[i]);
    custom_celsius_[i]->setAccessibleName(QString("Custom Sensor Point %1 \u00B0C").arg(i + 1));
    custom_ohms_[i] = new QLineEdit(box);
    custom_ohms_[i]->setObjectName(QString("CustomOhms%1").arg(i));
    custom_ohms_[i]->setAccessibleName(QString("Custom Sensor Point %1 Ohms").arg(i + 1));
    points->addWidget(custom_celsius_[i], i + 1, 0);
    points->addWidget(custom_ohms_[i], i + 1, 1);
  }
  layout->addLayout(points);
  auto* fill = new QPushButton("Fit Curve, Fill and Send", box);
  fill->setObjectName("CustomSensorFill");
  connect(fill, &QPushButton::clicked, this, &SensorSetupPage::FitCustomSensor);
  layout->addWidget(fill);
  custom_curve_ = new CurveView(box);
  custom_curve_->setObjectName("CustomSensorCurve");
  custom_curve_->SetTitle("Fitted sensor curve");
  custom_curve_->SetUnits("\u00B0C", "ohms");
  custom_curve_->SetLogY(true);
  custom_curve_->SetPointDots(false);
  custom_curve_->SetXRange(-20.0, 120.0);
  layout->addWidget(custom_curve_, 1);
  custom_note_ = new QLabel(box);
  custom_note_->setObjectName("CustomSensorNote");
  custom_note_->setWordWrap(true);
  layout->addWidget(custom_note_);
  return box;
}

std::array<std::string, kSensorPoints> SensorSetupPage::TableTexts(SensorTable which) const {
  std::array<std::string, kSensorPoints> texts;
  QTableWidget* table = tables_[static_cast<std::size_t>(which)];
  for (int row = 0; row < kSensorPoints; ++row)
    texts[row] = table->item(row, 1)->text().toStdString();
  return texts;
}

void SensorSetupPage::FillTable(SensorTable which,
                                const std::array<std::string, kSensorPoints>& ohms) {
  filling_ = true;
  QTableWidget* table = tables_[static_cast<std::size_t>(which)];
  for (int row = 0; row < kSensorPoints; ++row) {
    table->item(row, 1)->setText(QString::fromStdString(ohms[row]));
  }
  filling_ = false;
}

bool SensorSetupPage::SendTable(SensorTable which) {
  const std::array<std::string, kSensorPoints> texts = TableTexts(which);
  if (!parts_.editors.sensor_tables().Send(which, texts, SystemDecimalSeparator())) return false;
  sent_texts_[static_cast<std::size_t>(which)] = texts;
  return true;
}

void SensorSetupPage::ChooseSensor(SensorTable which, int choice) {
  const std::optional<std::array<int, kSensorPoints>> ohms = KnownSensorOhms(which, choice);
  if (!ohms) return;  // choice 0: the table as typed
  std::array<std::string, kSensorPoints> texts;
  for (int row = 0; row < kSensorPoints; ++row) texts[row] = std::to_string((*ohms)[row]);
  FillTable(which, texts);
  SendTable(which);
}

void SensorSetupPage::CellEdited(SensorTable which, int row) {
  if (parts_.editors.suppress_change_events()) return;
  const auto index = static_cast<std::size_t>(which);
  ShowChoice(lists_[index], 0);
  // Only the row the tuner typed goes to the ECU; a refused row shows what was sent again.
  const std::string text = tables_[index]->item(row, 1)->text().toStdString();
  if (parts_.editors.sensor_tables().SendRow(which, row, text, SystemDecimalSeparator())) {
    sent_texts_[index][static_cast<std::size_t>(row)] = text;
  } else {
    FillTable(which, sent_texts_[index]);
  }
}

void SensorSetupPage::FitCustomSensor() {
  std::array<SensorPoint, 3> points{};
  for (int i = 0; i < 3; ++i) {
    const std::optional<double> ohms =
        NumberOfText(custom_ohms_[i]->text().toStdString(), SystemDecimalSeparator());
    points[i] = {custom_celsius_[i]->value(), ohms.value_or(0.0)};
  }
  std::string problem;
  const std::optional<CustomSensorRows> rows = FillFromPoints(points, &problem);
  std::vector<QPointF> marks;
  for (const SensorPoint& point : points) marks.emplace_back(point.celsius, point.ohms);
  custom_curve_->SetMarks(marks);
  if (!rows) {
    custom_curve_->SetPoints({});
    custom_note_->setStyleSheet("color: rgb(200, 20, 20);");
    custom_note_->setText(QString::fromStdString(problem) + " Nothing was sent.");
    return;
  }
  std::vector<QPointF> curve;
  for (double c = -20.0; c <= 120.0; c += 2.5) {
    if (const std::optional<double> ohms = OhmsAt(rows->curve, c)) curve.emplace_back(c, *ohms);
  }
  custom_curve_->SetPoints(curve);
  const SensorTable which =
      custom_target_->currentIndex() == 0 ? SensorTable::kWater : SensorTable::kAir;
  std::array<std::string, kSensorPoints> texts;
  QStringList extrapolated;
  for (int row = 0; row < kSensorPoints; ++row) {
    texts[row] = Ohms(rows->ohms[row]).toStdString();
    if (rows->extrapolated[row]) extrapolated << QString::number(kSensorPointTemperatures[row]);
  }
  FillTable(which, texts);
  ShowChoice(lists_[static_cast<std::size_t>(which)], 0);
  const bool sent = SendTable(which);
  custom_note_->setStyleSheet(extrapolated.isEmpty() ? QString() : "color: rgb(170, 90, 0);");
  custom_note_->setText(
      (sent ? QString("The %1 table was filled from the curve and sent. ")
                  .arg(kTableNames[static_cast<std::size_t>(which)])
            : QString("The table was filled but not sent. ")) +
      (extrapolated.isEmpty()
           ? QString("Every row lies between the measured points.")
           : QString("Rows %1 \u00B0C lie outside the measured points and are extrapolated: "
                     "measure closer to them if the engine runs there.")
                 .arg(extrapolated.join(", "))));
}

void SensorSetupPage::ShowEditors() {
  const ChangeEventsSuppressed filling(parts_.editors.suppress_change_events());
  ShowControls();
  fields_->ShowEditors();
}

void SensorSetupPage::ShowControls() {
  const ChangeEventsSuppressed filling(parts_.editors.suppress_change_events());
  const SensorSetup& sensors = parts_.editors.state().sensors;
  for (const ChoiceControl& control : choices_) ShowChoiceControl(control, parts_.editors);
  for (const SensorTable which : {SensorTable::kWater, SensorTable::kAir}) {
    const std::array<std::uint8_t, 8>& bytes =
        which == SensorTable::kWater ? sensors.water_sensor_cal : sensors.air_sensor_cal;
    std::array<std::string, kSensorPoints> texts;
    for (int row = 0; row < kSensorPoints; ++row) {
      texts[row] = Ohms(OhmsOfRatioByte(bytes[row])).toStdString();
    }
    FillTable(which, texts);
    sent_texts_[static_cast<std::size_t>(which)] = texts;
    ShowChoice(lists_[static_cast<std::size_t>(which)], 0);
  }
}

void SensorSetupPage::ShowLive(const LiveData& live, bool connected) {
  if (!isVisible()) return;
  filling_ = true;
  const LiveQuantity quantities[] = {LiveQuantity::kWaterTemp, LiveQuantity::kAirTemp};
  for (int i = 0; i < 2; ++i) {
    QTableWidgetItem* item = tables_[i]->item(kActualTempRow, 1);
    const QString text =
        connected ? LiveQText(live, quantities[i], ShownTextStyle(0)) : QStringLiteral("--");
    if (item->text() != text) item->setText(text);
    const QColor ink = connected ? palette().color(QPalette::Text) : QColor(150, 150, 150);
    if (item->foreground().color() != ink) item->setForeground(ink);
  }
  filling_ = false;
}

void SensorSetupPage::ShowLanguage(bool english) {
  for (const SensorTable which : {SensorTable::kWater, SensorTable::kAir}) {
    lists_[static_cast<std::size_t>(which)]->setItemText(
        0, QString::fromStdString(SensorListTexts(which, !english).front()));
  }
}

}  // namespace vela

#include "moc_sensor_setup_page.cpp"
