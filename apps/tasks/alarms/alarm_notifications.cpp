#include "alarms/alarm_notifications.h"

#include "module_log.h"
#include "reply_sender.h"
#include "task_texts.h"
#include "task_words.h"
#include "ulo/texts.h"

#include <QDBusPendingCallWatcher>

#include <algorithm>

namespace tasks {

namespace {

constexpr QLatin1String service("org.freedesktop.Notifications");
constexpr QLatin1String path("/org/freedesktop/Notifications");
constexpr QLatin1String openAction("default");
constexpr QLatin1String doneAction("done");
// The timeout of a call. A server that is started by it needs some time.
constexpr int patienceMs = 25'000;
// The notification stays until the user closes it.
constexpr int never = 0;

QDBusMessage call(const char* method) {
  return QDBusMessage::createMethodCall(service, path, service, QLatin1String(method));
}

QVariantMap hintsOf(const ZTASK_ENG_Task& task) {
  constexpr uchar normal = 1;
  constexpr uchar critical = 2;
  return {{QStringLiteral("urgency"),
           QVariant::fromValue(ulo::priorityOf(task) == ulo::Priority::high ? critical : normal)},
          {QStringLiteral("desktop-entry"), QStringLiteral("ulo-tasks")},
          {QStringLiteral("sound-name"), QStringLiteral("alarm-clock-elapsed")}};
}

}  // namespace

AlarmNotifications::AlarmNotifications(QObject* parent) : QObject(parent) {}

AlarmNotifications::~AlarmNotifications() {
  const bool isAnyShown = std::any_of(shown_.begin(), shown_.end(),
                                      [](const auto& each) { return each.second.id != 0; });
  if (!isAnyShown || bus_ == nullptr || !bus_->isConnected())
    return;
  for (const auto& [uid, shown] : shown_)
    close(shown.id);
  // The reply shows that the bus has received all of them.
  constexpr int patienceAtEndMs = 1000;
  bus_->connection().call(QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                                         QStringLiteral("/org/freedesktop/DBus"),
                                                         QStringLiteral("org.freedesktop.DBus"),
                                                         QStringLiteral("GetId")),
                          QDBus::Block, patienceAtEndMs);
}

void AlarmNotifications::show(const ZTASK_ENG_Task& task) {
  const unsigned int uid = task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
  if (!connectToBus()) {
    shown_.erase(uid);
    fail(uid, QStringLiteral("there is no session bus"));
    return;
  }
  Shown& shown = shown_[uid];
  shown.isWithdrawn = false;
  if (shown.call != 0) {
    shown.waiting = task;
    return;
  }
  ask(uid, call("GetCapabilities"), [this, task](unsigned int asked, const QDBusMessage& reply) {
    Shown& shown = shown_[asked];
    if (shown.isWithdrawn) {
      withdraw(asked);
      return;
    }
    const ZTASK_ENG_Task latest = std::exchange(shown.waiting, std::nullopt).value_or(task);
    const QStringList capabilities = reply.arguments().value(0).toStringList();
    notify(latest, capabilities.contains(QStringLiteral("body-markup")));
  });
}

void AlarmNotifications::withdraw(unsigned int uid) {
  const auto shown = shown_.find(uid);
  if (shown == shown_.end())
    return;
  if (shown->second.call != 0) {
    shown->second.isWithdrawn = true;
    shown->second.waiting.reset();
    return;
  }
  close(shown->second.id);
  shown_.erase(shown);
}

// Returns false without a bus. Connects again if the connection was lost.
bool AlarmNotifications::connectToBus() {
  if (bus_ != nullptr && bus_->isConnected())
    return true;
  serverChanged();
  bus_ = std::make_unique<ulo::PrivateBus>(ulo::PrivateBus::Kind::session);
  if (!bus_->isConnected())
    return false;
  // Accepts any sender: for a name, QtDBus would call the bus and wait for the reply.
  QDBusConnection& bus = bus_->connection();
  bus.connect(QString(), path, service, QStringLiteral("ActionInvoked"), this,
              SLOT(actionInvoked(QDBusMessage)));
  bus.connect(QString(), path, service, QStringLiteral("NotificationClosed"), this,
              SLOT(notificationClosed(QDBusMessage)));
  watcher_ = std::make_unique<QDBusServiceWatcher>(service, bus,
                                                   QDBusServiceWatcher::WatchForUnregistration);
  connect(watcher_.get(), &QDBusServiceWatcher::serviceUnregistered, this,
          &AlarmNotifications::serverChanged);
  return true;
}

