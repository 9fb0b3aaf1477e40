// The program's pictures, drawn in platform/qt/icons. They are vectors: sharp at every size and
// scale, and with the colours that the background wants.
#pragma once

#include <QIcon>
#include <QString>

#include "controls/TreeView.h"

namespace dbkeeper::qt {

// A picture by the name of its file, without the suffix.
QIcon NamedIcon(const QString& name);

// Has colours of its own on every background.
QIcon ApplicationIcon();

// The picture of a node of the main window's tree; none for a node of no known kind.
QIcon NodeIcon(const TreeNode& node);

}  // namespace dbkeeper::qt
