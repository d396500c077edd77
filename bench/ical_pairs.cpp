// Reading and editing iCalendar 2.0 text, compared with libical alone.

#include "TASK_ENG_Ical.h"
#include "dataset.h"
#include "ical_text.h"
#include "pairs.h"

#include <memory>

namespace bench {
namespace {

constexpr int counts[] = {1, 100, 10000};
const char* const editedSummary = "Edited";

// Shared by the benchmarks of one number of to-dos.
struct IcalMaterial {
  explicit IcalMaterial(int count) : size(count), text(icalText(count)) {}

  int size;
  QByteArray text;
};

void registerIcalReading(const std::shared_ptr<IcalMaterial>& material) {
  registerReading<int>({"ical.read." + std::to_string(material->size),
                        effortFor(material->size),
                        double(material->size),
                        [material](int& todos) {
                          todos = static_cast<int>(TASK_ENG_Ical::read(material->text).size());
                        },
                        [material](int& todos) { todos = parsedByLibrary(material->text); },
                        {}});
}

void registerIcalEditing(const std::shared_ptr<IcalMaterial>& material) {
  registerReading<int>({"ical.edit." + std::to_string(material->size),
                        effortFor(material->size),
                        double(material->size),
                        [material](int& edited) {
                          edited = editedByUs(material->text, editedSummary).count(editedSummary);
                        },
                        [material](int& edited) {
                          edited =
                              editedByLibrary(material->text, editedSummary).count(editedSummary);
                        },
                        {}});
}

}  // namespace

void registerIcal() {
  for (const int count : counts) {
    const auto material = std::make_shared<IcalMaterial>(count);
    registerIcalReading(material);
    registerIcalEditing(material);
  }
}

}  // namespace bench
