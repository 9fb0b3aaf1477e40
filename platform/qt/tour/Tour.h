// The guided tour: steps through the real windows, a picture of each.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <functional>
#include <string>
#include <vector>

class QWidget;

namespace dbkeeper::qt::tour {

struct Step {
  // What the picture shows; part of its file name.
  std::string name;
  // What a person does. An action that opens a dialog must be the last one.
  std::function<void()> act;
  // Throws what is missing, until the windows show what they should.
  std::function<void()> expect;
};
using Steps = std::vector<Step>;

// Throws std::runtime_error with the text when the condition does not hold.
void Require(bool holds, const std::string& what);
void RequireEqual(const QString& seen, const QString& wanted);

// Runs steps one after the other inside the event loop, also inside that of a dialog which a step
// has opened.
class Tour : public QObject {
 public:
  // Pictures go into `folder`, numbered.
  Tour(Steps steps, std::string folder);

  // Starts with the next turn of the event loop, which the tour ends.
  void Start();
  bool Succeeded() const { return succeeded_; }

 private:
  void Act();
  void Check();
  void Pass();
  void Fail(const std::string& what);
  void SavePicture(const std::string& suffix) const;

  Steps steps_;
  std::string folder_;
  std::size_t at_ = 0;
  QElapsedTimer since_act_;
  bool acting_ = false;
  QWidget* dialog_before_ = nullptr;  // the modal or popup window when the step began
  bool finished_ = false;
  bool succeeded_ = false;
};

}  // namespace dbkeeper::qt::tour
