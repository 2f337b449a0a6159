#include "datalog/qt/journal_file.h"

#ifdef Q_OS_WIN
#include <io.h>
#else
#include <unistd.h>
#endif

namespace vela {

bool QtJournalFile::Create(const std::string& path) {
  file_.close();
  file_.setFileName(QString::fromStdString(path));
  return file_.open(QIODevice::WriteOnly | QIODevice::Truncate);
}

bool QtJournalFile::Append(std::string_view bytes) {
  if (!file_.isOpen()) return false;
  return file_.write(bytes.data(), static_cast<qint64>(bytes.size())) ==
         static_cast<qint64>(bytes.size());
}

bool QtJournalFile::Sync() {
  if (!file_.isOpen() || !file_.flush()) return false;
#ifdef Q_OS_WIN
  return _commit(file_.handle()) == 0;
#else
  return fdatasync(file_.handle()) == 0;
#endif
}

bool QtJournalFile::Remove(const std::string& path) {
  file_.close();
  return QFile::remove(QString::fromStdString(path));
}

}  // namespace vela
