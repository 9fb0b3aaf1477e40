#include "platform/qt/binders/NumericWidget.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QMouseEvent>

#include "platform/qt/Keep.h"
#include "platform/qt/Look.h"
#include "platform/qt/QtText.h"

namespace dbkeeper::qt {

namespace {

constexpr int kWidth = 73;
constexpr char32_t kBackspace = 8;

Qt::Alignment ToQtAlignment(TextAlignment alignment) {
  switch (alignment) {
    case TextAlignment::kLeft:
      return Qt::AlignLeft;
    case TextAlignment::kCenter:
      return Qt::AlignHCenter;
    case TextAlignment::kRight:
      break;
  }
  return Qt::AlignRight;
}

// Focus that only comes back from a menu or another window is no entry into the box.
bool IsEntry(Qt::FocusReason reason) {
  return reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason;
}

}  // namespace

NumericWidget::NumericWidget(TFnpNumericEdit& edit, const ActionGuard& guard, QWidget* parent)
    : QLineEdit(parent), edit_(edit), guard_(guard) {
  setMinimumWidth(Scaled(*this, kWidth));
  setMaxLength(INT_MAX);  // the control has the limit
  setAcceptDrops(false);
  setDragEnabled(false);
  setInputMethodHints(Qt::ImhFormattedNumbersOnly);
  FollowControl();
  connect(this, &QLineEdit::cursorPositionChanged, this, [this] { TakeSelection(); });
  connect(this, &QLineEdit::selectionChanged, this, [this] { TakeSelection(); });
  // Whatever else the toolkit's edit would change: the control's text stays.
  connect(this, &QLineEdit::textEdited, this, [this] { Show(); });
}

void NumericWidget::FollowControl() {
  Keep(*this, edit_.Text.Observe([this](const std::string&) { Show(); }));
  Keep(*this, edit_.Selection.Observe([this](const TextSelection&) { Show(); }));
  Keep(*this, edit_.Alignment.Observe([this](TextAlignment alignment) {
    setAlignment(ToQtAlignment(alignment) | Qt::AlignVCenter);
  }));
  Keep(*this, edit_.ReadOnly.Observe([this](bool read_only) { setReadOnly(read_only); }));
  Keep(*this, edit_.Color.Observe([this](Color color) { ShowFieldColor(*this, color); }));
}

template <class Action>
void NumericWidget::Do(Action action) {
  mirroring_ = true;
  guard_.Run(action);
  mirroring_ = false;
  Show();
}

void NumericWidget::Show() {
  if (mirroring_) return;
  mirroring_ = true;
  const QString shown = qt::ToQt(edit_.Text());
  if (text() != shown) setText(shown);
  const auto start = static_cast<int>(edit_.Selection().Start);
  const auto length = static_cast<int>(edit_.Selection().Length);
  const bool selected =
      hasSelectedText() && selectionStart() == start && selectionLength() == length;
  if (length > 0 && !selected) setSelection(start, length);
  if (length == 0 && (hasSelectedText() || cursorPosition() != start)) {
    deselect();
    setCursorPosition(start);
  }
  mirroring_ = false;
}

void NumericWidget::TakeSelection() {
  if (mirroring_) return;
  const bool selected = hasSelectedText();
  const int start = selected ? selectionStart() : cursorPosition();
  const int length = selected ? selectionLength() : 0;
  mirroring_ = true;
  edit_.UserSelect(static_cast<std::size_t>(start), static_cast<std::size_t>(length));
  mirroring_ = false;
}

void NumericWidget::Cut() {
  if (!hasSelectedText()) return;
  Do([this] { QGuiApplication::clipboard()->setText(qt::ToQt(edit_.UserCut())); });
}

void NumericWidget::Paste(const QString& text) {
  Do([this, &text] { edit_.UserPaste(FromQt(text)); });
}

bool NumericWidget::HandleShortcut(QKeyEvent& event) {
  if (event.matches(QKeySequence::Cut)) {
    Cut();
  } else if (event.matches(QKeySequence::Paste)) {
    Paste(QGuiApplication::clipboard()->text());
  } else if (event.matches(QKeySequence::Undo) || event.matches(QKeySequence::Redo)) {
    Do([this] { edit_.UserUndo(); });
  } else if (event.key() == Qt::Key_Backspace) {
    Do([this] { edit_.UserKeyPress(kBackspace); });
  } else if (event.key() == Qt::Key_Delete) {
    Do([this] { edit_.UserDeleteKey(); });
  } else {
    return false;
  }
  return true;
}

void NumericWidget::keyPressEvent(QKeyEvent* event) {
  if (HandleShortcut(*event)) return;
  const QList<uint> typed = event->text().toUcs4();
  const bool command = event->modifiers() & (Qt::ControlModifier | Qt::AltModifier);
  if (command || typed.isEmpty() || typed.first() < ' ' || typed.first() == 0x7F) {
    QLineEdit::keyPressEvent(event);
    return;
  }
  Do([this, &typed] {
    for (const uint key : typed) edit_.UserKeyPress(key);
  });
}

// Nothing is composed in the box: what an input method has to give passes the same filter.
void NumericWidget::inputMethodEvent(QInputMethodEvent* event) {
  if (!event->commitString().isEmpty()) Paste(event->commitString());
  event->accept();
}

void NumericWidget::mouseReleaseEvent(QMouseEvent* event) {
  const QClipboard& clipboard = *QGuiApplication::clipboard();
  if (event->button() == Qt::MiddleButton && clipboard.supportsSelection()) {
    Paste(clipboard.text(QClipboard::Selection));
    return;
  }
  QLineEdit::mouseReleaseEvent(event);
}

void NumericWidget::contextMenuEvent(QContextMenuEvent* event) {
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  const bool editable = !isReadOnly();
  const auto add = [this, menu](const QString& caption, bool enabled, auto action) {
    menu->addAction(caption, this, action)->setEnabled(enabled);
  };
  add("元に戻す", editable, [this] { Do([this] { edit_.UserUndo(); }); });
  menu->addSeparator();
  add("切り取り", editable && hasSelectedText(), [this] { Cut(); });
  add("コピー", hasSelectedText(), [this] { copy(); });
  add("貼り付け", editable, [this] { Paste(QGuiApplication::clipboard()->text()); });
  add("削除", editable && hasSelectedText(), [this] { Do([this] { edit_.UserDeleteKey(); }); });
  menu->addSeparator();
  add("すべて選択", true, [this] { selectAll(); });
  menu->popup(event->globalPos());
}

void NumericWidget::focusInEvent(QFocusEvent* event) {
  mirroring_ = true;
  QLineEdit::focusInEvent(event);
  mirroring_ = false;
  if (!IsEntry(event->reason())) return;
  const auto entry = event->reason() == Qt::MouseFocusReason ? TFnpNumericEdit::Entry::kMouse
                                                             : TFnpNumericEdit::Entry::kKeyboard;
  Do([this, entry] { edit_.UserEnter(entry); });
}

void NumericWidget::focusOutEvent(QFocusEvent* event) {
  QLineEdit::focusOutEvent(event);
  if (IsEntry(event->reason())) Do([this] { edit_.UserExit(); });
}

}  // namespace dbkeeper::qt
