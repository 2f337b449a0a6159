#include "link/transfer/download.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/recording_sender.h"

namespace vela {
namespace {

using ::testing::ElementsAre;

using Frame = testing::SentFrame;
using testing::RecordingSender;

class DownloadTest : public ::testing::Test {
 protected:
  DownloadCallbacks Callbacks() {
    return {[this] { log.push_back("show"); },
            [this](double width) { widths.push_back(width); },
            [this] { log.push_back("close"); },
            [this](bool on) { log.push_back(on ? "timer on" : "timer off"); },
            [this] { log.push_back("status cleared"); },
            [this] { return line_ready; },
            [this] { log.push_back("interrupted"); }};
  }
  int RunToEnd() {
    int ticks = 0;
    while (download.running() && ticks < 2000) {
      download.Tick();
      ++ticks;
    }
    return ticks;
  }
  static std::vector<std::uint8_t> Image(std::size_t length) {
    std::vector<std::uint8_t> image(length);
    for (std::size_t i = 0; i < length; ++i) image[i] = static_cast<std::uint8_t>(i * 5 + 1);
    return image;
  }

  RecordingSender sender;
  LinkState link;
  std::vector<std::string> log;
  std::vector<double> widths;
  bool line_ready = true;
  Download download{sender, link, Callbacks()};
};

// One whole download: a frame a tick (their layout: the short images below, and the scripted
// session's transcript), the progress bar growing with the position, the link held until the
// closing tick, and a late tick sending nothing.
TEST_F(DownloadTest, AWholeImageTravelsAsPairsThenTheOddByteThenTheClosingFrame) {
  download.Start(Image(1023));
  EXPECT_TRUE(link.TLock);
  EXPECT_THAT(log, ElementsAre("show", "timer on"));
  for (int i = 0; i < 512; ++i) download.Tick();
  EXPECT_TRUE(download.running());
  download.Tick();
  EXPECT_FALSE(download.running());
  EXPECT_FALSE(link.TLock);
  EXPECT_EQ(download.DownloadPos(), 1);
  EXPECT_THAT(log, ElementsAre("show", "timer on", "close", "timer off", "status cleared"));
  download.Tick();  // a late tick after the timer stopped
  ASSERT_EQ(sender.frames.size(), 513u);
  EXPECT_EQ(sender.frames[511], (Frame{4, 1023, 247}));  // the last byte: (1022 x 5 + 1) mod 256
  EXPECT_EQ(sender.frames[512], (Frame{6, 1025, 0}));
  ASSERT_EQ(widths.size(), 513u);
  EXPECT_DOUBLE_EQ(widths[0], 6450.0 / 1023);
  EXPECT_DOUBLE_EQ(widths[511], 6450.0);
  EXPECT_DOUBLE_EQ(widths[512], 6450.0 / 1023 * 1025);

  link.TLock = true;  // the tuner's Lock Timing stays as it was after a download
  download.Start(Image(1023));
  EXPECT_EQ(RunToEnd(), 513);
  EXPECT_TRUE(link.TLock);
}

TEST_F(DownloadTest, StartingAgainRestartsFromTheFirstPosition) {
  download.Start(Image(1023));
  for (int i = 0; i < 10; ++i) download.Tick();
  download.Start(Image(3));
  EXPECT_EQ(download.DownloadPos(), 1);
  RunToEnd();
  EXPECT_THAT(std::vector<Frame>(sender.frames.begin() + 10, sender.frames.end()),
              ElementsAre(Frame{2, 1, 1 + 256 * 6}, Frame{4, 3, 11}, Frame{6, 5, 0}));
}

TEST_F(DownloadTest, AnEvenOrEmptyImageHasNoSingleByteFrame) {
  download.Start(Image(4));
  EXPECT_EQ(RunToEnd(), 3);
  download.Start({});
  EXPECT_EQ(RunToEnd(), 1);
  EXPECT_THAT(sender.frames, ElementsAre(Frame{2, 1, 1 + 256 * 6}, Frame{2, 3, 11 + 256 * 16},
                                         Frame{6, 5, 0}, Frame{6, 1, 0}));
  EXPECT_EQ(widths.back(), 0.0);
}

// The download goes on to its end as it always did, but one that lost its line on the way is
// reported after the progress window closed; a clean one afterwards is not.
TEST_F(DownloadTest, ALineLostOrASendAbortedOnTheWayIsReportedWhenTheDownloadEnds) {
  download.Start(Image(1023));
  for (int i = 0; i < 100; ++i) download.Tick();
  line_ready = false;  // the port closed or the ECU stopped answering
  download.Tick();
  line_ready = true;
  EXPECT_EQ(RunToEnd(), 412);
  EXPECT_EQ(sender.frames.size(), 513u);
  EXPECT_TRUE(download.broken());
  EXPECT_THAT(std::vector<std::string>(log.end() - 3, log.end()),
              ElementsAre("timer off", "status cleared", "interrupted"));

  log.clear();
  download.Start(Image(1023));
  EXPECT_FALSE(download.broken());
  RunToEnd();
  EXPECT_THAT(log, ElementsAre("show", "timer on", "close", "timer off", "status cleared"));

  download.Start(Image(1023));
  download.Tick();
  link.CommsSendAborted = 1;  // a byte the port did not take within 350 ms
  download.Tick();
  link.CommsSendAborted = 0;
  RunToEnd();
  EXPECT_EQ(log.back(), "interrupted");
}

// The ECU's image as the frames of a download and of single writes leave it: code 2 writes the
// pair at the address, code 4 the value's low byte (and a fuel cell's high byte after it).
std::vector<std::uint8_t> EcuImageAfter(const std::vector<Frame>& frames, std::size_t length) {
  std::vector<std::uint8_t> ecu(length + 2, 0);
  for (const Frame& f : frames) {
    if (f.command == 6 || f.address < 1) continue;
    const auto at = static_cast<std::size_t>(f.address - 1);
    ecu[at] = static_cast<std::uint8_t>(f.value & 0xFF);
    if (f.command == 2 || f.value > 0xFF) ecu[at + 1] = static_cast<std::uint8_t>(f.value >> 8);
  }
  ecu.resize(length);
  return ecu;
}

// Edits made while a download runs wait and follow its closing frame, in the order made, so that
// the download's later frames never overwrite them in the ECU; once it has ended, edits go at
// once again.
TEST(DownloadEdits, AnEditDuringADownloadFollowsItAndIsNeverOverwritten) {
  RecordingSender sender;
  LinkState link;
  HeldEdits edits(sender);
  Download download(sender, link, {}, &edits);
  std::vector<std::uint8_t> image(1023, 0x11);
  download.Start(image);
  for (int i = 0; i < 100; ++i) download.Tick();  // positions 1 to 200 are down
  EXPECT_EQ(edits.Send({4, 601, 0x2345}).outcome, SendOutcome::kHeld);  // a fuel cell ahead
  EXPECT_EQ(edits.Send({4, 3, 0x77}).outcome, SendOutcome::kHeld);      // a byte already sent
  EXPECT_EQ(edits.Send({4, 601, 0x2346}).outcome, SendOutcome::kHeld);  // the same cell again
  EXPECT_EQ(edits.waiting(), 3u);
  while (download.running()) download.Tick();
  ASSERT_EQ(sender.frames.size(), 516u);
  EXPECT_EQ(sender.frames[512], (Frame{6, 1025, 0}));
  EXPECT_THAT(std::vector<Frame>(sender.frames.begin() + 513, sender.frames.end()),
              ElementsAre(Frame{4, 601, 0x2345}, Frame{4, 3, 0x77}, Frame{4, 601, 0x2346}));
  const std::vector<std::uint8_t> ecu = EcuImageAfter(sender.frames, image.size());
  EXPECT_EQ(ecu[600], 0x46);
  EXPECT_EQ(ecu[601], 0x23);
  EXPECT_EQ(ecu[2], 0x77);
  EXPECT_EQ(edits.waiting(), 0u);
  EXPECT_TRUE(edits.Send({4, 5, 1}).sent());
  EXPECT_EQ(sender.frames.back(), (Frame{4, 5, 1}));
}

}  // namespace
}  // namespace vela
