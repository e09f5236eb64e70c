#include "tallybook/desktop/host/DesktopNotice.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>

#include "tallybook/desktop/host/QtTexts.h"

namespace tallybook::desktop {

void TellDesktop(const Text& title, const Text& words) {
  constexpr uint kNoOther = 0;
  constexpr int kUsualTime = -1;
  QDBusConnection session = QDBusConnection::sessionBus();
  if (!session.isConnected()) return;
  QDBusMessage call = QDBusMessage::createMethodCall("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                                                     "org.freedesktop.Notifications", "Notify");
  call << "Tallybook" << kNoOther << "tallybook-desktop" << ShownLine(title) << ShownLine(words).toHtmlEscaped()
       << QStringList() << QVariantMap() << kUsualTime;
  session.send(call);
}

}  // namespace tallybook::desktop
