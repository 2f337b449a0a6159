// The fuel proposal's bar over a fuel map grid, under the compare bar: the delay used, the cells
// by state, the evidence of the cursor's cell, and the buttons that add a log to the evidence
// and open the proposal's settings. Hidden while the page shows no proposal. Its buttons never
// take the keyboard from the grid.
#pragma once

#include <QFrame>
#include <QLabel>
#include <QPushButton>

namespace vela {

class ProposalBar : public QFrame {
  Q_OBJECT

 public:
  // `suffix` is added to the objectNames, as on the page's other labels ("", "Map2").
  explicit ProposalBar(const QString& suffix, QWidget* parent = nullptr);

  // `samples`: what became of the logs' samples; `note`: a warning on the delay's fit, on a
  // line of its own, empty hiding the line.
  void Show(const QString& delay, const QString& summary, const QString& samples,
            const QString& note = {});
  // The cursor's cell; its text is also the label's accessible name, so a screen reader reads
  // it whenever it changes.
  void ShowEvidence(const QString& evidence);

 signals:
  void AddLog();
  void OpenSettings();

 private:
  QPushButton* Button(const QString& text, const QString& name);

  QLabel* delay_;
  QLabel* summary_;
  QLabel* evidence_;
  QLabel* note_;
  QLabel* samples_;
};

}  // namespace vela
