#include "platform/qt/BusyInput.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWidget>

namespace dbkeeper::qt {

namespace {

// The toolkit tells once or twice that a round of its event loop begins. The first whole one reads
// everything that the machine has delivered.
constexpr int kRounds = 3;

// What a person does beside keys and buttons. A window's close button is one of them.
bool IsGesture(const QEvent& event) {
  switch (event.type()) {
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::InputMethod:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
      return true;
    case QEvent::Close:
      return event.spontaneous();
    default:
      return false;
  }
}

}  // namespace

BusyInput::BusyInput() {
  if (qApp != nullptr) qApp->installEventFilter(this);
}

BusyInput::~BusyInput() = default;

void BusyInput::Begin() { ++depth_; }

void BusyInput::End() {
  if (--depth_ == 0) {
    boxes_ = 0;
    DropWaiting();
  }
}

void BusyInput::DropWaiting() {
  rounds_ = kRounds;
  const QAbstractEventDispatcher* const loop = QAbstractEventDispatcher::instance();
  loop->disconnect(this);
  connect(loop, &QAbstractEventDispatcher::awake, this, [this] { RoundBegins(); });
  connect(loop, &QAbstractEventDispatcher::aboutToBlock, this, [this] { RoundBegins(); });
}

void BusyInput::RoundBegins() {
  if (--rounds_ == 0) QAbstractEventDispatcher::instance()->disconnect(this);
}

bool BusyInput::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
      return DropsMouse(*static_cast<QMouseEvent*>(event));
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
      return DropsKey(*static_cast<QKeyEvent*>(event));
    case QEvent::Show:
    case QEvent::Hide:
      NoteBox(*watched, *event);
      return false;
    default:
      if (!Drops() || !IsGesture(*event)) return false;
      event->ignore();
      return true;
  }
}

// A button that was pressed before goes up: whoever took the press waits for it.
bool BusyInput::DropsMouse(const QMouseEvent& event) {
  if (event.type() == QEvent::MouseButtonRelease) {
    const bool dropped = dropped_buttons_.testFlag(event.button());
    dropped_buttons_.setFlag(event.button(), false);
    return dropped;
  }
  dropped_buttons_.setFlag(event.button(), Drops());
  return Drops();
}

bool BusyInput::DropsKey(const QKeyEvent& event) {
  if (event.type() == QEvent::KeyRelease) return dropped_keys_.erase(event.key()) > 0 || Drops();
  if (Drops()) {
    dropped_keys_.insert(event.key());
  } else {
    dropped_keys_.erase(event.key());
  }
  return Drops();
}

void BusyInput::NoteBox(const QObject& watched, const QEvent& event) {
  const auto* const widget = qobject_cast<const QWidget*>(&watched);
  if (depth_ == 0 || widget == nullptr || !widget->isWindow() || !widget->isModal()) return;
  if (event.type() == QEvent::Show) {
    ++boxes_;
    DropWaiting();
  } else if (boxes_ > 0) {
    --boxes_;
  }
}

}  // namespace dbkeeper::qt
