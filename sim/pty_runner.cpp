#include "sim/pty_runner.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "sim/core/base_calibration.h"
#include "sim/core/ecu_simulator.h"

namespace vela::sim {

namespace {

constexpr int kPollMs = 1;         // pacing tick while the other end is open
constexpr int kClosedPollMs = 20;  // while nobody holds the slave open
constexpr std::size_t kMaxPending =
    4096;  // bytes the other end has not taken yet, like a UART buffer

std::string Errno(const std::string& what) { return what + ": " + std::strerror(errno); }

// The master side of a new pseudo-terminal in raw mode, non-blocking.
class PtyMaster {
 public:
  ~PtyMaster() {
    if (fd_ >= 0) ::close(fd_);
  }
  bool Open(std::string* error) {
    fd_ = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (fd_ < 0) return Fail(Errno("posix_openpt"), error);
    if (::grantpt(fd_) != 0) return Fail(Errno("grantpt"), error);
    if (::unlockpt(fd_) != 0) return Fail(Errno("unlockpt"), error);
    char name[256] = {};
    if (::ptsname_r(fd_, name, sizeof name) != 0) return Fail(Errno("ptsname_r"), error);
    slave_path_ = name;
    const int flags = ::fcntl(fd_, F_GETFL);
    if (flags < 0 || ::fcntl(fd_, F_SETFL, flags | O_NONBLOCK) != 0) {
      return Fail(Errno("fcntl"), error);
    }
    MakeRaw();
    return true;
  }
  // Raw mode for the line: no echo (the simulator would read its own frames back), no line
  // editing, no translation of bytes. Termios calls on the master act on the slave's settings.
  void MakeRaw() const {
    termios t{};
    if (::tcgetattr(fd_, &t) != 0) return;
    ::cfmakeraw(&t);
    ::tcsetattr(fd_, TCSANOW, &t);
  }
  // While no process holds the slave open, the master reports a hang-up.
  bool SlaveOpen() const {
    pollfd p{fd_, POLLIN, 0};
    return ::poll(&p, 1, 0) >= 0 && (p.revents & POLLHUP) == 0;
  }
  int fd() const { return fd_; }
  const std::string& SlavePath() const { return slave_path_; }

 private:
  static bool Fail(const std::string& message, std::string* error) {
    if (error) *error = message;
    return false;
  }
  int fd_ = -1;
  std::string slave_path_;
};

// A symbolic link to the slave, removed again when done. An existing symbolic link at the path is
// replaced; any other file there is left alone and refused.
class SlaveLink {
 public:
  ~SlaveLink() {
    if (!path_.empty()) ::unlink(path_.c_str());
  }
  bool Place(const std::string& path, const std::string& target, std::string* error) {
    struct stat st {};
    if (::lstat(path.c_str(), &st) == 0) {
      if (!S_ISLNK(st.st_mode)) {
        if (error) *error = path + " exists and is not a symbolic link";
        return false;
      }
      ::unlink(path.c_str());
    }
    if (::symlink(target.c_str(), path.c_str()) != 0) {
      if (error) *error = Errno("symlink " + path);
      return false;
    }
    path_ = path;
    return true;
  }

 private:
  std::string path_;
};

std::string Describe(const CommandFrame& f) {
  return "command " + std::to_string(f.code) + " address " + std::to_string(f.address) + " value " +
         std::to_string(f.value);
}

class Runner {
 public:
  Runner(const SimCommandLine& options, const CalibrationImage& image, const PtyMaster& pty,
         const PtyRunnerHooks& hooks)
      : options_(options), sim_(options.sim, image), pty_(pty), hooks_(hooks) {}

  void Run(const std::atomic<bool>& stop) {
    if (hooks_.on_image) hooks_.on_image(sim_.Image());
    while (!stop.load()) {
      FeedLocalInput();
      const bool open = pty_.SlaveOpen();
      if (open != connected_) Reconnect(open);
      if (!connected_) {
        ::poll(nullptr, 0, kClosedPollMs);
        sim_.Advance(NowUs());  // the ECU runs on; its bytes go nowhere
        continue;
      }
      pollfd p{pty_.fd(), POLLIN, 0};
      ::poll(&p, 1, kPollMs);
      if (p.revents & POLLIN) ReadInput();
      const std::vector<std::uint8_t> out = sim_.Advance(NowUs());
      if (hooks_.on_engine) hooks_.on_engine(sim_.Engine());
      Send(out);
    }
  }

 private:
  std::int64_t NowUs() const {
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now() - start_).count();
  }

  void Log(const std::string& line) const {
    if (hooks_.on_log) hooks_.on_log(line);
  }

  void Reconnect(bool open) {
    connected_ = open;
    pending_.clear();
    if (open) {
      // Keep what the program may already have written; drop only bytes left for a reader
      // that has gone.
      pty_.MakeRaw();
      ::tcflush(pty_.fd(), TCOFLUSH);
    }
    Log(open ? "the other end opened the port" : "the other end closed the port");
  }

  void ReadInput() {
    std::uint8_t buffer[4096];
    for (;;) {
      const ssize_t n = ::read(pty_.fd(), buffer, sizeof buffer);
      if (n <= 0) return;  // EAGAIN: all taken; EIO: the other end left (seen next round)
      Feed(std::span<const std::uint8_t>(buffer, static_cast<std::size_t>(n)));
    }
  }

  void FeedLocalInput() {
    if (!hooks_.take_local_input) return;
    const std::vector<std::uint8_t> bytes = hooks_.take_local_input();
    if (!bytes.empty()) Feed(bytes);
  }

