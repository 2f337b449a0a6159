#include "app/pages/file_options_page.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "app/sessions/editor_session.h"

namespace vela {

FileOptionsPage::FileOptionsPage(EditorSession& editors, QWidget* options, QWidget* parent)
    : QWidget(parent) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(BuildMapFileButtons(editors));
  layout->addWidget(options);
}

QWidget* FileOptionsPage::BuildMapFileButtons(EditorSession& editors) {
  auto* box = new QGroupBox("Maps", this);
  box->setObjectName("MapFileOptions");
  box->setMaximumWidth(760);
  auto* row = new QHBoxLayout(box);
  auto* save = new QPushButton("Save Map to Disk...", box);
  save->setObjectName("SaveMapButton");
  auto* load = new QPushButton("Load and Download Map...", box);
  load->setObjectName("LoadMapButton");
  offline_button_ = new QPushButton("Work Off-line", box);
  offline_button_->setObjectName("OfflineButton");
  offline_button_->setCheckable(true);
  row->addWidget(save);
  row->addWidget(load);
  row->addWidget(offline_button_);
  row->addStretch(1);
  connect(save, &QPushButton::clicked, &editors, &EditorSession::SaveMap);
  connect(load, &QPushButton::clicked, &editors, &EditorSession::LoadAndDownloadMap);
  connect(offline_button_, &QPushButton::toggled, &editors, &EditorSession::SetOffline);
  return box;
}

void FileOptionsPage::ShowOffline(bool offline) {
  {
    const QSignalBlocker block(offline_button_);
    offline_button_->setChecked(offline);
  }
  offline_button_->setText(offline ? "Go On-line" : "Work Off-line");
}

}  // namespace vela

#include "moc_file_options_page.cpp"
