#include "app/pages/setup/io_pages.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "app/pages/data_page.h"
#include "app/pages/setup/instant_help.h"
#include "app/sessions/editor_session.h"
#include "app/widgets/live_value.h"
#include "app/widgets/settings_controls.h"
#include "program/context_help.h"

namespace vela {

namespace {

namespace l = help_label;

// A box of help captions that explain functions and faults, `columns` across.
template <std::size_t N>
QGroupBox* GuideBox(QWidget* parent, InstantHelp& help, const QString& name, const QString& title,
                    int first_index, const std::string_view (&topics)[N], int columns,
                    const QString& note = {}) {
  QGroupBox* box = MakeBox(parent, name, title);
  help.WatchFrame(box);
  auto* grid = new QGridLayout(box);
  grid->setContentsMargins(6, 4, 6, 4);
  grid->setVerticalSpacing(2);
  for (int i = 0; i < static_cast<int>(N); ++i) {
    grid->addWidget(help.MakeLabel(box, first_index + i, TextOf(topics[i])), i / columns,
                    i % columns);
  }
  if (!note.isEmpty()) {
    auto* text = new QLabel(note, box);
    text->setWordWrap(true);
    text->setStyleSheet("color: #606060;");
    grid->addWidget(text, grid->rowCount(), 0, 1, columns);
  }
  return box;
}

// A group of raw fields whose captions are help labels numbered from `first_index` in order,
// or from `index_of` when given.
QGroupBox* RawBox(QWidget* parent, InstantHelp& help, RawFieldPanel& panel, const RawGroup& group,
                  const QString& name, const std::function<int(int)>& index_of, int columns = 1) {
  QGroupBox* box = MakeBox(parent, name, QString::fromStdString(group.title));
  help.WatchFrame(box);
  panel.Add(AddRawGroup(
      box, group,
      [&help, &index_of](QWidget* owner, const RawField& field, int i) {
        return help.MakeLabel(owner, index_of(i), QString::fromStdString(field.label));
      },
      columns));
  return box;
}

constexpr const char* kFunctionNote =
    "What each function does (click a caption); the codes and bytes that select it are the "
    "ECU's own and are shown as stored.";

}  // namespace

OutputsPage::OutputsPage(SetupPageParts parts, SettingsControls& settings, QWidget* parent)
    : QWidget(parent), parts_(parts), fields_(new RawFieldPanel(parts.editors, this)) {
  setObjectName("OutputsPage");
  InstantHelp& help = parts_.help;
  // The three outputs side by side over the function and fault captions and the display
  // options; the idle control on the right. A narrow page wraps the columns below each other.
  FlowColumns* columns = MakePageColumns(this, "OutputsColumns");
  auto* left_column = new QWidget(this);
  auto* left = new QVBoxLayout(left_column);
  left->setContentsMargins(0, 0, 0, 0);
  auto* outputs_row = new QHBoxLayout;
  const std::vector<RawGroup> outputs = OutputGroups();
  for (int n = 0; n < static_cast<int>(outputs.size()); ++n) {
    outputs_row->addWidget(
        RawBox(
            left_column, help, *fields_, outputs[static_cast<std::size_t>(n)],
            QString("Gpo%1Setup").arg(n + 1), [n](int i) { return l::kGpoFirst + 16 * n + i; }, 2),
        1);
  }
  left->addLayout(outputs_row);
  auto* guides = new QHBoxLayout;
  guides->addWidget(GuideBox(left_column, help, "OutputFunctions", "Output Functions",
                             l::kOutputFunctionsFirst, kOutputFunctionTopics, 2, kFunctionNote),
                    2);
  guides->addWidget(
      GuideBox(left_column, help, "EcuFaults", "ECU Faults", l::kFaultsFirst, kFaultTopics, 3), 3);
  left->addLayout(guides);
  auto* display = new QWidget(left_column);
  auto* display_row = new QHBoxLayout(display);
  display_row->setContentsMargins(0, 0, 0, 0);
  display_row->addWidget(help.MakeLabel(display, l::kOutputDisplay, "Output Display"));
  auto* display_box = static_cast<QGroupBox*>(settings.BuildOutputsDisplay(display));
  display_box->setTitle(QString());  // the help caption beside it names it
  // Tight margins: the page fits 1280 x 720 with the error list shown under it.
  display_box->layout()->setContentsMargins(4, 2, 4, 2);
  display_box->layout()->setSpacing(2);
  for (auto* pair : display_box->findChildren<QGroupBox*>(Qt::FindDirectChildrenOnly)) {
    pair->layout()->setContentsMargins(6, 1, 6, 1);
  }
  display_row->addWidget(display_box, 1);
  left->addWidget(display);
  left->addStretch(1);
  columns->AddColumn(left_column, 3);
  auto* right_column = new QWidget(this);
  auto* right = new QVBoxLayout(right_column);
  right->setContentsMargins(0, 0, 0, 0);
  const std::vector<RawGroup> idle = IdleGroups();
  const std::function<int(int)> idle_indexes[] = {[](int i) { return l::kIdleTarget + i; },
                                                  [](int i) { return l::kIdleColdFirst + i; },
                                                  [](int i) { return l::kIdleFlagsFirst + i; }};
  const char* idle_names[] = {"IdleSpeed", "IdleValues", "CheckIdle"};
  for (int g = 0; g < static_cast<int>(idle.size()); ++g) {
    right->addWidget(RawBox(right_column, help, *fields_, idle[static_cast<std::size_t>(g)],
                            idle_names[g], idle_indexes[g]));
  }
  right->addStretch(1);
  columns->AddColumn(right_column, 1);
  ShowEditors();
}

void OutputsPage::showEvent(QShowEvent* event) {
  ShowEditors();
  QWidget::showEvent(event);
}

InputsPage::InputsPage(SetupPageParts parts, QWidget* parent)
    : QWidget(parent), parts_(parts), fields_(new RawFieldPanel(parts.editors, this)) {
  setObjectName("InputsPage");
  InstantHelp& help = parts_.help;
  FlowColumns* columns = MakePageColumns(this, "InputsColumns");
  const std::vector<RawGroup> inputs = InputGroups();
  auto* left_column = new QWidget(this);
  auto* left = new QVBoxLayout(left_column);
  left->setContentsMargins(0, 0, 0, 0);
  for (int n = 0; n < static_cast<int>(inputs.size()); ++n) {
    left->addWidget(RawBox(
        left_column, help, *fields_, inputs[static_cast<std::size_t>(n)],
        QString("Gpi%1").arg(n + 1), [n](int i) { return l::kGpiFirst + 10 * n + i; }, 2));
  }
  left->addStretch(1);
  columns->AddColumn(left_column);
  auto* right_column = new QWidget(this);
  auto* right = new QVBoxLayout(right_column);
  right->setContentsMargins(0, 0, 0, 0);
  right->addWidget(GuideBox(right_column, help, "LaunchAntiLag", "Launch and Anti-Lag",
                            l::kLaunchFirst, kLaunchTopics, 3, kFunctionNote));
  QGroupBox* closed_loop =
      GuideBox(right_column, help, "ClosedLoop", "Closed-Loop Air-Fuel Control",
               l::kClosedLoopFirst, kClosedLoopTopics, 2);
  current_afr_ =
      new LiveValue(QStringLiteral("00.0 Natural Gas (NGV)"), Qt::AlignLeft, closed_loop);
  current_afr_->setObjectName("CurrentAFR");
  current_afr_->setAccessibleName("Current AFR");
  QFont bold = current_afr_->font();
  bold.setBold(true);
  current_afr_->setFont(bold);
  // A read-out box of its own: a new value then never draws the group box behind it again.
  current_afr_->SetOpaque(QPalette::Base, true);
  current_afr_->SetText("-");
  static_cast<QGridLayout*>(closed_loop->layout())->addWidget(current_afr_, 0, 2);
  right->addWidget(closed_loop);
  right->addWidget(GuideBox(right_column, help, "SensorFaults", "Sensor Faults",
                            l::kSensorFaultsFirst, kSensorFaultTopics, 2));
  right->addStretch(1);
  columns->AddColumn(right_column);
  ShowEditors();
}

void InputsPage::ShowLive(double lambda, int afr_mode, bool connected) {
  QString unit;
  const QString value = connected ? AfrDisplayText(lambda, afr_mode, &unit) : QString("--");
  const QString text = (value + " " + unit.trimmed()).trimmed();
  current_afr_->SetText(text);
  current_afr_->SetGreyed(!connected);
}

void InputsPage::showEvent(QShowEvent* event) {
  ShowEditors();
  QWidget::showEvent(event);
}

}  // namespace vela

#include "moc_io_pages.cpp"
