// `OperationLine`: the typed line under a map grid. It opens with the character typed on the grid
// (`=`, a digit or an operator), shows what the line would do as the tuner types (the range of
// the selection afterwards and the counts, or why the text is refused), and hands the text over
// on Enter; Escape leaves it without a change. Either way it closes.
#pragma once

#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QString>

namespace vela {

class OperationLine : public QFrame {
  Q_OBJECT

 public:
  explicit OperationLine(QWidget* parent = nullptr);

  // Shows the line holding `text` with the keyboard in it.
  void Open(const QString& text);
  void Close();
  bool IsOpen() const { return open_; }
  // What Enter would do, or the refusal (`refused` shows it as one).
  void ShowPreview(const QString& text, bool refused);

  QLineEdit* edit() const { return edit_; }
  QLabel* preview() const { return preview_; }

 signals:
  void TextChanged(const QString& text);
  void Entered(const QString& text);
  void Left();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QLineEdit* edit_;
  QLabel* preview_;
  bool open_ = false;
};

}  // namespace vela
