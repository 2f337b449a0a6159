// One running program per program folder: a lock held for the program's life in the system's
// temporary folder (never in the program folder, so a refused second start touches no file there).
#pragma once

#include <QLockFile>
#include <QString>
#include <memory>

namespace vela {

class SingleInstanceLock {
 public:
  explicit SingleInstanceLock(const QString& program_folder);
  // True when this is the only instance; the lock is then held until destruction.
  bool Acquire();
  QString LockPath() const { return path_; }

 private:
  QString path_;
  std::unique_ptr<QLockFile> lock_;
};

}  // namespace vela
