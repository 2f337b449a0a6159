// The edit history in the tuner's words: what kind of change an entry is, where it was made, how
// much it changed, and what taking a restore point did (thinning included, so that no point ever
// goes without being said).
#pragma once

#include <string>
#include <string_view>

#include "editors/workbench/edit_journal.h"
#include "editors/workbench/restore_points.h"

namespace vela {

// "Key step", "Typed operation", ... "Restore".
std::string_view KindText(EditKind kind);
// "Fuel Map 1", "Fuel Map 2", "Ignition map", "Set-up", "Whole image".
std::string_view PlaceText(EditPlace place);

// How much an entry changed: on a map, its cells ("1 cell", "187 cells"; a fuel cell is two
// bytes and counts once), with any byte outside that map counted apart ("3 cells, 2 bytes");
// elsewhere its bytes ("1 byte"). "No change" for an entry that changed nothing (a download or a
// calibration read that left the image as it was).
std::string SizeText(const EditEntry& entry);

// The outcome of taking a restore point, one sentence or more: written, the same as the newest,
// or failed; then the points thinned and those that could not be removed, by name.
std::string TakenText(const RestorePoints::Taken& taken);

}  // namespace vela
