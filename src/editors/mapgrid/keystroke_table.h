// The keystroke reference table the main window shows, in English and in German, row for row.
// The texts are shown exactly as held here, leading blanks included.
#pragma once

#include <array>
#include <string_view>

namespace vela {

struct KeystrokeRow {
  std::string_view keystroke;
  std::string_view function;
};

inline constexpr KeystrokeRow kKeystrokeHeadings = {" Keystroke", " Function"};

inline constexpr std::array<KeystrokeRow, 23> kKeystrokeRows = {{
    {"Up Arrow", "Standard Tuning Increment"},
    {"Down Arrow", "Standard Tuning Decrement"},
    {"Shift-Up Arrow", "Fine Tuning Increment"},
    {"Shift-Down Arrow", "Fine Tuning Decrement"},
    {"Alt-Up Arrow", "Super Fine Tuning Increment"},
    {"Alt-Down Arrow", "Super Fine Tuning Decrement"},
    {"PgUp", "Large Tuning Increment"},
    {"PgDown", "Large Tuning Decrement"},
    {"Shift-PgUp", " 1ms Tuning Increment"},
    {"Shift-PgDown", " 1ms Tuning Decrement"},
    {"Alt-PgUp", " 2ms Tuning Increment"},
    {"Alt-PgDown", " 2ms Tuning Decrement"},
    {"Left Arrow", "Navigate Left"},
    {"Right Arrow", "Navigate Right"},
    {"N", "Next RPM Range"},
    {"P", "Previous RPM Range"},
    {"L", "Start/Stop Datalogging"},
    {"U", "Force an Upload from ECU"},
    {"Alt-A", "Enable All Ranges Up/Right"},
    {"Alt-L", "Enable Live Tuning Feature"},
    {"Enter", "Insert Live Tuning Fuel Value"},
    {"F,I,T,C,M,S,H,D,O,G", "Change Active Menu Screen"},
    {"Double Spacebar", "Move Fuel/Ign map pointer to active loadsite"},
}};

inline constexpr KeystrokeRow kKeystrokeHeadingsGerman = {" Tasten", " Funktion"};

// The German table has no rows for the 1 ms and 2 ms keys, the letter keys and the double
// spacebar.
inline constexpr std::array<KeystrokeRow, 17> kKeystrokeRowsGerman = {{
    {"Pfeil Auf", "Einstellwert Erhoehen"},
    {"Pfeil Ab", "Einstellwert Reduzieren"},
    {"Shift-Pfeil Auf", "Einstellwert Fein Erhoehen"},
    {"Shift-Pfeil Ab", "Einstellwert Fein Reduzieren"},
    {"Alt-Pfeil Auf", "Einstellwert Superfein Erhoehen"},
    {"Alt-Pfeil Ab", "Einstellwert Superfein Reduzieren"},
    {"Bild Auf", "Einstellwert Grob Erhoehen"},
    {"Bild Ab", "Einstellwert Grob Reduzieren"},
    {"Linker Pfeil", "Navigiert Nach Links"},
    {"Rechter Pfeil", "Navigiert Nach Rechts"},
    {"N", "Naechster Drehzahlbereich"},
    {"P", "vorheriger Drehzahlbereich"},
    {"L", "Start/Stop Datenaufzeichnung"},
    {"U", "Force Upload"},
    {"Alt-A", "Activiert Stutzpunkte"},
    {"Alt-L", "Activiert Live Tuning"},
    {"Enter", "Fugt den Live Tuning Wert ein"},
}};

}  // namespace vela
