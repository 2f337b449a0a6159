#include "sim/core/sim_options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

namespace vela::sim {
namespace {

// The command line `text`, its words split at blanks.
std::optional<SimCommandLine> Parse(std::string_view text, std::string* error = nullptr) {
  std::vector<std::string_view> args;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(' ', at), text.size());
    args.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return ParseSimCommandLine(args, error);
}

TEST(SimCommandLineTest, ReadsEveryOptionInBothSpellings) {
  const auto line = Parse(
      "--image a.sm1 --link=/tmp/ecu --seed 9 --unpaced --garbage-every=3 --garbage-max 4 "
      "--chunks 2 --chunk-gap-ms 5 --silence-after 1.5 --silence-for=2 --upload-cut 100 "
      "--done-shift -2 --faulty-uploads 0 --burst-every 3 --burst-bytes 700 -v "
      "--fault-codes 66,139@20,3@0.5 --no-fault-reply");
  ASSERT_TRUE(line);
  EXPECT_EQ(line->image_path, "a.sm1");
  EXPECT_EQ(line->link_path, "/tmp/ecu");
  EXPECT_EQ(line->sim.seed, 9u);
  EXPECT_EQ(line->sim.byte_time_us, 0);
  const FaultOptions& f = line->sim.faults;
  EXPECT_EQ(std::tuple(f.garbage_every, f.garbage_max_bytes, f.chunk_max_bytes, f.chunk_gap_us),
            std::tuple(3, 4, 2, 5000));
  EXPECT_EQ(std::tuple(f.silence_after_us, f.silence_for_us, f.burst_every_us, f.burst_bytes),
            std::tuple(1'500'000, 2'000'000, 3'000'000, 700));
  EXPECT_EQ(std::tuple(f.upload_cut_bytes, f.done_shift, f.faulty_uploads), std::tuple(100, -2, 0));
  EXPECT_TRUE(line->verbose);
  EXPECT_EQ(line->sim.fault_codes,
            (std::vector<InjectedFault>{{66, 0}, {139, 20'000'000}, {3, 500'000}}));
  EXPECT_FALSE(line->sim.answer_fault_requests);
}

TEST(SimCommandLineTest, RefusesUnknownOptionsMissingAndMalformedValues) {
  std::string error;
  EXPECT_FALSE(Parse("--frobnicate", &error));
  EXPECT_NE(error.find("--frobnicate"), std::string::npos);
  for (const char* bad :
       {"--seed", "--seed x", "--silence-after -1", "--burst-bytes 499", "--upload-cut 1023"}) {
    EXPECT_FALSE(Parse(bad, &error)) << bad;
  }
  for (std::string_view bad : {"0", "256", "66,x", "66@", "66@-1", "@3"}) {
    EXPECT_FALSE(ParseInjectedFaults(bad)) << bad;
  }
  EXPECT_TRUE(Parse("--help")->help);
}

TEST(EngineCommandLineTest, ReadsFuelErrorsTheDriveAndTheTrueMap) {
  std::string error;
  const auto line = Parse(
      "--fuel-error 12@4000-9000,60-100 --fuel-error=-8@1500-3500,20-50 --drive 600 --write-log "
      "d.sl1 --true-map t.sm1 --target t.csv",
      &error);
  ASSERT_TRUE(line) << error;
  ASSERT_EQ(line->sim.fuel_errors.size(), 2u);
  EXPECT_EQ(line->sim.fuel_errors[1], (FuelError{-8, 1500, 3500, 20, 50}));
  EXPECT_EQ(line->drive_seconds, 600);
  EXPECT_EQ(line->write_log_path, "d.sl1");  // --true-map and --target: the target table test
  EXPECT_TRUE(line->Offline());
  for (std::string_view bad : {"12", "12@4000,60-100", "12@4000-3000,60-100", "12@0-9000,60-101",
                               "-95@0-9000,0-100", "x@0-9000,0-100", "12@0-9000,60-100,"}) {
    EXPECT_FALSE(Parse("--fuel-error " + std::string(bad), &error)) << bad;
  }
  EXPECT_FALSE(Parse("--drive 60", &error));
  EXPECT_NE(error.find("go together"), std::string::npos);
  EXPECT_FALSE(Parse("--write-log d.sl1", &error));
  EXPECT_FALSE(Parse("--drive 0 --write-log d.sl1", &error));
}

}  // namespace
}  // namespace vela::sim
