#pragma once

#include "SHARE_Tool.h"
#include "object_push.h"

#include <QByteArrayView>
#include <QVariantMap>

#include <chrono>

namespace ulo {

// What a share takes from outside.
struct ShareSettings {
  // What BlueZ and obexd may take to say that they are there.
  std::chrono::milliseconds patience{800};
  ObjectPush::Limits push;
  // How long the word of success stays for one who doesn't confirm it.
  std::chrono::milliseconds confirmation{3000};
  // For obexd's session, beside the target: a "Channel" (byte) spares it asking the device.
  QVariantMap session;
};

// SHARE_Tool::shareByBt with settings.
[[nodiscard]] bool shareByBluetooth(const SHARE_Tool::OBJECT_INFO& info, QByteArrayView content,
                                    const ShareSettings& settings);

}  // namespace ulo
