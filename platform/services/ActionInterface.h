// The interface of a plug-in that an action framework calls.
#pragma once

#include "QUnknownInterface.h"
#include "SDData.h"

class ActionInterface : public QUnknownInterface {
public:
  // {efc3a030-dd82-45b8-8e1e-42383951a4a7}
  static constexpr QUuid uuid{0xefc3a030, 0xdd82, 0x45b8, 0x8e, 0x1e, 0x42,
                              0x38,       0x39,   0x51,   0xa4, 0xa7};

  // Returns true if the action was performed. Names are case-sensitive.
  virtual bool invokeAction(const QString& action, const SDData& data) = 0;
  virtual QUuid getUuid() = 0;
  // An optional description; null if there is none.
  virtual QString describe() { return {}; }
};
