// `DatalogState`: the status strip's sign that a datalog is being recorded, on every tab, with
// the time recorded and the record count ("Logging 12.3 s, 740 records"), white on red; hidden
// while no log runs. Accessibility tools read it as static text named "Datalog recording" whose
// value is that text, and hear of each new text.
#pragma once

#include <cstddef>

#include "app/widgets/steady_label.h"
#include "base/qt/accessible_text.h"

namespace vela {

class RecordingIndicator : public SteadyLabel {
  Q_OBJECT

 public:
  explicit RecordingIndicator(QWidget* parent = nullptr);
  void Show(bool logging, double seconds, std::size_t records);

 private:
  ValueAnnouncer announcer_{this};
};

}  // namespace vela
