#include "platform/qt/tour/Picture.h"

#include <QApplication>
#include <QMainWindow>
#include <QMessageBox>
#include <QPainter>
#include <QWidget>
#include <algorithm>
#include <vector>

namespace dbkeeper::qt::tour {

namespace {

constexpr int kBarHeight = 26;
constexpr int kBarIndent = 10;
constexpr int kMargin = 12;

bool HasBar(const QWidget& window) { return window.windowType() != Qt::Popup; }

QRect Place(const QWidget& window) {
  const QRect inner(window.mapToGlobal(QPoint(0, 0)), window.size());
  return inner.adjusted(0, HasBar(window) ? -kBarHeight : 0, 0, 0);
}

// The main window lies at the bottom unless it is the one that a person works in.
int Height(const QWidget* window) {
  if (window->windowType() == Qt::Popup) return 5;
  if (window == QApplication::activeModalWidget()) return 4;
  if (window->isModal()) return 3;
  if (window->isActiveWindow()) return 2;
  return dynamic_cast<const QMainWindow*>(window) == nullptr ? 1 : 0;
}

std::vector<QWidget*> VisibleWindows() {
  std::vector<QWidget*> windows;
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->isVisible()) windows.push_back(window);
  }
  std::stable_sort(windows.begin(), windows.end(), [](const QWidget* left, const QWidget* right) {
    return Height(left) < Height(right);
  });
  return windows;
}

void PaintWindow(QPainter& painter, QWidget& window) {
  const QRect place = Place(window);
  const int bar = HasBar(window) ? kBarHeight : 0;
  if (bar > 0) {
    const QRect top(place.topLeft(), QSize(place.width(), bar));
    painter.fillRect(top, QColor(0x3b, 0x4a, 0x5c));
    painter.setPen(Qt::white);
    painter.drawText(top.adjusted(kBarIndent, 0, -kBarIndent, 0), Qt::AlignVCenter | Qt::AlignLeft,
                     window.windowTitle());
  }
  painter.drawPixmap(place.topLeft() + QPoint(0, bar), window.grab());
  painter.setPen(QColor(0x8a, 0x8a, 0x8a));
  painter.drawRect(place.adjusted(0, 0, -1, -1));
}

}  // namespace

QImage TakePicture() {
  const std::vector<QWidget*> windows = VisibleWindows();
  QRect all;
  for (const QWidget* window : windows) all |= Place(*window);
  all.adjust(-kMargin, -kMargin, kMargin, kMargin);
  const qreal ratio = qApp->devicePixelRatio();
  QImage image(all.size() * ratio, QImage::Format_RGB32);
  image.setDevicePixelRatio(ratio);
  image.fill(QColor(0xd6, 0xdc, 0xe2));
  QPainter painter(&image);
  painter.setFont(QApplication::font());
  painter.translate(-all.topLeft());
  for (QWidget* window : windows) PaintWindow(painter, *window);
  return image;
}

}  // namespace dbkeeper::qt::tour
