#include "app/review/math_channel_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "app/sessions/review_session.h"

namespace vela {

namespace {

QString FromStd(const std::string& text) { return QString::fromStdString(text); }

// The line of a channel in the list: "NAME = EXPRESSION", and the refusal when there is one.
QString ChannelLine(const review::MathChannel& channel, const review::MathColumn* column) {
  QString line = FromStd(channel.name) + " = " + FromStd(channel.expression);
  if (column && column->error) {
    line += QString("   (refused at %1: %2)")
                .arg(column->error->position + 1)
                .arg(FromStd(column->error->reason));
  }
  return line;
}

}  // namespace

MathChannelEditor::MathChannelEditor(const review::MathChannel& channel,
                                     std::vector<review::MathChannel> before, QWidget* parent)
    : QDialog(parent), before_(std::move(before)) {
  setObjectName("MathChannelEditor");
  setWindowTitle("Math Channel");
  auto* form = new QFormLayout;
  name_ = new QLineEdit(FromStd(channel.name), this);
  name_->setObjectName("MathChannelName");
  name_->setMaxLength(static_cast<int>(review::kMaxMathNameLength));
  expression_ = new QLineEdit(FromStd(channel.expression), this);
  expression_->setObjectName("MathChannelExpression");
  expression_->setMinimumWidth(420);
  expression_->setToolTip(
      "Channels by name (RPM, MAP, AFR, \"Duty %\"), + - * /, < <= > >= == !=, min(a, b), "
      "max(a, b), abs(a), d(a), avg(a, 0.5s), target(rpm, load), RPM[-1], TPS@-0.5s");
  form->addRow("&Name", name_);
  form->addRow("&Expression", expression_);
  check_ = new QLabel(this);
  check_->setObjectName("MathChannelCheck");
  check_->setTextFormat(Qt::RichText);
  check_->setWordWrap(true);
  form->addRow("Check", check_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  ok_ = buttons->button(QDialogButtonBox::Ok);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(buttons);
  connect(name_, &QLineEdit::textChanged, this, &MathChannelEditor::Check);
  connect(expression_, &QLineEdit::textChanged, this, &MathChannelEditor::Check);
  Check();
}

review::MathChannel MathChannelEditor::Channel() const {
  return {name_->text().trimmed().toStdString(), expression_->text().toStdString()};
}

void MathChannelEditor::SetLaterNames(std::vector<std::string> names) {
  later_names_ = std::move(names);
  Check();
}

void MathChannelEditor::Check() {
  const review::MathChannel channel = Channel();
  refusal_.clear();
  refused_at_ = -1;
  std::optional<std::string> name_refused = review::RefuseMathName(channel.name);
  for (const review::MathChannel& other : before_) {
    if (!name_refused && review::SameName(other.name, channel.name)) {
      name_refused = "another math channel has that name";
    }
  }
  for (const std::string& other : later_names_) {
    if (!name_refused && review::SameName(other, channel.name)) {
      name_refused = "another math channel has that name";
    }
  }
  const review::CompiledExpression compiled = review::CompileAfter(channel.expression, before_);
  QString html;
  if (compiled.error) {
    const QByteArray bytes = expression_->text().toUtf8();
    const qsizetype at = std::min<qsizetype>(compiled.error->position, bytes.size());
    refused_at_ = static_cast<int>(QString::fromUtf8(bytes.left(at)).size());
    refusal_ = QString("Refused at character %1: %2")
                   .arg(refused_at_ + 1)
                   .arg(FromStd(compiled.error->reason));
    const QString text = expression_->text();
    html = refusal_.toHtmlEscaped() + "<br><tt>" + text.left(refused_at_).toHtmlEscaped() +
           "<span style='background-color:#c03020;color:white'>" +
           (refused_at_ < text.size() ? text.mid(refused_at_, 1).toHtmlEscaped() : "&nbsp;") +
           "</span>" + text.mid(refused_at_ + 1).toHtmlEscaped() + "</tt>";
  } else if (name_refused) {
    refusal_ = "Name refused: " + FromStd(*name_refused);
    html = refusal_.toHtmlEscaped();
  } else {
    html = "Accepted";
  }
  check_->setText(html);
  check_->setAccessibleDescription(refusal_.isEmpty() ? "Accepted" : refusal_);
  ok_->setEnabled(refusal_.isEmpty());
}

MathChannelsDialog::MathChannelsDialog(ReviewSession& review, QWidget* parent)
    : QDialog(parent), review_(review) {
  setObjectName("DatalogMathChannels");
  setWindowTitle("Math Channels");
  list_ = new QListWidget(this);
  list_->setObjectName("MathChannelList");
  list_->setAccessibleName("Math channels");
  list_->setMinimumWidth(520);
  auto* buttons = new QHBoxLayout;
  const std::pair<const char*, std::function<void()>> actions[] = {
      {"&Add...", [this] { Edit(-1); }},
      {"&Edit...", [this] { Edit(list_->currentRow()); }},
      {"&Remove", [this] { Remove(); }},
      {"&Defaults", [this] { review_.SetMath(review_.default_math()); }},
      {"&Close", [this] { accept(); }}};
  for (const auto& [caption, action] : actions) {
    auto* button = new QPushButton(caption, this);
    button->setObjectName(QString("MathChannels") + QString(caption).remove('&').remove('.'));
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, action);
    buttons->addWidget(button);
  }
  connect(list_, &QListWidget::itemActivated, this,
          [this](QListWidgetItem* item) { Edit(list_->row(item)); });
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(list_, 1);
  layout->addLayout(buttons);
  connect(&review_, &ReviewSession::Changed, this, &MathChannelsDialog::Fill);
  Fill();
}

void MathChannelsDialog::Fill() {
  const int row = list_->currentRow();
  list_->clear();
  const std::vector<review::MathChannel>& math = review_.math();
  for (std::size_t i = 0; i < math.size(); ++i) {
    const review::MathColumn* column =
        i < review_.math_columns().size() ? &review_.math_columns()[i] : nullptr;
    list_->addItem(ChannelLine(math[i], column));
  }
  list_->setCurrentRow(std::min(row, list_->count() - 1));
}

void MathChannelsDialog::Edit(int row) {
  std::vector<review::MathChannel> math = review_.math();
  const bool adding = row < 0 || row >= static_cast<int>(math.size());
  if (adding && math.size() >= review::kMaxMathChannels) return;
  const std::size_t at = adding ? math.size() : static_cast<std::size_t>(row);
  const std::vector<review::MathChannel> before(math.begin(), math.begin() + at);
  MathChannelEditor editor(adding ? review::MathChannel{} : math[at], before, this);
  std::vector<std::string> later;
  for (std::size_t i = at + 1; i < math.size(); ++i) later.push_back(math[i].name);
  editor.SetLaterNames(std::move(later));
  if (editor.exec() != QDialog::Accepted) return;
  if (adding) {
    math.push_back(editor.Channel());
    review_.SetMath(std::move(math));
  } else {
    review_.EditMath(at, editor.Channel());
  }
  list_->setCurrentRow(static_cast<int>(at));
}

void MathChannelsDialog::Remove() {
  const int row = list_->currentRow();
  if (row < 0 || row >= static_cast<int>(review_.math().size())) return;
  review_.RemoveMath(static_cast<std::size_t>(row));
}

}  // namespace vela

#include "moc_math_channel_dialog.cpp"
