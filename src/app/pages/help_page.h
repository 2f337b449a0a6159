// The Help page: the notice line, the help options, the keystroke table (English or German, as
// the language option says) and, beside it, the workbench keys over the datalog chart's keys.
#pragma once

#include <QLabel>
#include <QTableWidget>
#include <QWidget>

namespace vela {

class HelpPage : public QWidget {
  Q_OBJECT

 public:
  // `options` (the help and language choices) is placed under the notice line.
  HelpPage(QWidget* options, QWidget* parent = nullptr);

  // `NoticeLabel`, filled by the start-up.
  QLabel* notice_label() const { return notice_; }
  void ShowKeystrokeTable(bool english);

 private:
  QLabel* notice_;
  QTableWidget* keystrokes_;
};

}  // namespace vela
