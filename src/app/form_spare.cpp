#include "app/form_spare.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>

#include "link/qt/qt_serial_port.h"
#include "program/first_run_setup.h"

namespace vela {

FormSpare::FormSpare(ProgramSetup& setup, QtSerialPort& link_port, FileSystem& files,
                     MessageSink& messages, QWidget* parent)
    : QDialog(parent),
      setup_(setup),
      link_port_(link_port),
      files_(files),
      messages_(messages),
      port_list_(new QComboBox(this)),
      port2_list_(new QComboBox(this)) {
  setObjectName("FormSpare");
  setWindowTitle("MORVANE Engine Managements");
  port_list_->setObjectName("SparePortList");
  port2_list_->setObjectName("SparePort2List");
  for (int n = 1; n <= kPortCount; ++n) {
    port_list_->addItem(QString("CommPort %1  (%2)").arg(n).arg(link_port.DeviceFor(n)));
  }
  port2_list_->addItem("None");
  for (int n = 1; n <= kPortCount; ++n) port2_list_->addItem(QString("CommPort %1").arg(n));
  port_list_->setCurrentIndex(setup.settings.port_index);

  auto* form = new QFormLayout(this);
  form->addRow(new QLabel("Choose the serial port the ECU cable is plugged into.", this));
  form->addRow("ECU &port:", port_list_);
  form->addRow("&Second device:", port2_list_);
  auto* buttons = new QDialogButtonBox(this);
  auto* setup_button = buttons->addButton("&Set Up", QDialogButtonBox::AcceptRole);
  setup_button->setObjectName("SpareSetUp");
  buttons->addButton(QDialogButtonBox::Cancel);
  form->addRow(buttons);
  connect(setup_button, &QPushButton::clicked, this, &FormSpare::Complete);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void FormSpare::Complete() {
  const FirstRunChoice choice{port_list_->currentIndex() + 1, port2_list_->currentIndex()};
  const bool already_open =
      link_port_.IsOpen() && link_port_.device() == link_port_.DeviceFor(choice.port);
  QtSerialPort test_port(false);  // told its device below, so the naming rule is not used
  test_port.set_device_override(link_port_.DeviceFor(choice.port));
  if (CompleteFirstRunSetup(choice, already_open, test_port, files_, setup_.ConfigFilePath(),
                            messages_)) {
    accept();
  }
}

}  // namespace vela

#include "moc_form_spare.cpp"
