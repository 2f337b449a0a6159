// The list of the log's markers beside the chart: time, kind (the tuner's, a fault the ECU
// reported, a gap in the link) and text. The tuner's markers' texts can be edited in place;
// Enter (or a double click) on a row puts cursor A on that marker.
#pragma once

#include <QTableWidget>
#include <vector>

#include "datalog/datalog_log.h"
#include "datalog/review/marker_list.h"

namespace vela {

class MarkerListPanel : public QTableWidget {
  Q_OBJECT

 public:
  MarkerListPanel(DatalogLog& log, QWidget* parent = nullptr);

  // Reads the log's markers and gaps again (a log loaded, a marker dropped).
  void Rebuild();
  const std::vector<review::MarkerEntry>& entries() const { return entries_; }

 signals:
  // The tuner asked to go to the marker at `time`.
  void JumpTo(double time);
  // A marker's text was changed in the list.
  void TextEdited();
  // Esc: the tuner is done with the list.
  void Leave();

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void ItemChanged(QTableWidgetItem* item);

  DatalogLog& log_;
  std::vector<review::MarkerEntry> entries_;
  bool filling_ = false;
};

}  // namespace vela
