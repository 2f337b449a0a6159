#include "program/qt/single_instance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>

namespace vela {

SingleInstanceLock::SingleInstanceLock(const QString& program_folder) {
  const QByteArray key = QCryptographicHash::hash(
      QFileInfo(program_folder).absoluteFilePath().toUtf8(), QCryptographicHash::Sha1);
  path_ =
      QDir::temp().filePath("morvane-vela-" + QString::fromLatin1(key.toHex().left(16)) + ".lock");
}

bool SingleInstanceLock::Acquire() {
  if (lock_ && lock_->isLocked()) return true;
  lock_ = std::make_unique<QLockFile>(path_);
  lock_->setStaleLockTime(0);  // a crashed program's lock is recognised by its process id
  return lock_->tryLock(0);
}

}  // namespace vela
