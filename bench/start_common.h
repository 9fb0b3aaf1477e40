// How long a program takes from its start to its painted window, told by the program itself.
#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>
#include <QWidget>

namespace dbkeeper::bench {

// Prints "microseconds kibibytes" once the window has been painted, and ends the program. The time
// runs from the moment that DBKEEPER_BENCH_START holds, in nanoseconds of the monotonic clock.
class FirstPaint : public QObject {
 public:
  explicit FirstPaint(QWidget& window) : QObject(&window) { window.installEventFilter(this); }
  bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace dbkeeper::bench
