// Plug-in interfaces. An object is queried for an interface by UUID and lives as long as references
// to it are held.
#pragma once

#include <QUuid>

// Results of queryInterface.
enum QUnknownInterface_Result : unsigned long {
  QS_OK = 0,
  QE_NOINTERFACE = 0x80000004UL,
};

class QUnknownInterface {
public:
  // {1d8518cd-e8f5-4366-99e8-879fd7e482de}
  static constexpr QUuid uuid{0x1d8518cd, 0xe8f5, 0x4366, 0x99, 0xe8, 0x87,
                              0x9f,       0xd7,   0xe4,   0x82, 0xde};

  // Sets `answer` to the interface with that UUID, adds a reference and returns QS_OK. If the
  // object does not implement it, sets `answer` to null and returns QE_NOINTERFACE.
  virtual unsigned long queryInterface(const QUuid& wanted, QUnknownInterface** answer) = 0;
  // Reference counting. The object deletes itself when `release` removes the last reference. The
  // return values are specific to the object.
  virtual unsigned long addRef() = 0;
  virtual unsigned long release() = 0;
  virtual ~QUnknownInterface() = default;
};

// The function that a plug-in library exports. Returns its object with one reference, or null.
extern "C" {
using ucm_instantiate_t = QUnknownInterface* (*)();
}
