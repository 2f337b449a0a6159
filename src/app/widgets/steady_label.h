#pragma once

#include <QLabel>
#include <QStringList>

namespace vela {

// A label whose size never follows its text: it is as large as the longest of the texts it is
// given, at whatever font it has (measured again when the font or style changes). A read-out
// whose text changes several times a second would otherwise have the whole window laid out
// again with each change. With a width, the texts wrap within it and the height fits the
// tallest; without one, the label is as wide as the widest text on one line.
class SteadyLabel : public QLabel {
 public:
  SteadyLabel(QStringList longest, QWidget* parent, int wrap_width = 0);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void FitLongest();

  QStringList longest_;
  int wrap_width_;
};

}  // namespace vela
