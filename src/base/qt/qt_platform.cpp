#include "base/qt/qt_platform.h"

#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QCoreApplication>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QLocale>
#include <QMessageBox>
#include <QMouseEvent>
#include <QStringList>

namespace vela {

namespace {

QMessageBox::Icon BoxIcon(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::kInformation:
      return QMessageBox::Information;
    case MessageIcon::kExclamation:
      return QMessageBox::Warning;
    case MessageIcon::kQuestion:
      return QMessageBox::Question;
    case MessageIcon::kCritical:
      return QMessageBox::Critical;
    case MessageIcon::kNone:
      return QMessageBox::NoIcon;
  }
  return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons BoxButtons(MessageButtons buttons) {
  switch (buttons) {
    case MessageButtons::kOk:
      return QMessageBox::Ok;
    case MessageButtons::kOkCancel:
      return QMessageBox::Ok | QMessageBox::Cancel;
    case MessageButtons::kYesNo:
    case MessageButtons::kYesNoDefaultNo:
      return QMessageBox::Yes | QMessageBox::No;
    case MessageButtons::kYesNoCancel:
      return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
  }
  return QMessageBox::Ok;
}

MessageAnswer AnswerFrom(int button) {
  switch (button) {
    case QMessageBox::Cancel:
      return MessageAnswer::kCancel;
    case QMessageBox::Yes:
      return MessageAnswer::kYes;
    case QMessageBox::No:
      return MessageAnswer::kNo;
    default:
      return MessageAnswer::kOk;
  }
}

}  // namespace

// A box that opens while the tuner holds a scroll arrow or a spin button down would take the
// mouse's release, and the control would go on stepping under the box, one change (and one box)
// after another. The controls are let go first.
static void ReleaseRepeatingControls() {
  for (QWidget* widget : QApplication::allWidgets()) {
    if (!qobject_cast<QAbstractSlider*>(widget) && !qobject_cast<QAbstractSpinBox*>(widget)) {
      continue;
    }
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(-1, -1), QPointF(-1, -1),
                        Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &release);
  }
}

MessageAnswer QtMessageSink::Show(MessageIcon icon, const std::string& title,
                                  const std::vector<std::string>& lines, MessageButtons buttons) {
  ReleaseRepeatingControls();
  QStringList text;
  for (const auto& line : lines) text << QString::fromStdString(line);
  QMessageBox box(BoxIcon(icon), QString::fromStdString(title), text.join('\n'),
                  BoxButtons(buttons), parent_);
  if (buttons == MessageButtons::kYesNoDefaultNo) box.setDefaultButton(QMessageBox::No);
  return AnswerFrom(box.exec());
}

QString QtFilterFrom(const std::string& filter) {
  const QStringList parts = QString::fromStdString(filter).split('|');
  QStringList qt_filters;
  for (int i = 0; i + 1 < parts.size(); i += 2) {
    QString pattern = parts[i + 1];
    pattern.replace(';', ' ');
    // A description that already names its pattern in brackets is shown as it stands.
    const QString& description = parts[i];
    qt_filters << (description.endsWith("(" + pattern + ")") ? description
                                                             : description + " (" + pattern + ")");
  }
  return qt_filters.join(";;");
}

std::optional<std::string> QtFileDialogs::AskOpenPath(const std::string& filter,
                                                      const std::string& title,
                                                      const std::string& initial_folder) {
  const QString path =
      QFileDialog::getOpenFileName(parent_, QString::fromStdString(title),
                                   QString::fromStdString(initial_folder), QtFilterFrom(filter));
  if (path.isEmpty()) return std::nullopt;
  return path.toStdString();
}

std::optional<std::string> QtFileDialogs::AskSavePath(const std::string& filter,
                                                      const std::string& title,
                                                      const std::string& initial_folder) {
  // The program asks its own overwrite question, so the dialog's is turned off.
  const QString path = QFileDialog::getSaveFileName(
      parent_, QString::fromStdString(title), QString::fromStdString(initial_folder),
      QtFilterFrom(filter), nullptr, QFileDialog::DontConfirmOverwrite);
  if (path.isEmpty()) return std::nullopt;
  return path.toStdString();
}

