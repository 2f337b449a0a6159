#include "sim/core/sim_options.h"

#include <gtest/gtest.h>

#include <vector>

namespace vela::sim {
namespace {

std::optional<SimCommandLine> Parse(std::vector<std::string_view> args,
                                    std::string* error = nullptr) {
  return ParseSimCommandLine(args, error);
}

TEST(SimCommandLineTest, ReadsEveryOptionInBothSpellings) {
  const auto line = Parse({"--image",
                           "a.sm1",
                           "--link=/tmp/ecu",
                           "--seed",
                           "9",
                           "--unpaced",
                           "--garbage-every=3",
                           "--garbage-max",
                           "4",
                           "--chunks",
                           "2",
                           "--chunk-gap-ms",
                           "5",
                           "--silence-after",
                           "1.5",
                           "--silence-for=2",
                           "--upload-cut",
                           "100",
                           "--done-shift",
                           "-2",
                           "--faulty-uploads",
                           "0",
                           "--burst-every",
                           "3",
                           "--burst-bytes",
                           "700",
                           "-v"});
  ASSERT_TRUE(line);
  EXPECT_EQ(line->image_path, "a.sm1");
  EXPECT_EQ(line->link_path, "/tmp/ecu");
  EXPECT_EQ(line->sim.seed, 9u);
  EXPECT_EQ(line->sim.byte_time_us, 0);
  const FaultOptions& f = line->sim.faults;
  EXPECT_EQ(f.garbage_every, 3);
  EXPECT_EQ(f.garbage_max_bytes, 4);
  EXPECT_EQ(f.chunk_max_bytes, 2);
  EXPECT_EQ(f.chunk_gap_us, 5000);
  EXPECT_EQ(f.silence_after_us, 1'500'000);
  EXPECT_EQ(f.silence_for_us, 2'000'000);
  EXPECT_EQ(f.upload_cut_bytes, 100);
  EXPECT_EQ(f.done_shift, -2);
  EXPECT_EQ(f.faulty_uploads, 0);
  EXPECT_EQ(f.burst_every_us, 3'000'000);
  EXPECT_EQ(f.burst_bytes, 700);
  EXPECT_TRUE(line->verbose);
}

TEST(SimCommandLineTest, RefusesUnknownOptionsMissingAndMalformedValues) {
  std::string error;
  EXPECT_FALSE(Parse({"--frobnicate"}, &error));
  EXPECT_NE(error.find("--frobnicate"), std::string::npos);
  EXPECT_FALSE(Parse({"--seed"}, &error));
  EXPECT_FALSE(Parse({"--seed", "x"}, &error));
  EXPECT_FALSE(Parse({"--silence-after", "-1"}, &error));
  EXPECT_FALSE(Parse({"--burst-bytes", "499"}, &error));
  EXPECT_FALSE(Parse({"--upload-cut", "1023"}, &error));
  EXPECT_TRUE(Parse({"--help"})->help);
}

}  // namespace
}  // namespace vela::sim
