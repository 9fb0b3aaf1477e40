#include "platform/qt/QtDialogs.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QSplitter>
#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "platform/qt/Look.h"
#include "platform/qt/QtText.h"

namespace dbkeeper::qt {

namespace {

struct BoxButton {
  Answer answer;
  const char* name;
  const char* caption;
};

constexpr BoxButton kOk = {Answer::kOk, "Ok", "OK"};
constexpr BoxButton kCancel = {Answer::kCancel, "Cancel", "キャンセル"};
constexpr BoxButton kYes = {Answer::kYes, "Yes", "はい"};
constexpr BoxButton kNo = {Answer::kNo, "No", "いいえ"};
// The last button of a box is the one that Esc presses, where Esc presses one.
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

// A box whose question must be answered by one of its buttons has neither Esc nor a close button,
// for none of the answers is harmless. Ctrl+C copies the text, whatever of it is selected.
class Box : public QMessageBox {
 public:
  Box(QMessageBox::Icon icon, const dbkeeper::Question& question)
      : QMessageBox(icon, ToQt(question.caption), ToQtLines(question.text), QMessageBox::NoButton,
                    QApplication::activeWindow()) {
    setObjectName("MessageBox");
    setTextFormat(Qt::PlainText);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    const std::span<const BoxButton> buttons = ButtonsOf(question.buttons);
    for (const BoxButton& button : buttons) {
      // Only of its role does the toolkit know nothing: it would find one for Esc by itself.
      QPushButton* const made = addButton(button.caption, QMessageBox::ActionRole);
      made->setObjectName(button.name);
      if (button.answer == question.default_answer) setDefaultButton(made);
      made_.push_back({made, button.answer});
    }
    if (question.buttons == Buttons::kYesNo) {
      setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint);
    } else {
      setEscapeButton(made_.back().widget);
    }
  }

  Answer Run() {
    exec();
    for (const Made& made : made_) {
      if (made.widget == clickedButton()) return made.answer;
    }
    return made_.back().answer;
  }

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    if (event->matches(QKeySequence::Copy)) {
      const QString details = informativeText();
      QApplication::clipboard()->setText(details.isEmpty() ? text() : text() + "\n\n" + details);
    } else {
      QMessageBox::keyPressEvent(event);
    }
  }

 private:
  struct Made {
    QPushButton* widget;
    Answer answer;
  };

  std::vector<Made> made_;
};

// A box breaks a line only where it would become too wide.
void KeepLines(QMessageBox& box) {
  constexpr int kWidest = 700;
  auto* const label = box.findChild<QLabel*>("qt_msgbox_label");
  if (label == nullptr) return;
  const int text = label->fontMetrics().size(0, box.text()).width();
  label->setMinimumWidth(std::min(text, Scaled(box, kWidest)));
}

Answer RunBox(const Question& question, QMessageBox::Icon icon, const std::string& details = "") {
  Box box(icon, question);
  box.setInformativeText(ToQtLines(details));
  KeepLines(box);
  return box.Run();
}

Question Message(const std::string& text) {
  return {text, FromQt(QCoreApplication::applicationName()), Buttons::kOk, Icon::kNone,
          Answer::kOk};
}

constexpr int kChooserWidth = 800;
constexpr int kChooserHeight = 460;
constexpr int kPlacesWidth = 140;

// True for a path that this machine cannot have: with a drive, or on another machine.
bool IsServerPath(const QString& path) {
  static const QRegularExpression pattern(R"(^([A-Za-z]:[\\/]|\\\\))");
  return pattern.match(path).hasMatch();
}

// Names files and folders of this machine. The path of a file on the server's machine is taken as
// it was typed, wherever the toolkit's own field for it is found.
class Chooser : public QFileDialog {
 public:
  Chooser() : QFileDialog(QApplication::activeWindow()) {
    setObjectName("FileChooser");
    setOption(QFileDialog::DontUseNativeDialog);
    resize(Scaled(*this, kChooserWidth), Scaled(*this, kChooserHeight));
    if (auto* const panes = findChild<QSplitter*>("splitter")) {
      panes->setSizes({Scaled(*this, kPlacesWidth), Scaled(*this, kChooserWidth - kPlacesWidth)});
    }
    name_ = findChild<QLineEdit*>("fileNameEdit");
    auto* const buttons = findChild<QDialogButtonBox*>();
    if (name_ == nullptr || buttons == nullptr) return;
    connect(name_, &QLineEdit::textChanged, this, [buttons](const QString& text) {
      if (!IsServerPath(text)) return;
      for (QAbstractButton* button : buttons->buttons()) button->setEnabled(true);
    });
  }
  // Empty when the operator cancels.
  QString Run() {
    if (exec() != QDialog::Accepted) return {};
    return server_path_.isEmpty() ? selectedFiles().value(0) : server_path_;
  }

  void accept() override {
    const QString typed = name_ != nullptr ? name_->text() : QString();
    if (!IsServerPath(typed)) return QFileDialog::accept();
    server_path_ = typed;
    done(QDialog::Accepted);
  }

 private:
  QLineEdit* name_ = nullptr;
  QString server_path_;
};

std::optional<std::string> Chosen(const QString& path) {
  if (path.isEmpty()) return std::nullopt;
  return FromQt(path);
}

// Also for opening a file may be named that is not there: whoever opens it tells that.
std::optional<std::string> RunChooser(const FileChoice& choice, QFileDialog::AcceptMode mode) {
  Chooser chooser;
  chooser.setAcceptMode(mode);
  chooser.setFileMode(QFileDialog::AnyFile);
  chooser.setNameFilter(ToQtFilter(choice.filter));
  chooser.setDefaultSuffix(ToQt(choice.default_extension));
  if (!choice.folder.empty()) chooser.setDirectory(ToQt(choice.folder));
  if (!choice.initial_name.empty()) chooser.selectFile(ToQt(choice.initial_name));
  return Chosen(chooser.Run());
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

void QtDialogs::ShowMessage(const std::string& text) { RunBox(Message(text), QMessageBox::NoIcon); }

void QtDialogs::ShowError(const std::string& text, const std::string& details) {
  RunBox(Message(text), QMessageBox::Critical, details);
}

Answer QtDialogs::Ask(const Question& question) {
  return RunBox(question,
                question.icon == Icon::kStop ? QMessageBox::Critical : QMessageBox::NoIcon);
}

std::optional<std::string> QtDialogs::OpenFile(const FileChoice& choice) {
  return RunChooser(choice, QFileDialog::AcceptOpen);
}

std::optional<std::string> QtDialogs::SaveFile(const FileChoice& choice) {
  return RunChooser(choice, QFileDialog::AcceptSave);
}

std::optional<std::string> QtDialogs::ChooseFolder() {
  Chooser chooser;
  chooser.setFileMode(QFileDialog::Directory);
  chooser.setOption(QFileDialog::ShowDirsOnly);
  return Chosen(chooser.Run());
}

}  // namespace dbkeeper::qt
