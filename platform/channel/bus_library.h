// The library for D-Bus, which is opened when a program first uses a channel: loading QtDBus takes
// longer than most programs run.
#pragma once

#include <QByteArray>
#include <QString>

class QObject;

namespace ulo {

enum class BusSending { sent, noBus, noReply };

// What the library exports, under the name `busFunctionsName`.
struct BusFunctions {
  // Calls the slot deliver(QString,QString,QByteArray) of `receiver` with the channel, the message
  // and the data of each broadcast, until close(). Returns null without a session bus.
  void* (*listen)(QObject* receiver);
  bool (*isConnected)(void* listener);
  void (*close)(void* listener);
  BusSending (*send)(const QString& channel, const QString& message, const QByteArray& data);
};

inline constexpr char busLibraryName[] = "libulobus.so";
// Changes with every change of BusFunctions, so that a library of another version is rejected.
inline constexpr char busFunctionsName[] = "ulo_bus_functions_1";

// Opens the library unless it is open. Returns null, and logs the reason, if that fails.
const BusFunctions* busFunctions();

}  // namespace ulo