ContentListingProxy::ContentListingProxy(const QFileDialog& dialog, QString by_content_filter,
                                         FileDialogs::ContentListing listing, QObject* parent)
    : QSortFilterProxyModel(parent),
      dialog_(dialog),
      by_content_filter_(std::move(by_content_filter)),
      listing_(std::move(listing)) {}

void ContentListingProxy::Refilter() {
  matches_.clear();
  invalidateFilter();
}

bool ContentListingProxy::ListsByContent() const {
  return listing_.matches && dialog_.selectedNameFilter() == by_content_filter_;
}

// The file system model shows the files the entry's names do not match as disabled.
bool ContentListingProxy::NameMatches(const QModelIndex& source) const {
  return (sourceModel()->flags(source) & Qt::ItemIsEnabled) != 0;
}

bool ContentListingProxy::ContentMatches(const QString& path) const {
  const auto known = matches_.constFind(path);
  if (known != matches_.constEnd()) return *known;
  bool matches = false;
  // Only plain files are opened: a pipe or a device could block or change by being read.
  if (QFileInfo(path).isFile()) {
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
      const QByteArray head = file.read(static_cast<qint64>(listing_.head_bytes));
      matches = listing_.matches(std::string_view(head.constData(), head.size()));
    }
  }
  matches_.insert(path, matches);
  return matches;
}

bool ContentListingProxy::filterAcceptsRow(int row, const QModelIndex& parent) const {
  const auto* files = qobject_cast<const QFileSystemModel*>(sourceModel());
  if (files == nullptr) return true;
  const QModelIndex source = files->index(row, 0, parent);
  if (files->isDir(source) || NameMatches(source)) return true;
  return ListsByContent() && ContentMatches(files->filePath(source));
}

Qt::ItemFlags ContentListingProxy::flags(const QModelIndex& index) const {
  Qt::ItemFlags flags = QSortFilterProxyModel::flags(index);
  // A file listed by its content can be chosen like one listed by its name.
  if (!(flags & Qt::ItemIsEnabled) && ListsByContent()) {
    flags |= Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  }
  return flags;
}

std::unique_ptr<QFileDialog> MakeListingDialog(QWidget* parent, const std::string& filter,
                                               const std::string& title,
                                               const std::string& initial_folder,
                                               const FileDialogs::ContentListing& listing) {
  auto dialog =
      std::make_unique<QFileDialog>(parent, QString::fromStdString(title),
                                    QString::fromStdString(initial_folder), QtFilterFrom(filter));
  // The system's own dialog cannot be told to list files by their content.
  dialog->setOption(QFileDialog::DontUseNativeDialog);
  dialog->setFileMode(QFileDialog::ExistingFile);
  dialog->setAcceptMode(QFileDialog::AcceptOpen);
  auto* proxy = new ContentListingProxy(*dialog, dialog->nameFilters().value(listing.filter_index),
                                        listing, dialog.get());
  dialog->setProxyModel(proxy);
  // Files the entry's names do not match stay in the model, disabled, for the proxy to judge.
  if (auto* files = dialog->findChild<QFileSystemModel*>()) files->setNameFilterDisables(true);
  QObject::connect(dialog.get(), &QFileDialog::filterSelected, proxy,
                   [proxy] { proxy->Refilter(); });
  return dialog;
}

std::optional<std::string> QtFileDialogs::AskOpenPathListing(const std::string& filter,
                                                             const std::string& title,
                                                             const std::string& initial_folder,
                                                             const ContentListing& listing) {
  const std::unique_ptr<QFileDialog> dialog =
      MakeListingDialog(parent_, filter, title, initial_folder, listing);
  if (dialog->exec() != QDialog::Accepted || dialog->selectedFiles().isEmpty()) {
    return std::nullopt;
  }
  return dialog->selectedFiles().front().toStdString();
}

void QtClock::LetEventsRun() { QCoreApplication::processEvents(); }

char SystemDecimalSeparator() {
  // The number 0.001 turned into text the way the computer shows numbers.
  const QString text = QLocale::system().toString(0.001, 'f', 3);
  if (text.contains('.')) return '.';
  return text.contains(',') ? ',' : '.';
}

}  // namespace vela
