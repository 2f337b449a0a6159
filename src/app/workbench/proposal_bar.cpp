#include "app/workbench/proposal_bar.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "tune/view/proposal_view.h"

namespace vela {

ProposalBar::ProposalBar(const QString& suffix, QWidget* parent)
    : QFrame(parent),
      delay_(new QLabel(this)),
      summary_(new QLabel(this)),
      evidence_(new QLabel(this)),
      note_(new QLabel(this)),
      samples_(new QLabel(this)) {
  setObjectName("ProposalBar" + suffix);
  setFrameShape(QFrame::StyledPanel);
  delay_->setObjectName("ProposalDelay" + suffix);
  summary_->setObjectName("ProposalSummary" + suffix);
  evidence_->setObjectName("ProposalEvidence" + suffix);
  note_->setObjectName("ProposalDelayNote" + suffix);
  samples_->setObjectName("ProposalSamples" + suffix);
  note_->setStyleSheet("color: rgb(170, 90, 0);");
  note_->hide();
  for (QLabel* label : {delay_, summary_, evidence_, note_, samples_}) {
    label->setTextInteractionFlags(Qt::NoTextInteraction);
    label->setMinimumWidth(0);
  }
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(4, 2, 4, 2);
  column->setSpacing(2);
  auto* top = new QHBoxLayout;
  top->addWidget(summary_, 1);
  const Rgb amber = kTooLittleMark;
  auto* legend = new QLabel(QString("<span style=\"color:%1\">&#9632;</span> too little evidence")
                                .arg(QColor(amber.red, amber.green, amber.blue).name()),
                            this);
  legend->setObjectName("ProposalLegend" + suffix);
  legend->setAccessibleName("Amber frame: too little evidence, never taken");
  top->addWidget(legend);
  column->addLayout(top);
  // The delay with the buttons beside it, then the cursor cell's evidence.
  auto* middle = new QHBoxLayout;
  middle->addWidget(delay_, 1);
  connect(Button("Add Log...", "ProposalAddLog" + suffix), &QPushButton::clicked, this,
          &ProposalBar::AddLog);
  connect(Button("Settings...", "ProposalSettings" + suffix), &QPushButton::clicked, this,
          &ProposalBar::OpenSettings);
  for (QPushButton* button : findChildren<QPushButton*>()) middle->addWidget(button);
  column->addLayout(middle);
  column->addWidget(note_);
  column->addWidget(samples_);
  column->addWidget(evidence_);
  hide();
}

QPushButton* ProposalBar::Button(const QString& text, const QString& name) {
  auto* button = new QPushButton(text, this);
  button->setObjectName(name);
  button->setFocusPolicy(Qt::NoFocus);
  return button;
}

void ProposalBar::Show(const QString& delay, const QString& summary, const QString& samples,
                       const QString& note) {
  samples_->setText(samples);
  samples_->setToolTip(samples);
  delay_->setText(delay);
  delay_->setToolTip(delay);
  note_->setText(note);
  note_->setToolTip(note);
  note_->setVisible(!note.isEmpty());
  summary_->setText("Fuel proposal: " + summary);
  summary_->setToolTip(summary_->text());
  setAccessibleName("Fuel proposal");
  show();
}

void ProposalBar::ShowEvidence(const QString& evidence) {
  if (evidence_->text() == evidence) return;
  evidence_->setText(evidence);
  evidence_->setAccessibleName(evidence);
  QAccessibleEvent event(evidence_, QAccessible::NameChanged);
  QAccessible::updateAccessibility(&event);
}

}  // namespace vela

#include "moc_proposal_bar.cpp"
