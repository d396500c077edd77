#include "SHARE_Tool.h"

#include "bluetooth_share.h"

bool SHARE_Tool::shareByBt(const OBJECT_INFO& info, const QArray<char>& data) {
  return ulo::shareByBluetooth(info, QByteArrayView(data.data(), data.size()),
                               ulo::ShareSettings());
}
