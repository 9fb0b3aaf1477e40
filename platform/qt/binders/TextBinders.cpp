// Labels, edits, numeric edits, memos and the status bar.
#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QStatusBar>

#include "platform/qt/Keep.h"
#include "platform/qt/Look.h"
#include "platform/qt/QtText.h"
#include "platform/qt/binders/Binder.h"
#include "platform/qt/binders/NumericWidget.h"

namespace dbkeeper::qt {

namespace {

// Shows a text without moving the caret or breaking an input method's composition when it is the
// shown one already.
void Show(QLineEdit& widget, const std::string& text) {
  const QString shown = ToQt(text);
  if (widget.text() != shown) widget.setText(shown);
}

// The editor's own toPlainText would turn no-break spaces into plain ones.
QString TextOf(const QPlainTextEdit& widget) {
  QString text = widget.document()->toRawText();
  return text.replace(QChar::ParagraphSeparator, '\n').replace(QChar::LineSeparator, '\n');
}

void Show(QPlainTextEdit& widget, const std::string& text) {
  const QString shown = ToQtLines(text);
  if (TextOf(widget) == shown) return;
  if (widget.isReadOnly()) {
    widget.setPlainText(shown);
    return;
  }
  // As one step that a person can undo.
  QTextCursor whole(widget.document());
  whole.select(QTextCursor::Document);
  whole.insertText(shown);
  widget.moveCursor(QTextCursor::Start);
}

// Tells when the keyboard focus enters or leaves a widget inside its window. Another window or a
// menu that takes the keyboard for a while is neither.
class FocusWatcher : public QObject {
 public:
  FocusWatcher(QWidget& widget, std::function<void()> entered, std::function<void()> left)
      : QObject(&widget), entered_(std::move(entered)), left_(std::move(left)) {
    widget.installEventFilter(this);
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::FocusIn && !inside_) {
      inside_ = true;
      entered_();
    }
    if (event->type() == QEvent::FocusOut && inside_ && !IsForAWhile(*event)) {
      inside_ = false;
      left_();
    }
    // The window has gone, and nobody left the field.
    if (event->type() == QEvent::Hide) inside_ = false;
    return QObject::eventFilter(watched, event);
  }

 private:
  static bool IsForAWhile(QEvent& event) {
    const Qt::FocusReason reason = static_cast<QFocusEvent&>(event).reason();
    return reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason ||
           reason == Qt::MenuBarFocusReason;
  }

  std::function<void()> entered_;
  std::function<void()> left_;
  bool inside_ = false;
};

}  // namespace

QLabel* Binder::Make(Label& label) const {
  auto* widget = new QLabel(&window_);
  widget->setTextFormat(Qt::PlainText);
  BindCommon(label, *widget);
  Keep(*widget, label.Caption.Observe(
                    [widget](const std::string& text) { widget->setText(ToQtLines(text)); }));
  return widget;
}

QLineEdit* Binder::Make(Edit& edit) const {
  auto* widget = new QLineEdit(&window_);
  BindCommon(edit, *widget);
  BindFocus(edit, *widget);
  Keep(*widget, edit.Text.Observe([widget](const std::string& text) { Show(*widget, text); }));
  Keep(*widget,
       edit.ReadOnly.Observe([widget](bool read_only) { widget->setReadOnly(read_only); }));
  Keep(*widget, edit.Color.Observe([widget](Color color) { ShowFieldColor(*widget, color); }));
  QObject::connect(widget, &QLineEdit::textEdited, widget, [this_guard = &guard_, &edit, widget] {
    this_guard->Run([&] { edit.UserType(FromQt(widget->text())); });
    Show(*widget, edit.Text());
  });
  return widget;
}

QLineEdit* Binder::MakePassword(Edit& edit) const {
  QLineEdit* widget = Make(edit);
  widget->setEchoMode(QLineEdit::Password);
  widget->setStyleSheet("QLineEdit { lineedit-password-character: 42 }");
  return widget;
}

void Binder::BindFocus(Edit& edit, QLineEdit& widget) const {
  const auto run = [guard = &guard_](auto action) { guard->Run(action); };
  new FocusWatcher(
      widget, [run, &edit] { run([&edit] { edit.UserEnter(); }); },
      [run, &edit] { run([&edit] { edit.UserExit(); }); });
}

QPlainTextEdit* Binder::Make(Memo& memo) const {
  auto* widget = new QPlainTextEdit(&window_);
  // The tab key goes to the next control, as everywhere in a dialog.
  widget->setTabChangesFocus(true);
  Bind(memo, *widget);
  return widget;
}

QPlainTextEdit* Binder::MakeCode(Memo& memo) const {
  QPlainTextEdit* const widget = Make(memo);
  widget->setFont(CodeFont(*widget));
  widget->setLineWrapMode(QPlainTextEdit::NoWrap);
  return widget;
}

void Binder::Bind(Memo& memo, QPlainTextEdit& editor) const {
  BindCommon(memo, editor);
  Keep(editor, memo.ReadOnly.Observe([&editor](bool read_only) { editor.setReadOnly(read_only); }));
  // Set while the text comes from the program: the widget has no signal of its own for typing.
  auto mirroring = std::make_shared<bool>(false);
  Keep(editor, memo.Text.Observe([&editor, mirroring](const std::string& text) {
    *mirroring = true;
    Show(editor, text);
    *mirroring = false;
  }));
  Keep(editor, memo.CaretRequested.Connect([&editor](TextEnd end) {
    editor.moveCursor(end == TextEnd::kStart ? QTextCursor::Start : QTextCursor::End);
    editor.ensureCursorVisible();
  }));
  QObject::connect(&editor, &QPlainTextEdit::textChanged, &editor,
                   [guard = &guard_, &memo, &editor, mirroring] {
                     if (*mirroring) return;
                     guard->Run([&] { memo.UserType(FromQtLines(TextOf(editor))); });
                   });
}

QLineEdit* Binder::Make(TFnpNumericEdit& edit) const {
  auto* widget = new NumericWidget(edit, guard_, &window_);
  BindCommon(edit, *widget);
  return widget;
}

QStatusBar* Binder::Make(StatusBar& bar) const {
  auto* widget = new QStatusBar(&window_);
  BindCommon(bar, *widget);
  // A label, because the bar's own message gives way to the hints of menu items.
  auto* text = new QLabel(widget);
  text->setTextFormat(Qt::PlainText);
  text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  widget->addWidget(text, 1);
  Keep(*widget, bar.SimpleText.Observe([text](const std::string& shown) {
    // One line: a statement of several lines shows them behind each other.
    text->setText(ToQtLines(shown).replace('\n', ' '));
  }));
  return widget;
}

}  // namespace dbkeeper::qt
