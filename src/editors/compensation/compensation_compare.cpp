#include "editors/compensation/compensation_compare.h"

#include "editors/compensation/compensation_tables.h"

namespace vela {

std::vector<CellTable> CompensationCompareTables(const SensorSetup& sensors) {
  std::vector<CellTable> tables;
  for (CompTable table : kCompTables) {
    CompTableLayout layout = LayoutOf(table);
    std::vector<CellFormat> formats;
    for (int row = 0; row < static_cast<int>(layout.positions.size()); ++row) {
      formats.push_back(FormatOf(table, row, sensors));
    }
    tables.push_back(ByteColumnTable(
        std::string(layout.name), std::move(layout.positions),
        [formats](int row, int raw) { return formats[static_cast<std::size_t>(row)].shown(raw); }));
  }
  return tables;
}

}  // namespace vela
