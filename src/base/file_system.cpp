#include "base/file_system.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "base/disk_sync.h"

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

int DiskFileSystem::Fail(int error, const std::string& reason) {
  last_write_reason_ = reason;
  return error;
}

FileHead DiskFileSystem::ReadHead(const std::string& path, std::size_t max_bytes) {
  FileHead head;
  std::error_code ec;
  const fs::file_status status = fs::status(path, ec);
  if (ec || !fs::exists(status)) {
    head.kind = ec && ec != std::errc::no_such_file_or_directory ? FileHead::Kind::kUnreadable
                                                                 : FileHead::Kind::kMissing;
    head.reason = ec ? ec.message() : std::string();
    return head;
  }
  if (fs::is_directory(status)) {
    head.kind = FileHead::Kind::kFolder;
    return head;
  }
  if (!fs::is_regular_file(status)) {
    head.kind = FileHead::Kind::kNotAFile;  // a pipe, a device or a socket: never opened
    return head;
  }
  head.size = fs::file_size(path, ec);
  std::ifstream in(path, std::ios::binary);
  if (ec || !in) {
    head.kind = FileHead::Kind::kUnreadable;
    head.reason = ec ? ec.message() : std::generic_category().message(errno);
    return head;
  }
  head.bytes.resize(max_bytes);
  in.read(head.bytes.data(), static_cast<std::streamsize>(max_bytes));
  if (in.bad()) {
    head.kind = FileHead::Kind::kUnreadable;
    head.reason = std::generic_category().message(errno);
    head.bytes.clear();
    return head;
  }
  head.bytes.resize(static_cast<std::size_t>(in.gcount()));
  head.kind = FileHead::Kind::kFile;
  return head;
}

bool DiskFileSystem::IsDirectory(const std::string& path) {
  std::error_code ec;
  return fs::is_directory(path, ec);
}

bool DiskFileSystem::CreateDirectory(const std::string& path) {
  std::error_code ec;
  fs::create_directory(path, ec);
  return !ec && fs::is_directory(path, ec);
}

// Read in one go into a buffer of the file's size (a character at a time cost a large file ten
// times the plain read); a file that grew meanwhile is read on to its end.
std::optional<std::string> DiskFileSystem::ReadFile(const std::string& path) {
  std::error_code ec;
  if (!fs::is_regular_file(path, ec)) return std::nullopt;
  const std::uintmax_t size = fs::file_size(path, ec);
  std::ifstream in(path, std::ios::binary);
  if (ec || !in) return std::nullopt;
  std::string content(static_cast<std::size_t>(size), '\0');
  in.read(content.data(), static_cast<std::streamsize>(content.size()));
  content.resize(static_cast<std::size_t>(in.gcount()));
  if (in.bad()) return std::nullopt;
  if (content.size() == size) {
    char more[4096];
    while (in.read(more, sizeof(more)) || in.gcount() > 0) {
      content.append(more, static_cast<std::size_t>(in.gcount()));
    }
    if (in.bad()) return std::nullopt;
  }
  return content;
}

int DiskFileSystem::WriteFile(const std::string& path, const std::string& content) {
  last_write_reason_.clear();
  const fs::path target(path);
  std::error_code ec;
  if (!target.parent_path().empty() && !fs::is_directory(target.parent_path(), ec)) {
    return Fail(kFileErrorPathNotFound,
                "the folder " + target.parent_path().string() + " does not exist");
  }
  fs::path temp = target;
  temp += ".saving";
  {
    errno = 0;
    std::ofstream out(temp, std::ios::binary | std::ios::trunc);
    if (!out) {
      const int cause = errno;
      return Fail(cause == ENOSPC ? kFileErrorDiskFull : kFileErrorAccess,
                  std::generic_category().message(cause));
    }
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    out.flush();
    out.close();
    if (!out || !FlushFileToDisk(temp.string())) {
      const int cause = errno;
      fs::remove(temp, ec);
      return Fail(cause == ENOSPC ? kFileErrorDiskFull : kFileErrorAccess,
                  std::generic_category().message(cause));
    }
  }
  fs::rename(temp, target, ec);
  if (ec) {
    const int error = ErrorNumberFor(ec);
    const std::string reason = ec.message();
    fs::remove(temp, ec);
    return Fail(error, reason);
  }
  // The file is whole under its name; a folder that refuses the flush (some file systems do)
  // only leaves the rename to the system's own schedule, so the write still stands.
  static_cast<void>(FlushFolderToDisk(target.parent_path().string()));
  return kFileErrorNone;
}

std::vector<std::string> DiskFileSystem::FileNames(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code ec;
  fs::directory_iterator it(folder, ec);
  for (; !ec && it != fs::directory_iterator(); it.increment(ec)) {
    std::error_code kind_ec;
    if (it->is_regular_file(kind_ec)) names.push_back(it->path().filename().string());
  }
  return names;
}

bool DiskFileSystem::RemoveFile(const std::string& path) {
  std::error_code ec;
  fs::remove(path, ec);
  return !fs::exists(path, ec) && !ec;
}

}  // namespace vela
