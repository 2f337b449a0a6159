// The fuel proposal on the fuel map pages: Ctrl-P proposes for the page in front, a bar under
// the compare bar says the delay used, the cells by state and the cursor cell's evidence, and
// the cells with too little evidence are framed amber (the comparison's marks stay as they are).
// Taking and the views are the comparison's (compare_pages.h).
#pragma once

#include <QObject>
#include <array>

#include "app/pages/map_pages.h"
#include "app/sessions/proposal_session.h"
#include "app/workbench/proposal_bar.h"

namespace vela {

class ProposalPages : public QObject {
  Q_OBJECT

 public:
  static constexpr int kFuelPages = 2;

  ProposalPages(ProposalSession& session, MapPages& maps, QWidget* window);

  // Ctrl-P with page `tab` in front.
  void Propose(int tab);
  ProposalBar* bar(int page) const { return bars_[static_cast<std::size_t>(page)]; }

 signals:
  void Note(const QString& text);

 private:
  void Show();
  void ShowEvidence(int page);
  void OpenSettings();

  ProposalSession& session_;
  MapPages& maps_;
  QWidget* window_;
  std::array<ProposalBar*, kFuelPages> bars_{};
};

}  // namespace vela
