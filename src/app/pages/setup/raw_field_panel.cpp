#include "app/pages/setup/raw_field_panel.h"

#include "app/sessions/editor_session.h"

namespace vela {

namespace {

constexpr int kIdleFlags1 = FieldPos("IdleFlags1");
constexpr int kIdleFlagsPerByte = 8;

}  // namespace

RawFieldPanel::RawFieldPanel(EditorSession& editors, QObject* parent)
    : QObject(parent), editors_(editors) {}

void RawFieldPanel::Add(const std::vector<RawFieldEditor*>& editors) {
  for (RawFieldEditor* field : editors) {
    connect(field, &RawFieldEditor::ByteEdited, this, [this](int position, int value) {
      editors_.setup_editor().SetRawByte(position, static_cast<std::uint8_t>(value));
      ShowEditors();
      emit Edited();
    });
    connect(field, &RawFieldEditor::BitEdited, this, [this](int position, int bit, bool on) {
      editors_.setup_editor().SetIdleFlag((position - kIdleFlags1) * kIdleFlagsPerByte + bit, on);
      ShowEditors();
      emit Edited();
    });
    connect(field, &RawFieldEditor::RpmEdited, this, [this](double rpm) {
      editors_.setup_editor().SetIdleTargetRpm(rpm);
      ShowEditors();
      emit Edited();
    });
    fields_.push_back(field);
  }
}

void RawFieldPanel::ShowEditors() {
  const CalibrationImage& image = editors_.image();
  const CheckContext context{editors_.state().sensors.map_sensor_type};
  const SetupEditor& editor = editors_.setup_editor();
  for (RawFieldEditor* field : fields_) {
    const int position = field->field().position;
    switch (field->field().show) {
      case RawShow::kRpm24:
        field->Show(image.Read24(position));
        break;
      case RawShow::kBits:
        field->Show(image.Byte(position));
        break;
      case RawShow::kByte:
      case RawShow::kHalved: {
        const std::optional<std::pair<int, int>> range = editor.RawRange(position);
        field->Show(image.Byte(position), range,
                    QString::fromStdString(editor.RawRangeNote(position, range)));
        break;
      }
    }
    field->ShowChecks(FailedChecksAt(image, position, context));
  }
}

}  // namespace vela

#include "moc_raw_field_panel.cpp"
