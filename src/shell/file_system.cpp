#include "shell/file_system.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace vela {
namespace fs = std::filesystem;

namespace {

int ErrorNumberFor(const std::error_code& ec) {
  if (ec == std::errc::no_such_file_or_directory || ec == std::errc::not_a_directory) {
    return kFileErrorPathNotFound;
  }
  if (ec == std::errc::no_space_on_device) return kFileErrorDiskFull;
  return kFileErrorAccess;
}

}  // namespace

bool DiskFileSystem::IsDirectory(const std::string& path) {
  std::error_code ec;
  return fs::is_directory(path, ec);
}

bool DiskFileSystem::CreateDirectory(const std::string& path) {
  std::error_code ec;
  fs::create_directory(path, ec);
  return !ec && fs::is_directory(path, ec);
}

std::optional<std::string> DiskFileSystem::ReadFile(const std::string& path) {
  std::error_code ec;
  if (!fs::is_regular_file(path, ec)) return std::nullopt;
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad()) return std::nullopt;
  return content;
}

int DiskFileSystem::WriteFile(const std::string& path, const std::string& content) {
  const fs::path target(path);
  std::error_code ec;
  if (!target.parent_path().empty() && !fs::is_directory(target.parent_path(), ec)) {
    return kFileErrorPathNotFound;
  }
  fs::path temp = target;
  temp += ".saving";
  {
    std::ofstream out(temp, std::ios::binary | std::ios::trunc);
    if (!out) return errno == ENOSPC ? kFileErrorDiskFull : kFileErrorAccess;
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    out.flush();
    if (!out) {
      const int error = errno == ENOSPC ? kFileErrorDiskFull : kFileErrorAccess;
      out.close();
      fs::remove(temp, ec);
      return error;
    }
  }
  fs::rename(temp, target, ec);
  if (ec) {
    const int error = ErrorNumberFor(ec);
    fs::remove(temp, ec);
    return error;
  }
  return kFileErrorNone;
}

}  // namespace vela
