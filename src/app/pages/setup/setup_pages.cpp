#include "app/pages/setup/setup_pages.h"

#include <QScrollArea>
#include <QVBoxLayout>

#include "app/pages/setup/compensation_page.h"
#include "app/pages/setup/instant_help.h"
#include "app/pages/setup/io_pages.h"
#include "app/pages/setup/main_setup_page.h"
#include "app/pages/setup/sensor_setup_page.h"
#include "editors/mapgrid/key_routing.h"
#include "program/program_setup.h"

namespace vela {

void Place(QWidget* page, QWidget* content) {
  // Narrow margins: every pixel counts on a netbook, and at 1280 the outputs and the idle
  // control stand side by side only with them.
  page->layout()->setContentsMargins(3, 3, 3, 3);
  auto* scroll = new QScrollArea(page);
  scroll->setObjectName(content->objectName() + "Scroll");
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setWidget(content);
  page->layout()->addWidget(scroll);
}

SetupPages::SetupPages(EditorSession& editors, LinkSession& link, ProgramSetup& setup,
                       SettingsControls& settings, QTabWidget* tabs,
                       std::function<void()> maps_changed, QWidget* window)
    : QObject(window),
      editors_(editors),
      link_(link),
      setup_(setup),
      settings_(settings),
      maps_changed_(std::move(maps_changed)),
      help_(new InstantHelp(
          tabs, [this] { return setup_.settings.instant_help; }, window)) {}

QWidget* SetupPages::help_box() const { return help_->box(); }

bool SetupPages::BuildPage(int index, QWidget* page) {
  const SetupPageParts parts{editors_, link_, setup_, *help_, maps_changed_};
  switch (index) {
    case kPageOutputs:
      outputs_ = new OutputsPage(parts, settings_);
      Place(page, outputs_);
      return true;
    case kPageInputs:
      inputs_ = new InputsPage(parts);
      Place(page, inputs_);
      return true;
    case kPageCompensation:
      compensation_ = new CompensationPage(parts);
      Place(page, compensation_);
      return true;
    case kPageMainSetup:
      main_setup_ = new MainSetupPage(parts, settings_);
      Place(page, main_setup_);
      return true;
    case kPageSensorSetup:
      sensor_setup_ = new SensorSetupPage(parts);
      Place(page, sensor_setup_);
      return true;
    default:
      return false;
  }
}

void SetupPages::ShowEditors() {
  outputs_->ShowEditors();
  inputs_->ShowEditors();
  compensation_->ShowEditors();
  main_setup_->ShowEditors();
  sensor_setup_->ShowEditors();
}

void SetupPages::ShowLive(const LiveData& live, int afr_mode, bool connected) {
  compensation_->ShowLive(live, afr_mode, connected);
  sensor_setup_->ShowLive(live, connected);
  if (inputs_->isVisible()) inputs_->ShowLive(live.lambda, afr_mode, connected);
}

void SetupPages::InstantHelpChanged() { help_->UpdateVisibility(); }
void SetupPages::LanguageChanged(bool english) { sensor_setup_->ShowLanguage(english); }

}  // namespace vela

#include "moc_setup_pages.cpp"
