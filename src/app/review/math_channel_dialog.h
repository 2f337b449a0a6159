// The math channels of the log: "Math Channels" lists them (name = expression, or why it is
// refused) with Add, Edit, Remove and the defaults; "Math Channel" edits one, checking the name
// and the expression as they are typed and marking the place of a refusal.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <vector>

#include "datalog/review/math_channels.h"

namespace vela {

class ReviewSession;

// One channel: its name and expression, checked as they would compile after `before`. A new name
// for a channel that others use is taken: the session rewrites their expressions to follow it.
class MathChannelEditor : public QDialog {
  Q_OBJECT

 public:
  MathChannelEditor(const review::MathChannel& channel, std::vector<review::MathChannel> before,
                    QWidget* parent = nullptr);

  review::MathChannel Channel() const;
  // The names of the channels after this one, which its name must not repeat either.
  void SetLaterNames(std::vector<std::string> names);
  // The check's words: empty when the channel is accepted.
  QString Refusal() const { return refusal_; }
  // The character of the expression the refusal points at, or -1.
  int RefusedAt() const { return refused_at_; }

 private:
  void Check();

  std::vector<review::MathChannel> before_;
  std::vector<std::string> later_names_;
  QLineEdit* name_ = nullptr;
  QLineEdit* expression_ = nullptr;
  QLabel* check_ = nullptr;
  QPushButton* ok_ = nullptr;
  QString refusal_;
  int refused_at_ = -1;
};

class MathChannelsDialog : public QDialog {
  Q_OBJECT

 public:
  MathChannelsDialog(ReviewSession& review, QWidget* parent = nullptr);

  QListWidget* list() const { return list_; }
  // Opens the editor for a new channel (row -1) or row `row`; the result replaces the session's.
  void Edit(int row);

 private:
  void Fill();
  void Remove();

  ReviewSession& review_;
  QListWidget* list_ = nullptr;
};

}  // namespace vela
