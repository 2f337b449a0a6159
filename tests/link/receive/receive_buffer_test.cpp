// The receive event: what is kept of each chunk the port delivers.
#include <gtest/gtest.h>

#include "support/receive_rig.h"

namespace vela::testing {
namespace {

// While connected: chunks append and top up the watchdog below a thousand characters held, the
// buffer empties from there, a burst is cut to five hundred and an overflow keeps five.
TEST(ReceiveEvent, AppendsWhileConnectedWithinTheLimits) {
  ReceiveRig rig;
  rig.state.RxPending = 0;
  rig.Receive("abc");
  rig.Receive("de");
  EXPECT_EQ(rig.Buffer(), "abcde");
  EXPECT_EQ(rig.state.RxPending, kDefaultRxLevel);
  EXPECT_EQ(rig.display.last_chunk_length, 2u);

  rig.Buffer() = std::string(999, 'x');
  rig.Receive(std::string(100, 'y'));
  EXPECT_EQ(rig.Buffer().size(), 1099u);
  rig.Buffer().clear();
  rig.Receive(std::string(499, 'a'));
  EXPECT_EQ(rig.display.overflow_count, 0);
  rig.Buffer() = std::string(1000, 'x');
  rig.Receive(std::string(100, 'y'));
  EXPECT_EQ(rig.Buffer(), "");
  EXPECT_EQ(rig.display.overflow_count, 1);
  rig.Receive(std::string(500, 'b') + "tail");
  EXPECT_EQ(rig.Buffer(), std::string(500, 'b'));
  EXPECT_EQ(rig.display.overflow_count, 2);
  rig.port.input = "STARTxyz";
  rig.buffer.OnCommEvent(kReceiveOverflow);
  EXPECT_EQ(rig.display.last_overflow_text, "START");
}

// Not connected, a chunk is dropped unless the debug view captures; a closed port or a read that
// lets the event in again takes nothing more.
TEST(ReceiveEvent, DropsDataWhileNotConnectedOnAClosedPortOrWhenReentered) {
  ReceiveRig rig;
  rig.port.open = false;
  rig.Receive("abc");
  EXPECT_EQ(rig.Buffer(), "");
  rig.port.open = true;
  int reads = 0;
  rig.port.on_read = [&] {
    ++reads;
    rig.buffer.OnCommEvent(kDataReceived);  // a read that lets events run
  };
  rig.buffer.OnCommEvent(kDataReceived);
  EXPECT_EQ(reads, 1);
  EXPECT_EQ(rig.Buffer(), "abc");
  rig.port.on_read = nullptr;

  rig.state.Caption = std::string(kCaptionNotConnected);
  rig.Receive("new");
  EXPECT_EQ(rig.Buffer(), "");
  EXPECT_EQ(rig.display.overflow_count, 1);
  rig.state.RxDebug = true;
  rig.Receive("kept");
  EXPECT_EQ(rig.Buffer(), "kept");
}

}  // namespace
}  // namespace vela::testing