  void Feed(std::span<const std::uint8_t> bytes) {
    const std::vector<CommandFrame> frames = sim_.Feed(bytes);
    if (options_.verbose) {
      for (const CommandFrame& f : frames) Log(Describe(f));
    }
    if (!frames.empty() && hooks_.on_image) hooks_.on_image(sim_.Image());
  }

  void Send(const std::vector<std::uint8_t>& out) {
    const std::size_t room = kMaxPending - std::min(kMaxPending, pending_.size());
    pending_.insert(pending_.end(), out.begin(), out.begin() + std::min(room, out.size()));
    while (!pending_.empty()) {
      const ssize_t n = ::write(pty_.fd(), pending_.data(), pending_.size());
      if (n <= 0) return;  // full (the other end is not reading) or gone
      pending_.erase(pending_.begin(), pending_.begin() + n);
    }
  }

  const SimCommandLine& options_;
  EcuSimulator sim_;
  const PtyMaster& pty_;
  const PtyRunnerHooks& hooks_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::vector<std::uint8_t> pending_;
  bool connected_ = false;
};

std::optional<CalibrationImage> StartImage(const SimCommandLine& options, std::string* error) {
  if (options.image_path.empty()) return EmbeddedBaseCalibration();
  return LoadCalibrationFile(options.image_path, error);
}

}  // namespace

int RunSimulatorOnPty(const SimCommandLine& options, const std::atomic<bool>& stop,
                      const PtyRunnerHooks& hooks, std::string* error) {
  const std::optional<CalibrationImage> image = StartImage(options, error);
  if (!image) return 1;
  PtyMaster pty;
  if (!pty.Open(error)) return 1;
  SlaveLink link;
  if (!options.link_path.empty() && !link.Place(options.link_path, pty.SlavePath(), error)) {
    return 1;
  }
  if (hooks.on_ready) hooks.on_ready(pty.SlavePath());
  Runner runner(options, *image, pty, hooks);
  runner.Run(stop);
  return 0;
}

struct InProcessSimulator::Shared {
  std::atomic<bool> stop{false};
  mutable std::mutex mutex;
  std::condition_variable changed;
  bool ready = false;
  bool finished = false;
  std::string slave_path;
  std::string error;
  CalibrationImage image;
  EngineState engine;
  std::vector<std::uint8_t> local_input;
};

InProcessSimulator::InProcessSimulator() = default;

InProcessSimulator::~InProcessSimulator() { Stop(); }

bool InProcessSimulator::Start(const SimCommandLine& options, std::string* error,
                               std::function<void(const std::string&)> log) {
  if (thread_.joinable()) {
    if (error) *error = "the simulator is already running";
    return false;
  }
  auto shared = std::make_shared<Shared>();
  shared_ = shared;
  thread_ = std::thread([shared, options, log = std::move(log)] {
    // Named, so that a measurement of the program's own processor time can leave it out.
    pthread_setname_np(pthread_self(), kInProcessThreadName);
    PtyRunnerHooks hooks;
    hooks.on_log = log;
    hooks.on_image = [&shared](const CalibrationImage& image) {
      std::lock_guard lock(shared->mutex);
      shared->image = image;
    };
    hooks.on_engine = [&shared](const EngineState& engine) {
      std::lock_guard lock(shared->mutex);
      shared->engine = engine;
    };
    hooks.take_local_input = [&shared] {
      std::lock_guard lock(shared->mutex);
      return std::exchange(shared->local_input, {});
    };
    hooks.on_ready = [&shared](const std::string& path) {
      std::lock_guard lock(shared->mutex);
      shared->slave_path = path;
      shared->ready = true;
      shared->changed.notify_all();
    };
    std::string run_error;
    RunSimulatorOnPty(options, shared->stop, hooks, &run_error);
    std::lock_guard lock(shared->mutex);
    shared->error = run_error;
    shared->finished = true;
    shared->changed.notify_all();
  });
  std::unique_lock lock(shared->mutex);
  shared->changed.wait(lock, [&] { return shared->ready || shared->finished; });
  if (shared->ready) return true;
  if (error) *error = shared->error;
  lock.unlock();
  thread_.join();
  return false;
}

void InProcessSimulator::Stop() {
  if (!thread_.joinable()) return;
  shared_->stop = true;
  thread_.join();
}

bool InProcessSimulator::Running() const {
  if (!thread_.joinable() || !shared_) return false;
  std::lock_guard lock(shared_->mutex);
  return shared_->ready && !shared_->finished;
}

CalibrationImage InProcessSimulator::ImageSnapshot() const {
  if (!shared_) return {};
  std::lock_guard lock(shared_->mutex);
  return shared_->image;
}

EngineState InProcessSimulator::EngineSnapshot() const {
  if (!shared_) return {};
  std::lock_guard lock(shared_->mutex);
  return shared_->engine;
}

void InProcessSimulator::WriteImageByte(int position, std::uint8_t value) {
  if (!shared_) return;
  const auto frame = EncodeCommandFrame(
      {4, static_cast<std::uint16_t>(position), static_cast<std::uint16_t>(value)});
  std::lock_guard lock(shared_->mutex);
  shared_->local_input.insert(shared_->local_input.end(), frame.begin(), frame.end());
}

std::string InProcessSimulator::SlavePath() const {
  if (!shared_) return {};
  std::lock_guard lock(shared_->mutex);
  return shared_->slave_path;
}

}  // namespace vela::sim
