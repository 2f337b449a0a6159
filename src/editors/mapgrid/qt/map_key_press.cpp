#include "editors/mapgrid/qt/map_key_press.h"

namespace vela {

namespace {

MapKey MapKeyOf(int key) {
  switch (key) {
    case Qt::Key_Up:
      return MapKey::kUp;
    case Qt::Key_Down:
      return MapKey::kDown;
    case Qt::Key_Left:
      return MapKey::kLeft;
    case Qt::Key_Right:
      return MapKey::kRight;
    case Qt::Key_PageUp:
      return MapKey::kPageUp;
    case Qt::Key_PageDown:
      return MapKey::kPageDown;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return MapKey::kEnter;
    case Qt::Key_Space:
      return MapKey::kSpace;
    default:
      break;
  }
  return (key >= Qt::Key_A && key <= Qt::Key_Z) ? MapKey::kLetter : MapKey::kOther;
}

}  // namespace

MapKeyPress MapKeyPressOf(const QKeyEvent& event) {
  MapKeyPress press;
  press.key = MapKeyOf(event.key());
  const Qt::KeyboardModifiers modifiers = event.modifiers();
  press.shift = modifiers.testFlag(Qt::ShiftModifier);
  press.alt = modifiers.testFlag(Qt::AltModifier);
  press.control = modifiers.testFlag(Qt::ControlModifier);
  if (press.key == MapKey::kLetter) {
    const QString text = event.text();
    const bool typed = text.size() == 1 && text.at(0).isLetter() && text.at(0).unicode() < 128;
    press.letter = typed ? static_cast<char>(text.at(0).unicode())
                         : static_cast<char>('A' + (event.key() - Qt::Key_A));
  }
  return press;
}

}  // namespace vela
