// The Qt side of the cores' platform interfaces.
#pragma once

#include <QElapsedTimer>
#include <QFileDialog>
#include <QHash>
#include <QSortFilterProxyModel>
#include <QWidget>
#include <memory>

#include "base/platform.h"

namespace vela {

// Modal message boxes over a parent window.
class QtMessageSink : public MessageSink {
 public:
  explicit QtMessageSink(QWidget* parent = nullptr) : parent_(parent) {}
  void set_parent(QWidget* parent) { parent_ = parent; }
  MessageAnswer Show(MessageIcon icon, const std::string& title,
                     const std::vector<std::string>& lines, MessageButtons buttons) override;

 private:
  QWidget* parent_;
};

class QtFileDialogs : public FileDialogs {
 public:
  explicit QtFileDialogs(QWidget* parent = nullptr) : parent_(parent) {}
  std::optional<std::string> AskOpenPath(const std::string& filter, const std::string& title,
                                         const std::string& initial_folder) override;
  std::optional<std::string> AskSavePath(const std::string& filter, const std::string& title,
                                         const std::string& initial_folder) override;
  std::optional<std::string> AskOpenPathListing(const std::string& filter, const std::string& title,
                                                const std::string& initial_folder,
                                                const ContentListing& listing) override;

 private:
  QWidget* parent_;
};

// Between an open dialog's files and its view: while the dialog's chosen filter entry is the one
// that lists by content, a file whose name the entry does not match is listed (and can be chosen)
// when its beginning passes the content test; otherwise only the names the entry matches are.
class ContentListingProxy : public QSortFilterProxyModel {
 public:
  ContentListingProxy(const QFileDialog& dialog, QString by_content_filter,
                      FileDialogs::ContentListing listing, QObject* parent = nullptr);
  // The chosen entry or the folder's files changed: every row is judged again.
  void Refilter();
  Qt::ItemFlags flags(const QModelIndex& index) const override;

 protected:
  bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

 private:
  bool ListsByContent() const;
  bool ContentMatches(const QString& path) const;
  bool NameMatches(const QModelIndex& source) const;

  const QFileDialog& dialog_;
  QString by_content_filter_;
  FileDialogs::ContentListing listing_;
  mutable QHash<QString, bool> matches_;  // by path, for this listing
};

// The open dialog of AskOpenPathListing, built but not shown (tests look at its listing).
std::unique_ptr<QFileDialog> MakeListingDialog(QWidget* parent, const std::string& filter,
                                               const std::string& title,
                                               const std::string& initial_folder,
                                               const FileDialogs::ContentListing& listing);

// Milliseconds since the program started; letting events run processes the Qt event queue.
class QtClock : public Clock {
 public:
  QtClock() { timer_.start(); }
  std::int64_t NowMs() override { return timer_.elapsed(); }
  void LetEventsRun() override;

 private:
  QElapsedTimer timer_;
};

// The computer's decimal separator, from the system locale.
char SystemDecimalSeparator();

// Converts a "Description|*.ext|Other|*.x" filter into Qt's "Description (*.ext);;..." form.
QString QtFilterFrom(const std::string& filter);

}  // namespace vela
