// The File Options page: the map file buttons (save, load and download, off-line) above the
// program's file options.
#pragma once

#include <QPushButton>
#include <QWidget>

namespace vela {

class EditorSession;

class FileOptionsPage : public QWidget {
  Q_OBJECT

 public:
  // `options`: the program's file options, placed under the map file buttons.
  FileOptionsPage(EditorSession& editors, QWidget* options, QWidget* parent = nullptr);

  // The off-line button shows the program's mode: "Go On-line" while off-line.
  void ShowOffline(bool offline);

 private:
  QWidget* BuildMapFileButtons(EditorSession& editors);

  QPushButton* offline_button_ = nullptr;
};

}  // namespace vela
