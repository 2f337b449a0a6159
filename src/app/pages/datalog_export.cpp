// What the DataLogging tab exports of what the chart shows: the records between the cursors (or
// of the view without two cursors) as CSV, and the chart as a PNG picture of the size it has in
// the window.
#include <QBuffer>
#include <QHBoxLayout>
#include <QMenu>
#include <QPixmap>
#include <QToolButton>

#include "app/pages/datalog_page.h"

namespace vela {

void DatalogPage::AddExportMenu(QHBoxLayout* row) {
  auto* button = new QToolButton(row->parentWidget());
  button->setObjectName("DatalogExportView");
  button->setText("Export View");
  button->setToolTip(
      "Export what the chart shows: the span between the cursors as CSV, or the "
      "chart as a picture");
  button->setPopupMode(QToolButton::InstantPopup);
  button->setToolButtonStyle(Qt::ToolButtonTextOnly);
  button->setFocusPolicy(Qt::NoFocus);
  auto* menu = new QMenu(button);
  QAction* span = menu->addAction("Span as CSV...  (Ctrl-X)");
  span->setObjectName("DatalogExportSpanCsv");
  span->setToolTip("The records between cursors A and B, or those in view without both");
  connect(span, &QAction::triggered, this, &DatalogPage::ExportShownCsv);
  QAction* picture = menu->addAction("Chart as PNG...  (Ctrl-I)");
  picture->setObjectName("DatalogExportPng");
  picture->setToolTip("The chart as a picture, at its size in the window");
  connect(picture, &QAction::triggered, this, &DatalogPage::ExportPicture);
  button->setMenu(menu);
  row->addWidget(button);
}

void DatalogPage::ExportShownCsv() {
  const TimeSpan span = ExportSpan(chart_->View());
  files_.ExportCsvSpan(log_, span.from, span.to, MathCsvColumns());
}

void DatalogPage::ExportPicture() {
  files_.ExportPicture([this] {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    chart_->grab().save(&buffer, "PNG");
    return bytes.toStdString();
  });
}

}  // namespace vela
