#include "app/workbench/compare_bar.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "editors/compare/compare_overlay.h"

namespace vela {

namespace {

QString Hex(const Rgb& rgb) { return QColor(rgb.red, rgb.green, rgb.blue).name(); }

// `first`: the side whose higher or lower values the colours say.
QString Legend(const QString& first) {
  return QString(
             "%4: <span style=\"color:%1\">&#9632;</span> higher &nbsp;"
             "<span style=\"color:%2\">&#9632;</span> lower &nbsp;"
             "<span style=\"color:%3\">&#9632;</span> one side only")
      .arg(Hex(kOursHigherMark), Hex(kOursLowerMark), Hex(kOneSideMark), first);
}

}  // namespace

CompareBar::CompareBar(const QString& suffix, QWidget* parent)
    : QFrame(parent), caption_(new QLabel(this)), count_(new QLabel(this)) {
  setObjectName("CompareBar" + suffix);
  setFrameShape(QFrame::StyledPanel);
  caption_->setObjectName("CompareView" + suffix);
  count_->setObjectName("CompareCount" + suffix);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(4, 2, 4, 2);
  column->setSpacing(2);
  auto* top = new QHBoxLayout;
  top->addWidget(caption_, 1);
  top->addWidget(count_);
  column->addLayout(top);
  auto* bottom = new QHBoxLayout;
  connect(Button("Take othe&r: selection", "CompareTakeSelection" + suffix), &QPushButton::clicked,
          this, &CompareBar::TakeSelection);
  connect(Button("Take other: &whole map", "CompareTakeMap" + suffix), &QPushButton::clicked, this,
          &CompareBar::TakeWholeMap);
  connect(Button("Send onl&y differing cells", "CompareSend" + suffix), &QPushButton::clicked, this,
          &CompareBar::SendDifferences);
  for (QPushButton* button : findChildren<QPushButton*>()) bottom->addWidget(button);
  bottom->addStretch(1);
  legend_ = new QLabel(Legend("editors"), this);
  QLabel* legend = legend_;
  legend->setObjectName("CompareLegend" + suffix);
  legend->setAccessibleName("Colours of the differing cells");
  legend->setToolTip(
      "A framed cell differs: red where the editors' value is higher, blue where it is lower, "
      "purple where only one side has the cell.");
  bottom->addWidget(legend);
  column->addLayout(bottom);
  hide();
}

QPushButton* CompareBar::Button(const QString& text, const QString& name) {
  auto* button = new QPushButton(text, this);
  button->setObjectName(name);
  button->setFocusPolicy(Qt::NoFocus);
  return button;
}

void CompareBar::Show(CompareView view, const QString& caption, const QString& count,
                      bool read_only) {
  caption_->setText(caption);
  count_->setText(count);
  const QString style = view == CompareView::kCurrent && !read_only
                            ? "font-weight: bold;"
                            : "font-weight: bold; background-color: rgb(255, 214, 120);";
  if (caption_->styleSheet() != style) caption_->setStyleSheet(style);
  legend_->setText(Legend(read_only ? "first side" : "editors"));
  setAccessibleName(caption);
  show();
}

}  // namespace vela

#include "moc_compare_bar.cpp"
