// Interfaces of plug-ins: an object is asked for an interface by its UUID and lives while
// references to it are held.
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

  // Sets `answer` to the interface of that UUID and adds a reference: QS_OK. Where there is none,
  // null and QE_NOINTERFACE.
  virtual unsigned long queryInterface(const QUuid& wanted, QUnknownInterface** answer) = 0;
  // Both count references; the object deletes itself when `release` leaves none. What they give
  // is each object's own affair.
  virtual unsigned long addRef() = 0;
  virtual unsigned long release() = 0;
  virtual ~QUnknownInterface() = default;
};

// What a plug-in library exports: gives its object with one reference, or null.
extern "C" {
using ucm_instantiate_t = QUnknownInterface* (*)();
}
