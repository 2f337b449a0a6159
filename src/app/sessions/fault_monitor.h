// The ECU's faults as the program follows them: the fault code request and its reply on the link,
// and the faults seen since the program started. Every live frame's fault fields are watched; a
// new fault is announced with FaultSeen (the datalog marks its log there, the status strip shows
// it) and the ECU is asked for its codes, so that codes that arrived together are all recorded.
#pragma once

#include <QList>
#include <QObject>
#include <QTimer>

#include "base/qt/qt_platform.h"
#include "link/faults/fault_codes.h"
#include "link/faults/fault_watch.h"

namespace vela {

class LinkSession;

class FaultMonitor : public QObject {
  Q_OBJECT

 public:
  explicit FaultMonitor(LinkSession& link, QObject* parent = nullptr);

  // Asks the ECU for its codes (announced by CodesRequested, answered by CodesRead or NoAnswer).
  // The program asks by itself on a new fault, as the error-code button does.
  void RequestCodes();
  bool Waiting() const { return reader_.Waiting(); }
  const FaultWatch& watch() const { return watch_; }
  // The tuner has looked at the faults: the strip stops calling for attention.
  void Acknowledge();

 signals:
  // The codes were asked for: what the grid listed is no longer the ECU's word.
  void CodesRequested();
  // A fault the ECU reported anew: its code and its title as the code table gives it.
  void FaultSeen(int code, const QString& title);
  // The ECU's answer: how many codes it holds and its four newest (0 where it holds fewer).
  void CodesRead(int held, const QList<int>& codes);
  void NoAnswer();
  // The faults seen or the one waiting to be looked at changed.
  void WatchChanged();

 private:
  void FrameTaken();
  void Announce(int code);

  LinkSession& link_;
  QtClock clock_;
  FaultCodeReader reader_;
  FaultWatch watch_;
  QTimer answer_timer_;
};

}  // namespace vela
