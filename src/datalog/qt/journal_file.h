// The recording journal's file on disk; a sync pushes it through the system's buffers to the disk
// so that a power cut loses no more than what came after it.
#pragma once

#include <QFile>

#include "datalog/files/journal.h"

namespace vela {

class QtJournalFile : public JournalFile {
 public:
  bool Create(const std::string& path) override;
  bool Append(std::string_view bytes) override;
  bool Sync() override;
  void Close() override { file_.close(); }
  bool Remove(const std::string& path) override;

 private:
  QFile file_;
};

}  // namespace vela
