// What a person does while the program is at work is not done afterwards.
#pragma once

#include <QObject>
#include <set>

class QKeyEvent;
class QMouseEvent;

namespace dbkeeper::qt {

// Drops keys, clicks, the wheel and the like that come from Begin to End, also those that the
// toolkit reads only after End. A box that is shown meanwhile takes what comes after it.
class BusyInput : public QObject {
 public:
  BusyInput();
  ~BusyInput() override;

  // Calls nest.
  void Begin();
  void End();

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  // Goes on dropping until the events that are waiting now have been read.
  void DropWaiting();
  void RoundBegins();
  bool Drops() const { return (depth_ > 0 && boxes_ == 0) || rounds_ > 0; }
  bool DropsMouse(const QMouseEvent& event);
  bool DropsKey(const QKeyEvent& event);
  void NoteBox(const QObject& watched, const QEvent& event);

  int depth_ = 0;
  int boxes_ = 0;   // modal windows that were shown at work
  int rounds_ = 0;  // of the event loop still to be waited for
  // Pressed while events were dropped: what lets them go is dropped too, whenever it comes.
  Qt::MouseButtons dropped_buttons_;
  std::set<int> dropped_keys_;
};

}  // namespace dbkeeper::qt
