#include "app/workbench/proposal_pages.h"

#include "app/workbench/proposal_settings_dialog.h"
#include "editors/mapgrid/key_routing.h"
#include "tune/view/proposal_view.h"

namespace vela {

ProposalPages::ProposalPages(ProposalSession& session, MapPages& maps, QWidget* window)
    : QObject(window), session_(session), maps_(maps), window_(window) {
  const QString suffixes[kFuelPages] = {"", "Map2"};
  for (int page = 0; page < kFuelPages; ++page) {
    auto* bar = new ProposalBar(suffixes[page], maps_.page(page));
    bars_[static_cast<std::size_t>(page)] = bar;
    maps_.page(page)->AddAboveGrid(bar);
    connect(bar, &ProposalBar::AddLog, &session_, &ProposalSession::AddLog);
    connect(bar, &ProposalBar::OpenSettings, this, &ProposalPages::OpenSettings);
    connect(maps_.page(page)->grid(), &MapGrid::CursorMoved, this,
            [this, page] { ShowEvidence(page); });
  }
  connect(&session_, &ProposalSession::Changed, this, &ProposalPages::Show);
  connect(&session_, &ProposalSession::Note, this, &ProposalPages::Note);
}

void ProposalPages::Propose(int tab) {
  if (tab != kPageFuelMap1 && tab != kPageFuelMap2) {
    emit Note("Ctrl-P proposes a fuel correction on a fuel map page.");
    return;
  }
  session_.Propose(tab == kPageFuelMap1 ? 1 : 2);
}

void ProposalPages::Show() {
  const TuneRun* run = session_.Run();
  for (int page = 0; page < kFuelPages; ++page) {
    ProposalBar* bar = bars_[static_cast<std::size_t>(page)];
    if (!run || run->proposal.fuel_map != page + 1) {
      bar->hide();
      continue;
    }
    bar->Show(QString::fromStdString(DelayText(*run)),
              QString::fromStdString(SummaryText(run->proposal)),
              QString::fromStdString(SamplesText(run->evidence.verdicts)),
              QString::fromStdString(CoarseFitText(run->fit)));
    ShowEvidence(page);
  }
}

void ProposalPages::ShowEvidence(int page) {
  const TuneRun* run = session_.Run();
  if (!run || run->proposal.fuel_map != page + 1) return;
  const MapGrid* grid = maps_.page(page)->grid();
  const ProposedCell* cell = run->proposal.Cell(grid->CurrentRow(), grid->CurrentColumn());
  bars_[static_cast<std::size_t>(page)]->ShowEvidence(
      cell ? QString::fromStdString(EvidenceText(*cell, run->evidence.cells.Axes())) : QString());
}

void ProposalPages::OpenSettings() {
  auto* dialog = new ProposalSettingsDialog(session_.Settings(), window_);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog, &QDialog::accepted, this,
          [this, dialog] { session_.SetSettings(dialog->Chosen()); });
  dialog->open();
}

}  // namespace vela

#include "moc_proposal_pages.cpp"
