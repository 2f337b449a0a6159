#include "app/history/history_table_model.h"

#include <QDateTime>
#include <QFont>
#include <QGuiApplication>
#include <QPalette>

#include "editors/history/history_words.h"

namespace vela {

namespace {

constexpr const char* kHeaders[] = {"Time", "What", "Where", "Size", "Source"};

QString Str(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QString HistoryTimeText(qint64 time_ms, bool short_today) {
  const QDateTime time = QDateTime::fromMSecsSinceEpoch(time_ms);
  if (short_today && time.date() == QDate::currentDate()) return time.toString("HH:mm:ss");
  return time.toString("yyyy-MM-dd HH:mm:ss");
}

HistoryTableModel::HistoryTableModel(const EditHistory& history, QObject* parent)
    : QAbstractTableModel(parent), history_(history) {
  // Any change may drop undone entries as well as add one: the table is read afresh, which costs
  // only the rows in view.
  connect(&history, &EditHistory::Changed, this, [this] {
    beginResetModel();
    endResetModel();
  });
}

int HistoryTableModel::rowCount(const QModelIndex& parent) const {
  if (parent.isValid()) return 0;
  return static_cast<int>(history_.journal().Entries().size()) + 1;
}

int HistoryTableModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumnCount;
}

int HistoryTableModel::CurrentRow() const { return static_cast<int>(history_.journal().Applied()); }

QString HistoryTableModel::Text(int row, int column) const {
  if (row == 0) return column == kWhat ? QString("Start of the history") : QString();
  const EditEntry& entry = history_.journal().Entries()[static_cast<std::size_t>(row - 1)];
  switch (column) {
    case kTime:
      return HistoryTimeText(entry.time_ms, true);
    case kWhat:
      return Str(KindText(entry.kind));
    case kWhere:
      return Str(PlaceText(entry.place));
    case kSize:
      return QString::fromStdString(SizeText(entry));
    default:
      return QString::fromStdString(entry.source);
  }
}

QVariant HistoryTableModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  const int row = index.row();
  switch (role) {
    case Qt::DisplayRole:
      return Text(row, index.column());
    case Qt::ToolTipRole:
      if (row > 0 && index.column() == kTime) {
        const EditEntry& entry = history_.journal().Entries()[static_cast<std::size_t>(row - 1)];
        return HistoryTimeText(entry.time_ms, false);
      }
      return Undone(row) ? QString("Undone: Return to here redoes it") : QVariant();
    case Qt::AccessibleDescriptionRole:
      if (Undone(row)) return QString("undone");
      return row == CurrentRow() ? QString("the calibration stands here") : QVariant();
    case Qt::ForegroundRole:
      if (Undone(row)) return QGuiApplication::palette().brush(QPalette::Disabled, QPalette::Text);
      return {};
    case Qt::FontRole:
      if (row == CurrentRow()) {
        QFont bold;
        bold.setBold(true);
        return bold;
      }
      return {};
    default:
      return {};
  }
}

QVariant HistoryTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (role != Qt::DisplayRole) return {};
  if (orientation == Qt::Horizontal) {
    return section >= 0 && section < kColumnCount ? QString(kHeaders[section]) : QVariant();
  }
  return section;
}

}  // namespace vela

#include "moc_history_table_model.cpp"
