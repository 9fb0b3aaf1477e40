#include "platform/qt/DesktopColors.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include "platform/qt/Look.h"

namespace dbkeeper::qt {

namespace {

// Where desktops of all kinds answer such questions.
const char* const kService = "org.freedesktop.portal.Desktop";
const char* const kPath = "/org/freedesktop/portal/desktop";
const char* const kInterface = "org.freedesktop.portal.Settings";
const char* const kGroup = "org.freedesktop.appearance";
const char* const kKey = "color-scheme";

void Apply(const QVariant& answer) {
  // 0 is no preference.
  constexpr unsigned kDark = 1;
  constexpr unsigned kLight = 2;
  const unsigned choice = answer.toUInt();
  if (choice == kDark) ApplyScheme(Scheme::kDark);
  if (choice == kLight) ApplyScheme(Scheme::kLight);
}

// The answer to a question comes in a box within the box.
QVariant Unpacked(QVariant value) {
  while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
  return value;
}

}  // namespace

DesktopColors::DesktopColors(QObject& parent) : QObject(&parent) {
  // Without an address one would be looked for, and a service even started.
  if (!qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return;
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return;
  bus.connect(kService, kPath, kInterface, "SettingChanged", this,
              SLOT(SettingChanged(QString, QString, QDBusVariant)));
  Ask();
}

void DesktopColors::Ask() {
  QDBusMessage question = QDBusMessage::createMethodCall(kService, kPath, kInterface, "Read");
  question << QString(kGroup) << QString(kKey);
  // The window does not wait for the answer.
  auto* const waiting =
      new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
  connect(waiting, &QDBusPendingCallWatcher::finished, this, [](QDBusPendingCallWatcher* told) {
    const QDBusPendingReply<QVariant> answer = *told;
    if (!answer.isError()) Apply(Unpacked(answer.value()));
    told->deleteLater();
  });
}

void DesktopColors::SettingChanged(const QString& group, const QString& key,
                                   const QDBusVariant& value) {
  if (group == kGroup && key == kKey) Apply(Unpacked(value.variant()));
}

}  // namespace dbkeeper::qt
