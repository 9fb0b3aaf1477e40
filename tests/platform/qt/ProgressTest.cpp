#include <gtest/gtest.h>

#include <QApplication>
#include <QProgressDialog>
#include <QPushButton>
#include <QTest>
#include <QWidget>

#include "platform/qt/QtProgress.h"

namespace dbkeeper::qt {
namespace {

QProgressDialog* Box() {
  for (QWidget* window : QApplication::topLevelWidgets()) {
    auto* const box = qobject_cast<QProgressDialog*>(window);
    if (box != nullptr && box->isVisible()) return box;
  }
  return nullptr;
}

TEST(Progress, ShowsHowFarTheWorkIsAndTakesAStop) {
  QtProgress progress;
  LongWork work(progress, "CSVを出力しています");
  EXPECT_TRUE(work.GoOn(1, 100));
  EXPECT_EQ(Box(), nullptr) << "a work that ends at once shows nothing";
  QTest::qSleep(150);
  EXPECT_TRUE(work.GoOn(5'000'000'000, 10'000'000'000));
  QProgressDialog* const box = Box();
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(box->labelText(), "CSVを出力しています");
  EXPECT_EQ(box->value() * 2, box->maximum());
  if (const char* const pictures = std::getenv("DBKEEPER_TEST_PICTURES")) {
    box->grab().save(QString(pictures) + "/progress.png");
  }
  QTest::mouseClick(box->findChild<QPushButton*>(), Qt::LeftButton);
  EXPECT_FALSE(work.GoOn(2, 3));
}

TEST(Progress, ClosingTheBoxStopsAndTheEndTakesItAway) {
  QtProgress progress;
  {
    LongWork work(progress, "x");
    QTest::qSleep(150);
    EXPECT_TRUE(work.GoOn(1));
    ASSERT_NE(Box(), nullptr);
    Box()->close();
    EXPECT_FALSE(work.GoOn(2));
  }
  EXPECT_EQ(Box(), nullptr);
  const LongWork again(progress, "y");
  EXPECT_TRUE(progress.GoOn(1, 2)) << "a stop belongs to the work it was meant for";
}

TEST(Progress, WhileItRunsNoOtherWindowTakesInput) {
  QWidget other;
  QPushButton button("start", &other);
  int started = 0;
  QObject::connect(&button, &QPushButton::clicked, [&started] { ++started; });
  other.show();
  QtProgress progress;
  LongWork work(progress, "x");
  QTest::qSleep(150);
  EXPECT_TRUE(work.GoOn(1));
  ASSERT_NE(Box(), nullptr);
  EXPECT_TRUE(Box()->isModal());
  EXPECT_EQ(QApplication::activeModalWidget(), Box());
  QTest::mouseClick(other.windowHandle(), Qt::LeftButton, {}, button.geometry().center());
  EXPECT_EQ(started, 0);
}

}  // namespace
}  // namespace dbkeeper::qt
