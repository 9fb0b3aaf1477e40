// An empty main window with a tree, as the toolkit makes it: what the program's start is held
// against.
#include <QApplication>
#include <QMainWindow>
#include <QTreeView>

#include "bench/start_common.h"

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  QMainWindow window;
  window.setCentralWidget(new QTreeView(&window));
  window.resize(960, 640);
  new dbkeeper::bench::FirstPaint(window);
  window.show();
  return QApplication::exec();
}
