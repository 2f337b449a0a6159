// The raw field editors of a page bound to the editors: every change goes to the ECU at once,
// each byte takes only the values its setup checks let it take (the tooltip says why), and the
// failed setup checks that read a field are shown under it.
#pragma once

#include <QObject>
#include <vector>

#include "app/pages/setup/setup_widgets.h"

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
