#include "workbench/qt/Balloon.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStringList>
#include <QVariantMap>
#include <utility>

namespace kalvex::window {

namespace {

const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kDefaultAction = QStringLiteral("default");
constexpr int kUsualTime = -1;

QDBusMessage Call(const char* method, const QVariantList& arguments) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(kService, kPath, kService, QLatin1String(method));
    call.setArguments(arguments);
    return call;
}

}  // namespace

Balloon::Balloon(std::function<void()> clicked) : m_clicked(std::move(clicked)) {
    QDBusConnection::sessionBus().connect(kService, kPath, kService,
                                          QStringLiteral("ActionInvoked"), this,
                                          SLOT(OnAction(uint, QString)));
}

void Balloon::Show(const QString& title, const QString& text, const QString& action) {
    const QVariantList arguments{QStringLiteral("Kalvex"),
                                 m_id,
                                 QStringLiteral("kalvex"),
                                 title,
                                 text,
                                 QStringList{kDefaultAction, action},
                                 QVariantMap(),
                                 kUsualTime};
    auto* const answer = new QDBusPendingCallWatcher(
        QDBusConnection::sessionBus().asyncCall(Call("Notify", arguments)), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* watcher) {
                const QDBusPendingReply<uint> reply = *watcher;
                if (reply.isValid()) m_id = reply.value();
                watcher->deleteLater();
            });
}

void Balloon::Close() {
    if (m_id == 0) return;
    QDBusConnection::sessionBus().asyncCall(Call("CloseNotification", {std::exchange(m_id, 0U)}));
}

void Balloon::OnAction(uint id, const QString& action) {
    if (id == m_id && action == kDefaultAction) m_clicked();
}

}  // namespace kalvex::window