// The notifications of a server that has exited are gone, and their IDs are invalid for the next
// one.
void AlarmNotifications::serverChanged() {
  server_.clear();
  std::erase_if(shown_, [](const auto& each) { return each.second.call == 0; });
  for (auto& [uid, shown] : shown_)
    shown.id = 0;
}

void AlarmNotifications::ask(unsigned int uid, const QDBusMessage& question,
                             const Answer& answered) {
  const std::uint64_t number = ++calls_;
  shown_[uid].call = number;
  auto* answer =
      new QDBusPendingCallWatcher(bus_->connection().asyncCall(question, patienceMs), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, uid, number, answer, answered] {
    answer->deleteLater();
    const QDBusMessage reply = answer->reply();
    const auto shown = shown_.find(uid);
    if (shown == shown_.end() || shown->second.call != number)
      return;
    shown->second.call = 0;
    if (reply.type() != QDBusMessage::ReplyMessage) {
      fail(uid, reply.errorName() + u' ' + reply.errorMessage());
      return;
    }
    // If this asks the bus, it does so before the next call, so that the sender is known when a
    // signal about the notification of that call arrives.
    ulo::findReplySender(bus_->connection(), reply, service, this,
                         [this](const QString& sender) { server_ = sender; });
    answered(uid, reply);
  });
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the call belongs to this object.

void AlarmNotifications::notify(const ZTASK_ENG_Task& task, bool hasMarkup) {
  const unsigned int uid = task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
  const QString body = dueText(task, QDate::currentDate());
  QDBusMessage question = call("Notify");
  question << ulo::text("TXT_RID_STANDARD_TASKS", "Tasks") << shown_[uid].id
           << QStringLiteral("ulo-tasks") << titleText(task)
           << (hasMarkup ? body.toHtmlEscaped() : body)
           << QStringList{openAction, ulo::text("TXT_RID_STANDARD_OPEN", "Open"), doneAction,
                          shownText(ulo::shownState(true))}
           << hintsOf(task) << never;
  ask(uid, question,
      [this](unsigned int asked, const QDBusMessage& reply) { notified(asked, reply); });
}

void AlarmNotifications::notified(unsigned int uid, const QDBusMessage& reply) {
  Shown& shown = shown_[uid];
  shown.id = reply.arguments().value(0).toUInt();
  if (shown.isWithdrawn)
    withdraw(uid);
  else if (shown.waiting)
    show(*std::exchange(shown.waiting, std::nullopt));
}

void AlarmNotifications::close(std::uint32_t id) {
  if (id == 0 || bus_ == nullptr || !bus_->isConnected())
    return;
  QDBusMessage message = call("CloseNotification");
  message << id;
  message.setAutoStartService(false);
  bus_->connection().send(message);
}

void AlarmNotifications::fail(unsigned int uid, const QString& why) {
  if (!std::exchange(isLogged_, true))
    ULO_LOG_ERROR("Alarms can't be shown as notifications: %s", why.toUtf8().constData());
  const auto shown = shown_.extract(uid);
  if (shown.empty() || !shown.mapped().isWithdrawn)
    Q_EMIT notShown(uid);
}

std::optional<unsigned int> AlarmNotifications::taskOf(const QDBusMessage& signal) const {
  const std::uint32_t id = signal.arguments().value(0).toUInt();
  if (id == 0 || server_.isEmpty() || signal.service() != server_)
    return {};
  const auto found = std::find_if(shown_.begin(), shown_.end(),
                                  [&](const auto& each) { return each.second.id == id; });
  return found == shown_.end() ? std::nullopt : std::optional(found->first);
}

void AlarmNotifications::actionInvoked(const QDBusMessage& signal) {
  const std::optional<unsigned int> uid = taskOf(signal);
  if (!uid)
    return;
  const QString action = signal.arguments().value(1).toString();
  if (action == openAction)
    Q_EMIT opened(*uid);
  else if (action == doneAction)
    Q_EMIT completed(*uid);
}

void AlarmNotifications::notificationClosed(const QDBusMessage& signal) {
  const std::optional<unsigned int> uid = taskOf(signal);
  if (!uid)
    return;
  Shown& shown = shown_[*uid];
  if (shown.call != 0)
    shown.id = 0;
  else
    shown_.erase(*uid);
}

}  // namespace tasks
