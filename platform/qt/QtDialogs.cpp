#include "platform/qt/QtDialogs.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <array>
#include <span>

#include "platform/qt/QtText.h"

namespace dbkeeper::qt {

namespace {

struct BoxButton {
  Answer answer;
  QMessageBox::StandardButton button;
  const char* caption;
};

constexpr BoxButton kOk = {Answer::kOk, QMessageBox::Ok, "OK"};
constexpr BoxButton kCancel = {Answer::kCancel, QMessageBox::Cancel, "キャンセル"};
constexpr BoxButton kYes = {Answer::kYes, QMessageBox::Yes, "はい"};
constexpr BoxButton kNo = {Answer::kNo, QMessageBox::No, "いいえ"};
// The last button of a box is the one that Esc presses.
constexpr std::array<BoxButton, 1> kOkOnly = {kOk};
constexpr std::array<BoxButton, 2> kOkCancel = {kOk, kCancel};
constexpr std::array<BoxButton, 2> kYesNo = {kYes, kNo};

std::span<const BoxButton> ButtonsOf(Buttons buttons) {
  switch (buttons) {
    case Buttons::kOk:
      return kOkOnly;
    case Buttons::kOkCancel:
      return kOkCancel;
    case Buttons::kYesNo:
      return kYesNo;
  }
  return kOkOnly;
}

Answer RunBox(const Question& question, QMessageBox::Icon icon) {
  QMessageBox box(icon, ToQt(question.caption), ToQtLines(question.text), QMessageBox::NoButton,
                  QApplication::activeWindow());
  box.setObjectName("MessageBox");
  box.setTextFormat(Qt::PlainText);
  box.setTextInteractionFlags(Qt::TextSelectableByMouse);
  const std::span<const BoxButton> buttons = ButtonsOf(question.buttons);
  for (const BoxButton& button : buttons) {
    QPushButton* made = box.addButton(button.button);
    made->setText(button.caption);
    if (button.answer == question.default_answer) box.setDefaultButton(made);
  }
  box.setEscapeButton(buttons.back().button);
  const int pressed = box.exec();
  for (const BoxButton& button : buttons) {
    if (button.button == pressed) return button.answer;
  }
  return buttons.back().answer;
}

void RunMessage(const std::string& text, QMessageBox::Icon icon) {
  const std::string title = FromQt(QCoreApplication::applicationName());
  RunBox({text, title, Buttons::kOk, Icon::kNone, Answer::kOk}, icon);
}

std::optional<std::string> Chosen(const QString& path) {
  if (path.isEmpty()) return std::nullopt;
  return FromQt(path);
}

enum class ChooserKind { kOpen, kSave };

std::optional<std::string> RunChooser(const FileChoice& choice, ChooserKind kind) {
  QFileDialog chooser(QApplication::activeWindow());
  const bool save = kind == ChooserKind::kSave;
  chooser.setObjectName("FileChooser");
  chooser.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  // An extension to add means that a file may be named that is not there yet.
  const bool may_be_new = save || !choice.default_extension.empty();
  chooser.setFileMode(may_be_new ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  chooser.setNameFilter(ToQtFilter(choice.filter));
  chooser.setDefaultSuffix(ToQt(choice.default_extension));
  if (!choice.initial_name.empty()) chooser.selectFile(ToQt(choice.initial_name));
  if (chooser.exec() != QDialog::Accepted) return std::nullopt;
  return Chosen(chooser.selectedFiles().value(0));
}

}  // namespace

QString ToQtFilter(const std::string& filter) {
  const QStringList parts = ToQt(filter).split('|');
  QStringList result;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    QString patterns = parts[i + 1];
    patterns.replace(';', ' ');
    // "*.*" means every file; here a file may do without a dot.
    if (patterns == QLatin1String("*.*")) patterns = "*";
    QString caption = parts[i];
    // The toolkit takes the patterns from the last brackets; a caption often repeats them.
    const qsizetype bracket = caption.indexOf('(');
    if (bracket > 0) caption = caption.left(bracket).trimmed();
    result += caption + " (" + patterns + ")";
  }
  return result.join(QLatin1String(";;"));
}

void QtDialogs::ShowMessage(const std::string& text) { RunMessage(text, QMessageBox::NoIcon); }

void QtDialogs::ShowError(const std::string& text) { RunMessage(text, QMessageBox::Critical); }

Answer QtDialogs::Ask(const Question& question) {
  return RunBox(question,
                question.icon == Icon::kStop ? QMessageBox::Critical : QMessageBox::NoIcon);
}

std::optional<std::string> QtDialogs::OpenFile(const FileChoice& choice) {
  return RunChooser(choice, ChooserKind::kOpen);
}

std::optional<std::string> QtDialogs::SaveFile(const FileChoice& choice) {
  return RunChooser(choice, ChooserKind::kSave);
}

std::optional<std::string> QtDialogs::ChooseFolder() {
  return Chosen(QFileDialog::getExistingDirectory(QApplication::activeWindow()));
}

}  // namespace dbkeeper::qt
