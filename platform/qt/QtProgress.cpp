#include "platform/qt/QtProgress.h"

#include <QApplication>
#include <QProgressDialog>

#include "platform/qt/Look.h"
#include "platform/qt/QtText.h"

namespace dbkeeper::qt {

namespace {

// How often the box is painted and asked; work that ends sooner shows none.
constexpr int kPaintMilliseconds = 100;
// The bar's own scale: counts of rows and bytes are beyond its numbers.
constexpr int kScale = 1000;
constexpr int kWidth = 320;

}  // namespace

QtProgress::QtProgress() = default;
QtProgress::~QtProgress() = default;

void QtProgress::Begin(const std::string& what) {
  box_ = std::make_unique<QProgressDialog>(ToQt(what), "中止", 0, 0, QApplication::activeWindow());
  box_->setObjectName("Progress");
  box_->setWindowTitle(QCoreApplication::applicationName());
  box_->setWindowModality(Qt::ApplicationModal);
  box_->setMinimumDuration(0);
  box_->setAutoClose(false);
  box_->setAutoReset(false);
  box_->setMinimumWidth(Scaled(*box_, kWidth));
  painted_.start();
}

bool QtProgress::GoOn(std::int64_t done, std::int64_t total) {
  if (painted_.elapsed() < kPaintMilliseconds) return !box_->wasCanceled();
  if (total > 0) {
    box_->setMaximum(kScale);
    box_->setValue(
        static_cast<int>(static_cast<double>(done) / static_cast<double>(total) * kScale));
  }
  box_->show();
  // The box is modal: no other window takes what the operator does meanwhile.
  QCoreApplication::processEvents();
  painted_.restart();
  return !box_->wasCanceled();
}

void QtProgress::End() { box_.reset(); }

}  // namespace dbkeeper::qt
