// What accessibility tools read of the map pages' self-painted parts: the live read-out grid
// (`FuelMap1A`, ...) as a group of static texts, one per live quantity, named by its label ("RPM")
// with the value it shows; and the 3D graph as a chart whose value is its live point's label.
#pragma once

class QAccessibleInterface;

namespace vela {

class MapReadout;

// Installs the interfaces for the whole program (once, however often it is called).
void InstallMapAccessibility();

// The interface of one quantity of `readout` (`index` as in kReadoutLabels).
QAccessibleInterface* ReadoutValueInterface(MapReadout* readout, int index);

}  // namespace vela
