#include "app/pages/setup/setup_error_list.h"

#include <QResizeEvent>
#include <QScrollBar>
#include <algorithm>

namespace vela {

namespace {
constexpr int kColumnGap = 24;  // pixels between the columns
constexpr int kSlack = 2;       // pixels under the last row
}  // namespace

SetupErrorList::SetupErrorList(QWidget* parent) : QListWidget(parent) {
  setObjectName("SetupErrorList");
  setStyleSheet("color: rgb(200, 30, 20);");
  setFlow(QListView::TopToBottom);
  setWrapping(true);
  setResizeMode(QListView::Adjust);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  hide();
}

void SetupErrorList::ShowErrors(const std::vector<std::string>& lines) {
  clear();
  for (const std::string& line : lines) addItem(QString::fromStdString(line));
  setVisible(count() > 0);
  FitToLines();
}

void SetupErrorList::resizeEvent(QResizeEvent* event) {
  QListWidget::resizeEvent(event);
  if (event->size().width() != event->oldSize().width()) FitToLines();
}

void SetupErrorList::FitToLines() {
  if (count() == 0) return;
  // Every line's own width: the view's size hints count only the lines laid out in view.
  int widest = 0;
  for (int i = 0; i < count(); ++i) {
    widest = std::max(widest, fontMetrics().horizontalAdvance(item(i)->text()));
  }
  const int row_height = std::max(sizeHintForRow(0), fontMetrics().height());
  const int column_width = widest + kColumnGap;
  setGridSize(QSize(column_width, row_height));
  const int room = std::max(1, width() - 2 * frameWidth());
  const int columns = std::max(1, room / column_width);
  const int rows = (count() + columns - 1) / columns;
  // Only a line wider than the whole list needs a scroll bar; one shown while the lines fit
  // would take the height of a row and push a column out of view.
  const bool too_wide = column_width > room;
  setHorizontalScrollBarPolicy(too_wide ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
  const int scroll_bar = too_wide ? horizontalScrollBar()->sizeHint().height() : 0;
  setFixedHeight(rows * row_height + 2 * frameWidth() + scroll_bar + kSlack);
  doItemsLayout();
}

}  // namespace vela

#include "moc_setup_error_list.cpp"
