#include "app/sessions/fault_monitor.h"

#include <QDateTime>

#include "app/sessions/link_session.h"
#include "calibration/error_codes.h"

namespace vela {

namespace {
constexpr int kAnswerCheckMs = 50;

std::int64_t WallClockMs() { return QDateTime::currentMSecsSinceEpoch(); }
}  // namespace

FaultMonitor::FaultMonitor(LinkSession& link, QObject* parent)
    : QObject(parent), link_(link), reader_(link.sender(), clock_) {
  reader_.SetCallbacks({[this](const fault_reply::Reply& reply) {
                          answer_timer_.stop();
                          const QList<int> codes(reply.codes.begin(), reply.codes.end());
                          for (int code : watch_.ObserveCodes(reply.codes, WallClockMs())) {
                            Announce(code);
                          }
                          emit CodesRead(reply.held, codes);
                          emit WatchChanged();
                        },
                        [this] {
                          answer_timer_.stop();
                          emit NoAnswer();
                        }});
  link_.dispatcher().SetReplyHandler(
      [this](std::string& buffer) { reader_.FaultReplyHandler(buffer); });
  answer_timer_.setInterval(kAnswerCheckMs);
  connect(&answer_timer_, &QTimer::timeout, this, [this] { reader_.Tick(); });
  connect(&link_, &LinkSession::FrameTaken, this, &FaultMonitor::FrameTaken);
}

void FaultMonitor::RequestCodes() {
  reader_.Request();
  answer_timer_.start();
  emit CodesRequested();
}

void FaultMonitor::Acknowledge() {
  if (!watch_.Unacknowledged()) return;
  watch_.Acknowledge();
  emit WatchChanged();
}

void FaultMonitor::FrameTaken() {
  const LiveData& live = link_.live();
  const std::optional<int> news =
      watch_.ObserveFrame(live.error_count, live.last_error, WallClockMs());
  if (!news) return;
  Announce(*news);
  emit WatchChanged();
  RequestCodes();
}

void FaultMonitor::Announce(int code) {
  emit FaultSeen(code, QString::fromUtf8(ErrorTitle(code).data(),
                                         static_cast<qsizetype>(ErrorTitle(code).size())));
}

}  // namespace vela

#include "moc_fault_monitor.cpp"
