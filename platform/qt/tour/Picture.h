// A picture of everything on the screen.
#pragma once

#include <QImage>

namespace dbkeeper::qt::tour {

// Every visible window at its place, from the back to the front, each under a bar with its caption.
QImage TakePicture();

}  // namespace dbkeeper::qt::tour
