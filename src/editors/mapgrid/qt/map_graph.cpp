#include "editors/mapgrid/qt/map_graph.h"

#include <Q3DCamera>
#include <Q3DScene>
#include <Q3DSurface>
#include <Q3DTheme>
#include <QGuiApplication>
#include <QLinearGradient>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QSurface3DSeries>
#include <QSurfaceDataProxy>
#include <QVBoxLayout>
#include <QtDataVisualization/qutils.h>
#include <QValue3DAxis>
#include <algorithm>
#include <cmath>

#include "editors/mapgrid/qt/map_grid.h"
#include "editors/mapgrid/qt/map_heat_view.h"

namespace vela {

namespace {

constexpr int kValueAxisSegments = 5;

bool ProbeOpenGl() {
  const QString platform = QGuiApplication::platformName();
  if (platform == QLatin1String("offscreen") || platform == QLatin1String("minimal")) {
    return false;
  }
  QOpenGLContext context;
  if (!context.create()) return false;
  QOffscreenSurface surface;
  surface.setFormat(context.format());
  surface.create();
  if (!surface.isValid()) return false;
  const bool current = context.makeCurrent(&surface);
  if (current) context.doneCurrent();
  return current;
}

QLinearGradient RampGradient() {
  QLinearGradient gradient;
  for (int i = 0; i <= 4; ++i) {
    const Rgb rgb = RampColour(i / 4.0);
    gradient.setColorAt(i / 4.0, QColor(rgb.red, rgb.green, rgb.blue));
  }
  return gradient;
}

}  // namespace

bool MapGraph::OpenGlUsable() {
  static const bool usable = ProbeOpenGl();
  return usable;
}

MapGraph::MapGraph(MapKind kind, QWidget* parent, GraphMode mode) : QWidget(parent), kind_(kind) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  if (mode == GraphMode::kAuto && OpenGlUsable()) {
    BuildSurface();
    layout->addWidget(QWidget::createWindowContainer(surface_, this));
  } else {
    heat_view_ = new MapHeatView(this);
    layout->addWidget(heat_view_);
  }
  setMinimumSize(200, 150);
}

MapGraph::~MapGraph() = default;

void MapGraph::BuildSurface() {
  // No shadows and no multisampling: the surface is drawn again whenever the live point moves to
  // another cell, and on a laptop without a graphics chip both cost several times the rest of
  // the program.
  QSurfaceFormat format = qDefaultSurfaceFormat(false);
  surface_ = new Q3DSurface(&format);
  surface_->setShadowQuality(QAbstract3DGraph::ShadowQualityNone);
  series_ = new QSurface3DSeries();
  series_->setDrawMode(QSurface3DSeries::DrawSurfaceAndWireframe);
  series_->setBaseGradient(RampGradient());
  series_->setColorStyle(Q3DTheme::ColorStyleRangeGradient);
  series_->setItemLabelFormat(QStringLiteral("@zLabel rpm, @xLabel kPa: @yLabel"));
  surface_->addSeries(series_);
  surface_->axisX()->setTitle(QStringLiteral("Load (kPa)"));
  surface_->axisZ()->setTitle(QStringLiteral("RPM"));
  surface_->axisY()->setTitle(kind_ == MapKind::kFuel ? QStringLiteral("Injector time (ms)")
                                                      : QStringLiteral("Advance (degrees)"));
  surface_->axisX()->setLabelFormat(QStringLiteral("%.0f"));
  surface_->axisZ()->setLabelFormat(QStringLiteral("%.0f"));
  surface_->axisY()->setLabelFormat(kind_ == MapKind::kFuel ? QStringLiteral("%.1f")
                                                            : QStringLiteral("%.0f"));
  for (QValue3DAxis* axis : {surface_->axisX(), surface_->axisY(), surface_->axisZ()}) {
    axis->setTitleVisible(true);
  }
  surface_->setHorizontalAspectRatio(1.0f);  // load and RPM axes equally long
  surface_->setAspectRatio(1.2);             // and the value axis tall enough to read the shape
  Q3DTheme* theme = surface_->activeTheme();
  QFont label_font = theme->font();
  label_font.setPointSize(40);
  theme->setFont(label_font);
  theme->setLabelBorderEnabled(false);
  Q3DCamera* camera = surface_->scene()->activeCamera();
  camera->setCameraPosition(140.0f, 24.0f, 140.0f);
}

