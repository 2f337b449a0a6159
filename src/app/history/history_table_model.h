// The edit journal as a table for the history panel, read straight from the journal (nothing is
// copied, so ten thousand entries cost nothing until their rows are drawn). Row 0 is the start of
// the history (the image before the first entry); row n is entry n, so returning to row n is
// EditorSession::ReturnTo(n). Entries that are undone are drawn grey, the row the image stands at
// in bold. The model follows EditHistory::Changed.
#pragma once

#include <QAbstractTableModel>

#include "app/sessions/edit_history.h"

namespace vela {

// A journal or restore point time in the computer's local time; the date is left out for a time
// of today when `short_today`.
QString HistoryTimeText(qint64 time_ms, bool short_today);

class HistoryTableModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { kTime, kWhat, kWhere, kSize, kSource, kColumnCount };

  explicit HistoryTableModel(const EditHistory& history, QObject* parent = nullptr);

  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  int columnCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation,
                      int role = Qt::DisplayRole) const override;

  // The row the image stands at: the number of entries applied.
  int CurrentRow() const;
  bool Undone(int row) const { return row > CurrentRow(); }

 private:
  QString Text(int row, int column) const;

  const EditHistory& history_;
};

}  // namespace vela
