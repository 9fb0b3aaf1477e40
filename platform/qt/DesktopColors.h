// The desktop's choice between light and dark colours, asked of it and followed.
#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QString>

namespace dbkeeper::qt {

// Applies the choice when the desktop has told it, and whenever it changes. A desktop that does not
// tell leaves the colours as they are.
class DesktopColors : public QObject {
  Q_OBJECT

 public:
  explicit DesktopColors(QObject& parent);

 private Q_SLOTS:
  void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void Ask();
};

}  // namespace dbkeeper::qt