void MapGraph::SetNumOfLoadSites(int sites) {
  num_of_load_sites_ = std::max(sites, 0);
  if (followed_) ShowMap(followed_->Model());
}

void MapGraph::ShowMap(const MapGridModel& grid) {
  data_ = GraphDataOf(grid, num_of_load_sites_);
  if (heat_view_ != nullptr) heat_view_->SetData(data_);
  if (surface_ != nullptr) UpdateSurface();
}

void MapGraph::Follow(MapGrid* grid) {
  if (followed_) disconnect(followed_->model(), nullptr, this, nullptr);
  followed_ = grid;
  if (grid == nullptr) return;
  const auto redraw = [this] {
    if (followed_) ShowMap(followed_->Model());
  };
  connect(grid->model(), &QAbstractItemModel::dataChanged, this, redraw);
  connect(grid->model(), &QAbstractItemModel::modelReset, this, redraw);
  ShowMap(grid->Model());
}

void MapGraph::SetMarker(std::optional<OperatingPoint> point) {
  marker_ = point;
  if (heat_view_ != nullptr) heat_view_->SetMarker(point);
  if (surface_ != nullptr) UpdateSurfaceMarker();
}

void MapGraph::UpdateSurface() {
  const QString unit = data_.load_unit;
  if (surface_->axisX()->title() != QStringLiteral("Load (%1)").arg(unit)) {
    surface_->axisX()->setTitle(QStringLiteral("Load (%1)").arg(unit));
    series_->setItemLabelFormat(QStringLiteral("@zLabel rpm, @xLabel %1: @yLabel").arg(unit));
  }
  // The surface wants its rows in rising RPM: grid row 11 first.
  auto* array = new QSurfaceDataArray;
  array->reserve(kMapRows);
  for (int row = kMapRows; row >= 1; --row) {
    auto* items = new QSurfaceDataRow(data_.sites);
    for (int column = 1; column <= data_.sites; ++column) {
      (*items)[column - 1].setPosition(QVector3D(static_cast<float>(data_.load_axis[column - 1]),
                                                 static_cast<float>(data_.At(row, column)),
                                                 static_cast<float>(data_.rpm_axis[row - 1])));
    }
    array->append(items);
  }
  series_->dataProxy()->resetArray(array);
  if (!data_.values.empty()) {
    const auto [low, high] = std::minmax_element(data_.values.begin(), data_.values.end());
    const AxisScale scale =
        NiceScale(kind_ == MapKind::kFuel ? 0.0 : *low, *high, kValueAxisSegments);
    surface_->axisY()->setRange(static_cast<float>(scale.min), static_cast<float>(scale.max));
    surface_->axisY()->setSegmentCount(scale.segments);
  }
  UpdateSurfaceMarker();
}

// The surface marks the nearest point; the live point moves ten times a second, and the surface
// is drawn again only when that nearest point changes.
void MapGraph::UpdateSurfaceMarker() {
  QPoint selected = QSurface3DSeries::invalidSelectionPosition();
  if (marker_ && data_.sites > 0) {
    const int row = static_cast<int>(std::lround(marker_->row));
    const int column = static_cast<int>(std::lround(marker_->column));
    selected = QPoint(std::clamp(kMapRows - row, 0, kMapRows - 1),
                      std::clamp(column - 1, 0, data_.sites - 1));
  }
  if (series_->selectedPoint() != selected) series_->setSelectedPoint(selected);
}

}  // namespace vela
