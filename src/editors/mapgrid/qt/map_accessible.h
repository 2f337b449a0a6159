// What accessibility tools read of the live read-out grid beside a map (`FuelMap1A`, ...): a group
// of static texts, one per live quantity, named by its label ("RPM") with the value it shows.
#pragma once

class QAccessibleInterface;

namespace vela {

class MapReadout;

// Installs the interfaces for the whole program (once, however often it is called).
void InstallReadoutAccessibility();

// The interface of one quantity of `readout` (`index` as in kReadoutLabels).
QAccessibleInterface* ReadoutValueInterface(MapReadout* readout, int index);

}  // namespace vela
