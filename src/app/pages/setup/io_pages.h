// The "Ou&tputs" and "Inpu&ts" tabs: every byte of the general purpose output and input groups
// and of the idle control, shown as stored and sent at once, with instant help on every caption.
// The ECU's function codes and group layouts are the ECU's own; the pages name each byte by its
// field and position and decode only what the calibration layout gives.
#pragma once

#include <QLabel>
#include <QWidget>

#include "app/pages/setup/raw_field_panel.h"
#include "app/pages/setup/setup_page_parts.h"

namespace vela {

class LiveValue;

class SettingsControls;

class OutputsPage : public QWidget {
  Q_OBJECT

 public:
  OutputsPage(SetupPageParts parts, SettingsControls& settings, QWidget* parent = nullptr);
  void ShowEditors() { fields_->ShowEditors(); }

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  SetupPageParts parts_;
  RawFieldPanel* fields_;
};

class InputsPage : public QWidget {
  Q_OBJECT

 public:
  InputsPage(SetupPageParts parts, QWidget* parent = nullptr);
  void ShowEditors() { fields_->ShowEditors(); }
  // "Current AFR" from the live data, in the chosen AFR display.
  // The current air-fuel ratio; "--" while `connected` is false.
  void ShowLive(double lambda, int afr_mode, bool connected);

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  SetupPageParts parts_;
  RawFieldPanel* fields_;
  LiveValue* current_afr_ = nullptr;
};

}  // namespace vela
