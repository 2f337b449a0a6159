#include "app/workbench/compare_pages.h"

#include "app/workbench/compare_chooser.h"
#include "base/qt/qt_platform.h"
#include "editors/compare/compare_keys.h"
#include "editors/compare/compare_overlay.h"
#include "editors/compensation/qt/small_map_grid.h"
#include "editors/mapgrid/qt/map_key_press.h"
#include "tune/view/proposal_view.h"

namespace vela {

namespace {

const QString kSuffixes[MapPages::kPages] = {"", "Map2", "Ign"};

EditedMap MapOf(int page) { return static_cast<EditedMap>(page); }

QLabel* CountLabel(QWidget* page, const QString& name) {
  auto* label = new QLabel(page);
  label->setObjectName(name);
  label->setStyleSheet("font-weight: bold; background-color: rgb(255, 244, 204); padding: 2px;");
  label->setWordWrap(true);
  label->hide();
  if (auto* layout = qobject_cast<QBoxLayout*>(page->layout())) layout->insertWidget(0, label);
  return label;
}

char TypedCharacter(const QKeyEvent& event) {
  const QString text = event.text();
  return text.size() == 1 && text.at(0).unicode() < 128 ? static_cast<char>(text.at(0).unicode())
                                                        : 0;
}

}  // namespace

ComparePages::ComparePages(CompareSession& session, MapPages& maps, QTabWidget* tabs,
                           QWidget* window)
    : QObject(window), session_(session), maps_(maps), window_(window) {
  for (int page = 0; page < MapPages::kPages; ++page) {
    auto* bar = new CompareBar(kSuffixes[page], maps_.page(page));
    bars_[static_cast<std::size_t>(page)] = bar;
    maps_.page(page)->AddAboveGrid(bar);
    connect(bar, &CompareBar::TakeSelection, this, [this, page] { Take(page, false); });
    connect(bar, &CompareBar::TakeWholeMap, this, [this, page] { Take(page, true); });
    connect(bar, &CompareBar::SendDifferences, this, [this, page] { Send(page); });
  }
  AddCountLabels(tabs);
  connect(&session_, &CompareSession::Changed, this, &ComparePages::Show);
  connect(&session_, &CompareSession::Note, this, &ComparePages::Note);
}

void ComparePages::AddCountLabels(QTabWidget* tabs) {
  compensation_count_ = CountLabel(tabs->widget(kPageCompensation), "CompareCountCompensation");
  for (SmallMapGrid* grid : tabs->widget(kPageCompensation)->findChildren<SmallMapGrid*>()) {
    compensation_grids_.push_back(grid);
  }
  const std::pair<int, const char*> setup_pages[] = {{kPageOutputs, "Outputs"},
                                                     {kPageInputs, "Inputs"},
                                                     {kPageMainSetup, "MainSetup"},
                                                     {kPageSensorSetup, "SensorSetup"}};
  for (const auto& [index, name] : setup_pages) {
    setup_counts_.push_back(CountLabel(tabs->widget(index), QString("CompareCountSetup") + name));
  }
}

bool ComparePages::HandleKey(KeyAction action, const QKeyEvent& event, int tab) {
  if (action == KeyAction::kCompareView) {
    CycleView(tab);
    return true;
  }
  if (action == KeyAction::kCompareChoose) {
    OpenChooser();
    return true;
  }
  if (!IsMapPage(tab) || !session_.Comparing()) return false;
  const std::optional<std::string> refusal =
      EditRefusal(session_.View(MapOf(tab)), session_.Pair());
  if (!refusal) return false;
  if (action != KeyAction::kPassToGrid && action != KeyAction::kInsertLiveValue) return false;
  if (!ChangesMapValues(MapKeyPressOf(event), TypedCharacter(event))) return false;
  emit Note(QString::fromStdString(*refusal));
  return true;
}

void ComparePages::CycleView(int tab) {
  if (!session_.Comparing()) {
    emit Note("Nothing compared: Ctrl-Shift-Q chooses what to compare with.");
    return;
  }
  if (!IsMapPage(tab)) {
    emit Note("Ctrl-Q changes the view of a map page.");
    return;
  }
  session_.SetView(MapOf(tab), NextView(session_.View(MapOf(tab))));
}

void ComparePages::OpenChooser() {
  auto* chooser =
      new CompareChooser(session_.EcuRead(), session_.Comparing(), session_.BaseSource(), window_);
  chooser->setAttribute(Qt::WA_DeleteOnClose);
  connect(chooser, &QDialog::accepted, this, [this, chooser] {
    switch (chooser->Chosen()) {
      case CompareChooser::Choice::kEcu:
        session_.Compare(chooser->Base(), CompareSession::Source::kEcu);
        break;
      case CompareChooser::Choice::kMapFile:
        session_.Compare(chooser->Base(), CompareSession::Source::kMapFile);
        break;
      case CompareChooser::Choice::kStop:
        session_.StopComparing();
        break;
    }
  });
  chooser->open();
}

void ComparePages::Show() {
  for (int page = 0; page < MapPages::kPages; ++page) ShowMapPage(page);
  const bool on = session_.Comparing();
  const OtherSide& side = session_.Side();
  const ImageComparison& comparison = session_.Comparison();
  compensation_count_->setVisible(on);
  if (on) {
    compensation_count_->setText(QString::fromStdString(
        "Compensation tables: " +
        CellCountText(comparison.CountOn(ComparePage::kCompensation), side)));
  }
  MarkCompensationGrids();
  for (QLabel* label : setup_counts_) {
    label->setVisible(on);
    if (on) label->setText(QString::fromStdString(SetupCountText(comparison.setup, side)));
  }
}

void ComparePages::MarkCompensationGrids() {
  for (SmallMapGrid* grid : compensation_grids_) {
    const TableComparison* table =
        session_.Comparing() ? session_.Comparison().Table(grid->objectName().toStdString())
                             : nullptr;
    std::vector<QColor> marks;
    for (int row = 0; table != nullptr && row < table->Rows(); ++row) {
      const std::optional<Rgb> mark = CompareMark(*table, {table->FirstRow() + row, 1});
      marks.push_back(mark ? QColor(mark->red, mark->green, mark->blue) : QColor());
    }
    grid->SetMarks(std::move(marks));
  }
}

void ComparePages::ShowMapPage(int page) {
  MapPage* map_page = maps_.page(page);
  const TableComparison* table = session_.Table(MapOf(page));
  CompareBar* bar = bars_[static_cast<std::size_t>(page)];
  if (!table) {
    map_page->grid()->SetOverlay({});
    map_page->graph()->SetOverlay({});
    bar->hide();
    return;
  }
  const CompareView view = session_.View(MapOf(page));
  const MapKind kind = map_page->grid()->Model().Kind();
  GridOverlay overlay = CompareOverlay(*table, view, CellDecimals(kind), SystemDecimalSeparator(),
                                       !session_.Editable());
  if (const FuelProposal* proposal = session_.Proposal();
      proposal && proposal->fuel_map == page + 1) {
    MarkTooLittle(overlay, *proposal);
  }
  map_page->grid()->SetOverlay(overlay);
  map_page->graph()->SetOverlay(std::move(overlay));
  bar->Show(view, QString::fromStdString(ViewCaption(view, session_.Pair())),
            QString::fromStdString(CellCountText(table->DifferingCount(), session_.Side())),
            !session_.Editable());
}

void ComparePages::Take(int page, bool whole_map) {
  MapGrid* grid = maps_.page(page)->grid();
  const QString note = session_.TakeOther(MapOf(page), grid->Model(), whole_map);
  grid->Refresh();
  emit Note(note);
}

void ComparePages::Send(int page) { emit Note(session_.SendDifferences(MapOf(page))); }

}  // namespace vela

#include "moc_compare_pages.cpp"
