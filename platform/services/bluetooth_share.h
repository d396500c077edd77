#pragma once

#include "SHARE_Tool.h"
#include "object_push.h"

#include <QByteArrayView>
#include <QVariantMap>

#include <chrono>

namespace ulo {

// Parameters of a share.
struct ShareSettings {
  // Timeout for the first reply of BlueZ and obexd.
  std::chrono::milliseconds patience{800};
  ObjectPush::Limits push;
  // How long the success message is shown unless the user confirms it.
  std::chrono::milliseconds confirmation{3000};
  // Arguments for obexd's session in addition to the target. A "Channel" (byte) saves querying the
  // device for it.
  QVariantMap session;
};

// SHARE_Tool::shareByBt with explicit settings.
[[nodiscard]] bool shareByBluetooth(const SHARE_Tool::OBJECT_INFO& info, QByteArrayView content,
                                    const ShareSettings& settings);

}  // namespace ulo
