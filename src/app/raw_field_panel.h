// The raw field editors of a page bound to the editors: every change goes to the ECU at once,
// and the failed setup checks of each field are shown beside it.
#pragma once

#include <QObject>
#include <vector>

#include "app/setup_widgets.h"

namespace vela {

class EditorSession;

class RawFieldPanel : public QObject {
  Q_OBJECT

 public:
  RawFieldPanel(EditorSession& editors, QObject* parent);

  void Add(const std::vector<RawFieldEditor*>& editors);
  // Every field's value from the image, and its checks.
  void ShowEditors();

 signals:
  void Edited();

 private:
  EditorSession& editors_;
  std::vector<RawFieldEditor*> fields_;
};

}  // namespace vela
