#include "platform/qt/tour/Tour.h"

#include <QApplication>
#include <QTimer>
#include <cstdio>
#include <exception>
#include <stdexcept>

#include "platform/qt/tour/Picture.h"

namespace dbkeeper::qt::tour {

namespace {

constexpr int kCheckEvery = 20;        // milliseconds
constexpr qint64 kPatience = 120'000;  // milliseconds; the first start makes the sample databases

QWidget* FrontWindow() {
  QWidget* popup = QApplication::activePopupWidget();
  return popup != nullptr ? popup : QApplication::activeModalWidget();
}

}  // namespace

void Require(bool holds, const std::string& what) {
  if (!holds) throw std::runtime_error(what);
}

void RequireEqual(const QString& seen, const QString& wanted) {
  Require(seen == wanted,
          "\"" + seen.toStdString() + "\" instead of \"" + wanted.toStdString() + "\"");
}

Tour::Tour(Steps steps, std::string folder)
    : steps_(std::move(steps)), folder_(std::move(folder)) {}

void Tour::Start() {
  QTimer::singleShot(0, this, [this] { Act(); });
}

void Tour::Act() {
  acting_ = true;
  dialog_before_ = FrontWindow();
  since_act_.start();
  // Before the action, for one that opens a dialog returns when the dialog is closed.
  QTimer::singleShot(kCheckEvery, this, [this] { Check(); });
  const std::size_t step = at_;
  try {
    steps_[step].act();
  } catch (const std::exception& error) {
    Fail(error.what());
  }
  if (at_ == step) acting_ = false;
}

void Tour::Check() {
  if (finished_) return;
  // In the midst of an action nothing is judged, unless it waits for the dialog that it opened.
  const bool judged = !acting_ || FrontWindow() != dialog_before_;
  std::string missing = "the action has not ended";
  if (judged) {
    try {
      steps_[at_].expect();
      Pass();
      return;
    } catch (const std::exception& error) {
      missing = error.what();
    }
  }
  if (since_act_.elapsed() > kPatience) {
    Fail(missing);
  } else {
    QTimer::singleShot(kCheckEvery, this, [this] { Check(); });
  }
}

void Tour::Pass() {
  SavePicture("");
  std::printf("%2zu %s\n", at_ + 1, steps_[at_].name.c_str());
  if (++at_ < steps_.size()) {
    Act();
  } else {
    finished_ = succeeded_ = true;
    QApplication::exit(0);
  }
}

void Tour::Fail(const std::string& what) {
  finished_ = true;
  SavePicture("-failed");
  std::fprintf(stderr, "The tour stopped at step %zu, %s: %s\n", at_ + 1, steps_[at_].name.c_str(),
               what.c_str());
  QApplication::exit(1);
}

void Tour::SavePicture(const std::string& suffix) const {
  const QString file = QString("%1/%2-%3%4.png")
                           .arg(QString::fromStdString(folder_))
                           .arg(at_ + 1, 2, 10, QChar('0'))
                           .arg(QString::fromStdString(steps_[at_].name))
                           .arg(QString::fromStdString(suffix));
  if (!TakePicture().save(file)) {
    std::fprintf(stderr, "%s cannot be written\n", file.toLocal8Bit().constData());
  }
}

}  // namespace dbkeeper::qt::tour
